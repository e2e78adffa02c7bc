// Catches: a Lilian day that is off by one; a wrong token, or a number left over after a failure; a
// picture that is read too leniently or too strictly; an era's first and last day; a window that
// does not follow LSVSCEN; reads and writes outside of any operand, whatever is in it.
#include <ctime>
#include <random>
#include <thread>

#include "dateservices/service_calls.h"
#include "kvr2/date_functions.h"
#include "kvr2/kvr2.h"
#include "support/calendar_walk.h"
#include "support/child.h"
#include "support/share.h"

namespace {

TEST(TextServices, EveryDayBothWays)
{
    ZVK_VSTRING(10) text{10, {}}, picture{10, {'Y', 'Y', 'Y', 'Y', '-', 'M', 'M', '-', 'D', 'D'}};
    ZVK_VSTRING(7) ofYear{7, {'Y', 'Y', 'Y', 'Y', 'D', 'D', 'D'}};
    CalendarWalk at = CalendarWalk::lilian();
    char wanted[32], out[80];
    int32_t lilian, weekday;
    FeedbackCode fc;
    for (int32_t n = 1; n <= 3074324; n++, at.next()) {
        if (!isInShare(n)) continue;
        snprintf(wanted, sizeof wanted, "%04d-%02d-%02d", at.year, at.month, at.day);
        LSVDATE(&n, reinterpret_cast<VSTRING *>(&picture), out, &fc);
        ASSERT_TRUE(fc.messageNumber == 0 && memcmp(out, wanted, 10) == 0) << n;
        memcpy(text.text, wanted, 10);
        LSVDAYS(reinterpret_cast<VSTRING *>(&text), reinterpret_cast<VSTRING *>(&picture), &lilian, &fc);
        ASSERT_EQ(lilian, n);
        LSVDYWK(&n, &weekday, &fc);
        ASSERT_EQ(weekday, at.weekday + 1) << n;
        if (n % 5) continue;
        snprintf(wanted, sizeof wanted, "%04d%03d", at.year, at.dayOfYear);
        LSVDATE(&n, reinterpret_cast<VSTRING *>(&ofYear), out, &fc);
        ASSERT_EQ(memcmp(out, wanted, 7), 0) << n;
    }
    EXPECT_EQ(at.year, 10000);
}

TEST(TextServices, IntegerDatesAreThoseOfTheFunction)
{
    for (const char *day : {"16010101", "20260228", "99991231"}) {
        GuardedString given(day), asked("YYYYMMDD");
        int32_t integer, lilian = days(day, "YYYYMMDD").value;
        FeedbackCode fc;
        LSVCBLDY(given.get(), asked.get(), &integer, &fc);
        EXPECT_EQ(tokenOf(fc), 0);
        EXPECT_EQ(integer, _zvkIntegerOfDate(std::stoi(day)));
        EXPECT_EQ(lilian - integer, 6653);
    }
    GuardedString given("2026366"), asked("YYYYDDD");
    int32_t integer = 7;
    FeedbackCode fc;
    LSVCBLDY(given.get(), asked.get(), &integer, &fc);
    EXPECT_EQ(tokenOf(fc), 2508);
    EXPECT_EQ(integer, 0);
}

struct Reading {
    const char *date, *picture;
    int token;
    const char *means; // as YYYYMMDD where it is good
};

constexpr Reading kReadings[] = {
    {"1582-10-15", "YYYY-MM-DD", 0, "15821015"},
    {"1582-10-14", "YYYY-MM-DD", 2513, ""},
    {"1581-12-31", "YYYY-MM-DD", 2513, ""},
    {"20260229", "YYYYMMDD", 2508, ""},
    {"20240229", "YYYYMMDD", 0, "20240229"},
    {"2026366", "YYYYDDD", 2508, ""},
    {"2024366", "YYYYDDD", 0, "20241231"},
    {"2024000", "YYYYDDD", 2508, ""},
    {"20261301", "YYYYMMDD", 2517, ""},
    {"20260001", "YYYYMMDD", 2517, ""},
    {"20260100", "YYYYMMDD", 2508, ""},
    {"  3  mar 2026", "ZD MMM YYYY", 0, "20260303"},
    {"03/MAR/2026", "dd mmm yyyy", 0, "20260303"},
    {"3.MAR.2026", "ZD.MMM.YYYY", 0, "20260303"},
    {"3.MAR.2026", "DD.MMM.YYYY", 2520, ""},
    {"23.MAY.2026", "ZD.MMM.YYYY", 0, "20260523"},
    {"September 1, 2026", "MMMM ZD, YYYY", 0, "20260901"},
    {"May 1, 2026", "MMMZ ZD, YYYY", 0, "20260501"},
    {"Mayo 1, 2026", "MMMMMMMMMMMMMMMMMMMM ZD, YYYY", 2520, ""},
    {"Sepxember 1, 2026", "MMMM ZD, YYYY", 2517, ""},
    {"Sxp 1, 2026", "MMM ZD, YYYY", 2517, ""},
    {"Se", "MMM ZD, YYYY", 2520, ""},
    {"Sept", "MMMM", 2520, ""},
    {"Thu 31 XII 2026", "WWW DD RRRR YYYY", 0, "20261231"},
    {"Thursday 31 IV 2026", "WWWW DD RRRZ YYYY", 2508, ""},
    {"Nonday 30 IV 2026", "WWWW DD RRRZ YYYY", 2520, ""}, // only three bytes of an unknown name are passed
    {"Xxx 30 IV 2026", "WWW DD RRRZ YYYY", 0, "20260430"},
    {"01 IX 2026", "DD RRRR YYYY", 0, "20260901"},
    {"01 IIII 2026", "DD RRRR YYYY", 2517, ""},
    {"01 IIX 2026", "DD RRRR YYYY", 2517, ""},
    {"01 VV 2026", "DD RRRR YYYY", 2517, ""},
    {"01 XIII 2026", "DD RRRR YYYY", 2517, ""},
    {"01 A 2026", "DD RRRR YYYY", 2520, ""},
    {"2026-01-01", "YYYY-MM", 2507, ""},
    {"01-01", "MM-DD", 2507, ""},
    {"2026 001", "YYYY DDD", 0, "20260101"},
    {"2026-01-01 and more", "YYYY-MM-DD", 0, "20260101"},
    {"2026x01y01", "YYYY-MM-DD", 0, "20260101"},
    {"2026-01-0", "YYYY-MM-DD", 2520, ""},
    {"2026-01-", "YYYY-MM-DD", 2520, ""},
    {"", "YYYY-MM-DD", 2520, ""},
    {"   ", "", 2520, ""},
    {"2026-O1-01", "YYYY-MM-DD", 2520, ""},
    {"/20260101", "/YYYYMMDD", 2518, ""},
    {"20260101", "YYYMMDD", 2518, ""},
    {"20260101", "YMMDD", 2518, ""},
    {"20260101", "YYYYYMMDD", 2518, ""},
    {"20260101", "YYYYMDD", 2518, ""},
    {"20260101", "YYYYMMD", 2518, ""},
    {"20260101", "YYYYMMDDDD", 2518, ""},
    {"20260101", "YYYYMMDDRR", 2520, ""}, // at the end of the date nothing else is looked at
    {"20260101 123", "YYYYMMDD 9999", 2518, ""},
    {"20260101 IV", "YYYYMMDD RRR", 2518, ""},
    {"20260101 We", "YYYYMMDD WW", 2518, ""},
    {"2026010112", "YYYYMMDDHH", 0, "20260101"},
    {"2026010124", "YYYYMMDDHH", 2510, ""},
    {"202601011260", "YYYYMMDDHHMI", 2516, ""},
    {"20260101125960", "YYYYMMDDHHMISS", 2519, ""},
    {"20260101 13 PM", "YYYYMMDD HH AP", 2510, ""},
    {"20260101 00 PM", "YYYYMMDD HH AP", 2510, ""},
    {"20260101 13 PM 60", "YYYYMMDD HH AP MI", 2510, ""}, // the first that is wrong counts
    {"PM 13 60 20260101", "AP HH MI YYYYMMDD", 2510, ""},
    {"PM 60 20260101", "AP MI YYYYMMDD", 2516, ""},
    {"PM 20260101", "AP YYYYMMDD", 2510, ""},
    {"20260101 00 AM", "YYYYMMDD HH AP", 0, "20260101"},
    {"20260101 01 XM", "YYYYMMDD HH AP", 2520, ""},
    {"20260101 01 A.M.", "YYYYMMDD HH A.P.", 0, "20260101"},
    {"20260101 01 A.M", "YYYYMMDD HH A.P.", 0, "20260101"},
    {"1", "Z", 2507, ""},
    {"20260101", "<JJJ>YYYYMMDD", 2518, ""},
    {"20260101", "<JJJJ><CCCC>YYYYMMDD", 2518, ""},
    {"20260101", "<XXXYYMMDD", 2518, ""}, // "<" stands for Z here, and a picture must not begin with X
};

TEST(TextServices, ReadsUnderPictures)
{
    for (const Reading &each : kReadings) {
        Number got = days(each.date, each.picture);
        EXPECT_EQ(got.token, each.token) << each.date << " by " << each.picture;
        if (each.token) {
            EXPECT_EQ(got.value, 0) << each.date;
        } else {
            EXPECT_EQ(date(got.value, "YYYYMMDD").value, each.means) << each.date;
        }
    }
    EXPECT_EQ(days("1582287", "YYYYDDD").token, 2513);
    EXPECT_EQ(days("1582288", "YYYYDDD").value, 1);
}

struct Writing {
    const char *picture, *text;
    int token;
};

TEST(TextServices, WritesUnderPictures)
{
    int32_t march = days("20260307", "YYYYMMDD").value; // a Saturday
    const Writing cases[] = {
        {"", "03/07/26", 0},
        {"     ", "03/07/26", 0},
        {"YYYY-MM-DD", "2026-03-07", 0},
        {"yyyy-mm-dd", "2026-03-07", 0},
        {"ZM/ZD/YY", "3/7/26", 0},
        {"ZMM.ZDD.Y", "3.7.6", 0},
        {"YYYYY", "Y2026", 0},
        {"YYYYYYYY", "YYYY2026", 0},
        {"ZYYYY", "Y000", 0},
        {"ZYYY", "Y26", 0},
        {"ZY", "Y", 0},
        {"YYY", "000", 0},
        {"ZYY", "", 2518},
        {"DDD", "066", 0},
        {"Mmm MMM mmm", "Mar MAR mar", 0},
        {"Mmmm,", "March,", 0},
        {"Mmmmmmmmm,", "March    ,", 0},
        {"ZMmmmmmmmm,", "March,", 0},
        {"MMMMMMZ,", "MARCH,", 0},
        {"MMMZ,", "MARCH,", 0},
        {"Www, Wwww", "Sat, Saturday", 0},
        {"Wwwwwwwwwwww|", "Saturday    |", 0},
        {"RRRR|RRRZ|", "III |III|", 0},
        {"HH:MI:SS.999 AP", "12:00:00.000 AM", 0},
        {"HH:MI HH:ZMI", "00:00 00:00", 0},
        {"ap a.p. A.P", "am a.m. A.M", 0},
        {"9999", "", 2518},
        {"H S D M Z", "H S D M Z", 0},
        {"R RR RRR", "R RR RRR", 0},
        {"a <x> <JJ> W", "a <x> <JJ> W", 0},
        {"<JJJJJ>", "", 2518},
        {"<CCCCCCCCC>", "", 2518},
        {"<JJJJ><CCCC>", "", 2518},
    };
    for (const Writing &each : cases) {
        Text got = date(march, each.picture);
        EXPECT_EQ(got.token, each.token) << each.picture;
        if (!each.token) {
            EXPECT_EQ(got.value, each.text) << each.picture;
        }
    }
    for (int32_t none : {0, -1, 3074325, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(date(none, "YYYY").token, 2512);
        EXPECT_EQ(date(none, "YYYY").value, "");
    }
}

TEST(TextServices, AFullFieldIsNotCut)
{
    std::string full(80, '*'), more(81, '*');
    EXPECT_EQ(date(1, full).token, 0);
    EXPECT_EQ(date(1, full).value, full);
    EXPECT_EQ(date(1, more).token, 2526);
    EXPECT_EQ(date(1, more).value, full);
    EXPECT_EQ(date(1, std::string(78, '*') + "YYYY").token, 2526);
    EXPECT_EQ(date(1, std::string(76, '*') + "YYYY").token, 0);
    EXPECT_EQ(date(1, std::string(80, '*') + "Z").token, 2526);
}

TEST(TextServices, ErasBeginAndEndOnTheirDays)
{
    struct Case {
        const char *day, *picture, *text;
    };
    const Case cases[] = {
        {"19890107", "<JJJJ> YY", "昭和64"}, {"19890108", "<JJJJ> YY", "平成01"},  {"20190430", "<JJJJ>ZYY", "平成31"},
        {"20190501", "<JJJJ>ZYY", "令和1"},  {"20260101", "<JJJJ>YYY", "令和008"}, {"19120729", "<JJJJ>YY", "明治45"},
    };
    for (const Case &each : cases) {
        int32_t day = days(each.day, "YYYYMMDD").value;
        Text got = date(day, std::string(each.picture) + "/MM/DD");
        std::string wanted = each.text;
        EXPECT_EQ(got.token, 0) << each.day;
        std::string shown = got.value.substr(0, got.value.find('/'));
        if (shown.find(' ') != std::string::npos) shown.erase(shown.find(' '), 1);
        EXPECT_EQ(shown, wanted) << each.day;
        Number back = days(got.value, std::string(each.picture) + "/MM/DD");
        EXPECT_EQ(back.token, 0) << got.value;
        EXPECT_EQ(back.value, day) << got.value;
    }
    EXPECT_EQ(date(1, "<JJJJ>").token, 2522);
    EXPECT_EQ(date(1, "<CCCC>").token, 2522);
    EXPECT_EQ(days("昭和640108", "<JJJJ>YYMMDD").token, 2508);
    EXPECT_EQ(days("昭和640107", "<JJJJ>YYMMDD").token, 0);
    EXPECT_EQ(days("昭和650101", "<JJJJ>YYMMDD").token, 2521);
    EXPECT_EQ(days("平成000101", "<JJJJ>YYMMDD").token, 2521);
    EXPECT_EQ(days("平成010107", "<JJJJ>YYMMDD").token, 2508);
    EXPECT_EQ(days("令和010430", "<JJJJ>YYMMDD").token, 2517);
    EXPECT_EQ(days("昭0101", "<JJJJ>YYMMDD").token, 2509);
    EXPECT_EQ(days("", "<JJJJ>YYMMDD").token, 2520);
    std::string minguo = date(days("20260307", "YYYYMMDD").value, "<CCCC>YYY.MM.DD").value;
    EXPECT_EQ(minguo.substr(minguo.size() - 9), "115.03.07");
    EXPECT_EQ(date(days(minguo, "<CCCC>YYY.MM.DD").value, "YYYYMMDD").value, "20260307");
    // Of a year of four digits the last three, none of them a leading zero.
    std::string late = date(days("29140307", "YYYYMMDD").value, "<CCCC>ZYY").value;
    EXPECT_EQ(late.substr(late.size() - 3), "003");
}

TEST(TextServices, EraTablesAreLaidOutAsToldAndFreed)
{
    for (auto load : {LSVZGetJapEra, LSVZGetChiEra}) {
        EraTable *table = nullptr;
        Guarded<FeedbackCode> fc;
        load(&table, fc.as<FeedbackCode>());
        ASSERT_TRUE(table);
        EXPECT_EQ(tokenOf(fc.value()), 0);
        ASSERT_GE(table->count, 1u);
        const char *names = reinterpret_cast<const char *>(table->eras + table->count);
        for (uint32_t i = 0; i < table->count; i++) {
            EXPECT_EQ(names[7 * i + 6], 0);
            EXPECT_NE(names[7 * i], 0);
            EXPECT_LE(table->eras[i].startMonth, 12u);
        }
        _zvkcfree(table);
    }
}

TEST(TextServices, TheWindowFollowsTheCentury)
{
    time_t now = time(nullptr);
    int current = localtime(&now)->tm_year + 1900;
    FeedbackCode fc;
    for (uint32_t window : {0u, 1u, 50u, 80u, 99u, 100u}) {
        LSVSCEN(&window, &fc);
        EXPECT_EQ(tokenOf(fc), 0);
        uint32_t kept = 777;
        LSVQCEN(&kept, &fc);
        EXPECT_EQ(kept, window);
        for (int yy = 0; yy < 100; yy++) {
            char text[16];
            snprintf(text, sizeof text, "%02d0101", yy);
            int year = std::stoi(date(days(text, "YYMMDD").value, "YYYY").value);
            int start = current - static_cast<int>(window);
            ASSERT_EQ(year % 100, yy);
            ASSERT_GE(year, start);
            ASSERT_LT(year, start + 100);
        }
    }
    for (uint32_t window : {101u, 0x80000000u, 0xFFFFFFFFu}) {
        LSVSCEN(&window, &fc);
        EXPECT_EQ(tokenOf(fc), 2533);
    }
    uint32_t kept;
    LSVQCEN(&kept, &fc);
    EXPECT_EQ(kept, 100u);
    uint32_t usual = 80;
    LSVSCEN(&usual, &fc);
}

TEST(TextServices, WithoutATokenTheMessageIsWritten)
{
    ChildRun run = runChild([] {
        GuardedString given("2026-02-30"), asked("YYYY-MM-DD");
        int32_t lilian = 5;
        LSVDAYS(given.get(), asked.get(), &lilian, nullptr);
        printf("%d", lilian);
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "0");
    EXPECT_NE(run.err.find("ZVK2508"), std::string::npos) << run.err;
}

TEST(TextServices, DelimitersMatchAsARun)
{
    auto match = [](const std::string &picture, const std::string &text) {
        const char *p = picture.data(), *d = text.data();
        int32_t status = LSVZDELIMITERS(&p, p + picture.size(), &d, d + text.size());
        return std::make_tuple(status, p - picture.data(), d - text.data());
    };
    EXPECT_EQ(match("--M", "--1"), std::make_tuple(0, 2, 2));
    EXPECT_EQ(match("-M", "/1"), std::make_tuple(24, 0, 0));
    EXPECT_EQ(match("--", "-"), std::make_tuple(0, 1, 1));
    EXPECT_EQ(match("", "-"), std::make_tuple(24, 0, 0));
}

// Any text under any picture, of any length: only the guards and the token's form are looked at.
TEST(TextServices, AnyBytesAndLengths)
{
    std::mt19937 random(16);
    const std::string alphabet = "YYYMMMDDDHHSSWWWRRRZAP9<>JC.-/ 0123456789amp";
    auto text = [&](bool wild) {
        std::string made;
        for (size_t i = random() % 40; i > 0; i--)
            made += wild ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
        return made;
    };
    for (int i = 0; i < 15000; i++) {
        std::string one = text(i % 8 == 0), two = text(i % 8 == 1);
        Number read = days(one, two);
        ASSERT_GE(read.token, 0) << one << " by " << two;
        ASSERT_GE(date(static_cast<int32_t>(random() % 3074324 + 1), two).token, 0) << two;
        ASSERT_GE(seconds(one, two).token, 0);
        ASSERT_GE(dateTime(86400.0 + random() * 60.0, two).token, 0);
    }
    // Up to the longest string that there can be.
    for (size_t blanks : {900u, 32000u, 0x8000u, 0xFFFFu - 8})
        EXPECT_EQ(days(std::string(blanks, ' ') + "20260101", std::string(blanks, ' ') + "YYYYMMDD").token, 0);
    EXPECT_EQ(date(1, std::string(0xFFFF, ' ')).value, "10/15/82");
}

TEST(TextServices, EightThreadsAtOnce)
{
    int32_t era = days("20260101", "YYYYMMDD").value;
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 8; t++)
        threads.emplace_back([&wrong, era, t] {
            for (int i = 0; i < 2000; i++) {
                int32_t day = 100000 + t * 1000 + i % 1000;
                std::string shown = date(day, "Wwww, DD Mmmm YYYY").value;
                wrong += days(shown, "WWWW, DD MMMM YYYY").value != day;
                if (i % 20 == 0) wrong += date(era, "<JJJJ>YY").value != "令和08";
                wrong += days("260101", "YYMMDD").value != era;
            }
        });
    for (std::thread &each : threads) each.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
