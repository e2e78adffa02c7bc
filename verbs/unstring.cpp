// UNSTRING.
//
// The source is cut at delimiters, or without any by the sizes of the receiving items, and each
// piece goes to the next receiver. The search for a delimiter looks at first bytes only: one byte
// is sought with memchr, several through a table of 256 marks; where one matches the delimiters
// are tried in statement order. Under an alphabet the marks are of weights.
#include <algorithm>
#include <cstring>

#include "base/text_units.h"
#include "chardata/code_page_choice.h"
#include "chardata/collating.h"
#include "decimal/numeric_view.h"
#include "kvr2/string_unstring.h"

namespace {

const uint8_t *bytes(const void *data) { return static_cast<const uint8_t *>(data); }

struct Piece {
    const uint8_t *start, *end;
    size_t length() const { return static_cast<size_t>(end - start); }
};

// A delimiter in the source; with ALL its last occurrence in a row. None found: both are the end of
// the source.
struct Found {
    const uint8_t *first; // where the field ends
    Piece text;
};

template <class Unit>
class Delimiters {
public:
    Delimiters(const UnstringBlock &block, const uint8_t *weights)
        : list_(block.delimiters), count_(block.delimiterCount), weights_(weights),
          lone_(count_ == 1 && !weights && list_->length > 0 ? list_ : nullptr)
    {
        if (lone_ || none()) return;
        memset(marks_, 0, sizeof marks_);
        for (uint32_t i = 0; i < count_; i++)
            if (list_[i].length > 0) marks_[weight(*bytes(list_[i].data))] = true;
    }

    bool none() const { return count_ == 0; }

    Found find(const uint8_t *from, const uint8_t *end) const
    {
        if (lone_) {
            const uint8_t *place = findText<Unit>(from, end, bytes(lone_->data), lone_->length);
            return place ? passOver(place, end, *lone_) : Found{end, {end, end}};
        }
        for (; from<end; from = static_cast<size_t>(end - from)> Unit::size ? from + Unit::size : end) {
            if (!marks_[weight(*from)]) continue;
            if (const UnstringDelimiter *delimiter = at(from, end)) return passOver(from, end, *delimiter);
        }
        return {end, {end, end}};
    }

private:
    uint8_t weight(uint8_t byte) const { return weights_ ? weights_[byte] : byte; }

    bool stands(const UnstringDelimiter &delimiter, const uint8_t *place, const uint8_t *end) const
    {
        return delimiter.length > 0 && delimiter.length <= static_cast<size_t>(end - place) &&
               zvkSameText(place, bytes(delimiter.data), delimiter.length, weights_);
    }

    const UnstringDelimiter *at(const uint8_t *place, const uint8_t *end) const
    {
        for (const UnstringDelimiter *each = list_; each < list_ + count_; each++)
            if (stands(*each, place, end)) return each;
        return nullptr;
    }

    Found passOver(const uint8_t *place, const uint8_t *end, const UnstringDelimiter &delimiter) const
    {
        Found found = {place, {place, place + delimiter.length}};
        if (delimiter.flags & ZVK_UNSTRING_ALL)
            while (stands(delimiter, found.text.end, end))
                found.text = {found.text.end, found.text.end + delimiter.length};
        return found;
    }

    const UnstringDelimiter *list_;
    uint32_t count_;
    const uint8_t *weights_;
    const UnstringDelimiter *lone_; // the only delimiter, where it is sought by itself
    bool marks_[256];               // weights of first bytes, without a lone delimiter
};

// Blanks of the statement's characters. A last odd byte of two-byte data becomes a single blank.
struct Padding {
    bool pairs;
    uint8_t pair[2];

