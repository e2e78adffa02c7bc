// What becomes of any bytes: sums, comparisons and products byte by byte, the way the library
// defines them for items that are no numbers. Slow, and one step after the other; for clean items
// reference.h says the same.
#pragma once

#include <algorithm>
#include <optional>
#include <utility>

#include "items.h"
#include "reference.h"

namespace bytemodel {

inline int sign(int order) { return (order > 0) - (order < 0); }

// Bytes as the digits of a number to some base, to be multiplied: the value is all that counts.
inline std::string weighted(const std::vector<int> &places, const std::string &step)
{
    std::string value = "0";
    for (int place : places) value = reference::add(reference::stripped(value) + step, std::to_string(place));
    return value;
}

// ---- packed ----

struct Packed {
    static bool negative(const Bytes &item) { return (item.back() & 15) == 0xB || (item.back() & 15) == 0xD; }

    static Bytes stripped(Bytes item)
    {
        while (item.size() > 1 && item[0] == 0) item.erase(item.begin());
        return item;
    }

    static size_t digits(const Bytes &item) { return 2 * item.size() - (item[0] >> 4 || item.size() == 1 ? 1 : 2); }
    static Bytes low(const Bytes &item, size_t bytes)
    {
        return item.size() > bytes ? Bytes(item.end() - static_cast<long>(bytes), item.end()) : item;
    }

    // A bad low digit reads as 0, a bad high digit makes the pair 100.
    static int value(uint8_t byte) { return byte > 0x9F ? 100 : (byte >> 4) * 10 + ((byte & 15) > 9 ? 0 : byte & 15); }
    static uint8_t pair(int value)
    {
        return static_cast<uint8_t>(((value + 200) % 100 / 10) << 4 | (value + 200) % 10);
    }

    static Bytes finished(Bytes result, int dn, bool minus)
    {
        result.back() = static_cast<uint8_t>((result.back() & 0xF0) | (minus ? 0xD : 0xC));
        if (dn % 2 == 0) result[0] &= 0x0F;
        return result;
    }

    static int compare(const Bytes &x, const Bytes &y, bool magnitudeOnly)
    {
        bool same = negative(x) == negative(y);
        auto quick = [&](const Bytes &p, const Bytes &q) {
            int order = std::lexicographical_compare(p.begin(), p.end() - 1, q.begin(), q.end() - 1) ? -1
                        : std::lexicographical_compare(q.begin(), q.end() - 1, p.begin(), p.end() - 1)
                            ? 1
                            : sign((p.back() >> 4) - (q.back() >> 4));
            return magnitudeOnly || !negative(x) ? order : -order;
        };
        if (x.size() == y.size() && (same || magnitudeOnly)) return quick(x, y);
        Bytes a = stripped(x), b = stripped(y);
        if (x.size() != y.size() && a.size() == b.size() && (same || magnitudeOnly)) return quick(a, b);
        int bigger1 = negative(x) ? -1 : 1, bigger2 = negative(y) ? 1 : -1;
        if (a.size() != b.size()) return a.size() > b.size() ? bigger1 : bigger2;
        bool zero = true;
        for (size_t i = 0; i < a.size(); i++) {
            int p = i + 1 < a.size() ? a[i] : a[i] >> 4, q = i + 1 < a.size() ? b[i] : b[i] >> 4;
            if (p != q) return p > q ? bigger1 : bigger2;
            zero = zero && p == 0;
        }
        return zero || same || magnitudeOnly ? 0 : bigger1;
    }

