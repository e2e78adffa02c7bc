// The conversion matrix: packed to the five zoned forms and back, and the 25 cells between zoned
// forms.
//
// One plan for all cells: validate, move the digits, write the sign in the destination's form. What
// differs is on purpose and compiled programs know it so: out of packed the test for a negative
// zero looks at the source, between zoned forms and into packed at the destination; letters for
// signs (the EBCDIC convention) take the source's own letter where it has one; the unsigned form
// into packed skips signs and blanks around its digits.
#include <cstdio>
#include <string>
#include <type_traits>

#include "decimal/conversion_workers.h"
#include "decimal/dump.h"
#include "decimal/entry.h"
#include "decimal/one_digit.h"
#include "decimal/packed.h"
#include "decimal/short_number.h"
#include "decimal/validation.h"
#include "decimal/zoned.h"
#include "decimal/zoned_bytes.h"
#include "kvr2/decimal_conversions.h"

namespace bcd {
namespace {

template <class A, class B>
constexpr bool same = std::is_same_v<A, B>;

template <class Form>
constexpr bool isSeparate()
{
    if constexpr (isPacked<Form>)
        return false;
    else
        return Form::separate;
}

// The two overpunched forms, whose sign byte can be a letter.
template <class Form>
constexpr bool isOverpunched = same<Form, forms::ZndTO> || same<Form, forms::ZndLO>;

// ---- Titles of the dump. Two of them are slips that stay.

template <class From, class To>
const char *title()
{
    if constexpr (same<From, forms::Pckd> && same<To, forms::ZndTO>) return "packed to zonedto ...";
    if constexpr (same<From, forms::ZndTS> && same<To, forms::Pckd>) return "zonedto to packed...";
    if constexpr (same<From, forms::ZndLO> && same<To, forms::ZndLS>) return "zonedlo to zonedlo...";
    static const std::string text = std::string(From::name) + " to " + To::name + "...";
    return text.c_str();
}

// ---- Packed to zoned.

template <class To>
void finishFromPacked(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, uint32_t mode)
{
    uint8_t *digits = To::digits(dst);
    bool negative = (digits[dn - 1] & 0xF0) == kZoneMinus;
    // The test is on the source: a negative value that is cut to zero keeps its sign.
    bool forcedPlus = negative && !(mode & ZVK_BCD_KEEP_NEG_ZERO) && zvkBcdIsZeroPacked(src, sn);
    bool minus = negative && !forcedPlus;
    if constexpr (same<To, forms::ZndTO>) {
        digits[dn - 1] =
            mode & ZVK_BCD_EBCDIC ? letterDigit(digits[dn - 1] & 0x0F, minus) : zonedDigit(digits[dn - 1], minus);
    } else if constexpr (same<To, forms::ZndLO>) {
        if (dn > 1) cleanLast(digits, dn);
        digits[0] = mode & ZVK_BCD_EBCDIC ? letterDigit(digits[0] & 0x0F, minus) : zonedDigit(digits[0], minus);
    } else {
        cleanLast(digits, dn);
        To::writeSign(dst, dn, minus);
    }
}

// ---- Zoned to packed.

// The digits of an unsigned item without the signs and blanks that this conversion lets pass around
// them.
struct Trimmed {
    const uint8_t *digits;
    int32_t count;
};

Trimmed trimUnsigned(const uint8_t *item, int32_t n)
{
    if (n > 0 && (*item == '+' || *item == '-' || *item == ' ')) {
        item++;
        n--;
    }
    if (n > 0 && (item[n - 1] == '+' || item[n - 1] == '-')) n--;
    return {item, n};
}

template <class From>
Trimmed digitsOf(const uint8_t *item, int32_t n, bool intoPacked)
{
    if constexpr (same<From, forms::ZndUS>) {
        if (intoPacked) return trimUnsigned(item, n);
    }
    return {From::digits(item), n};
}

template <class From>
void finishIntoPacked(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, uint32_t mode)
{
    bool negative = sn > 0 && From::negative(src, sn);
    bool forcedPlus = negative && !(mode & ZVK_BCD_KEEP_NEG_ZERO) && zvkBcdIsZeroPacked(dst, dn);
    if constexpr (same<From, forms::ZndTO>) {
        if (forcedPlus) setPackedSign(dst, dn, false); // otherwise the worker's sign stands
    } else {
        setPackedSign(dst, dn, negative && !forcedPlus);
    }
}

// ---- Zoned to zoned.

// The letter that carries the sign under the EBCDIC convention.
template <class From, class To>
void writeLetter(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn)
{
    uint8_t &sign = *To::signByte(dst, dn);
    if constexpr (From::separate) {
        // By the source's sign byte: a negative zero that was made positive takes "}" all the same.
        sign = letterDigit(overpunchDigit(sign), From::negative(src, sn));
    } else if constexpr (isOverpunched<From>) {
        uint8_t original = *From::signByte(src, sn);
        // A letter goes over as it is, digit and all.
        sign = isSignLetter(original) ? original : letterDigit(overpunchDigit(sign), overpunchIsNegative(sign));
    }
}

// What a conversion from or to the unsigned form cleans.
template <class From, class To>
void cleanUnsigned(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, uint32_t mode)
{
    uint8_t *digits = To::digits(dst);
    if (same<From, To> && (mode & ZVK_BCD_RAW_UNSIGNED)) {
        digits[dn - 1] = src[sn - 1];
    } else if (mode & ZVK_BCD_CLEAN_UNSIGNED) {
        zvkBcdCleanZoned(dst,
                         dn); // from the item's first byte: with a leading sign it stops one digit short, and stays so
    } else {
        digits[dn - 1] = zonedDigit(overpunchDigit(digits[dn - 1]));
        if (same<To, forms::ZndLO>) digits[0] = zonedDigit(overpunchDigit(digits[0]));
    }
}

template <class From, class To>
void convertZoned(const uint8_t *src, int32_t sn, uint8_t *dst, int32_t dn, uint32_t mode)
{
    const bool negative = From::negative(src, sn);
    uint8_t *digits = To::digits(dst);
    zvkBcdMoveZoned(From::digits(src), sn, digits, dn);
    if constexpr (same<From, forms::ZndLO>) {
        if (sn <= dn) digits[dn - sn] = zonedDigit(overpunchDigit(src[0]));
    }
    if constexpr (same<From, forms::ZndUS> || same<To, forms::ZndUS>) cleanUnsigned<From, To>(src, sn, dst, dn, mode);
    if constexpr (same<To, forms::ZndUS>) return;

    if constexpr (!same<To, forms::ZndTO>) cleanLast(digits, dn);
    if constexpr (isOverpunched<To>) {
        uint8_t &sign = *To::signByte(dst, dn);
        sign = zonedDigit(overpunchDigit(sign), negative);
    } else {
        To::writeSign(dst, dn, negative);
    }
    if (negative && !(mode & ZVK_BCD_KEEP_NEG_ZERO) && zvkBcdIsZeroZoned(digits, dn)) {
        if constexpr (isOverpunched<To>)
            *To::signByte(dst, dn) = zonedDigit(*To::signByte(dst, dn));
        else
            To::writeSign(dst, dn, false);
    }
    if constexpr (isOverpunched<To>) {
        if (mode & ZVK_BCD_EBCDIC) writeLetter<From, To>(src, sn, dst, dn);
    }
}

// ---- The cell.

void dumpRejected(const uint8_t *item, int32_t n)
{
    fprintf(stderr, "Invalid zoned data %d 0x", n);
    for (int32_t i = 0; i < n; i++) fprintf(stderr, "%2.2x", item[i]);
    fputc('\n', stderr);
}

template <class From, class To>
struct Cell {
    const uint8_t *src;
    uint8_t *dst;
    int32_t dn, sn;

