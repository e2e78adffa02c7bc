// INSPECT: from the compiler's block to scans.
//
// The phrases fall into groups, each scanned in a pass of its own: TALLYING phrases before
// REPLACING phrases end a group, so that the counts are those of the item before replacement.
//
//     TALLYING N FOR ALL "A"  REPLACING ALL "A" BY "B"  ALL "B" BY "C"
//     ------- group ------    ---------------- group ----------------
//
// A sign is no character of what is inspected or compared. One that is a character of its own is
// left out; one that sits in a digit is taken out of a copy, and put back if the item has changed.
#include <algorithm>
#include <cassert>
#include <cstring>

#include "chardata/work_area.h"
#include "decimal/numeric_view.h"
#include "frame/message_calls.h"
#include "verbs/inspect_phrase.h"

namespace {

constexpr size_t kPhrasesOnStack = 8;

bool has(uint32_t flags, uint32_t all) { return (flags & all) == all; }

SignPlace signOf(uint32_t flags)
{
    return signPlace((flags & ZVK_INSPECT_SIGN_SEPARATE) != 0, (flags & ZVK_INSPECT_SIGN_LEADING) != 0);
}

// The address of an item's sign byte where the sign sits in a digit; null for all other items.
const uint8_t *signInDigit(uint32_t flags, const void *data, size_t length)
{
    if (!has(flags, ZVK_INSPECT_DISPLAY_SIGNED) || flags & ZVK_INSPECT_SIGN_SEPARATE) return nullptr;
    return viewNumber<SingleByte>(static_cast<const uint8_t *>(data), length, signOf(flags)).sign;
}

// The operand without its sign. A national item without separate sign stays as it is, sign and all:
// so does the item itself, for which there is nothing to put back then.
InspectText normalised(uint32_t flags, const void *operand, size_t length, uint8_t (&copy)[kSignedCopy])
{
    auto *data = static_cast<const uint8_t *>(operand);
    if (const uint8_t *sign = signInDigit(flags, data, length)) {
        assert(length <= kSignedCopy);
        memcpy(copy, data, length);
        copy[sign - data] = static_cast<uint8_t>((*sign & 0x0F) | '0');
        return {copy, length};
    }
    if (!(flags & ZVK_INSPECT_SIGN_SEPARATE)) return {data, length};
    if (has(flags, ZVK_INSPECT_DISPLAY_SIGNED)) {
        auto number = viewNumber<SingleByte>(data, length, signOf(flags));
        return {number.digits, number.length};
    }
    if (has(flags, ZVK_INSPECT_NATIONAL_SIGNED)) {
        auto number = viewNumber<Utf16>(data, length, signOf(flags));
        return {number.digits, number.length};
    }
    return {data, length};
}

InspectText normalised(const InspectOperand &operand, uint8_t (&copy)[kSignedCopy])
{
    return normalised(operand.flags, operand.data, operand.length, copy);
}

void makeEquallyLong(PreparedPhrase &phrase)
{
    if (phrase.figurative || phrase.result.length == phrase.compared.length) return;
    if (phrase.is(ZVK_INSPECT_CHARACTERS))
        msg::inspectCharactersLength("");
    else
        msg::inspectOperandsLength(phrase.is(ZVK_INSPECT_CONVERTING) ? "CONVERTING" : "REPLACING");
    phrase.result.length = phrase.compared.length = std::min(phrase.result.length, phrase.compared.length);
}

// The offset of an operand of BEFORE or AFTER in the item, -1 where it does not occur; its length
// goes to `length`.
template <class Unit>
int64_t placeOf(const InspectOperand &operand, const InspectedItem &item, size_t &length)
{
    uint8_t copy[kSignedCopy];
    InspectText text = normalised(operand, copy);
    length = text.length;
    const uint8_t *place = findText<Unit>(item.data, item.data + item.length, text.data, text.length);
    return place ? place - item.data : -1;
}

// AFTER without its operand in the item closes the phrase; BEFORE without it is the whole rest.
// Both look from the item's start.
template <class Unit>
void setRegion(PreparedPhrase &phrase, const InspectPhrase &given, const InspectedItem &item)
{
    phrase.first = 0;
    phrase.end = item.length;
    size_t length;
    if (phrase.is(ZVK_INSPECT_AFTER)) {
        int64_t place = placeOf<Unit>(given.after, item, length);
        if (place < 0) return phrase.close();
        phrase.first = place + static_cast<int64_t>(length);
    }
    if (phrase.is(ZVK_INSPECT_BEFORE)) {
        int64_t place = placeOf<Unit>(given.before, item, length);
        if (place >= 0) phrase.end = place;
    }
}

template <class Unit>
void prepare(PreparedPhrase &phrase, const InspectPhrase &given, const InspectedItem &item)
{
    phrase.kind = given.result.flags;
    phrase.figurative = phrase.is(ZVK_INSPECT_FIGURATIVE);
    phrase.counter = given.result.data;
    phrase.compared = phrase.is(ZVK_INSPECT_CHARACTERS) ? InspectText{nullptr, Unit::size}
                                                        : normalised(given.compared, phrase.comparedCopy);
    phrase.result = {};
    if (phrase.is(ZVK_INSPECT_REPLACING | ZVK_INSPECT_CONVERTING)) {
        phrase.result = normalised(given.result, phrase.resultCopy);
        makeEquallyLong(phrase);
    }
    setRegion<Unit>(phrase, given, item);
}

// Phrases from `start` on that are scanned for together.
int32_t groupLength(const InspectPhrase *phrases, int32_t start, int32_t count)
{
    int32_t end = start + 1;
    while (end < count &&
           !(phrases[end - 1].result.flags & ZVK_INSPECT_TALLYING && phrases[end].result.flags & ZVK_INSPECT_REPLACING))
        end++;
    return end - start;
}

template <class Unit>
void inspect(const InspectBlock &block, InspectedItem &item)
{
    size_t count = block.phraseCount > 0 ? static_cast<size_t>(block.phraseCount) : 0;
    WorkArea<kPhrasesOnStack * sizeof(PreparedPhrase)> area(count * sizeof(PreparedPhrase));
    auto *prepared = reinterpret_cast<PreparedPhrase *>(area.data());
    if (!prepared) return;
    for (int32_t start = 0, length; start < block.phraseCount; start += length) {
        length = groupLength(block.phrases, start, block.phraseCount);
        for (int32_t i = 0; i < length; i++) prepare<Unit>(prepared[i], block.phrases[start + i], item);
        zvkScanGroup<Unit>(item, prepared, static_cast<size_t>(length));
    }
}

} // namespace

extern "C" void _zvkcInspect(InspectBlock *block)
{
    uint32_t flags = static_cast<uint32_t>(block->flags);
    auto *own = static_cast<uint8_t *>(block->data);
    uint8_t copy[kSignedCopy];
    InspectText text = normalised(flags, own, block->length, copy);
    bool copied = text.data == copy;
    InspectedItem item = {copied ? copy : own + (text.data - own), static_cast<int64_t>(text.length), false};

    if (flags & (ZVK_INSPECT_NATIONAL | ZVK_INSPECT_DBCS))
        inspect<DoubleByte>(*block, item);
    else
        inspect<SingleByte>(*block, item);

    if (!copied || !item.changed) return;
    const uint8_t *sign = signInDigit(flags, own, block->length);
    uint8_t &digit = copy[sign - own];
    digit = static_cast<uint8_t>((*sign & 0xF0) | (digit & 0x0F));
    memcpy(own, copy, text.length);
}
