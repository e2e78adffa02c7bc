// Faults that these tests are there to catch: a wrong digit anywhere in a product or quotient, in
// the way through binary as in the way through pairs and tables; results cut or filled on the wrong
// side; signs of zero quotients and remainders; an unused nibble cleared where it has to stay or
// left where it has to go; an access beyond an item; a zero divisor that traps or hangs.
#include "decimal/products.h"
#include "forms.h"
#include "support/child.h"

using reference::Value;

namespace {

std::string text(const Value &value) { return (value.negative ? "-" : "+") + value.digits; }

template <class Form>
Bytes zoneFormItem(const Value &value)
{
    if constexpr (Form::packed)
        return Form::item(value);
    else
        return zonedItem(value.digits, value.negative); // zoned products do not decode letters
}

template <class Form>
class ProductsTest : public testing::Test {
protected:
    Place a_, b_, to_, rest_;

    void checkProduct(const Value &a, int an, const Value &b, int bn, int dn, GuardedItem::Place side)
    {
        uint8_t *op1 = a_.put(zoneFormItem<Form>(a), side);
        uint8_t *op2 = b_.put(zoneFormItem<Form>(b), side);
        uint8_t *dst = to_.put(randomBytes(Form::bytes(dn)), side);
        Value product{reference::cut(reference::multiply(a.digits, b.digits), dn), a.negative != b.negative};
        ASSERT_EQ(Form::multiply(op1, op2, dst, dn, bn, an), dst);
        ASSERT_EQ(hex(dst, Form::bytes(dn)), hex(Form::result(product)))
            << text(a) << " times " << text(b) << " into " << dn;
    }

    void checkQuotient(const Value &a, int an, const Value &b, int bn, int qn, int rn, GuardedItem::Place side)
    {
        uint8_t *op1 = a_.put(Form::item(a), side);
        uint8_t *op2 = b_.put(Form::item(b), side);
        auto [digits, rest] = reference::divide(a.digits, b.digits);
        int order = reference::compare(a.digits, b.digits);
        // A packed quotient fills its bytes, also the nibble that an even count does not use; but
        // not when it is a plain 0 or 1.
        int filled = Form::packed ? qn / 2 * 2 + 1 : qn;
        std::string quotientDigits = reference::cut(digits, filled);
        Bytes quotient = Form::result({quotientDigits, order >= 0 && a.negative != b.negative});
        Bytes remainder = Form::result({reference::cut(rest, rn), order != 0 && a.negative});
        std::string what = text(a) + " by " + text(b) + " into " + std::to_string(qn) + " and " + std::to_string(rn);

        uint8_t *q = to_.put(randomBytes(quotient.size()), side);
        uint8_t *r = rest_.put(randomBytes(remainder.size()), side);
        if constexpr (Form::packed)
            ASSERT_EQ(Form::divideBoth(op1, op2, q, r, rn, qn, bn, an), order >= 0) << what;
        else
            ASSERT_EQ(Form::divideBoth(op1, op2, q, r, rn, qn, bn, an), q);
        ASSERT_EQ(hex(q, quotient.size()), hex(quotient)) << what;
        ASSERT_EQ(hex(r, remainder.size()), hex(remainder)) << what;
        q = to_.put(randomBytes(quotient.size()), side);
        ASSERT_EQ(Form::divide(op1, op2, q, qn, bn, an), q);
        ASSERT_EQ(hex(q, quotient.size()), hex(quotient)) << what;
        r = rest_.put(randomBytes(remainder.size()), side);
        ASSERT_EQ(Form::modulo(op1, op2, r, rn, bn, an), r);
        ASSERT_EQ(hex(r, remainder.size()), hex(remainder)) << what;
    }

