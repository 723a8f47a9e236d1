#!/usr/bin/env python3
"""Writes the expected results for the decimal and datetime tests.

The answers come from Python's own decimal and datetime modules, never from
the code under test:

  decimal: a context of 38 digits rounding half away from zero
  (ROUND_HALF_UP), leading digit at most 10^308, finest digit 10^-345
  (Emin -308, so Etiny -345).  Zero results lose their sign.
  datetime: proleptic Gregorian calendar, UTC, years 1..9999.

Run from anywhere: python3 tests/data/gen_platform_data.py
Output: tests/data/xdec/*.tsv and tests/data/vxtime/*.tsv.  Each row is
tab-separated, starts with a stable id, and escapes tab, newline, backslash
and other control or non-ASCII bytes as \\t \\n \\\\ \\xHH.
"""
import datetime as dt
import decimal as dec
import os
import random
from fractions import Fraction

HERE = os.path.dirname(os.path.abspath(__file__))

NOT_NUMBER = 109
OVERFLOW = -6102
DIV_ZERO = -6160
PRECISION = -6161
BAD_ARG = -6162
NOT_DATETIME = 109
RANGE = -6170
DT_ARG = -6171

MAX_SCALE, MIN_SCALE = 345, -308
CTX = dec.Context(prec=38, rounding=dec.ROUND_HALF_UP, Emax=308, Emin=-308,
                  capitals=1, clamp=0,
                  traps=[dec.Overflow, dec.DivisionByZero, dec.InvalidOperation])
WIDE = dec.Context(prec=2000, Emax=10**6, Emin=-10**6,
                   traps=[dec.InvalidOperation])


def esc(s):
    out = []
    for b in s.encode('utf-8'):
        c = chr(b)
        if c == '\\':
            out.append('\\\\')
        elif c == '\t':
            out.append('\\t')
        elif c == '\n':
            out.append('\\n')
        elif b < 0x20 or b >= 0x7f:
            out.append('\\x%02x' % b)
        else:
            out.append(c)
    return ''.join(out)


def write(path, header, rows):
    ids = [r[0] for r in rows]
    assert len(ids) == len(set(ids)), 'duplicate ids in ' + path
    with open(os.path.join(HERE, path), 'w') as f:
        f.write('# ' + '\t'.join(header) + '\n')
        for r in rows:
            f.write('\t'.join(esc(str(x)) for x in r) + '\n')


# ---------------------------------------------------------------- decimal

def canon(d):
    return d.copy_abs() if d.is_zero() else d


def parse(text):
    """(status, Decimal or None) for text in the reader's own grammar."""
    try:
        return 0, canon(CTX.create_decimal(text.strip(' \t\n\r\v\f')))
    except dec.Overflow:
        return OVERFLOW, None


def rand_decimal_text(rng, max_digits=38):
    n = rng.choice([1, 1, 2, 3, 5, 9, 18, 19, 20, 30, 37, 38, max_digits])
    digits = ''.join(rng.choice('0123456789') for _ in range(n)).lstrip('0') or '0'
    if rng.random() < 0.15:
        digits = '9' * n
    exp = rng.choice([0, 0, 0, -1, -2, -6, -9, 3, rng.randint(-40, 40),
                      rng.randint(-345, -300), rng.randint(260, 308)])
    sign = rng.choice(['', '', '-'])
    return '%s%sE%d' % (sign, digits, exp)


PARSE_FIXED = [
    ('zero', '0'), ('neg_zero', '-0'), ('neg_zero_scaled', '-0.00'),
    ('zero_pos_exp', '+0E+5'), ('zero_tiny', '0e-400'), ('zero_huge', '0e400'),
    ('zero_giant_exp', '0e99999999999999999999'),
    ('one', '1'), ('neg_one', '-1'), ('plus_one', '+1'), ('trailing_point', '1.'),
    ('leading_point', '.5'), ('neg_leading_point', '-.5'),
    ('padded_zeros', '00012.3400'), ('blanks', ' 42 '), ('tab_newline', '\t-7\n'),
    ('nines_38', '9' * 38), ('nines_39', '9' * 39), ('ten_pow_38', '1' + '0' * 38),
    ('half_up_38', '12345678901234567890123456789012345678.5'),
    ('below_half_38', '12345678901234567890123456789012345678.49999'),
    ('neg_half_38', '-12345678901234567890123456789012345678.5'),
    ('half_tail_zeros', '1.' + '0' * 37 + '5000000'),
    ('below_half_tail_nines', '1.' + '0' * 37 + '49999999999'),
    ('many_digits', '1234567890' * 10),
    ('many_fraction_digits', '0.' + '1234567890' * 10),
    ('max_value', '9.' + '9' * 37 + 'e308'),
    ('max_rounds_over', '9.' + '9' * 38 + 'e308'),
    ('e308', '1e308'), ('e309', '1e309'), ('ten_e308', '10e308'),
    ('tenth_e309', '0.1e309'), ('neg_e309', '-1e309'),
    ('finest', '1e-345'), ('below_finest', '1e-346'), ('half_finest', '5e-346'),
    ('under_half_finest', '4.9e-346'), ('neg_half_finest', '-5e-346'),
    ('finest_round', '1.5e-345'), ('subnormal_round', '1.234567e-340'),
    ('subnormal_exact', '1.23456e-340'),
    ('giant_exp', '1e99999999999999999999'), ('giant_neg_exp', '1e-99999999999999999999'),
    ('micro', '0.000001'), ('below_micro', '0.0000001'), ('e3', '1E+3'),
    ('scaled_down', '1500e-1'), ('mantissa_scale_kept', '1.50E+3'),
    ('exp_leading_zeros', '2.5e-0003'), ('upper_e', '7E2'), ('neg_exp_sign', '-3.25e-2'),
]

