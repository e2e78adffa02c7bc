/**
 * Intrinsic functions.
 */
#ifndef KVR2_KVRCOB_FUNCTIONS_H
#define KVR2_KVRCOB_FUNCTIONS_H

/* 128-bit integers are no ISO C. */
#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include <langinfo.h>
#include <time.h>

#include "kvr2/date_functions.h"
#include "kvr2/floats.h"
#include "kvr2/kvrcob/base.h"
#include "kvr2/mathematics.h"
#include "kvr2/statistics.h"

/* ---- Functions */

/* FUNCTION EXP10: the C library has it, though not in its standard headers. */
double exp10(double);

/* A floating-point number without what the 15th digit does not show. */
KVR_INLINE double kvr_settled(double v)
{
    double nearest = __builtin_round(v);
    return __builtin_fabs(v - nearest) <= __builtin_fabs(v) * 1e-14 ? nearest : v;
}

KVR_SHARED __int128 kvr_rem(__int128 a, __int128 b, int *zero)
{
    if (b == 0) {
        *zero = 1;
        return 0;
    }
    return a % b;
}
KVR_SHARED __int128 kvr_mod(__int128 a, __int128 b, int *zero)
{
    __int128 r = kvr_rem(a, b, zero);
    return r != 0 && (r < 0) != (b < 0) ? r + b : r;
}

/* Packed, 38 digits */
KVR_SHARED uint8_t *kvr_factorial(int64_t n, uint8_t *to)
{
    uint8_t bytes[40];
    memset(bytes, 0, sizeof bytes);
    _Dmr_factorial(bytes, (int32_t)n);
    return _zvkcBCD_Cpy_Pckd(bytes, to, 38, 63);
}

KVR_SHARED int32_t kvr_present_year(void)
{
    time_t now = time(NULL);
    struct tm t;
    localtime_r(&now, &t);
    return t.tm_year + 1900;
}

KVR_SHARED int64_t kvr_windowed(int digits, int32_t value, int32_t window)
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

/* CHAR in a sequence of its own: the first character with that place. */
KVR_SHARED uint8_t kvr_char_of(const uint8_t *alphabet, int64_t place)
{
    int c;
    for (c = 0; c < 256; c++)
        if (alphabet[c] + 1 == place) return (uint8_t)c;
    return 0;
}

