// Faults that these tests are there to catch: a short cut that takes items which are no numbers and
// computes something else than the general way; a result that depends on where an item lies or how
// its bytes fall into words; an access beyond an item by overlapping loads and stores, at any
// alignment; a byte that a table of one-digit items has wrong.
#include "byte_model.h"
#include "decimal/mode.h"
#include "decimal/sums.h"
#include "forms.h"
#include "mode_guard.h"
#include "support/share.h"

namespace {

// From clean digits to plain noise, with leading zeros and all sign nibbles.
template <class Form>
Bytes anyItem(int n)
{
    Bytes item = Form::item(randomOperand<Form>(n));
    unsigned kind = randomBelow(4);
    if (kind == 0) item = randomBytes(item.size());
    for (unsigned i = 1; i < kind; i++) {
        uint8_t &byte = item[randomBelow(static_cast<unsigned>(item.size()))];
        byte = static_cast<uint8_t>(randomBelow(2) ? (byte & 0xF0) | randomBelow(16)
                                                   : (byte & 0x0F) | randomBelow(16) << 4);
    }
    return item;
}

template <class Form>
class AnyBytes : public testing::Test {
protected:
    using Model = std::conditional_t<Form::packed, bytemodel::Packed, bytemodel::Zoned>;

    ModeGuard mode_{ZVK_BCD_NO_VALIDATION};
    Place a_, b_, to_;

    // Against a protected page on either side, or at an alignment.
    static uint8_t *put(Place &place, const Bytes &item)
    {
        unsigned where = randomBelow(10);
        return where < 8 ? place.putAligned(item, where)
                         : place.put(item, where == 8 ? GuardedItem::AtStart : GuardedItem::AtEnd);
    }

    void check(int an, int bn, int dn)
    {
        Bytes a = anyItem<Form>(an), b = anyItem<Form>(bn);
        if (randomBelow(4) == 0) { // much the same, so that a difference far right decides
            b = Model::low(a, b.size());
            b.insert(b.begin(), Form::bytes(bn) - b.size(), Form::packed ? 0 : '0');
        }
        const uint8_t *op1 = put(a_, a), *op2 = put(b_, b);
        std::string operands = hex(a) + " and " + hex(b) + " into " + std::to_string(dn);
        auto expect = [&](auto entry, std::optional<Bytes> wanted, const char *what) {
            uint8_t *dst = put(to_, randomBytes(Form::bytes(dn)));
            ASSERT_EQ(entry(op1, op2, dst, dn, bn, an), dst);
            ASSERT_EQ(hex(dst, Form::bytes(dn)), hex(wanted.value_or(Bytes(dst, dst + Form::bytes(dn)))))
                << what << " of " << operands;
        };
        expect(Form::addEntry, Model::add(a, b, dn), "sum");
        expect(Form::subtractEntry, Model::subtract(a, b, dn), "difference");
        if (an + bn < 64) expect(Form::multiply, Model::multiply(a, b, dn), "product"); // longer ones are not computed
        int order = Model::compare(a, b, false);
        ASSERT_EQ(Form::equ(op1, op2, bn, an), order == 0) << operands;
        ASSERT_EQ(Form::neq(op1, op2, bn, an), order != 0) << operands;
        ASSERT_EQ(Form::grt(op1, op2, bn, an), order > 0) << operands;
        ASSERT_EQ(Form::geq(op1, op2, bn, an), order >= 0) << operands;
        ASSERT_EQ(Form::les(op1, op2, bn, an), order < 0) << operands;
        ASSERT_EQ(Form::leq(op1, op2, bn, an), order <= 0) << operands;
    }
};

using Forms = testing::Types<Packed, Zoned>;
TYPED_TEST_SUITE(AnyBytes, Forms);

TYPED_TEST(AnyBytes, SumsProductsAndComparisonsGoByTheModel)
{
    for (int round = 0; round < shareOf(60000); round++) {
        unsigned limit = round % 3 == 0 ? 15 : 31; // both short cuts of packed items, and beyond their end
        auto count = [&] { return static_cast<int>(1 + randomBelow(limit + 1)); };
        const int n = count();
        if (round % 2) // of one length, as short cuts are that know it
            this->check(n, n, n);
        else
            this->check(n, count(), count());
        if (this->HasFatalFailure()) return;
    }
}

TYPED_TEST(AnyBytes, OneDigitOfEveryByte)
{
    using ByModel = typename TestFixture::Model;
    auto expect = [](auto entry, uint8_t a, uint8_t b, const std::optional<Bytes> &wanted) {
        Bytes dst{0xEE};
        entry(&a, &b, dst.data(), 1, 1, 1);
        ASSERT_EQ(hex(dst), hex(wanted.value_or(dst))) << hex({a, b});
    };
    for (int pair = 0; pair < 0x10000; pair += static_cast<int>(0x10000 / shareOf(0x10000))) {
        const auto a = static_cast<uint8_t>(pair >> 8), b = static_cast<uint8_t>(pair + pair / 0x100);
        expect(TypeParam::addEntry, a, b, ByModel::add({a}, {b}, 1));
        expect(TypeParam::subtractEntry, a, b, ByModel::subtract({a}, {b}, 1));
        if (this->HasFatalFailure()) return;
    }
    auto worker = [](bool adds, uint8_t *item, int value) {
        if (TypeParam::packed)
            (adds ? zvkBcdIncPacked : zvkBcdDecPacked)(item, 1, value, 0);
        else
            (adds ? zvkBcdIncZoned : zvkBcdDecZoned)(item, 1, value, 0);
    };
    for (int byte = 0; byte < 0x100; byte++)
        for (int value = -20; value <= 20; value++)
            for (bool adds : {true, false}) {
                auto wanted = static_cast<uint8_t>(byte), got = wanted, wide = wanted;
                worker(adds, &wanted, value);
                (adds ? TypeParam::addInt4 : TypeParam::subtractInt4)(&got, 1, value);
                (adds ? TypeParam::addInt8 : TypeParam::subtractInt8)(&wide, 1, value);
                ASSERT_EQ(hex({got, wide}), hex({wanted, wanted})) << byte << (adds ? " plus " : " minus ") << value;
            }
}

} // namespace