PARSE_MALFORMED = [
    ('empty', ''), ('blank_only', '  '), ('sign_only', '-'), ('plus_only', '+'),
    ('point_only', '.'), ('sign_point', '-.'), ('exp_only', 'e5'), ('point_exp', '.e1'),
    ('no_exp_digits', '1e'), ('exp_sign_only', '1e+'), ('exp_minus_only', '1e-'),
    ('two_points', '1.2.3'), ('comma', '1,5'), ('trailing_letter', '12x'),
    ('leading_letter', 'x12'), ('double_sign', '--1'), ('mixed_signs', '+-1'),
    ('inner_blank', '1 2'), ('hex', '0x10'), ('inf', 'inf'), ('nan', 'nan'),
    ('infinity', 'Infinity'), ('underscore', '1_000'), ('fraction_exp', '1e5.5'),
    ('arabic_digit', '\u0661'), ('nul_byte', '1\x00'), ('blank_point', ' . '),
    ('blank_in_exp', '1e 5'), ('blank_before_exp', '1 e5'), ('blank_after_sign', '+ 1'),
]


def gen_parse(rng):
    rows = []
    for name, text in PARSE_FIXED:
        st, d = parse(text)
        rows.append((name, text, st, str(d) if st == 0 else ''))
    for name, text in PARSE_MALFORMED:
        rows.append((name, text, NOT_NUMBER, ''))
    for i in range(200):
        text = rand_decimal_text(rng, max_digits=rng.choice([38, 45, 60]))
        st, d = parse(text)
        rows.append(('random_%03d' % i, text, st, str(d) if st == 0 else ''))
    return rows


