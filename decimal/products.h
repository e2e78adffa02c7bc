// Multiplication and division: the workers on packed and zoned items.
//
// Results are whole numbers, cut on the left. Division truncates and the remainder has the
// dividend's sign. The division workers return 0 when the dividend's magnitude is below the
// divisor's, else 1; `quotient` or `remainder` may be null. A zero divisor is the entries'
// business: the workers come to an end with it, with nines.
#pragma once

#include <cstdint>

void zvkBcdMulPacked(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits, uint8_t *dst,
                     int32_t dstDigits);
void zvkBcdMulZoned(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2, int32_t op2Digits, uint8_t *dst,
                    int32_t dstDigits);

int zvkBcdDivPacked(const uint8_t *dividend, int32_t dividendDigits, const uint8_t *divisor, int32_t divisorDigits,
                    uint8_t *quotient, int32_t quotientDigits, uint8_t *remainder, int32_t remainderDigits);
int zvkBcdDivZoned(const uint8_t *dividend, int32_t dividendDigits, const uint8_t *divisor, int32_t divisorDigits,
                   uint8_t *quotient, int32_t quotientDigits, uint8_t *remainder, int32_t remainderDigits);
