// The validators of decimal items, also behind the class tests.
//
// They answer 0 for a good item and 1 for a bad one. The arithmetic check (kCheckArithmetic) is
// muted by mode bit 0x001 and does not look at leading zero bytes; the strict check (kCheckStrict)
// does neither. `address` is that of the digits: a separate sign is not looked at.
#pragma once

#include <cstdint>

#include "decimal/packed.h"
#include "decimal/zoned.h"
#include "frame/messages.h"

inline constexpr int kCheckArithmetic = 0;
inline constexpr int kCheckStrict = 1;

int zvkBcdCheckPacked(const uint8_t *address, int32_t digits, int checkMode);
int zvkBcdCheckZoned(const uint8_t *address, int32_t digits, int checkMode);

namespace bcd {

// The validator of a form, for an item from its first byte.
template <class Form>
inline int check(const uint8_t *item, int32_t digits, int checkMode)
{
    return zvkBcdCheckZoned(Form::digits(item), digits, checkMode);
}

template <>
inline int check<forms::Pckd>(const uint8_t *item, int32_t digits, int checkMode)
{
    return zvkBcdCheckPacked(item, digits, checkMode);
}

[[gnu::cold, gnu::noinline]] void reportBadData();
[[gnu::cold, gnu::noinline]] void reportZeroDivisor();
[[gnu::cold, gnu::noinline]] void reportBadSource(int answer);
[[gnu::cold, gnu::noinline]] void reportBadSeparateSign();

// What an arithmetic or comparing entry says of a validator's answer, and what a copying or
// converting entry says.
inline void judgeOperand(int answer)
{
    if (__builtin_expect(answer != 0, 0)) reportBadData();
}

inline void judgeSource(int answer)
{
    if (__builtin_expect(answer != 0, 0)) reportBadSource(answer);
}

inline void judgeSeparateSign(uint8_t sign)
{
    if (__builtin_expect(sign != '+' && sign != '-', 0)) reportBadSeparateSign();
}

} // namespace bcd
