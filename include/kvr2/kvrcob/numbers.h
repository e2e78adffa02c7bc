/**
 * Loads and stores of binary items, wide integers, and the ways between integers, packed and
 * floating-point numbers and texts.
 */
#ifndef KVR2_KVRCOB_NUMBERS_H
#define KVR2_KVRCOB_NUMBERS_H

/* 128-bit integers are no ISO C. */
#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include "kvr2/exponentiation.h"
#include "kvr2/kvrcob/base.h"

/* ---- Binary items, at any alignment */

#define KVR_BINARY(bits, size)                                                                                         \
    KVR_INLINE int##bits##_t kvr_get_s##size(const uint8_t *p)                                                         \
    {                                                                                                                  \
        int##bits##_t v;                                                                                               \
        memcpy(&v, p, size);                                                                                           \
        return v;                                                                                                      \
    }                                                                                                                  \
    KVR_INLINE uint##bits##_t kvr_get_u##size(const uint8_t *p)                                                        \
    {                                                                                                                  \
        uint##bits##_t v;                                                                                              \
        memcpy(&v, p, size);                                                                                           \
        return v;                                                                                                      \
    }                                                                                                                  \
    KVR_INLINE void kvr_put_##size(uint8_t *p, int64_t value)                                                          \
    {                                                                                                                  \
        int##bits##_t v = (int##bits##_t)value;                                                                        \
        memcpy(p, &v, size);                                                                                           \
    }
KVR_BINARY(8, 1)
KVR_BINARY(16, 2)
KVR_BINARY(32, 4)
KVR_BINARY(64, 8)

/* Unsigned, high byte first. */
KVR_INLINE uint64_t kvr_get_big(const uint8_t *p, int size)
{
    uint64_t v = 0;
    int i;
    for (i = 0; i < size; i++) v = v << 8 | p[i];
    return v;
}
KVR_INLINE void kvr_put_big(uint8_t *p, int size, uint64_t value)
{
    for (; size-- > 0; value >>= 8) p[size] = (uint8_t)value;
}

/*
 * COMP-6: two digits a byte and no sign. A packed number of as many digits is the same one digit to
 * the left, with the sign after it.
 */
KVR_INLINE uint8_t *kvr_get_signless(const uint8_t *item, uint8_t *packed, int digits)
{
    int from = (digits + 1) / 2, to = digits / 2;
    packed[to] = (uint8_t)(item[from - 1] << 4 | 0x0F);
    while (to-- > 0) {
        from--;
        packed[to] = (uint8_t)((from > 0 ? item[from - 1] << 4 : 0) | item[from] >> 4);
    }
    return packed;
}
KVR_INLINE void kvr_put_signless(const uint8_t *packed, uint8_t *item, int digits, int packedDigits)
{
    int from = packedDigits / 2, to = (digits + 1) / 2;
    while (to-- > 0) {
        item[to] = (uint8_t)((from > 0 ? packed[from - 1] << 4 : 0) | (from >= 0 ? packed[from] >> 4 : 0));
        from--;
    }
    if (digits & 1) item[0] &= 0x0F;
}
KVR_INLINE int kvr_is_signless(const uint8_t *item, int size)
{
    while (size-- > 0)
        if (item[size] >> 4 > 9 || (item[size] & 15) > 9) return 0;
    return 1;
}

KVR_INLINE double kvr_get_float(const uint8_t *p)
{
    float v;
    memcpy(&v, p, 4);
    return v;
}
KVR_INLINE double kvr_get_double(const uint8_t *p)
{
    double v;
    memcpy(&v, p, 8);
    return v;
}
KVR_INLINE void kvr_put_float(uint8_t *p, double value)
{
    float v = (float)value;
    memcpy(p, &v, 4);
}
KVR_INLINE void kvr_put_double(uint8_t *p, double value) { memcpy(p, &value, 8); }

/*
 * A zoned item of up to 18 digits with its sign in the last one. The arithmetic entries know the
 * native form of the sign only; one that is a letter becomes native first.
 */
