/**
 * What the C that kvrcob emits leans on besides the library: loads and stores of binary items, wide
 * integers, comparisons of plain bytes, the look-up of called programs. Inline only; not for
 * hand-written programs.
 */
#ifndef KVR2_KVRCOB_H
#define KVR2_KVRCOB_H

/* 128-bit integers are no ISO C. */
#if defined(__GNUC__)
#pragma GCC system_header
#endif

#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif
#include <dlfcn.h>
#include <math.h>
#include <setjmp.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "kvr2/date_functions.h"
#include "kvr2/exponentiation.h"
#include "kvr2/file_module.h"
#include "kvr2/floats.h"
#include "kvr2/kvr2.h"
#include "kvr2/mathematics.h"
#include "kvr2/statistics.h"

#define KVR_INLINE static inline __attribute__((unused))

typedef int64_t (*KvrProgram)();

/* Cells of PERFORM: zero at the start, and in memory as far as the C compiler knows. */
#define KVR_CELLS(array)                                                                                               \
    memset(array, 0, sizeof array);                                                                                    \
    __asm__ volatile("" : : "r"(array) : "memory")

/** A program that the source contains. */
typedef struct KvrVisible {
    const char *name;
    KvrProgram entry;
    void (*cancel)(void);
} KvrVisible;

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

/* ---- Integers */

KVR_INLINE int64_t kvr_abs(int64_t v) { return v < 0 ? -v : v; }
KVR_INLINE __int128 kvr_abs_wide(__int128 v) { return v < 0 ? -v : v; }

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
    __int128 q = v / unit, r = v % unit;
    if (r < 0) r = -r;
    if (r >= unit - r) q += v < 0 ? -1 : 1;
    return q;
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
    return a / b;
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

/* A wide integer to packed and back, through the library's conversions of 18 digits each. */
KVR_INLINE uint8_t *kvr_pack(__int128 v, uint8_t *to, int32_t digits)
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

KVR_INLINE __int128 kvr_unpack(const uint8_t *from, int32_t digits)
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

