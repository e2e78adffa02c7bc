// Faults that these tests are there to catch: copies, shifts and conversions out of packed items
// that differ between the short cut and the general way, in any mode and with any bytes; a negative
// zero that keeps or loses its sign by the wrong rule; a letter where none belongs; an access
// beyond an item.
#include "forms.h"
#include "kvr2/decimal_conversions.h"
#include "kvr2/decimal_scaling.h"
#include "mode_guard.h"

using Nibbles = std::vector<uint8_t>;

namespace {

// A packed item as its nibbles, whatever they are, without the sign's.
struct Moved {
    Nibbles nibbles;
    bool negative;

    explicit Moved(const Bytes &item)
    {
        for (uint8_t byte : item)
            nibbles.insert(nibbles.end(), {static_cast<uint8_t>(byte >> 4), static_cast<uint8_t>(byte & 15)});
        negative = nibbles.back() == 0xB || nibbles.back() == 0xD;
        nibbles.pop_back();
    }

    bool zero() const
    {
        return std::all_of(nibbles.begin(), nibbles.end(), [](uint8_t nibble) { return nibble == 0; });
    }

    size_t significant() const
    {
        auto first = std::find_if(nibbles.begin(), nibbles.end() - 1, [](uint8_t nibble) { return nibble != 0; });
        return static_cast<size_t>(nibbles.end() - first);
    }

    void cutTo(int n)
    {
        auto wanted = static_cast<size_t>(n);
        if (nibbles.size() > wanted) nibbles.erase(nibbles.begin(), nibbles.end() - n);
        nibbles.insert(nibbles.begin(), wanted - nibbles.size(), 0);
    }

    Bytes item(bool minus) const
    {
        Nibbles all = nibbles;
        all.push_back(minus ? 0xD : 0xC);
        if (all.size() % 2) all.insert(all.begin(), 0);
        Bytes bytes;
        for (size_t i = 0; i < all.size(); i += 2) bytes.push_back(static_cast<uint8_t>(all[i] << 4 | all[i + 1]));
        return bytes;
    }
};

// Mostly clean, sometimes noise, often with a value that is cut to zero.
Bytes source(int n)
{
    if (randomBelow(4) == 0) return randomBytes(Packed::bytes(n));
    Bytes item = Packed::item(randomOperand<Packed>(n));
    if (randomBelow(4) == 0)
        std::fill(item.begin() + static_cast<long>(randomBelow(static_cast<unsigned>(item.size()))), item.end() - 1, 0);
    if (randomBelow(4) == 0) item.back() &= 0x0F;
    return item;
}

class PackedMoves : public testing::Test {
protected:
    Place from_, to_;