KVR_SHARED int64_t kvr_zoned_number(const uint8_t *p, int32_t digits)
{
    uint8_t last = p[digits - 1], native[18];
    if ((last >= 'A' && last <= 'R') || last == '{' || last == '}') {
        _zvkcBCD_CONV_ZndTO_To_ZndTO(p, native, digits, digits);
        return _zvkcBCD_CONV_Znd_To_Int8(native, digits);
    }
    return _zvkcBCD_CONV_Znd_To_Int8(p, digits);
}

/*
 * Counters and subscripts: the value of one to four plain digits; -1 where a byte is anything else.
 * A byte of its own for each of up to three digits: they may just have been stored apart, and a
 * load over several stores waits for all of them.
 */
KVR_INLINE int64_t kvr_few_digits(const uint8_t *p, int32_t digits)
{
    uint32_t a, b, c, v;
    switch (digits) {
    case 1:
        a = p[0] - (uint32_t)'0';
        return a <= 9 ? (int64_t)a : -1;
    case 2:
        a = p[0] - (uint32_t)'0', b = p[1] - (uint32_t)'0';
        return (a <= 9) & (b <= 9) ? (int64_t)(a * 10 + b) : -1;
    case 3:
        a = p[0] - (uint32_t)'0', b = p[1] - (uint32_t)'0', c = p[2] - (uint32_t)'0';
        return (a <= 9) & (b <= 9) & (c <= 9) ? (int64_t)(a * 100 + b * 10 + c) : -1;
    default:
        memcpy(&v, p, 4);
        v ^= 0x30303030u; /* a digit is 0 to 9 now, and with six more still below 16 */
        if (((v | ((v & 0x0F0F0F0Fu) + 0x06060606u)) & 0xF0F0F0F0u) != 0) return -1;
        v = (v & 0x00FF00FFu) * 10 + (v >> 8 & 0x00FF00FFu);
        return (v & 0xFFFFu) * 100 + (v >> 16);
    }
}
/*
 * Zoned items of one to four digits; the library knows what others than plain ones mean. A copy at
 * each place would be faster by a nanosecond, and take the C compiler up to three quarters longer.
 */
KVR_SHARED int64_t kvr_few_unsigned(const uint8_t *p, int32_t digits)
{
    int64_t v = kvr_few_digits(p, digits);
    return __builtin_expect(v >= 0, 1) ? v : _zvkcBCD_CONV_Znd_To_Int8(p, digits);
}
KVR_SHARED int64_t kvr_few_signed(const uint8_t *p, int32_t digits)
{
    int64_t v = kvr_few_digits(p, digits);
    return __builtin_expect(v >= 0, 1) ? v : kvr_zoned_number(p, digits);
}

/* ---- Integers */

KVR_INLINE int64_t kvr_abs(int64_t v) { return v < 0 ? -v : v; }
KVR_INLINE __int128 kvr_abs_wide(__int128 v) { return v < 0 ? -v : v; }

/* The digits below the unit, with their sign. Most numbers have no others, and a comparison takes
   less time than a division. */
KVR_INLINE int64_t kvr_cut(int64_t v, int64_t unit)
{
    return __builtin_expect(v < unit && v > -unit, 1) ? v : v % unit;
}
KVR_INLINE int64_t kvr_cut_wide(__int128 v, int64_t unit)
{
    return (int64_t)(__builtin_expect(v < unit && v > -unit, 1) ? v : v % unit);
}

/*
 * A division of 128 bits is a routine of the C compiler's, of 64 bits an instruction. Most operands
 * fit; the least number of 64 bits does not count among them, for by -1 it has no quotient.
 */
KVR_SHARED __int128 kvr_quotient(__int128 a, __int128 b)
{
    int64_t x = (int64_t)a, y = (int64_t)b;
    return x == a && y == b && x != INT64_MIN ? x / y : a / b;
}

/* v / unit, rounded half away from zero */
KVR_INLINE int64_t kvr_round(int64_t v, int64_t unit)
{
    int64_t q = v / unit, r = v % unit;
    if (r < 0) r = -r;
    if (r >= unit - r) q += v < 0 ? -1 : 1;
    return q;
}
KVR_INLINE __int128 kvr_round_wide(__int128 v, __int128 unit)
{
    __int128 q = kvr_quotient(v, unit), r = v - q * unit;
    if (r < 0) r = -r;
    if (r >= unit - r) q += v < 0 ? -1 : 1;
    return q;
}

