// The run unit's table of locales, and the descriptors in it.
#pragma once

#include <clocale>

#include "datetime/system_form.h"

// What each name in a LocaleInfo is for.
enum LocaleSlot { kCtype, kNumeric, kTimeSlot, kCollate, kMonetary, kMessages, kAll, kTod, kNamedSlots };

// The run unit's locale table, or null before the first Init_Locale.
RutLocaleTable *rutLocaleTable();

// "C", the ISO side of every translation; null before the first Init_Locale.
locale_t plainSideLocale();

// What the current locale is in each category; there is one.
LocaleInfo *currentLocaleInfo();

// The descriptor for an index of the program's table, 1 for the current locale.
LocaleDescriptor *localeDescriptorFor(uint16_t localeIndex, const LocaleProgram *program);

LocaleDescriptor *runRutCreateLocaleDescriptor(const char *name, const char *library, int16_t nameLength,
                                               int16_t libraryLength);
