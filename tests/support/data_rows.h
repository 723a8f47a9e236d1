// Rows of the tab-separated expectation files under tests/data (the
// platform's written by tests/data/gen_platform_data.py, the others by
// hand): one row a line, the first field a stable id, '#' lines are
// comments, and \t \n \\ \xHH stand for their bytes.
#ifndef VXJSON_TEST_DATA_ROWS_H
#define VXJSON_TEST_DATA_ROWS_H

#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

struct DataRow {
    std::vector<std::string> f; // fields; f[0] is the id
    const std::string &id() const { return f[0]; }
    int64_t num(size_t i) const { return std::strtoll(f[i].c_str(), nullptr, 10); }
};

// Rows print as their id in test listings.
inline void PrintTo(const DataRow &row, std::ostream *os) { *os << row.id(); }

inline std::string data_unescape(const std::string &s) {
    std::string out;
    for (size_t i = 0; i < s.size(); i++) {
        const char c = s[i] == '\\' && i + 1 < s.size() ? s[++i] : 0;
        if (!c) {
            out += s[i];
        } else if (c == 'x' && i + 2 < s.size()) {
            out += static_cast<char>(std::stoi(s.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += c == 't' ? '\t' : c == 'n' ? '\n' : c;
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
        if (line.empty() || line[0] == '#') continue;
        DataRow row;
        for (size_t start = 0, tab = 0; tab != std::string::npos; start = tab + 1) {
            tab = line.find('\t', start);
            row.f.push_back(data_unescape(line.substr(start, tab - start)));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

// The rows of tests/data/<name> for INSTANTIATE_TEST_SUITE_P.
inline auto rows_of(const std::string &name) { return ::testing::ValuesIn(read_data_rows(name)); }

// Each file holds at least its expected number of rows: a missing or cut
// file must fail rather than run fewer cases.
inline void expect_row_counts(std::initializer_list<std::pair<const char *, size_t>> files) {
    for (const auto &[name, minimum] : files)
        EXPECT_GE(read_data_rows(name).size(), minimum) << name;
}

// The name generator for INSTANTIATE_TEST_SUITE_P over data rows: the op
// column (if any) and the id, letters, digits and '_' only.
inline auto data_row_namer(size_t op_column = 0) {
    return [op_column](const auto &info) {
        std::string name =
            op_column ? info.param.f[op_column] + "_" + info.param.id() : info.param.id();
        for (char &c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
        return name;
    };
}

#endif
