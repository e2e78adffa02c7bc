// FUNCTION NUMVAL and NUMVAL-C.
//
// One scanner engine checks the text against the grammar of the function, which is a table of
// states (base/scan_table.h), and gathers sign and digits. Single-byte and national texts differ in
// how the engine reads a character. At the end the digits become a number: up to what a format
// holds exactly by one division, as "-12.50" is -1250 / 100; beyond that through the C library's
// routine for texts, with the digits as a clean text ("-12.50"), so both ways round alike.
//
// A byte that does not fit is reported, once, with its place. The scan then takes nothing more from
// the text, and what was read so far is converted.
#include <cstring>

#include "base/quiet_floats.h"
#include "frame/message_calls.h"
#include "intrinsics/float_text.h"
#include "intrinsics/scan_table.h"
#include "kvr2/float_conversions.h"
#include "kvr2/numval.h"

namespace {

using namespace floats;

enum CharacterClass : uint8_t { Space, Sign, Digit, Point, LetterC, LetterD, LetterR, LetterB, Comma, Other };

// The decimal point is told apart before this table: the other one of "." and "," is a comma.
constexpr std::array<uint8_t, 256> kClass = [] {
    std::array<uint8_t, 256> table{};
    table.fill(Other);
    for (unsigned c = '0'; c <= '9'; c++) table[c] = Digit;
    table[' '] = Space;
    table['+'] = table['-'] = Sign;
    table['C'] = LetterC;
    table['D'] = LetterD;
    table['R'] = LetterR;
    table['B'] = LetterB;
    table[','] = table['.'] = Comma;
    return table;
}();

// Actions: S the byte is the sign, M the sign is minus, D a digit, P the decimal point, C a
// currency sign may begin here; the state after it is two further on, and the one in the table is
// not entered.
constexpr auto kNumval = scanTable<15, 10>({
    // space sign digit point C D R B comma other
    "0  1S  2D 5P -  -  -   -   - -", // 0: start
    "1  -   3D 6P -  -  -   -   - -", // 1: leading sign
    "4  11S 2D 5P 12 13 -   -   - -", // 2: integer, no sign
    "14 -   3D 6P -  -  -   -   - -", // 3: integer, signed
    "4  11S -  -  12 13 -   -   - -", // 4: spaces after integer
    "7  11S 8D -  12 13 -   -   - -", // 5: point, no sign
    "14 -   9D -  -  -  -   -   - -", // 6: point, signed
    "7  11S -  -  12 13 -   -   - -", // 7: spaces after point
    "10 11S 8D -  12 13 -   -   - -", // 8: fraction, no sign
    "14 -   9D -  -  -  -   -   - -", // 9: fraction, signed
    "10 11S -  -  12 13 -   -   - -", // 10: spaces after fraction
    "14 -   -  -  -  -  -   -   - -", // 11: trailing sign
    "-  -   -  -  -  -  14M -   - -", // 12: after C
    "-  -   -  -  -  -  -   14M - -", // 13: after D
    "14 -   -  -  -  -  -   -   - -", // 14: end
});

constexpr auto kNumvalC = scanTable<21, 10>({
    // space sign digit point C D R B comma other
    "0  1S  6D  11P 2C 2C 2C  2C  - 2C", // 0: start
    "1  -   7D  12P 3C 3C 3C  3C  - 3C", // 1: leading sign
    "-  -   -   -   -  -  -   -   - -",  // 2: not entered
    "-  -   -   -   -  -  -   -   - -",  // 3: not entered
    "4  17S 6D  11P 18 19 -   -   - -",  // 4: after currency
    "5  -   7D  12P -  -  -   -   - -",  // 5: signed, after currency
    "10 17S 6D  11P 18 19 -   -   8 -",  // 6: integer
    "20 -   7D  12P -  -  -   -   9 -",  // 7: integer, signed
    "-  -   6D  -   -  -  -   -   - -",  // 8: after comma
    "-  -   7D  -   -  -  -   -   - -",  // 9: after comma, signed
    "10 17S -   -   18 19 -   -   - -",  // 10: spaces after integer
    "13 17S 14D -   18 19 -   -   - -",  // 11: point
    "20 -   15D -   -  -  -   -   - -",  // 12: point, signed
    "13 17S -   -   18 19 -   -   - -",  // 13: spaces after point
    "16 17S 14D -   18 19 -   -   - -",  // 14: fraction
    "20 -   15D -   -  -  -   -   - -",  // 15: fraction, signed
    "16 17S -   -   18 19 -   -   - -",  // 16: spaces after fraction
    "20 -   -   -   -  -  -   -   - -",  // 17: trailing sign
    "-  -   -   -   -  -  20M -   - -",  // 18: after C
    "-  -   -   -   -  -  -   20M - -",  // 19: after D
    "20 -   -   -   -  -  -   -   - -",  // 20: end
});

// How characters lie in a text. National ones count by their low-order byte, whatever the other one
// is: a circled digit may pass for a digit. It stays.
struct SingleByteText {
    static constexpr int64_t width = 1;
};
struct NationalText {
    static constexpr int64_t width = 2;
};

struct Currency {
    int64_t length = 0; // in bytes
    const uint8_t *string = nullptr;
};

constexpr int kMostDigits = 63;

// What a scan gathers.
struct Number {
    char text[kMostDigits + 3]; // sign, or blank; digits, perhaps with a point; NUL
    int digits = 0;
    int fraction = -1;  // digits after the point; -1 before it was seen
    uint64_t value = 0; // of the first 19 digits
};

[[gnu::cold, gnu::noinline]] void badCharacter(uint8_t byte, int64_t position, const char *function)
{
    msg::badCharacter(byte, static_cast<int>(position), function);
}

// Whether the currency sign stands at a place; its length in bytes, or 0.
template <class Text>
int64_t currencyAt(const ZvkNumvalParameters &parameters, const Currency &currency, const uint8_t *at, int64_t left)
{
    switch (parameters.currencyKind) {
    case ZVK_CURRENCY_SIGN:
        return *at == parameters.currencySign ? Text::width : 0;
    case ZVK_CURRENCY_STRING: {
        int64_t length = currency.length - currency.length % Text::width;
        if (length <= 0 || length > left || memcmp(at, currency.string, static_cast<size_t>(length)) != 0) return 0;
        return length;
    }
    default:
        return 0;
    }
}

template <class Text, class Table>
Number scan(const Table &table, const ZvkNumvalParameters &parameters, const Currency &currency, int64_t length,
            const uint8_t *string, const char *function)
{
    Number number;
    number.text[0] = ' ';
    char *to = number.text + 1;
    uint8_t state = 0;
    const uint8_t point = parameters.decimalPoint;
    for (int64_t at = 0; at <= length - Text::width;) {
        const uint8_t byte = string[at];
        if (__builtin_expect(number.digits == kMostDigits, 0)) msg::numberOutOfRange(function);
        if (__builtin_expect(state == kScanError, 0)) {
            if (number.digits != kMostDigits) break;
            at += Text::width;
            continue;
        }
        const ScanStep step = table[state][byte == point ? uint8_t{Point} : kClass[byte]];
        state = step.next;
        int64_t width = Text::width;
        switch (step.action) {
        case 'D':
            if (number.digits == kMostDigits) break;
            *to++ = static_cast<char>(byte);
            number.digits++;
            if (number.digits <= 19) number.value = number.value * 10 + (byte - unsigned{'0'});
            number.fraction += number.fraction >= 0;
            break;
        case 'P':
            *to++ = '.';
            number.fraction = 0;
            break;
        case 'S':
            number.text[0] = static_cast<char>(byte);
            break;
        case 'M':
            number.text[0] = '-';
            break;
        case 'C':
            if (int64_t matched = currencyAt<Text>(parameters, currency, string + at, length - at)) {
                width = matched;
                state += 2;
            } else {
                state = kScanError;
                badCharacter(byte, at / Text::width + 1, function);
            }
            break;
        case '-':
            badCharacter(byte, at / Text::width + 1, function);
            break;
        default:
            break;
        }
        at += width;
    }
    *to = 0;
    if (number.digits == 0 || length <= 0) msg::noDigits(function);
    return number;
}

// A currency string must not begin or end with a blank nor hold what a number is made of.
template <class Text>
void checkCurrency(const ZvkNumvalParameters &parameters, const Currency &currency, const char *function)
{
    if (parameters.currencyKind != ZVK_CURRENCY_STRING || currency.length < Text::width) return;
    const int64_t count = currency.length / Text::width;
    auto byte = [&](int64_t i) { return currency.string[i * Text::width]; };
    auto report = [&](uint8_t bad, int64_t index) { msg::badCurrency(bad, static_cast<int>(index + 1), function); };
    if (byte(0) == ' ') return report(' ', 0);
    for (int64_t i = 0; i < count; i++) {
        uint8_t kind = kClass[byte(i)];
        if (kind == Digit || kind == Sign || kind == Comma) return report(byte(i), i);
    }
    int64_t last = count - 1;
    while (byte(last) == ' ') last--; // the first is none
    if (last < count - 1) report(' ', last + 1);
}

template <class F>
typename F::Value valueOf(Number &number, const char *function)
{
    using Value = typename F::Value;
    const bool negative = number.text[0] == '-' && number.digits != 0;
    const auto places = static_cast<size_t>(number.fraction > 0 ? number.fraction : 0);
    if constexpr (std::is_same_v<F, Binary64>) {
        if (number.digits <= 19 && number.value <= uint64_t{1} << 53) { // nothing can come of this
            double value = static_cast<double>(static_cast<int64_t>(number.value)) / kPower64[places];
            return negative ? -value : value;
        }
    } else if (number.digits <= 19) {
        return quietly([&] {
            Value value = static_cast<Value>(number.value) / F::power(static_cast<int64_t>(places));
            return negative ? -value : value;
        });
    }
    bool outOfRange = false;
    Value value = quietly([&] { return parseText<F>(number.text, outOfRange); });
    if (outOfRange) msg::numberOutOfRange(function);
    return value;
}

template <class F, class Text>
typename F::Value numval(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string)
{
    Number number = scan<Text>(kNumval, *parameters, {}, length, string, "NUMVAL");
    return valueOf<F>(number, "NUMVAL");
}

template <class F, class Text>
typename F::Value numvalC(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string,
                          int64_t currencyLength, const uint8_t *currency)
{
    checkCurrency<Text>(*parameters, {currencyLength, currency}, "NUMVAL-C");
    Number number = scan<Text>(kNumvalC, *parameters, {currencyLength, currency}, length, string, "NUMVAL-C");
    return valueOf<F>(number, "NUMVAL-C");
}

} // namespace

