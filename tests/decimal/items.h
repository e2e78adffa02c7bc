// Items for the decimal tests: bytes from digits and back, by the plainest means, and places for
// them against protected pages.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/guarded.h"

using Bytes = std::vector<uint8_t>;

// One generator for all tests, so that every run sees the same values.
inline std::mt19937_64 &randomness()
{
    static std::mt19937_64 generator(20260101);
    return generator;
}

inline unsigned randomBelow(unsigned limit) { return static_cast<unsigned>(randomness()() % limit); }

inline Bytes randomBytes(size_t size)
{
    Bytes bytes(size);
    for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(randomness()());
    return bytes;
}

// n digits; often with leading zeros, sometimes all 9 or all 0, which is where carries and signs go
// wrong.
inline std::string randomDigits(int n)
{
    std::string digits(static_cast<size_t>(n), '0');
    unsigned kind = randomBelow(8);
    if (kind == 0) return digits;
    size_t first = kind < 4 ? randomBelow(static_cast<unsigned>(n)) : 0;
    for (size_t i = first; i < digits.size(); i++)
        digits[i] = static_cast<char>(kind == 1 ? '9' : '0' + randomBelow(10));
    return digits;
}

inline Bytes packedItem(const std::string &digits, uint8_t sign)
{
    std::string nibbles = (digits.size() % 2 == 0 ? "0" : "") + digits;
    Bytes item(nibbles.size() / 2 + 1);
    for (size_t i = 0; i < nibbles.size(); i++)
        item[i / 2] |= static_cast<uint8_t>((nibbles[i] - '0') << (i % 2 ? 0 : 4));
    item.back() |= sign;
    return item;
}

// Trailing overpunch, native form.
inline Bytes zonedItem(const std::string &digits, bool negative)
{
    Bytes item(digits.begin(), digits.end());
    if (negative) item.back() |= 0x40;
    return item;
}

inline std::string hex(const uint8_t *item, size_t bytes)
{
    static const char figures[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < bytes; i++) text += {figures[item[i] >> 4], figures[item[i] & 15]};
    return text;
}

inline std::string hex(const Bytes &item) { return hex(item.data(), item.size()); }

inline Bytes fromHex(const std::string &text)
{
    Bytes item;
    for (size_t i = 0; i + 1 < text.size(); i += 2)
        item.push_back(static_cast<uint8_t>(std::stoi(text.substr(i, 2), nullptr, 16)));
    return item;
}

// A place for items that touch a protected page with their first or last byte, or are at an
// alignment of one's choice.
class Place {
public:
    Place() : guard_(256) {}

    uint8_t *put(const Bytes &item, GuardedItem::Place side)
    {
        uint8_t *p = guard_.place(item.size(), side);
        std::copy(item.begin(), item.end(), p);
        return p;
    }

    uint8_t *putAligned(const Bytes &item, unsigned alignment)
    {
        uint8_t *p = guard_.place(256, GuardedItem::AtStart) + 64;
        p += (alignment - reinterpret_cast<uintptr_t>(p)) & 7;
        std::copy(item.begin(), item.end(), p);
        return p;
    }

private:
    GuardedItem guard_;
};