ARITH_FIXED = [
    ('tenths', 'add', '0.1', '0.2'), ('cancel', 'add', '5', '-5'),
    ('cancel_scales', 'sub', '1.0', '1.00'), ('keeps_scale', 'add', '1.00', '1'),
    ('carry_38', 'add', '9' * 38, '1'), ('half_38', 'add', '9' * 38, '0.5'),
    ('below_half_38', 'add', '9' * 38, '0.49'), ('neg_carry_38', 'sub', '-' + '9' * 38, '1'),
    ('tiny_addend', 'add', '1', '1e-100'), ('tiny_subtrahend', 'sub', '1', '1e-100'),
    ('tiny_half', 'sub', '1', '5e-39'), ('far_apart', 'add', '1e300', '1e-300'),
    ('zero_plus_fine', 'add', '0E-50', '1'), ('fine_zero_plus', 'add', '1', '0E-50'),
    ('zero_plus_coarse', 'add', '0E+50', '1'),
    ('finest_zero_plus_huge', 'add', '0E-345', '9E+308'), ('huge_minus_finest_zero', 'sub', '1.5E+300', '0E-300'), ('zeros', 'add', '0.00', '0E+3'),
    ('overflow_add', 'add', '9.' + '9' * 37 + 'e308', '1e271'),
    ('no_overflow_add', 'add', '9.' + '9' * 37 + 'e308', '4e270'),
    ('sub_to_neg', 'sub', '1', '3.5'), ('neg_minus_neg', 'sub', '-2', '-2.000'),
    ('subnormal_sum', 'add', '1e-345', '1e-345'), ('subnormal_cancel', 'sub', '2e-345', '2e-345'),
    ('mul_nines', 'mul', '9' * 38, '9' * 38), ('mul_underflow', 'mul', '1e-200', '1e-200'),
    ('mul_overflow', 'mul', '1e200', '1e200'), ('mul_zero_neg', 'mul', '-2', '0'),
    ('mul_halves', 'mul', '0.5', '0.5'), ('mul_exact', 'mul', '1.1', '1.1'),
    ('mul_neg', 'mul', '-1.5', '4'), ('mul_neg_neg', 'mul', '-1.5', '-4'),
    ('mul_zero_exps', 'mul', '0E-300', '0E-300'), ('mul_big_exact', 'mul', '1' + '0' * 18, '1' + '0' * 18),
    ('mul_half_round', 'mul', '1' + '0' * 36 + '5', '10'),
    ('mul_billion', 'mul', '0.500000', '1000000000'),
    ('div_third', 'div', '1', '3'), ('div_two_thirds', 'div', '2', '3'),
    ('div_neg_seventh', 'div', '-1', '7'), ('div_zero', 'div', '1', '0'),
    ('div_zero_zero', 'div', '0', '0'), ('div_into_zero', 'div', '0', '5'),
    ('div_zero_scaled', 'div', '0.00', '1'), ('div_quarter', 'div', '1.00', '4'),
    ('div_exact_int', 'div', '100', '4'), ('div_eighth', 'div', '1', '8'),
    ('div_scaled_int', 'div', '1E+2', '4'), ('div_nanos', 'div', '500000000', '1000000000'),
    ('div_quarter_nanos', 'div', '250000000', '1000000000'),
    ('div_overflow', 'div', '1' + '0' * 37, '1e-300'), ('div_underflow', 'div', '1e-300', '1e100'),
    ('div_wide_divisor', 'div', '1', '98765432109876543210987654321'),
    ('div_wide_exact', 'div', '1219326311370217952237463801111263526900',
     '12345678901234567890'),
    ('div_by_nines', 'div', '1' + '0' * 37, '9' * 38),
    ('div_keeps_zeros', 'div', '10.00', '2'),
    ('borrow_across_limbs', 'sub', '1E+48', '18960114910927365649471927446130393089'),
]


def arith(op, a, b):
    fn = {'add': CTX.add, 'sub': CTX.subtract, 'mul': CTX.multiply, 'div': CTX.divide}[op]
    try:
        return 0, str(canon(fn(a, b)))
    except dec.Overflow:
        return OVERFLOW, ''
    except (dec.DivisionByZero, dec.InvalidOperation):
        return DIV_ZERO, ''


def gen_arith(rng):
    rows = []
    for name, op, ta, tb in ARITH_FIXED:
        a, b = parse(ta)[1], parse(tb)[1]
        rows.append((name, op, ta, tb) + arith(op, a, b))
    for i in range(480):
        op = ('add', 'sub', 'mul', 'div')[i % 4]
        ta, tb = rand_decimal_text(rng), rand_decimal_text(rng)
        if rng.random() < 0.3:  # nearby exponents, so digits overlap
            tb = '%sE%d' % (tb.split('E')[0], int(ta.split('E')[1]) + rng.randint(-5, 5))
        sa, a = parse(ta)
        sb, b = parse(tb)
        if sa or sb:
            continue
        rows.append(('random_%03d' % i, op, ta, tb) + arith(op, a, b))
    return rows


SCALE_FIXED = [
    ('half_pad', 'format', '0.5', 6, 6), ('round_up_6', 'format', '0.1234565', 6, 6),
    ('round_down_6', 'format', '0.1234564999', 6, 6), ('neg_round_up', 'format', '-0.0000005', 6, 6),
    ('round_to_zero', 'format', '0.0000004', 6, 6), ('neg_round_to_zero', 'format', '-0.0000004', 6, 6),
    ('carry_past_prec', 'format', '0.9999995', 6, 6), ('int_past_prec', 'format', '1', 6, 6),
    ('fits_5_2', 'format', '999.994', 5, 2), ('carry_5_2', 'format', '999.995', 5, 2),
    ('neg_carry_5_2', 'format', '-999.995', 5, 2), ('nines_half', 'format', '9' * 38 + '.5', 38, 0),
    ('nines_38', 'format', '9' * 38, 38, 0), ('huge', 'format', '1E+300', 6, 6),
    ('finest', 'format', '1e-345', 38, 345), ('neg_scale', 'format', '12345', 5, -2),
    ('neg_scale_half', 'format', '12350', 3, -2), ('scale_above_prec', 'format', '0.00012', 2, 5),
    ('zero_coarse', 'format', '0E+10', 6, 6), ('zero_fine', 'format', '0E-100', 6, 6),
    ('pad_big', 'format', '1E+20', 38, 17), ('pad_too_big', 'format', '1E+20', 38, 18),
    ('prec_zero', 'format', '1', 0, 0), ('prec_39', 'format', '1', 39, 0),
    ('scale_346', 'format', '1', 38, 346), ('scale_neg_309', 'format', '1', 38, -309),
    ('trunc_pos', 'trunc', '1.99', 0, 0), ('trunc_neg', 'trunc', '-1.99', 0, 0),
    ('trunc_neg_half', 'trunc', '-0.5', 0, 0), ('trunc_coarse_kept', 'trunc', '1.5E+3', 0, 0),
    ('trunc_two_places', 'trunc', '123.456', 0, 2), ('trunc_tens', 'trunc', '123.456', 0, -1),
    ('trunc_finest', 'trunc', '1e-345', 0, 0), ('trunc_wider', 'trunc', '1.5', 0, 3),
    ('trunc_nines', 'trunc', '0.' + '9' * 38, 0, 37), ('trunc_scale_346', 'trunc', '1', 0, 346),
    ('trunc_scale_neg_309', 'trunc', '1', 0, -309), ('trunc_scale_neg_308', 'trunc', '1E+308', 0, -308),
]


