// Addition, subtraction, comparison: the workers on packed and zoned items.
//
// The add, subtract, increment and decrement workers return 1. `sameSign` 1 means that the
// operation is on magnitudes as it is and the signs have been looked at; one worker calls the
// other so. Nothing is allocated, results are cut on the left to the destination's digits, and a
// zero keeps the sign that comes out. The destination of add and subtract must not overlap the
// operands.
#pragma once

#include <cstdint>

int zvkBcdAddPacked(const uint8_t *first, int32_t firstDigits, const uint8_t *second, int32_t secondDigits,
                    uint8_t *dst, int32_t dstDigits, int sameSign);
int zvkBcdSubPacked(const uint8_t *first, int32_t firstDigits, const uint8_t *second, int32_t secondDigits,
                    uint8_t *dst, int32_t dstDigits, int sameSign);
int zvkBcdAddZoned(const uint8_t *first, int32_t firstDigits, const uint8_t *second, int32_t secondDigits, uint8_t *dst,
                   int32_t dstDigits, int sameSign);
int zvkBcdSubZoned(const uint8_t *first, int32_t firstDigits, const uint8_t *second, int32_t secondDigits, uint8_t *dst,
                   int32_t dstDigits, int sameSign);

int zvkBcdIncPacked(uint8_t *op, int32_t opDigits, int64_t value, int sameSign);
int zvkBcdDecPacked(uint8_t *op, int32_t opDigits, int64_t value, int sameSign);
int zvkBcdIncZoned(uint8_t *op, int32_t opDigits, int64_t value, int sameSign);
int zvkBcdDecZoned(uint8_t *op, int32_t opDigits, int64_t value, int sameSign);
int zvkBcdIncPacked4(uint8_t *op, int32_t opDigits, int32_t value, int sameSign);
int zvkBcdDecPacked4(uint8_t *op, int32_t opDigits, int32_t value, int sameSign);
int zvkBcdIncZoned4(uint8_t *op, int32_t opDigits, int32_t value, int sameSign);
int zvkBcdDecZoned4(uint8_t *op, int32_t opDigits, int32_t value, int sameSign);

// Negative, zero or positive. With `magnitudeOnly` 1 the signs count only where the items differ in
// length after their leading zeros.
int zvkBcdCmpPacked(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits, int magnitudeOnly);
int zvkBcdCmpZoned(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits, int magnitudeOnly);
