// Whole numbers of any size, slow and plain, for exact oracles of floating-point steps.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Bits from the lowest, 16 a limb.
struct BigInteger {
    std::vector<uint16_t> limbs;

    BigInteger(unsigned __int128 value = 0)
    {
        for (; value; value >>= 16) limbs.push_back(static_cast<uint16_t>(value));
    }
    explicit BigInteger(const std::string &digits)
    {
        for (char c : digits) *this = timesPlus(10, static_cast<unsigned>(c - '0'));
    }
    BigInteger timesPlus(uint32_t factor, uint32_t plus = 0) const
    {
        BigInteger result;
        uint64_t carry = plus;
        for (uint16_t limb : limbs) {
            carry += uint64_t{limb} * factor;
            result.limbs.push_back(static_cast<uint16_t>(carry));
            carry >>= 16;
        }
        for (; carry; carry >>= 16) result.limbs.push_back(static_cast<uint16_t>(carry));
        result.trim();
        return result;
    }
    BigInteger timesTenTo(int n) const
    {
        BigInteger result = *this;
        while (n-- > 0) result = result.timesPlus(10);
        return result;
    }
    BigInteger operator*(const BigInteger &other) const
    {
        BigInteger result;
        for (size_t i = 0; i < other.limbs.size(); i++)
            result = result + (timesPlus(other.limbs[i]) << static_cast<int>(16 * i));
        return result;
    }
    // The quotient by 10, and the rest.
    unsigned divideByTen()
    {
        unsigned rest = 0;
        for (size_t i = limbs.size(); i-- > 0;) {
            rest = rest << 16 | limbs[i];
            limbs[i] = static_cast<uint16_t>(rest / 10);
            rest %= 10;
        }
        trim();
        return rest;
    }
    BigInteger operator<<(int n) const
    {
        BigInteger result;
        result.limbs.assign(static_cast<size_t>(n / 16), 0);
        result.limbs.insert(result.limbs.end(), limbs.begin(), limbs.end());
        return result.timesPlus(1U << n % 16);
    }
    BigInteger operator>>(int n) const
    {
        BigInteger result;
        if (static_cast<size_t>(n / 16) >= limbs.size()) return result;
        uint32_t above = 0;
        for (size_t i = limbs.size(); i-- > static_cast<size_t>(n / 16);) {
            above = above << 16 | limbs[i];
            result.limbs.insert(result.limbs.begin(), static_cast<uint16_t>(above >> n % 16));
        }
        result.trim();
        return result;
    }
    BigInteger operator+(const BigInteger &other) const
    {
        BigInteger result;
        uint32_t carry = 0;
        for (size_t i = 0; i < limbs.size() || i < other.limbs.size() || carry; i++) {
            carry += (i < limbs.size() ? limbs[i] : 0u) + (i < other.limbs.size() ? other.limbs[i] : 0u);
            result.limbs.push_back(static_cast<uint16_t>(carry));
            carry >>= 16;
        }
        return result;
    }
    // Other must not be greater.
    BigInteger operator-(const BigInteger &other) const
    {
        BigInteger result = *this;
        int borrow = 0;
        for (size_t i = 0; i < limbs.size(); i++) {
            int value = limbs[i] - borrow - (i < other.limbs.size() ? other.limbs[i] : 0);
            borrow = value < 0;
            result.limbs[i] = static_cast<uint16_t>(value);
        }
        result.trim();
        return result;
    }
    bool operator<(const BigInteger &other) const
    {
        if (limbs.size() != other.limbs.size()) return limbs.size() < other.limbs.size();
        for (size_t i = limbs.size(); i-- > 0;)
            if (limbs[i] != other.limbs[i]) return limbs[i] < other.limbs[i];
        return false;
    }
    bool isZero() const { return limbs.empty(); }
    int bits() const
    {
        return limbs.empty() ? 0 : static_cast<int>(limbs.size()) * 16 - __builtin_clz(uint32_t{limbs.back()} << 16);
    }
    bool bit(int n) const
    {
        return static_cast<size_t>(n / 16) < limbs.size() && (limbs[static_cast<size_t>(n / 16)] >> n % 16 & 1);
    }
    std::string decimal() const
    {
        std::string text;
        for (BigInteger left = *this; !left.isZero();) text.insert(text.begin(), static_cast<char>('0' + left.divideByTen()));
        return text.empty() ? "0" : text;
    }

private:
    void trim()
    {
        while (!limbs.empty() && limbs.back() == 0) limbs.pop_back();
    }
};

// A number as mantissa * 2^exponent.
struct Dyadic {
    BigInteger mantissa;
    int exponent = 0;

    // To so many bits, ties to even; the rest of a division that was not zero counts as a bit below all.
    Dyadic rounded(int precision, bool sticky = false) const
    {
        int drop = mantissa.bits() - precision;
        if (drop <= 0) return *this;
        BigInteger kept = mantissa >> drop;
        bool half = mantissa.bit(drop - 1);
        bool more = sticky || (kept << drop) + (BigInteger(1) << (drop - 1)) < mantissa;
        if (half && (more || kept.bit(0))) kept = kept + 1;
        return {kept, exponent + drop};
    }
    Dyadic timesTenTo(int n) const { return {mantissa.timesTenTo(n), exponent}; }
    // Exact if it is a whole number of bits, else to 200 bits more than the mantissa, with a mark.
    Dyadic dividedByTenTo(int n, bool &sticky) const
    {
        Dyadic result = {mantissa << (4 * n + 200), exponent - 4 * n - 200};
        sticky = false;
        while (n-- > 0) sticky |= result.mantissa.divideByTen() != 0;
        return result;
    }
    Dyadic plus(const Dyadic &other) const
    {
        if (exponent < other.exponent) return other.plus(*this);
        return {(mantissa << (exponent - other.exponent)) + other.mantissa, other.exponent};
    }
    bool notAbove(const Dyadic &other) const
    {
        int low = exponent < other.exponent ? exponent : other.exponent;
        return !((other.mantissa << (other.exponent - low)) < (mantissa << (exponent - low)));
    }
    BigInteger whole() const { return exponent >= 0 ? mantissa << exponent : mantissa >> -exponent; }
};
