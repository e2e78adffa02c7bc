// Faults these tests are there to catch: digits that land one place off at some length, a rounding
// that looks at the wrong digit or loses its carry, a sign that survives nothing or is lost with
// something, bytes touched beyond an item, the dump's odd labels.
#include <cstring>
#include <string>

#include "decimal/items.h"
#include "kvr2/decimal_scaling.h"
#include "support/child.h"
#include "support/pattern.h"

using std::string;

namespace {

using ShiftEntry = uint8_t *(*)(const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);

enum Way { Left, Right, Rounded };

struct Result {
    string digits;
    bool signKept; // false: the result is a plain zero
};

// On digit strings, from the rules alone.
Result shifted(const string &digits, size_t dn, size_t shift, Way way)
{
    string significant = digits.substr(std::min(digits.find_first_not_of('0'), digits.size() - 1));
    string out;
    bool up = false;
    if (way == Left) {
        if (shift >= dn) return {string(dn, '0'), shift == 0};
        out = significant + string(shift, '0');
    } else {
        size_t c = significant.size();
        if (shift && (way == Rounded ? shift > c : shift >= c)) return {string(dn, '0'), false};
        up = way == Rounded && shift && significant[c - shift] > '4';
        out = significant.substr(0, c - shift);
    }
    out = string(dn, '0') + out;
    out = out.substr(out.size() - dn);
    for (size_t i = dn; up && i-- > 0;) {
        up = out[i] == '9';
        out[i] = up ? '0' : static_cast<char>(out[i] + 1);
    }
    return {out, true};
}

bool isZero(const string &digits) { return digits.find_first_not_of('0') == string::npos; }

struct Family {
    const char *name;
    ShiftEntry entries[3];
    Bytes (*item)(const string &, bool);
};

Bytes packedOf(const string &digits, bool negative) { return packedItem(digits, negative ? 0xD : 0xC); }
Bytes unsignedOf(const string &digits, bool) { return Bytes(digits.begin(), digits.end()); }
Bytes trailingOf(const string &digits, bool negative) { return unsignedOf(digits + (negative ? "-" : "+"), false); }
Bytes leadingOf(const string &digits, bool negative) { return unsignedOf((negative ? "-" : "+") + digits, false); }

#define FAMILY(F, item)                                                                                                \
    {                                                                                                                  \
#F, {_zvkcBCD_SHFD_##F##_Left, _zvkcBCD_SHFD_##F##_Right, _zvkcBCD_SHFD_##F##_RightRnd }, item                 \
    }
const Family kFamilies[] = {FAMILY(Pckd, packedOf), FAMILY(Znd, zonedItem), FAMILY(ZndUS, unsignedOf),
                            FAMILY(ZndTS, trailingOf), FAMILY(ZndLS, leadingOf)};

TEST(Shift, AllFormsLengthsAndCounts)
{
    static Place sourcePlace, destinationPlace;
    for (int sn = 1; sn <= 63; sn += sn < 20 ? 1 : 5)
        for (int dn = 1; dn <= 63; dn += dn < 20 ? 1 : 5)
            for (int shift : {0, 1, 2, 3, 4, 5, 7, 8, sn - 1, sn, sn + 1, dn - 1, dn, 33, 70})
                for (const Family &family : kFamilies)
                    for (Way way : {Left, Right, Rounded}) {
                        if (shift < 0) continue;
                        string digits = randomDigits(sn);
                        bool negative = randomBelow(2) && family.item != unsignedOf;
                        Result result = shifted(digits, static_cast<size_t>(dn), static_cast<size_t>(shift), way);
                        bool separate = family.item == trailingOf || family.item == leadingOf;
                        bool minus = negative && (result.signKept || separate) && !isZero(result.digits);
                        Bytes source = family.item(digits, negative), wanted = family.item(result.digits, minus);
                        GuardedItem::Place side = randomBelow(2) ? GuardedItem::AtEnd : GuardedItem::AtStart;
                        const uint8_t *src = sourcePlace.put(source, side);
                        uint8_t *dst = destinationPlace.put(Bytes(wanted.size(), 0xEE), side);
                        ASSERT_EQ(family.entries[way](src, dst, dn, sn, shift), dst);
                        ASSERT_EQ(hex(dst, wanted.size()), hex(wanted))
                            << family.name << " way " << way << " " << hex(source) << " by " << shift << " to " << dn;
                    }
}

string run(ShiftEntry entry, const string &source, int sn, size_t bytes, int dn, int shift)
{
    Bytes out(bytes, 0xEE);
    entry(reinterpret_cast<const uint8_t *>(source.data()), out.data(), dn, sn, shift);
    return string(out.begin(), out.end());
}

TEST(Shift, LeadingOverpunchAndEdges)
{
    EXPECT_EQ(run(_zvkcBCD_SHFD_ZndLO_Left, "q23", 3, 3, 3, 1), "r30") << "the sign goes to the first byte";
    EXPECT_EQ(run(_zvkcBCD_SHFD_ZndLO_Right, "q23", 3, 3, 3, 1), "pq2")
        << "and what a leading byte carried stays where it lands";
    EXPECT_EQ(run(_zvkcBCD_SHFD_ZndLO_RightRnd, "p05", 3, 3, 3, 1), "p01");
    EXPECT_EQ(run(_zvkcBCD_SHFD_ZndLO_Right, "p05", 3, 3, 3, 1), "000") << "a negative zero becomes positive";
    EXPECT_EQ(run(_zvkcBCD_SHFD_Pckd_RightRnd, "\x99\x5D", 3, 2, 2, 1), string("\0\x0C", 2))
        << "the carry is lost, and the sign with it";
    EXPECT_EQ(run(_zvkcBCD_SHFD_Pckd_RightRnd, "\x12\x5D", 3, 2, 3, 1), "\x01\x3D");
    EXPECT_EQ(run(_zvkcBCD_SHFD_Pckd_RightRnd, "\x5C", 1, 1, 1, 2), "\x0C");
}

KVR2_PIECE(shift_dump)
{
    uint8_t out[8];
    _zvkcBCD_SHFD_Pckd_RightRnd(reinterpret_cast<const uint8_t *>("\x12\x5D"), out, 3, 3, 1);
    _zvkcBCD_SHFD_ZndTS_Left(reinterpret_cast<const uint8_t *>("12-"), out, 3, 2, 1);
}

KVR2_PIECE(shift_keeps_negative_zero)
{
    if (run(_zvkcBCD_SHFD_Pckd_Right, "\x12\x5D", 3, 1, 1, 1) != "\x2D") printf("value ");
    if (run(_zvkcBCD_SHFD_Pckd_Right, string("\x10\x0D", 2), 3, 1, 1, 1) != "\x0D") printf("zero ");
    if (run(_zvkcBCD_SHFD_Pckd_Right, "\x12\x5D", 3, 1, 1, 3) != "\x0C") printf("nothing ");
}

TEST(Shift, DumpAndMode)
{
    string text = replaceAll(runPiece("shift_dump", {.env = {{"COBOL_BCD_DEBUG", "1"}}}).err, "0x[0-9a-f]+", "@");
    EXPECT_EQ(text, "Shift packed right round 1 ...\nop1: @ 3 125d\nres: @ 3 013d\nShift zonedts left 1 ...\nop1: @ 2 "
                    "3132\nop2: @ 3 313230\n");
    EXPECT_EQ(runPiece("shift_keeps_negative_zero", {.env = {{"COBOL_BCD_NOVALIDATE", "2"}}}).out, "");
}

} // namespace
