// Faults these tests are there to catch: a digit lost or invented at any pair of lengths, a sign
// that goes to the wrong place or is decided by the wrong side, letters and negative zeros treated
// alike in all cells, bytes touched beyond an item, results that depend on alignment, a mode bit
// not seen.
//
// The reference works on digit strings and knows nothing of words; each form's bytes are built from
// the rules alone.
#include <array>
#include <csignal>
#include <cstring>
#include <string>

#include "decimal/items.h"
#include "kvr2/decimal_conversions.h"
#include "support/child.h"
#include "support/pattern.h"
#include "support/require.h"

using std::string;

namespace {

enum Form { Packed, TO, TS, LO, LS, US, Forms };

struct Number {
    string digits;
    bool negative;
};

Bytes bytesOf(Form form, const Number &number, bool letters = false)
{
    const string &d = number.digits;
    Bytes item(d.begin(), d.end());
    auto overpunch = [&](uint8_t &byte) {
        uint8_t digit = byte & 0x0F;
        if (letters)
            byte = digit == 0 ? (number.negative ? '}' : '{')
                              : static_cast<uint8_t>((number.negative ? 'I' : '@') + digit);
        else
            byte = static_cast<uint8_t>((number.negative ? 0x70 : 0x30) | digit);
    };
    switch (form) {
    case Packed:
        return packedItem(d, number.negative ? 0xD : 0xC);
    case TO:
        overpunch(item.back());
        return item;
    case LO:
        overpunch(item.front());
        return item;
    case TS:
        item.push_back(number.negative ? '-' : '+');
        return item;
    case LS:
        item.insert(item.begin(), number.negative ? '-' : '+');
        return item;
    default:
        return item;
    }
}

bool isZero(const string &digits) { return digits.find_first_not_of('0') == string::npos; }

string fitted(const string &digits, size_t n)
{
    return digits.size() >= n ? digits.substr(digits.size() - n) : string(n - digits.size(), '0') + digits;
}

using Convert = uint8_t *(*)(const uint8_t *, uint8_t *, int32_t, int32_t);

#define ROW(F)                                                                                                         \
    _zvkcBCD_CONV_##F##_To_ZndTO, _zvkcBCD_CONV_##F##_To_ZndTS, _zvkcBCD_CONV_##F##_To_ZndLO,                          \
        _zvkcBCD_CONV_##F##_To_ZndLS, _zvkcBCD_CONV_##F##_To_ZndUS
const Convert kCells[Forms][Forms] = {
    {_zvkcBCD_Cpy_Pckd, ROW(Pckd)},
    {_zvkcBCD_CONV_ZndTO_To_Pckd, ROW(ZndTO)},
    {_zvkcBCD_CONV_ZndTS_To_Pckd, ROW(ZndTS)},
    {_zvkcBCD_CONV_ZndLO_To_Pckd, ROW(ZndLO)},
    {_zvkcBCD_CONV_ZndLS_To_Pckd, ROW(ZndLS)},
    {_zvkcBCD_CONV_ZndUS_To_Pckd, ROW(ZndUS)},
};
const Convert kCopies[Forms] = {_zvkcBCD_Cpy_Pckd,  _zvkcBCD_Cpy_Znd,   _zvkcBCD_Cpy_ZndTS,
                                _zvkcBCD_Cpy_ZndLO, _zvkcBCD_Cpy_ZndLS, _zvkcBCD_Cpy_ZndUS};

// What a conversion of good data gives in the mode without any bits.
Bytes expected(Form from, Form to, const Number &number, size_t dn)
{
    Number result{fitted(number.digits, dn), number.negative && from != US && to != US};
    bool testSource = from == Packed && to != Packed;
    if (isZero(testSource ? number.digits : result.digits)) result.negative = false;
    return bytesOf(to, result);
}

// Runs a conversion with both items against a protected page, and at odd alignments.
void expectConverted(Convert convert, const Bytes &source, int sn, const Bytes &wanted, int dn, const char *what)
{
    static Place sourcePlace, destinationPlace;
    for (GuardedItem::Place side : {GuardedItem::AtEnd, GuardedItem::AtStart}) {
        const uint8_t *src = sourcePlace.put(source, side);
        uint8_t *dst = destinationPlace.put(Bytes(wanted.size(), 0xEE), side);
        ASSERT_EQ(convert(src, dst, dn, sn), dst);
        ASSERT_EQ(hex(dst, wanted.size()), hex(wanted)) << what << " of " << hex(source) << " " << sn << " to " << dn;
    }
    unsigned at = randomBelow(8), to = randomBelow(8);
    uint8_t *dst = destinationPlace.putAligned(Bytes(wanted.size(), 0xEE), to);
    convert(sourcePlace.putAligned(source, at), dst, dn, sn);
    ASSERT_EQ(hex(dst, wanted.size()), hex(wanted)) << what << " at " << at << " and " << to;
}

TEST(Conversion, AllCellsAndLengths)
{
    for (int sn = 1; sn <= 63; sn += sn < 33 ? 1 : 6)
        for (int dn = 1; dn <= 63; dn += dn < 33 ? 1 : 6)
            for (int from = Packed; from < Forms; from++)
                for (int to = Packed; to < Forms; to++) {
                    Number number{randomDigits(sn), randomBelow(2) == 1 && from != US};
                    Bytes source = bytesOf(static_cast<Form>(from), number);
                    string what = std::to_string(from) + " to " + std::to_string(to);
                    expectConverted(
                        kCells[from][to], source, sn,
                        expected(static_cast<Form>(from), static_cast<Form>(to), number, static_cast<size_t>(dn)), dn,
                        what.c_str());
                    if (HasFatalFailure()) return;
                }
}

TEST(Conversion, CopiesOfAllForms)
{
    for (int sn = 1; sn <= 40; sn++)
        for (int dn = 1; dn <= 40; dn++)
            for (int form = Packed; form < Forms; form++) {
                // A sign that a leading byte carries does not move with the digits, so such items
                // are copied to their own length here.
                if (form == LO && sn != dn) continue;
                Number number{randomDigits(sn), randomBelow(2) == 1 && form != US};
                Number result{fitted(number.digits, static_cast<size_t>(dn)), number.negative};
                if (isZero(result.digits)) result.negative = false;
                expectConverted(kCopies[form], bytesOf(static_cast<Form>(form), number), sn,
                                bytesOf(static_cast<Form>(form), result), dn, "copy");
                if (HasFatalFailure()) return;
            }
}

string convert(Convert entry, const string &source, int sn, size_t bytes, int dn)
{
    Bytes out(bytes, 0xEE);
    entry(reinterpret_cast<const uint8_t *>(source.data()), out.data(), dn, sn);
    return string(out.begin(), out.end());
}

TEST(Conversion, NegativeZerosAndLenientSources)
{
    const string minusHundred = {0x10, 0x0D}; // as packed in three digits
    EXPECT_EQ(convert(_zvkcBCD_CONV_Pckd_To_ZndTO, minusHundred, 3, 2, 2), "0p") << "out of packed the source decides";
    EXPECT_EQ(convert(_zvkcBCD_CONV_Pckd_To_ZndTS, minusHundred, 3, 3, 2), "00-");
    EXPECT_EQ(convert(_zvkcBCD_CONV_ZndTO_To_Pckd, "10p", 3, 2, 2), string("\0\x0C", 2))
        << "into packed the destination does";
    EXPECT_EQ(convert(_zvkcBCD_CONV_ZndTO_To_ZndLS, "10p", 3, 3, 2), "+00");
    EXPECT_EQ(convert(_zvkcBCD_Cpy_Pckd, minusHundred, 3, 2, 2), string("\0\x0C", 2));
    for (const char *text : {"+123", "-123", " 123", "123+", "123-", "+123-"})
        EXPECT_EQ(convert(_zvkcBCD_CONV_ZndUS_To_Pckd, text, static_cast<int>(strlen(text)), 2, 3), "\x12\x3C") << text;
    EXPECT_EQ(convert(_zvkcBCD_CONV_ZndUS_To_Pckd, "+", 1, 2, 3), string("\0\x0C", 2));
    // Without the EBCDIC convention a letter in the last place is not decoded on the way into
    // packed.
    EXPECT_EQ(convert(_zvkcBCD_CONV_ZndTO_To_Pckd, "1J", 2, 2, 3), "\x01\xAC");
    EXPECT_EQ(convert(_zvkcBCD_CONV_ZndLO_To_Pckd, "J23", 3, 2, 3), "\x12\x3D")
        << "but the sign of a leading letter is";
    EXPECT_EQ(convert(_zvkcBCD_CONV_ZndLO_To_ZndTO, "J23", 3, 5, 5), "0012s");
    EXPECT_EQ(convert(_zvkcBCD_CONV_ZndLO_To_ZndTO, "J23", 3, 2, 2), "2s");
    EXPECT_EQ(convert(_zvkcBCD_Cpy_ZndLO, "J23", 3, 3, 3), "q23");
    EXPECT_EQ(convert(_zvkcBCD_Cpy_ZndTS, "10-", 2, 2, 1), "0+");
}

TEST(Conversion, Integers)
{
    for (int n = 1; n <= 40; n++)
        for (int round = 0; round < 60; round++) {
            Number number{randomDigits(n), randomBelow(2) == 1};
            unsigned __int128 magnitude = 0;
            for (char c : number.digits) magnitude = magnitude * 10 + static_cast<unsigned>(c - '0');
            auto low = static_cast<uint64_t>(magnitude), value = number.negative ? -low : low;
            Bytes packed = bytesOf(Packed, number), zoned = bytesOf(TO, number);
            static Place place;
            const uint8_t *item = place.put(packed, round % 2 ? GuardedItem::AtEnd : GuardedItem::AtStart);
            EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Int1(item, n), static_cast<int8_t>(value));
            EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Int2(item, n), static_cast<int16_t>(value));
            EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Int4(item, n), static_cast<int32_t>(value));
            EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Int8(item, n), static_cast<int64_t>(value));
            EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Uns1(item, n), static_cast<uint8_t>(low));
            EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Uns2(item, n), static_cast<uint16_t>(low));
            EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Uns4(item, n), static_cast<uint32_t>(low));
            EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Uns8(item, n), low);
            item = place.put(zoned, round % 2 ? GuardedItem::AtEnd : GuardedItem::AtStart);
            EXPECT_EQ(_zvkcBCD_CONV_Znd_To_Int4(item, n), static_cast<int32_t>(value));
            EXPECT_EQ(_zvkcBCD_CONV_Znd_To_Int8(item, n), static_cast<int64_t>(value));
            EXPECT_EQ(_zvkcBCD_CONV_Znd_To_UInt4(item, n), static_cast<uint32_t>(low));
            EXPECT_EQ(_zvkcBCD_CONV_Znd_To_UInt8(item, n), low);

            auto signedValue = static_cast<int64_t>(randomness()() >> randomBelow(64));
            if (round == 0) signedValue = INT64_MIN;
            if (round == 1) signedValue = 0;
            auto back = [&](auto integer, auto toPacked, auto toZoned) {
                bool negative = integer < 0;
                uint64_t m = negative ? -static_cast<uint64_t>(integer) : static_cast<uint64_t>(integer);
                Number wanted{fitted(std::to_string(m), static_cast<size_t>(n)), negative};
                if (wanted.digits.find_first_not_of('0') == std::string::npos) wanted.negative = false;
                Bytes out(packed.size(), 0xEE);
                toPacked(integer, place.put(out, GuardedItem::AtEnd), n);
                EXPECT_EQ(hex(place.put(Bytes(), GuardedItem::AtEnd) - out.size(), out.size()),
                          hex(bytesOf(Packed, wanted)))
                    << m << " in " << n;
                if constexpr (!std::is_same_v<decltype(toZoned), std::nullptr_t>) {
                    Bytes text(zoned.size(), 0xEE);
                    toZoned(integer, place.put(text, GuardedItem::AtStart), n);
                    EXPECT_EQ(hex(place.put(Bytes(), GuardedItem::AtStart), text.size()), hex(bytesOf(TO, wanted)));
                }
            };
            back(static_cast<int8_t>(signedValue), _zvkcBCD_CONV_Int1_To_Pckd, nullptr);
            back(static_cast<int16_t>(signedValue), _zvkcBCD_CONV_Int2_To_Pckd, nullptr);
            back(static_cast<int32_t>(signedValue), _zvkcBCD_CONV_Int4_To_Pckd, _zvkcBCD_CONV_Int4_To_Znd);
            back(signedValue, _zvkcBCD_CONV_Int8_To_Pckd, _zvkcBCD_CONV_Int8_To_Znd);
            back(static_cast<uint8_t>(signedValue), _zvkcBCD_CONV_Uns1_To_Pckd, nullptr);
            back(static_cast<uint16_t>(signedValue), _zvkcBCD_CONV_Uns2_To_Pckd, nullptr);
            back(static_cast<uint32_t>(signedValue), _zvkcBCD_CONV_Uns4_To_Pckd, _zvkcBCD_CONV_UInt4_To_Znd);
            back(static_cast<uint64_t>(signedValue), _zvkcBCD_CONV_Uns8_To_Pckd, _zvkcBCD_CONV_UInt8_To_Znd);
        }
    const uint8_t badNibbles[] = {0xFF, 0xFB, 0x5B};
    EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Len8(badNibbles, 5, 0), 0u) << "negative";
    const uint8_t length[] = {0x01, 0x20, 0x1C}, whole[] = {0x01, 0x20, 0x0C}, minus[] = {0x01, 0x20, 0x0D};
    EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Len8(length, 5, 2), 13u);
    EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Len8(whole, 5, 2), 12u);
    EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Len8(whole, 5, 0), 1200u);
    EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Len8(minus, 5, 2), 0u);
    EXPECT_EQ(_zvkcBCD_CONV_Pckd_To_Len8(whole, 0, 2), 0u);
}

