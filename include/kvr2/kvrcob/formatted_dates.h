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

KVR_SHARED void kvr_moment_date(KvrMoment *m, int64_t date)
{
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int64_t rest;
    int year = 1601 + (int)((date - 1) / 366), month = 0;
    while (kvr_days_before(year + 1) < date) year++;
    rest = date - kvr_days_before(year);
    m->year = year;
    m->dayOfYear = (int)rest;
    while (month < 11 && rest > days[month] + (month == 1 && kvr_leap(year))) {
        rest -= days[month] + (month == 1 && kvr_leap(year));
        month++;
    }
    m->month = month + 1;
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
            if (i > 0 && (format[i - 1] == '.' || format[i - 1] == ',')) {
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

/*
 * A text in a format. @return 0, or the place of the first character that does not fit; one beyond
 * its end where it is too short.
 */
KVR_SHARED int64_t kvr_parse_moment(const uint8_t *format, int64_t length, const uint8_t *text, int64_t size,
                                    KvrMoment *m, int64_t *date)
{
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int64_t i = 0, n, k, value;
    int afterSign = 0, isWeek = 0, isDay = 0, isMonth = 0, hasYear = 0, negative = 0;
    memset(m, 0, sizeof *m);
    *date = 0;
    while (i < length) {
        int64_t least = 0, most = 0;
        n = kvr_run(format, length, i);
        if (!strchr("YMDwhms", format[i])) {
            n = 1;
            if (i >= size) return i + 1;
            if (format[i] == '+') {
                if (text[i] != '+' && text[i] != '-' && text[i] != '0') return i + 1;
                negative = text[i] == '-';
                afterSign = 1;
            } else if (text[i] != format[i]) {
                return i + 1;
            }
            if (format[i] == 'W') isWeek = 1;
            i++;
            continue;
        }
        /* The bounds first, so that the first digit that cannot be right is told. */
        switch (format[i]) {
        case 'Y':
            least = 1601, most = 9999;
            break;
        case 'M':
            least = 1, most = 12;
            break;
        case 'D':
            least = 1;
            most = isWeek   ? 7
                   : n == 3 ? 365 + kvr_leap(m->year)
                            : days[m->month ? m->month - 1 : 0] + (m->month == 2 && kvr_leap(m->year));
            break;
        case 'w':
            least = 1;
            most = (kvr_first_monday(m->year + 1) - kvr_first_monday(m->year)) / 7;
            break;
        case 'h':
            most = 23;
            break;
        case 'm':
            most = 59;
            break;
        default:
            most = i > 0 && (format[i - 1] == '.' || format[i - 1] == ',') ? INT64_MAX : 59;
            break;
        }
        value = 0;
        for (k = 0; k < n; k++) {
            int64_t low, high, unit = 1, j;
            if (i + k >= size || text[i + k] < '0' || text[i + k] > '9') return i + k + 1;
            value = value * 10 + text[i + k] - '0';
            for (j = k + 1; j < n && unit < INT64_MAX / 100; j++) unit *= 10;
            low = value * unit, high = low + unit - 1;
            if (most != INT64_MAX && (high < least || low > most)) return i + k + 1;
        }
        switch (format[i]) {
        case 'Y':
            m->year = (int)value, hasYear = 1;
            break;
        case 'M':
            m->month = (int)value, isMonth = 1;
            break;
        case 'D':
            if (isWeek)
                m->weekday = (int)value;
            else if (n == 3)
                m->dayOfYear = (int)value, isDay = 1;
            else
                m->day = (int)value;
            break;
        case 'w':
            m->week = (int)value;
            break;
        case 'h':
            if (afterSign)
                m->offset += (int)value * 60;
            else
                m->hour = (int)value;
            break;
        case 'm':
            if (afterSign)
                m->offset += (int)value;
            else
                m->minute = (int)value;
            break;
        default:
            if (most == INT64_MAX) {
                for (k = n; k < 9; k++) value *= 10;
                for (k = n; k > 9; k--) value /= 10;
                m->nanos = value;
            } else {
                m->second = (int)value;
            }
            break;
        }
        i += n;
    }
    for (; i < size; i++)
        if (text[i] != ' ') return i + 1;
    if (negative) m->offset = -m->offset;
    if (hasYear && isWeek) *date = kvr_first_monday(m->year) + (m->week - 1) * 7 + m->weekday - 1;
    if (hasYear && isDay) *date = kvr_days_before(m->year) + m->dayOfYear;
    if (hasYear && isMonth) {
        int month;
        *date = kvr_days_before(m->year) + m->day;
        for (month = 1; month < m->month; month++) *date += days[month - 1] + (month == 2 && kvr_leap(m->year));
    }
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
