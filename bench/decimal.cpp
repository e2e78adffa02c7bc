// Packed arithmetic of 7, 15, 18 and 31 digits through the exported entries, with the default validation, beside decNumber, _Decimal128 and the
// plain loop over bytes that one would write first; comparison and scaling, too.
//
// The peers work on their own formats: what a program would pay for going from packed to theirs and back is left out, in their favour.
#include <benchmark/benchmark.h>
#include <cstring>
#include <string>

extern "C" {
#define DECNUMDIGITS 68
#include <decNumber.h>
}

#include "kvr2/decimal.h"
#include "kvr2/decimal_scaling.h"

namespace {

using Decimal128 = float __attribute__((mode(TD)));

constexpr int kPairs = 64; // operands a round, so that no branch sees one pair only

const std::string kDigits = "1234567890123456789012345678901";
const std::string kOther = "9876543210987654321098765432109";

// The i-th operand of n digits: all digits in use, magnitudes and signs mixed.
std::string digitsOf(const std::string &base, int n, int i)
{
    std::string digits = base.substr(0, static_cast<size_t>(n));
    for (size_t at = 0; at < digits.size(); at++)
        digits[at] = static_cast<char>('0' + (digits[at] - '0' + i * static_cast<int>(at + 3)) % 10);
    if (digits[0] == '0') digits[0] = '5';
    return digits;
}

bool isNegative(int i, int operand) { return (i >> operand & 1) != 0; }

void pack(const std::string &digits, bool negative, uint8_t *item)
{
    std::string nibbles = digits.size() % 2 ? digits : "0" + digits;
    memset(item, 0, nibbles.size() / 2 + 1);
    for (size_t i = 0; i < nibbles.size(); i++) item[i / 2] = static_cast<uint8_t>(item[i / 2] | (nibbles[i] - '0') << (i % 2 ? 0 : 4));
    item[nibbles.size() / 2] |= negative ? 0x0D : 0x0C;
}

struct Operands {
    uint8_t a[kPairs][32];
    uint8_t b[kPairs][32];
    decNumber da[kPairs], db[kPairs];
    Decimal128 ta[kPairs], tb[kPairs];

    Operands(int an, int bn)
    {
        decContext context;
        decContextDefault(&context, DEC_INIT_DECIMAL128);
        for (int i = 0; i < kPairs; i++) {
            std::string left = digitsOf(kDigits, an, i), right = digitsOf(kOther, bn, i + 1);
            pack(left, isNegative(i, 0), a[i]);
            pack(right, isNegative(i, 1), b[i]);
            decNumberFromString(&da[i], ((isNegative(i, 0) ? "-" : "") + left).c_str(), &context);
            decNumberFromString(&db[i], ((isNegative(i, 1) ? "-" : "") + right).c_str(), &context);
            ta[i] = fromDigits(left, isNegative(i, 0));
            tb[i] = fromDigits(right, isNegative(i, 1));
        }
    }

    static Decimal128 fromDigits(const std::string &digits, bool negative)
    {
        Decimal128 value = 0;
        for (char digit : digits) value = value * 10 + (digit - '0');
        return negative ? -value : value;
    }
};

// One call an iteration, over all pairs in turn.
template <class Body>
void over(benchmark::State &state, Body body)
{
    int i = 0;
    for (auto _ : state) {
        body(i);
        benchmark::ClobberMemory();
        i = (i + 1) % kPairs;
    }
}

uint8_t out[40], rest[40];

// The plain loop: digit by digit over the nibbles of both items, for ADD and SUB of items of the same length.
__attribute__((noinline)) void plainSum(const uint8_t *a, const uint8_t *b, uint8_t *to, int bytes, bool subtracting)
{
    auto digit = [bytes](const uint8_t *item, int place) {
        uint8_t byte = item[bytes - 1 - (place + 1) / 2];
        return place % 2 ? byte & 15 : byte >> 4;
    };
    bool minusA = (a[bytes - 1] & 15) == 13, minusB = ((b[bytes - 1] & 15) == 13) != subtracting, minus = minusA;
    int digits = 2 * bytes - 1, sign = 1, carry = 0;
    if (minusA != minusB) {
        sign = -1;
        int place = digits;
        while (place > 0 && digit(a, place - 1) == digit(b, place - 1)) place--;
        if (place > 0 && digit(a, place - 1) < digit(b, place - 1)) {
            const uint8_t *swap = a;
            a = b, b = swap;
            minus = !minus;
        }
    }
    memset(to, 0, static_cast<size_t>(bytes));
    for (int place = 0; place < digits; place++) {
        int value = digit(a, place) + sign * digit(b, place) + carry;
        carry = value > 9 ? 1 : value < 0 ? -1 : 0;
        value -= 10 * carry;
        uint8_t &byte = to[bytes - 1 - (place + 1) / 2];
        byte = static_cast<uint8_t>(byte | value << (place % 2 ? 0 : 4));
    }
    to[bytes - 1] |= minus ? 13 : 12;
}

decContext contextOf()
{
    decContext context;
    decContextDefault(&context, DEC_INIT_DECIMAL128);
    context.digits = 62;
    context.traps = 0;
    return context;
}

template <class Call>
void row(const std::string &name, int an, int bn, Call call)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
        static thread_local Operands *operands;
        delete operands;
        operands = new Operands(an, bn);
        const Operands &o = *operands;
        decContext context = contextOf();
        decNumber number;
        over(state, [&](int i) { call(o, i, number, context); });
    });
}