/*
 * v / unit by ROUNDED MODE: 2 to the nearest, of two that are equally near to the even one, 3 of
 * two to the one toward zero, 4 away from zero, 5 to the greater, 6 to the lesser.
 */
KVR_SHARED __int128 kvr_round_mode(__int128 v, __int128 unit, int mode)
{
    __int128 q = v / unit, r = kvr_abs_wide(v % unit), away = v < 0 ? -1 : 1;
    if (r == 0) return q;
    switch (mode) {
    case 2:
        return r > unit - r || (r == unit - r && q % 2 != 0) ? q + away : q;
    case 3:
        return r > unit - r ? q + away : q;
    case 4:
        return q + away;
    case 5:
        return v > 0 ? q + 1 : q;
    default:
        return v < 0 ? q - 1 : q;
    }
}

KVR_INLINE int64_t kvr_divide(int64_t a, int64_t b, int *zero)
{
    if (b == 0) {
        *zero = 1;
        return 0;
    }
    return a / b;
}
KVR_INLINE __int128 kvr_divide_wide(__int128 a, __int128 b, int *zero)
{
    if (b == 0) {
        *zero = 1;
        return 0;
    }
    return kvr_quotient(a, b);
}
KVR_INLINE double kvr_divide_float(double a, double b, int *zero)
{
    if (b == 0) {
        *zero = 1;
        return 0;
    }
    return a / b;
}

KVR_INLINE int kvr_fits_binary(__int128 v, int size, int isSigned)
{
    __int128 limit = (__int128)1 << (size * 8 - (isSigned ? 1 : 0));
    return v < limit && v >= (isSigned ? -limit : 0);
}

KVR_INLINE int64_t kvr_occurs(int64_t n, int64_t most) { return n < 0 ? 0 : n > most ? most : n; }

/*
 * A packed result that the library cut to the item's digits: into the item, without the sign of a
 * negative zero.
 */
KVR_INLINE void kvr_put_packed(uint8_t *to, const uint8_t *from, int bytes)
{
    memcpy(to, from, (size_t)bytes);
    if (to[bytes - 1] == 0x0D) {
        int i = 0;
        while (i < bytes - 1 && to[i] == 0) i++;
        if (i == bytes - 1) to[i] = 0x0C;
    }
}

/* A wide integer to packed and back, through the library's conversions of 18 digits each. */
KVR_SHARED uint8_t *kvr_pack(__int128 v, uint8_t *to, int32_t digits)
{
    const __int128 unit = 1000000000000000000LL;
    uint8_t high[32], moved[32], low[16];
    int negative = v < 0;
    __int128 top;
    if (negative) v = -v;
    _zvkcBCD_CONV_Int8_To_Pckd((int64_t)(v % unit), low, 18);
    v /= unit;
    top = v / unit;
    _zvkcBCD_CONV_Int8_To_Pckd((int64_t)(v % unit), high, 39);
    _zvkcBCD_SHFD_Pckd_Left(high, moved, 39, 39, 18);
    _zvkcBCD_ADD_Pckd(moved, low, high, 39, 18, 39);
    if (top) {
        _zvkcBCD_CONV_Int8_To_Pckd((int64_t)top, low, 3);
        _zvkcBCD_SHFD_Pckd_Left(low, moved, 39, 3, 36);
        memcpy(low, high, 0);
        {
            uint8_t sum[32];
            _zvkcBCD_ADD_Pckd(high, moved, sum, 39, 39, 39);
            memcpy(high, sum, 20);
        }
    }
    if (negative) {
        _zvkcBCD_NEG_Pckd(high, moved, 39, 39);
        return _zvkcBCD_Cpy_Pckd(moved, to, digits, 39);
    }
    return _zvkcBCD_Cpy_Pckd(high, to, digits, 39);
}

