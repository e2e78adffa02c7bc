// FUNCTION FACTORIAL from a table of packed numbers, computed by the compiler.
#include <cstring>

#include "base/quiet_floats.h"
#include "decimal/float_forms.h"
#include "intrinsics/function_errors.h"
#include "kvr2/mathematics.h"

namespace {

constexpr int32_t kMost = 50, kMostShort = 29; // the last that have 65 and 31 digits
constexpr size_t kRowBytes = 33;               // 65 digits

using Row = std::array<uint8_t, kRowBytes>;

constexpr std::array<Row, kMost + 1> kRows = [] {
    std::array<Row, kMost + 1> rows{};
    std::array<unsigned, 2 * kRowBytes - 1> digits{};
    digits.back() = 1;
    for (unsigned n = 0; n < rows.size(); n++) {
        unsigned carry = 0;
        for (size_t i = digits.size(); i-- > 0;) {
            unsigned value = digits[i] * (n ? n : 1) + carry;
            digits[i] = value % 10;
            carry = value / 10;
        }
        for (size_t i = 0; i < digits.size(); i++)
            rows[n][i / 2] = static_cast<uint8_t>(rows[n][i / 2] | digits[i] << (i % 2 ? 0 : 4));
        rows[n].back() |= 0x0C;
    }
    return rows;
}();

// Null when there is none.
const Row *rowOf(int32_t n, bool isShort)
{
    if (n < 0) {
        reportArgument(msg::negativeArgument, "FACTORIAL");
        return nullptr;
    }
    if (isShort && n > kMostShort) reportTooLarge("FACTORIAL", kMostShort);
    return n <= kMost ? &kRows[static_cast<size_t>(n)] : nullptr;
}

unsigned digitOf(const Row &row, size_t i) { return i % 2 ? row[i / 2] & 0x0F : row[i / 2] >> 4; }

} // namespace

uint8_t *_Dmr_factorial(uint8_t *destination, int32_t n)
{
    if (const Row *row = rowOf(n, false)) memcpy(destination, row->data() + 1, kRowBytes - 1);
    return destination;
}

uint8_t *_Dmr_factorial_deczoned630(uint8_t *destination, int32_t n)
{
    if (const Row *row = rowOf(n, false))
        for (size_t i = 0; i < 63; i++) destination[i] = static_cast<uint8_t>('0' + digitOf(*row, i + 2));
    return destination;
}

const uint8_t *_Dmr_factorial_decpacked320(int32_t n)
{
    const Row *row = rowOf(n, true);
    return row ? row->data() + kRowBytes - 16 : nullptr;
}

ZvkDecimal128 _Dmr_factorial_decfloat16(int32_t n)
{
    const Row *row = rowOf(n, true);
    return quietly([row]() -> ZvkDecimal128 {
        if (!row) return 0;
        floats::u128 value = 0; // of the first 38 digits; the others matter to no rounding of 34
        int places = 0;
        for (size_t i = 0; i < 2 * kRowBytes - 1; i++) {
            if (value < floats::kIntegerPower[37])
                value = value * 10 + digitOf(*row, i);
            else
                places++;
        }
        return floats::decimal128Of(value) * floats::Decimal128::power(places);
    });
}
