// Catches: bytes, lengths or statuses that differ from ICU called plainly, for named and default
// pages, by way of the byte table and of UTF-16; a destination that is overrun; a source length
// that ICU would take for "up to the NUL"; handles that survive the end of the runtime.
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "chardata/byte_translate.h"
#include "chardata/code_page_fixture.h"
#include "chardata/conversion_layer.h"
#include "chardata/open_converter.h"
#include "support/child.h"
#include "support/guarded.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes bytesOf(const std::string &text) { return {text.begin(), text.end()}; }

struct Converter {
    explicit Converter(const char *name) : handle(zvkOpenConverter(name, &status))
    {
        EXPECT_NE(handle, nullptr) << name;
    }
    ~Converter() { ucnv_close(handle); }
    UErrorCode status = U_ZERO_ERROR;
    UConverter *handle;

    std::u16string toUnicode(const Bytes &source)
    {
        std::u16string units(source.size() * 2 + 8, 0);
        status = U_ZERO_ERROR;
        units.resize(static_cast<size_t>(ucnv_toUChars(handle, units.data(), static_cast<int32_t>(units.size()),
                                                       reinterpret_cast<const char *>(source.data()),
                                                       static_cast<int32_t>(source.size()), &status)));
        return units;
    }
    Bytes fromUnicode(const std::u16string &units)
    {
        Bytes bytes(units.size() * 4 + 8);
        status = U_ZERO_ERROR;
        bytes.resize(static_cast<size_t>(ucnv_fromUChars(handle, reinterpret_cast<char *>(bytes.data()),
                                                         static_cast<int32_t>(bytes.size()), units.data(),
                                                         static_cast<int32_t>(units.size()), &status)));
        return bytes;
    }
};

Bytes randomBytes(std::mt19937 &random, size_t length, unsigned limit = 256)
{
    Bytes bytes(length);
    for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random() % limit);
    return bytes;
}

TEST(ByteTranslate, IsTheTableForEveryLengthAndAlignment)
{
    std::mt19937 random(1);
    uint8_t table[256];
    for (uint8_t &entry : table) entry = static_cast<uint8_t>(random());
    GuardedItem in(300), out(300);
    for (size_t length = 0; length <= 300; length++) {
        for (auto place : {GuardedItem::AtStart, GuardedItem::AtEnd}) {
            uint8_t *source = in.place(length, place), *destination = out.place(length, place);
            for (size_t i = 0; i < length; i++) source[i] = static_cast<uint8_t>(random());
            zvkTranslateBytes(source, destination, length, table);
            for (size_t i = 0; i < length; i++) ASSERT_EQ(destination[i], table[source[i]]) << length << " " << i;
        }
    }
}

TEST(Conversions, NamedPagesAgainstPlainIcu)
{
    std::mt19937 random(2);
    for (const char *page :
         {"TQX-37", "tqx-1140", "UTF-8", "ISO8859-15", "TQX-1399", "TQX-1388", "eucKR", "TQX-9030"}) {
        SCOPED_TRACE(page);
        Converter plain(page);
        int32_t nameLength = static_cast<int32_t>(strlen(page));
        for (size_t length : {0u, 1u, 2u, 7u, 100u, 5000u}) {
            Bytes source = randomBytes(random, length);
            std::u16string expected = plain.toUnicode(source);
            GuardedItem out(expected.size() * 2);
            uint32_t capacity = static_cast<uint32_t>(expected.size() * 2);
            EXPECT_EQ(_zvkConvToUnicode(source.data(), static_cast<uint32_t>(length), out.data(), &capacity, page,
                                        nameLength),
                      0);
            ASSERT_EQ(capacity, expected.size() * 2);
            EXPECT_EQ(memcmp(out.data(), expected.data(), capacity), 0);

            Bytes back = plain.fromUnicode(expected);
            GuardedItem bytes(back.size());
            capacity = static_cast<uint32_t>(back.size());
            EXPECT_EQ(_zvkConvFromUnicode(out.data(), static_cast<uint32_t>(out.size()), bytes.data(), &capacity, page,
                                          nameLength),
                      0);
            EXPECT_EQ(Bytes(bytes.data(), bytes.data() + capacity), back);
        }
    }
}

