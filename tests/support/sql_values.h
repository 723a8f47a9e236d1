// Texts of the SQL values the casts and the function layer return: an
// exact decimal in the decimal library's notation, a datetime in ISO form
// with all its fraction digits and its type, and "NULL" for a result
// without a value.
#ifndef VXJSON_TEST_SQL_VALUES_H
#define VXJSON_TEST_SQL_VALUES_H

#include <string>

#include "vxjson.h"
#include "vxtime.h"
#include "xdec.h"

inline std::string decimal_text(const xdec &d) {
    char buf[XDEC_TEXT_MAX];
    const int32_t n = xdec_to_char(&d, buf, sizeof buf);
    return n < 0 ? "<" + std::to_string(n) + ">" : std::string(buf, size_t(n));
}

// 2024-02-29T13:05:09.25/16; a date shows its day only: 2024-02-29/14.
inline std::string datetime_text(const vxtime &t) {
    char buf[VXTIME_TEXT_MAX];
    const int32_t fmt = t.type == VXTIME_TYPE_DATE ? VXTIME_FMT_DATE : VXTIME_FMT_ISO;
    const int32_t n = vxtime_to_char(&t, 9, fmt, buf);
    if (n < 0) return "<" + std::to_string(n) + ">";
    return std::string(buf, size_t(n)) + "/" + std::to_string(t.type);
}

inline std::string sql_text(const json_number_result &r) {
    return r.has_value ? decimal_text(r.value) : "NULL";
}
inline std::string sql_text(const json_datetime_result &r) {
    return r.has_value ? datetime_text(r.value) : "NULL";
}

#endif
