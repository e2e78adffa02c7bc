// Packed arithmetic through the exported entries, with validation on as by default, beside
// decNumber, the compiler's 128-bit decimal float and the plain loop that a packed addition is.
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

constexpr int kLengths[] = {7, 15, 18, 31};

struct Packed {
    uint8_t bytes[32] = {};
    explicit Packed(const std::string &digits)
    {
        std::string nibbles = (digits.size() % 2 ? "" : "0") + digits + "<"; // "<" is 0x3C: the sign nibble 0xC
        for (size_t i = 0; i < nibbles.size(); i++)
            bytes[i / 2] |= static_cast<uint8_t>((nibbles[i] & 0x0F) << (i % 2 ? 0 : 4));
    }
};

// Digits without a pattern, the first of them not zero.
std::string digitsOf(int n, unsigned seed)
{
    std::string digits;
    for (int i = 0; i < n; i++) {
        seed = seed * 1103515245 + 12345;
        digits += static_cast<char>('1' + (seed >> 16) % 9);
    }
    return digits;
}

decContext wide()
{
    decContext context;
    decContextDefault(&context, DEC_INIT_BASE);
    context.digits = 68;
    context.traps = 0;
    return context;
}

template <class Body>
void loop(benchmark::State &state, Body body)
{
    for (auto _ : state) {
        body();
        benchmark::ClobberMemory();
    }
}

using Binary = uint8_t *(*)(const uint8_t *, const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);
using BinaryNumber = decNumber *(*)(decNumber *, const decNumber *, const decNumber *, decContext *);

void ours(benchmark::State &state, Binary entry, int n1, int n2, int nd)
{
    Packed a(digitsOf(n1, 1)), b(digitsOf(n2, 2)), out("0");
    loop(state, [&] { entry(a.bytes, b.bytes, out.bytes, nd, n2, n1); });
}

void decNumbers(benchmark::State &state, BinaryNumber routine, int n1, int n2)
{
    decContext context = wide();
    decNumber a, b, out;
    decNumberFromString(&a, digitsOf(n1, 1).c_str(), &context);
    decNumberFromString(&b, digitsOf(n2, 2).c_str(), &context);
    loop(state, [&] { routine(&out, &a, &b, &context); });
}

// C++ has no name for the type.
typedef float Decimal128 __attribute__((mode(TD)));

void decimalFloat(benchmark::State &state, int n)
{
    Decimal128 a = 0, b = 0, out = 0;
    for (char c : digitsOf(n, 1)) a = a * 10 + (c - '0');
    for (char c : digitsOf(n, 2)) b = b * 10 + (c - '0');
    loop(state, [&] {
        benchmark::DoNotOptimize(a);
        out = a + b;
        benchmark::DoNotOptimize(out);
    });
}

// Byte by byte from the right, both positive, with nothing checked.
__attribute__((noinline)) void addBytes(const uint8_t *a, const uint8_t *b, uint8_t *out, int bytes)
{
    unsigned carry = 0;
    out[bytes - 1] = 0x0C;
    for (int place = 1; place < 2 * bytes; place++) {
        int byte = bytes - 1 - place / 2, shift = place % 2 ? 4 : 0;
        unsigned sum = (a[byte] >> shift & 15) + (b[byte] >> shift & 15) + carry;
        carry = sum > 9;
        sum -= carry ? 10 : 0;
        if (shift || byte == bytes - 1)
            out[byte] = static_cast<uint8_t>((out[byte] & 0x0F) | sum << 4);
        else
            out[byte] = static_cast<uint8_t>(sum);
    }
}

void byteLoop(benchmark::State &state, int n)
{
    Packed a(digitsOf(n, 1)), b(digitsOf(n, 2)), out("0");
    loop(state, [&] { addBytes(a.bytes, b.bytes, out.bytes, n / 2 + 1); });
}

void compareOurs(benchmark::State &state, int n)
{
    Packed a(digitsOf(n, 1)), b(digitsOf(n, 1));
    loop(state, [&] { benchmark::DoNotOptimize(_zvkcBCD_GRT_Pckd(a.bytes, b.bytes, n, n)); });
}

void shiftOurs(benchmark::State &state, int n)
{
    Packed a(digitsOf(n, 1)), out("0");
    loop(state, [&] { _zvkcBCD_SHFD_Pckd_Left(a.bytes, out.bytes, n, n, 4); });
}

__attribute__((noinline)) void copyBytes(uint8_t *to, const uint8_t *from, size_t size)
{
    benchmark::DoNotOptimize(size);
    memcpy(to, from, size);
}

void copyPeer(benchmark::State &state, int n)
{
    Packed a(digitsOf(n, 1)), out("0");
    loop(state, [&] { copyBytes(out.bytes, a.bytes, static_cast<size_t>(n) / 2 + 1); });
}

template <class Body>
void add(const std::string &figure, const char *who, Body body)
{
    benchmark::RegisterBenchmark((figure + "/" + who).c_str(), body);
}

void registerAll()
{
    for (int n : kLengths) {
        std::string digits = ", " + std::to_string(n) + " digits";
        add("packed ADD" + digits, "ours", [n](benchmark::State &s) { ours(s, _zvkcBCD_ADD_Pckd, n, n, n); });
        add("packed ADD" + digits, "peer:decNumberAdd",
            [n](benchmark::State &s) { decNumbers(s, decNumberAdd, n, n); });
        add("packed ADD" + digits, "peer:_Decimal128", [n](benchmark::State &s) { decimalFloat(s, n); });
        add("packed ADD" + digits, "peer:a plain loop over nibbles", [n](benchmark::State &s) { byteLoop(s, n); });
        add("packed SUB" + digits, "ours", [n](benchmark::State &s) { ours(s, _zvkcBCD_SUB_Pckd, n, n, n); });
        add("packed SUB" + digits, "peer:decNumberSubtract",
            [n](benchmark::State &s) { decNumbers(s, decNumberSubtract, n, n); });
        add("packed compare" + digits, "ours", [n](benchmark::State &s) { compareOurs(s, n); });
        add("packed compare" + digits, "peer:decNumberCompare",
            [n](benchmark::State &s) { decNumbers(s, decNumberCompare, n, n); });
        add("packed shift by 4" + digits, "ours", [n](benchmark::State &s) { shiftOurs(s, n); });
        add("packed shift by 4" + digits, "peer:a call and memcpy", [n](benchmark::State &s) { copyPeer(s, n); });
    }
    add("packed MPY, 15 by 15 into 31", "ours", [](benchmark::State &s) { ours(s, _zvkcBCD_MPY_Pckd, 15, 15, 31); });
    add("packed MPY, 15 by 15 into 31", "peer:decNumberMultiply",
        [](benchmark::State &s) { decNumbers(s, decNumberMultiply, 15, 15); });
    add("packed DIV, 31 by 15", "ours", [](benchmark::State &s) { ours(s, _zvkcBCD_DIV_Pckd, 31, 15, 31); });
    add("packed DIV, 31 by 15", "peer:decNumberDivideInteger",
        [](benchmark::State &s) { decNumbers(s, decNumberDivideInteger, 31, 15); });
    add("packed DIV, 15 by 7", "ours", [](benchmark::State &s) { ours(s, _zvkcBCD_DIV_Pckd, 15, 7, 15); });
    add("packed DIV, 15 by 7", "peer:decNumberDivideInteger",
        [](benchmark::State &s) { decNumbers(s, decNumberDivideInteger, 15, 7); });
}

} // namespace

int main(int argc, char **argv)
{
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
