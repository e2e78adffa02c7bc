// Items that are tied to a locale: between their text and ISO text.
#pragma once

#include "datetime/system_form.h"

inline constexpr uint32_t kLocaleArea = 256;

// Takes the format of dates or times from the locale into the descriptor.
void DateTime_updateFormatFromLocale(FD *fd, const LocaleProgram *program);

// Makes a copy of a descriptor one of the ISO layout: YYYY-MM-DD or HH.MM.SS.
void DateTime_updateFormatToISO(FD *fd);

// An item of the locale's layout as ISO text. An item whose format is one of `strptime` gives
// YYYY-MM-DD or HH.MM.SS; another one keeps the layout of its entries. `out` has kLocaleArea bytes.
// False if the item cannot be read.
bool DateTime_convertDateTimeFromLocale(const char *timePtr, const FD *timeFDPtr, char *newTimePtr,
                                        const LocaleProgram *program);

// And back: fills the item, cut or padded with blanks. Returns the length of the text.
uint32_t DateTime_convertDateTimeToLocale(const char *timePtr, char *newTimePtr, const FD *newTimeFDPtr,
                                          const LocaleProgram *program);

// Moves a time between the zones of two items by the difference of their offsets from UTC.
void DateTime_retrieveTimeZoneDifference(const char *sender, const FD *senderFD, char *out, const FD *receiverFD,
                                         int16_t windowYear, const LocaleProgram *program, NewCallInfo newCallInfo);

// The built-in ISO layouts.
extern FormatEntry kIsoDateEntries[5], kIsoTimeEntries[5];
