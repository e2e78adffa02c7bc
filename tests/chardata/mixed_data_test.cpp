// Catches: shift codes that are lost, doubled or left open; padding on the wrong side; a cut at the
// wrong place; translate tables in the wrong direction or shared.
#include <cstring>
#include <string>

#include "chardata/code_page_fixture.h"
#include "kvr2/code_pages.h"
#include "support/child.h"
#include "support/guarded.h"

namespace {

// The item's bytes after a conversion, and what the entry answered.
struct Answer {
    std::string item;
    int32_t status, stored;
    bool operator==(const Answer &) const = default;
    friend std::ostream &operator<<(std::ostream &out, const Answer &answer)
    {
        for (char c : answer.item) out << std::hex << (c & 0xFF) << ' ';
        return out << std::dec << answer.status << ' ' << answer.stored;
    }
};

template <auto entry>
Answer convert(const std::string &source, int32_t length, int32_t capacity)
{
    size_t room = static_cast<size_t>(std::abs(capacity));
    GuardedItem out(room);
    memset(out.data(), '.', room);
    int32_t status = entry(reinterpret_cast<const uint8_t *>(source.data()), length, out.data(), &capacity);
    return {std::string(reinterpret_cast<char *>(out.data()), room), status, capacity};
}

Answer toEbcdic(const std::string &source, int capacity, bool pure = false)
{
    return convert<_zvkConvToEBCDIC>(source, static_cast<int32_t>(pure ? -source.size() : source.size()), capacity);
}

Answer toNative(const std::string &source, int capacity, bool needsShifts = false)
{
    return convert<_zvkConvToASCII>(source, static_cast<int32_t>(needsShifts ? -source.size() : source.size()),
                                    capacity);
}

// Two ideographs: EUC, and the same in double-byte EBCDIC.
const std::string kNativePair = "\xC6\xFC\xCB\xDC", kEbcdicPair = "\x45\x62\x45\x66";

class MixedData : public testing::Test {
protected:
    void SetUp() override { useCodePages(48, "ja_JP.eucJP", "TQX-1399"); }
};

TEST_F(MixedData, ToEbcdic)
{
    EXPECT_EQ(toEbcdic("AB", 4), (Answer{"\xC1\xC2..", 0, 2}));
    EXPECT_EQ(toEbcdic(kNativePair, 6), (Answer{"\x0E" + kEbcdicPair + "\x0F", 0, 6}));
    EXPECT_EQ(toEbcdic(kNativePair, 6, true), (Answer{kEbcdicPair + "..", 0, 4}));
    EXPECT_EQ(toEbcdic("A" + kNativePair + "B", -9), (Answer{"\xC1\x0E" + kEbcdicPair + "\x0F\xC2.", 0, 8}));
    EXPECT_EQ(toEbcdic("AB", 4, true), (Answer{"\xC1\xC2..", 0, 2})); // no shift-out to take away
    EXPECT_EQ(toEbcdic("ABCD", 3), (Answer{"\xC1\xC2\xC3", 0, 3}));   // cut: the work area had room
    EXPECT_EQ(toEbcdic("", 3), (Answer{"...", 0, 0}));
    EXPECT_EQ(toEbcdic("", 0), (Answer{"", 0, 0}));
}

TEST_F(MixedData, LoneShiftCodesStandAsTheyAre)
{
    for (const char *code : {"\x0E", "\x0F"}) {
        EXPECT_EQ(toEbcdic(code, 3), (Answer{code + std::string(".."), 0, 1}));
        EXPECT_EQ(toNative(code, 3), (Answer{code + std::string(".."), 0, 1}));
        EXPECT_EQ(toEbcdic(code, 0), (Answer{"", 0, 0}));
    }
}

TEST_F(MixedData, ToNativeSuppliesShiftCodesAndPads)
{
    EXPECT_EQ(toNative("\xC1\xC2", 4), (Answer{"AB  ", 0, 2}));
    EXPECT_EQ(toNative("\xC1\xC2", -4), (Answer{"  AB", 0, 2}));
    EXPECT_EQ(toNative("\xC1\xC2", 2), (Answer{"AB", 0, 2}));
    EXPECT_EQ(toNative("\x0E" + kEbcdicPair + "\x0F", 6), (Answer{kNativePair + "  ", 0, 4}));
    EXPECT_EQ(toNative(kEbcdicPair, 6, true), (Answer{kNativePair + "  ", 0, 4})); // none: supplied
    EXPECT_EQ(toNative("\x0E" + kEbcdicPair + "\x0F", -6, true),
              (Answer{"  " + kNativePair, 0, 4}));                                                // balanced: as it is
    EXPECT_EQ(toNative("\x0E" + kEbcdicPair, 6, true), (Answer{kNativePair + "  ", 0, 4}));       // never closed
    EXPECT_EQ(toNative("\x0E\x45\x62\x0E\x45\x66", 6, true), (Answer{kNativePair + "  ", 0, 4})); // opened twice
    EXPECT_EQ(toNative("\x0E\x45\x62\x0F\xC1\x0F", 4, true), (Answer{"\xC6\xFC"
                                                                     "A ",
                                                                     0, 3})); // a stray shift-in
    EXPECT_EQ(toNative("", 3), (Answer{"   ", 0, 0}));
}

TEST_F(MixedData, FailuresStoreALengthOfZero)
{
    ChildRun run = runChild([] {
        uint8_t out[4];
        int32_t capacity = 3;
        if (_zvkConvToEBCDIC(reinterpret_cast<const uint8_t *>("ABCDEFGHIJ"), 10, out, &capacity) != 15 ||
            capacity != 0)
            exit(3);
        capacity = -3;
        if (_zvkConvToASCII(reinterpret_cast<const uint8_t *>("\xC1\xC2\xC3\xC4"), 4, out, &capacity) != 15 ||
            capacity != 0)
            exit(3);
    });
    EXPECT_NE(run.err.find("ZVK222"), std::string::npos);
    EXPECT_NE(run.status, 3);
}

TEST_F(MixedData, LongItems)
{
    std::string native, ebcdic;
    for (int i = 0; i < 9000; i++) {
        native += "xy";
        ebcdic += "\xA7\xA8";
    }
    EXPECT_EQ(toEbcdic(native, -18000), (Answer{ebcdic, 0, 18000}));
    EXPECT_EQ(toNative(ebcdic, 18001), (Answer{native + " ", 0, 18000}));
}

TEST(TranslateTables, BothLeadFromEbcdicAndAreSeparate)
{
    useCodePages(8, "en_US.ISO8859-1", "TQX-1140");
    AlphabetRecord first{}, second{};
    _zvkcEBCDIC(&first);
    _zvkcEBCDIC(&second);
    EXPECT_EQ(first.nativeFromEbcdic, second.nativeFromEbcdic);
    EXPECT_NE(first.nativeFromEbcdic, first.ebcdicFromNative);
    EXPECT_EQ(memcmp(first.nativeFromEbcdic, first.ebcdicFromNative, 256), 0);
    EXPECT_EQ(first.nativeFromEbcdic[0xC1], 'A');
    EXPECT_EQ(first.nativeFromEbcdic[0x40], ' ');
    EXPECT_EQ(first.collatingWeights, nullptr);
}

TEST(TranslateTables, ATableThatCannotBeMadeIsReported)
{
    ChildRun run = runChild([] {
        useCodePages(8, "en_US.UTF-8", "TQX-1140"); // UTF-8 takes more than a byte for half of the values
        AlphabetRecord record{};
        _zvkcEBCDIC(&record);
        if (!record.nativeFromEbcdic) exit(3);
    });
    EXPECT_NE(run.err.find("ZVK222"), std::string::npos);
    EXPECT_NE(run.status, 3);
}

} // namespace