KVR_SHARED __int128 kvr_unpack(const uint8_t *from, int32_t digits)
{
    const __int128 unit = 1000000000000000000LL;
    uint8_t part[32], rest[40];
    __int128 v = 0;
    int64_t low, middle = 0, high = 0;
    _zvkcBCD_Cpy_Pckd(from, part, 18, digits);
    low = _zvkcBCD_CONV_Pckd_To_Int8(part, 18);
    if (digits > 18) {
        _zvkcBCD_SHFD_Pckd_Right(from, rest, 45, digits, 18);
        _zvkcBCD_Cpy_Pckd(rest, part, 18, 45);
        middle = _zvkcBCD_CONV_Pckd_To_Int8(part, 18);
        if (digits > 36) {
            _zvkcBCD_SHFD_Pckd_Right(from, part, 2, digits, 36);
            high = _zvkcBCD_CONV_Pckd_To_Int8(part, 2);
        }
    }
    v = high;
    v = v * unit + middle;
    v = v * unit + low;
    return v;
}

KVR_SHARED uint8_t *kvr_divide_packed(const uint8_t *a, const uint8_t *b, uint8_t *to, int32_t digits, int32_t bDigits,
                                      int32_t aDigits, int *zero)
{
    if (_zvkcBCD_NOT_Pckd(b, bDigits)) {
        *zero = 1;
        memset(to, 0, (size_t)digits / 2);
        to[digits / 2] = 0x0C;
        return to;
    }
    _zvkcBCD_DIV_Pckd(a, b, to, digits, bDigits, aDigits);
    if (digits % 2 == 0) to[0] &= 0x0F;
    return to;
}

/*
 * A text taken as a number, packed, `digits` digits of which `places` are decimal ones. Only
 * digits: an integer. Digits with blanks around them, a sign and a decimal point: the number that
 * somebody typed. Of anything else, each character is the digit in its right half, or a zero.
 */
KVR_SHARED uint8_t *kvr_text_number(const uint8_t *text, int64_t length, uint8_t *to, int32_t digits, int32_t places,
                                    char point)
{
    uint8_t zoned[64];
    int64_t first = 0, end = length, dot, i, n, seen = 0;
    int32_t wholes = digits - places;
    int negative = 0;
    while (first < end && text[first] == ' ') first++;
    while (end > first && text[end - 1] == ' ') end--;
    if (end - first > 1 && (text[first] == '-' || text[first] == '+')) {
        negative = text[first++] == '-';
    } else if (end - first > 1 && (text[end - 1] == '-' || text[end - 1] == '+')) {
        negative = text[--end] == '-';
    }
    while (first < end && text[first] == ' ') first++;
    dot = end;
    for (i = first; i < end; i++) {
        if (text[i] >= '0' && text[i] <= '9')
            seen++;
        else if (text[i] == (uint8_t)point && dot == end)
            dot = i;
        else
            break;
    }
    if (i < end || seen == 0) first = 0, dot = end = length, negative = 0;
    memset(zoned, '0', sizeof zoned);
    n = dot - first < wholes ? dot - first : wholes;
    for (i = 0; i < n; i++) {
        uint8_t c = text[dot - n + i] & 15;
        zoned[wholes - n + i] = (uint8_t)(c > 9 ? '0' : '0' | c);
    }
    for (i = 0; i < places && dot + 1 + i < end; i++) zoned[wholes + i] = text[dot + 1 + i];
    zoned[digits] = negative ? '-' : '+';
    return _zvkcBCD_CONV_ZndTS_To_Pckd(zoned, to, digits, digits);
}

/*
 * What somebody typed for a number: sign, digits, decimal point. As packed, 36 digits with 18
 * decimal places.
 */