    // Clean items that fit the word, with their own sign. What becomes of a packed negative zero,
    // and of letters, is written below.
    template <class Word>
    [[gnu::always_inline]] bool shortFromPacked(uint32_t mode) const
    {
        using Short = shortforms::Pckd;
        if ((mode & ZVK_BCD_EBCDIC) || static_cast<uint32_t>(sn) > kWordDigits<Word> || !isShort(dn)) return false;
        Short::Raw<Word> raw(src, sn);
        bool negative = raw.negative();
        if (!raw.hasSign() || !areDigits(raw.digits) || (negative && !anyBit(raw.digits))) return false;
        if constexpr (same<To, forms::ZndTO> && sizeof(Word) == 8) {
            if (fitBytes<uint64_t>(dn)) {
                storeBytes(dst, dn, spread(static_cast<uint32_t>(raw.digits)), uint64_t{negative} << 6);
                return true;
            }
        }
        shortforms::Znd::writeDigits(To::digits(dst), dn, raw.digits);
        To::writeSign(dst, dn, negative);
        return true;
    }

    // The digits of a clean zoned item. Of the overpunched forms only the trailing one carries its
    // sign here; a leading one that is no digit is not clean.
    template <class Word>
    [[gnu::always_inline]] bool gatherSource(Word &word, bool &negative) const
    {
        constexpr bool overpunched = same<From, forms::ZndTO>;
        const uint8_t *digits = From::digits(src);
        if constexpr (isSeparate<From>()) {
            const uint8_t sign = *From::signByte(src, sn);
            if (sign != '+' && sign != '-') return false;
            negative = sign == '-';
        }
        if (sizeof(Word) == 8 && fitBytes<uint64_t>(sn)) {
            uint64_t excess = 0;
            uint64_t bytes = loadBytes<uint64_t>(digits, sn);
            if constexpr (overpunched) {
                const auto number = signedBytes(bytes, excess);
                bytes = number.digits;
                negative = number.sign != 0;
            }
            word = gather(bytes);
            return !anyExcess(overpunched ? excess : excessOf(bytes));
        }
        Gatherer gatherer;
        if constexpr (overpunched) {
            const uint8_t last = digits[sn - 1];
            word = gatherBeforeLast<Word>(gatherer, digits, sn) | (last & 0x0F);
            if ((last & 0xB0) != 0x30 || (last & 0x0F) > 9) return false;
            negative = last & 0x40;
        } else {
            word = gatherAll<Word>(gatherer, digits, sn);
        }
        return gatherer.clean();
    }

