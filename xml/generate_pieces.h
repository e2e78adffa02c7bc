// How a text is written: as it is, with entities and references, or in hexadecimal.
#pragma once

#include "xml/generator.h"

namespace xml {

template <class Unit>
bool Generator<Unit>::putPlain(const TextPair &pair, const uint8_t *at, const uint8_t *end)
{
    size_t length = static_cast<size_t>(end - at);
    if (!room(length)) return false;
    if (sizeof(Unit) == 1 && pair.same) {
        copy(at, length);
    } else {
        for (; at < end; at++) store(pair.unit[*at]);
    }
    return true;
}

// A character by itself: an entity, its units, or a reference where the document's page lacks it.
template <class Unit>
bool Generator<Unit>::putCharacter(uint32_t character)
{
    if (const char *entity = zvkEntityOf(character)) return putWord(entity);
    if (character > 0xFFFF) return putReference(character);
    if (target_ == Target::Utf16) return room(1) && (store(character), true);
    if (target_ == Target::SingleByte) {
        int byte = encoding_.document->byteOf(character);
        if (byte < 0) return putReference(character);
        return room(1) && (store(static_cast<uint32_t>(byte)), true);
    }
    if (character < 0x80) return room(1) && (store(character), true);
    if (!room(character < 0x800 ? 2 : 3)) return false;
    if (character < 0x800) {
        store(0xC0 | character >> 6);
    } else {
        store(0xE0 | character >> 12);
        store(0x80 | (character >> 6 & 0x3F));
    }
    store(0x80 | (character & 0x3F));
    return true;
}

inline constexpr char kHexDigits[] = "0123456789ABCDEF";

template <class Unit>
bool Generator<Unit>::putReference(uint32_t character)
{
    char text[32] = "&#x"; // 10 at most
    size_t length = 3;
    for (int shift = 20; shift >= 0; shift -= 4)
        if (character >> shift) text[length++] = kHexDigits[character >> shift & 15];
    text[length++] = ';';
    return put(text, length);
}

template <class Unit>
bool Generator<Unit>::putBytes(const SourceText &text)
{
    const TextPair &pair = *text.pair;
    if (text.kinds == kPlain) return putPlain(pair, text.at, text.end);
    for (const uint8_t *at = text.at; at < text.end;) {
        const uint8_t *run = at;
        while (at < text.end && pair.kind[*at] == kPlain) at++;
        if (at != run && !putPlain(pair, run, at)) return false;
        if (at == text.end) break;
        size_t length = 1;
        uint32_t character =
            pair.kind[*at] == kPart ? zvkUtf8Character(at, text.end, length) : pair.source->toUnicode[*at];
        if (!putCharacter(character)) return false;
        at += length;
    }
    return true;
}

template <class Unit>
bool Generator<Unit>::putUnits(const SourceText &text)
{
    for (const uint8_t *at = text.at; at < text.end; at += 2) {
        uint32_t character = load<uint16_t>(at);
        if (zvkIsHighSurrogate(character)) {
            at += 2;
            character = zvkPair(character, load<uint16_t>(at));
        }
        if (!putCharacter(character)) return false;
    }
    return true;
}

// Two digits a byte, four a unit.
template <class Unit>
bool Generator<Unit>::putHex(const SourceText &text)
{
    bool national = text.pair == nullptr;
    for (size_t i = 0; i < text.length(); i += national ? 2 : 1) {
        uint16_t value = national && i + 1 < text.length() ? load<uint16_t>(text.at + i) : text.at[i];
        char digits[4] = {kHexDigits[value >> 12], kHexDigits[value >> 8 & 15], kHexDigits[value >> 4 & 15],
                          kHexDigits[value & 15]};
        if (!put(national ? digits : digits + 2, national ? 4 : 2)) return false;
    }
    return true;
}

template <class Unit>
bool Generator<Unit>::putText(const SourceText &text)
{
    if (text.word) return putWord(text.word);
    if (text.hex) return putHex(text);
    if (text.minus && !put("-")) return false;
    if (!text.pair) return putUnits(text);
    if (!text.comma) return putBytes(text);
    int point = text.pair->source->tables.markup['.'];
    SourceText piece = text;
    piece.end = std::find(text.at, text.end, point);
    if (!putBytes(piece)) return false;
    if (piece.end == text.end) return true;
    piece.at = piece.end + 1;
    piece.end = text.end;
    return put(",") && putBytes(piece);
}

} // namespace xml
