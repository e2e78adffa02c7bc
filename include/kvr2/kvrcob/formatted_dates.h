/**
 * Functions of formatted dates and times: "YYYY-MM-DD", "hh:mm:ss", "YYYYDDDThhmmss.ss+hhmm" and
 * their like. A format is read letter by letter, and so is the text beside it.
 */
#ifndef KVR2_KVRCOB_FORMATTED_DATES_H
#define KVR2_KVRCOB_FORMATTED_DATES_H

/* 128-bit integers are no ISO C. */
#if defined(__GNUC__)
#pragma GCC system_header
#endif

#include <sys/time.h>
#include <time.h>

#include "kvr2/date_functions.h"
#include "kvr2/kvrcob/base.h"

/* The parts of a date and time. Week dates have a year of their own. */
typedef struct KvrMoment {
    int year, month, day, dayOfYear, weekYear, week, weekday;
    int hour, minute, second;
    int64_t nanos;
    int offset; /* of local time from UTC, in minutes */
} KvrMoment;

KVR_INLINE int kvr_leap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

/* Days before 1 January of a year; 1601-01-01 is day 1. */
KVR_INLINE int64_t kvr_days_before(int year)
{
    int64_t y = year - 1601;
    return y * 365 + y / 4 - y / 100 + y / 400;
}

/* Monday is 1; 1601-01-01 was a Monday. */
KVR_INLINE int kvr_weekday(int64_t date) { return (int)((date - 1) % 7) + 1; }

/* The Monday of the first week of a year: the week with 4 January. */
KVR_INLINE int64_t kvr_first_monday(int year)
{
    int64_t fourth = kvr_days_before(year) + 4;
    return fourth - kvr_weekday(fourth) + 1;
}

KVR_INLINE int kvr_month_length(int year, int month)
{
    static const uint8_t days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return days[month - 1] + (month == 2 && kvr_leap(year));
}

KVR_SHARED void kvr_moment_date(KvrMoment *m, int64_t date)
{
    int64_t rest;
    int year = 1601 + (int)((date - 1) / 366), month = 1;
    while (kvr_days_before(year + 1) < date) year++;
    rest = date - kvr_days_before(year);
    m->year = year;
    m->dayOfYear = (int)rest;
    for (; month < 12 && rest > kvr_month_length(year, month); month++) rest -= kvr_month_length(year, month);
    m->month = month;
    m->day = (int)rest;
    m->weekYear = date < kvr_first_monday(year) ? year - 1 : date >= kvr_first_monday(year + 1) ? year + 1 : year;
    m->week = (int)((date - kvr_first_monday(m->weekYear)) / 7) + 1;
    m->weekday = kvr_weekday(date);
}

KVR_SHARED void kvr_moment_time(KvrMoment *m, int64_t nanosOfDay)
{
    int64_t s = nanosOfDay / 1000000000;
    m->nanos = nanosOfDay % 1000000000;
    m->hour = (int)(s / 3600);
    m->minute = (int)(s / 60 % 60);
    m->second = (int)(s % 60);
}

/* How many times the letter at `i` stands there. */
KVR_INLINE int64_t kvr_run(const uint8_t *format, int64_t length, int64_t i)
{
    int64_t n = 1;
    while (i + n < length && format[i + n] == format[i]) n++;
    return n;
}

/* Is the letter at `i` in the places after the decimal point? */
KVR_INLINE int kvr_in_fraction(const uint8_t *format, int64_t i)
{
    return i > 0 && (format[i - 1] == '.' || format[i - 1] == ',');
}

KVR_INLINE void kvr_digits_of(uint8_t *to, int64_t value, int64_t width)
{
    for (; width-- > 0; value /= 10) to[width] = (uint8_t)('0' + value % 10);
}

/*
 * A moment in a format, as long as the format. `hasOffset`: whether the moment's offset is known;
 * for a format with Z the time is UTC then.
 */