KVR_SHARED double kvr_statistic(int what, double *values, uint32_t count)
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
KVR_SHARED uint8_t *kvr_numval(const uint8_t *text, int64_t length, uint8_t *to, char point, const uint8_t *currency,
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

/* TEST-NUMVAL, TEST-NUMVAL-C: 0, or the place of the first character that does not fit. */
KVR_SHARED int64_t kvr_test_numval(const uint8_t *text, int64_t length, char point, const uint8_t *currency,
                                   int64_t currencyLength)
{
    int64_t i = 0, digits = 0;
    int sign = 0, points = 0;
    int isCurrency = currencyLength > 0;
    while (i < length && text[i] == ' ') i++;
    if (i < length && (text[i] == '+' || text[i] == '-')) sign = 1, i++;
    while (i < length && text[i] == ' ') i++;
    if (isCurrency && i + currencyLength <= length && memcmp(text + i, currency, (size_t)currencyLength) == 0)
        i += currencyLength;
    while (isCurrency && i < length && text[i] == ' ') i++;
    for (; i < length; i++) {
        if (text[i] >= '0' && text[i] <= '9')
            digits++;
        else if (text[i] == (uint8_t)point && points == 0)
            points = 1;
        else if (!(isCurrency && digits && !points && text[i] == (point == '.' ? ',' : '.')))
            break;
    }
    if (!digits) return i + 1;
    while (i < length && text[i] == ' ') i++;
    if (i < length && !sign) {
        if (text[i] == '+' || text[i] == '-')
            i++;
        else if (i + 1 < length && (((text[i] | 32) == 'c' && (text[i + 1] | 32) == 'r') ||
                                    ((text[i] | 32) == 'd' && (text[i + 1] | 32) == 'b')))
            i += 2;
    }
    while (i < length && text[i] == ' ') i++;
    return i < length ? i + 1 : 0;
}

/* NUMVAL-F: a number with an exponent, its point as strtod wants it in the process's locale. */
KVR_SHARED double kvr_numval_float(const uint8_t *text, int64_t length, char point)
{
    const char *radix = nl_langinfo(RADIXCHAR);
    const size_t size = strlen(radix);
    char plain[128];
    size_t n = 0;
    int64_t i;
    for (i = 0; i < length && n + size < sizeof plain; i++) {
        if (text[i] == ' ') continue;
        if (text[i] == (uint8_t)point) {
            memcpy(plain + n, radix, size);
            n += size;
        } else {
            plain[n++] = (char)text[i];
        }
    }
    plain[n] = 0;
    return strtod(plain, 0);
}

/* TEST-NUMVAL-F: 0, or the place of the first character that does not fit. */
KVR_SHARED int64_t kvr_test_numval_float(const uint8_t *text, int64_t length, char point)
{
    int64_t i = 0, digits = 0;
    int points = 0;
    while (i < length && text[i] == ' ') i++;
    if (i < length && (text[i] == '+' || text[i] == '-')) i++;
    while (i < length && text[i] == ' ') i++;
    for (; i < length; i++) {
        if (text[i] >= '0' && text[i] <= '9')
            digits++;
        else if (text[i] == (uint8_t)point && !points)
            points = 1;
        else
            break;
    }
    if (!digits) return i + 1;
    while (i < length && text[i] == ' ') i++;
    if (i < length && (text[i] | 32) == 'e') {
        i++;
        while (i < length && text[i] == ' ') i++;
        if (i < length && (text[i] == '+' || text[i] == '-')) i++;
        while (i < length && text[i] == ' ') i++;
        if (i >= length || text[i] < '0' || text[i] > '9') return i + 1;
        while (i < length && text[i] >= '0' && text[i] <= '9') i++;
    }
    while (i < length && text[i] == ' ') i++;
    return i < length ? i + 1 : 0;
}

/* TEST-DATE-YYYYMMDD, TEST-DAY-YYYYDDD: 0, or which part is wrong: year 1, month 2, day 3 (2). */
KVR_SHARED int64_t kvr_test_date(int64_t date, int isDay)
{
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int64_t year = isDay ? date / 1000 : date / 10000, month = date / 100 % 100, day = isDay ? date % 1000 : date % 100;
    int leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    if (year < 1601 || year > 9999) return 1;
    if (isDay) return day < 1 || day > 365 + leap ? 2 : 0;
    if (month < 1 || month > 12) return 2;
    return day < 1 || day > days[month - 1] + (month == 2 && leap) ? 3 : 0;
}

KVR_INLINE int64_t kvr_seconds_past_midnight(void)
{
    time_t now = time(0);
    struct tm local;
    localtime_r(&now, &local);
    return local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
}

/* HEX-OF */
KVR_INLINE void kvr_hex(const uint8_t *text, int64_t length, uint8_t *to)
{
    int64_t i;
    for (i = 0; i < length; i++) {
        to[2 * i] = (uint8_t) "0123456789ABCDEF"[text[i] >> 4];
        to[2 * i + 1] = (uint8_t) "0123456789ABCDEF"[text[i] & 15];
    }
}

typedef struct KvrPiece {
    const uint8_t *text;
    int64_t length;
} KvrPiece;

/* Room for a result whose length is known at run time only; good until 32 more were asked for. */
KVR_SHARED uint8_t *kvr_room(int64_t length)
{
    static __thread uint8_t *rooms[32];
    static __thread unsigned next;
    unsigned i = next++ % 32;
    free(rooms[i]);
    rooms[i] = (uint8_t *)malloc((size_t)(length > 0 ? length : 0) + 1);
    if (!rooms[i]) abort();
    return rooms[i];
}

KVR_SHARED uint8_t *kvr_concatenate(const KvrPiece *pieces, int count, int64_t *length)
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

/* HEX-TO-CHAR, BIT-TO-CHAR: `digits` of them make a byte; what is no digit counts as zero. */
KVR_SHARED int64_t kvr_from_digits(const uint8_t *text, int64_t length, int digits, uint8_t *to)
{
    int64_t i, n = length / digits;
    for (i = 0; i < n * digits; i++) {
        unsigned c = text[i], v = c >= '0' && c <= '9'                 ? c - '0'
                                  : (c | 32) >= 'a' && (c | 32) <= 'f' ? (c | 32) - 'a' + 10
                                                                       : 0;
        to[i / digits] = (uint8_t)(digits == 2 ? to[i / digits] << 4 | v : to[i / digits] << 1 | (v & 1));
    }
    return n;
}

/* BIT-OF */
KVR_INLINE void kvr_bit_digits(const uint8_t *text, int64_t length, uint8_t *to)
{
    int64_t i;
    for (i = 0; i < 8 * length; i++) to[i] = (uint8_t)('0' + (text[i / 8] >> (7 - i % 8) & 1));
}

/* SUBSTITUTE, SUBSTITUTE-CASE: the text, then pairs of what is replaced by what. */
KVR_SHARED uint8_t *kvr_substitute(const KvrPiece *pieces, int count, int anyCase, int64_t *length)
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
                (anyCase ? strncasecmp((const char *)pieces[0].text + i, (const char *)pieces[k].text,
                                       (size_t)pieces[k].length)
                         : memcmp(pieces[0].text + i, pieces[k].text, (size_t)pieces[k].length)) != 0)
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
KVR_SHARED void kvr_trim(uint8_t **text, int64_t *length, int mode)
{
    if (mode & 2)
        while (*length > 0 && (*text)[*length - 1] == ' ') --*length;
    if (mode & 1)
        while (*length > 0 && **text == ' ') ++*text, --*length;
}

KVR_SHARED void kvr_part(uint8_t **text, int64_t *length, int64_t from, int64_t size)
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
KVR_SHARED void kvr_when_compiled(const char *date, const char *time, char *out)
{
    static const char months[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
    int month = 1, i;
    for (i = 0; i < 12; i++)
        if (memcmp(months + i * 3, date, 3) == 0) month = i + 1;
    snprintf(out, 22, "%.4s%02d%02d%.2s%.2s%.2s00+0000", date + 7, month, atoi(date + 4), time, time + 3, time + 6);
}

#endif
