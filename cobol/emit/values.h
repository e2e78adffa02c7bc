// What an operand is in C: a place, a text, a number.
//
// Their strings are C expressions, each of which may be used once; what is needed more often is
// kept in a temporary (Emitter::keep, keptSubject).
#pragma once

#include <cstdint>
#include <string>

#include "cobol/meaning/names.h"

namespace kvrcob {

// The record (level 01 or 77) that an item is in, or is.
inline const Item &recordOf(const Item &item)
{
    const Item *record = &item;
    while (record->parent) record = record->parent;
    return *record;
}

// Where a data item is.
struct Loc {
    const Item *item = nullptr;
    std::string address; // of type uint8_t *
    std::string length;  // in bytes
    int64_t fixed = -1;  // the length, if it is known now
    Category category = Category::Alphanumeric;
    bool refmod = false;
    bool good() const { return !address.empty(); }
};

// The character that a figurative constant repeats, in the native order.
uint8_t figurativeByte(uint32_t op);

// A text operand.
struct Text {
    enum Kind : uint8_t { Bytes, Figurative, All } kind = Bytes;
    std::string address, length;
    int64_t fixed = -1;
    std::string bytes; // of a literal, and of ALL literal
    bool isLiteral = false;
    uint8_t fill = ' '; // Figurative
    const Item *item = nullptr;
    bool good = true;
};

// Digits that a C integer and a packed number can have.
constexpr int kMostInt = 38, kMostPacked = 63;

// A number.
struct Num {
    enum Kind : uint8_t { Int, Packed, Float } kind = Int;
    // Int: a C integer, 64 bits wide up to 18 digits, else 128; Packed: the address of a packed
    // item; Float: a double
    std::string text;
    int digits = 1; // at most so many
    int scale = 0;
    bool isSigned = true;
    bool single = false;              // Float: a COMP-1 item as it is, good for 6 to 9 digits
    bool direct = false;              // Packed: the item itself, not a copy
    const Decimal *literal = nullptr; // the value, if it is a literal
    // Int: never more than this, above or below zero, whatever the item holds; 0: only the digits
    // are known
    unsigned __int128 most = 0;
    // Packed, a sum as the library computes it: @ stands for the digits that it is cut to. It holds
    // while `text` is `cutTo(digits)`.
    const std::string *cut = nullptr;
    std::string cutTo(int places) const;
    bool wide() const { return most ? most > INT64_MAX : digits > 18; }
    bool good() const { return !text.empty(); }
};

// C text of the address of the item's record. (operands.cpp)
std::string baseOf(const Item &item);

// (texts.cpp, operands.cpp)
Text bytesText(std::string bytes);
Text fillText(uint8_t byte); // one character, repeated as often as there is room
Text textOf(const Loc &loc);

// (numbers.cpp)
Num integerNumber(const std::string &c, int digits, bool isSigned = true);
Num floatNumber(const std::string &c);
Num literalNumber(const Decimal &value);
std::string powerOfTen(int n); // a C integer

// What stands for an expression that is evaluated once and used several times.
struct KeptValue {
    Num num;
    Text text;
    std::string condition;
};

} // namespace kvrcob