    // The same value in so many digits that it takes the way of long items.
    static Value padded(Value value, int n) { return {reference::cut(value.digits, n), value.negative}; }
};

using Forms = testing::Types<Packed, Zoned>;
TYPED_TEST_SUITE(ProductsTest, Forms);

TYPED_TEST(ProductsTest, ProductsAgreeWithPencilAndPaper)
{
    for (int an = 1; an <= 31; an++)
        for (int bn = 1; bn <= 31; bn++)
            for (int dn = 1 + (an * 3 + bn) % 7; dn <= 63; dn += 7) {
                Value a = randomOperand<TypeParam>(an), b = randomOperand<TypeParam>(bn);
                auto side = randomBelow(2) ? GuardedItem::AtStart : GuardedItem::AtEnd;
                this->checkProduct(a, an, b, bn, dn, side);
                if (dn % 4 == 0) this->checkProduct(this->padded(a, 33), 33, this->padded(b, 34), 34, dn, side);
                if (this->HasFatalFailure()) return;
            }
}

TYPED_TEST(ProductsTest, ProductsOfLongItems)
{
    for (int round = 0; round < 3000; round++) {
        auto an = static_cast<int>(1 + randomBelow(63));
        auto bn =
            static_cast<int>(1 + randomBelow(static_cast<unsigned>(std::min(63, TypeParam::packed ? 65 - an : 63))));
        auto dn = static_cast<int>(1 + randomBelow(63));
        Value a = randomValue(an), b = randomValue(bn);
        if (TypeParam::packed && an + bn > 64) continue;
        this->checkProduct(a, an, b, bn, dn, round % 2 ? GuardedItem::AtStart : GuardedItem::AtEnd);
        if (this->HasFatalFailure()) return;
    }
}

TYPED_TEST(ProductsTest, QuotientsAgreeWithPencilAndPaper)
{
    for (int an = 1; an <= 31; an++)
        for (int bn = 1; bn <= 31; bn++)
            for (int round = 0; round < 6; round++) {
                Value a = randomOperand<TypeParam>(an), b = randomOperand<TypeParam>(bn);
                if (round == 5)
                    b.digits = reference::cut(a.digits, static_cast<int>(b.digits.size())); // equal, or nearly so
                if (reference::stripped(b.digits) == "0") continue;
                auto qn = static_cast<int>(1 + randomBelow(31)), rn = static_cast<int>(1 + randomBelow(31));
                auto side = round % 2 ? GuardedItem::AtStart : GuardedItem::AtEnd;
                this->checkQuotient(a, an, b, bn, qn, rn, side);
                if (round % 3 == 0) this->checkQuotient(this->padded(a, 33), 33, this->padded(b, 34), 34, qn, rn, side);
                if (this->HasFatalFailure()) return;
            }
}

TYPED_TEST(ProductsTest, QuotientsOfLongItems)
{
    for (int round = 0; round < 3000; round++) {
        int n[4];
        for (int &digits : n) digits = static_cast<int>(1 + randomBelow(63));
        Value a = randomOperand<TypeParam>(n[0]), b = randomOperand<TypeParam>(n[1]);
        if (reference::stripped(b.digits) == "0") continue;
        this->checkQuotient(a, n[0], b, n[1], n[2], n[3], round % 2 ? GuardedItem::AtStart : GuardedItem::AtEnd);
        if (this->HasFatalFailure()) return;
    }
}

// Divisors that fit a word, dividends that fill several: quotients with zeros at their limbs' ends,
// and exact ones.
TYPED_TEST(ProductsTest, QuotientsOfLongItemsByShortOnes)
{
    for (int an = 32; an <= 63; an++)
        for (int bn = 1; bn <= 19; bn++) {
            Value a = randomOperand<TypeParam>(an), b = randomOperand<TypeParam>(bn);
            if (reference::stripped(b.digits) == "0") continue;
            const auto qn = static_cast<int>(1 + randomBelow(63)), rn = static_cast<int>(1 + randomBelow(20));
            this->checkQuotient(a, an, b, bn, qn, rn, GuardedItem::AtEnd);

            std::string power = "1" + std::string(randomBelow(static_cast<unsigned>(an - bn)), '0');
            a.digits = reference::cut(reference::multiply(b.digits, power), an);
            this->checkQuotient(a, an, b, bn, 63, rn, GuardedItem::AtStart);
            if (this->HasFatalFailure()) return;
        }
}

TYPED_TEST(ProductsTest, SmallValuesAllOfThem)
{
    for (int a = -130; a <= 130; a += 3)
        for (int b = -25; b <= 25; b++) {
            auto value = [](int number) {
                return Value{reference::cut(std::to_string(std::abs(number)), 4), number < 0};
            };
            this->checkProduct(value(a), 4, value(b), 4, 5, GuardedItem::AtEnd);
            if (b) this->checkQuotient(value(a), 4, value(b), 4, 3, 2, GuardedItem::AtEnd);
            if (b)
                this->checkQuotient(this->padded(value(a), 35), 35, this->padded(value(b), 35), 35, 4, 3,
                                    GuardedItem::AtEnd);
            if (this->HasFatalFailure()) return;
        }
}

struct PackedResult {
    std::string quotient, remainder;
    int returned;
};

PackedResult divr(const char *a, const char *b, int qn, int rn)
{
    Bytes op1 = fromHex(a), op2 = fromHex(b), q(Packed::bytes(qn)), r(Packed::bytes(rn));
    int returned = _zvkcBCD_DIVR_Pckd(op1.data(), op2.data(), q.data(), r.data(), rn, qn,
                                      static_cast<int>(2 * op2.size() - 1), static_cast<int>(2 * op1.size() - 1));
    return {hex(q), hex(r), returned};
}

TEST(PackedDivision, Oddities)
{
    auto same = [](const PackedResult &result, const char *quotient, const char *remainder, int returned) {
        EXPECT_EQ(result.quotient, quotient);
        EXPECT_EQ(result.remainder, remainder);
        EXPECT_EQ(result.returned, returned);
    };
    same(divr("7c", "9c", 1, 1), "0c", "7c", 0);
    same(divr("7d", "9c", 1, 1), "0c", "7d", 0);         // +0, not -0
    same(divr("9d", "9c", 1, 1), "1d", "0c", 1);         // and the remainder +0
    same(divr("018d", "9c", 1, 1), "2d", "0d", 1);       // here the remainder is -0
    same(divr("01000c", "3c", 2, 2), "333c", "001c", 1); // the nibble that two digits do not use keeps the third
    same(divr("010d", "3c", 1, 1), "3d", "1d", 1);
}

TEST(PackedProduct, ZeroKeepsTheSignOfTheRule)
{
    uint8_t five[] = {0x5D}, zero[] = {0x0C}, dst[2];
    _zvkcBCD_MPY_Pckd(five, zero, dst, 3, 1, 1);
    EXPECT_EQ(hex(dst, 2), "000d");
}

// More than 64 digits together: not computed. The destination gets the previous product's digits,
// with the new sign.
TEST(PackedProduct, BeyondTheWorkAreaComesThePreviousProduct)
{
    Bytes a = packedItem(std::string(33, '1'), 0x0C), b = packedItem(std::string(32, '2'), 0x0D), dst(32);
    uint8_t twelve[] = {0x01, 0x2C};
    for (int32_t n : {63, 31}) {
        Bytes seven = packedItem(reference::cut("7", n), 0x0C), before(Packed::bytes(n));
        _zvkcBCD_MPY_Pckd(twelve, seven.data(), before.data(), n, n, 3); // 84
        EXPECT_EQ(hex(before), hex(packedItem(reference::cut("84", n), 0x0C)));
        _zvkcBCD_MPY_Pckd(a.data(), b.data(), dst.data(), 63, 32, 33);
        Bytes wanted = dst;
        std::copy(before.begin(), before.end(), wanted.begin()); // from the left end of the area
        wanted.back() = static_cast<uint8_t>((dst.back() & 0xF0) | 0x0D);
        if (n == 63)
            EXPECT_EQ(hex(dst), hex(wanted));
        else
            EXPECT_EQ(hex(dst).substr(0, 29), hex(wanted).substr(0, 29));
    }
    Bytes sum(32); // 64 digits together are computed
    Bytes c = packedItem(std::string(32, '1'), 0x0C);
    _zvkcBCD_MPY_Pckd(c.data(), b.data(), sum.data(), 63, 32, 32);
    EXPECT_EQ(
        hex(sum),
        hex(packedItem(reference::cut(reference::multiply(std::string(32, '1'), std::string(32, '2')), 63), 0x0D)));
    // A cut factor counts with the destination's digits.
    Bytes shortDst(Packed::bytes(31));
    _zvkcBCD_MPY_Pckd(a.data(), b.data(), shortDst.data(), 31, 32, 33);
    EXPECT_EQ(
        hex(shortDst),
        hex(packedItem(reference::cut(reference::multiply(std::string(33, '1'), std::string(32, '2')), 31), 0x0D)));
}

TEST(ZonedProduct, BeyondTheWorkAreaComesThePreviousProduct)
{
    Bytes a = zonedItem(std::string(64, '1'), true), b = zonedItem(std::string(63, '2'), false), dst(63);
    uint8_t twelve[] = {'1', '2'};
    Bytes seven = zonedItem(reference::cut("7", 61), false);
    _zvkcBCD_MPY_Znd(twelve, seven.data(), dst.data(), 63, 61, 2); // 84
    _zvkcBCD_MPY_Znd(a.data(), b.data(), dst.data(), 63, 62, 64);  // 126 digits together are computed
    EXPECT_EQ(
        hex(dst),
        hex(zonedItem(reference::cut(reference::multiply(std::string(64, '1'), std::string(62, '2')), 63), true)));
    Bytes wide(64);
    _zvkcBCD_MPY_Znd(twelve, seven.data(), wide.data(), 64, 61, 2);
    _zvkcBCD_MPY_Znd(a.data(), b.data(), wide.data(), 64, 63, 64); // 127 are not
    EXPECT_EQ(hex(wide), hex(zonedItem(reference::cut("84", 64), true)));
}

TEST(ZonedProduct, DoesNotDecodeLetters)
{
    uint8_t letter[] = {'1', 'J'}, two[] = {'2'}, dst[4]; // "J" is -1 elsewhere and has the low nibble 10 here
    zvkBcdMulZoned(letter, 2, two, 1, dst, 4);
    EXPECT_EQ(hex(dst, 4), "30303470"); // 2 * (10 + 10), minus
    uint8_t cleanLetter[] = {'1', 'C'};
    zvkBcdMulZoned(cleanLetter, 2, two, 1, dst, 4);
    EXPECT_EQ(hex(dst, 4), "30303236");
}

TEST(ZonedDivision, EqualDigitsInOtherZonesAreNotEqual)
{
    uint8_t ascii[] = {'1', '2'}, other[] = {0xF1, '2'}, q[1], r[2];
    EXPECT_EQ(zvkBcdDivZoned(ascii, 2, other, 2, q, 1, r, 2), 0);
    EXPECT_EQ(hex(q, 1) + hex(r, 2), "303132");
    EXPECT_EQ(zvkBcdDivZoned(other, 2, ascii, 2, q, 1, r, 2), 1);
    EXPECT_EQ(hex(q, 1) + hex(r, 2), "313030");
}

KVR2_PIECE(divide_by_zero)
{
    Bytes seven = {0x7C}, zero = {0x00, 0x0C}, longSeven = packedItem(std::string(40, '7'), 0x0C), longZero(21);
    Bytes q(30), r(30);
    longZero.back() = 0x0C;
    for (auto *dividend : {&seven, &longSeven, &zero})
        for (auto *divisor : {&zero, &longZero}) {
            auto n = [](const Bytes *item) { return static_cast<int32_t>(2 * item->size() - 1); };
            _zvkcBCD_DIVR_Pckd(dividend->data(), divisor->data(), q.data(), r.data(), 59, 59, n(divisor), n(dividend));
            _zvkcBCD_DIV_Pckd(dividend->data(), divisor->data(), q.data(), 4, n(divisor), n(dividend));
            _zvkcBCD_MOD_Pckd(dividend->data(), divisor->data(), q.data(), 4, n(divisor), n(dividend));
        }
    uint8_t digits[] = {'7', '1'}, none[] = {0, '}'};
    _zvkcBCD_DIV_Znd(digits, none, q.data(), 4, 2, 2);
}

TEST(Division, ByZeroIsReported)
{
    ChildRun run = runPiece("divide_by_zero");
    EXPECT_NE(run.err.find("ZVK902"), std::string::npos) << run.err;
    EXPECT_TRUE(run.signal == SIGABRT || run.status == 0) << run.signal;
    // And come to an end when the message returns.
    Bytes seven = packedItem(std::string(40, '7'), 0x0C), zero = packedItem(std::string(40, '0'), 0x0C), q(21), r(21);
    EXPECT_EQ(zvkBcdDivPacked(seven.data(), 40, zero.data(), 40, q.data(), 40, r.data(), 40), 1);
    uint8_t digit[] = {'7'}, nought[] = {'0'}, result[3];
    EXPECT_EQ(zvkBcdDivZoned(digit, 1, nought, 1, result, 3, nullptr, 0), 1);
}

} // namespace