    template <class Word>
    [[gnu::always_inline]] bool shortIntoPacked(uint32_t mode) const
    {
        if ((mode & ZVK_BCD_EBCDIC) || !shortforms::Znd::fits(sn, Word{}) || !shortforms::Znd::fits(dn, Word{}))
            return false;
        Word word;
        bool negative = false;
        if (!gatherSource(word, negative)) return false;
        word = lowDigits(word, dn);
        const unsigned minus = resultSign(negative, mode & ZVK_BCD_KEEP_NEG_ZERO, anyBit(word));
        shortforms::Pckd::writeCut(dst, dn, word, minus);
        return true;
    }

    // Of one digit; into packed, where the mode keeps no negative zero. Out of packed a zero has no
    // sign in any mode.
    [[gnu::always_inline]] bool oneDigit(uint32_t mode) const
    {
        if (isPacked<To> && (mode & ZVK_BCD_KEEP_NEG_ZERO)) return false;
        return digitConverted<From, To>(src, dst);
    }
    // Of two or three, into as many.
    [[gnu::always_inline]] bool fewFromPacked() const
    {
        const uint32_t whole = loadBig<uint16_t>(src);
        const uint32_t digits = whole >> 4;
        const bool negative = isNegativeNibble(static_cast<uint8_t>(whole));
        if ((whole & 0x0F) < 10 || ((digits ^ (digits + 0x666)) & 0x1110)) return false;
        if (negative && digits == 0) return false;
        const uint32_t bytes = (digits & 0xF00) << 8 | (digits & 0x0F0) << 4 | (digits & 0x00F);
        storeBytes(dst, dn, bytes, signOf(negative));
        return true;
    }
    [[gnu::always_inline]] bool fewIntoPacked(uint32_t mode) const
    {
        uint32_t excess = 0;
        const auto number = signedBytes(loadBytes<uint32_t>(src, sn), excess);
        if (anyExcess(excess)) return false;
        const uint32_t pairs = (number.digits | number.digits >> 4) & 0x00FF00FF;
        const uint32_t digits = (pairs | pairs >> 8) & (dn == 2 ? 0x0FF : 0xFFF);
        const uint32_t sign = kPlus + resultSign(number.sign / kByteMinus, mode & ZVK_BCD_KEEP_NEG_ZERO, digits != 0);
        storeBig<uint16_t>(dst, static_cast<uint16_t>(digits << 4 | sign));
        return true;
    }
    // Such items are so short that every step counts.
    [[gnu::always_inline]] bool fewDigits(uint32_t mode) const
    {
        if (static_cast<uint32_t>(sn | dn) > 3 || (mode & ZVK_BCD_EBCDIC)) return false;
        if (__builtin_expect(sn == 1, 1) && __builtin_expect(dn == 1, 1)) return oneDigit(mode);
        if (!(sn & dn & 2)) return false;
        return isPacked<From> ? fewFromPacked() : fewIntoPacked(mode);
    }

