// Faults that these tests are there to catch: a carry or borrow lost between words, at the end of
// the shorter operand or at the left end; a sign taken from the wrong operand; digits cut on the
// wrong side; an access beyond an item; the oddities of packed subtraction and decrement mended by
// someone who means well; the two ways through addition, by words and by bytes, drifting apart.
#include "decimal/sums.h"
#include "forms.h"

using reference::Value;

namespace {

std::string text(const Value &value) { return (value.negative ? "-" : "+") + value.digits; }

template <class Form>
class SumsTest : public testing::Test {
protected:
    Place a_, b_, to_;

    static auto worker(bool subtracting)
    {
        if constexpr (Form::packed)
            return subtracting ? zvkBcdSubPacked : zvkBcdAddPacked;
        else
            return subtracting ? zvkBcdSubZoned : zvkBcdAddZoned;
    }

    // Both entries and both workers on one pair of operands.
    void check(const Value &a, int an, const Value &b, int bn, int dn, GuardedItem::Place side)
    {
        uint8_t *op1 = a_.put(Form::item(a), side);
        uint8_t *op2 = b_.put(Form::item(b), side);
        for (bool subtracting : {false, true}) {
            std::string wanted = hex(Form::result(reference::sum(a, b, subtracting, Form::packed, dn)));
            uint8_t *dst = to_.put(randomBytes(Form::bytes(dn)), side);
            auto entry = subtracting ? Form::subtractEntry : Form::addEntry;
            ASSERT_EQ(entry(op1, op2, dst, dn, bn, an), dst);
            ASSERT_EQ(hex(dst, Form::bytes(dn)), wanted)
                << text(a) << (subtracting ? " minus " : " plus ") << text(b) << " into " << dn;
            // The worker for items of any kind, which the entries leave to long and unclean ones.
            dst = to_.put(randomBytes(Form::bytes(dn)), side);
            ASSERT_EQ(worker(subtracting)(op1, an, op2, bn, dst, dn, 0), 1);
            ASSERT_EQ(hex(dst, Form::bytes(dn)), wanted)
                << text(a) << (subtracting ? " minus " : " plus ") << text(b) << " into " << dn;
        }
    }