    static Bytes add(const Bytes &x, const Bytes &y, int dn, bool sameSign = false)
    {
        Bytes a = stripped(x), b = stripped(y);
        if (!sameSign && negative(x) != negative(y)) {
            bool swap = digits(a) != digits(b) ? digits(a) < digits(b) : compare(x, y, true) < 0;
            return swap ? subtract(y, x, dn, true) : subtract(x, y, dn, true);
        }
        Bytes result(static_cast<size_t>(dn / 2 + 1));
        a = low(a, result.size()), b = low(b, result.size());
        if (digits(a) < digits(b)) std::swap(a, b);
        unsigned units = (a.back() & 0xF0u) + (b.back() & 0xF0u);
        bool carry = units > 0x90;
        result.back() = static_cast<uint8_t>(carry ? units + 0x60 : units);
        for (size_t i = 2; i <= a.size(); i++) {
            uint8_t p = a[a.size() - i], &to = result[result.size() - i];
            if (i <= b.size()) {
                uint8_t q = b[b.size() - i];
                p = static_cast<uint8_t>(p + carry);
                auto s = static_cast<uint8_t>(p + q), t = static_cast<uint8_t>(s + 0x66);
                uint8_t carried = (p ^ q ^ t) & 0x11;
                carry = p + q > 0xFF || t < s;
                to = static_cast<uint8_t>(s + (carried >> 2) + (carried >> 3) + (carry ? 0x60 : 0));
            } else if (carry) {
                auto t = static_cast<uint8_t>(p + 0x67), u = static_cast<uint8_t>(p + 1);
                uint8_t carried = (p ^ t) & 0x11;
                carry = t < u;
                to = static_cast<uint8_t>(u + (carried >> 3) + (carried >> 2) + (carry ? 0x60 : 0));
            } else {
                to = p;
            }
        }
        if (carry && result.size() > a.size()) result[result.size() - a.size() - 1] = 1;
        return finished(result, dn, negative(x));
    }

    static Bytes subtract(const Bytes &x, const Bytes &y, int dn, bool sameSign = false)
    {
        if (!sameSign && negative(x) != negative(y)) return add(x, y, dn, true);
        Bytes a = stripped(x), b = stripped(y), result(static_cast<size_t>(dn / 2 + 1));
        bool minus = negative(x), borrow = false;
        if (digits(a) < digits(b)) std::swap(a, b), minus = !minus;
        size_t stored = std::min(a.size(), result.size());
        for (size_t i = 1; i <= a.size(); i++) {
            uint8_t byte = a[a.size() - i];
            if (i <= b.size() || borrow) {
                int difference = value(byte) - (i <= b.size() ? value(b[b.size() - i]) : 0) - borrow;
                borrow = difference < 0;
                byte = pair(difference);
            }
            if (i <= stored) result[result.size() - i] = byte;
        }
        if (borrow) {
            minus = !minus;
            bool carry = result.back() < 0x10;
            result.back() = static_cast<uint8_t>(carry ? 0 : 0xA0 - (result.back() & 0xF0));
            for (size_t i = 2; i <= stored; i++) {
                uint8_t &byte = result[result.size() - i];
                int turned = 99 - value(byte) + carry;
                carry = turned > 99;
                byte = pair(carry ? 0 : turned > 90 ? turned - 90 : turned);
            }
        }
        return finished(result, dn, minus);
    }

    static Bytes multiply(const Bytes &x, const Bytes &y, int dn)
    {
        auto factor = [&](const Bytes &item) {
            Bytes kept = low(stripped(item), static_cast<size_t>(dn / 2 + 1));
            std::vector<int> pairs;
            for (size_t i = 0; i + 1 < kept.size(); i++) pairs.push_back(value(kept[i]));
            return reference::add(weighted(pairs, "00") + "0", std::to_string(kept.back() >> 4));
        };
        std::string product = reference::cut(reference::multiply(factor(x), factor(y)), dn / 2 * 2 + 1);
        return finished(packedItem(product, 0), dn, negative(x) != negative(y));
    }
};

// ---- zoned ----

struct Zoned {
    static bool negative(const Bytes &item)
    {
        uint8_t byte = item.back();
        return ((byte >> 4 == 7 || byte >> 4 == 13) && (byte & 15) < 10) || byte == '}' || (byte >= 'J' && byte <= 'R');
    }

    static int signDigit(uint8_t byte)
    {
        if (byte == '{' || byte == '}' || byte == 0 || byte == ' ') return 0;
        if (byte >= 'J' && byte <= 'R') return byte - 'I';
        return byte & 15;
    }

    static Bytes stripped(Bytes item)
    {
        while (item.size() > 1 && (item[0] & 15) == 0) item.erase(item.begin());
        return item;
    }

    static int digit(const Bytes &item, size_t fromRight)
    {
        uint8_t byte = item[item.size() - fromRight];
        return fromRight == 1 ? signDigit(byte) : byte & 15;
    }

    static uint8_t zoned(int digit) { return static_cast<uint8_t>(0x30 | (digit & 15)); }

    static Bytes finished(Bytes result, bool minus)
    {
        result.back() = static_cast<uint8_t>((minus ? 0x70 : 0x30) | (result.back() & 15));
        return result;
    }