KVR_SHARED uint8_t *kvr_typed_number(const uint8_t *text, int length, uint8_t *to, char point)
{
    uint8_t zoned[37];
    int i, places = -1, count = 0, negative = 0;
    char whole[18], part[18];
    int wholes = 0;
    memset(part, '0', sizeof part);
    for (i = 0; i < length; i++) {
        char c = (char)text[i];
        if (c == '-')
            negative = 1;
        else if (c == point && places < 0)
            places = 0;
        else if (c >= '0' && c <= '9') {
            if (places < 0) {
                if (wholes == 18) memmove(whole, whole + 1, 17), wholes = 17;
                whole[wholes++] = c;
            } else if (places < 18) {
                part[places++] = c;
            }
            count++;
        }
    }
    memset(zoned, '0', sizeof zoned);
    memcpy(zoned + 18 - wholes, whole, (size_t)wholes);
    memcpy(zoned + 18, part, 18);
    zoned[36] = negative && count ? '-' : '+';
    return _zvkcBCD_CONV_ZndTS_To_Pckd(zoned, to, 36, 36);
}

KVR_SHARED uint8_t *kvr_de_edit(const DeEditRecord *record, const uint8_t *from, uint8_t *raw, uint8_t *to,
                                int32_t digits)
{
    if (_zvkcMoveNumEditToNum(record, from, raw) != 0) {
        /* not what the picture makes: zero */
        memset(to, 0, (size_t)digits / 2);
        to[digits / 2] = 0x0C;
        return to;
    }
    return _zvkcBCD_CONV_ZndTS_To_Pckd(raw, to, digits, digits);
}

/*
 * A floating-point number with so many decimal places. What 15 significant digits do not show does
 * not count.
 */
KVR_SHARED __int128 kvr_fixed(double v, int scale, int rounded)
{
    char text[64];
    __int128 result = 0;
    int exponent, digits, i, negative;
    if (!(v == v) || v > 1e37 || v < -1e37) return 0;
    snprintf(text, sizeof text, "%.14e", v);
    negative = text[0] == '-';
    {
        const char *p = text + negative, *end = strchr(p, 'e');
        char mantissa[16];
        mantissa[0] = p[0];
        memcpy(mantissa + 1, end - 14, 14); /* the locale says what is before them */
        exponent = atoi(end + 1);
        digits = exponent + 1 + scale; /* of the mantissa count */
        if (rounded > 1 && digits < 15) {
            __int128 unit = 1;
            if (digits < -20) digits = -20;
            for (i = 0; i < 15; i++) result = result * 10 + (mantissa[i] - '0');
            for (i = digits; i < 15; i++) unit *= 10;
            return kvr_round_mode(negative ? -result : result, unit, rounded);
        }
        for (i = 0; i < digits && i < 38; i++) result = result * 10 + (i < 15 ? mantissa[i] - '0' : 0);
        if (rounded && digits >= 0 && digits < 15 && mantissa[digits] >= '5') result++;
    }
    return negative ? -result : result;
}

/*
 * The decimal number with the fewest digits that a binary 32 item can hold. A whole number of up to
 * 9 digits, divided or multiplied by an exact power of ten, is that number to the last bit.
 */
KVR_SHARED double kvr_decimal_float(double v)
{
    static const double powers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                    1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    double size = __builtin_fabs(v), shortest = v;
    int wholes = 0, digits;
    if (!(size >= 1e-6 && size < 1e9)) return v;
    while (wholes < 9 && size >= powers[wholes]) wholes++;
    while (wholes <= 0 && wholes > -6 && size * powers[1 - wholes] < 1) wholes--;
    for (digits = 6; digits <= 9; digits++) {
        int places = digits - wholes;
        shortest = places >= 0 ? __builtin_rint(v * powers[places]) / powers[places]
                               : __builtin_rint(v / powers[-places]) * powers[-places];
        if ((float)shortest == (float)v) return shortest;
    }
    return v;
}

KVR_SHARED int kvr_compare_float(double a, double b)
{
    double difference = __builtin_fabs(a - b),
           size = __builtin_fabs(a) > __builtin_fabs(b) ? __builtin_fabs(a) : __builtin_fabs(b);
    if (difference <= size * 1e-14) return 0;
    return a < b ? -1 : 1;
}

KVR_SHARED double kvr_power(double a, double b, int *invalid)
{
    int32_t errors = 1; /* counted, not reported */
    double v = _zvkExpFloat8Float8(a, b, &errors);
    if (errors == 1) return v;
    *invalid = 1;
    return 0;
}

#endif
