// The debug dump of COBOL_BCD_DEBUG: a title line, each operand on a line, the result on a line, on
// stderr.
//
//     add packed...
//     op1: 0x7ffd3c5e 3: 123c
//     op2: 0x7ffd3c62 3: 001c
//     dst: 0x7ffd3c66 3: 124c
#pragma once

#include <cstddef>
#include <cstdint>

namespace bcd {

void dumpTitle(const char *title);
void dumpTitle(const char *format, int32_t number); // a shift's title has its count

// "LABEL: address count: bytes" as arithmetic and comparisons have it; without the colon after the
// count as copies, shifts and conversions have it. The label comes with its colon ("op1:").
void dumpOperand(const char *label, const uint8_t *item, int32_t digits, size_t bytes);
void dumpCopied(const char *label, const uint8_t *item, int32_t digits, size_t bytes);

// "LABEL: bytes".
void dumpBytes(const char *label, const uint8_t *item, size_t bytes);

// "LABEL: number", by the number's printf conversion ("%d"); the overload is the width.
void dumpNumber(const char *label, const char *conversion, int32_t number);
void dumpNumber(const char *label, const char *conversion, int64_t number);

} // namespace bcd