    static int compare(const Bytes &x, const Bytes &y, bool magnitudeOnly)
    {
        bool same = negative(x) == negative(y);
        auto quick = [&](const Bytes &p, const Bytes &q) {
            int order = std::lexicographical_compare(p.begin(), p.end() - 1, q.begin(), q.end() - 1) ? -1
                        : std::lexicographical_compare(q.begin(), q.end() - 1, p.begin(), p.end() - 1)
                            ? 1
                            : sign(digit(p, 1) - digit(q, 1));
            return magnitudeOnly || !negative(x) ? order : -order;
        };
        if (x.size() == y.size() && (same || magnitudeOnly)) return quick(x, y);
        Bytes a = stripped(x), b = stripped(y);
        if (x.size() != y.size() && a.size() == b.size() && (same || magnitudeOnly)) return quick(a, b);
        int bigger1 = negative(x) ? -1 : 1, bigger2 = negative(y) ? 1 : -1;
        if (a.size() != b.size()) return a.size() > b.size() ? bigger1 : bigger2;
        bool zero = true;
        for (size_t i = a.size(); i > 0; i--) {
            if (digit(a, i) != digit(b, i)) return digit(a, i) > digit(b, i) ? bigger1 : bigger2;
            zero = zero && digit(a, i) == 0;
        }
        return zero || same || magnitudeOnly ? 0 : bigger1;
    }

    static Bytes low(const Bytes &item, size_t bytes) { return Packed::low(item, bytes); }

    static std::optional<Bytes> add(const Bytes &x, const Bytes &y, int dn, bool sameSign = false)
    {
        Bytes a = stripped(x), b = stripped(y);
        if (!sameSign && negative(x) != negative(y)) {
            bool swap = a.size() != b.size() ? a.size() < b.size() : compare(x, y, true) < 0;
            return swap ? subtract(y, x, dn, true) : subtract(x, y, dn, true);
        }
        Bytes result(static_cast<size_t>(dn), '0');
        a = low(a, result.size()), b = low(b, result.size());
        if (a.size() < b.size()) std::swap(a, b);
        bool carry = false;
        for (size_t i = 1; i <= a.size(); i++) {
            uint8_t &to = result[result.size() - i];
            if (i <= b.size() || carry) {
                int sum = digit(a, i) + (i <= b.size() ? digit(b, i) : 0) + carry;
                carry = sum > 9;
                to = zoned(carry ? sum + 6 : sum);
            } else {
                to = a[a.size() - i]; // what no carry reaches keeps its zone
            }
        }
        if (carry && result.size() > a.size()) result[result.size() - a.size() - 1] = '1';
        return finished(result, negative(x));
    }

    // Nothing when digits above 9 would have to be complemented: that has no meaning at all.
    static std::optional<Bytes> subtract(const Bytes &x, const Bytes &y, int dn, bool sameSign = false)
    {
        if (!sameSign && negative(x) != negative(y)) return add(x, y, dn, true);
        Bytes a = stripped(x), b = stripped(y), result(static_cast<size_t>(dn), '0');
        bool minus = negative(x), borrow = false;
        if (a.size() < b.size()) std::swap(a, b), minus = !minus;
        size_t stored = std::min(a.size(), result.size());
        for (size_t i = 1; i <= a.size(); i++) {
            uint8_t byte = a[a.size() - i];
            if (i <= b.size() || borrow) {
                int difference = digit(a, i) - (i <= b.size() ? digit(b, i) : 0) - borrow;
                borrow = difference < 0;
                byte = zoned(borrow ? difference + 10 : difference);
            }
            if (i <= stored) result[result.size() - i] = byte;
        }
        if (borrow) {
            minus = !minus;
            int carry = 1;
            for (size_t i = 1; i <= stored; i++) {
                uint8_t &byte = result[result.size() - i];
                if ((byte & 15) > 9) return std::nullopt;
                int turned = 9 - (byte & 15) + carry;
                carry = turned > 9;
                byte = zoned(carry ? 0 : turned);
            }
        }
        return finished(result, minus);
    }

    static Bytes multiply(const Bytes &x, const Bytes &y, int dn)
    {
        auto factor = [&](const Bytes &item) { // by low nibbles, also in the last place
            std::vector<int> digits;
            for (uint8_t byte : low(stripped(item), static_cast<size_t>(dn))) digits.push_back(byte & 15);
            return weighted(digits, "0");
        };
        return zonedItem(reference::cut(reference::multiply(factor(x), factor(y)), dn), negative(x) != negative(y));
    }
};

} // namespace bytemodel
