// The error hook keeps a per-thread trail of reports so that callers (and
// tests) can see the chain a failure passed through, innermost first.
#include "vx_elog.h"

namespace {

struct error_trail {
    vx_elog_entry entries[VX_ELOG_TRAIL_MAX];
    uint32_t count;
};

thread_local error_trail trail;

} // namespace

extern "C" int32_t elog_try_report_vxerr(int32_t code, const char *src, int32_t line) {
    if (trail.count < VX_ELOG_TRAIL_MAX) trail.entries[trail.count] = {code, src, line};
    if (trail.count < UINT32_MAX) trail.count++;
    return code;
}

extern "C" uint32_t elog_trail_count(void) { return trail.count; }

extern "C" int32_t elog_trail_get(uint32_t i, vx_elog_entry *out) {
    if (i >= trail.count || i >= VX_ELOG_TRAIL_MAX) return -1;
    *out = trail.entries[i];
    return 0;
}

extern "C" void elog_trail_clear(void) { trail.count = 0; }