def scale_op(op, a, prec, scale):
    if scale < MIN_SCALE or scale > MAX_SCALE or (op == 'format' and not 1 <= prec <= 38):
        return BAD_ARG, ''
    q = dec.Decimal(1).scaleb(-scale)
    if op == 'trunc':
        r = a if a.as_tuple().exponent >= -scale else a.quantize(q, dec.ROUND_DOWN, WIDE)
        return 0, str(canon(r))
    r = a.quantize(q, dec.ROUND_HALF_UP, WIDE)
    if not r.is_zero() and len(r.as_tuple().digits) > prec:
        return PRECISION, ''
    return 0, str(canon(r))


def gen_scale(rng):
    rows = []
    for name, op, ta, prec, scale in SCALE_FIXED:
        rows.append((name, op, ta, prec, scale) + scale_op(op, parse(ta)[1], prec, scale))
    for i in range(160):
        op = ('format', 'trunc')[i % 2]
        ta = rand_decimal_text(rng)
        st, a = parse(ta)
        if st:
            continue
        prec = rng.randint(1, 38)
        scale = rng.choice([0, 2, 6, rng.randint(-5, prec), rng.randint(-a.as_tuple().exponent - 3,
                                                                       -a.as_tuple().exponent + 3)])
        scale = max(MIN_SCALE, min(MAX_SCALE, scale))
        rows.append(('random_%03d' % i, op, ta, prec, scale) + scale_op(op, a, prec, scale))
    return rows


INT64_MIN, INT64_MAX = -2**63, 2**63 - 1

TO_INT64 = [
    ('max', '9223372036854775807'), ('max_plus_one', '9223372036854775808'),
    ('min', '-9223372036854775808'), ('min_minus_one', '-9223372036854775809'),
    ('max_fraction', '9223372036854775807.999'), ('min_fraction', '-9223372036854775808.9'),
    ('e18', '1E+18'), ('e19', '1E+19'), ('coarse_fits', '9.2E+18'), ('finest', '1e-345'),
    ('zero_coarse', '0E+308'), ('neg_fraction', '-0.9'), ('coarse', '1.5E+3'),
    ('nines_38', '9' * 38), ('fraction_38', '0.' + '9' * 38), ('e308', '1e308'),
]

DOUBLES = [0.0, -0.0, 1.0, -1.0, 0.1, 1 / 3, 1500.0, 1e16, 1e22, 1e23, 123.456, 2.0 ** 63,
           2.0 ** 126, 1e37, 9.999999999999999e37, 1e38, 1e300, 1.7976931348623157e308,
           2.2250738585072014e-308, 5e-324, 2.225073858507201e-308, -2.5e-10, 0.000001,
           float('inf'), float('-inf'), float('nan')]


def double_expected(x):
    if x != x:
        return NOT_NUMBER, ''
    if x in (float('inf'), float('-inf')):
        return OVERFLOW, ''
    d = canon(dec.Decimal(repr(x)).normalize(CTX))
    e = d.as_tuple().exponent
    if e > 0 and d.adjusted() < 38:  # whole numbers come out with scale 0
        d = d.quantize(dec.Decimal(1), context=WIDE)
    return 0, str(d)


