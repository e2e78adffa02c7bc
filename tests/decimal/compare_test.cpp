// Faults that these tests are there to catch: an order that depends on the sign nibble's value, on
// leading zeros, on length or alignment; +0 and -0 unequal; relations mixed up; zones that count
// where they must not, or do not count in the quick comparison of like items; ABS and NEG that mend
// what is odd on purpose.
#include "decimal/sums.h"
#include "forms.h"
#include "mode_guard.h"

using reference::Value;

namespace {

int order(const Value &a, const Value &b)
{
    bool zeroA = reference::stripped(a.digits) == "0", zeroB = reference::stripped(b.digits) == "0";
    bool minusA = a.negative && !zeroA, minusB = b.negative && !zeroB;
    if (minusA != minusB) return minusA ? -1 : 1;
    int magnitudes = reference::compare(a.digits, b.digits);
    return minusA ? -magnitudes : magnitudes;
}

template <class Form>
class CompareTest : public testing::Test {
protected:
    Place a_, b_;

    void check(const Value &a, int an, const Value &b, int bn, GuardedItem::Place side)
    {
        uint8_t *op1 = a_.put(Form::item(a), side);
        uint8_t *op2 = b_.put(Form::item(b), side);
        relations(op1, an, op2, bn, order(a, b));
        // A copy is compared in the plain form, since zones of like zoned items count.
        op1 = a_.put(Form::result(a), side);
        op2 = b_.put(Form::result(a), side);
        relations(op1, an, op2, an, 0);
    }

