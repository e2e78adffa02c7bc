// The six floating-point formats.
//
// Each is a traits type with its value type and what the algorithms need to know of it. The
// algorithms of decimal/ and intrinsics/ are written once over them, and an exported entry is one
// line that picks its format:
//
//     Binary32, Binary64, Binary128     IEEE binary formats
//     Decimal32, Decimal64, Decimal128  IEEE decimal formats, coefficient as a binary integer
//
// Powers of ten are exact where the format holds them: up to 10^22 in binary 64, 10^48 in binary
// 128 and all of them in the decimal formats, where they are 1 with an exponent. The C library's
// exp10 and its like differ in the last bit even there.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "decimal/words.h"
#include "kvr2/floats.h"
#if defined(__clang__)
#include "decimal/decimal_stand_ins.h"
#endif

namespace floats {

using bcd::u128;

template <class To, class From>
inline To bitsAs(const From &from)
{
    static_assert(sizeof(To) == sizeof(From));
    To to;
    memcpy(&to, &from, sizeof to);
    return to;
}

// 10^n as an integer, for n from 0 to 38.
inline constexpr std::array<u128, 39> kIntegerPower = [] {
    std::array<u128, 39> table{};
    u128 power = 1;
    for (size_t n = 0; n < table.size(); n++, power *= 10) table[n] = power;
    return table;
}();

// The number of digits of a value; a zero has none.
inline int digitCount(u128 value)
{
    if (value == 0) return 0;
    uint64_t high = bcd::highWord(value);
    int bits = high ? 128 - __builtin_clzll(high) : 64 - __builtin_clzll(bcd::lowWord(value));
    int count = bits * 1233 >> 12; // log10(2), a little less than the digits
    return count + (count < 39 && value >= kIntegerPower[static_cast<size_t>(count)]);
}

// ---- Binary formats.

inline constexpr int kExact64 = 22;  // the last power of ten that binary 64 holds
inline constexpr int kExact128 = 48; // and binary 128

inline constexpr std::array<ZvkFloat128, kExact128 + 1> kPower128 = [] {
    std::array<ZvkFloat128, kExact128 + 1> table{};
    ZvkFloat128 power = 1;
    for (ZvkFloat128 &entry : table) {
        entry = power;
        power *= 10;
    }
    return table;
}();

// 10^n for n of 0 or more; infinity beyond the format.
inline ZvkFloat128 power128(int64_t n)
{
    if (n <= kExact128) return kPower128[static_cast<size_t>(n)];
    if (n > 4932) return static_cast<ZvkFloat128>(__builtin_huge_val());
    ZvkFloat128 result = kPower128[static_cast<size_t>(n) % 32];
    ZvkFloat128 square = kPower128[32];
    for (n /= 32; n; n /= 2, square *= square)
        if (n % 2) result *= square;
    return result;
}

inline constexpr std::array<double, 309> kPower64 = [] {
    std::array<double, 309> table{};
    ZvkFloat128 power = 1;
    for (double &entry : table) {
        entry = static_cast<double>(power);
        power *= 10;
    }
    return table;
}();

// 10^-n, the nearest number.
inline constexpr std::array<double, kExact128 + 1> kTenth64 = [] {
    std::array<double, kExact128 + 1> table{};
    for (size_t n = 0; n < table.size(); n++) table[n] = static_cast<double>(1 / kPower128[n]);
    return table;
}();

inline double power64(int64_t n) { return n <= 308 ? kPower64[static_cast<size_t>(n)] : __builtin_huge_val(); }

struct Binary64 {
    using Value = double;
    static constexpr bool isDecimal = false;
    static constexpr const char *name = "double";
    using Power = double; // what powers of ten are computed in
    static Power power(int64_t n) { return power64(n); }
    static Power tenth(int64_t n) { return n <= kExact128 ? kTenth64[static_cast<size_t>(n)] : 1 / power64(n); }
    static bool isFinite(double x) { return (bitsAs<uint64_t>(x) >> 52 & 0x7FF) != 0x7FF; }
    static bool isNan(double x) { return (bitsAs<uint64_t>(x) & ~(uint64_t{1} << 63)) > uint64_t{0x7FF} << 52; }
    static bool signBit(double x) { return bitsAs<uint64_t>(x) >> 63; }
};

// Steps of binary 32 go through powers of binary 64 and are rounded back, each once.
struct Binary32 {
    using Value = float;
    static constexpr bool isDecimal = false;
    static constexpr const char *name = "float";
    using Power = double;
    static Power power(int64_t n) { return power64(n); }
    static Power tenth(int64_t n) { return Binary64::tenth(n); }
    static bool isFinite(float x) { return (bitsAs<uint32_t>(x) >> 23 & 0xFF) != 0xFF; }
    static bool isNan(float x) { return (bitsAs<uint32_t>(x) & 0x7FFFFFFF) > 0x7F800000; }
    static bool signBit(float x) { return bitsAs<uint32_t>(x) >> 31; }
};

struct Binary128 {
    using Value = ZvkFloat128;
    static constexpr bool isDecimal = false;
    static constexpr const char *name = "quad";
    using Power = ZvkFloat128;
    static Power power(int64_t n) { return power128(n); }
    static Power tenth(int64_t n) { return 1 / power128(n); }
    static uint64_t head(ZvkFloat128 x) { return bcd::highWord(bitsAs<u128>(x)); }
    static bool isFinite(ZvkFloat128 x) { return (head(x) >> 48 & 0x7FFF) != 0x7FFF; }
    static bool isNan(ZvkFloat128 x) { return bitsAs<u128>(x) << 1 > u128{0xFFFE} << 112; }
    static bool signBit(ZvkFloat128 x) { return head(x) >> 63; }
};

// ---- Decimal formats.

// A number taken apart: coefficient times 10^exponent.
struct DecimalParts {
    u128 coefficient;
    int exponent;
    bool negative;
    bool finite;
};

// The encoding: sign, then exponent and coefficient. Two set bits after the sign mark a coefficient
// whose top bits are 100, which its field then leaves out; four mark infinities and NaNs. A
// coefficient of more digits than the format has counts as zero.
template <class Self, class Number, class Word, int ExponentBits, int Digits>
struct DecimalForm {
    using Value = Number;
    using Bits = Word;
    static constexpr bool isDecimal = true;
    static constexpr int digits = Digits;
    static constexpr int width = 8 * sizeof(Word);
    static constexpr int coefficientBits = width - 1 - ExponentBits;
    static constexpr int largest = (3 << (ExponentBits - 2)) - 1; // of the encoded exponents
    static constexpr int bias = (largest - 1) / 2 + Digits - 1;