#define NUMVAL(entry, F, Text, Result, expression)                                                                     \
    void entry(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string, Result *result)           \
    {                                                                                                                  \
        auto value = numval<floats::F, Text>(parameters, length, string);                                              \
        *result = expression;                                                                                          \
    }
#define NUMVAL_C(entry, F, Text, Result, expression)                                                                   \
    void entry(const ZvkNumvalParameters *parameters, int64_t length, const uint8_t *string, int64_t currencyLength,   \
               const uint8_t *currency, Result *result)                                                                \
    {                                                                                                                  \
        auto value = numvalC<floats::F, Text>(parameters, length, string, currencyLength, currency);                   \
        *result = expression;                                                                                          \
    }

NUMVAL(_Dmr_numval, Binary64, SingleByteText, ZvkFloat64Item, value)
NUMVAL(_zvkcNumval, Binary64, SingleByteText, ZvkFloat64Item, value)
NUMVAL(_zvkcNumvalFloat8, Binary64, SingleByteText, ZvkFloat64Item, value)
NUMVAL(_Dmr_numval_float16, Binary128, SingleByteText, ZvkFloat128Item, value)
NUMVAL(_zvkcNumval16, Binary128, SingleByteText, ZvkFloat128Item, value)
NUMVAL(_zvkcNumvalFloat16, Binary128, SingleByteText, ZvkFloat128Item, value)
NUMVAL(_Dmr_numval_decfloat16, Decimal128, SingleByteText, ZvkDecimal128Item, value)
NUMVAL_C(_Dmr_numval_c, Binary64, SingleByteText, ZvkFloat64Item, value)
NUMVAL_C(_zvkcNumvalC, Binary64, SingleByteText, ZvkFloat64Item, value)
NUMVAL_C(_zvkcNumvalCFloat8, Binary64, SingleByteText, ZvkFloat64Item, value)
NUMVAL_C(_Dmr_numval_c_float16, Binary128, SingleByteText, ZvkFloat128Item, value)
NUMVAL_C(_zvkcNumvalC16, Binary128, SingleByteText, ZvkFloat128Item, value)
NUMVAL_C(_zvkcNumvalCFloat16, Binary128, SingleByteText, ZvkFloat128Item, value)
NUMVAL_C(_Dmr_numval_c_decfloat16, Decimal128, SingleByteText, ZvkDecimal128Item, value)

