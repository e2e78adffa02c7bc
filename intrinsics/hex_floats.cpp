// See hex_floats.h.
#include "intrinsics/hex_floats.h"

#include "frame/message_calls.h"
#include "kvr2/external_floats.h"

namespace {

constexpr uint32_t kSign = 0x80000000, kFraction = 0x00FFFFFF;
constexpr uint32_t kHidden = 0x01000000; // one bit above the fraction
constexpr uint32_t kMsgTooLarge = 53, kMsgNoNumber = 54;

// The exponent that binary 32 would need for a fraction that is not zero; the fraction ends up with
// its first bit in kHidden.
int biasedExponent(uint32_t hex, uint32_t &fraction)
{
    fraction = hex & kFraction;
    int exponent = static_cast<int>(hex >> 24 & 0x7F) * 4 - 256;
    for (; !(fraction & kHidden); fraction *= 2) exponent--;
    return exponent + 127;
}

} // namespace

uint32_t zvkHexToIeee(uint32_t hex, uint32_t *ieee)
{
    if ((hex & kFraction) == 0) { // whatever sign and exponent are
        *ieee = 0;
        return 0;
    }
    uint32_t fraction;
    const int exponent = biasedExponent(hex, fraction);
    if (exponent > 254) return kMsgTooLarge;
    *ieee = hex & kSign; // too small: no denormal numbers are made
    if (exponent > 0) *ieee |= static_cast<uint32_t>(exponent) << 23 | (fraction >> 1 & 0x7FFFFF);
    return 0;
}

uint32_t zvkIeeeToHex(uint32_t ieee, uint32_t *hex)
{
    const uint32_t mantissa = ieee & 0x7FFFFF;
    int exponent = static_cast<int>(ieee >> 23 & 0xFF);
    if (exponent == 0xFF) return mantissa ? kMsgNoNumber : kMsgTooLarge;
    uint32_t fraction = mantissa * 2;
    if (exponent == 0) { // zero, or a denormal number
        if (mantissa == 0) {
            *hex = 0;
            return 0;
        }
        for (exponent = 1; !(fraction & kHidden); fraction *= 2) exponent--;
    }
    fraction |= kHidden;
    exponent -= 127;

    int power; // of 16
    if (exponent < 0) {
        fraction >>= -exponent & 3;
        power = -(-exponent >> 2);
    } else {
        fraction <<= exponent & 3;
        power = exponent >> 2;
    }
    if (fraction & 0x0F000000) {
        fraction >>= 4;
        power++;
    }
    *hex = (ieee & kSign) | static_cast<uint32_t>(power + 64) << 24 | fraction;
    return 0;
}

uint32_t _zvkcConvHex4toIEEE(uint32_t hex, uint32_t otherwise)
{
    uint32_t ieee;
    uint32_t fault = zvkHexToIeee(hex, &ieee);
    if (fault == 0) return ieee;
    uint32_t fraction;
    msg::hexFloatTooLarge(biasedExponent(hex, fraction), hex);
    return otherwise;
}

uint32_t _zvkcConvIEEE4toHex(uint32_t ieee, uint32_t otherwise)
{
    uint32_t hex;
    uint32_t fault = zvkIeeeToHex(ieee, &hex);
    if (fault == 0) return hex;
    if (fault == kMsgNoNumber)
        msg::floatIsNoNumber();
    else
        msg::floatTooLarge();
    return otherwise;
}

uint64_t _zvkcConvHex8toIEEE(uint64_t, uint64_t) { return 0; }
uint64_t _zvkcConvIEEE8toHex(uint64_t, uint64_t) { return 0; }
