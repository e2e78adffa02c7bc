// External floating point ("+1.234E+05") to and from floating-point items.
//
// Out of the external form a table (base/scan_table.h) copies what belongs to a number into a clean
// text and passes over the rest, and the C library's routine makes a number of it. Into it the
// number is printed with the picture's digits and the point is moved to the picture's place:
//
//     1234.5 in 99.999E+99:   +1.2345E+03  ->  +12.345E+02
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <quadmath.h>

#include "base/bytes.h"
#include "base/quiet_floats.h"
#include "frame/message_calls.h"
#include "intrinsics/float_text.h"
#include "intrinsics/scan_table.h"
#include "kvr2/external_floats.h"

namespace {

using namespace floats;

constexpr uint32_t kMsgTooLarge = 53;

// ---- Out of the external form.

enum CharacterClass : uint8_t { Space, Sign, Digit, Point, LetterE, Other, LetterR };

constexpr std::array<uint8_t, 256> kClass = [] {
    std::array<uint8_t, 256> table{};
    table.fill(Other);
    for (unsigned c = '0'; c <= '9'; c++) table[c] = Digit;
    table[' '] = Space;
    table['+'] = table['-'] = Sign;
    table[','] = table['.'] = Point;
    table['E'] = table['e'] = LetterE;
    table['R'] = LetterR;
    return table;
}();

// Actions: S store, D a digit before the point, P plain digit, H hold the exponent's sign, X the
// exponent's first digit, Q stop.
constexpr auto kScan = scanTable<10, 6>({
    // space sign digit point E other
    "0  1S 2D 3S 9Q 0",  // 0: start
    "1  1  2D 3S 9Q 1",  // 1: after the sign
    "2  2  2D 3S 5  2",  // 2: digits before the point
    "3  3  4P 3  5  3",  // 3: after the point
    "4  4  4P 4  5  4",  // 4: digits after the point
    "5  6H 7X 5  5  5",  // 5: after E
    "6  6H 7X 6  6  6",  // 6: after the exponent's sign
    "7  7  8S 7  7  7",  // 7: first digit of the exponent
    "8  8  8S 8  8  8",  // 8: second digit
    "9Q 9Q 9Q 9Q 9Q 9Q", // 9: stop
});

// The letter R has a class of its own, one past the last column: it reads the next row's first
// entry. It stays.
ScanStep stepOf(uint8_t state, uint8_t byte)
{
    uint8_t column = kClass[byte];
    return column == LetterR ? kScan[state + size_t{1}][Space] : kScan[state][column];
}

int lengthOf(int16_t length) { return length < 0 ? -length : length; }

// The clean text: no longer than the item and a few more for sign, point and exponent. False
// without a digit.
bool cleanText(const ZvkExternalFloatSource &picture, const uint8_t *item, char *to)
{
    const int assumed = picture.length < 0 ? picture.integerDigits : -1;
    int digits = 0;
    char exponentSign = '+';
    uint8_t state = 0;
    char *const sign = to; // a blank when the item has none
    *to++ = ' ';
    for (int i = 0; i < lengthOf(picture.length); i++) {
        const auto byte = static_cast<char>(item[i]);
        const ScanStep step = stepOf(state, item[i]);
        state = step.next;
        switch (step.action) {
        case 'S':
            if (byte == '+' || byte == '-')
                *sign = byte;
            else
                *to++ = byte == ',' ? '.' : byte;
            break;
        case 'D':
            if (digits == assumed) {
                *to++ = '.';
                state = 3;
            }
            [[fallthrough]];
        case 'P':
            *to++ = byte;
            digits++;
            break;
        case 'H':
            exponentSign = byte;
            break;
        case 'X':
            *to++ = 'E';
            *to++ = exponentSign;
            *to++ = byte;
            break;
        default:
            break;
        }
        if (step.action == 'Q') break;
    }
    *to = 0;
    return digits != 0;
}

template <class Value>
Value largest()
{
    if constexpr (std::is_same_v<Value, float>)
        return __FLT_MAX__;
    else if constexpr (std::is_same_v<Value, double>)
        return __DBL_MAX__;
    else
        return FLT128_MAX;
}

// Narrows into the item; true when the value is beyond its range.
template <class To, class From>
bool storeNarrowed(void *result, typename From::Value value)
{
    auto narrow = static_cast<typename To::Value>(value);
    bool beyond = !To::isFinite(narrow) && !To::isNan(narrow);
    if (beyond) {
        if constexpr (To::isDecimal)
            narrow = To::most();
        else
            narrow = largest<typename To::Value>();
        if (From::signBit(value)) narrow = -narrow;
    }
    memcpy(result, &narrow, sizeof narrow);
    return beyond;
}

struct BinaryWidths {
    using Parsed = Binary128;
    using Four = Binary32;
    using Eight = Binary64;
    using Sixteen = Binary128;
};
struct DecimalWidths {
    using Parsed = Decimal128;
    using Four = Decimal32;
    using Eight = Decimal64;
    using Sixteen = Decimal128;
};

template <class Widths>
bool convert(const ZvkExternalFloatSource &picture, const uint8_t *item, void *result)
{
    using Parsed = typename Widths::Parsed;
    char text[INT16_MAX + 8];
    typename Parsed::Value value = 0;
    if (cleanText(picture, item, text)) {
        bool outOfRange;
        value = parseText<Parsed>(text, outOfRange);
    }
    switch (picture.width) {
    case 4:
        return storeNarrowed<typename Widths::Four, Parsed>(result, value);
    case 8:
        return storeNarrowed<typename Widths::Eight, Parsed>(result, value);
    default:
        return storeNarrowed<typename Widths::Sixteen, Parsed>(result, value);
    }
}

template <class Widths>
int32_t fromExternal(const ZvkExternalFloatSource *picture, const uint8_t *item, void *result, int32_t report)
{
    if (!quietly([&] { return convert<Widths>(*picture, item, result); })) return 0;
    if (!report) return kMsgTooLarge;
    msg::floatTooLarge();
    return 0;
}

// ---- Into the external form.

constexpr int kMostDigits = 34; // of a binary 128 number

// "+d.ddddE+dd" into the pieces that the picture puts together again.
struct Printed {
    char text[48];
    char digits[kMostDigits + 1];
    const char *exponent; // after the "E": sign and digits
};

void print(ZvkFloat128 value, int digits, Printed &printed)
{
    quadmath_snprintf(printed.text, sizeof printed.text, "%+.*QE", digits - 1, value);
    int n = 0;
    const char *at = printed.text + 1;
    for (; *at != 'E'; at++)
        if (*at >= '0' && *at <= '9') printed.digits[n++] = *at;
    printed.exponent = at + 1;
}

// Of the picture: the text, cut to the item or filled with blanks.
struct Output {
    uint8_t *item;
    int length;
    int at = 0;

