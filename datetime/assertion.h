// Assertions of the date-time verbs. What a failed one shows is part of the interface: the words of
// the condition as programs' logs have always had them, null written as "((void *)0)".
#pragma once

#include <cassert>

#include "kvr2/datetime.h"

// Always on, as all asserts of the library.
#define DATETIME_ASSERT(condition, words)                                                                              \
    (__builtin_expect(static_cast<bool>(condition), 1) ? static_cast<void>(0)                                          \
                                                       : __assert_fail(words, __FILE_NAME__, __LINE__, __func__))

#define ASSERT_POINTER(pointer) DATETIME_ASSERT((pointer) != nullptr, #pointer " != ((void *)0)")

#define ASSERT_DATE_TIME(fd)                                                                                           \
    DATETIME_ASSERT(isDateTime((fd)->category),                                                                        \
                    #fd "->category == ctDATE || " #fd "->category == ctTIME || " #fd "->category == ctTIMESTAMP")

// A format that something is to be written by.
#define ASSERT_FORMAT(fd)                                                                                              \
    do {                                                                                                               \
        DATETIME_ASSERT((fd)->formatEntriesPtr != nullptr, #fd "->formatEntriesPtr != ((void *)0)");                   \
        DATETIME_ASSERT((fd)->numberOfEntries > 0, #fd "->numberOfEntries > 0");                                       \
        DATETIME_ASSERT((fd)->formatLiteralPtr != nullptr, #fd "->formatLiteralPtr != ((void *)0)");                   \
    } while (0)

inline bool isDateTime(uint32_t category) { return category - ctDATE <= ctTIMESTAMP - ctDATE; }