TEST(Conversions, SelectorsOddLengthsAndUnknownNames)
{
    useCodePages(8, "en_US.ISO8859-1", "TQX-1140");
    uint8_t out[16];
    uint32_t capacity = 9; // an odd byte is left alone
    EXPECT_EQ(_zvkConvToUnicode(reinterpret_cast<const uint8_t *>("\xC1\xC2\xF1"), 3, out, &capacity, nullptr,
                                ZVK_CODE_PAGE_EBCDIC),
              0);
    EXPECT_EQ(capacity, 6u);
    EXPECT_EQ(memcmp(out, u"AB1", 6), 0);
    capacity = sizeof out;
    EXPECT_EQ(
        _zvkConvToUnicode(reinterpret_cast<const uint8_t *>("A\xE9"), 2, out, &capacity, nullptr, ZVK_CODE_PAGE_NATIVE),
        0);
    EXPECT_EQ(memcmp(out, u"A\u00E9", 4), 0);
    capacity = sizeof out;
    EXPECT_EQ(_zvkConvFromUnicode(reinterpret_cast<const uint8_t *>(u"\u20AC1"), 5, out, &capacity, nullptr,
                                  ZVK_CODE_PAGE_EBCDIC),
              0);
    EXPECT_EQ(capacity, 2u);
    EXPECT_EQ(memcmp(out, "\x9F\xF1", 2), 0);

    ChildRun run = runChild([] {
        uint8_t target[8] = "unused.";
        uint32_t room = 8;
        if (_zvkConvToUnicode(target, 7, target, &room, "NOSUCHPAGE", 10) <= 0 || memcmp(target, "unused.", 8) != 0 ||
            room != 8)
            exit(3);
    });
    EXPECT_NE(run.err.find("ZVK221"), std::string::npos);
    EXPECT_NE(run.status, 3);
    for (int32_t length : {31, -2, INT32_MIN}) {
        run = runChild([&] {
            uint8_t target[8] = "unused.";
            uint32_t room = 8;
            if (_zvkConvFromUnicode(target, 6, target, &room, std::string(40, 'n').c_str(), length) <= 0) exit(3);
        });
        EXPECT_NE(run.err.find("ZVK221"), std::string::npos) << length;
        EXPECT_NE(run.status, 3);
    }
    // A length that ICU reads as "up to the NUL" must not get there.
    run = runChild([] {
        uint8_t target[8] = {};
        uint32_t room = 8;
        if (_zvkConvToUnicode(target, 0xFFFFFFFF, target, &room, nullptr, 0) <= 0) exit(3);
    });
    EXPECT_NE(run.err.find("ZVK222"), std::string::npos);
    EXPECT_NE(run.status, 3);
}

TEST(Conversions, ToUtf16GoesOnAfterAFullDestination)
{
    ChildRun run = runChild([] {
        useCodePages(8, "en_US.ISO8859-1", "TQX-1140");
        GuardedItem out(6);
        uint32_t capacity = 6;
        int32_t status =
            _zvkConvToUnicode(reinterpret_cast<const uint8_t *>("ABCDE"), 5, out.data(), &capacity, nullptr, 0);
        if (status != 15 || capacity != 6 || memcmp(out.data(), u"ABC", 6) != 0) exit(3);
    });
    EXPECT_EQ(run.status, 0) << run.err; // the message only informs
    EXPECT_NE(run.err.find("ZVK222"), std::string::npos);
}

