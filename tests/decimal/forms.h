// The two forms of the arithmetic entries, for tests that are written once for both.
#pragma once

#include "items.h"
#include "kvr2/decimal.h"
#include "reference.h"

#define KVR2_FORM_ENTRIES(FORM)                                                                                        \
    static constexpr auto addEntry = _zvkcBCD_ADD_##FORM;                                                              \
    static constexpr auto subtractEntry = _zvkcBCD_SUB_##FORM;                                                         \
    static constexpr auto multiply = _zvkcBCD_MPY_##FORM;                                                              \
    static constexpr auto divide = _zvkcBCD_DIV_##FORM;                                                                \
    static constexpr auto divideBoth = _zvkcBCD_DIVR_##FORM;                                                           \
    static constexpr auto modulo = _zvkcBCD_MOD_##FORM;                                                                \
    static constexpr auto addInt8 = _zvkcBCD_ADD_##FORM##_Int8;                                                        \
    static constexpr auto addInt4 = _zvkcBCD_ADD_##FORM##_Int4;                                                        \
    static constexpr auto subtractInt8 = _zvkcBCD_SUB_##FORM##_Int8;                                                   \
    static constexpr auto subtractInt4 = _zvkcBCD_SUB_##FORM##_Int4;                                                   \
    static constexpr auto equ = _zvkcBCD_EQU_##FORM;                                                                   \
    static constexpr auto neq = _zvkcBCD_NEQ_##FORM;                                                                   \
    static constexpr auto grt = _zvkcBCD_GRT_##FORM;                                                                   \
    static constexpr auto geq = _zvkcBCD_GEQ_##FORM;                                                                   \
    static constexpr auto les = _zvkcBCD_LES_##FORM;                                                                   \
    static constexpr auto leq = _zvkcBCD_LEQ_##FORM;                                                                   \
    static constexpr auto isZero = _zvkcBCD_NOT_##FORM;                                                                \
    static constexpr auto absolute = _zvkcBCD_ABS_##FORM;                                                              \
    static constexpr auto negate = _zvkcBCD_NEG_##FORM

struct Packed {
    static constexpr bool packed = true;
    static size_t bytes(int n) { return static_cast<size_t>(n / 2 + 1); }

    // With any of the sign nibbles that a validator passes.
    static Bytes item(const reference::Value &value)
    {
        static const std::string plus = "\xA\xC\xE\xF", minus = "\xB\xD";
        return packedItem(value.digits,
                          static_cast<uint8_t>(value.negative ? minus[randomBelow(2)] : plus[randomBelow(4)]));
    }

    static Bytes result(const reference::Value &value) { return packedItem(value.digits, value.negative ? 0xD : 0xC); }

    KVR2_FORM_ENTRIES(Pckd);
};

struct Zoned {
    static constexpr bool packed = false;
    static size_t bytes(int n) { return static_cast<size_t>(n); }

    // With any of the sign bytes that a validator passes.
    static Bytes item(const reference::Value &value)
    {
        Bytes item = zonedItem(value.digits, false);
        uint8_t digit = item.back() & 15;
        static const std::string plus = "{ABCDEFGHI", minus = "}JKLMNOPQR";
        uint8_t zones[] = {0x30, 0xC0, 0xF0, 0x70, 0xD0};
        uint8_t zone = zones[value.negative ? 3 + randomBelow(2) : randomBelow(3)];
        item.back() = randomBelow(4) ? static_cast<uint8_t>(zone | digit)
                                     : static_cast<uint8_t>((value.negative ? minus : plus)[digit]);
        return item;
    }

    static Bytes result(const reference::Value &value) { return zonedItem(value.digits, value.negative); }

    KVR2_FORM_ENTRIES(Znd);
};

inline reference::Value randomValue(int n) { return {randomDigits(n), randomBelow(2) == 1}; }

// Now and then an operand that has a digit in the nibble that an even packed item does not use: it
// counts.
template <class Form>
reference::Value randomOperand(int n)
{
    return randomValue(Form::packed && n % 2 == 0 && randomBelow(8) == 0 ? n + 1 : n);
}
