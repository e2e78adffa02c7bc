// Tables for pairs of code pages; see generate_text.h.
#include "xml/generate_text.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <emmintrin.h>

#include "frame/storage.h"
#include "xml/utf8_walk.h"

namespace {

std::atomic<const TextPair *> pairs;

const TextPair *findPair(const TextPair *first, const XmlPage *source, const XmlPage *target)
{
    while (first && (first->source != source || first->target != target)) first = first->next;
    return first;
}

// The unit that a character is in the document, -1 if it is not one unit, or none of 8 bits.
int unitOf(uint32_t character, const XmlPage &target)
{
    if (zvkTargetOf(target) == Target::SingleByte) return target.byteOf(character);
    uint32_t last = zvkTargetOf(target) == Target::Utf16 ? 0xFF : 0x7F;
    return character <= last ? static_cast<int>(character) : -1;
}

void fill(TextPair &pair)
{
    pair.same = true;
    for (int b = 0; b < 256; b++) {
        uint16_t character = pair.source->toUnicode[b];
        bool ascii = zvkIsAsciiPage(pair.source->pageClass) && b < 0x80;
        if (!pair.source->singleByte() && !ascii) {
            pair.kind[b] = kPart;
            continue;
        }
        if (character == kNoCharacter || !zvkIsXmlCharacter(character)) {
            pair.kind[b] = kIllegalByte;
            continue;
        }
        int unit = unitOf(character, *pair.target);
        pair.kind[b] = unit < 0 || zvkEntityOf(character) ? kEscaped : kPlain;
        if (unit < 0) continue;
        pair.unit[b] = static_cast<uint8_t>(unit);
        if (unit != b) pair.same = false;
    }
    pair.asciiPlain = true;
    for (int b = ' '; b < 0x7F; b++)
        if (pair.kind[b] != kPlain && !strchr("<>&'\"", b)) pair.asciiPlain = false;
}

// Of 16 bytes those that may be other than plain where printable ASCII is: "&" and "'", "<" and ">"
// differ in a bit each.
unsigned candidatesAt(const uint8_t *at)
{
    __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(at));
    auto equal = [](__m128i lanes, char value) { return _mm_cmpeq_epi8(lanes, _mm_set1_epi8(value)); };
    __m128i marks = _mm_or_si128(equal(_mm_or_si128(bytes, _mm_set1_epi8(1)), '\''),
                                 equal(_mm_or_si128(bytes, _mm_set1_epi8(2)), '>'));
    // Signed, what is below a blank is control characters and all from 0x80 on.
    __m128i others = _mm_or_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(' ')), equal(bytes, 0x7F));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(marks, equal(bytes, '"')), others)));
}

} // namespace

uint8_t TextPair::kindsOf(const uint8_t *at, const uint8_t *end) const
{
    uint8_t kinds = kPlain;
    if (asciiPlain) {
        for (; end - at >= 16; at += 16)
            for (unsigned candidates = candidatesAt(at); candidates; candidates &= candidates - 1)
                kinds |= kind[at[__builtin_ctz(candidates)]];
    }
    for (; at < end; at++) kinds |= kind[*at];
    return kinds;
}

const TextPair *zvkTextPair(const XmlPage *source, const XmlPage *target)
{
    const TextPair *first = pairs.load(std::memory_order_acquire);
    if (const TextPair *known = findPair(first, source, target)) return known;
    auto *pair = static_cast<TextPair *>(zvkCalloc(1, sizeof(TextPair)));
    if (!pair) return nullptr;
    pair->source = source;
    pair->target = target;
    fill(*pair);
    // Of two threads that make the same pair the second gives up its own.
    for (;;) {
        if (const TextPair *known = findPair(first, source, target)) {
            free(pair);
            return known;
        }
        pair->next = first;
        if (pairs.compare_exchange_weak(first, pair, std::memory_order_acq_rel)) return pair;
    }
}

const char *zvkEntityOf(uint32_t character)
{
    switch (character) {
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '&':
        return "&amp;";
    case '\'':
        return "&apos;";
    case '"':
        return "&quot;";
    default:
        return nullptr;
    }
}

uint32_t zvkUtf8Character(const uint8_t *at, const uint8_t *end, size_t &length)
{
    const uint8_t *after = at + 1;
    while (after < end && after - at < 4 && (*after & 0xC0) == 0x80) after++;
    length = *at < 0x80 ? 1 : *at < 0xE0 ? 2 : *at < 0xF0 ? 3 : 4;
    if (static_cast<size_t>(after - at) < length || zvkWalkUtf8(at, at + length).invalid != at + length) {
        length = 0;
        return 0;
    }
    uint32_t character = length == 1 ? *at : *at & (0x7F >> length);
    for (size_t i = 1; i < length; i++) character = character << 6 | (at[i] & 0x3F);
    return character;
}
