// Faults that these tests are there to catch: bytes that are no numbers crashing an entry, hanging
// it, leading it beyond an item or to an answer that depends on where the item lies; validation
// done in the wrong mode, or not; a dump without its title, a line, or in another shape.
#include <functional>

#include "forms.h"
#include "kvr2/decimal_scaling.h"
#include "mode_guard.h"
#include "support/child.h"

namespace {

// The entries by signature, with what the frame does for them.
enum class Checked { Arithmetic, Source, Compared, Never };

struct Row {
    const char *name;
    bool packed;
    Checked checked;
    const char *title; // null: no dump
};

using TwoOperands = uint8_t *(*)(const uint8_t *, const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);
using OneOperand = uint8_t *(*)(const uint8_t *, uint8_t *, int32_t, int32_t);
using Relation = int32_t (*)(const uint8_t *, const uint8_t *, int32_t, int32_t);
using Shift = uint8_t *(*)(const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);

struct TwoOperandRow : Row {
    TwoOperands entry;
};
struct OneOperandRow : Row {
    OneOperand entry;
};
struct RelationRow : Row {
    Relation entry;
};
struct ShiftRow : Row {
    Shift entry;
};

const TwoOperandRow kTwoOperands[] = {
    {{"ADD_Pckd", true, Checked::Arithmetic, "add packed..."}, _zvkcBCD_ADD_Pckd},
    {{"SUB_Pckd", true, Checked::Arithmetic, "sub packed..."}, _zvkcBCD_SUB_Pckd},
    {{"MPY_Pckd", true, Checked::Arithmetic, "mpy packed..."}, _zvkcBCD_MPY_Pckd},
    {{"DIV_Pckd", true, Checked::Arithmetic, "div packed..."}, _zvkcBCD_DIV_Pckd},
    {{"MOD_Pckd", true, Checked::Arithmetic, "mod packed..."}, _zvkcBCD_MOD_Pckd},
    {{"ADD_Znd", false, Checked::Arithmetic, "add zoned..."}, _zvkcBCD_ADD_Znd},
    {{"SUB_Znd", false, Checked::Arithmetic, "sub zoned..."}, _zvkcBCD_SUB_Znd},
    {{"MPY_Znd", false, Checked::Arithmetic, "mpy zoned..."}, _zvkcBCD_MPY_Znd},
    {{"DIV_Znd", false, Checked::Arithmetic, "div zoned..."}, _zvkcBCD_DIV_Znd},
    {{"MOD_Znd", false, Checked::Arithmetic, nullptr}, _zvkcBCD_MOD_Znd},
};

const OneOperandRow kOneOperand[] = {
    {{"ABS_Pckd", true, Checked::Arithmetic, "abs packed..."}, _zvkcBCD_ABS_Pckd},
    {{"ABS_Znd", false, Checked::Source, nullptr}, _zvkcBCD_ABS_Znd},
    {{"ABS_ZndLO", false, Checked::Source, nullptr}, _zvkcBCD_ABS_ZndLO},
    {{"NEG_Pckd", true, Checked::Arithmetic, "neg packed..."}, _zvkcBCD_NEG_Pckd},
    {{"NEG_Znd", false, Checked::Arithmetic, nullptr}, _zvkcBCD_NEG_Znd},
    {{"NEG_ZndLO", false, Checked::Arithmetic, nullptr}, _zvkcBCD_NEG_ZndLO},
};

const RelationRow kRelations[] = {
    {{"EQU_Pckd", true, Checked::Compared, "equ packed..."}, _zvkcBCD_EQU_Pckd},
    {{"NEQ_Pckd", true, Checked::Compared, "neq packed..."}, _zvkcBCD_NEQ_Pckd},
    {{"GRT_Pckd", true, Checked::Compared, "grt packed..."}, _zvkcBCD_GRT_Pckd},
    {{"GEQ_Pckd", true, Checked::Compared, "geq packed..."}, _zvkcBCD_GEQ_Pckd},
    {{"LES_Pckd", true, Checked::Compared, "les packed..."}, _zvkcBCD_LES_Pckd},
    {{"LEQ_Pckd", true, Checked::Compared, "leq packed..."}, _zvkcBCD_LEQ_Pckd},
    {{"EQU_Znd", false, Checked::Compared, nullptr}, _zvkcBCD_EQU_Znd},
    {{"LEQ_Znd", false, Checked::Compared, nullptr}, _zvkcBCD_LEQ_Znd},
};

#define SHIFT_ROWS(FORM, PACKED, NAME)                                                                                 \
    {{#FORM " left", PACKED, Checked::Never, "Shift " NAME " left 3 ..."}, _zvkcBCD_SHFD_##FORM##_Left},               \
        {{#FORM " right", PACKED, Checked::Never, "Shift " NAME " right 3 ..."}, _zvkcBCD_SHFD_##FORM##_Right},        \
    {                                                                                                                  \
        {#FORM " rounded", PACKED, Checked::Never, "Shift " NAME " right round 3 ..."},                                \
            _zvkcBCD_SHFD_##FORM##_RightRnd                                                                            \
    }

const ShiftRow kShifts[] = {
    SHIFT_ROWS(Pckd, true, "packed"),    SHIFT_ROWS(Znd, false, "zoned"),     SHIFT_ROWS(ZndLO, false, "zonedlo"),
    SHIFT_ROWS(ZndUS, false, "zonedus"), SHIFT_ROWS(ZndTS, false, "zonedts"), SHIFT_ROWS(ZndLS, false, "zonedls"),
};

size_t bytesOf(const Row &row, int n) { return row.packed ? Packed::bytes(n) : Zoned::bytes(n); }

// Random bytes, sometimes mostly digits, so that all depths of the workers are reached.
Bytes anyBytes(const Row &row, int n)
{
    Bytes item = randomBytes(bytesOf(row, n) + 1); // one more for a separate sign
    if (randomBelow(2)) {
        Bytes digits = row.packed ? packedItem(randomDigits(n), 0x0C) : zonedItem(randomDigits(n), false);
        std::copy(digits.begin(), digits.end(), item.begin());
        item[randomBelow(static_cast<unsigned>(digits.size()))] = static_cast<uint8_t>(randomness()());
    }
    return item;
}

// Runs one call with its items against protected pages on either side and at all alignments:
// nothing may fault, and all results are the same.
template <class Call>
void everywhere(const Row &row, const Bytes &op1, const Bytes &op2, size_t dstBytes, Call call)
{
    static Place a, b, to;
    std::string first;
    for (unsigned place = 0; place < 6; place++) {
        uint8_t *p, *q, *dst;
        Bytes empty(dstBytes, 0xEE);
        if (place < 2) {
            auto side = place ? GuardedItem::AtEnd : GuardedItem::AtStart;
            p = a.put(op1, side), q = b.put(op2, side), dst = to.put(empty, side);
        } else {
            p = a.putAligned(op1, place * 3 & 7), q = b.putAligned(op2, place),
            dst = to.putAligned(empty, place * 5 & 7);
        }
        std::string result = std::to_string(call(p, q, dst)) + " " + hex(dst, dstBytes);
        if (place == 0) first = result;
        ASSERT_EQ(result, first) << row.name << " of " << hex(op1) << " and " << hex(op2) << " at place " << place;
    }
}

int randomCount() { return static_cast<int>(randomBelow(3) ? 1 + randomBelow(20) : 1 + randomBelow(63)); }

TEST(AnyBytes, EveryEntryComesToAnEndAndStaysWithinItsItems)
{
    ModeGuard mode(ZVK_BCD_NO_VALIDATION);
    for (int round = 0; round < 250; round++) {
        int n1 = randomCount(), n2 = randomCount(), dn = randomCount();
        for (auto &row : kTwoOperands) {
            Bytes a = anyBytes(row, n1), b = anyBytes(row, n2);
            a.pop_back(), b.pop_back();
            bool divides = row.name[0] == 'D' || (row.name[0] == 'M' && row.name[1] == 'O');
            if (divides)
                b.back() = row.packed       ? b.back() | 0x10
                           : randomBelow(2) ? 'K'
                                            : 0xE5; // a zero divisor is another matter
            everywhere(row, a, b, bytesOf(row, dn),
                       [&](auto *p, auto *q, auto *dst) { return row.entry(p, q, dst, dn, n2, n1) == dst; });
            if (divides && row.name[0] == 'D')
                everywhere(row, a, b, 2 * bytesOf(row, dn), [&](auto *p, auto *q, auto *dst) {
                    uint8_t *rest = dst + bytesOf(row, dn);
                    if (row.packed) return _zvkcBCD_DIVR_Pckd(p, q, dst, rest, dn, dn, n2, n1);
                    return int{_zvkcBCD_DIVR_Znd(p, q, dst, rest, dn, dn, n2, n1) == dst};
                });
        }
        for (auto &row : kOneOperand) {
            Bytes a = anyBytes(row, n1);
            a.pop_back();
            everywhere(row, a, a, bytesOf(row, dn),
                       [&](auto *p, auto *, auto *dst) { return row.entry(p, dst, dn, n1) == dst; });
        }
        for (auto &row : kRelations) {
            Bytes a = anyBytes(row, n1), b = round % 2 ? a : anyBytes(row, n2);
            int bn = round % 2 ? n1 : n2;
            a.pop_back(), b.pop_back();
            everywhere(row, a, b, 0, [&](auto *p, auto *q, auto *) { return row.entry(p, q, bn, n1); });
        }
        for (auto &row : kShifts) {
            Bytes a = anyBytes(row, n1);
            bool separate = strstr(row.name, "TS") || strstr(row.name, "LS");
            if (!separate) a.pop_back();
            auto shift = static_cast<int32_t>(randomBelow(70));
            everywhere(row, a, a, bytesOf(row, dn) + separate,
                       [&](auto *p, auto *, auto *dst) { return row.entry(p, dst, dn, n1, shift) == dst; });
        }
        for (bool packed : {true, false}) {
            Row row{"integer", packed, Checked::Arithmetic, nullptr};
            Bytes a = anyBytes(row, n1);
            a.pop_back();
            auto value = static_cast<int64_t>(randomness()());
            auto entries = packed ? std::pair(Packed::addInt8, Packed::subtractInt8)
                                  : std::pair(Zoned::addInt8, Zoned::subtractInt8);
            for (auto entry : {entries.first, entries.second})
                everywhere(row, {}, {}, a.size(), [&](auto *, auto *, auto *dst) {
                    memcpy(dst, a.data(), a.size());
                    return entry(dst, n1, value) == dst;
                });
        }
        if (HasFatalFailure()) return;
    }
}

// Whether a call reports 903. The message may end the process, so the call is made in a child.
bool reports903(uint32_t mode, const std::function<void()> &call)
{
    ChildRun run = runChild([&] {
        zvkBcdMode = mode;
        call();
    });
    EXPECT_TRUE(run.signal == SIGABRT || run.status == 0) << run.signal << run.err;
    return run.err.find("ZVK903") != std::string::npos;
}

TEST(Validation, GoesByFamilyAndMode)
{
    Bytes bad = {0x12, 0x55, 0x55}, zonedBad = {'1', 'x', '3'}, good = {0x12, 0x34, 0x5C}, zonedGood = {'1', '2', '3'},
          dst(10);
    auto check = [&](const Row &row, const std::function<void(const uint8_t *)> &call) {
        const uint8_t *item = row.packed ? bad.data() : zonedBad.data();
        const uint8_t *clean = row.packed ? good.data() : zonedGood.data();
        uint32_t on = row.checked == Checked::Source ? 0x10 : row.checked == Checked::Compared ? 0x40 : 0;
        uint32_t off = row.checked == Checked::Arithmetic ? 0x01 : 0;
        if (row.checked == Checked::Never) on = 0x50;
        EXPECT_EQ(reports903(on, [&] { call(item); }), row.checked != Checked::Never) << row.name;
        EXPECT_FALSE(reports903(off, [&] { call(item); })) << row.name;
        EXPECT_FALSE(reports903(on, [&] { call(clean); })) << row.name;
        // The mute button works for all but the strict check.
        if (row.checked == Checked::Source) {
            EXPECT_FALSE(reports903(on | 0x01, [&] { call(item); })) << row.name;
        }
    };
    auto digits = [](const Row &row) { return row.packed ? 5 : 3; };
    for (auto &row : kTwoOperands)
        for (bool second : {false, true})
            check(row, [&](const uint8_t *item) {
                const uint8_t *other = row.packed ? good.data() : zonedGood.data();
                row.entry(second ? other : item, second ? item : other, dst.data(), 5, digits(row), digits(row));
            });
    for (auto &row : kOneOperand) check(row, [&](const uint8_t *item) { row.entry(item, dst.data(), 5, digits(row)); });
    for (auto &row : kRelations) {
        const uint8_t *other = row.packed ? good.data() : zonedGood.data();
        check(row, [&](const uint8_t *item) { row.entry(item, other, digits(row), digits(row)); });
    }
    check({"NOT_Pckd", true, Checked::Compared, nullptr}, [](const uint8_t *item) { _zvkcBCD_NOT_Pckd(item, 5); });
    check({"NOT_Znd", false, Checked::Compared, nullptr}, [](const uint8_t *item) { _zvkcBCD_NOT_Znd(item, 3); });
    check({"DIVR_Pckd", true, Checked::Arithmetic, nullptr},
          [&](const uint8_t *item) { _zvkcBCD_DIVR_Pckd(item, good.data(), dst.data(), dst.data() + 5, 5, 5, 5, 5); });
    check({"ADD_Pckd_Int8", true, Checked::Arithmetic, nullptr},
          [&](const uint8_t *item) { _zvkcBCD_ADD_Pckd_Int8(const_cast<uint8_t *>(item), 5, 1); });
    check({"SUB_Znd_Int4", false, Checked::Arithmetic, nullptr},
          [&](const uint8_t *item) { _zvkcBCD_SUB_Znd_Int4(const_cast<uint8_t *>(item), 3, 1); });
    check(kShifts[0], [&](const uint8_t *item) { kShifts[0].entry(item, dst.data(), 5, 5, 1); });
}

std::string line(const char *label, const uint8_t *item, int digits, const char *colon, const std::string &bytes)
{
    char text[200];
    snprintf(text, sizeof text, "%s %p %d%s %s\n", label, static_cast<const void *>(item), digits, colon,
             bytes.c_str());
    return text;
}

std::string dumpOf(const std::function<void()> &call)
{
    return runChild([&] {
               zvkBcdMode = ZVK_BCD_DEBUG;
               call();
           })
        .err;
}

TEST(Dump, HasTitleOperandsAndResult)
{
    static const uint8_t packed1[] = {0x01, 0x2C}, packed2[] = {0x3C}, zoned1[] = {'1', '2'}, zoned2[] = {'3'};
    static uint8_t dst[8], rest[8];
    for (auto &row : kTwoOperands) {
        const uint8_t *a = row.packed ? packed1 : zoned1, *b = row.packed ? packed2 : zoned2;
        int an = row.packed ? 3 : 2;
        row.entry(a, b, dst, 3, 1, an);
        std::string result = hex(dst, bytesOf(row, 3));
        std::string wanted = row.title ? std::string(row.title) + "\n" + line("op1:", a, an, ":", hex(a, 2)) +
                                             line("op2:", b, 1, ":", hex(b, 1)) + line("dst:", dst, 3, ":", result)
                                       : "";
        EXPECT_EQ(dumpOf([&] { row.entry(a, b, dst, 3, 1, an); }), wanted) << row.name;
    }
    EXPECT_EQ(dumpOf([] { _zvkcBCD_DIVR_Pckd(packed1, packed2, dst, rest, 1, 3, 1, 3); }),
              "div packed remainder...\n" + line("op1:", packed1, 3, ":", "012c") +
                  line("op2:", packed2, 1, ":", "3c") + line("dst:", dst, 3, ":", "004c") + "rem: 0c\n");
    EXPECT_EQ(dumpOf([] { _zvkcBCD_DIVR_Znd(zoned1, zoned2, dst, rest, 1, 3, 1, 2); }), "");
    for (auto &row : kOneOperand) {
        const uint8_t *a = row.packed ? packed1 : zoned1;
        int an = row.packed ? 3 : 2;
        row.entry(a, dst, 1, an);
        std::string result = hex(dst, 1);
        std::string wanted = row.title ? std::string(row.title) + "\n" + line("src:", a, an, ":", hex(a, 2)) +
                                             line("dst:", dst, 1, ":", result)
                                       : "";
        EXPECT_EQ(dumpOf([&] { row.entry(a, dst, 1, an); }), wanted) << row.name;
    }
    for (auto &row : kRelations) {
        const uint8_t *a = row.packed ? packed1 : zoned1, *b = row.packed ? packed2 : zoned2;
        int an = row.packed ? 3 : 2;
        std::string wanted = row.title ? std::string(row.title) + "\n" + line("op1:", a, an, ":", hex(a, 2)) +
                                             line("op2:", b, 1, ":", hex(b, 1)) +
                                             "res: " + std::to_string(row.entry(a, b, 1, an)) + "\n"
                                       : "";
        EXPECT_EQ(dumpOf([&] { row.entry(a, b, 1, an); }), wanted) << row.name;
    }
    EXPECT_EQ(dumpOf([] { _zvkcBCD_NOT_Pckd(packed1, 3); }),
              "not packed...\n" + line("op1:", packed1, 3, ":", "012c") + "res: 0\n");
    EXPECT_EQ(dumpOf([] { _zvkcBCD_NOT_Znd(zoned1, 2); }), "");
    static const uint8_t signed1[] = {'+', '1', '2', '+'};
    for (auto &row : kShifts) {
        bool separate = strstr(row.name, "TS") || strstr(row.name, "LS");
        const uint8_t *a = row.packed ? packed1 : strstr(row.name, "TS") ? signed1 + 1 : separate ? signed1 : zoned1;
        int an = row.packed ? 3 : 2;
        row.entry(a, dst, 5, an, 3);
        std::string wanted = std::string(row.title) + "\n" + line("op1:", a, an, "", hex(a, 2)) +
                             line(row.packed ? "res:" : "op2:", dst, 5, "", hex(dst, bytesOf(row, 5)));
        EXPECT_EQ(dumpOf([&] { row.entry(a, dst, 5, an, 3); }), wanted) << row.name;
    }
}

TEST(Dump, OfBinaryIntegers)
{
    static uint8_t packed[2], zoned[2];
    struct {
        const char *title;
        std::function<void()> call;
        bool packed;
        const char *value, *result;
    } rows[] = {
        {"inc packed_int64...", [] { _zvkcBCD_ADD_Pckd_Int8(packed, 3, 5000000000); }, true, "5000000000", "012c"},
        {"inc packed_int32...", [] { _zvkcBCD_ADD_Pckd_Int4(packed, 3, 7); }, true, "7", "019c"},
        {"dec packed_int64...", [] { _zvkcBCD_SUB_Pckd_Int8(packed, 3, -7); }, true, "-7", "019c"},
        {"dec packed_int32...", [] { _zvkcBCD_SUB_Pckd_Int4(packed, 3, 1); }, true, "1", "011c"},
        {"inc zoned_int64...", [] { _zvkcBCD_ADD_Znd_Int8(zoned, 2, 7); }, false, "7", "3139"},
        {"inc zoned_32...", [] { _zvkcBCD_ADD_Znd_Int4(zoned, 2, 7); }, false, "7",
         "3139"}, // the title has a slip that stays
        {"dec zoned_int64...", [] { _zvkcBCD_SUB_Znd_Int8(zoned, 2, 1); }, false, "1", "3131"},
        {"dec zoned_int32...", [] { _zvkcBCD_SUB_Znd_Int4(zoned, 2, 1); }, false, "1", "3131"},
    };
    for (auto &row : rows) {
        memcpy(packed, "\x01\x2C", 2);
        memcpy(zoned, "12", 2);
        const uint8_t *item = row.packed ? packed : zoned;
        int n = row.packed ? 3 : 2;
        EXPECT_EQ(dumpOf(row.call), std::string(row.title) + "\n" +
                                        line("op1:", item, n, ":", row.packed ? "012c" : "3132") + "op2: " + row.value +
                                        "\n" + line("dst:", item, n, ":", row.result));
    }
}

} // namespace