// _zvkUniAtoE and _zvkUniEtoA over pairs of pages, the first two of which the byte table serves.
TEST(NativeAndEbcdic, BothWaysAgainstPlainIcu)
{
    struct Pages {
        int32_t row;
        const char *localeName, *native, *ebcdic;
        unsigned limit; // random native bytes below this
    };
    std::mt19937 random(3);
    for (const Pages &pages :
         {Pages{8, "en_US.ISO8859-1", "ISO8859-1", "TQX-1140", 256},
          Pages{37, "ru_RU.KOI8-R", "KOI8-R", "TQX-1025", 256},
          Pages{52, "vi_VT.TQX-1258", "TQX-1258", "TQX-1130", 256}, Pages{2, "de_DE.UTF-8", "UTF-8", "TQX-1141", 128},
          Pages{48, "ja_JP.eucJP", "eucJP", "TQX-1399", 256}}) {
        SCOPED_TRACE(pages.localeName);
        useCodePages(pages.row, pages.localeName, pages.ebcdic);
        Converter native(pages.native), ebcdic(pages.ebcdic);
        for (size_t length = 0; length < 70000; length = length * 3 / 2 + 1) {
            Bytes source = randomBytes(random, length, pages.limit);
            Bytes expected = ebcdic.fromUnicode(native.toUnicode(source));
            size_t room = expected.size() + 3;
            GuardedItem out(room);
            uint32_t capacity = static_cast<uint32_t>(room);
            ASSERT_EQ(_zvkUniAtoE(source.data(), static_cast<uint32_t>(length), out.data(), &capacity), 0);
            ASSERT_EQ(capacity, 3u);
            ASSERT_EQ(Bytes(out.data(), out.data() + expected.size()), expected);

            source = expected;
            expected = native.fromUnicode(ebcdic.toUnicode(source));
            Bytes back(expected.size());
            capacity = static_cast<uint32_t>(back.size());
            ASSERT_EQ(_zvkUniEtoA(source.data(), static_cast<uint32_t>(source.size()), back.data(), &capacity), 0);
            ASSERT_EQ(capacity, 0u);
            ASSERT_EQ(back, expected);
            EXPECT_EQ(zvkConversionLayer.combinedStatus, 0);
        }
    }
}

TEST(NativeAndEbcdic, KnownText)
{
    useCodePages(8, "en_US.ISO8859-1", "TQX-1140");
    Bytes native = bytesOf("HELLO, world 0189"), out(native.size());
    uint32_t capacity = static_cast<uint32_t>(out.size());
    EXPECT_EQ(_zvkUniAtoE(native.data(), capacity, out.data(), &capacity), 0);
    EXPECT_EQ(out, bytesOf("\xC8\xC5\xD3\xD3\xD6\x6B\x40\xA6\x96\x99\x93\x84\x40\xF0\xF1\xF8\xF9"));
}

TEST(NativeAndEbcdic, FullDestinationWithAndWithoutByteTable)
{
    for (const char *locale : {"en_US.ISO8859-1", "en_US.UTF-8"}) {
        ChildRun run = runChild([&] {
            useCodePages(8, locale, "TQX-1140");
            GuardedItem out(3);
            uint32_t capacity = 3;
            int32_t status = _zvkUniAtoE(reinterpret_cast<const uint8_t *>("ABCDE"), 5, out.data(), &capacity);
            if (status != 15 || capacity != 0 || memcmp(out.data(), "\xC1\xC2\xC3", 3) != 0) exit(3);
        });
        EXPECT_NE(run.err.find("ZVK222"), std::string::npos) << locale;
        EXPECT_NE(run.status, 3) << locale;
    }
}