    static bool isFinite(Value x) { return (bitsAs<Bits>(x) >> (width - 5) & 0xF) != 0xF; }
    static bool isNan(Value x) { return (bitsAs<Bits>(x) >> (width - 6) & 0x1F) == 0x1F; }
    static bool signBit(Value x) { return bitsAs<Bits>(x) >> (width - 1) & 1; }

    static DecimalParts parts(Value x)
    {
        const Bits bits = bitsAs<Bits>(x);
        constexpr Bits exponentMask = (Bits{1} << ExponentBits) - 1;
        bool longForm = (bits >> (width - 3) & 3) == 3;
        int field = coefficientBits - (longForm ? 2 : 0);
        u128 coefficient = bits & ((Bits{1} << field) - 1);
        if (longForm) coefficient |= u128{1} << coefficientBits;
        if (coefficient >= kIntegerPower[Digits]) coefficient = 0;
        return {coefficient, static_cast<int>(bits >> field & exponentMask) - bias, signBit(x), isFinite(x)};
    }

    // A small coefficient times 10^exponent; infinity or zero beyond the format.
    static Value make(unsigned coefficient, int64_t exponent)
    {
        u128 scaled = coefficient;
        int64_t field = exponent + bias;
        while (field > largest && scaled < kIntegerPower[Digits - 1]) {
            scaled *= 10;
            field--;
        }
        Bits bits;
        if (field > largest)
            bits = Bits{0x78} << (width - 8);
        else if (field < 0)
            bits = 0;
        else // fits the short form: below 2^coefficientBits in all that is asked for
            bits = static_cast<Bits>(field) << coefficientBits | static_cast<Bits>(scaled);
        return bitsAs<Value>(bits);
    }
    static Value power(int64_t n) { return make(1, n); }

    // The largest number: all nines with the largest exponent.
    static Value most()
    {
        Value nines = make(1, Digits) - make(1, 0);
        return nines * make(1, largest - bias);
    }
};

struct Decimal32 : DecimalForm<Decimal32, ZvkDecimal32, uint32_t, 8, 7> {
    static constexpr const char *name = "Decimal32";
};
struct Decimal64 : DecimalForm<Decimal64, ZvkDecimal64, uint64_t, 10, 16> {
    static constexpr const char *name = "Decimal64";
};
struct Decimal128 : DecimalForm<Decimal128, ZvkDecimal128, u128, 14, 34> {
    static constexpr const char *name = "Decimal128";
};
static_assert(Decimal32::bias == 101 && Decimal64::bias == 398 && Decimal128::bias == 6176);

// An integer of up to 38 digits, rounded once.
inline ZvkDecimal128 decimal128Of(u128 value)
{
    constexpr uint64_t split = 10'000'000'000'000'000'000u; // 10^19
    if (value < split) return static_cast<ZvkDecimal128>(static_cast<uint64_t>(value));
    return static_cast<ZvkDecimal128>(static_cast<uint64_t>(value / split)) * static_cast<ZvkDecimal128>(split) +
           static_cast<ZvkDecimal128>(static_cast<uint64_t>(value % split));
}

// The absolute value, by the sign bit.
template <class F>
inline typename F::Value magnitudeOf(typename F::Value x)
{
    unsigned char bytes[sizeof x];
    memcpy(bytes, &x, sizeof x);
    bytes[sizeof x - 1] &= 0x7F;
    memcpy(&x, bytes, sizeof x);
    return x;
}

} // namespace floats