KVR_INLINE uint8_t *kvr_divide_packed(const uint8_t *a, const uint8_t *b, uint8_t *to, int32_t digits, int32_t bDigits,
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

/* A text taken as an unsigned integer: its last digits. Blanks at its end do not count. */
KVR_INLINE uint8_t *kvr_text_number(const uint8_t *text, int64_t length, uint8_t *to, int32_t digits)
{
    uint8_t zoned[64];
    int64_t n, i;
    while (length > 1 && text[length - 1] == ' ') length--;
    n = length < digits ? length : digits;
    memset(zoned, '0', sizeof zoned);
    for (i = 0; i < n; i++) {
        uint8_t c = text[length - n + i];
        zoned[digits - n + i] = (uint8_t)(c >= '0' && c <= '9' ? c : '0');
    }
    return _zvkcBCD_CONV_ZndUS_To_Pckd(zoned, to, digits, digits);
}

/*
 * What somebody typed for a number: sign, digits, decimal point. As packed, 36 digits with 18
 * decimal places.
 */
KVR_INLINE uint8_t *kvr_typed_number(const uint8_t *text, int length, uint8_t *to, char point)
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

KVR_INLINE uint8_t *kvr_de_edit(const DeEditRecord *record, const uint8_t *from, uint8_t *raw, uint8_t *to,
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
KVR_INLINE __int128 kvr_fixed(double v, int scale, int rounded)
{
    char text[64];
    __int128 result = 0;
    int exponent, digits, i, negative;
    if (!(v == v) || v > 1e37 || v < -1e37) return 0;
    snprintf(text, sizeof text, "%.14e", v);
    negative = text[0] == '-';
    {
        const char *p = text + negative;
        char mantissa[16];
        mantissa[0] = p[0];
        memcpy(mantissa + 1, p + 2, 14);
        exponent = atoi(strchr(p, 'e') + 1);
        digits = exponent + 1 + scale; /* of the mantissa count */
        for (i = 0; i < digits && i < 38; i++) result = result * 10 + (i < 15 ? mantissa[i] - '0' : 0);
        if (rounded && digits >= 0 && digits < 15 && mantissa[digits] >= '5') result++;
    }
    return negative ? -result : result;
}

KVR_INLINE int kvr_compare_float(double a, double b)
{
    double difference = fabs(a - b), size = fabs(a) > fabs(b) ? fabs(a) : fabs(b);
    if (difference <= size * 1e-14) return 0;
    return a < b ? -1 : 1;
}

KVR_INLINE double kvr_power(double a, double b, int *invalid)
{
    double v;
    if ((a == 0 && b <= 0) || (a < 0 && b != floor(b))) {
        *invalid = 1;
        return 0;
    }
    v = pow(a, b);
    if (!isfinite(v)) *invalid = 1, v = 0;
    return v;
}

/* ---- Bytes */

KVR_INLINE uint8_t *kvr_copy(void *to, const uint8_t *from, int64_t length)
{
    return (uint8_t *)memcpy(to, from, length < 0 ? 0 : (size_t)length);
}

/* Copies of the element at `first` after it, `count` in all. */
KVR_INLINE void kvr_replicate(uint8_t *first, uint64_t size, uint64_t count)
{
    uint64_t done = 1;
    while (done < count) {
        uint64_t n = done < count - done ? done : count - done;
        memcpy(first + done * size, first, n * size);
        done += n;
    }
}

KVR_INLINE int kvr_compare_fill(const uint8_t *a, int64_t length, int fill)
{
    int64_t i;
    for (i = 0; i < length; i++)
        if (a[i] != fill) return a[i] < fill ? -1 : 1;
    return 0;
}

KVR_INLINE int kvr_compare(const uint8_t *a, int64_t aLength, const uint8_t *b, int64_t bLength)
{
    int64_t n = aLength < bLength ? aLength : bLength;
    int order = memcmp(a, b, n > 0 ? (size_t)n : 0);
    if (order) return order;
    if (aLength > n) return kvr_compare_fill(a + n, aLength - n, ' ');
    return -kvr_compare_fill(b + n, bLength - n, ' ');
}

KVR_INLINE int kvr_compare_all(const uint8_t *a, int64_t length, const uint8_t *literal, int64_t n)
{
    int64_t i;
    for (i = 0; i < length; i++) {
        uint8_t c = literal[i % n];
        if (a[i] != c) return a[i] < c ? -1 : 1;
    }
    return 0;
}

/* Under a collating sequence. A negative length of b: repeated over the length of a. */
KVR_INLINE int kvr_compare_weights(const uint8_t *a, int64_t aLength, const uint8_t *b, int64_t bLength,
                                   const uint8_t *weights)
{
    int64_t i, repeat = bLength < 0 ? -bLength : 0, n = repeat ? aLength : aLength > bLength ? aLength : bLength;
    for (i = 0; i < n; i++) {
        uint8_t x = weights[i < aLength ? a[i] : ' '], y = weights[repeat ? b[i % repeat] : i < bLength ? b[i] : ' '];
        if (x != y) return x < y ? -1 : 1;
    }
    return 0;
}

/* ---- Class tests */

/*
 * form: 0 no sign, 1 trailing, 2 leading, 3 trailing separate, 4 leading separate; digits without a
 * separate sign
 */
KVR_INLINE int kvr_is_zoned(const uint8_t *p, int64_t digits, int form)
{
    int64_t i;
    if (form == 3 && p[digits] != '+' && p[digits] != '-') return 0;
    if (form == 4) {
        if (*p != '+' && *p != '-') return 0;
        p++;
    }
    for (i = 0; i < digits; i++) {
        uint8_t c = p[i];
        if (c >= '0' && c <= '9') continue;
        if (((form == 1 && i == digits - 1) || (form == 2 && i == 0)) && c >= 'p' && c <= 'y') continue;
        return 0;
    }
    return 1;
}

KVR_INLINE int kvr_is_packed(const uint8_t *p, int digits, int isSigned)
{
    int i, bytes = digits / 2 + 1, sign = p[bytes - 1] & 15;
    if (digits % 2 == 0 && p[0] >> 4) return 0;
    for (i = 0; i < bytes; i++) {
        if (p[i] >> 4 > 9) return 0;
        if (i < bytes - 1 && (p[i] & 15) > 9) return 0;
    }
    return isSigned ? sign == 0xC || sign == 0xD : sign == 0xF || sign == 0xC;
}

KVR_INLINE int kvr_is_alphabetic(const uint8_t *p, int64_t n)
{
    int64_t i;
    for (i = 0; i < n; i++)
        if (!((p[i] >= 'A' && p[i] <= 'Z') || (p[i] >= 'a' && p[i] <= 'z') || p[i] == ' ')) return 0;
    return 1;
}
KVR_INLINE int kvr_is_upper(const uint8_t *p, int64_t n)
{
    int64_t i;
    for (i = 0; i < n; i++)
        if (!((p[i] >= 'A' && p[i] <= 'Z') || p[i] == ' ')) return 0;
    return 1;
}
KVR_INLINE int kvr_is_lower(const uint8_t *p, int64_t n)
{
    int64_t i;
    for (i = 0; i < n; i++)
        if (!((p[i] >= 'a' && p[i] <= 'z') || p[i] == ' ')) return 0;
    return 1;
}
KVR_INLINE int kvr_is_class(const uint8_t *p, int64_t n, const uint8_t *table)
{
    int64_t i;
    for (i = 0; i < n; i++)
        if (table[p[i]]) return 0;
    return 1;
}

/* ---- DISPLAY, ACCEPT */

#define KVR_DISPLAY_ERROR 100

KVR_INLINE void kvr_display(DisplayItem *items, int count, int device, int noAdvancing)
{
    DisplayRequest request;
    if (device == KVR_DISPLAY_ERROR) {
        int i;
        fflush(stdout);
        for (i = 0; i < count; i++) fwrite(items[i].address, 1, items[i].size, stderr);
        if (!noAdvancing) fputc('\n', stderr);
        return;
    }
    memset(&request, 0, sizeof request);
    request.itemCount = count;
    request.device = (uint8_t)device;
    request.options = noAdvancing ? ZVK_DISPLAY_NO_ADVANCING : 0;
    request.decimalPoint = '.';
    _zvkcDisplay(&request, items);
}

/*
 * A packed number as text. `width`: digits shown; `sign`: 0 none, 1 "-" or "+" in front, 2 "-" in
 * front of a negative one, without leading zeros.
 */
KVR_INLINE int kvr_show_number(const uint8_t *packed, int digits, int width, int places, int sign, char point,
                               uint8_t *out)
{
    uint8_t text[70];
    int length = 0, i, whole = width - places;
    if (places > width) width = places, whole = 0;
    _zvkcBCD_CONV_Pckd_To_ZndLS(packed, text, width, digits);
    if (sign == 1) out[length++] = text[0];
    if (sign == 2) {
        if (text[0] == '-') out[length++] = '-';
        i = 0;
        while (i < whole - 1 && text[1 + i] == '0') i++;
        for (; i < whole; i++) out[length++] = text[1 + i];
        if (whole <= 0) out[length++] = '0';
        while (places > 0 && text[whole + places] == '0') places--;
    } else {
        for (i = 0; i < whole; i++) out[length++] = text[1 + i];
    }
    if (places > 0) {
        out[length++] = (uint8_t)point;
        for (i = 0; i < places; i++) out[length++] = text[1 + whole + i];
    }
    return length;
}

KVR_INLINE int kvr_show_float(double v, uint8_t *out, int digits)
{
    return snprintf((char *)out, 48, "%.*g", digits, v);
}

KVR_INLINE int kvr_show_pointer(const uint8_t *p, uint8_t *out)
{
    return snprintf((char *)out, 24, "0x%016llx", (unsigned long long)kvr_get_u8(p));
}

/* One line into an item, whatever the run-time option says of ACCEPT from files. */
KVR_INLINE void kvr_accept(uint32_t flags, int64_t length, uint8_t *to) { _zvkcAccept(flags, length, to); }

/* ---- Functions */

/* A floating-point number without what the 15th digit does not show. */
KVR_INLINE double kvr_settled(double v)
{
    double nearest = round(v);
    return fabs(v - nearest) <= fabs(v) * 1e-14 ? nearest : v;
}

KVR_INLINE __int128 kvr_rem(__int128 a, __int128 b, int *zero)
{
    if (b == 0) {
        *zero = 1;
        return 0;
    }
    return a % b;
}
KVR_INLINE __int128 kvr_mod(__int128 a, __int128 b, int *zero)
{
    __int128 r = kvr_rem(a, b, zero);
    return r != 0 && (r < 0) != (b < 0) ? r + b : r;
}

/* Packed, 38 digits */
KVR_INLINE uint8_t *kvr_factorial(int64_t n, uint8_t *to)
{
    uint8_t bytes[40];
    memset(bytes, 0, sizeof bytes);
    _Dmr_factorial(bytes, (int32_t)n);
    return _zvkcBCD_Cpy_Pckd(bytes, to, 38, 63);
}

KVR_INLINE int64_t kvr_windowed(int digits, int32_t value, int32_t window)
{
    char text[9];
    memset(text, 0, sizeof text);
    if (digits == 4)
        _zvkYearToYYYY(value, window, text, "YEAR-TO-YYYY");
    else if (digits == 7)
        _zvkDayToYYYYDDD(value, window, text);
    else
        _zvkDateToYYYYMMDD(value, window, text);
    return atoll(text);
}

KVR_INLINE double kvr_statistic(int what, double *values, uint32_t count)
{
    ZvkFloat64Item result, *array = (ZvkFloat64Item *)(void *)values;
    double mean = 0, v;
    uint32_t i;
    memset(&result, 0, sizeof result);
    for (i = 0; i < count; i++) mean += values[i];
    mean /= count ? count : 1;
    switch (what) {
    case 'M':
        _zvkcMedian(count, &result, array);
        break;
    case 'V':
        _zvkcVariance(count, &result, array, mean);
        break;
    case 'S':
        _zvkcStandardDeviation(count, &result, array, mean);
        break;
    default:
        _zvkcPresentValue(count, &result, array);
        break;
    }
    memcpy(&v, &result, 8);
    return v;
}

/* NUMVAL, NUMVAL-C: packed, 36 digits with 18 decimal places. Of a text that is no number, 0. */
KVR_INLINE uint8_t *kvr_numval(const uint8_t *text, int64_t length, uint8_t *to, char point, const uint8_t *currency,
                               int64_t currencyLength)
{
    uint8_t zoned[37];
    int64_t i = 0;
    int wholes = 0, places = -1, negative = 0;
    char whole[18];
    memset(zoned, '0', sizeof zoned);
    while (currencyLength > 0 && currency[currencyLength - 1] == ' ') currencyLength--;
    while (i < length) {
        char c = (char)text[i];
        if (currencyLength > 0 && i + currencyLength <= length &&
            memcmp(text + i, currency, (size_t)currencyLength) == 0) {
            i += currencyLength;
            continue;
        }
        if (c >= '0' && c <= '9') {
            if (places < 0) {
                if (wholes == 18) memmove(whole, whole + 1, 17), wholes = 17;
                whole[wholes++] = c;
            } else if (places < 18) {
                zoned[18 + places++] = (uint8_t)c;
            }
        } else if (c == point && places < 0) {
            places = 0;
        } else if (c == '-') {
            negative = 1;
        } else if ((c == 'C' || c == 'c' || c == 'D' || c == 'd') && i + 1 < length &&
                   (text[i + 1] | 32) == ((c | 32) == 'c' ? 'r' : 'b')) {
            negative = 1;
            i++;
        } else if (c != ' ' && c != '+' && c != ',' && c != '.') {
            break;
        }
        i++;
    }
    memcpy(zoned + 18 - wholes, whole, (size_t)wholes);
    zoned[36] = negative ? '-' : '+';
    return _zvkcBCD_CONV_ZndTS_To_Pckd(zoned, to, 36, 36);
}

typedef struct KvrPiece {
    const uint8_t *text;
    int64_t length;
} KvrPiece;

/* Room for a result whose length is known at run time only; good until 32 more were asked for. */
KVR_INLINE uint8_t *kvr_room(int64_t length)
{
    static __thread uint8_t *rooms[32];
    static __thread unsigned next;
    unsigned i = next++ % 32;
    free(rooms[i]);
    rooms[i] = (uint8_t *)malloc((size_t)(length > 0 ? length : 0) + 1);
    if (!rooms[i]) abort();
    return rooms[i];
}

KVR_INLINE uint8_t *kvr_concatenate(const KvrPiece *pieces, int count, int64_t *length)
{
    int64_t total = 0, at = 0;
    uint8_t *out;
    int i;
    for (i = 0; i < count; i++) total += pieces[i].length;
    out = kvr_room(total);
    for (i = 0; i < count; i++) {
        memcpy(out + at, pieces[i].text, (size_t)pieces[i].length);
        at += pieces[i].length;
    }
    *length = total;
    return out;
}

/* SUBSTITUTE: the text, then pairs of what is replaced by what. */
KVR_INLINE uint8_t *kvr_substitute(const KvrPiece *pieces, int count, int64_t *length)
{
    int64_t most = 1, i, n = 0;
    uint8_t *out;
    int k;
    for (k = 2; k < count; k += 2)
        if (pieces[k].length > most) most = pieces[k].length;
    out = kvr_room(pieces[0].length * most);
    for (i = 0; i < pieces[0].length;) {
        int found = 0;
        for (k = 1; k + 1 < count; k += 2) {
            if (pieces[k].length == 0 || i + pieces[k].length > pieces[0].length ||
                memcmp(pieces[0].text + i, pieces[k].text, (size_t)pieces[k].length) != 0)
                continue;
            memcpy(out + n, pieces[k + 1].text, (size_t)pieces[k + 1].length);
            n += pieces[k + 1].length;
            i += pieces[k].length;
            found = 1;
            break;
        }
        if (!found) out[n++] = pieces[0].text[i++];
    }
    *length = n;
    return out;
}

/* TRIM; mode 1 leading, 2 trailing, 3 both. Of blanks nothing stays. */
KVR_INLINE void kvr_trim(uint8_t **text, int64_t *length, int mode)
{
    if (mode & 2)
        while (*length > 0 && (*text)[*length - 1] == ' ') --*length;
    if (mode & 1)
        while (*length > 0 && **text == ' ') ++*text, --*length;
}

KVR_INLINE void kvr_part(uint8_t **text, int64_t *length, int64_t from, int64_t size)
{
    if (from < 1) from = 1;
    if (from > *length) from = *length > 0 ? *length : 1;
    *text += from - 1;
    *length -= from - 1;
    if (size > 0 && size < *length) *length = size;
}

KVR_INLINE int64_t kvr_stored_length(const uint8_t *text, int64_t length)
{
    while (length > 0 && text[length - 1] == ' ') length--;
    return length;
}

/* "Nov 22 2026", "05:20:00" to the form of CURRENT-DATE */
KVR_INLINE void kvr_when_compiled(const char *date, const char *time, char *out)
{
    static const char months[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
    int month = 1, i;
    for (i = 0; i < 12; i++)
        if (memcmp(months + i * 3, date, 3) == 0) month = i + 1;
    snprintf(out, 22, "%.4s%02d%02d%.2s%.2s%.2s00+0000", date + 7, month, atoi(date + 4), time, time + 3, time + 6);
}

/* ---- USE FOR DEBUGGING */

#define KVR_DEBUG_CONTENTS 200

/* DEBUG-ITEM: the line, the name, and what the event is or the item's bytes. */
KVR_INLINE void kvr_debug(uint8_t *item, int line, const char *name, const void *contents, uint32_t length)
{
    char number[16];
    size_t n = strlen(name);
    memset(item, ' ', 56 + KVR_DEBUG_CONTENTS);
    snprintf(number, sizeof number, "%06d", line % 1000000);
    memcpy(item, number, 6);
    memcpy(item + 7, name, n < 30 ? n : 30);
    memcpy(item + 56, contents, length < KVR_DEBUG_CONTENTS ? length : KVR_DEBUG_CONTENTS);
}

/* A subscript in DEBUG-SUB-1 (place 0) to DEBUG-SUB-3. */
KVR_INLINE void kvr_debug_subscript(uint8_t *item, int place, int64_t value)
{
    char number[16];
    snprintf(number, sizeof number, "%+05d", (int)(value % 10000));
    memcpy(item + 38 + 6 * place, number, 5);
}

/* ---- The process */

static int kvr_argc __attribute__((unused));
static char **kvr_argv __attribute__((unused));

KVR_INLINE void kvr_main(int argc, char **argv, int check)
{
    kvr_argc = argc;
    kvr_argv = argv;
    /*
     * Without -fcheck numbers are taken as they stand, as the options of the compiler say; ACCEPT
     * reads lines.
     */
    if (!check) setenv("COBOL_BCD_NOVALIDATE", "1", 0);
    if (!getenv("COBRTOPT")) setenv("COBRTOPT", "ACCEPT=NEW", 0);
}

/* The main program's parameters: the arguments, each after its length in two bytes. */
KVR_INLINE uint8_t *kvr_parameter(int i)
{
    static uint8_t blocks[8][4098];
    int length = 0;
    if (i >= 8) return 0;
    if (i + 1 < kvr_argc) {
        length = (int)strlen(kvr_argv[i + 1]);
        if (length > 4000) length = 4000;
        memcpy(blocks[i] + 2, kvr_argv[i + 1], (size_t)length);
    }
    blocks[i][0] = (uint8_t)length;
    blocks[i][1] = (uint8_t)(length >> 8);
    return blocks[i];
}

KVR_INLINE int kvr_command_line(uint8_t *out, int room)
{
    FILE *f = fopen("/proc/self/cmdline", "rb");
    int n = 0, c, first = 1;
    if (!f) return 0;
    while ((c = fgetc(f)) != EOF && n < room) {
        if (first) {
            if (c == 0) first = 0;
            continue;
        }
        out[n++] = c ? (uint8_t)c : ' ';
    }
    fclose(f);
    while (n > 0 && out[n - 1] == ' ') n--;
    return n;
}

KVR_INLINE int kvr_argument_number(uint8_t *out, int room)
{
    FILE *f = fopen("/proc/self/cmdline", "rb");
    int n = -1, c;
    if (f) {
        while ((c = fgetc(f)) != EOF) n += c == 0;
        fclose(f);
    }
    return snprintf((char *)out, (size_t)room, "%d", n < 0 ? 0 : n);
}

KVR_INLINE int kvr_argument_value(uint8_t *out, int room)
{
    static int next = 1;
    FILE *f = fopen("/proc/self/cmdline", "rb");
    int index = 0, n = 0, c, found = 0;
    if (!f) return -1;
    while ((c = fgetc(f)) != EOF) {
        if (index == next) {
            found = 1;
            if (c && n < room) out[n++] = (uint8_t)c;
        }
        if (c == 0) index++;
    }
    fclose(f);
    next++;
    return found ? n : -1;
}

static char kvr_environment[256] __attribute__((unused));

KVR_INLINE void kvr_environment_name(const uint8_t *name, int64_t length)
{
    while (length > 0 && name[length - 1] == ' ') length--;
    if (length > 255) length = 255;
    memcpy(kvr_environment, name, (size_t)length);
    kvr_environment[length] = 0;
}
KVR_INLINE void kvr_environment_value(const uint8_t *value, int64_t length)
{
    char text[4096];
    while (length > 0 && value[length - 1] == ' ') length--;
    if (length > 4095) length = 4095;
    memcpy(text, value, (size_t)length);
    text[length] = 0;
    if (kvr_environment[0]) setenv(kvr_environment, text, 1);
}
KVR_INLINE int kvr_get_environment(const uint8_t *name, int64_t length, uint8_t *out, int room)
{
    const char *value;
    int n;
    kvr_environment_name(name, length);
    value = getenv(kvr_environment);
    if (!value) return -1;
    n = (int)strlen(value);
    if (n > room) n = room;
    memcpy(out, value, (size_t)n);
    return n;
}
KVR_INLINE int kvr_accept_environment(uint8_t *out, int room)
{
    return kvr_get_environment((const uint8_t *)kvr_environment, (int64_t)strlen(kvr_environment), out, room);
}

/* ---- CALL, CANCEL */

KVR_INLINE int64_t kvr_program_name(const uint8_t *name, int64_t length, char *out)
{
    int64_t n = 0, i;
    while (length > 0 && (name[length - 1] == ' ' || name[length - 1] == 0)) length--;
    for (i = 0; i < length && n < 160; i++) out[n++] = (char)name[i];
    out[n] = 0;
    return n;
}

KVR_INLINE KvrProgram kvr_find_program(const uint8_t *name, int64_t length, PCB *pcb, const KvrVisible *visible,
                                       int exception)
{
    char text[161], upper[161];
    int64_t n = kvr_program_name(name, length, text), i;
    uint32_t failures = exception ? 1 : 0;
    uint64_t *found;
    void *symbol;
    for (i = 0; i <= n; i++) upper[i] = (char)(text[i] >= 'a' && text[i] <= 'z' ? text[i] - 32 : text[i]);
    for (; visible->name; visible++)
        if (strcmp(visible->name, upper) == 0) return visible->entry;
    if (n > 0 && (symbol = dlsym(RTLD_DEFAULT, upper)) != 0) return (KvrProgram)(intptr_t)symbol;
    if (n > 0 && strcmp(text, upper) != 0 && (symbol = dlsym(RTLD_DEFAULT, text)) != 0)
        return (KvrProgram)(intptr_t)symbol;
    found = _zvkDynLd(0, n, (uint8_t *)upper, pcb, 0, &failures);
    if (failures > (exception ? 1u : 0u) || !found || !*found) return 0;
    return (KvrProgram)(intptr_t)*found;
}

KVR_INLINE void kvr_cancel(const uint8_t *name, int64_t length, PCB *pcb, const KvrVisible *visible)
{
    char text[161];
    int64_t n = kvr_program_name(name, length, text), i;
    for (i = 0; i <= n; i++) text[i] = (char)(text[i] >= 'a' && text[i] <= 'z' ? text[i] - 32 : text[i]);
    for (; visible->name; visible++)
        if (strcmp(visible->name, text) == 0) {
            visible->cancel();
            return;
        }
    _zvkCancel(0, n, (uint8_t *)text, pcb);
}

/* ---- Files */

KVR_INLINE uint16_t kvr_assignment(char *to, const uint8_t *item, int64_t length)
{
    static const char prefixes[] = "jgt-qvr-hdk-psx-lsq-nat-stl-rsd-str-wbr-raw-rql-pip-fif-sok-mqu-plx-";
    int64_t n = 0, i;
    int known = 0;
    while (length > 0 && (item[length - 1] == ' ' || item[length - 1] == 0)) length--;
    if (length > 4000) length = 4000;
    for (i = 0; length > 4 && prefixes[i]; i += 4)
        if (memcmp(prefixes + i, item, 4) == 0) known = 1;
    if (!known && length > 0 && memchr(item, '-', (size_t)length) && !strchr("/.~$", item[0])) {
        to[n++] = '.';
        to[n++] = '/';
    }
    memcpy(to + n, item, (size_t)length);
    to[n + length] = 0;
    return (uint16_t)(n + length);
}

/* CLOSE REEL: there is none; an open file gets status 07, a closed one 42. */
KVR_INLINE void kvr_close_reel(FCB *fcb, IPCB *element)
{
    if (fcb->mode == 0) {
        fcb->closeOptions = 0;
        fcb->statement = 0;
        fcb->close(fcb, element);
        return;
    }
    fcb->status = 7;
    if (fcb->fib->statusBase) {
        uint8_t *field = *fcb->fib->statusBase + fcb->fib->statusOffset;
        field[0] = '0';
        field[1] = '7';
    }
}

/* A statement that the file's state does not allow: its status, and the USE procedure. */
KVR_INLINE void kvr_refuse(FCB *fcb, IPCB *element, uint16_t status, uint8_t verb)
{
    fcb->currentVerb = verb;
    zvkSetStatus(fcb, status, 0);
    zvkFinishVerb(fcb, element, verb);
}

/* The page that begins next takes the present values of LINAGE. */
KVR_INLINE void kvr_linage(FCB *fcb, const FileLinageGroup *groups)
{
    fcb->linageBody = groups[0].value;
    fcb->linageFooting = groups[1].value;
    fcb->linageTop = groups[2].value;
    fcb->linageBottom = groups[3].value;
}

KVR_INLINE void kvr_unaltered(void)
{
    fprintf(stderr, "kvrcob: a GO TO without a paragraph was not altered before it was executed\n");
    _zvkRunUnitTerm(16);
}

/* ---- -fcheck */

KVR_INLINE void kvr_check_failed(const char *file, int line, const char *text)
{
    fflush(stdout);
    fprintf(stderr, "%s:%d: %s\n", file, line, text);
    _zvkRunUnitTerm(16);
}
KVR_INLINE int64_t kvr_subscript(int64_t v, int64_t most, const char *name, const char *file, int line)
{
    if (v < 1 || v > most) {
        char text[200];
        snprintf(text, sizeof text, "the subscript %lld of %.60s is not from 1 to %lld", (long long)v, name,
                 (long long)most);
        kvr_check_failed(file, line, text);
    }
    return v;
}
KVR_INLINE void kvr_refmod(int64_t from, int64_t length, int64_t size, const char *name, const char *file, int line)
{
    if (from < 1 || length < 1 || from + length - 1 > size) {
        char text[200];
        snprintf(text, sizeof text, "the part (%lld:%lld) of %.60s is outside of its %lld characters", (long long)from,
                 (long long)length, name, (long long)size);
        kvr_check_failed(file, line, text);
    }
}

#endif