KVR2_PIECE(ebcdic_letters)
{
    auto is = [](Convert entry, const string &source, int sn, int dn, const string &wanted) {
        string got = convert(entry, source, sn, wanted.size(), dn);
        if (got != wanted)
            printf("%s of %s to %d: %s, not %s\n", "conversion", source.c_str(), dn, got.c_str(), wanted.c_str());
    };
    is(_zvkcBCD_CONV_ZndTO_To_ZndTO, "1J", 2, 2, "1J");
    is(_zvkcBCD_CONV_ZndTO_To_ZndTO, "1y", 2, 2, "1R");
    is(_zvkcBCD_CONV_ZndTO_To_ZndTO, "10", 2, 2, "1{");
    is(_zvkcBCD_CONV_ZndTO_To_ZndLO, "12L", 3, 3, "L23"); // the source's last digit lands in the first byte
    is(_zvkcBCD_CONV_ZndTO_To_ZndLO, "12s", 3, 3, "J23");
    is(_zvkcBCD_CONV_ZndTS_To_ZndTO, "12-", 2, 2, "1K");
    is(_zvkcBCD_CONV_ZndTS_To_ZndTO, "00-", 2, 2, "0}"); // a negative zero takes its letter all the same
    is(_zvkcBCD_CONV_ZndLS_To_ZndLO, "+12", 2, 2, "A2");
    is(_zvkcBCD_CONV_ZndUS_To_ZndTO, "12", 2, 2, "12"); // no letters from unsigned items
    is(_zvkcBCD_CONV_Pckd_To_ZndTO, {0x12, 0x3D}, 3, 3, "12L");
    is(_zvkcBCD_CONV_Pckd_To_ZndLO, {0x12, 0x3D}, 3, 3, "J23");
    is(_zvkcBCD_CONV_ZndTO_To_Pckd, "12L", 3, 3, {0x12, 0x3D});
}