    template <class Word>
    [[gnu::always_inline]] bool shortCell(uint32_t mode, uint8_t *&result) const
    {
        result = dst;
        if constexpr (isPacked<From>)
            return shortFromPacked<Word>(mode);
        else
            return shortIntoPacked<Word>(mode);
    }
    bool quick(uint32_t mode, uint8_t *&result) const requires(isPacked<From> || isPacked<To>)
    {
        result = dst;
        if constexpr (same<From, forms::ZndTO> || same<To, forms::ZndTO>) {
            if (fewDigits(mode)) return true;
        }
        return shortCell<uint64_t>(mode, result);
    }
    bool quickLong(uint8_t *&result) const requires(isPacked<From> || isPacked<To>)
    {
        return shortCell<u128>(rawMode(), result); // it has been read: quick has seen it
    }

    void dumpOperands() const
    {
        dumpTitle(title<From, To>());
        dumpCopied("in: ", src, sn, From::bytes(sn));
    }
    void validate(uint32_t mode) const
    {
        // A separate sign is looked at in every mode, but for a destination without one.
        if constexpr (isSeparate<From>() && !same<To, forms::ZndUS>) {
            if (sn > 0) judgeSeparateSign(*From::signByte(src, sn));
        }
        if (!checked(isPacked<From> ? kArithmeticRule : kSourceRule, mode)) return;
        if constexpr (isPacked<From>) {
            judgeSource(check<From>(src, sn, kCheckArithmetic));
        } else {
            Trimmed item = digitsOf<From>(src, sn, isPacked<To>);
            int answer = item.count > 0 ? zvkBcdCheckZoned(item.digits, item.count, kCheckArithmetic) : 0;
            if (answer && same<From, forms::ZndUS> && isPacked<To>) dumpRejected(src, sn);
            judgeSource(answer);
        }
    }
    uint8_t *work(uint32_t mode) const
    {
        if constexpr (isPacked<From>) {
            if (dn < 1) return dst;
            zvkBcdPackedToZoned(src, sn, To::digits(dst), dn);
            finishFromPacked<To>(src, sn, dst, dn, mode);
        } else if constexpr (isPacked<To>) {
            Trimmed item = digitsOf<From>(src, sn, true);
            zvkBcdZonedToPacked(item.digits, item.count, dst, dn);
            finishIntoPacked<From>(src, sn, dst, dn, mode);
        } else {
            if (dn < 1 || sn < 1) return dst;
            convertZoned<From, To>(src, sn, dst, dn, mode);
        }
        return dst;
    }
    void dumpResult(const uint8_t *) const { dumpCopied("out:", dst, dn, To::bytes(dn)); }
};

} // namespace
} // namespace bcd