KVR_SHARED void kvr_format_moment(const uint8_t *format, int64_t length, KvrMoment m, int hasOffset, uint8_t *to)
{
    int64_t i = 0, n;
    int afterSign = 0, afterWeek = 0;
    int64_t weekYears = memchr(format, 'W', (size_t)length) != 0;
    if (length > 0 && format[length - 1] == 'Z' && hasOffset) {
        int64_t date = kvr_days_before(m.year) + m.dayOfYear, minutes = m.hour * 60 + m.minute - m.offset;
        if (minutes < 0) minutes += 1440, date--;
        if (minutes >= 1440) minutes -= 1440, date++;
        kvr_moment_date(&m, date);
        m.hour = (int)(minutes / 60);
        m.minute = (int)(minutes % 60);
    }
    while (i < length) {
        n = kvr_run(format, length, i);
        switch (format[i]) {
        case 'Y':
            kvr_digits_of(to + i, weekYears ? m.weekYear : m.year, n);
            break;
        case 'M':
            kvr_digits_of(to + i, m.month, n);
            break;
        case 'D':
            kvr_digits_of(to + i, afterWeek ? m.weekday : n == 3 ? m.dayOfYear : m.day, n);
            break;
        case 'W':
            to[i] = 'W';
            afterWeek = 1;
            n = 1;
            break;
        case 'w':
            kvr_digits_of(to + i, m.week, n);
            break;
        case 'h':
            kvr_digits_of(to + i, afterSign ? abs(m.offset) / 60 : m.hour, n);
            break;
        case 'm':
            kvr_digits_of(to + i, afterSign ? abs(m.offset) % 60 : m.minute, n);
            break;
        case 's':
            if (kvr_in_fraction(format, i)) {
                int64_t value = m.nanos, k;
                for (k = n; k < 9; k++) value /= 10;
                kvr_digits_of(to + i, value, n);
            } else {
                kvr_digits_of(to + i, m.second, n);
            }
            break;
        case '+':
            to[i] = m.offset < 0 ? '-' : hasOffset ? '+' : '0';
            afterSign = 1;
            n = 1;
            break;
        default:
            memset(to + i, format[i], (size_t)n);
            break;
        }
        i += n;
    }
}

/* A text that is read: its parts, and which of them the format has had so far. */
typedef struct KvrReading {
    KvrMoment m;
    int afterSign, negative;               /* the offset from UTC */
    int hasYear, hasMonth, hasDay, isWeek; /* hasDay: of the year */
} KvrReading;

/* A letter that stands for itself, or the sign of the offset: does the character fit? */
KVR_INLINE int kvr_read_mark(KvrReading *r, uint8_t mark, uint8_t c)
{
    if (mark == 'W') r->isWeek = 1;
    if (mark != '+') return mark == c;
    r->afterSign = 1;
    r->negative = c == '-';
    return c == '+' || c == '-' || c == '0';
}

/* Bounds of a field of n digits. @return 0: any digits will do */
KVR_INLINE int kvr_field_bounds(const KvrReading *r, uint8_t letter, int64_t n, int64_t *least, int64_t *most)
{
    const KvrMoment *m = &r->m;
    *least = 1;
    switch (letter) {
    case 'Y':
        *least = 1601, *most = 9999;
        return 1;
    case 'M':
        *most = 12;
        return 1;
    case 'D':
        *most = r->isWeek ? 7 : n == 3 ? 365 + kvr_leap(m->year) : kvr_month_length(m->year, m->month ? m->month : 1);
        return 1;
    case 'w':
        *most = (kvr_first_monday(m->year + 1) - kvr_first_monday(m->year)) / 7;
        return 1;
    case 'f':
        return 0;
    default:
        *least = 0, *most = letter == 'h' ? 23 : 59;
        return 1;
    }
}

/*
 * The number of a field. @return 0, or the place from 1 of the first digit that cannot be right,
 * for all numbers that begin so are out of bounds
 */
KVR_SHARED int64_t kvr_read_field(const KvrReading *r, uint8_t letter, const uint8_t *text, int64_t size, int64_t n,
                                  int64_t *value)
{
    int64_t least = 0, most = 0, k, j;
    const int bounded = kvr_field_bounds(r, letter, n, &least, &most);
    *value = 0;
    for (k = 0; k < n; k++) {
        int64_t unit = 1, low;
        if (k >= size || text[k] < '0' || text[k] > '9') return k + 1;
        *value = *value * 10 + text[k] - '0';
        for (j = k + 1; j < n && unit < INT64_MAX / 100; j++) unit *= 10;
        low = *value * unit;
        if (bounded && (low + unit - 1 < least || low > most)) return k + 1;
    }
    return 0;
}

KVR_INLINE void kvr_keep_field(KvrReading *r, uint8_t letter, int64_t n, int64_t value)
{
    KvrMoment *m = &r->m;
    const int number = (int)value;
    switch (letter) {
    case 'Y':
        m->year = number, r->hasYear = 1;
        break;
    case 'M':
        m->month = number, r->hasMonth = 1;
        break;
    case 'D':
        if (r->isWeek)
            m->weekday = number;
        else if (n == 3)
            m->dayOfYear = number, r->hasDay = 1;
        else
            m->day = number;
        break;
    case 'w':
        m->week = number;
        break;
    case 'h':
        if (r->afterSign)
            m->offset += number * 60;
        else
            m->hour = number;
        break;
    case 'm':
        if (r->afterSign)
            m->offset += number;
        else
            m->minute = number;
        break;
    case 's':
        m->second = number;
        break;
    default: /* 'f' */
        for (; n < 9; n++) value *= 10;
        for (; n > 9; n--) value /= 10;
        m->nanos = value;
        break;
    }
}

