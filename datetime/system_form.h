// System forms: what every date-time item becomes inside.
//
//     date       YYYY-MM-DD
//     time       HH:MM:SS.FFFFFFFFFFFF
//     timestamp  YYYY-MM-DD-HH:MM:SS.FFFFFFFFFFFF
//
// Under a mask, places that the item's format does not carry hold "X"; otherwise they hold
// 0000-01-01 and 00:00:00.
#pragma once

#include <cstdint>

#include "kvr2/datetime.h"

inline constexpr int kDateForm = 10, kTimeForm = 21, kTimestampForm = 32;
inline constexpr int kTimeInTimestamp = 11;

// Room for each of the three and the NUL, zeros up to the end.
struct SystemForm {
    char text[40] = {};
};

void DateTime_convertCOBOLDateToSystemDate(const char *item, const FD *dateFDPtr, char *out, int16_t windowYear,
                                           bool mask);
void DateTime_convertCOBOLTimeToSystemTime(const char *item, const FD *timeFDPtr, char *out, bool mask);
void DateTime_convertCOBOLTimestampToSystemTimestamp(const char *item, const FD *timestampFDPtr, char *out,
                                                     int16_t windowYear, bool mask);
void DateTime_convertSystemDateToCOBOLDate(const char *systemPtr, char *newDatePtr, const FD *newDateFDPtr,
                                           int16_t windowYear);
void DateTime_convertSystemTimeToCOBOLTime(const char *systemPtr, char *newTimePtr, const FD *newTimeFDPtr);
void DateTime_convertSystemTimestampToCOBOLTimestamp(const char *systemPtr, char *newTimestampPtr,
                                                     const FD *newTimestampFDPtr, int16_t windowYear);

// The one of the three that the category asks for; the category is a date-time one.
void itemToSystemForm(const char *item, const FD *fd, char *out, int16_t windowYear, bool mask);
void systemFormToItem(const char *system, char *item, const FD *fd, int16_t windowYear);

// A number of at most 18 digits at an offset of a text; a blank counts as 0, a NUL ends it.
int64_t DateTime_ATOL(const char *text, int offset, int length);
