/*
 * vxtime.cpp -- datetime text in and out, and Unix time.  The calendar work
 * (days per month, leap years, day numbers) is std::chrono's proleptic
 * Gregorian calendar; this file only reads and writes the fields.
 */
#include <chrono>
#include <cstring>

#include "vxtime.h"

namespace {

using std::chrono::day;
using std::chrono::days;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr int64_t SEC_PER_DAY = 86400;
constexpr int32_t NSEC_PER_SEC = 1000000000;
constexpr int FRACTION_DIGITS = 9;
constexpr int64_t MIN_SEC = /* 0001-01-01T00:00:00 */
    sys_days{year{1} / 1 / 1}.time_since_epoch().count() * SEC_PER_DAY;
constexpr int64_t MAX_SEC = /* 9999-12-31T23:59:59 */
    (sys_days{year{9999} / 12 / 31}.time_since_epoch().count() + 1) * SEC_PER_DAY - 1;

int64_t floor_div(int64_t a, int64_t b) {
    int64_t q = a / b;
    return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

bool sec_in_range(int64_t sec) { return sec >= MIN_SEC && sec <= MAX_SEC; }

bool type_known(int32_t type) { return type == VXTIME_TYPE_DATE || type == VXTIME_TYPE_DATETIME; }

bool is_valid(const vxtime *t) {
    return sec_in_range(t->sec) && t->nsec >= 0 && t->nsec < NSEC_PER_SEC;
}

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

/* A read position in the text; every reader fails without moving. */
struct cursor {
    const char *p;
    const char *end;

    bool at_end() const { return p == end; }

    bool eat(char c) {
        if (p == end || *p != c) return false;
        p++;
        return true;
    }

    /* Exactly `n` digits as a number no larger than `max`. */
    bool number(int n, int max, int *out) {
        if (end - p < n) return false;
        int v = 0;
        for (int i = 0; i < n; i++) {
            if (p[i] < '0' || p[i] > '9') return false;
            v = v * 10 + (p[i] - '0');
        }
        if (v > max) return false;
        p += n;
        *out = v;
        return true;
    }

    /* One to nine fraction digits, scaled to nanoseconds. */
    bool fraction(int32_t *nsec) {
        int n = 0;
        int32_t v = 0;
        for (; p + n < end && p[n] >= '0' && p[n] <= '9'; n++) {
            if (n == FRACTION_DIGITS) return false;
            v = v * 10 + (p[n] - '0');
        }
        if (n == 0) return false;
        for (int i = n; i < FRACTION_DIGITS; i++) v *= 10;
        p += n;
        *nsec = v;
        return true;
    }
};

/* YYYY-MM-DD as a day number, checked against the calendar. */
bool read_date(cursor &c, int64_t *day_number) {
    int y, m, d;
    if (!c.number(4, 9999, &y) || !c.eat('-') || !c.number(2, 12, &m) || !c.eat('-') ||
        !c.number(2, 31, &d))
        return false;
    year_month_day ymd{year{y}, month{static_cast<unsigned>(m)}, day{static_cast<unsigned>(d)}};
    if (y < 1 || !ymd.ok()) return false;
    *day_number = sys_days{ymd}.time_since_epoch().count();
    return true;
}

/* HH:MM[:SS[.f]] as seconds into the day and nanoseconds. */
bool read_time(cursor &c, int64_t *secs, int32_t *nsec) {
    int h, m, s = 0;
    *nsec = 0;
    if (!c.number(2, 23, &h) || !c.eat(':') || !c.number(2, 59, &m)) return false;
    if (c.eat(':')) {
        if (!c.number(2, 59, &s)) return false;
        if (c.eat('.') && !c.fraction(nsec)) return false;
    }
    *secs = h * 3600 + m * 60 + s;
    return true;
}

/* Z, +hh:mm, +hhmm, or the same with -, as seconds east of UTC; nothing
 * gives 0 (the text is taken as UTC). */
bool read_zone(cursor &c, int64_t *offset) {
    *offset = 0;
    if (c.at_end() || c.eat('Z')) return true;
    int sign = c.eat('+') ? 1 : c.eat('-') ? -1 : 0;
    int h, m;
    if (sign == 0 || !c.number(2, 23, &h)) return false;
    c.eat(':');
    if (!c.number(2, 59, &m)) return false;
    *offset = sign * (h * 3600 + m * 60);
    return true;
}

char *put_number(char *p, int v, int width) {
    for (int i = width - 1; i >= 0; i--, v /= 10) p[i] = static_cast<char>('0' + v % 10);
    return p + width;
}

/* ".f" with at most `prec` digits and no trailing zeros, or nothing. */
char *put_fraction(char *p, int32_t nsec, int32_t prec) {
    int digits = prec < FRACTION_DIGITS ? prec : FRACTION_DIGITS;
    if (digits <= 0) return p;
    for (int i = digits; i < FRACTION_DIGITS; i++) nsec /= 10;
    while (digits > 0 && nsec % 10 == 0) {
        nsec /= 10;
        digits--;
    }
    if (digits == 0) return p;
    *p++ = '.';
    return put_number(p, nsec, digits);
}

} // namespace

int32_t vxtime_from_char_ex2(const char *text, uint32_t len, int32_t type, vxtime *out) {
    if (!type_known(type)) return VXTIME_ERR_ARG;
    if (text == nullptr) return VXTIME_NOT_DATETIME;
    cursor c{text, text + len};
    while (!c.at_end() && is_blank(*c.p)) c.p++;
    while (c.end > c.p && is_blank(c.end[-1])) c.end--;
    int64_t day_number, time_secs = 0, offset = 0;
    int32_t nsec = 0;
    if (!read_date(c, &day_number)) return VXTIME_NOT_DATETIME;
    if (!c.at_end()) {
        /* A time follows; a bare date takes no zone. */
        if (!(c.eat(' ') || c.eat('T')) || !read_time(c, &time_secs, &nsec) ||
            !read_zone(c, &offset) || !c.at_end())
            return VXTIME_NOT_DATETIME;
    }
    int64_t sec = day_number * SEC_PER_DAY + time_secs - offset;
    if (!sec_in_range(sec)) return VXTIME_NOT_DATETIME;
    vxtime t{sec, nsec, VXTIME_TYPE_DATETIME};
    int32_t rc = vxtime_reset(&t, type);
    if (rc == 0) *out = t;
    return rc;
}

int32_t vxtime_to_char(const vxtime *t, int32_t prec, int32_t fmt, char *buf) {
    if ((fmt != VXTIME_FMT_ISO && fmt != VXTIME_FMT_DATE) || buf == nullptr) return VXTIME_ERR_ARG;
    if (!is_valid(t)) return VXTIME_ERR_RANGE;
    int64_t day_number = floor_div(t->sec, SEC_PER_DAY);
    int secs = static_cast<int>(t->sec - day_number * SEC_PER_DAY);
    year_month_day ymd{sys_days{days{day_number}}};
    char *p = buf;
    p = put_number(p, static_cast<int>(ymd.year()), 4);
    *p++ = '-';
    p = put_number(p, static_cast<int>(static_cast<unsigned>(ymd.month())), 2);
    *p++ = '-';
    p = put_number(p, static_cast<int>(static_cast<unsigned>(ymd.day())), 2);
    if (fmt == VXTIME_FMT_ISO) {
        *p++ = 'T';
        p = put_number(p, secs / 3600, 2);
        *p++ = ':';
        p = put_number(p, secs / 60 % 60, 2);
        *p++ = ':';
        p = put_number(p, secs % 60, 2);
        p = put_fraction(p, t->nsec, prec);
    }
    *p = '\0';
    return static_cast<int32_t>(p - buf);
}

int32_t vxtime_from_unix_time(int32_t flag, int64_t secs, vxtime *out) {
    if (flag != VXTIME_FROM_UNIX_UTC) return VXTIME_ERR_ARG;
    if (!sec_in_range(secs)) return VXTIME_ERR_RANGE;
    *out = vxtime{secs, 0, VXTIME_TYPE_DATETIME};
    return 0;
}

int32_t vxtime_unix_timestamp(int64_t unit, const vxtime *t, int64_t *out_secs) {
    if (unit != VXTIME_UNIX_SECONDS) return VXTIME_ERR_ARG;
    if (!is_valid(t)) return VXTIME_ERR_RANGE;
    *out_secs = t->sec;
    return 0;
}

int32_t vxtime_get_msec(const vxtime *t) { return t->nsec; }

int32_t vxtime_set_msec(vxtime *t, int32_t nsec) {
    if (!type_known(t->type) || (t->type == VXTIME_TYPE_DATE && nsec != 0)) return VXTIME_ERR_ARG;
    int64_t carry = floor_div(nsec, NSEC_PER_SEC);
    int64_t sec = t->sec + carry;
    if (!sec_in_range(sec)) return VXTIME_ERR_RANGE;
    t->sec = sec;
    t->nsec = static_cast<int32_t>(nsec - carry * NSEC_PER_SEC);
    return 0;
}

int32_t vxtime_reset(vxtime *t, int32_t type) {
    if (!type_known(type)) return VXTIME_ERR_ARG;
    if (!is_valid(t)) return VXTIME_ERR_RANGE;
    if (type == VXTIME_TYPE_DATE) {
        t->sec = floor_div(t->sec, SEC_PER_DAY) * SEC_PER_DAY;
        t->nsec = 0;
    }
    t->type = static_cast<uint8_t>(type);
    return 0;
}