def gen_convert(rng):
    rows = []
    for name, text in TO_INT64:
        v = int(parse(text)[1])
        rows.append(('int64_out_' + name, 'int64_out', text) +
                     ((0, v) if INT64_MIN <= v <= INT64_MAX else (OVERFLOW, '')))
    ints = [0, 1, -1, INT64_MAX, INT64_MIN, 10**18, -10**18] + \
        [rng.randint(INT64_MIN, INT64_MAX) for _ in range(20)]
    for i, v in enumerate(ints):
        rows.append(('int64_in_%02d' % i, 'int64_in', v, 0, str(dec.Decimal(v))))
    doubles = DOUBLES + [rng.choice([-1, 1]) * rng.random() * 10.0 ** rng.randint(-320, 308)
                         for _ in range(60)] + \
        [float(rng.randint(-2**60, 2**60)) for _ in range(10)]
    for i, x in enumerate(doubles):
        rows.append(('double_%02d' % i, 'double', x.hex()) + double_expected(x))
    return rows


# --------------------------------------------------------------- datetime

EPOCH = dt.datetime(1970, 1, 1, tzinfo=dt.timezone.utc)
def utc_seconds(aware):
    return (aware - EPOCH) // dt.timedelta(seconds=1)


MIN_SEC = utc_seconds(dt.datetime(1, 1, 1, tzinfo=dt.timezone.utc))
MAX_SEC = utc_seconds(dt.datetime(9999, 12, 31, 23, 59, 59, tzinfo=dt.timezone.utc))


def day_start(sec):
    day = (EPOCH + dt.timedelta(seconds=sec)).date()
    return utc_seconds(dt.datetime(day.year, day.month, day.day, tzinfo=dt.timezone.utc))


def parse_row(name, text, fields, typ=16):
    """fields: (y, mo, d, h, mi, s, nsec, offset_minutes) or None for malformed."""
    if typ not in (14, 16):
        return (name, text, typ, DT_ARG, '', '', '')
    if fields is None:
        return (name, text, typ, NOT_DATETIME, '', '', '')
    y, mo, d, h, mi, s, ns, off = fields
    try:
        local = dt.datetime(y, mo, d, h, mi, s, tzinfo=dt.timezone(dt.timedelta(minutes=off)))
    except ValueError:
        return (name, text, typ, NOT_DATETIME, '', '', '')
    sec = utc_seconds(local)
    if not MIN_SEC <= sec <= MAX_SEC:
        return (name, text, typ, NOT_DATETIME, '', '', '')
    if typ == 14:
        return (name, text, typ, 0, day_start(sec), 0, 14)
    return (name, text, typ, 0, sec, ns, 16)


def F(y, mo, d, h=0, mi=0, s=0, ns=0, off=0):
    return (y, mo, d, h, mi, s, ns, off)