// The letter step of the EBCDIC convention in all cells, from native items and from items whose
// sign is a letter already.
Bytes expectedLetters(Form from, Form to, Number number, const Bytes &source, bool letterSource, size_t dn)
{
    bool packs = from == LO && to == Packed && source.size() > 1;
    if (packs && source[0] == 'P')
        number.digits[0] = '0'; // -7, but with a low nibble of 0, which counts as a leading zero there
    Number result{fitted(number.digits, dn), number.negative && to != US};
    if (isZero(from == Packed ? number.digits : result.digits)) result.negative = false;
    Bytes item = bytesOf(to, result);
    if ((to != TO && to != LO) || from == US) return item;
    uint8_t &sign = to == TO ? item.back() : item.front();
    bool minus =
        from == TS || from == LS ? number.negative : result.negative; // a separate sign counts as it is, also on a zero
    sign = bytesOf(TO, {string(1, static_cast<char>('0' | (sign & 15))), minus}, true)[0];
    if (letterSource) sign = from == TO ? source.back() : source.front(); // digit and all
    return item;
}

KVR2_PIECE(ebcdic_matrix)
{
    for (int round = 0; round < 40000; round++) {
        auto from = static_cast<Form>(randomBelow(Forms)), to = static_cast<Form>(randomBelow(Forms));
        int sn = static_cast<int>(1 + randomBelow(24)), dn = static_cast<int>(1 + randomBelow(24));
        Number number{randomDigits(sn), randomBelow(2) == 1 && from != US};
        bool letters = (from == TO || from == LO) && randomBelow(2);
        Bytes source = bytesOf(from, number, letters),
              wanted = expectedLetters(from, to, number, source, letters, static_cast<size_t>(dn));
        if (from == Packed && to == Packed) continue;
        Bytes got(wanted.size(), 0xEE);
        kCells[from][to](source.data(), got.data(), dn, sn);
        if (got == wanted) continue;
        printf("%d to %d of %s into %d: %s, not %s", from, to, hex(source).c_str(), dn, hex(got).c_str(),
               hex(wanted).c_str());
        return;
    }
}