    void fill(uint8_t *at, size_t length) const
    {
        if (pairs)
            fillPairs(at, length, pair, ' ');
        else
            memset(at, ' ', length);
    }
};

Padding paddingOf(uint8_t flags)
{
    if (flags & ZVK_UNSTRING_DBCS) {
        const uint8_t(&blank)[2] = zvkCurrentCodePageRow().dbcsBlank;
        return {true, {blank[0], blank[1]}};
    }
    if (!(flags & ZVK_UNSTRING_NATIONAL)) return {false, {}};
    zvkCurrentCodePageRow(); // chosen by now, though nothing of it is used
    return {true, {' ', 0}};
}

// An alphanumeric MOVE; the text may lie in the receiver.
void storeText(uint8_t *receiver, size_t size, Piece text, bool right, const Padding &padding)
{
    size_t kept = std::min(size, text.length()), rest = size - kept;
    if (kept > 0) memmove(right ? receiver + rest : receiver, right ? text.end - kept : text.start, kept);
    if (rest > 0) padding.fill(right ? receiver : receiver + kept, rest);
}

template <class Unit>
void fillZeros(uint8_t *at, size_t length)
{
    if constexpr (Unit::size == 1)
        memset(at, '0', length);
    else
        fillPairs(at, length, {'0', 0}, '0');
}

// The last digits go to the integer places as they are; a separate sign is always "+".
template <class Unit>
void storeNumber(const UnstringTarget &target, Piece text)
{
    bool separate = target.kind & ZVK_UNSTRING_SIGN_SEPARATE, leading = target.kind & ZVK_UNSTRING_SIGN_LEADING;
    auto number = viewNumber<Unit>(static_cast<uint8_t *>(target.address), target.size,
                                   separate ? signPlace(true, leading) : SignPlace::None);
    size_t integers = std::min<size_t>(target.integerSize, number.length), kept = std::min(integers, text.length());
    if (kept > 0) memmove(number.digits + integers - kept, text.end - kept, kept);
    fillZeros<Unit>(number.digits, integers - kept);
    fillZeros<Unit>(number.digits + integers, number.length - integers);
    if (number.sign) Unit::store(number.sign, '+');
}

void storeField(const UnstringTarget &target, Piece text, const Padding &padding)
{
    if (target.kind & ZVK_UNSTRING_NUMERIC)
        storeNumber<SingleByte>(target, text);
    else if (target.kind & ZVK_UNSTRING_NUMERIC_NATIONAL)
        storeNumber<Utf16>(target, text);
    else
        storeText(static_cast<uint8_t *>(target.address), target.size, text, target.kind & ZVK_UNSTRING_JUST_RIGHT,
                  padding);
}

// The bytes of the source that a receiver takes where nothing delimits its field.
size_t sizeOfField(const UnstringTarget &target)
{
    return target.kind & (ZVK_UNSTRING_NUMERIC | ZVK_UNSTRING_NUMERIC_NATIONAL) ? target.integerSize : target.size;
}

// Serves the targets; returns how many, and in `source.start` how far the source has been used.
template <class Unit>
uint32_t distribute(const UnstringBlock &block, UnstringTarget *targets, Piece &source, const uint8_t *weights)
{
    const Delimiters<Unit> delimiters(block, weights);
    const Padding padding = paddingOf(block.flags);
    uint32_t served = 0;
    for (; served < block.targetCount && source.start < source.end; served++) {
        UnstringTarget &target = targets[served];
        Piece field = {source.start, source.end};
        if (delimiters.none()) {
            field.end = field.start + std::min(sizeOfField(target), field.length());
            source.start = field.end;
        } else {
            Found found = delimiters.find(source.start, source.end);
            field.end = found.first;
            source.start = found.text.end;
            if (target.delimiterIn)
                storeText(static_cast<uint8_t *>(target.delimiterIn), target.delimiterInSize, found.text,
                          target.delimiterInKind & ZVK_UNSTRING_JUST_RIGHT, padding);
        }
        storeField(target, field, padding);
        target.count = field.length() / Unit::size;
    }
    return served;
}

} // namespace

extern "C" void _zvkcUnString(UnstringBlock *block, UnstringTarget *targets, const AlphabetRecord *alphabet,
                              uint32_t *overflow)
{
    bool pairs = (block->flags & (ZVK_UNSTRING_NATIONAL | ZVK_UNSTRING_DBCS)) != 0,
         dbcs = block->flags & ZVK_UNSTRING_DBCS;
    const uint8_t *weights = block->flags & ZVK_UNSTRING_COLLATED && !dbcs ? zvkWeights(alphabet) : nullptr;

    // A POINTER outside the source leaves nothing to do.
    uint64_t size = pairs ? 2 : 1, skipped = block->flags & ZVK_UNSTRING_POINTER ? block->pointer - 1 : 0;
    if (skipped >= (block->sourceLength + size - 1) / size) return;
    Piece source = {bytes(block->source) + skipped * size, bytes(block->source) + block->sourceLength};
    const uint8_t *start = source.start;

    uint32_t served = pairs ? distribute<DoubleByte>(*block, targets, source, weights)
                            : distribute<SingleByte>(*block, targets, source, weights);

    if (source.start < source.end && overflow && *overflow) ++*overflow;
    uint64_t used = static_cast<uint64_t>(source.start - start);
    if (block->flags & ZVK_UNSTRING_POINTER) block->pointer += pairs ? (used + 2) / 2 - 1 : used;
    if (block->flags & ZVK_UNSTRING_TALLYING) block->tally += served;
}