DT_PARSE_FIXED = [
    ('epoch_date', '1970-01-01', F(1970, 1, 1)),
    ('leap_2024', '2024-02-29', F(2024, 2, 29)), ('no_leap_2023', '2023-02-29', F(2023, 2, 29)),
    ('no_leap_1900', '1900-02-29', F(1900, 2, 29)), ('leap_2000', '2000-02-29', F(2000, 2, 29)),
    ('no_leap_2100', '2100-02-29', F(2100, 2, 29)), ('leap_0004', '0004-02-29', F(4, 2, 29)),
    ('april_31', '2024-04-31', F(2024, 4, 31)), ('dec_31', '2024-12-31', F(2024, 12, 31)),
    ('first_day', '0001-01-01', F(1, 1, 1)),
    ('last_instant', '9999-12-31 23:59:59.999999999', F(9999, 12, 31, 23, 59, 59, 999999999)),
    ('zone_before_year_1', '0001-01-01T00:00:00+00:01', F(1, 1, 1, 0, 0, 0, 0, 1)),
    ('zone_into_year_1', '0001-01-01T00:00:00-00:01', F(1, 1, 1, 0, 0, 0, 0, -1)),
    ('zone_past_9999', '9999-12-31T23:59:59-00:01', F(9999, 12, 31, 23, 59, 59, 0, -1)),
    ('zone_back_into_9999', '9999-12-31T23:59:59+00:01', F(9999, 12, 31, 23, 59, 59, 0, 1)),
    ('before_epoch_half', '1969-12-31T23:59:59.5', F(1969, 12, 31, 23, 59, 59, 500000000)),
    ('space_sep', '2024-01-15 10:30:00', F(2024, 1, 15, 10, 30)),
    ('no_seconds', '2024-01-15T10:30', F(2024, 1, 15, 10, 30)),
    ('zulu', '2024-01-15T10:30Z', F(2024, 1, 15, 10, 30)),
    ('east_colon', '2024-01-15T10:30:00+05:30', F(2024, 1, 15, 10, 30, 0, 0, 330)),
    ('east_compact', '2024-01-15T10:30:00+0530', F(2024, 1, 15, 10, 30, 0, 0, 330)),
    ('west', '2024-01-15T10:30:00-08:00', F(2024, 1, 15, 10, 30, 0, 0, -480)),
    ('west_next_day', '2024-12-31T20:00:00-08:00', F(2024, 12, 31, 20, 0, 0, 0, -480)),
    ('nanos_zulu', '2024-01-15T10:30:00.123456789Z', F(2024, 1, 15, 10, 30, 0, 123456789)),
    ('tenth', '2024-01-15T10:30:00.1', F(2024, 1, 15, 10, 30, 0, 100000000)),
    ('one_nano', '2024-01-15T10:30:00.000000001', F(2024, 1, 15, 10, 30, 0, 1)),
    ('max_zone', '2024-01-15T10:30:00+23:59', F(2024, 1, 15, 10, 30, 0, 0, 1439)),
    ('blanks_around', '  2024-01-15T10:30:00\t', F(2024, 1, 15, 10, 30)),
    ('end_of_day', '2024-01-15T23:59:59', F(2024, 1, 15, 23, 59, 59)),
    ('two_digit_month', '2024-1-15', None), ('one_digit_day', '2024-01-5', None),
    ('two_digit_year', '24-01-15', None), ('slashes', '2024/01/15', None),
    ('month_13', '2024-13-01', None), ('month_0', '2024-00-10', None), ('day_0', '2024-01-00', None),
    ('day_32', '2024-01-32', None), ('year_0', '0000-12-31', None), ('year_5_digits', '10000-01-01', None),
    ('hour_24', '2024-01-15T24:00:00', None), ('minute_60', '2024-01-15T23:60:00', None),
    ('leap_second', '2024-01-15T23:59:60', None), ('hour_only', '2024-01-15T10', None),
    ('empty_fraction', '2024-01-15T10:30:00.', None), ('ten_digits', '2024-01-15T10:30:00.1234567890', None),
    ('blank_before_zone', '2024-01-15 10:30:00 +05:00', None),
    ('short_zone_hour', '2024-01-15T10:30:00+5:00', None), ('short_zone_minute', '2024-01-15T10:30:00+05:3', None),
    ('zone_24', '2024-01-15T10:30:00+24:00', None), ('zone_minute_60', '2024-01-15T10:30:00+05:60', None),
    ('zone_hours_only', '2024-01-15T10:30:00+05', None), ('date_with_zone', '2024-01-15Z', None),
    ('dangling_t', '2024-01-15T', None), ('two_blanks', '2024-01-15  10:30', None),
    ('lower_t', '2024-01-15t10:30', None), ('empty', '', None), ('blank', ' ', None),
    ('word', 'abc', None), ('date_junk', '2024-01-15x', None), ('zone_junk', '2024-01-15T10:30:00Zjunk', None),
    ('neg_year', '-2024-01-15', None), ('plus_year', '+2024-01-15', None),
    ('time_only', '12:00:00', None), ('fraction_no_seconds', '2024-01-15T10:30.5', None),
]


def render(rng, y, mo, d, h, mi, s, ns, off):
    text = '%04d-%02d-%02d' % (y, mo, d)
    text += rng.choice([' ', 'T'])
    text += '%02d:%02d:%02d' % (h, mi, s)
    if ns:
        digits = rng.randint(1, 9)
        ns = ns // 10 ** (9 - digits) * 10 ** (9 - digits)
        text += '.' + ('%09d' % ns)[:digits]
    if off == 0 and rng.random() < 0.5:
        text += rng.choice(['', 'Z'])
    else:
        sign = '-' if off < 0 else '+'
        hh, mm = divmod(abs(off), 60)
        text += sign + ('%02d:%02d' if rng.random() < 0.5 else '%02d%02d') % (hh, mm)
    return text, ns


def gen_dt_parse(rng):
    rows = [parse_row(n, t, f) for n, t, f in DT_PARSE_FIXED]
    rows.append(parse_row('as_date_drops_time', '2024-01-15T10:30:00', F(2024, 1, 15, 10, 30), 14))
    rows.append(parse_row('as_date_after_zone', '2024-01-15T02:00:00+05:00',
                          F(2024, 1, 15, 2, 0, 0, 0, 300), 14))
    rows.append(parse_row('as_date_before_epoch', '1969-07-20T20:17:40', F(1969, 7, 20, 20, 17, 40), 14))
    rows.append(parse_row('bad_type', '2024-01-15', F(2024, 1, 15), 15))
    for i in range(200):
        y = rng.choice([1, 2, 1600, 1900, 1969, 1970, 2000, 2024, 9999, rng.randint(1, 9999)])
        mo = rng.randint(1, 12)
        d = rng.choice([1, 28, 29, 30, 31, rng.randint(1, 31)])
        h, mi, s = rng.randint(0, 23), rng.randint(0, 59), rng.randint(0, 59)
        ns = rng.choice([0, rng.randint(0, 999999999)])
        off = rng.choice([0, 0, rng.randint(-1439, 1439), 330, -480])
        text, ns = render(rng, y, mo, d, h, mi, s, ns, off)
        rows.append(parse_row('random_%03d' % i, text, F(y, mo, d, h, mi, s, ns, off)))
    return rows


