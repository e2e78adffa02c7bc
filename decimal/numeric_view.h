// Where the digits and the sign of a DISPLAY number lie, as a run-time value.
//
// The arithmetic of this room knows the form of an item at compile time. Class tests, INSPECT,
// UNSTRING and SEARCH ALL are told it in a flag, and have items in bytes and in UTF-16:
//
//     auto view = viewNumber<SingleByte>(item, 5, SignPlace::LeadingSeparate);
//     "-1234"         view.digits is "1234", view.sign points to "-"
#pragma once

#include "base/text_units.h"

enum class SignPlace : uint8_t { None, Leading, Trailing, LeadingSeparate, TrailingSeparate };

inline SignPlace signPlace(bool separate, bool leading)
{
    if (separate) return leading ? SignPlace::LeadingSeparate : SignPlace::TrailingSeparate;
    return leading ? SignPlace::Leading : SignPlace::Trailing;
}

// Byte is uint8_t or const uint8_t.
template <class Byte>
struct NumericView {
    Byte *digits;  // a sign that is no character of its own lies among them
    size_t length; // bytes of the digits
    Byte *sign;    // the character that is or carries the sign; null: there is none
};

// An item that is too short for its sign is all digits.
template <class Unit, class Byte>
NumericView<Byte> viewNumber(Byte *item, size_t length, SignPlace place)
{
    if (place == SignPlace::None || length < Unit::size) return {item, length, nullptr};
    Byte *last = item + length - Unit::size;
    switch (place) {
    case SignPlace::Leading:
        return {item, length, item};
    case SignPlace::LeadingSeparate:
        return {item + Unit::size, length - Unit::size, item};
    case SignPlace::TrailingSeparate:
        return {item, length - Unit::size, last};
    default:
        return {item, length, last};
    }
}