// The 8-byte national forms are the 16-byte ones, narrowed.
NUMVAL(_zvkuNumval, Binary128, NationalText, ZvkFloat64Item, _zvkc_CONV_BFlt128_To_LFlt(value))
NUMVAL(_zvkuNumval16, Binary128, NationalText, ZvkFloat128Item, value)
NUMVAL_C(_zvkuNumvalC, Binary128, NationalText, ZvkFloat64Item, _zvkc_CONV_BFlt128_To_LFlt(value))
NUMVAL_C(_zvkuNumvalC16, Binary128, NationalText, ZvkFloat128Item, value)

// Names that compiled programs refer to and that do nothing.
void *_Dmr_numval_decpacked3232(const ZvkNumvalParameters *, int64_t, const uint8_t *, void *result) { return result; }
void *_Dmr_numval_deczoned6332(const ZvkNumvalParameters *, int64_t, const uint8_t *, void *result) { return result; }
void *_Dmr_numval_c_decpacked3232(const ZvkNumvalParameters *, int64_t, const uint8_t *, int64_t, const uint8_t *,
                                  void *result)
{
    return result;
}
void *_Dmr_numval_c_deczoned6332(const ZvkNumvalParameters *, int64_t, const uint8_t *, int64_t, const uint8_t *,
                                 void *result)
{
    return result;
}
