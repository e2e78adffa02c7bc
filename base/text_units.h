// What a text is made of: characters of one byte, pairs of bytes, or UTF-16 units.
//
// The verbs work on three sorts of text and differ little between them: how far a step is, and how
// a character is loaded and stored. Each sort is a traits type; algorithms are written once over
// it. A length may be no whole number of characters (a program can lay an item out so): the bytes
// after the last whole character are no character.
//
//     TextCursor<Utf16> units(item, length);
//     while (!units.ended()) count += units.take() == 'A';
//
//     const uint8_t *comma = findText<SingleByte>(line, line + length, ",", 1);   // or null
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/bytes.h"

struct SingleByte {
    using Code = uint8_t;
    static constexpr size_t size = 1;
    static Code load(const uint8_t *at) { return *at; }
    static void store(uint8_t *at, Code code) { *at = code; }
};

// A character of double-byte data; its code is only good for being compared and stored again.
struct DoubleByte {
    using Code = uint16_t;
    static constexpr size_t size = 2;
    static Code load(const uint8_t *at) { return ::load<Code>(at); }
    static void store(uint8_t *at, Code code) { ::store<Code>(at, code); }
};

// A unit of national data. The machine is little-endian, as the data is, so the code is the unit.
struct Utf16 : DoubleByte {};

// The bytes that are whole characters.
template <class Unit>
constexpr size_t wholeBytes(size_t length)
{
    return length - length % Unit::size;
}

// Goes through the whole characters of a text and never beyond them. take() wants !ended().
template <class Unit>
class TextCursor {
public:
    TextCursor(const uint8_t *text, size_t length) : start_(text), at_(text), end_(text + wholeBytes<Unit>(length)) {}

    bool empty() const { return start_ == end_; }
    bool ended() const { return at_ == end_; }
    typename Unit::Code take()
    {
        typename Unit::Code code = Unit::load(at_);
        at_ += Unit::size;
        return code;
    }
    void rewind() { at_ = start_; }

private:
    const uint8_t *start_, *at_, *end_;
};

// Stores a character and returns the place after it.
template <class Unit>
uint8_t *putUnit(uint8_t *at, typename Unit::Code code)
{
    Unit::store(at, code);
    return at + Unit::size;
}

// Stores a pair of bytes over and over; a last odd byte becomes `odd`.
inline void fillPairs(uint8_t *at, size_t length, const uint8_t (&pair)[2], uint8_t odd)
{
    if (pair[0] == pair[1]) {
        memset(at, pair[0], wholeBytes<DoubleByte>(length));
    } else {
        uint16_t code = DoubleByte::load(pair);
        for (size_t i = 0; i + 2 <= length; i += 2) DoubleByte::store(at + i, code);
    }
    if (length % 2 != 0) at[length - 1] = odd;
}

// The first place from `from`, in steps of a character, where `what` lies wholly before `end`; null
// if there is none. What has no byte lies at the first place.
template <class Unit>
const uint8_t *findText(const uint8_t *from, const uint8_t *end, const uint8_t *what, size_t length)
{
    if (static_cast<size_t>(end - from) < length) return nullptr;
    if (length == 0) return from;
    if constexpr (Unit::size == 1) {
        size_t rest = static_cast<size_t>(end - from);
        return static_cast<const uint8_t *>(length == 1 ? memchr(from, *what, rest) : memmem(from, rest, what, length));
    } else {
        const uint8_t *last = end - length;
        for (; last - from >= 0; from += Unit::size) {
            if (*from == *what && memcmp(from, what, length) == 0) return from;
            if (static_cast<size_t>(last - from) < Unit::size) break;
        }
        return nullptr;
    }
}