void sums(int n)
{
    for (bool subtracting : {false, true}) {
        std::string figure = std::string(subtracting ? "SUB" : "ADD") + " packed, " + std::to_string(n) + " digits/";
        if (subtracting) {
            row(figure + "ours", n, n, [n](const Operands &o, int i, auto &, auto &) { _zvkcBCD_SUB_Pckd(o.a[i], o.b[i], out, n, n, n); });
            row(figure + "peer:decNumberSubtract", n, n,
                [](const Operands &o, int i, auto &d, auto &c) { decNumberSubtract(&d, &o.da[i], &o.db[i], &c); });
            row(figure + "peer:_Decimal128", n, n,
                [](const Operands &o, int i, auto &, auto &) { benchmark::DoNotOptimize(o.ta[i] - o.tb[i]); });
        } else {
            row(figure + "ours", n, n, [n](const Operands &o, int i, auto &, auto &) { _zvkcBCD_ADD_Pckd(o.a[i], o.b[i], out, n, n, n); });
            row(figure + "peer:decNumberAdd", n, n,
                [](const Operands &o, int i, auto &d, auto &c) { decNumberAdd(&d, &o.da[i], &o.db[i], &c); });
            row(figure + "peer:_Decimal128", n, n,
                [](const Operands &o, int i, auto &, auto &) { benchmark::DoNotOptimize(o.ta[i] + o.tb[i]); });
        }
        row(figure + "peer:plain loop", n, n,
            [n, subtracting](const Operands &o, int i, auto &, auto &) { plainSum(o.a[i], o.b[i], out, n / 2 + 1, subtracting); });
    }
}

void comparisons(int n)
{
    std::string figure = "GRT packed, " + std::to_string(n) + " digits/";
    row(figure + "ours", n, n,
        [n](const Operands &o, int i, auto &, auto &) { benchmark::DoNotOptimize(_zvkcBCD_GRT_Pckd(o.a[i], o.b[i], n, n)); });
    row(figure + "peer:decNumberCompare", n, n,
        [](const Operands &o, int i, auto &d, auto &c) { decNumberCompare(&d, &o.da[i], &o.db[i], &c); });
    row(figure + "peer:_Decimal128", n, n, [](const Operands &o, int i, auto &, auto &) {
        bool greater = o.ta[i] > o.tb[i];
        benchmark::DoNotOptimize(greater);
    });
}

void products(int an, int bn, int dn)
{
    std::string figure = "MPY packed, " + std::to_string(an) + " by " + std::to_string(bn) + " digits/";
    row(figure + "ours", an, bn, [=](const Operands &o, int i, auto &, auto &) { _zvkcBCD_MPY_Pckd(o.a[i], o.b[i], out, dn, bn, an); });
    row(figure + "peer:decNumberMultiply", an, bn,
        [](const Operands &o, int i, auto &d, auto &c) { decNumberMultiply(&d, &o.da[i], &o.db[i], &c); });
    row(figure + "peer:_Decimal128", an, bn, [](const Operands &o, int i, auto &, auto &) { benchmark::DoNotOptimize(o.ta[i] * o.tb[i]); });
}

void quotients(int an, int bn)
{
    std::string digits = std::to_string(an) + " by " + std::to_string(bn) + " digits/";
    row("DIV packed, " + digits + "ours", an, bn,
        [=](const Operands &o, int i, auto &, auto &) { _zvkcBCD_DIV_Pckd(o.a[i], o.b[i], out, an, bn, an); });
    row("DIV packed, " + digits + "peer:decNumberDivideInteger", an, bn,
        [](const Operands &o, int i, auto &d, auto &c) { decNumberDivideInteger(&d, &o.da[i], &o.db[i], &c); });
    row("DIVR packed, " + digits + "ours", an, bn,
        [=](const Operands &o, int i, auto &, auto &) { _zvkcBCD_DIVR_Pckd(o.a[i], o.b[i], out, rest, bn, an, bn, an); });
    row("DIVR packed, " + digits + "peer:decNumberDivideInteger and decNumberRemainder", an, bn,
        [](const Operands &o, int i, auto &d, auto &c) {
            decNumberDivideInteger(&d, &o.da[i], &o.db[i], &c);
            benchmark::ClobberMemory();
            decNumberRemainder(&d, &o.da[i], &o.db[i], &c);
        });
}

// memcpy behind a call, as the entries are.
__attribute__((noinline)) void copyBytes(uint8_t *to, const uint8_t *from, size_t size)
{
    benchmark::DoNotOptimize(size);
    memcpy(to, from, size);
}

void shifts(int n)
{
    auto bytes = static_cast<size_t>(n / 2 + 1);
    struct {
        const char *name;
        decltype(&_zvkcBCD_SHFD_Pckd_Left) entry;
        int by;
    } ways[] = {{"left", _zvkcBCD_SHFD_Pckd_Left, 2},
                {"left", _zvkcBCD_SHFD_Pckd_Left, 3},
                {"right", _zvkcBCD_SHFD_Pckd_Right, 2},
                {"right rounded", _zvkcBCD_SHFD_Pckd_RightRnd, 3}};
    for (const auto &way : ways) {
        std::string figure =
            std::string("shift packed ") + way.name + " by " + std::to_string(way.by) + ", " + std::to_string(n) + " digits/";
        row(figure + "ours", n, n, [n, way](const Operands &o, int i, auto &, auto &) { way.entry(o.a[i], out, n, n, way.by); });
        row(figure + "peer:a call and memcpy", n, n, [bytes](const Operands &o, int i, auto &, auto &) { copyBytes(out, o.a[i], bytes); });
    }
}

} // namespace

int main(int argc, char **argv)
{
    for (int n : {7, 15, 18, 31}) sums(n);
    for (int n : {7, 15, 18, 31}) comparisons(n);
    products(7, 7, 15);
    products(15, 15, 31);
    products(31, 31, 62);
    quotients(15, 7);
    quotients(18, 9);
    quotients(31, 15);
    quotients(31, 18);
    shifts(15);
    shifts(31);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
