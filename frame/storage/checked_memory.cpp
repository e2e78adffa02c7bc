// Memory and string routines that compiled code built for debugging calls instead of the system's:
// dbg_ shows each call on stderr, c__ asserts that no argument is null. The text of a failed
// assertion is part of what such a program shows, down to its blanks.
#include <cassert>
#include <cstdio>
#include <cstring>

#include "kvr2/storage.h"

// clang-format off
#define CHECK_S1() assert((s1)!=((void *)0))
#define CHECK_S2() assert((s2)!=((void *)0))
// clang-format on

void *dbg_memset(void *s1, int32_t c, uint64_t n)
{
    fprintf(stderr, "memset(@%p, 0x%x, %d\n", s1, static_cast<unsigned>(c), static_cast<int>(n));
    return memset(s1, c, n);
}

void *dbg_memcpy(void *s1, const void *s2, uint64_t n)
{
    fprintf(stderr, "memcpy(@%p, @%p, %d\n", s1, s2, static_cast<int>(n));
    return memcpy(s1, s2, n);
}

int32_t dbg_memcmp(const void *s1, const void *s2, uint64_t n)
{
    fprintf(stderr, "memcmp(@%p, @%p, %d\n", s1, s2, static_cast<int>(n));
    return memcmp(s1, s2, n);
}

void *c__memcpy(void *s1, const void *s2, uint64_t n)
{
    CHECK_S1();
    CHECK_S2();
    return memcpy(s1, s2, n);
}

int32_t c__memcmp(const void *s1, const void *s2, uint64_t n)
{
    CHECK_S1();
    CHECK_S2();
    return memcmp(s1, s2, n);
}

void *c__memset(void *s1, int32_t c, uint64_t n)
{
    CHECK_S1();
    return memset(s1, c, n);
}

char *c__strcpy(char *s1, const char *s2)
{
    CHECK_S1();
    CHECK_S2();
    return strcpy(s1, s2);
}

int32_t c__strcmp(const char *s1, const char *s2)
{
    CHECK_S1();
    CHECK_S2();
    return strcmp(s1, s2);
}

uint64_t c__strlen(const char *s1)
{
    CHECK_S1();
    return strlen(s1);
}
