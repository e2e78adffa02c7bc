// Copies: an item to one of the same form with another digit count.
//
// Each is the shared move of its digits and then what its sign form needs. Unlike a conversion, a
// copy of zoned data cleans only the bytes that can carry a sign: zones of other bytes pass as they
// are.
#include "decimal/copy_steps.h"
#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/packed.h"
#include "decimal/short_move.h"
#include "decimal/validation.h"
#include "decimal/zoned.h"
#include "kvr2/decimal_conversions.h"

namespace bcd {
namespace {

template <class Form>
struct Copy {
    const uint8_t *src;
    uint8_t *dst;
    int32_t dn, sn;

    template <class Word>
    bool inWord(uint32_t mode, uint8_t *&result) const
    {
        result = dst;
        return shortMove<Direction::Left, Word>(src, sn, dst, dn, 0, mode & ZVK_BCD_KEEP_NEG_ZERO);
    }
    bool quick(uint32_t mode, uint8_t *&result) const requires(isPacked<Form>)
    {
        return !checked(kSourceRule, mode) && (inWord<uint64_t>(mode, result) || inWord<u128>(mode, result));
    }

    void dumpOperands() const
    {
        dumpTitle(AfterCopy<Form>::copyTitle);
        dumpCopied("op1:", src, sn, shownBytes<Form>(sn));
    }
    void validate(uint32_t mode) const
    {
        if (!checked(kSourceRule, mode)) return;
        if constexpr (requires { Form::separate; }) {
            if constexpr (Form::separate) judgeSeparateSign(*Form::signByte(src, sn));
        }
        judgeSource(check<Form>(src, sn, kCheckStrict));
    }
    uint8_t *work(uint32_t mode) const
    {
        const uint8_t sign = sn > 0 ? copiedSign<Form>(src, sn) : uint8_t{0};
        if constexpr (isPacked<Form>) {
            zvkBcdMovePacked(src, sn, dst, dn);
        } else {
            if (dn < 1 || sn < 1) return dst;
            zvkBcdMoveZoned(Form::digits(src), sn, Form::digits(dst), dn);
        }
        AfterCopy<Form>::finish(sign, dst, dn, mode & ZVK_BCD_KEEP_NEG_ZERO);
        return dst;
    }
    void dumpResult(const uint8_t *) const { dumpCopied("res:", dst, dn, shownBytes<Form>(dn)); }
};

} // namespace
} // namespace bcd

#define COPY(name, form)                                                                                               \
    uint8_t *_zvkcBCD_Cpy_##name(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits)               \
    {                                                                                                                  \
        return bcd::runEntry<bcd::Copy<bcd::forms::form>>(src, dst, dstDigits, srcDigits);                             \
    }

COPY(Pckd, Pckd)
COPY(Znd, ZndTO)
COPY(ZndLO, ZndLO)
COPY(ZndUS, ZndUS)
COPY(ZndLS, ZndLS)
COPY(ZndTS, ZndTS)
