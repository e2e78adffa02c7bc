// Faults that these tests are there to catch: an environment variable that sets the wrong bits or
// is read twice; a byte that can carry a sign decoded wrongly; a validator that passes or refuses
// the wrong bytes, above all where its words begin and end; zero tests and moves that look beyond
// an item, cut on the wrong side, lose or keep the wrong sign.
#include "decimal/mode.h"
#include "decimal/packed.h"
#include "decimal/validation.h"
#include "decimal/zoned.h"
#include "items.h"
#include "kvr2/decimal_conversions.h"
#include "support/child.h"

namespace {

// ---- mode ----

KVR2_PIECE(print_mode)
{
    uint8_t item[] = {0x1C};
    EXPECT_EQ(zvkBcdMode, 0xFF00u);
    zvkBcdCheckPacked(item, 1, kCheckArithmetic);
    unsigned first = zvkBcdMode;
    setenv("COBOL_BCD_NOVALIDATE", "0x7F", 1);
    zvkBcdCheckPacked(item, 1, kCheckArithmetic);
    printf("%x %s", first, zvkBcdMode == first ? "kept" : "read again");
}

TEST(DecimalMode, ComesFromTheEnvironmentOnce)
{
    using Env = std::vector<std::pair<std::string, std::optional<std::string>>>;
    struct {
        Env env;
        const char *word;
    } cases[] = {
        {{}, "0"},
        {{{"COBOL_BCD_NOVALIDATE", "0x41"}}, "41"},
        {{{"COBOL_BCD_NOVALIDATE", ""}}, "0"},
        {{{"COBOL_BCD_NOVALIDATE", "017777"}}, "ff"},
        {{{"COBOL_BCD_NOVALIDATE", "words"}}, "0"},
        {{{"COBOL_BCD_NOVALIDATE", "255"}, {"COBOL_BCD_SAFE", "0"}}, "f4"},
        {{{"COBOL_BCD_NOVALIDATE", "255"}, {"COBOL_BCD_FAST", "no"}}, "a8"},
        {{{"COBOL_BCD_SAFE", "1"}, {"COBOL_BCD_FAST", "1"}}, "8"},
        {{{"COBOL_BCD_DEBUG", "1"}, {"COBOL_BCD_EBCDIC", "1"}, {"COBOL_BCD_SAFE", ""}}, "180"},
    };
    for (auto &test : cases) {
        Env env = {
            {"COBOL_BCD_NOVALIDATE", std::nullopt}, {"COBOL_BCD_SAFE", std::nullopt}, {"COBOL_BCD_FAST", std::nullopt}};
        env.insert(env.end(), test.env.begin(), test.env.end());
        ChildRun run = runPiece("print_mode", {.env = env});
        EXPECT_EQ(run.out, std::string(test.word) + " kept");
    }
}

// ---- sign bytes ----

TEST(ZonedSignByte, DecodesByTheTable)
{
    std::string plus = "{ABCDEFGHI";
    std::string minus = "}JKLMNOPQR";
    for (unsigned byte = 0; byte < 256; byte++) {
        unsigned digit = byte & 15;
        bool negative = digit < 10 && (byte >> 4 == 7 || byte >> 4 == 13);
        auto letter = static_cast<char>(byte);
        if (size_t at = plus.find(letter); at != plus.npos) digit = static_cast<unsigned>(at), negative = false;
        if (size_t at = minus.find(letter); at != minus.npos) digit = static_cast<unsigned>(at), negative = true;
        if (byte == 0 || byte == ' ') digit = 0;
        EXPECT_EQ(bcd::overpunchDigit(static_cast<uint8_t>(byte)), digit) << byte;
        EXPECT_EQ(bcd::overpunchIsNegative(static_cast<uint8_t>(byte)), negative) << byte;
    }
    for (uint8_t digit = 0; digit < 10; digit++) {
        EXPECT_EQ(bcd::letterDigit(digit, false), static_cast<uint8_t>(plus[digit]));
        EXPECT_EQ(bcd::letterDigit(digit, true), static_cast<uint8_t>(minus[digit]));
    }
}

// ---- validation ----

// Which bytes have a high nibble that the scan does not see: the rightmost of every word of more
// than one byte. `scanned` bytes before the last.
std::vector<bool> blindHighNibbles(int scanned)
{
    std::vector<bool> blind(static_cast<size_t>(scanned));
    int end = scanned;
    for (int width : {8, 4, 2})
        for (; end >= width; end -= width) blind[static_cast<size_t>(end) - 1] = true;
    return blind;
}

TEST(CheckPacked, SeesEveryNibbleButTheTopOneOfAWord)
{
    Place place;
    for (int n = 1; n <= 63; n += 2) {
        Bytes good = packedItem(std::string(static_cast<size_t>(n), '9'), 0x0F);
        auto blind = blindHighNibbles(n / 2);
        for (GuardedItem::Place side : {GuardedItem::AtStart, GuardedItem::AtEnd}) {
            for (int mode : {kCheckArithmetic, kCheckStrict})
                EXPECT_EQ(zvkBcdCheckPacked(place.put(good, side), n, mode), 0) << n;
            for (size_t at = 0; at + 1 < good.size(); at++) {
                for (unsigned nibble = 10; nibble < 16; nibble++) {
                    Bytes low = good, high = good;
                    low[at] = static_cast<uint8_t>(0x90 | nibble);
                    high[at] = static_cast<uint8_t>(nibble << 4 | 9);
                    ASSERT_EQ(zvkBcdCheckPacked(place.put(low, side), n, kCheckStrict), 1) << n << " " << at;
                    ASSERT_EQ(zvkBcdCheckPacked(place.put(high, side), n, kCheckStrict), blind[at] ? 0 : 1)
                        << n << " " << at;
                }
            }
        }
    }
}

TEST(CheckPacked, LastByteAndLeadingZeros)
{
    struct {
        const char *item;
        int arithmetic, strict;
    } cases[] = {
        {"0c", 0, 0},     {"00", 0, 0},     {"05", 1, 1},     {"ac", 1, 1},   {"a0", 0, 0},   {"9a", 0, 0},
        {"9f", 0, 0},     {"99", 1, 1},     {"000c", 0, 0},   {"0000", 0, 1}, {"0010", 0, 1}, {"0110", 1, 1},
        {"00010c", 0, 0}, {"000100", 1, 1}, {"0000a0", 0, 1}, {"1a0c", 1, 1}, {"a10c", 1, 1}, {"12a30c", 0, 0},
        {"a2130c", 1, 1}, {"00a30c", 1, 0}, // the zero byte that arithmetic skips makes the scan narrower
    };
    for (auto &test : cases) {
        Bytes item = fromHex(test.item);
        auto n = static_cast<int>(2 * item.size() - 1);
        EXPECT_EQ(zvkBcdCheckPacked(item.data(), n, kCheckArithmetic), test.arithmetic) << test.item;
        EXPECT_EQ(zvkBcdCheckPacked(item.data(), n, kCheckStrict), test.strict) << test.item;
        EXPECT_EQ(zvkBcdCheckPacked(item.data(), n - 1, kCheckStrict), test.strict) << test.item;
    }
}

bool goodSignByte(unsigned byte)
{
    static const std::string letters = std::string("{}ABCDEFGHIJKLMNOPQR ") + '\0';
    if (letters.find(static_cast<char>(byte)) != letters.npos) return true;
    static const std::string zones = "\x3\x7\xC\xD\xF";
    return (byte & 15) < 10 && zones.find(static_cast<char>(byte >> 4)) != zones.npos;
}

TEST(CheckZoned, SeesEveryByteAtEveryAlignment)
{
    Place place;
    for (int n = 1; n <= 40; n++) {
        for (unsigned alignment = 0; alignment < 8; alignment++) {
            Bytes good(static_cast<size_t>(n), '7');
            for (size_t at = 0; at<good.size(); at += n> 10 ? 3 : 1) {
                bool end = at == 0 || at + 1 == good.size();
                for (unsigned byte = 1; byte < 256; byte++) {
                    Bytes item = good;
                    item[at] = static_cast<uint8_t>(byte);
                    bool wanted = end ? goodSignByte(byte) : byte >= '0' && byte <= '9';
                    ASSERT_EQ(zvkBcdCheckZoned(place.putAligned(item, alignment), n, kCheckStrict), wanted ? 0 : 1)
                        << n << " digits, byte " << at << " is " << byte << " at alignment " << alignment;
                }
            }
        }
    }
}

TEST(CheckZoned, NulBetweenDigitsPassesOnlyWhereTheScanGoesByBytes)
{
    Place place;
    Bytes item = {'1', '2', 0, '4', '5'}; // the scanned part is "2 NUL 4", its end at address + 4
    EXPECT_EQ(zvkBcdCheckZoned(place.putAligned(item, 1), 5, kCheckStrict),
              1); // end 5: "4" alone, then "2 NUL" as two bytes
    EXPECT_EQ(zvkBcdCheckZoned(place.putAligned(item, 0), 5, kCheckStrict), 1); // end 4: two bytes hold the NUL
    Bytes three = {'1', 0, '3'};
    for (unsigned alignment = 0; alignment < 8; alignment++)
        EXPECT_EQ(zvkBcdCheckZoned(place.putAligned(three, alignment), 3, kCheckStrict), 0);
    Bytes four = {'1', 0, '3', '4'}; // one word of two bytes when its end is even, else two single bytes
    for (unsigned alignment = 0; alignment < 8; alignment++)
        EXPECT_EQ(zvkBcdCheckZoned(place.putAligned(four, alignment), 4, kCheckStrict),
                  (alignment + 3) % 2 == 0 ? 1 : 0);
}

TEST(CheckZoned, ArithmeticSkipsZerosOfAnyZone)
{
    Bytes item = {0xF0, 0x50, '3', '4'};
    EXPECT_EQ(zvkBcdCheckZoned(item.data(), 4, kCheckArithmetic), 0);
    EXPECT_EQ(zvkBcdCheckZoned(item.data(), 4, kCheckStrict), 1);
}

// ---- zero tests ----

TEST(ZeroTest, SeesEachDigitAndNoZone)
{
    Place place;
    for (int n = 1; n <= 63; n++) {
        for (GuardedItem::Place side : {GuardedItem::AtStart, GuardedItem::AtEnd}) {
            std::string zeros(static_cast<size_t>(n), '0');
            EXPECT_EQ(zvkBcdIsZeroPacked(place.put(packedItem(zeros, 0x0D), side), n), 1);
            Bytes zoned(static_cast<size_t>(n), 0xF0);
            EXPECT_EQ(zvkBcdIsZeroZoned(place.put(zoned, side), n), 1);
            for (size_t at = 0; at < zeros.size(); at++) {
                std::string digits = zeros;
                digits[at] = '1';
                ASSERT_EQ(zvkBcdIsZeroPacked(place.put(packedItem(digits, 0x0C), side), n), 0) << n << " " << at;
                Bytes other = zoned;
                other[at] = 0xF1;
                ASSERT_EQ(zvkBcdIsZeroZoned(place.put(other, side), n), 0) << n << " " << at;
            }
        }
    }
    for (char last : std::string("{} ") + '\0')
        EXPECT_EQ(zvkBcdIsZeroZoned(fromHex("3030" + hex({static_cast<uint8_t>(last)})).data(), 3), 1);
    for (char last : std::string("ARJP"))
        EXPECT_EQ(zvkBcdIsZeroZoned(fromHex("3030" + hex({static_cast<uint8_t>(last)})).data(), 3), 0);
    Bytes stray = {0x10, 0x0C}; // the unused nibble of two digits counts
    EXPECT_EQ(zvkBcdIsZeroPacked(stray.data(), 2), 0);
}

// ---- moves ----

TEST(Move, KeepsLowOrderDigitsAtEveryLength)
{
    Place from, to;
    for (int sn = 1; sn <= 63; sn++) {
        for (int dn = 1; dn <= 63; dn++) {
            auto side = (sn + dn) % 3 ? GuardedItem::AtEnd : GuardedItem::AtStart;
            Bytes source = randomBytes(bcd::packedBytes(sn));
            size_t bytes = bcd::packedBytes(dn);
            Bytes wanted(bytes);
            for (size_t i = 0; i < bytes && i < source.size(); i++)
                wanted[bytes - 1 - i] = source[source.size() - 1 - i];
            uint8_t sign = source.back() & 15;
            wanted.back() = static_cast<uint8_t>((wanted.back() & 0xF0) | (sign == 0xB || sign == 0xD ? 0xD : 0xC));
            if (dn % 2 == 0) wanted[0] &= 0x0F;
            uint8_t *destination = to.put(randomBytes(bytes), side);
            zvkBcdMovePacked(from.put(source, side), sn, destination, dn);
            ASSERT_EQ(hex(destination, bytes), hex(wanted)) << hex(source);

            Bytes zoned = randomBytes(static_cast<size_t>(sn));
            Bytes moved(static_cast<size_t>(dn), '0');
            for (size_t i = 0; i < moved.size() && i < zoned.size(); i++)
                moved[moved.size() - 1 - i] = zoned[zoned.size() - 1 - i];
            auto digit = bcd::kOverpunch[zoned.back()];
            moved.back() = static_cast<uint8_t>((digit.negative ? 0x70 : 0x30) | digit.digit);
            destination = to.put(randomBytes(moved.size()), side);
            zvkBcdMoveZoned(from.put(zoned, side), sn, destination, dn);
            ASSERT_EQ(hex(destination, moved.size()), hex(moved)) << hex(zoned);
        }
    }
}

TEST(Move, OverlappingItems)
{
    for (int n : {5, 21, 35, 47}) {
        for (int shift = -3; shift <= 3; shift++) {
            Bytes field = randomBytes(80), separate = field;
            Bytes source(field.begin() + 10, field.end());
            zvkBcdMovePacked(&field[10], n, &field[static_cast<size_t>(10 + shift)], n + 4);
            zvkBcdMovePacked(source.data(), n, &separate[static_cast<size_t>(10 + shift)], n + 4);
            EXPECT_EQ(hex(field), hex(separate));
        }
    }
}

// A copy onto itself, moved by up to two bytes, is the copy from elsewhere.
TEST(Copy, OverlappingItemsOfAllForms)
{
    using Entry = uint8_t *(*)(const uint8_t *, uint8_t *, int32_t, int32_t);
    struct Form {
        const char *name;
        Entry entry;
        const char *item;
        int digits;
    };
    const Form forms[] = {{"TO", _zvkcBCD_Cpy_Znd, "12345q", 6},
                          {"LO", _zvkcBCD_Cpy_ZndLO, "q12345", 6},
                          {"US", _zvkcBCD_Cpy_ZndUS, "123456", 6},
                          {"LS", _zvkcBCD_Cpy_ZndLS, "-123456", 6},
                          {"TS", _zvkcBCD_Cpy_ZndTS, "123456-", 6}};
    for (const Form &form : forms)
        for (int shift = -2; shift <= 2; shift++)
            for (int dn = 4; dn <= 8; dn++) {
                Bytes field(24, '#'), expected(24, '#');
                memcpy(&field[8], form.item, strlen(form.item));
                memcpy(&expected[8], form.item, strlen(form.item));
                form.entry(&field[8], &field[static_cast<size_t>(8 + shift)], dn, form.digits);
                form.entry(reinterpret_cast<const uint8_t *>(form.item), &expected[static_cast<size_t>(8 + shift)], dn,
                           form.digits);
                EXPECT_EQ(hex(field), hex(expected)) << form.name << " by " << shift << " into " << dn;
            }
}

TEST(FromBinary, AZeroOfANegativeNumberIsPositive)
{
    uint8_t packed[8], zoned[8];
    for (int64_t value : {int64_t{-100}, int64_t{-1000000}, INT64_MIN}) {
        _zvkcBCD_CONV_Int8_To_Pckd(value, packed, 2);
        EXPECT_EQ(packed[1], value == INT64_MIN ? 0x8D : 0x0C) << value;
    }
    _zvkcBCD_CONV_Int4_To_Pckd(-100, packed, 2);
    EXPECT_EQ(packed[1], 0x0C);
    _zvkcBCD_CONV_Int4_To_Pckd(-101, packed, 2);
    EXPECT_EQ(packed[1], 0x1D);
    _zvkcBCD_CONV_Int4_To_Znd(-100, zoned, 2);
    EXPECT_EQ(memcmp(zoned, "00", 2), 0);
}

} // namespace