// ICU replaces a character that is cut off, unless the converter is told to stop there.
TEST(NativeAndEbcdic, ACharacterCutOffAtTheEndIsDropped)
{
    ChildRun run = runChild([] {
        useCodePages(8, "en_US.UTF-8", "TQX-1140");
        zvkStartConversionLayer();
        UErrorCode status = U_ZERO_ERROR;
        ucnv_setToUCallBack(zvkNativeConverter(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        for (uint32_t room : {2u, 5u}) {
            GuardedItem out(room);
            uint32_t capacity = room;
            if (_zvkUniAtoE(reinterpret_cast<const uint8_t *>("AB\xE3\x81"), 4, out.data(), &capacity) != 0) exit(3);
            if (capacity != room - 2 || memcmp(out.data(), "\xC1\xC2", 2) != 0) exit(4);
        }
        GuardedItem out(1); // a full destination counts as success here
        uint32_t capacity = 1;
        if (_zvkUniAtoE(reinterpret_cast<const uint8_t *>("AB\xE3\x81"), 4, out.data(), &capacity) != 0 ||
            capacity != 0)
            exit(5);
        if (_zvkUniAtoE(reinterpret_cast<const uint8_t *>("A\xFFZ"), 3, out.data(), &capacity) <= 0)
            exit(6); // another failure
    });
    EXPECT_NE(run.err.find("ZVK222"), std::string::npos);
    EXPECT_TRUE(run.status == 0 || run.signal == SIGABRT) << run.status; // the last one ends the run unit
}

TEST(NativeAndEbcdic, AnUnusablePageIsReportedEachTime)
{
    ChildRun run = runChild([] {
        useCodePages(8, "en_US.NOSUCHSET", "TQX-1140");
        uint8_t out[4];
        for (int i = 0; i < 2; i++) {
            uint32_t capacity = 4;
            if (_zvkUniEtoA(reinterpret_cast<const uint8_t *>("\xC1"), 1, out, &capacity) <= 0 || capacity != 4)
                exit(3);
        }
        exit(4);
    });
    EXPECT_NE(run.err.find("ZVK221"), std::string::npos);
    EXPECT_NE(run.status, 3);
}

TEST(EndOfRuntime, TheHookDropsHandlesAndTables)
{
    useCodePages(8, "en_US.ISO8859-1", "TQX-1140");
    uint8_t out[1];
    uint32_t capacity = 1;
    _zvkUniAtoE(reinterpret_cast<const uint8_t *>("["), 1, out, &capacity);
    EXPECT_EQ(out[0], 0xBA);
    useCodePages(2, "de_DE.ISO8859-1", "TQX-1141");
    capacity = 1;
    _zvkUniAtoE(reinterpret_cast<const uint8_t *>("["), 1, out, &capacity);
    EXPECT_EQ(out[0], 0x63);
    EXPECT_STREQ(zvkConversionLayer.collationLocale, "de_DE");
}

TEST(Queries, SizesNumbersAndNames)
{
    EXPECT_EQ(_zvkGetMaxCharSize("UTF-8"), 3u);
    EXPECT_EQ(_zvkGetMaxCharSize("TQX-1140"), 1u);
    EXPECT_EQ(_zvkGetMaxCharSize("NOPE"), 0u);
    uint32_t ccsid = 0;
    EXPECT_EQ(_zvkGetCCSID("TQX-037", &ccsid), 0);
    EXPECT_EQ(ccsid, 37u);
    EXPECT_EQ(_zvkGetCCSID("ISO8859-1", &ccsid), 0);
    EXPECT_EQ(ccsid, 819u);
    EXPECT_EQ(_zvkGetCCSID("HZ", &ccsid), 1);
    EXPECT_EQ(ccsid, 0xFFFFFFFFu);
    EXPECT_EQ(_zvkGetCCSID("NOPE", &ccsid), 2);
    EXPECT_EQ(ccsid, 0xFFFFFFFFu);
    EXPECT_EQ(_zvkValidateCPID("TQX-1140 ", 9), 0);
    EXPECT_EQ(_zvkValidateCPID("UTF-8xxx", 5), 0);
    EXPECT_EQ(_zvkValidateCPID("UTF-8xxx", 8), 1);
    EXPECT_EQ(_zvkValidateCPID("", 0), 1);
    EXPECT_EQ(_zvkGetMBCurMax(), MB_CUR_MAX);
    ChildRun run = runChild([] {
        if (_zvkValidateCPID("UTF-8                                   ", 31) != 1) exit(3);
    });
    EXPECT_NE(run.err.find("ZVK221"), std::string::npos);
    EXPECT_NE(run.status, 3);
}

} // namespace
