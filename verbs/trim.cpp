// Trimming and reversal of texts.
//
// A set of bytes is a table of 256 marks, made once; the blank alone, the usual case, needs none.
// A set of units is looked through, since sets are short.
#include "base/signed_length.h"
#include "base/text_units.h"
#include "kvr2/conditions.h"

namespace {

struct Text {
    const uint8_t *start, *end; // of whole characters
};

// The places where a text's leading run ends and its trailing run begins.
template <class Unit, class IsInSet>
const uint8_t *endOfLeading(Text text, IsInSet isInSet)
{
    while (text.start < text.end && isInSet(Unit::load(text.start))) text.start += Unit::size;
    return text.start;
}
template <class Unit, class IsInSet>
const uint8_t *startOfTrailing(Text text, IsInSet isInSet)
{
    while (text.start < text.end && isInSet(Unit::load(text.end - Unit::size))) text.end -= Unit::size;
    return text.end;
}

enum Side : unsigned { Left = 1, Right = 2 };

template <class Unit, class IsInSet>
Text trimmed(Text text, unsigned sides, IsInSet isInSet)
{
    if (sides & Left) text.start = endOfLeading<Unit>(text, isInSet);
    if (sides & Right) text.end = startOfTrailing<Unit>(text, isInSet);
    return text;
}

Text trimmedOfBytes(Text text, unsigned sides, const uint8_t *set, size_t setLength)
{
    bool marks[256] = {};
    for (size_t i = 0; i < setLength; i++) marks[set[i]] = true;
    return trimmed<SingleByte>(text, sides, [&](uint8_t byte) { return marks[byte]; });
}

template <class Unit>
Text trimmedOfSet(Text text, unsigned sides, const uint8_t *set, size_t setLength)
{
    if (!set) return trimmed<Unit>(text, sides, [](typename Unit::Code code) { return code == ' '; });
    if constexpr (Unit::size == 1) return trimmedOfBytes(text, sides, set, setLength);
    return trimmed<Unit>(text, sides, [=](typename Unit::Code code) {
        for (TextCursor<Unit> members(set, setLength); !members.ended();)
            if (members.take() == code) return true;
        return false;
    });
}

int64_t trim(unsigned sides, int32_t signedLength, const uint8_t *source, int32_t setLength, const uint8_t *set,
             uint8_t *destination, int32_t kind)
{
    size_t length = plainLength(signedLength), setSize = plainLength(setLength);
    if (length == 0) return 0;
    bool units = kind == ZVK_TRIM_UNITS;
    size_t whole = units ? wholeBytes<Utf16>(length) : length;
    Text text = {source, source + whole};
    text = units ? trimmedOfSet<Utf16>(text, sides, set, setSize) : trimmedOfSet<SingleByte>(text, sides, set, setSize);

    size_t stored = static_cast<size_t>(text.end - text.start);
    uint8_t odd = whole < length ? source[whole] : 0;
    memmove(destination, text.start, stored);
    if (whole < length) destination[stored++] = odd;
    return static_cast<int64_t>(stored);
}

} // namespace

extern "C" {

int64_t _zvk_triml(int32_t length, const uint8_t *source, int32_t setLength, const uint8_t *set, uint8_t *destination,
                   int32_t kind)
{
    return trim(Left, length, source, setLength, set, destination, kind);
}

int64_t _zvk_trimr(int32_t length, const uint8_t *source, int32_t setLength, const uint8_t *set, uint8_t *destination,
                   int32_t kind)
{
    return trim(Right, length, source, setLength, set, destination, kind);
}

int64_t _zvk_trim(int32_t length, const uint8_t *source, int32_t setLength, const uint8_t *set, uint8_t *destination,
                  int32_t kind)
{
    return trim(Left | Right, length, source, setLength, set, destination, kind);
}

void _Dmr_reverse(int32_t length, const uint8_t *source, uint8_t *destination)
{
    size_t size = plainLength(length);
    uint8_t *out = destination + size;
    size_t i = 0;
    for (; i + 8 <= size; i += 8) {
        out -= 8;
        storeBig<uint64_t>(out, load<uint64_t>(source + i));
    }
    for (; i < size; i++) *--out = source[i];
}

void _zvkcReverseUnicode(int32_t length, const uint8_t *source, uint8_t *destination)
{
    size_t size = plainLength(length), whole = wholeBytes<Utf16>(size);
    uint8_t *out = destination + whole;
    for (TextCursor<Utf16> units(source, whole); !units.ended();) Utf16::store(out -= Utf16::size, units.take());
    if (whole < size) destination[whole] = source[whole];
}
}