#define CELL(Name, From, To)                                                                                           \
    ZVK_SHORT_ENTRY uint8_t *Name(const uint8_t *src, uint8_t *dst, int32_t dstDigits, int32_t srcDigits)              \
    {                                                                                                                  \
        return bcd::runEntry<bcd::Cell<bcd::forms::From, bcd::forms::To>>(src, dst, dstDigits, srcDigits);             \
    }

CELL(_zvkcBCD_CONV_Pckd_To_ZndTO, Pckd, ZndTO)
CELL(_zvkcBCD_CONV_Pckd_To_ZndTS, Pckd, ZndTS)
CELL(_zvkcBCD_CONV_Pckd_To_ZndLO, Pckd, ZndLO)
CELL(_zvkcBCD_CONV_Pckd_To_ZndLS, Pckd, ZndLS)
CELL(_zvkcBCD_CONV_Pckd_To_ZndUS, Pckd, ZndUS)
CELL(_zvkcBCD_CONV_ZndTO_To_ZndTO, ZndTO, ZndTO)
CELL(_zvkcBCD_CONV_ZndTO_To_ZndTS, ZndTO, ZndTS)
CELL(_zvkcBCD_CONV_ZndTO_To_ZndLO, ZndTO, ZndLO)
CELL(_zvkcBCD_CONV_ZndTO_To_ZndLS, ZndTO, ZndLS)
CELL(_zvkcBCD_CONV_ZndTO_To_ZndUS, ZndTO, ZndUS)
CELL(_zvkcBCD_CONV_ZndTS_To_ZndTO, ZndTS, ZndTO)
CELL(_zvkcBCD_CONV_ZndTS_To_ZndTS, ZndTS, ZndTS)
CELL(_zvkcBCD_CONV_ZndTS_To_ZndLO, ZndTS, ZndLO)
CELL(_zvkcBCD_CONV_ZndTS_To_ZndLS, ZndTS, ZndLS)
CELL(_zvkcBCD_CONV_ZndTS_To_ZndUS, ZndTS, ZndUS)
CELL(_zvkcBCD_CONV_ZndLO_To_ZndTO, ZndLO, ZndTO)
CELL(_zvkcBCD_CONV_ZndLO_To_ZndTS, ZndLO, ZndTS)
CELL(_zvkcBCD_CONV_ZndLO_To_ZndLO, ZndLO, ZndLO)
CELL(_zvkcBCD_CONV_ZndLO_To_ZndLS, ZndLO, ZndLS)
CELL(_zvkcBCD_CONV_ZndLO_To_ZndUS, ZndLO, ZndUS)
CELL(_zvkcBCD_CONV_ZndLS_To_ZndTO, ZndLS, ZndTO)
CELL(_zvkcBCD_CONV_ZndLS_To_ZndTS, ZndLS, ZndTS)
CELL(_zvkcBCD_CONV_ZndLS_To_ZndLO, ZndLS, ZndLO)
CELL(_zvkcBCD_CONV_ZndLS_To_ZndLS, ZndLS, ZndLS)
CELL(_zvkcBCD_CONV_ZndLS_To_ZndUS, ZndLS, ZndUS)
CELL(_zvkcBCD_CONV_ZndUS_To_ZndTO, ZndUS, ZndTO)
CELL(_zvkcBCD_CONV_ZndUS_To_ZndTS, ZndUS, ZndTS)
CELL(_zvkcBCD_CONV_ZndUS_To_ZndLO, ZndUS, ZndLO)
CELL(_zvkcBCD_CONV_ZndUS_To_ZndLS, ZndUS, ZndLS)
CELL(_zvkcBCD_CONV_ZndUS_To_ZndUS, ZndUS, ZndUS)
CELL(_zvkcBCD_CONV_ZndTO_To_Pckd, ZndTO, Pckd)
CELL(_zvkcBCD_CONV_ZndTS_To_Pckd, ZndTS, Pckd)
CELL(_zvkcBCD_CONV_ZndLO_To_Pckd, ZndLO, Pckd)
CELL(_zvkcBCD_CONV_ZndLS_To_Pckd, ZndLS, Pckd)
CELL(_zvkcBCD_CONV_ZndUS_To_Pckd, ZndUS, Pckd)