// A power of ten in items of all lengths: the sign stays where only zeros do.
template <class Integer, class Entry>
void negativePowers(Integer power, Entry entry, Form form)
{
    for (size_t n = 1; n <= 30; n++) {
        Bytes wanted = bytesOf(form, {fitted(std::to_string(-int64_t{power}), n), true}), got(wanted.size(), 0xEE);
        entry(power, got.data(), static_cast<int32_t>(n));
        if (got != wanted) printf("got %s, not %s\n", hex(got).c_str(), hex(wanted).c_str());
    }
}

KVR2_PIECE(mode_bits)
{
    auto is = [](Convert entry, const string &source, int sn, int dn, const string &wanted) {
        string got = convert(entry, source, sn, wanted.size(), dn);
        if (got != wanted)
            printf("got %s, not %s\n", hex(Bytes(got.begin(), got.end())).c_str(),
                   hex(Bytes(wanted.begin(), wanted.end())).c_str());
    };
    const string mode = getenv("COBOL_BCD_NOVALIDATE");
    if (mode == "2") {
        is(_zvkcBCD_Cpy_Pckd, {0x10, 0x0D}, 3, 2, string("\0\x0D", 2));
        is(_zvkcBCD_CONV_ZndTO_To_ZndTS, "10p", 3, 2, "00-");
        for (int n = 1; n <= 31; n++) { // out of packed a zero has no sign in any mode
            const string zoned = string(static_cast<size_t>(n) - 1, '0') + 'p';
            const string packed = string(static_cast<size_t>(n) / 2, '\0') + '\x0D';
            is(_zvkcBCD_CONV_ZndTO_To_Pckd, zoned, n, n, packed);
            is(_zvkcBCD_CONV_Pckd_To_ZndTO, packed, n, n, string(static_cast<size_t>(n), '0'));
        }
        negativePowers(int8_t{-100}, _zvkcBCD_CONV_Int1_To_Pckd, Packed);
        negativePowers(int16_t{-10000}, _zvkcBCD_CONV_Int2_To_Pckd, Packed);
        negativePowers(int32_t{-1000000000}, _zvkcBCD_CONV_Int4_To_Pckd, Packed);
        negativePowers(int32_t{-1000000000}, _zvkcBCD_CONV_Int4_To_Znd, TO);
        negativePowers(int64_t{-1000000000000000000}, _zvkcBCD_CONV_Int8_To_Pckd, Packed);
        negativePowers(int64_t{-1000000000000000000}, _zvkcBCD_CONV_Int8_To_Znd, TO);
    } else if (mode == "4") {
        is(_zvkcBCD_CONV_ZndUS_To_ZndUS,
           "A\xF2"
           "C",
           3, 3, "123");
        is(_zvkcBCD_CONV_ZndUS_To_ZndLS, "\xF1\xF2\xF3", 3, 3, "+123");
    } else if (mode == "8") {
        is(_zvkcBCD_CONV_ZndUS_To_ZndUS, "12C", 3, 3, "12C");
    } else if (mode == "12") {
        is(_zvkcBCD_CONV_ZndUS_To_ZndUS, "A2C", 3, 3, "A2C");
    }
}

