// The locales of the process, and handles for others. The library calls the system's locale
// routines here and nowhere else.
#pragma once

#include <clocale>
#include <locale.h>

// Sets every category from the environment, as a program does at its start; where the system
// refuses that, from LANG alone. The library's constructor calls it.
void zvkAdoptEnvironmentLocale();

// The name in force for a category.
const char *zvkLocaleName(int category);

// Sets a category of the process; the name in force then, or null if the system refuses it.
const char *zvkSetLocale(int category, const char *name);

// A handle for dates and times of a locale, or a null handle if there is no such locale. Handles
// are kept for the life of the process, so that texts that the system gives for them stay valid:
// formats of date-time items point to such texts. Any thread.
locale_t zvkTimeLocale(const char *name);

// The handle of "C" for all categories, or a null handle.
locale_t zvkPlainLocale();
