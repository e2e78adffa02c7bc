// The frame of an entry point: the steps between an exported name and its worker, written once.
//
//     mode word      one load; the environment is read at the first call in the process
//     dump           operands, when COBOL_BCD_DEBUG is on
//     validation     by the family's rule; a bad operand is reported and then computed on as it is
//     work           the worker, and what the entry adds to it (negative zero, forced sign, letters)
//     dump           result
//
// A family of entries is a structure, the call, with the operands as members and these routines:
//
//     void dumpOperands() const;                  the title and the operands; with dumpResult, may both be left out
//     void validate(uint32_t mode) const;         may be left out; ask `checked`, or
//                                                 test the mode for what is always checked
//     auto work(uint32_t mode) const;             gives what the entry returns
//     void dumpResult(T result) const;
//     bool quick(uint32_t mode, T &result) const;       may be left out, as may
//     bool quickLong(T &result) const;                  see below
//
// and an exported entry is one line:
//
//     uint8_t *_zvkcBCD_ABS_Pckd(const uint8_t *src, uint8_t *dst, int32_t dn, int32_t sn)
//     { return runEntry<AbsolutePacked>(src, dst, dn, sn); }
//
// `quick` is a short cut past validation for the common case: it looks at the operands once and,
// when they are short and clean, so that a validator would have nothing to say, computes the result
// at once and answers true. Otherwise it answers false and must not have written anything. It is
// all that is in the exported routine; everything else is after a jump that takes the operands
// along in the registers they came in, so nothing has to be saved for it. There `quickLong` is
// tried first: another short cut, for operands that need more code.
#pragma once

#include <concepts>
#include <cstdint>
#include <utility>

#include "decimal/mode.h"

namespace bcd {

// When a family validates: the bits of the mode word to look at, and what they must be.
struct ValidationRule {
    uint32_t mask;
    uint32_t wanted;
};

inline constexpr ValidationRule kArithmeticRule{ZVK_BCD_NO_VALIDATION, 0};
inline constexpr ValidationRule kSourceRule{ZVK_BCD_CHECK_SOURCES, ZVK_BCD_CHECK_SOURCES};
inline constexpr ValidationRule kCompareRule{ZVK_BCD_CHECK_COMPARED, ZVK_BCD_CHECK_COMPARED};

inline bool checked(ValidationRule rule, uint32_t mode) { return (mode & rule.mask) == rule.wanted; }

template <class Call>
concept Dumps = requires(const Call &call)
{
    call.dumpOperands();
};
template <class Call>
concept Validates = requires(const Call &call)
{
    call.validate(uint32_t{});
};
template <class Call>
using ResultOf = decltype(std::declval<const Call &>().work(uint32_t{}));
template <class Call>
concept Quick = requires(const Call &call, ResultOf<Call> &result)
{
    {
        call.quick(uint32_t{}, result)
        } -> std::same_as<bool>;
};
template <class Call>
concept QuickLong = requires(const Call &call, ResultOf<Call> &result)
{
    {
        call.quickLong(result)
        } -> std::same_as<bool>;
};

template <class Call>
[[gnu::always_inline]] inline ResultOf<Call> takeSteps(const Call &call, uint32_t mode, bool dump)
{
    if constexpr (Dumps<Call>) {
        if (dump) call.dumpOperands();
    }
    if constexpr (Validates<Call>) call.validate(mode);
    ResultOf<Call> result = call.work(mode);
    if constexpr (Dumps<Call>) {
        if (dump) call.dumpResult(result);
    }
    return result;
}

// The first call in the process, all calls of a process that dumps, and operands that no short cut
// takes.
template <class Call, class... Operands>
[[gnu::noinline]] ResultOf<Call> runEveryStep(Operands... operands)
{
    uint32_t word = mode();
    return takeSteps(Call{operands...}, word, (word & ZVK_BCD_DEBUG) != 0);
}

// For an exported entry of a few nanoseconds: on a cache line of its own. Where it falls otherwise
// it takes up to a quarter longer.
#define ZVK_SHORT_ENTRY [[gnu::aligned(64)]]

template <class Call, class... Operands>
[[gnu::noinline]] ZVK_SHORT_ENTRY ResultOf<Call> runLongEntry(Operands... operands)
{
    ResultOf<Call> result;
    if (__builtin_expect(Call{operands...}.quickLong(result), 1)) return result;
    return runEveryStep<Call>(operands...);
}

template <class Call, class... Operands>
[[gnu::always_inline]] inline ResultOf<Call> runEntry(Operands... operands)
{
    uint32_t word = rawMode();
    if (__builtin_expect(word & ZVK_BCD_DEBUG, 0))
        return runEveryStep<Call>(operands...); // an unread word has this bit, too
    if constexpr (Quick<Call>) {
        ResultOf<Call> result;
        if (__builtin_expect(Call{operands...}.quick(word, result), 1)) return result;
        if constexpr (QuickLong<Call>)
            return runLongEntry<Call>(operands...);
        else
            return runEveryStep<Call>(operands...);
    } else {
        return takeSteps(Call{operands...}, word, false);
    }
}

} // namespace bcd