    void relations(const uint8_t *op1, int an, const uint8_t *op2, int bn, int wanted)
    {
        ASSERT_EQ(Form::equ(op1, op2, bn, an), wanted == 0)
            << hex(op1, Form::bytes(an)) << " " << hex(op2, Form::bytes(bn));
        ASSERT_EQ(Form::neq(op1, op2, bn, an), wanted != 0);
        ASSERT_EQ(Form::grt(op1, op2, bn, an), wanted > 0)
            << hex(op1, Form::bytes(an)) << " " << hex(op2, Form::bytes(bn));
        ASSERT_EQ(Form::geq(op1, op2, bn, an), wanted >= 0);
        ASSERT_EQ(Form::les(op1, op2, bn, an), wanted < 0)
            << hex(op1, Form::bytes(an)) << " " << hex(op2, Form::bytes(bn));
        ASSERT_EQ(Form::leq(op1, op2, bn, an), wanted <= 0);
    }
};

using Forms = testing::Types<Packed, Zoned>;
TYPED_TEST_SUITE(CompareTest, Forms);

TYPED_TEST(CompareTest, OrdersValues)
{
    for (int an = 1; an <= 63; an++)
        for (int bn = 1; bn <= 63; bn++)
            for (int round = 0; round < 4; round++) {
                Value a = randomOperand<TypeParam>(an), b = randomOperand<TypeParam>(bn);
                if (round % 2)
                    b = {reference::cut(reference::stripped(a.digits), bn),
                         round == 1 ? a.negative : !a.negative}; // often equal
                if (round == 3) b.digits.back() = static_cast<char>('0' + randomBelow(10));
                this->check(a, an, b, bn, round < 2 ? GuardedItem::AtStart : GuardedItem::AtEnd);
                if (this->HasFatalFailure()) return;
            }
}

TYPED_TEST(CompareTest, AnItemEqualsItselfWhateverItHolds)
{
    Bytes item = randomBytes(20);
    EXPECT_EQ(TypeParam::equ(item.data(), item.data(), 11, 11), 1);
    EXPECT_EQ(_zvkcBCD_EQU_Pckd(item.data(), item.data(), 10, 11), 1); // the same bytes
}

TEST(CompareZoned, ZonesCountOnlyBetweenLikeItems)
{
    Bytes ascii = fromHex("313233"), ebcdic = fromHex("f1f233"), longer = fromHex("30f1f233"),
          minus = fromHex("f1f273");
    EXPECT_EQ(_zvkcBCD_EQU_Znd(ascii.data(), ebcdic.data(), 3, 3), 0);
    EXPECT_EQ(_zvkcBCD_LES_Znd(ascii.data(), ebcdic.data(), 3, 3), 1);
    EXPECT_EQ(_zvkcBCD_EQU_Znd(ascii.data(), longer.data(), 4, 3),
              0); // of like length after the zero: the same quick way
    Bytes ordered = fromHex("3f3233");
    EXPECT_EQ(_zvkcBCD_GRT_Znd(ascii.data(), minus.data(), 3, 3), 1);
    EXPECT_EQ(zvkBcdCmpZoned(ascii.data(), 3, minus.data(), 3, 1) < 0, true); // as magnitudes, by memcmp
    Bytes plusZero = fromHex("f030"), minusZero = fromHex("3070");
    EXPECT_EQ(_zvkcBCD_EQU_Znd(plusZero.data(), minusZero.data(), 2, 2), 1); // unlike signs: by digits
}

// As magnitudes, but the sign colours the answer when the lengths differ after the leading zeros.
TEST(ComparePacked, MagnitudeOnly)
{
    Bytes five = fromHex("5d"), seven = fromHex("7c"), hundred = fromHex("100d"), longFive = fromHex("00005c");
    EXPECT_LT(zvkBcdCmpPacked(five.data(), 1, seven.data(), 1, 1), 0);
    EXPECT_EQ(zvkBcdCmpPacked(five.data(), 1, longFive.data(), 5, 1), 0);
    EXPECT_LT(zvkBcdCmpPacked(hundred.data(), 3, seven.data(), 1, 1), 0);
    EXPECT_LT(zvkBcdCmpPacked(five.data(), 1, longFive.data(), 5, 0), 0);
}

TYPED_TEST(CompareTest, ZeroTestSeesTheValue)
{
    for (int n = 1; n <= 63; n++) {
        Value value = randomValue(n);
        EXPECT_EQ(TypeParam::isZero(TypeParam::item(value).data(), n), reference::stripped(value.digits) == "0");
    }
}

// ---- ABS and NEG ----

TYPED_TEST(CompareTest, AbsoluteAndNegatedValues)
{
    Place from, to;
    for (uint32_t mode : {0u, 2u}) {
        ModeGuard guard(mode);
        for (int sn = 1; sn <= 40; sn++)
            for (int dn = 1; dn <= 40; dn++) {
                Value value = randomValue(sn);
                auto side = randomBelow(2) ? GuardedItem::AtStart : GuardedItem::AtEnd;
                uint8_t *src = from.put(TypeParam::item(value), side);
                std::string digits = reference::cut(value.digits, dn);
                bool zero =
                    reference::stripped(value.digits) == "0"; // of the source: -100 in two digits stays as it comes
                uint8_t *dst = to.put(randomBytes(TypeParam::bytes(dn)), side);
                ASSERT_EQ(TypeParam::absolute(src, dst, dn, sn), dst);
                ASSERT_EQ(hex(dst, TypeParam::bytes(dn)), hex(TypeParam::result({digits, false})));
                ASSERT_EQ(TypeParam::negate(src, dst, dn, sn), dst);
                bool negative = !value.negative && (!zero || mode == 2);
                ASSERT_EQ(hex(dst, TypeParam::bytes(dn)), hex(TypeParam::result({digits, negative}))) << value.digits;
            }
    }
}

std::string leading(uint8_t *(*entry)(const uint8_t *, uint8_t *, int32_t, int32_t), const char *source, int dn)
{
    Bytes src = fromHex(source), dst(static_cast<size_t>(dn));
    entry(src.data(), dst.data(), dn, static_cast<int32_t>(src.size()));
    return hex(dst);
}

TEST(LeadingOverpunchSigns, AbsAndNeg)
{
    auto abs = _zvkcBCD_ABS_ZndLO;
    auto neg = _zvkcBCD_NEG_ZndLO;
    EXPECT_EQ(leading(abs, "713233", 3), "313233");
    EXPECT_EQ(leading(abs, "4a3233", 3), "313233");   // a letter is decoded
    EXPECT_EQ(leading(abs, "713233", 4), "31713233"); // into the padding, and the source's own byte stays
    EXPECT_EQ(leading(abs, "713233", 2), "3233");
    EXPECT_EQ(leading(neg, "713233", 3), "713233"); // keeps the sign
    EXPECT_EQ(leading(neg, "313233", 3), "313233");
    EXPECT_EQ(leading(neg, "713233", 2), "7233");
    EXPECT_EQ(leading(neg, "703030", 3), "303030"); // a negative zero
    EXPECT_EQ(leading(neg, "75", 1), "75");
    ModeGuard guard(2);
    EXPECT_EQ(leading(neg, "703030", 3), "703030");
}

} // namespace