    // Runs the call at every kind of place, now here, now there.
    template <class Call>
    Bytes result(const Bytes &item, size_t bytes, Call call)
    {
        unsigned at = randomBelow(10), to = randomBelow(10);
        auto put = [](Place &place, const Bytes &what, unsigned where) {
            return where < 8 ? place.putAligned(what, where)
                             : place.put(what, where == 8 ? GuardedItem::AtStart : GuardedItem::AtEnd);
        };
        const uint8_t *src = put(from_, item, at);
        uint8_t *dst = put(to_, randomBytes(bytes), to);
        EXPECT_EQ(call(src, dst), dst);
        return Bytes(dst, dst + bytes);
    }
};

TEST_F(PackedMoves, CopiesAndShiftsInBothModes)
{
    using Entry = uint8_t *(*)(const uint8_t *, uint8_t *, int32_t, int32_t, int32_t);
    const Entry entries[] = {_zvkcBCD_SHFD_Pckd_Left, _zvkcBCD_SHFD_Pckd_Right, _zvkcBCD_SHFD_Pckd_RightRnd};
    for (int round = 0; round < 60000; round++) {
        ModeGuard mode(round % 2 * ZVK_BCD_KEEP_NEG_ZERO);
        auto count = [](unsigned most) { return static_cast<int>(1 + randomBelow(most)); };
        int sn = count(36), dn = count(36), shift = randomBelow(4) ? count(34) : 0;
        unsigned way = randomBelow(4);
        Bytes item = source(sn);
        Moved moved(item);
        auto c = static_cast<int>(moved.significant());
        bool nothing = false; // left of the value, so it is a plain zero
        if (shift > 0 && way == 0) {
            nothing = dn <= shift;
            moved.nibbles.insert(moved.nibbles.end(), static_cast<size_t>(shift), 0);
        } else if (shift > 0 && way < 3) {
            nothing = way == 2 ? shift > c : shift >= c;
            bool up = !nothing && way == 2 && moved.nibbles[moved.nibbles.size() - static_cast<size_t>(shift)] > 4;
            moved.cutTo(40 + shift); // room for the carry
            moved.nibbles.resize(40);
            for (size_t i = 40; up && i-- > 0;) {
                up = moved.nibbles[i] >= 9;
                moved.nibbles[i] = static_cast<uint8_t>(up ? 0 : moved.nibbles[i] + 1);
            }
        }
        moved.cutTo(dn);
        if (nothing) moved.nibbles.assign(moved.nibbles.size(), 0);
        bool minus = moved.negative && !nothing && (round % 2 || !moved.zero());
        // An odd count fills its bytes; with an even one the unused nibble is cleared.
        Bytes got = result(item, Packed::bytes(dn), [&](auto *src, auto *dst) {
            return way == 3 ? _zvkcBCD_Cpy_Pckd(src, dst, dn, sn) : entries[way](src, dst, dn, sn, shift);
        });
        ASSERT_EQ(hex(got), hex(moved.item(minus))) << hex(item) << " way " << way << " by " << shift << " into " << dn;
    }
}

uint8_t letter(unsigned digit, bool minus)
{
    return static_cast<uint8_t>((minus ? "}JKLMNOPQR" : "{ABCDEFGHI")[digit]);
}

TEST_F(PackedMoves, ToZonedInAllModes)
{
    enum Form { TO, LO, TS, LS, US };
    using Entry = uint8_t *(*)(const uint8_t *, uint8_t *, int32_t, int32_t);
    const Entry entries[] = {_zvkcBCD_CONV_Pckd_To_ZndTO, _zvkcBCD_CONV_Pckd_To_ZndLO, _zvkcBCD_CONV_Pckd_To_ZndTS,
                             _zvkcBCD_CONV_Pckd_To_ZndLS, _zvkcBCD_CONV_Pckd_To_ZndUS};
    for (int round = 0; round < 60000; round++) {
        bool keep = round & 1, letters = round & 2;
        ModeGuard mode(ZVK_BCD_NO_VALIDATION | keep * ZVK_BCD_KEEP_NEG_ZERO | letters * ZVK_BCD_EBCDIC);
        int sn = static_cast<int>(1 + randomBelow(34)), dn = static_cast<int>(1 + randomBelow(34));
        auto form = static_cast<Form>(randomBelow(5));
        Bytes item = source(sn);
        Moved moved(item);
        bool minus = moved.negative &&
                     !moved.zero(); // of the source, before it is cut; and a zero has no minus here in any mode
        moved.cutTo(dn);
        Bytes wanted = moved.nibbles;
        for (uint8_t &byte : wanted) byte |= 0x30;
        if (form == TS) wanted.push_back(minus ? '-' : '+');
        if (form == LS) wanted.insert(wanted.begin(), minus ? '-' : '+');
        if (form == TO || form == LO) {
            uint8_t &byte = form == TO ? wanted.back() : wanted.front();
            if (letters && (byte & 15) > 9) continue;
            byte = letters ? letter(byte & 15u, minus) : minus ? byte | 0x40 : byte;
        }
        Bytes got = result(item, wanted.size(), [&](auto *src, auto *dst) { return entries[form](src, dst, dn, sn); });
        ASSERT_EQ(hex(got), hex(wanted)) << hex(item) << " to form " << form << " of " << dn << " in mode "
                                         << zvkBcdMode;
    }
}

} // namespace