def printed(sec, nsec, prec, fmt):
    if fmt not in (6, 8192):
        return DT_ARG, ''
    if not (MIN_SEC <= sec <= MAX_SEC and 0 <= nsec < 10**9):
        return RANGE, ''
    t = EPOCH + dt.timedelta(seconds=sec)
    text = '%04d-%02d-%02d' % (t.year, t.month, t.day)
    if fmt == 6:
        text += 'T%02d:%02d:%02d' % (t.hour, t.minute, t.second)
        frac = ('%09d' % nsec)[:max(0, min(prec, 9))].rstrip('0')
        if frac:
            text += '.' + frac
    return 0, text


def gen_dt_print(rng):
    fixed = [
        ('epoch', 0, 0, 16, 16, 6), ('epoch_date', 0, 0, 14, 16, 8192),
        ('first', MIN_SEC, 0, 16, 16, 6), ('last', MAX_SEC, 999999999, 16, 16, 6),
        ('before_first', MIN_SEC - 1, 0, 16, 16, 6), ('after_last', MAX_SEC + 1, 0, 16, 16, 8192),
        ('neg_nsec', 0, -1, 16, 16, 6), ('nsec_overflow', 0, 10**9, 16, 16, 6),
        ('bad_format', 0, 0, 16, 16, 7), ('half', -1, 500000000, 16, 16, 6),
        ('nanos', 1, 1, 16, 16, 6), ('prec_3_cut', 1, 123456789, 16, 3, 6),
        ('prec_3_zeros', 1, 100900000, 16, 3, 6), ('prec_0', 1, 999999999, 16, 0, 6),
        ('prec_9', 1, 120000000, 16, 9, 6), ('date_of_datetime', 86399, 5, 16, 16, 8192),
        ('year_999', utc_seconds(dt.datetime(999, 3, 1, 12, tzinfo=dt.timezone.utc)),
         0, 16, 16, 6),
        ('leap_day', utc_seconds(dt.datetime(2024, 2, 29, tzinfo=dt.timezone.utc)),
         0, 14, 16, 8192),
    ]
    rows = [(n, s, ns, ty, p, f) + printed(s, ns, p, f) for n, s, ns, ty, p, f in fixed]
    for i in range(150):
        s = rng.choice([rng.randint(MIN_SEC, MAX_SEC), rng.randint(-10**9, 10**9)])
        ns = rng.choice([0, rng.randint(0, 999999999), rng.randint(0, 999) * 1000000])
        fmt = rng.choice([6, 6, 8192])
        prec = rng.choice([16, 16, 9, 6, 3, 1])
        ty = 14 if fmt == 8192 else 16
        rows.append(('random_%03d' % i, s, ns, ty, prec, fmt) + printed(s, ns, prec, fmt))
    return rows


def unix_row(name, op, sec, nsec, typ, arg):
    """Expected (status, sec, nsec, type) of one operation on one value."""
    fail = lambda st: (name, op, sec, nsec, typ, arg, st, '', '', '')
    valid = MIN_SEC <= sec <= MAX_SEC and 0 <= nsec < 10**9
    if op == 'from_unix':
        if arg != 0:
            return fail(DT_ARG)
        if not MIN_SEC <= sec <= MAX_SEC:
            return fail(RANGE)
        return (name, op, sec, nsec, typ, arg, 0, sec, 0, 16)
    if op == 'timestamp':
        if arg != 1000:
            return fail(DT_ARG)
        return (name, op, sec, nsec, typ, arg, 0, sec, '', '') if valid else fail(RANGE)
    if op == 'set_msec':
        if typ not in (14, 16) or (typ == 14 and arg != 0):
            return fail(DT_ARG)
        value = sec + Fraction(arg, 10**9)
        whole = value.numerator // value.denominator
        if not MIN_SEC <= whole <= MAX_SEC:
            return fail(RANGE)
        return (name, op, sec, nsec, typ, arg, 0, whole, int((value - whole) * 10**9), typ)
    if op == 'reset':
        if arg not in (14, 16):
            return fail(DT_ARG)
        if not valid:
            return fail(RANGE)
        if arg == 14:
            return (name, op, sec, nsec, typ, arg, 0, day_start(sec), 0, 14)
        return (name, op, sec, nsec, typ, arg, 0, sec, nsec, 16)
    raise ValueError(op)