    void put(char c)
    {
        if (at < length) item[at++] = static_cast<uint8_t>(c);
    }
    void put(const char *text)
    {
        while (*text) put(*text++);
    }
};

char signFor(uint8_t wanted, char sign) { return wanted == '-' && sign == '+' ? ' ' : sign; }

void toExternal(const ZvkExternalFloatTarget &picture, ZvkFloat128 value, uint8_t *item)
{
    Output out{item, lengthOf(picture.length)};
    memset(item, ' ', static_cast<size_t>(out.length));
    if (!Binary128::isFinite(value)) {
        out.put(Binary128::signBit(value) ? '-' : '+');
        return out.put(Binary128::isNan(value) ? "NAN" : "INFINITY");
    }

    const int integer = picture.integerDigits > 0 ? picture.integerDigits : 0;
    int digits = integer + (picture.fractionDigits > 0 ? picture.fractionDigits : 0);
    if (digits < 1) digits = 1;
    const int printedDigits = digits < kMostDigits ? digits : kMostDigits;
    Printed printed;
    print(value, printedDigits, printed);

    // Three characters: an exponent of three or four digits loses its last ones. A picture without
    // integer digits keeps the exponent of one, so that its items are a tenth. Both stay.
    char exponent[16] = {printed.exponent[0], printed.exponent[1], printed.exponent[2], 0};
    if (value != 0 && integer > 1)
        snprintf(exponent, sizeof exponent, "%+.2i", static_cast<int>(strtol(exponent, nullptr, 10)) - (integer - 1));

    out.put(signFor(picture.mantissaSign, printed.text[0]));
    // An assumed point has no place in the item, nor has one without decimal places where there is
    // no room.
    const bool point = picture.length > 0 && out.length > digits + 5;
    for (int i = 0; i < digits; i++) {
        if (i == integer && point) out.put(static_cast<char>(picture.decimalPoint));
        out.put(i < printedDigits ? printed.digits[i] : '0');
    }
    if (digits <= integer && point) out.put(static_cast<char>(picture.decimalPoint));
    out.put('E');
    out.put(signFor(picture.exponentSign, exponent[0]));
    out.put(exponent + 1);
}

void refuse(const char *text, int16_t length, int integerDigits, int fractionDigits)
{
    fprintf(stderr, "%s 9(%d)%c9(%d)E99\n", text, integerDigits, length < 0 ? 'V' : '.', fractionDigits);
}

} // namespace

int32_t _zvkcConvExtFltToIntFlt(const ZvkExternalFloatSource *descriptor, const uint8_t *item, void *result,
                                int32_t report)
{
    return fromExternal<BinaryWidths>(descriptor, item, result, report);
}

int32_t _zvkcConvExtFltToDFlt(const ZvkExternalFloatSource *descriptor, const uint8_t *item, void *result,
                              int32_t report)
{
    return fromExternal<DecimalWidths>(descriptor, item, result, report);
}

int32_t _Dmr_convertExtToIntFloat(const ZvkExternalFloatSource *descriptor, const uint8_t *item, void *result,
                                  int32_t report)
{
    if (descriptor->width != 4 && descriptor->width != 8 && descriptor->width != 16) {
        refuse("_Dmr_convertExtToIntFloat not implemented", descriptor->length, descriptor->integerDigits,
               descriptor->fractionDigits);
        return 1;
    }
    return fromExternal<BinaryWidths>(descriptor, item, result, report);
}

void _zvkcConvIntFltToExtFlt(const ZvkExternalFloatTarget *descriptor, const ZvkFloat64Item *value, uint8_t *item)
{
    quietly([&] { toExternal(*descriptor, static_cast<ZvkFloat128>(*value), item); });
}

void _zvkcConvIntEFltToExtFlt(const ZvkExternalFloatTarget *descriptor, const ZvkFloat128Item *value, uint8_t *item)
{
    quietly([&] { toExternal(*descriptor, *value, item); });
}

void _Dmr_convertIntToExtFloat(const ZvkExternalFloatTarget *descriptor, const ZvkFloat128Item *value, uint8_t *item)
{
    const int digits = descriptor->integerDigits + descriptor->fractionDigits;
    if (digits < 1 || digits > kMostDigits) {
        refuse("_Dmr_convertIntToExtFloat not implemented.", descriptor->length, descriptor->integerDigits,
               descriptor->fractionDigits);
        return;
    }
    _zvkcConvIntEFltToExtFlt(descriptor, value, item);
}
