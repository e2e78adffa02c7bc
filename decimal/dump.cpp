// The debug dump; what it looks like is in dump.h. There is no lock: lines of several threads
// may mix.
#include "decimal/dump.h"

#include <cstdio>

namespace {

void bytesAndNewline(const uint8_t *item, size_t bytes)
{
    for (size_t i = 0; i < bytes; i++) fprintf(stderr, "%2.2x", item[i]);
    fputc('\n', stderr);
}

template <class T>
void number(const char *label, const char *conversion, T value)
{
    fprintf(stderr, "%s ", label);
    fprintf(stderr, conversion, value);
    fputc('\n', stderr);
}

} // namespace

void bcd::dumpTitle(const char *title) { fprintf(stderr, "%s\n", title); }

void bcd::dumpTitle(const char *format, int32_t shift)
{
    fprintf(stderr, format, shift);
    fputc('\n', stderr);
}

void bcd::dumpOperand(const char *label, const uint8_t *item, int32_t digits, size_t bytes)
{
    fprintf(stderr, "%s %p %d: ", label, static_cast<const void *>(item), digits);
    bytesAndNewline(item, bytes);
}

void bcd::dumpCopied(const char *label, const uint8_t *item, int32_t digits, size_t bytes)
{
    fprintf(stderr, "%s %p %d ", label, static_cast<const void *>(item), digits);
    bytesAndNewline(item, bytes);
}

void bcd::dumpBytes(const char *label, const uint8_t *item, size_t bytes)
{
    fprintf(stderr, "%s ", label);
    bytesAndNewline(item, bytes);
}

void bcd::dumpNumber(const char *label, const char *conversion, int32_t value) { number(label, conversion, value); }
void bcd::dumpNumber(const char *label, const char *conversion, int64_t value) { number(label, conversion, value); }