def gen_dt_unix(rng):
    I32_MIN, I32_MAX = -2**31, 2**31 - 1
    fixed = [
        ('from_epoch', 'from_unix', 0, 0, 16, 0), ('from_neg', 'from_unix', -1, 0, 16, 0),
        ('from_first', 'from_unix', MIN_SEC, 0, 16, 0), ('from_before_first', 'from_unix', MIN_SEC - 1, 0, 16, 0),
        ('from_last', 'from_unix', MAX_SEC, 0, 16, 0), ('from_after_last', 'from_unix', MAX_SEC + 1, 0, 16, 0),
        ('from_2038', 'from_unix', 2**31, 0, 16, 0), ('from_bad_flag', 'from_unix', 0, 0, 16, 1),
        ('ts_epoch', 'timestamp', 0, 0, 16, 1000), ('ts_neg_fraction', 'timestamp', -1, 500000000, 16, 1000),
        ('ts_bad_unit', 'timestamp', 0, 0, 16, 1), ('ts_out_of_range', 'timestamp', MAX_SEC + 1, 0, 16, 1000),
        ('ts_bad_nsec', 'timestamp', 0, 10**9, 16, 1000),
        ('set_neg_half', 'set_msec', -1, 0, 16, -500000000), ('set_quarter', 'set_msec', 0, 0, 16, 250000000),
        ('set_clears', 'set_msec', 5, 999, 16, 0), ('set_neg_nano', 'set_msec', -1, 0, 16, -1),
        ('set_neg_most', 'set_msec', 0, 0, 16, -999999999), ('set_most', 'set_msec', 0, 0, 16, 999999999),
        ('set_int_max', 'set_msec', 0, 0, 16, I32_MAX), ('set_int_min', 'set_msec', 0, 0, 16, I32_MIN),
        ('set_date_zero', 'set_msec', 86400, 0, 14, 0), ('set_date_fraction', 'set_msec', 86400, 0, 14, 5),
        ('set_below_first', 'set_msec', MIN_SEC, 0, 16, -1), ('set_at_last', 'set_msec', MAX_SEC, 0, 16, 999999999),
        ('set_past_last', 'set_msec', MAX_SEC, 0, 16, I32_MAX), ('set_bad_type', 'set_msec', 0, 0, 9, 0),
        ('reset_to_date', 'reset', 37800, 5, 16, 14), ('reset_neg_to_date', 'reset', -1, 500000000, 16, 14),
        ('reset_first_to_date', 'reset', MIN_SEC + 3600, 0, 16, 14), ('reset_keep', 'reset', -1, 5, 16, 16),
        ('reset_date_to_datetime', 'reset', 86400, 0, 14, 16), ('reset_bad_type', 'reset', 0, 0, 16, 15),
        ('reset_out_of_range', 'reset', MIN_SEC - 1, 0, 16, 14),
    ]
    rows = [unix_row(*r) for r in fixed]
    for i in range(120):
        op = ('from_unix', 'timestamp', 'set_msec', 'reset')[i % 4]
        sec = rng.choice([rng.randint(MIN_SEC, MAX_SEC), rng.randint(-2**31, 2**31)])
        nsec = rng.randint(0, 999999999)
        arg = {'from_unix': 0, 'timestamp': 1000, 'reset': rng.choice([14, 16]),
               'set_msec': rng.randint(-999999999, 999999999)}[op]
        rows.append(unix_row('random_%03d' % i, op, sec, nsec, 16, arg))
    return rows


def main():
    rng = random.Random(20240229)
    for sub in ('xdec', 'vxtime'):
        os.makedirs(os.path.join(HERE, sub), exist_ok=True)
    write('xdec/parse.tsv', ['id', 'text', 'status', 'result'], gen_parse(rng))
    write('xdec/arith.tsv', ['id', 'op', 'a', 'b', 'status', 'result'], gen_arith(rng))
    write('xdec/scale.tsv', ['id', 'op', 'a', 'prec', 'scale', 'status', 'result'], gen_scale(rng))
    write('xdec/convert.tsv', ['id', 'op', 'input', 'status', 'result'], gen_convert(rng))
    write('vxtime/parse.tsv', ['id', 'text', 'type', 'status', 'sec', 'nsec', 'type_out'],
          gen_dt_parse(rng))
    write('vxtime/print.tsv', ['id', 'sec', 'nsec', 'type', 'prec', 'fmt', 'status', 'text'],
          gen_dt_print(rng))
    write('vxtime/unix.tsv', ['id', 'op', 'sec', 'nsec', 'type', 'arg', 'status', 'out_sec',
                              'out_nsec', 'out_type'], gen_dt_unix(rng))


if __name__ == '__main__':
    main()
