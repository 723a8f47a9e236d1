// Rows of the tab-separated expectation files under tests/data, written by
// tests/data/gen_platform_data.py: one row a line, the first field a stable
// id, '#' lines are comments, and \t \n \\ \xHH stand for their bytes.
#ifndef VXJSON_TEST_DATA_ROWS_H
#define VXJSON_TEST_DATA_ROWS_H

#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <utility>
#include <string>
#include <vector>

struct DataRow {
    std::vector<std::string> f;  // fields; f[0] is the id

    const std::string &id() const { return f[0]; }
    int64_t num(size_t i) const { return std::strtoll(f[i].c_str(), nullptr, 10); }
};

inline std::string data_unescape(const std::string &s) {
    std::string out;
    for (size_t i = 0; i < s.size(); i++) {
        if (s[i] != '\\' || i + 1 == s.size()) {
            out += s[i];
            continue;
        }
        char c = s[++i];
        if (c == 't') {
            out += '\t';
        } else if (c == 'n') {
            out += '\n';
        } else if (c == 'x' && i + 2 < s.size()) {
            out += static_cast<char>(std::stoi(s.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += c;
        }
    }
    return out;
}

// Every row of tests/data/<name>; a missing file gives no rows, which the
// suites' row-count checks catch.
inline std::vector<DataRow> read_data_rows(const std::string &name) {
    std::vector<DataRow> rows;
    std::ifstream in(std::string(VXJSON_SOURCE_DIR) + "/tests/data/" + name);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        DataRow row;
        size_t start = 0;
        for (;;) {
            size_t tab = line.find('\t', start);
            row.f.push_back(data_unescape(line.substr(start, tab - start)));
            if (tab == std::string::npos)
                break;
            start = tab + 1;
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

// A test name from a row: its op column (if any) and id, letters, digits
// and '_' only.
inline std::string data_row_name(const DataRow &row, size_t op_column = 0) {
    std::string name = op_column ? row.f[op_column] + "_" + row.id() : row.id();
    for (char &c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

// Each file holds at least its expected number of rows: a missing or cut
// file must fail rather than run fewer cases.
inline void expect_row_counts(std::initializer_list<std::pair<const char *, size_t>> files) {
    for (const auto &[name, minimum] : files)
        EXPECT_GE(read_data_rows(name).size(), minimum) << name;
}

// The name generator for INSTANTIATE_TEST_SUITE_P over data rows.
inline auto data_row_namer(size_t op_column = 0) {
    return [op_column](const auto &info) { return data_row_name(info.param, op_column); };
}

#endif
