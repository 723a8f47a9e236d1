/*
 * report.h -- the one way a layer of libvxjson passes a failure up: report
 * it to the server's error hook with the fixed source unit and line of the
 * call site, and return the same code.
 */
#ifndef VXJSON_REPORT_H
#define VXJSON_REPORT_H

#include <cstdint>

#include "vx_elog.h"

namespace vxjson {

// Source units named in error reports.
inline constexpr const char *SRC_JSON = "json/json";
inline constexpr const char *SRC_JLPCA = "json/jlpca";
inline constexpr const char *SRC_JPATH = "json/jpath";
inline constexpr const char *SRC_FLEX = "json_flex";

[[gnu::cold]] inline int32_t report(int32_t code, const char *src, int32_t line) {
    return elog_try_report_vxerr(code, src, line);
}

// Shorthand for the value-tree unit, which most call sites are in.
[[gnu::cold]] inline int32_t report_json(int32_t code, int32_t line) {
    return elog_try_report_vxerr(code, SRC_JSON, line);
}

} // namespace vxjson

#endif
