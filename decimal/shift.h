// The shift workers, for other files of the room. A shift of 0 or less is a plain move.
#pragma once

#include <cstdint>

void zvkBcdShiftLeftPacked(const uint8_t *src, int32_t srcDigits, uint8_t *dst, int32_t dstDigits, int32_t shift);
void zvkBcdShiftLeftZoned(const uint8_t *src, int32_t srcDigits, uint8_t *dst, int32_t dstDigits, int32_t shift);
void zvkBcdShiftRightPacked(const uint8_t *src, int32_t srcDigits, uint8_t *dst, int32_t dstDigits, int32_t shift,
                            bool round);
void zvkBcdShiftRightZoned(const uint8_t *src, int32_t srcDigits, uint8_t *dst, int32_t dstDigits, int32_t shift,
                           bool round);
