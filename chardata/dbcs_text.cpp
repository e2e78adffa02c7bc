// DBCS data: comparison, the move of variable length, and the class tests.
//
// Comparison is the C library's, on copies that are padded to one length and closed with a NUL. The
// class tests look at EBCDIC double-byte codes, so native data is converted first:
//
//     native K1 K2  ->  shift-out, two EBCDIC pairs, shift-in      only what is between counts
#include <algorithm>
#include <cstring>

#include "base/signed_length.h"
#include "base/text_units.h"
#include "chardata/code_page_choice.h"
#include "chardata/work_area.h"
#include "kvr2/code_pages.h"
#include "kvr2/national.h"

namespace {

constexpr size_t kOnStack = 1024;
constexpr uint8_t kShiftOut = 0x0E, kShiftIn = 0x0F, kEbcdicBlank = 0x40;

// What a shorter operand is padded with, whatever the code page says.
constexpr uint8_t kComparedBlank[2] = {0x81, 0x40};

struct Operand {
    const uint8_t *data;
    size_t length;
};

// Two copies of `length` bytes and a NUL each, compared.
template <class Fill>
int32_t compareCopies(size_t length, Fill fill)
{
    WorkArea<kOnStack> area(2 * (length + 1));
    uint8_t *left = area.data(), *right = left + length + 1;
    if (!left) return 0;
    fill(left, right);
    left[length] = right[length] = 0;
    return strcoll(reinterpret_cast<const char *>(left), reinterpret_cast<const char *>(right));
}

void copyPadded(uint8_t *to, size_t size, Operand from)
{
    if (from.length > 0) memcpy(to, from.data, from.length);
    fillPairs(to + from.length, size - from.length, kComparedBlank, kComparedBlank[0]);
}

// Bytes of double-byte characters, zero for a valid one.
struct ValidBytes {
    uint8_t invalid[256];
    constexpr ValidBytes(int first, int last) : invalid()
    {
        for (int i = 0; i < 256; i++) invalid[i] = i < first || i > last;
    }
};
constexpr ValidBytes kAnyByte(0x41, 0xFE), kKanjiFirst(0x41, 0x7E);

int32_t arePairs(const uint8_t *text, size_t length, const ValidBytes &first)
{
    if (length % 2 != 0) return 0;
    for (const uint8_t *end = text + length; text < end; text += 2) {
        if (text[0] == kEbcdicBlank && text[1] == kEbcdicBlank) continue;
        // Shift codes are in neither range.
        if (first.invalid[text[0]] || kAnyByte.invalid[text[1]]) return 0;
    }
    return 1;
}

int32_t isDoubleByte(const uint8_t *item, int32_t signedLength, const ValidBytes &first)
{
    SignedLength given(signedLength); // negative: EBCDIC already
    if (given.size == 0) return 1;
    if (given.negative) return arePairs(item, given.size, first);
    if (given.size > INT32_MAX / 2) return 0;

    auto stored = static_cast<int32_t>(2 * given.size);
    WorkArea<kOnStack> area(2 * given.size);
    const uint8_t *text = area.data();
    if (!text || _zvkConvToEBCDIC(item, signedLength, area.data(), &stored) != 0) return 0;
    if (stored == 0 || *text != kShiftOut) return 0;
    size_t length = static_cast<size_t>(stored) - 1;
    if (length > 0 && text[length] == kShiftIn) length--;
    return arePairs(text + 1, length, first);
}

} // namespace

extern "C" {

int32_t _zvkcDBCSCmp(const uint8_t *left, int32_t leftLength, const uint8_t *right, int32_t rightLength)
{
    Operand a = {left, plainLength(leftLength)}, b = {right, plainLength(rightLength)};
    size_t length = std::max(a.length, b.length);
    return compareCopies(length, [&](uint8_t *leftCopy, uint8_t *rightCopy) {
        copyPadded(leftCopy, length, a);
        copyPadded(rightCopy, length, b);
    });
}

int32_t _zvkcDBCSCmpMultiByteFig(const uint8_t *left, int32_t length, const uint8_t *literal, int32_t literalLength)
{
    size_t size = plainLength(length), piece = plainLength(literalLength);
    if (piece == 0) return 0;
    return compareCopies(size, [&](uint8_t *leftCopy, uint8_t *rightCopy) {
        copyPadded(leftCopy, size, {left, size});
        for (size_t i = 0; i < size; i += piece) memcpy(rightCopy + i, literal, std::min(piece, size - i));
    });
}

void _zvkcDBCSMoveVarLenOverlap(uint8_t *destination, int32_t length, const uint8_t *source, int32_t sourceLength)
{
    SignedLength to(length), from(sourceLength); // negative: right-justified; EBCDIC blanks
    if (to.size <= from.size) {
        if (to.size > 0) memmove(destination, to.negative ? source + from.size - to.size : source, to.size);
        return;
    }
    constexpr uint8_t ebcdic[2] = {kEbcdicBlank, kEbcdicBlank};
    const uint8_t(&blank)[2] = from.negative ? ebcdic : zvkCurrentCodePageRow().dbcsBlank;
    size_t padding = to.size - from.size;
    // The source is moved first: the padding may cover it.
    if (from.size > 0) memmove(to.negative ? destination + padding : destination, source, from.size);
    fillPairs(to.negative ? destination : destination + from.size, padding, blank,
              from.negative ? kEbcdicBlank : uint8_t{' '});
}

int32_t _zvkcClasDBCS(const uint8_t *item, int32_t length) { return isDoubleByte(item, length, kAnyByte); }
int32_t _zvkcClasKanji(const uint8_t *item, int32_t length) { return isDoubleByte(item, length, kKanjiFirst); }
}
