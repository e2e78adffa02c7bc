// Decimal arithmetic by pencil and paper, on strings of digits: what the library's results are held
// against.
#pragma once

#include <algorithm>
#include <string>

namespace reference {

struct Value {
    std::string digits;
    bool negative;
};

// The significant digits, at least one.
inline std::string stripped(const std::string &digits)
{
    size_t at = digits.find_first_not_of('0');
    return at == std::string::npos ? "0" : digits.substr(at);
}

// The low-order n digits.
inline std::string cut(const std::string &digits, int n)
{
    auto wanted = static_cast<size_t>(n);
    return digits.size() >= wanted ? digits.substr(digits.size() - wanted)
                                   : std::string(wanted - digits.size(), '0') + digits;
}

inline int compare(const std::string &a, const std::string &b)
{
    std::string left = stripped(a), right = stripped(b);
    if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
    return left.compare(right);
}

inline std::string add(const std::string &a, const std::string &b)
{
    int n = static_cast<int>(std::max(a.size(), b.size())) + 1;
    std::string left = cut(a, n), right = cut(b, n);
    int carry = 0;
    for (size_t i = left.size(); i-- > 0;) {
        int sum = left[i] - '0' + right[i] - '0' + carry;
        carry = sum / 10;
        left[i] = static_cast<char>('0' + sum % 10);
    }
    return left;
}

// a must not be below b.
inline std::string subtract(const std::string &a, const std::string &b)
{
    std::string left = a, right = cut(stripped(b), static_cast<int>(std::max(a.size(), stripped(b).size())));
    left = cut(left, static_cast<int>(right.size()));
    int borrow = 0;
    for (size_t i = left.size(); i-- > 0;) {
        int difference = left[i] - right[i] - borrow;
        borrow = difference < 0;
        left[i] = static_cast<char>('0' + difference + 10 * borrow);
    }
    return left;
}

inline std::string multiply(const std::string &a, const std::string &b)
{
    std::string product(a.size() + b.size(), '0');
    for (size_t i = a.size(); i-- > 0;) {
        int carry = 0;
        for (size_t j = b.size(); j-- > 0;) {
            int value = product[i + j + 1] - '0' + (a[i] - '0') * (b[j] - '0') + carry;
            product[i + j + 1] = static_cast<char>('0' + value % 10);
            carry = value / 10;
        }
        product[i] = static_cast<char>('0' + carry);
    }
    return product;
}

// Quotient and remainder by counting subtractions; b must not be zero.
inline std::pair<std::string, std::string> divide(const std::string &a, const std::string &b)
{
    std::string quotient, rest = "0";
    for (char digit : a) {
        rest = stripped(rest + digit);
        char count = '0';
        for (; compare(rest, b) >= 0; count++) rest = stripped(subtract(rest, b));
        quotient += count;
    }
    return {quotient, rest};
}

// The packed complement's oddity, on digits that end with an item's last one: pairs above 90 lose
// their 90, but not in the last byte.
inline std::string reducedPairs(std::string digits)
{
    for (auto i = static_cast<int>(digits.size()) - 2; i >= 1; i -= 2)
        if (digits[static_cast<size_t>(i) - 1] == '9' && digits[static_cast<size_t>(i)] != '0')
            digits[static_cast<size_t>(i) - 1] = '0';
    return digits;
}

// ADD or SUB into a destination of n digits.
inline Value sum(const Value &a, const Value &b, bool subtracting, bool packed, int n)
{
    if ((a.negative == b.negative) != subtracting) return {cut(add(a.digits, b.digits), n), a.negative};
    if (compare(a.digits, b.digits) >= 0) return {cut(subtract(a.digits, b.digits), n), a.negative};
    std::string result = subtract(b.digits, a.digits);
    bool inTurn = stripped(a.digits).size() == stripped(b.digits).size(); // then the operands do not change places
    if (packed && subtracting && inTurn) result = reducedPairs(cut(result, n / 2 * 2 + 1));
    return {cut(result, n), !a.negative};
}

} // namespace reference
