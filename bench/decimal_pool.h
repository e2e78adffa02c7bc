// Random decimal operands for benchmarks, and the loops that a programmer would write without a
// library.
//
// A pool holds operands of one length with random digits and random signs. The calls of a benchmark
// go round it. It is so large since branch predictors learn the signs of a few hundred by heart.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

namespace pool {

inline constexpr size_t kSize = 4096;

// "+" or "-", then digits, the first of them not zero.
inline std::string randomNumber(std::mt19937 &random, int digits)
{
    std::string number(random() % 2 ? "+" : "-");
    for (int i = 0; i < digits; i++) number += static_cast<char>('0' + (i ? random() % 10 : 1 + random() % 9));
    return number;
}

struct Item {
    uint8_t bytes[40];
};

inline Item packed(const std::string &number)
{
    Item item{};
    std::string nibbles = (number.size() % 2 ? "0" : "") + number.substr(1) + (number[0] == '-' ? "=" : "<");
    for (size_t i = 0; i < nibbles.size(); i++)
        item.bytes[i / 2] |= static_cast<uint8_t>((nibbles[i] & 0x0F) << (i % 2 ? 0 : 4));
    return item;
}

inline Item zoned(const std::string &number)
{
    Item item{};
    memcpy(item.bytes, number.data() + 1, number.size() - 1);
    if (number[0] == '-') item.bytes[number.size() - 2] |= 0x40;
    return item;
}

using Make = Item (*)(const std::string &);

struct Items {
    std::array<Item, kSize> items;
    size_t at = 0;

    Items(Make make, int digits, unsigned seed)
    {
        std::mt19937 random(seed);
        for (Item &item : items) item = make(randomNumber(random, digits));
    }
    uint8_t *next() { return items[at++ % kSize].bytes; }
};

struct Integers {
    std::array<int64_t, kSize> values;
    size_t at = 0;

    Integers(int digits, unsigned seed)
    {
        std::mt19937 random(seed);
        for (int64_t &value : values) value = std::stoll(randomNumber(random, digits));
    }
    int64_t next() { return values[at++ % kSize]; }
};

// ---- The plain loops. Digits are taken one by one from the right; nothing is checked.

struct PackedDigits {
    static int get(const uint8_t *item, int n, int place)
    {
        return item[n / 2 - (place + 1) / 2] >> (place % 2 ? 0 : 4) & 15;
    }
    static void put(uint8_t *item, int n, int place, int digit)
    {
        uint8_t &byte = item[n / 2 - (place + 1) / 2];
        byte = static_cast<uint8_t>(place % 2 ? digit : (byte & 0x0F) | digit << 4);
    }
    static bool negative(const uint8_t *item, int n) { return (item[n / 2] & 15) == 0x0D; }
    static void sign(uint8_t *item, int n, bool minus)
    {
        item[n / 2] = static_cast<uint8_t>((item[n / 2] & 0xF0) | (minus ? 0x0D : 0x0C));
    }
};

struct ZonedDigits {
    static int get(const uint8_t *item, int n, int place) { return item[n - 1 - place] & 15; }
    static void put(uint8_t *item, int n, int place, int digit)
    {
        item[n - 1 - place] = static_cast<uint8_t>(0x30 | digit);
    }
    static bool negative(const uint8_t *item, int n) { return (item[n - 1] & 0xF0) == 0x70; }
    static void sign(uint8_t *item, int n, bool minus)
    {
        item[n - 1] = static_cast<uint8_t>((minus ? 0x70 : 0x30) | (item[n - 1] & 15));
    }
};

// out = a + b, all of n digits.
template <class Digits>
__attribute__((noinline)) void plainAdd(const uint8_t *a, const uint8_t *b, uint8_t *out, int n)
{
    bool minus = Digits::negative(a, n);
    if (minus == Digits::negative(b, n)) {
        int carry = 0;
        for (int i = 0; i < n; i++) {
            int sum = Digits::get(a, n, i) + Digits::get(b, n, i) + carry;
            carry = sum > 9;
            Digits::put(out, n, i, carry ? sum - 10 : sum);
        }
    } else {
        int place = n - 1;
        while (place > 0 && Digits::get(a, n, place) == Digits::get(b, n, place)) place--;
        if (Digits::get(a, n, place) < Digits::get(b, n, place)) {
            std::swap(a, b);
            minus = !minus;
        }
        int borrow = 0;
        for (int i = 0; i < n; i++) {
            int difference = Digits::get(a, n, i) - Digits::get(b, n, i) - borrow;
            borrow = difference < 0;
            Digits::put(out, n, i, borrow ? difference + 10 : difference);
        }
    }
    Digits::sign(out, n, minus);
}

// item += value, as far as digits or carries go.
template <class Digits>
__attribute__((noinline)) void plainAddInteger(uint8_t *item, int n, int64_t value)
{
    bool minus = Digits::negative(item, n);
    auto rest = static_cast<uint64_t>(value < 0 ? -value : value);
    int carry = 0;
    if (minus == (value < 0)) {
        for (int i = 0; i < n && (rest || carry); i++, rest /= 10) {
            int sum = Digits::get(item, n, i) + static_cast<int>(rest % 10) + carry;
            carry = sum > 9;
            Digits::put(item, n, i, carry ? sum - 10 : sum);
        }
    } else {
        for (int i = 0; i < n && (rest || carry); i++, rest /= 10) {
            int difference = Digits::get(item, n, i) - static_cast<int>(rest % 10) - carry;
            carry = difference < 0;
            Digits::put(item, n, i, carry ? difference + 10 : difference);
        }
        for (int i = 0, up = 1; carry && i < n; i++) {
            int digit = 9 - Digits::get(item, n, i) + up;
            up = digit > 9;
            Digits::put(item, n, i, up ? 0 : digit);
        }
        minus ^= carry != 0;
    }
    Digits::sign(item, n, minus);
}

// From one form to another, both of n digits.
template <class From, class To>
__attribute__((noinline)) void plainConvert(const uint8_t *from, uint8_t *to, int n)
{
    for (int i = 0; i < n; i++) To::put(to, n, i, From::get(from, n, i));
    To::sign(to, n, From::negative(from, n));
}

template <class Digits>
__attribute__((noinline)) int64_t plainToInteger(const uint8_t *item, int n)
{
    int64_t value = 0;
    for (int i = n; i-- > 0;) value = value * 10 + Digits::get(item, n, i);
    return Digits::negative(item, n) ? -value : value;
}

template <class Digits>
__attribute__((noinline)) void plainFromInteger(int64_t value, uint8_t *item, int n)
{
    auto rest = static_cast<uint64_t>(value < 0 ? -value : value);
    for (int i = 0; i < n; i++, rest /= 10) Digits::put(item, n, i, static_cast<int>(rest % 10));
    Digits::sign(item, n, value < 0);
}

} // namespace pool
