// Catches: an entry whose width or place is wrong in either direction; a window or a century that
// leads elsewhere; a MOVE that loses what the receiver is to keep; digits that go astray in edits
// and de-edits; comparisons that do not pass over what a format has not; a test that is too
// lenient; an assertion without its words; any access outside of an item.
#include <atomic>
#include <ctime>
#include <random>
#include <thread>

#include "datetime/item.h"
#include "support/calendar_walk.h"
#include "support/child.h"
#include "support/share.h"

namespace {

// A moment, and what each entry shows of it.
struct Moment {
    int year, month, day, dayOfYear, hour, minute, second;
    long long pico;
};

std::string digits(long long value, int width)
{
    std::string text(static_cast<size_t>(width), '0');
    for (int i = width - 1; i >= 0; i--, value /= 10)
        text[static_cast<size_t>(i)] = static_cast<char>('0' + value % 10);
    return text;
}

std::string shows(uint32_t type, const Moment &m, int window)
{
    int twelve = m.hour % 12 ? m.hour % 12 : 12;
    const char *half = m.hour < 12 ? "AM" : "PM";
    const char *separators = "  /-., :";
    switch (type) {
    case 8:
        return "-";
    case 10:
        return digits(m.day, 2);
    case 11:
        return digits(m.dayOfYear, 3);
    case 12:
        return digits(m.month, 2);
    case 13:
        return digits(m.year, 2);
    case 14:
    case 15:
        return digits(m.year, 4);
    case 16:
        return digits(m.hour, 2);
    case 17:
        return digits(twelve, 2);
    case 18:
        return digits(m.minute, 2);
    case 19:
        return digits(m.second, 2);
    case 20:
    case 24:
        return half;
    case 21:
        return digits(m.year / 100 - window / 100, 1);
    case 22:
        return "%";
    case 23:
        return "@";
    case 25:
        return digits(twelve, 2) + ":" + digits(m.minute, 2) + ":" + digits(m.second, 2) + " " + half;
    case 26:
        return digits(m.hour, 2) + ":" + digits(m.minute, 2);
    case 27:
        return digits(m.month, 2) + "/" + digits(m.day, 2) + "/" + digits(m.year, 2);
    case 28:
        return digits(m.pico, 12).substr(0, 1);
    case 29:
        return digits(m.pico, 12).substr(0, 2);
    case 30:
        return digits(m.pico, 12).substr(0, 3);
    case 31:
        return digits(m.pico, 12).substr(0, 6);
    case 32:
        return digits(m.pico, 12);
    default:
        return std::string(1, separators[type]);
    }
}

// A format that carries a whole date, or a whole time, or both, in some order; its text for a
// moment.
struct Made {
    Format format;
    std::string text;
};

Made makeItem(std::mt19937 &random, uint32_t category, const Moment &m, int window)
{
    std::vector<std::vector<uint32_t>> pieces;
    if (category != ctTIME) {
        const std::vector<std::vector<uint32_t>> years = {{14}, {15}, {13}, {21, 13}},
                                                 days = {{12, 10}, {10, 12}, {11}};
        if (random() % 6 == 0) {
            pieces.push_back({27});
        } else {
            pieces.push_back(years[random() % 4]);
            pieces.push_back(days[random() % 3]);
        }
    }
    if (category != ctDATE) {
        const std::vector<std::vector<uint32_t>> times = {
            {16, 18, 19}, {17, 18, 19, 20}, {25}, {26, 19}, {24, 17, 18, 19}};
        pieces.push_back(times[random() % 5]);
        pieces.push_back({32});
    }
    std::shuffle(pieces.begin(), pieces.end(), random);
    std::vector<FormatEntry> entries;
    std::string text;
    auto add = [&](uint32_t type) {
        entries.push_back(entry(type));
        if (type == 8) entries.back().literalOffset = 0;
        text += shows(type, m, window);
    };
    const uint32_t separators[] = {2, 3, 4, 5, 6, 7, 8, 22, 23};
    for (const auto &piece : pieces)
        for (uint32_t type : piece) {
            if (!entries.empty() && random() % 2) add(separators[random() % 9]);
            if (random() % 8 == 0) {
                entries.push_back({1, 2, 7});
                text += "literal";
            }
            add(type);
        }
    size_t spare = random() % 3;
    auto length = static_cast<int16_t>(text.size());
    text += std::string(spare, ' ');
    return {Format(category, entries, static_cast<uint32_t>(text.size()), length), text};
}

TEST(Items, MoveBetweenAnyFormats)
{
    std::mt19937 random(91);
    CalendarWalk day = CalendarWalk::integers();
    for (int i = 0; i < 130000; i++) day.next(); // into 1956
    for (int i = 0; i < shareOf(30000); i++, day.next()) {
        Moment m{day.year,
                 day.month,
                 day.day,
                 day.dayOfYear,
                 int(random() % 24),
                 int(random() % 60),
                 int(random() % 60),
                 static_cast<long long>((random() << 16 | (random() & 0xFFFF)) % 1000000000000)};
        int window = 1950; // the walk stays within its hundred years
        uint32_t category = ctDATE + random() % 3;
        Made from = makeItem(random, category, m, window), to = makeItem(random, category, m, window);
        ASSERT_EQ(moved(from.text, from.format, to.format), to.text) << from.text;
        Made stamp = makeItem(random, ctTIMESTAMP, m, window);
        if (category != ctTIMESTAMP) {
            ASSERT_EQ(moved(stamp.text, stamp.format, to.format), to.text) << stamp.text;
        }
        Item left(from.text), right(to.text);
        ASSERT_EQ(
            _zvkcDateTime_Compare(left.get(), right.get(), &from.format.fd, &to.format.fd, ZVK_EQUAL, 1950, kNoCheck),
            1)
            << from.text << " and " << to.text;
        // Valid, unless an entry of the kind that is never valid is in it.
        bool never = false;
        for (const FormatEntry &each : from.format.entries) never |= each.entryType == ZVK_FE_TIME12;
        ASSERT_EQ(_zvkcDateTime_Test(left.get(), &from.format.fd, nullptr, from.format.fd.storageLength, 1950),
                  never ? '0' : '1')
            << from.text;
    }
}

TEST(Items, WindowsAndCenturies)
{
    Format year2(ctDATE, {entry(13), entry(12), entry(10)}, 6),
        century(ctDATE, {entry(21), entry(13), entry(12), entry(10)}, 7);
    EXPECT_EQ(moved("490101", year2, isoDate()), "2049-01-01");
    EXPECT_EQ(moved("500101", year2, isoDate()), "1950-01-01");
    EXPECT_EQ(moved(" 10101", year2, isoDate()), "20 1-01-01"); // bytes are copied, a blank counts as 0
    EXPECT_EQ(moved("1260307", century, isoDate()), "2026-03-07");
    EXPECT_EQ(moved("2026-03-07", isoDate(), century), "1260307");
    EXPECT_EQ(moved("990101", year2, isoDate(), "", 2000), "2099-01-01");
}

TEST(Items, DaysOfTheYear)
{
    Format ofYear(ctDATE, {entry(15), entry(11)}, 7);
    EXPECT_EQ(moved("2000060", ofYear, isoDate()), "2000-02-29");
    EXPECT_EQ(moved("1900060", ofYear, isoDate()), "1900-03-01");
    EXPECT_EQ(moved("2000366", ofYear, isoDate()), "2000-12-31");
    EXPECT_EQ(moved("2001366", ofYear, isoDate()), "2001-13-01"); // only the check refuses it
    EXPECT_EQ(moved("2001000", ofYear, isoDate()), "2001-00-00");
    for (const char *beyond : {"2001366", "2000367", "2001399", "2001000"})
        EXPECT_EQ(moved(beyond, ofYear, ofYear), beyond);
    Item bad("2001366");
    EXPECT_EQ(_zvkcDateTime_Test(bad.get(), &ofYear.fd, nullptr, 7, 1950), '0');
}

TEST(Items, HoursOfTwelve)
{
    Format half(ctTIME, {entry(17), entry(7), entry(18), entry(20)}, 7), only(ctTIME, {entry(20)}, 2);
    EXPECT_EQ(moved("12:30AM", half, isoTime()), "00:30:00");
    EXPECT_EQ(moved("12:30PM", half, isoTime()), "12:30:00");
    EXPECT_EQ(moved("9:30pm ", half, isoTime()), "21:30:00");
    EXPECT_EQ(moved("09:30xm", half, isoTime()), "09:30:00");
    EXPECT_EQ(moved(" :30PM ", half, isoTime()), "12:30:00");
    EXPECT_EQ(moved("x:30AM ", half, isoTime()), "00:30:00");
    EXPECT_EQ(moved("PM", only, isoTime()), "12:00:00");
    EXPECT_EQ(moved("00:15:00", isoTime(), half), "12:15AM");
}

TEST(Items, ATimestampKeepsWhatItIsNotGiven)
{
    const std::string before = "2026-03-07-08:09:10.000123";
    EXPECT_EQ(moved("1999-12-31", isoDate(), isoStamp(), before), "1999-12-31-08:09:10.000123");
    EXPECT_EQ(moved("23:59:58", isoTime(), isoStamp(), before), "2026-03-07-23:59:58.000000");
    EXPECT_EQ(moved("1999-12-31", isoDate(), isoStamp(), "2026-02-30-08:09:10.000123"), "1999-12-31-00:00:00.000000");
    EXPECT_EQ(moved("23:59:58", isoTime(), isoStamp()), "0000-01-01-23:59:58.000000");
    EXPECT_EQ(moved(before, isoStamp(), isoStamp(), "?-?-?-?-?-?-?-?-?-?-?-?-?-"), before);
    EXPECT_EQ(moved(before, isoStamp(), isoDate()), "2026-03-07");
    // Also in a layout of its own.
    Format german(ctTIMESTAMP,
                  {entry(10), entry(4), entry(12), entry(4), entry(15), entry(6), entry(16), entry(7), entry(18)}, 16);
    EXPECT_EQ(moved("1999-12-31", isoDate(), german, "07.03.2026 08:09"), "31.12.1999 08:09");
    EXPECT_EQ(moved("23:59:58", isoTime(), german, "07.03.2026 08:09"), "07.03.2026 23:59");
}

int relations(const std::string &a, const Format &fa, const std::string &b, const Format &fb)
{
    Item left(a), right(b);
    int bits = 0;
    for (uint32_t op = 0; op < 8; op++)
        bits |= _zvkcDateTime_Compare(left.get(), right.get(), &fa.fd, &fb.fd, op, 1950, kNoCheck) << op;
    return bits;
}

TEST(Items, Relations)
{
    constexpr int less = 0x32, equal = 0x29, greater = 0x0E;
    Format monthYear(ctDATE, {entry(12), entry(2), entry(15)}, 7),
        tenths(ctTIME, {entry(16), entry(18), entry(19), entry(28)}, 7),
        millis(ctTIME, {entry(16), entry(18), entry(19), entry(30)}, 9);
    EXPECT_EQ(relations("2026-03-07", isoDate(), "2026-03-08", isoDate()), less);
    EXPECT_EQ(relations("2027-01-01", isoDate(), "2026-12-31", isoDate()), greater);
    EXPECT_EQ(relations("03/2026", monthYear, "2026-03-31", isoDate()), equal);
    EXPECT_EQ(relations("04/2026", monthYear, "2026-03-31", isoDate()), greater);
    EXPECT_EQ(relations("2026-03-07-08:09:10.000000", isoStamp(), "08:09:10", isoTime()), equal);
    EXPECT_EQ(relations("08:09:11", isoTime(), "2026-03-07-08:09:10.000000", isoStamp()), greater);
    EXPECT_EQ(relations("0809105", tenths, "080910512", millis), equal); // what tenths do not carry matches
    EXPECT_EQ(relations("0809104", tenths, "080910512", millis), less);
    EXPECT_EQ(relations("080910005", millis, "080910512", millis),
              greater); // leading zeros of a fraction match anything
    EXPECT_EQ(relations("080910000", millis, "080910512", millis), equal);
    EXPECT_EQ(relations("080910005", millis, "080910006", millis), less);
    EXPECT_EQ(relations("2026-03-07-08:09:10.000000", isoStamp(), "2026-03-07-08:09:10.500000", isoStamp()), equal);
}

// Items of one descriptor are compared in place, those of two equal ones by their system forms.
TEST(Items, OneDescriptorOrTwoMakeNoDifference)
{
    constexpr int equal = 0x29;
    EXPECT_EQ(relations(std::string(10, '\0'), isoDate(), "2026-03-08", isoDate()), equal); // a NUL ends both
    std::mt19937 random(8);
    const Format stamp = isoStamp(), date = isoDate(), backwards(ctDATE, {entry(10), entry(12), entry(15)}, 8);
    for (int i = 0; i < 20000; i++) {
        const Format &one = i % 3 == 0 ? stamp : i % 3 == 1 ? date : backwards;
        const Format two = one;
        std::string a = i % 3 == 0 ? "2026-03-07-08:09:10.000456" : i % 3 == 1 ? "2026-03-07" : "07032026", b = a;
        for (std::string *text : {&a, &b})
            for (size_t n = random() % 4; n > 0; n--) (*text)[random() % a.size()] = "0123456789 X\0"[random() % 13];
        if (a.find_first_of("X", 20) != std::string::npos || b.find_first_of("X", 20) != std::string::npos) continue;
        ASSERT_EQ(relations(a, one, b, one), relations(a, one, b, two)) << a << " and " << b;
    }
}

TEST(Items, OnlyDatesAndTimesTestValid)
{
    struct Case {
        Format format;
        const char *text;
        int result;
    };
    Format monthDay(ctDATE, {entry(12), entry(10)}, 4), half(ctTIME, {entry(17), entry(20)}, 4),
        hour(ctTIME, {entry(17)}, 2);
    const Case cases[] = {
        {isoDate(), "2026-02-28", '1'},
        {isoDate(), "2026-02-29", '0'},
        {isoDate(), "2000-02-29", '1'},
        {isoDate(), "1900-02-29", '0'},
        {isoDate(), "2026-13-01", '0'},
        {isoDate(), "2026-00-01", '0'},
        {isoDate(), "2026-04-31", '0'},
        {isoDate(), "2026-04-00", '0'},
        {isoDate(), "2026x04y30", '1'},
        {isoDate(), "2026-0 -01", '0'},
        {monthDay, "0229", '1'},
        {monthDay, "0230", '0'},
        {isoTime(), "23:59:59", '1'},
        {isoTime(), "24:00:00", '0'},
        {isoTime(), "23:60:00", '0'},
        {isoTime(), "23:59:60", '0'},
        {half, "12pm", '1'},
        {half, "13PM", '0'},
        {half, "00AM", '0'},
        {half, "12AN", '0'},
        {hour, "9x", '1'},
        {isoStamp(), "2026-03-07-08:09:10.00012x", '0'},
    };
    for (const Case &each : cases) {
        Item item(each.text);
        auto length = static_cast<uint32_t>(strlen(each.text));
        EXPECT_EQ(_zvkcDateTime_Test(item.get(), &each.format.fd, nullptr, length, 1950), each.result) << each.text;
        EXPECT_EQ(_zvkcDateTime_Test(item.get(), &each.format.fd, &each.format.fd, length, 1950), each.result);
        EXPECT_EQ(_zvkcDateTime_Test(item.get(), &each.format.fd, nullptr, 0, 1950), 0);
        if (each.result == '1' && each.format.fd.category != ctTIME) {
            EXPECT_EQ(_zvkcDateTime_Test(item.get(), &each.format.fd, nullptr, length - 1, 1950), '0');
        }
    }
}

std::string edited(const std::string &number, const Format &to)
{
    Item sender(number), receiver(std::string(to.fd.storageLength, '?'));
    _zvkcDateTime_Edit(sender.get(), receiver.get(), &to.fd, static_cast<int32_t>(number.size()), kNoCheck);
    return receiver.text();
}

std::string deEdited(const std::string &text, const Format &from, int32_t places)
{
    Item sender(text), receiver(std::string(static_cast<size_t>(places), '?'));
    _zvkcDateTime_DeEdit(sender.get(), receiver.get(), &from.fd, places, 1950, kNoCheck);
    return receiver.text();
}

TEST(Items, DigitsGoInAndComeOut)
{
    Format twelve(ctTIME, {entry(25)}, 12, 11),
        mixed(ctTIMESTAMP, {entry(27), {1, 2, 3}, entry(26), entry(24), entry(30)}, 22, 21);
    EXPECT_EQ(edited("20260307", isoDate()), "2026-03-07");
    EXPECT_EQ(edited("307", isoDate()), "0000-03-07");
    EXPECT_EQ(edited("9920260307", isoDate()), "2026-03-07");
    EXPECT_EQ(edited("101530", twelve), "PM 10:15:30 "); // the half in front, on purpose
    EXPECT_EQ(edited("0307261234567", mixed), "03/07/26lit12:34PM567 ");
    EXPECT_EQ(deEdited("2026-03-07", isoDate(), 8), "20260307");
    EXPECT_EQ(deEdited("2026-03-07", isoDate(), 5), "60307");
    EXPECT_EQ(deEdited("2026-03-07", isoDate(), 11), "00020260307");
    EXPECT_EQ(deEdited("2026-03-07", isoDate(), 0), "");
    EXPECT_EQ(deEdited("10:15:30 AM ", twelve, 6), "101530");
    EXPECT_EQ(deEdited("03/07/26lit12:34PM567 ", mixed, 13), "0307261234567");
    EXPECT_EQ(deEdited("2026-03-07", isoDate(), 63).substr(55), "20260307");
}

TEST(Items, TextGoesInFromItsSide)
{
    Format date = isoDate(), number = isoDate(), wide(ctDATE, isoDate().entries, 12, 10);
    number.fd.category = ctNUMERIC;
    auto converted = [&](const std::string &text, const Format &from) {
        Item sender(text), receiver(std::string(12, '?'));
        _zvkcDateTime_Convert(sender.get(), receiver.get(), &from.fd, &wide.fd, static_cast<int32_t>(text.size()));
        return receiver.text();
    };
    EXPECT_EQ(converted("123", number), "0000000123  ");
    EXPECT_EQ(converted("99123456789012", number), "3456789012  ");
    EXPECT_EQ(converted("abc", date), "abc         ");
    EXPECT_EQ(converted("abcdefghijklmn", date), "abcdefghij  ");
}

std::string hex(const PackedField &field)
{
    std::string text;
    for (uint8_t byte : field.bytes) text += "0123456789ABCDEF"[byte >> 4], text += "0123456789ABCDEF"[byte & 15];
    return text.substr(text.find_first_not_of('0'));
}

TEST(Items, FieldsComeOutAsNumbers)
{
    Item stamp("2026-03-07-08:09:10.123456");
    Format source = isoStamp(), short2(ctDATE, {entry(13), entry(12)}, 4);
    PackedField field;
    const char *wanted[] = {"2026C", "3C", "7C", "8C", "9C", "10C", "123456000000C", "123456000000C"};
    for (uint32_t code = duYears; code <= duPicoseconds; code++) {
        EXPECT_EQ(_zvkcDateTime_Extract_Packed(&field, stamp.get(), &source.fd, code, 1950, kCheck), &field);
        EXPECT_EQ(hex(field), wanted[code - duYears]);
    }
    _zvkcDateTime_Extract_Int(&field, stamp.get(), &source.fd, &short2.fd, 1950, kCheck);
    EXPECT_EQ(hex(field), "2603C");
    Item out("????");
    _zvkcDateTime_Extract_Alph(stamp.get(), &source.fd, &short2.fd, out.get(), 1950, kCheck);
    EXPECT_EQ(out.text(), "2603");
}

TEST(Items, AssertionsShowTheirWords)
{
    struct Case {
        void (*call)();
        const char *shown;
    };
    const Case cases[] = {
        {[] { moved("2026-02-30", Format(3, {}, 10), isoDate()); },
         "senderFDPtr->category == ctDATE || senderFDPtr->category == ctTIME || senderFDPtr->category == ctTIMESTAMP"},
        {[] { _zvkcDateTime_Move(nullptr, nullptr, nullptr, nullptr, 0, 0, kNoCheck); }, "senderPtr != ((void *)0)"},
        {[] {
             Format none = isoDate();
             none.fd.numberOfEntries = 0;
             moved("2026-03-07", isoDate(), none);
         },
         "newDateFDPtr->numberOfEntries > 0"},
        {[] {
             moved("2026-03-07", Format(ctDATE, {{1, 0, 0}}, 10), isoDate());
         },
         "formatEntriesPtr->formatEntry[i].longFormatEntry.entryLength> 0"},
        {[] { deEdited("2026-03-07", isoDate(), 64); }, "receiverLength <= sizeof(receiver)"},
        {[] { edited("2026", Format(ctDATE, isoDate().entries, 9)); }, "i <= receiverFDPtr->storageLength"},
        {[] {
             Item bad("2026-02-30"), to("??????????");
             Format date = isoDate();
             _zvkcDateTime_Move(bad.get(), to.get(), &date.fd, &date.fd, 0, 1950, kCheck);
         },
         "Range_check"},
        {[] {
             Item a("999999999999500000000000");
             Item to("????????");
             Format twice(ctTIME, {entry(32), entry(32)}, 24), time = isoTime();
             _zvkcDateTime_Move(a.get(), to.get(), &twice.fd, &time.fd, 0, 1950, kNoCheck);
         },
         "totalSubSeconds < 1000000000000"},
        {[] { edited("1", Format(ctTIME, {entry(32)}, 12)); }, "entryType <= 31"},
        {[] { moved("08:09:10", isoTime(), Format(ctTIME, {entry(10)}, 2)); }, "entryType"},
        {[] { moved("0000-01-01", isoDate(), Format(ctDATE, {entry(21)}, 1)); }, "century"},
    };
    for (const Case &each : cases) {
        ChildRun run = runChild(each.call);
        EXPECT_NE(run.signal, 0) << each.shown;
        EXPECT_NE(run.err.find(each.shown), std::string::npos) << each.shown << ":\n" << run.err;
    }
}

// Any bytes under any format, also one that is longer than its item: nothing but the guards is
// looked at.
TEST(Items, AnyBytesStayWithinTheirItems)
{
    std::mt19937 random(5);
    const uint32_t both[] = {2, 3, 8, 10, 11, 12, 13, 14, 15, 27, 16, 17, 18, 19, 20, 25, 26, 28, 30, 31};
    for (int i = 0; i < 20000; i++) {
        auto make = [&] {
            std::vector<FormatEntry> entries;
            for (size_t n = 1 + random() % 8; n > 0; n--) entries.push_back(entry(both[random() % 17]));
            if (random() % 2) entries.insert(entries.begin(), entry(both[17 + random() % 3])); // one fraction at most
            return Format(ctTIMESTAMP, entries, 1 + random() % 40);
        };
        Format from = make(), to = make();
        std::string text(from.fd.storageLength, ' '), target(to.fd.storageLength, '7');
        for (char &c : text) c = random() % 4 ? static_cast<char>('0' + random() % 10) : static_cast<char>(random());
        for (char &c : text)
            c = (c & 15) > 9 ? static_cast<char>(c & ~8) : c; // a fraction beyond a second is an assertion
        moved(text, from, to, target);
        Item left(text), right(target);
        _zvkcDateTime_Compare(left.get(), right.get(), &from.fd, &to.fd, 0, 1950, kNoCheck);
        _zvkcDateTime_Test(right.get(), &from.fd, &to.fd, to.fd.storageLength, static_cast<int16_t>(random()));
        deEdited(text, from, static_cast<int32_t>(random() % 64));
    }
}

TEST(Items, EightThreadsAtOnce)
{
    const Format stamp = isoStamp(), date = isoDate();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; t++)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 3000; i++) {
                std::string day = digits(1900 + t * 10 + i % 10, 4) + "-03-" + digits(1 + i % 31, 2);
                wrong += moved(day + "-01:02:03.000004", stamp, date) != day;
            }
        });
    for (std::thread &each : threads) each.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
