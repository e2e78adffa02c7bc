/**
 * FUNCTION CURRENT-DATE, conversions between dates and day numbers, and years of two digits.
 *
 * A day number counts days of the Gregorian calendar from 1 January 1601, which is day 1, to 31
 * December 9999, day 3067671. A date is the number YYYYMMDD, a day of a year the number YYYYDDD.
 *
 * A number out of range is reported. Where the message lets the program go on, the result means
 * nothing, but nothing outside the operands is touched.
 *
 * @code
 *     int32_t due = _zvkDateOfInteger(_zvkIntegerOfDate(20260131) + 30);     // 20260302
 * @endcode
 */
#ifndef KVR2_DATE_FUNCTIONS_H
#define KVR2_DATE_FUNCTIONS_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

/**
 * FUNCTION CURRENT-DATE: YYYYMMDDHHMMSScc, then the offset from Greenwich as "+" or "-" and HHMM.
 *
 * The offset is the zone's standard offset; in summer time it is moved by an hour away from zero.
 * West of Greenwich, and at Greenwich, that is one hour more west than the clock shows. Programs
 * know it so.
 *
 * @param buffer  21 bytes
 * @threads any; TZ is read at each call
 */
ZVK_EXPORT void _zvkCurrentDate(char *buffer);

/**
 * FUNCTION DATE-OF-INTEGER: YYYYMMDD of a day number. @messages 159 with the function's name
 * @threads any
 */
ZVK_EXPORT int32_t _zvkDateOfInteger(int32_t dayNumber);

/**
 * FUNCTION DAY-OF-INTEGER: YYYYDDD of a day number. @messages 159 with the function's name @threads
 * any
 */
ZVK_EXPORT int32_t _zvkDayOfInteger(int32_t dayNumber);

/**
 * FUNCTION INTEGER-OF-DATE: the day number of YYYYMMDD. @messages 160 with the function's name
 * @threads any
 */
ZVK_EXPORT int32_t _zvkIntegerOfDate(int32_t date);

/**
 * FUNCTION INTEGER-OF-DAY: the day number of YYYYDDD. @messages 161 with the function's name
 * @threads any
 */
ZVK_EXPORT int32_t _zvkIntegerOfDay(int32_t day);

/**
 * FUNCTION YEAR-TO-YYYY: the year with the last two digits `yy` in the hundred years that end
 * `window` years from now.
 *
 * @param yy            0 to 99
 * @param window        years; the present year plus the window must be 1699 to 10000
 * @param destination   gets four digits, not terminated
 * @param functionName  for the message
 * @messages 160 with the function's name, the window, and the year that the window leads to
 * @threads  any
 */
ZVK_EXPORT void _zvkYearToYYYY(int32_t yy, int32_t window, char *destination, const char *functionName);

/** FUNCTION DAY-TO-YYYYDDD: seven digits; otherwise as `_zvkYearToYYYY`. */
ZVK_EXPORT void _zvkDayToYYYYDDD(int32_t yyddd, int32_t window, char *destination);

/** FUNCTION DATE-TO-YYYYMMDD: eight digits; otherwise as `_zvkYearToYYYY`. */
ZVK_EXPORT void _zvkDateToYYYYMMDD(int32_t yymmdd, int32_t window, char *destination);

ZVK_END_DECLS

#endif