/* The day number of what was read; 0 where that is no date. */
KVR_INLINE int64_t kvr_date_read(const KvrReading *r)
{
    const KvrMoment *m = &r->m;
    int64_t date;
    int month;
    if (!r->hasYear) return 0;
    if (r->hasMonth) {
        date = kvr_days_before(m->year) + m->day;
        for (month = 1; month < m->month; month++) date += kvr_month_length(m->year, month);
        return date;
    }
    if (r->hasDay) return kvr_days_before(m->year) + m->dayOfYear;
    return r->isWeek ? kvr_first_monday(m->year) + (m->week - 1) * 7 + m->weekday - 1 : 0;
}

/*
 * A text in a format. @return 0, or the place of the first character that does not fit; one beyond
 * its end where it is too short.
 */
KVR_SHARED int64_t kvr_parse_moment(const uint8_t *format, int64_t length, const uint8_t *text, int64_t size,
                                    KvrMoment *m, int64_t *date)
{
    KvrReading r;
    int64_t i = 0, n, value, wrong;
    memset(&r, 0, sizeof r);
    memset(m, 0, sizeof *m);
    *date = 0;
    while (i < length) {
        uint8_t letter = format[i];
        if (!memchr("YMDwhms", letter, 7)) {
            if (i >= size || !kvr_read_mark(&r, letter, text[i])) return i + 1;
            i++;
            continue;
        }
        n = kvr_run(format, length, i);
        if (letter == 's' && kvr_in_fraction(format, i)) letter = 'f';
        wrong = kvr_read_field(&r, letter, text + i, size - i, n, &value);
        if (wrong) return i + wrong;
        kvr_keep_field(&r, letter, n, value);
        i += n;
    }
    for (; i < size; i++)
        if (text[i] != ' ') return i + 1;
    *m = r.m;
    if (r.negative) m->offset = -m->offset;
    *date = kvr_date_read(&r);
    return 0;
}

/* FORMATTED-DATE, FORMATTED-TIME, FORMATTED-DATETIME: blanks where an argument is out of bounds. */
KVR_SHARED void kvr_formatted(const uint8_t *format, int64_t length, int64_t date, int64_t nanos, int hasOffset,
                              int64_t offset, uint8_t *to)
{
    KvrMoment m;
    memset(&m, 0, sizeof m);
    if (date < 1 || date > 3067671 || nanos < 0 || nanos >= 86400000000000 || offset < -1439 || offset > 1439) {
        memset(to, ' ', (size_t)length);
        return;
    }
    kvr_moment_date(&m, date);
    kvr_moment_time(&m, nanos);
    m.offset = (int)offset;
    kvr_format_moment(format, length, m, hasOffset, to);
}

/* FORMATTED-CURRENT-DATE */
KVR_SHARED void kvr_formatted_now(const uint8_t *format, int64_t length, uint8_t *to)
{
    struct timeval now;
    struct tm local, utc;
    int days;
    gettimeofday(&now, 0);
    localtime_r(&now.tv_sec, &local);
    gmtime_r(&now.tv_sec, &utc);
    days = local.tm_year != utc.tm_year ? local.tm_year - utc.tm_year : local.tm_yday - utc.tm_yday;
    kvr_formatted(
        format, length, kvr_days_before(local.tm_year + 1900) + local.tm_yday + 1,
        ((int64_t)(local.tm_hour * 3600 + local.tm_min * 60 + (local.tm_sec < 60 ? local.tm_sec : 59)) * 1000000 +
         now.tv_usec) *
            1000,
        1, (days * 24 + local.tm_hour - utc.tm_hour) * 60 + local.tm_min - utc.tm_min, to);
}

/* INTEGER-OF-FORMATTED-DATE: 0 for a text that does not fit. */
KVR_SHARED int64_t kvr_formatted_integer(const uint8_t *format, int64_t length, const uint8_t *text, int64_t size)
{
    KvrMoment m;
    int64_t date;
    return kvr_parse_moment(format, length, text, size, &m, &date) == 0 ? date : 0;
}

/* SECONDS-FROM-FORMATTED-TIME, in nanoseconds */
KVR_SHARED int64_t kvr_formatted_nanos(const uint8_t *format, int64_t length, const uint8_t *text, int64_t size)
{
    KvrMoment m;
    int64_t date;
    if (kvr_parse_moment(format, length, text, size, &m, &date)) return 0;
    return (m.hour * 3600 + m.minute * 60 + m.second) * (int64_t)1000000000 + m.nanos;
}

/* TEST-FORMATTED-DATETIME */
KVR_SHARED int64_t kvr_formatted_test(const uint8_t *format, int64_t length, const uint8_t *text, int64_t size)
{
    KvrMoment m;
    int64_t date;
    return kvr_parse_moment(format, length, text, size, &m, &date);
}

#endif