    // Items at all alignments, where words of other widths may be at work.
    void checkAligned(const Value &a, int an, const Value &b, int bn, int dn, unsigned alignment)
    {
        uint8_t *op1 = a_.putAligned(Form::item(a), alignment & 7);
        uint8_t *op2 = b_.putAligned(Form::item(b), alignment >> 3 & 7);
        uint8_t *dst = to_.putAligned(randomBytes(Form::bytes(dn)), alignment >> 6 & 7);
        worker(true)(op1, an, op2, bn, dst, dn, 0);
        ASSERT_EQ(hex(dst, Form::bytes(dn)), hex(Form::result(reference::sum(a, b, true, Form::packed, dn))));
        worker(false)(op1, an, op2, bn, dst, dn, 0);
        ASSERT_EQ(hex(dst, Form::bytes(dn)), hex(Form::result(reference::sum(a, b, false, Form::packed, dn))));
    }
};

using Forms = testing::Types<Packed, Zoned>;
TYPED_TEST_SUITE(SumsTest, Forms);

TYPED_TEST(SumsTest, AgreeWithPencilAndPaper)
{
    for (int an = 1; an <= 31; an++)
        for (int bn = 1; bn <= 31; bn++)
            for (int dn = 1 + (an + bn) % 3; dn <= 31; dn += 3) {
                auto side = randomBelow(2) ? GuardedItem::AtStart : GuardedItem::AtEnd;
                this->check(randomOperand<TypeParam>(an), an, randomOperand<TypeParam>(bn), bn, dn, side);
                if (this->HasFatalFailure()) return;
            }
}

TYPED_TEST(SumsTest, AgreeForLongItems)
{
    for (int round = 0; round < 6000; round++) {
        int n[3];
        for (int &digits : n) digits = static_cast<int>(1 + randomBelow(63));
        auto side = round % 2 ? GuardedItem::AtStart : GuardedItem::AtEnd;
        this->check(randomOperand<TypeParam>(n[0]), n[0], randomOperand<TypeParam>(n[1]), n[1], n[2], side);
        if (this->HasFatalFailure()) return;
    }
}

TYPED_TEST(SumsTest, AgreeAtEveryAlignment)
{
    for (unsigned alignment = 0; alignment < 512; alignment++) {
        for (int n : {15, 31, 47}) {
            Value a = randomValue(n), b = randomValue(n - static_cast<int>(randomBelow(5)));
            this->checkAligned(a, static_cast<int>(a.digits.size()), b, static_cast<int>(b.digits.size()), n + 2,
                               alignment);
            if (this->HasFatalFailure()) return;
        }
    }
}

// Nines that meet ones at every place: the longest carries, and both directions of the borrow.
TYPED_TEST(SumsTest, CarriesRunTheWholeWay)
{
    for (int n = 1; n <= 63; n++) {
        for (int length = 1; length <= n; length += n > 31 ? 7 : 1) {
            Value nines{reference::cut(std::string(static_cast<size_t>(length), '9'), n), false};
            Value ones{reference::cut("1", n), false};
            Value power{reference::cut("1" + std::string(static_cast<size_t>(length - 1), '0'), n), false};
            for (int dn : {n - 1, n, n + 1, n + 2}) {
                if (dn < 1 || dn > 63) continue;
                this->check(nines, n, ones, n, dn, GuardedItem::AtEnd);
                this->check(power, n, ones, n, dn, GuardedItem::AtStart);
                this->check(power, n, {nines.digits, true}, n, dn, GuardedItem::AtEnd);
                this->check(nines, n, nines, n, dn, GuardedItem::AtEnd);
                if (this->HasFatalFailure()) return;
            }
        }
    }
}

template <class Entry>
std::string packedResult(Entry entry, const char *a, const char *b, int dn)
{
    Bytes op1 = fromHex(a), op2 = fromHex(b), dst(static_cast<size_t>(dn / 2 + 1));
    entry(op1.data(), op2.data(), dst.data(), dn, static_cast<int>(2 * op2.size() - 1),
          static_cast<int>(2 * op1.size() - 1));
    return hex(dst);
}

TEST(PackedSums, Oddities)
{
    auto add = _zvkcBCD_ADD_Pckd;
    auto sub = _zvkcBCD_SUB_Pckd;
    EXPECT_EQ(packedResult(sub, "01001c", "02000c", 5), "00099d"); // not -999: the pair 99 loses 90
    EXPECT_EQ(packedResult(sub, "01001c", "02000c", 3), "099d");
    EXPECT_EQ(packedResult(add, "999c", "1c", 3), "000c");
    EXPECT_EQ(packedResult(add, "999c", "1c", 5), "01000c");
    EXPECT_EQ(packedResult(add, "099c", "1c", 2), "000c");
    EXPECT_EQ(packedResult(add, "5c", "5d", 1), "0c");
    EXPECT_EQ(packedResult(add, "5d", "5c", 1), "0d");
    EXPECT_EQ(packedResult(sub, "5c", "5c", 1), "0c");
    EXPECT_EQ(packedResult(sub, "5d", "5d", 1), "0d");
    EXPECT_EQ(packedResult(add, "8c", "8c", 3), "016c");
}

TEST(ZonedSums, ZonesThatNoCarryReachesStay)
{
    uint8_t a[] = {0xF1, 0xF2, '3', '9'}, b[] = {'1'}, dst[5];
    ASSERT_EQ(zvkBcdAddZoned(a, 4, b, 1, dst, 5, 0), 1);
    EXPECT_EQ(hex(dst, 5), "30f1f23430");
    ASSERT_EQ(zvkBcdSubZoned(a, 4, b, 1, dst, 5, 0), 1);
    EXPECT_EQ(hex(dst, 5), "30f1f23338");
}

TEST(ZonedSums, WhereAnItemHasNoDigitsNothingIsStored)
{
    const uint8_t a[] = {'1', '2'}, b[] = {'3', '4'};
    for (int lengths = 0; lengths < 27; lengths++) {
        const int an = lengths % 3, bn = lengths / 3 % 3, dn = lengths / 9;
        if (an && bn && dn) continue;
        for (auto entry : {_zvkcBCD_ADD_Znd, _zvkcBCD_SUB_Znd}) {
            uint8_t dst[] = {'x', 'y'};
            entry(a, b, dst, dn, bn, an);
            EXPECT_EQ(hex(dst, 2), "7879") << an << " and " << bn << " into " << dn;
        }
    }
}

// ---- binary integers ----

// The packed decrement's rules, digit by digit on the whole item: the sign turns at the units'
// borrow and at each complement.
Value packedDecrement(Value item, std::string value, bool valueNegative, bool fromEntry)
{
    std::string digits = item.digits;
    bool reserved = fromEntry ? !valueNegative : valueNegative;
    auto complement = [&] {
        std::string ones(digits.size(), '0');
        for (size_t i = 0; i < digits.size(); i++) ones[i] = static_cast<char>('9' - digits[i] + '0');
        digits = reference::cut(reference::add(ones, "1"), static_cast<int>(digits.size()));
        digits = reference::reducedPairs(digits);
    };
    auto n = static_cast<int>(digits.size());
    if (value.back() > digits.back()) item.negative = !item.negative;
    std::string low = reference::cut(value, n);
    std::string high =
        reference::stripped(value).size() > digits.size() ? value.substr(0, value.size() - digits.size()) : "";
    if (reference::compare(digits, low) >= 0) {
        digits = reference::cut(reference::subtract(digits, low), n);
    } else {
        digits = reference::cut(reference::subtract("1" + digits, low), n);
        complement();
        item.negative = !item.negative;
    }
    if (reference::stripped(high) != "0") {
        complement();
        item.negative = reserved;
    }
    return {digits, item.negative};
}

Value zonedDecrement(Value item, std::string value, bool valueNegative, bool fromEntry)
{
    auto n = static_cast<int>(item.digits.size());
    std::string low = reference::cut(value, n);
    bool more = reference::stripped(value).size() > item.digits.size();
    bool borrow = reference::compare(item.digits, low) < 0;
    std::string digits = reference::cut(reference::subtract(borrow ? "1" + item.digits : item.digits, low), n);
    auto complement = [&] {
        digits = reference::cut(reference::subtract("1" + std::string(digits.size(), '0'), digits), n);
    };
    if (borrow) complement(), item.negative = !item.negative;
    if (more) complement(), item.negative = fromEntry ? !valueNegative : valueNegative;
    return {digits, item.negative};
}

template <class Form>
Value stepped(const Value &item, int64_t value, bool subtracting)
{
    if (value == 0) return item;
    std::string digits = std::to_string(value);
    bool negative = value < 0;
    if (negative) digits.erase(0, 1);
    bool adds = (item.negative == negative) != subtracting;
    if (adds)
        return {reference::cut(reference::add(item.digits, digits), static_cast<int>(item.digits.size())),
                item.negative};
    return Form::packed ? packedDecrement(item, digits, negative, subtracting)
                        : zonedDecrement(item, digits, negative, subtracting);
}

template <class Form>
class IncrementTest : public testing::Test {
};
TYPED_TEST_SUITE(IncrementTest, Forms);

TYPED_TEST(IncrementTest, AgreesWithPencilAndPaper)
{
    Place place;
    for (int n = 1; n <= 40; n++) {
        for (int round = 0; round < 400; round++) {
            Value item = randomValue(n);
            auto value = static_cast<int64_t>(randomness()() >> randomBelow(63));
            if (round % 5 == 0) value = 0;
            if (round % 7 == 0) value = INT64_MAX;
            if (randomBelow(2)) value = -value;
            bool narrow = value == static_cast<int32_t>(value) && randomBelow(2);
            bool subtracting = randomBelow(2);
            // The packed item is taken as it is in its bytes; an even count has no digit in the
            // first nibble.
            Value whole{TypeParam::packed && n % 2 == 0 ? "0" + item.digits : item.digits, item.negative};
            Value wanted = stepped<TypeParam>(whole, value, subtracting);
            wanted.digits = reference::cut(wanted.digits, n);
            Bytes before = TypeParam::item(item);
            uint8_t *op = place.put(before, round % 2 ? GuardedItem::AtStart : GuardedItem::AtEnd);
            uint8_t *back = narrow ? (subtracting ? TypeParam::subtractInt4
                                                  : TypeParam::addInt4)(op, n, static_cast<int32_t>(value))
                                   : (subtracting ? TypeParam::subtractInt8 : TypeParam::addInt8)(op, n, value);
            ASSERT_EQ(back, op);
            ASSERT_EQ(hex(op, before.size()), value == 0 ? hex(before) : hex(TypeParam::result(wanted)))
                << text(item) << (subtracting ? " minus " : " plus ") << value;
        }
    }
}

TEST(PackedIncrement, Oddities)
{
    auto subtract = [](const char *item, int64_t value) {
        Bytes op = fromHex(item);
        _zvkcBCD_SUB_Pckd_Int8(op.data(), static_cast<int>(2 * op.size() - 1), value);
        return hex(op);
    };
    EXPECT_EQ(subtract("015c", 7), "008d");
    EXPECT_EQ(subtract("100c", 1), "099d");
    EXPECT_EQ(subtract("015c", 4), "011c");
    EXPECT_EQ(subtract("3c", 7), "4c");             // turned by the borrow and again by the complement
    EXPECT_EQ(subtract("00500c", 99990), "09490d"); // the pair 99 loses 90
    uint8_t item[] = {0x5F};
    _zvkcBCD_ADD_Pckd_Int8(item, 1, 0);
    EXPECT_EQ(item[0], 0x5F);
    uint8_t zoned[] = {'1', '5'};
    _zvkcBCD_SUB_Znd_Int8(zoned, 2, 7);
    EXPECT_EQ(hex(zoned, 2), "3038");
    for (int64_t least : {INT64_MIN, int64_t{INT32_MIN}}) { // counts with its magnitude
        Bytes op = fromHex("000000000000000000000c");
        least == INT32_MIN ? _zvkcBCD_ADD_Pckd_Int4(op.data(), 21, INT32_MIN)
                           : _zvkcBCD_SUB_Pckd_Int8(op.data(), 21, INT64_MIN);
        EXPECT_NE(hex(op), "000000000000000000000c");
    }
}

} // namespace