TEST(Conversion, Modes)
{
    EXPECT_EQ(runPiece("ebcdic_letters", {.env = {{"COBOL_BCD_EBCDIC", "1"}}}).out, "");
    EXPECT_EQ(runPiece("ebcdic_matrix", {.env = {{"COBOL_BCD_EBCDIC", "1"}}}).out, "");
    for (const char *bits : {"2", "4", "8", "12"})
        EXPECT_EQ(runPiece("mode_bits", {.env = {{"COBOL_BCD_NOVALIDATE", bits}}}).out, "") << bits;
}

TEST(Conversion, BadDataIsReportedWhereItIsLookedAt)
{
    auto errorOf = [](Convert entry, const string &source, int sn,
                      std::vector<std::pair<string, std::optional<string>>> env = {}) {
        ChildRun run = runChild([&] { convert(entry, source, sn, 10, 3); }, {.env = env});
        size_t at = run.err.find("ZVK");
        return at == string::npos ? "none" : run.err.substr(at, 6);
    };
    EXPECT_EQ(errorOf(_zvkcBCD_CONV_Pckd_To_ZndTO, "\x1A\xAC", 3), "ZVK903");
    EXPECT_EQ(errorOf(_zvkcBCD_CONV_ZndTO_To_ZndTO, "1:3", 3), "none");
    EXPECT_EQ(errorOf(_zvkcBCD_CONV_ZndTS_To_Pckd, "123 ", 3), "ZVK040") << "looked at in every mode";
    EXPECT_EQ(errorOf(_zvkcBCD_CONV_ZndLS_To_ZndTO, "x123", 3), "ZVK040");
    EXPECT_EQ(errorOf(_zvkcBCD_CONV_ZndLS_To_ZndUS, "x123", 3), "none") << "but not for a destination without a sign";
    EXPECT_EQ(errorOf(_zvkcBCD_Cpy_ZndTS, "123 ", 3), "none");
}

KVR2_PIECE(safe_mode)
{
    string source = getenv("TEST_SOURCE"), cell = getenv("TEST_CELL");
    uint8_t out[10];
    auto *item = reinterpret_cast<const uint8_t *>(source.data());
    if (cell == "copy") _zvkcBCD_Cpy_ZndTS(item, out, 3, 3);
    if (cell == "zoned") _zvkcBCD_CONV_ZndTO_To_ZndTO(item, out, 3, 3);
    if (cell == "unsigned") _zvkcBCD_CONV_ZndUS_To_Pckd(item, out, 3, 3);
}

TEST(Conversion, SafeModeValidatesSources)
{
    auto errorOf = [](const char *cell, const char *source) {
        ChildRun run =
            runPiece("safe_mode", {.env = {{"COBOL_BCD_SAFE", "1"}, {"TEST_CELL", cell}, {"TEST_SOURCE", source}}});
        return run.err;
    };
    EXPECT_NE(errorOf("copy", "123 ").find("ZVK040"), string::npos);
    EXPECT_EQ(errorOf("copy", "123+"), "");
    EXPECT_NE(errorOf("zoned", "1:3").find("ZVK903"), string::npos);
    EXPECT_EQ(errorOf("unsigned", "1x3").substr(0, 30), "Invalid zoned data 3 0x317833\n");
}

KVR2_PIECE(dumped)
{
    uint8_t out[8], packed[] = {0x12, 0x3C};
    auto *text = reinterpret_cast<const uint8_t *>("12+4");
    _zvkcBCD_Cpy_Znd(text, out, 2, 2);
    _zvkcBCD_CONV_Pckd_To_ZndTO(packed, out, 3, 3);
    _zvkcBCD_CONV_ZndTS_To_Pckd(text, out, 2, 2);
    _zvkcBCD_CONV_ZndLO_To_ZndLS(text, out, 2, 2);
    _zvkcBCD_CONV_Pckd_To_Uns2(packed, 3);
    _zvkcBCD_CONV_Int1_To_Pckd(-5, out, 1);
}

TEST(Conversion, Dump)
{
    string text = replaceAll(runPiece("dumped", {.env = {{"COBOL_BCD_DEBUG", "1"}}}).err, "0x[0-9a-f]+", "@");
    EXPECT_EQ(text, "Copy zoned ...\nop1: @ 2 3132\nres: @ 2 3132\n"
                    "packed to zonedto ...\nin:  @ 3 123c\nout: @ 3 313233\n"
                    "zonedto to packed...\nin:  @ 2 31322b\nout: @ 2 012c\n"
                    "zonedlo to zonedlo...\nin:  @ 2 3132\nout: @ 2 2b3132\n"
                    "packed to uint16...\nin:  @ 3 123c\nout: 123\n"
                    "int8 to packed...\nin:  -5\nout: @ 1 5d\n");
}

} // namespace
