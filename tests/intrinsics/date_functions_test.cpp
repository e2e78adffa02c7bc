// Catches: a day number that is off by one at some month's end or century; a range that is open at
// one end; a window that takes the wrong century; a CURRENT-DATE that does not follow TZ, or shows
// another offset in summer than programs know.
#include <cstring>
#include <ctime>

#include "kvr2/date_functions.h"
#include "kvr2/messages.h"
#include "support/calendar_walk.h"
#include "support/child.h"
#include "support/guarded.h"

namespace {

TEST(DateFunctions, EveryDayBothWays)
{
    CalendarWalk at = CalendarWalk::integers();
    for (int32_t n = 1; n <= 3067671; n++, at.next()) {
        int32_t date = at.year * 10000 + at.month * 100 + at.day, day = at.year * 1000 + at.dayOfYear;
        ASSERT_EQ(_zvkDateOfInteger(n), date);
        ASSERT_EQ(_zvkDayOfInteger(n), day);
        ASSERT_EQ(_zvkIntegerOfDate(date), n);
        ASSERT_EQ(_zvkIntegerOfDay(day), n);
    }
    EXPECT_EQ(at.year, 10000); // the walk saw every day
}

TEST(DateFunctions, AgreesWithTheSystem)
{
    for (int32_t n = 135141; n < 200000; n += 7) { // from 1971 on
        tm parts{};
        int32_t date = _zvkDateOfInteger(n);
        parts.tm_year = date / 10000 - 1900;
        parts.tm_mon = date / 100 % 100 - 1;
        parts.tm_mday = date % 100;
        ASSERT_EQ(timegm(&parts), (n - 134775) * int64_t{86400});
    }
}

struct Refused {
    const char *what;
    void (*call)();
    const char *shown;
};

TEST(DateFunctions, RefusesWhatIsNoDate)
{
    const Refused cases[] = {
        {"29 February 1900", [] { _zvkIntegerOfDate(19000229); }, "ZVK160S"},
        {"1600", [] { _zvkIntegerOfDate(16001231); }, "INTEGER-OF-DATE"},
        {"month 0", [] { _zvkIntegerOfDate(20260015); }, "ZVK160S"},
        {"month 13", [] { _zvkIntegerOfDate(20261315); }, "ZVK160S"},
        {"negative", [] { _zvkIntegerOfDate(-20260115); }, "ZVK160S"},
        {"smallest", [] { _zvkIntegerOfDate(INT32_MIN); }, "ZVK160S"},
        {"day 366 of 1600", [] { _zvkIntegerOfDay(1600366); }, "ZVK161S"},
        {"day 366 of 2025", [] { _zvkIntegerOfDay(2025366); }, "INTEGER-OF-DAY"},
        {"day 0", [] { _zvkIntegerOfDay(2025000); }, "ZVK161S"},
        {"number 0", [] { _zvkDateOfInteger(0); }, "DATE-OF-INTEGER"},
        {"number beyond", [] { _zvkDayOfInteger(3067672); }, "DAY-OF-INTEGER"},
        {"largest number", [] { _zvkDateOfInteger(INT32_MAX); }, "ZVK159S"},
        {"window",
         [] {
             char out[8];
             _zvkDateToYYYYMMDD(260101, 8000, out);
         },
         "DATE-TO-YYYYMMDD"},
        {"window back",
         [] {
             char out[8];
             _zvkDayToYYYYDDD(26001, -400, out);
         },
         "DAY-TO-YYYYDDD"},
        {"window name",
         [] {
             char out[4];
             _zvkYearToYYYY(26, 9000, out, "YEAR-TO-YYYY");
         },
         "YEAR-TO-YYYY"},
    };
    for (const Refused &each : cases) {
        ChildRun run = runChild(each.call);
        EXPECT_NE(run.signal, 0) << each.what;
        EXPECT_NE(run.err.find(each.shown), std::string::npos) << each.what << ": " << run.err;
    }
}

std::string windowed(int kind, int32_t value, int32_t window)
{
    GuardedItem out(kind == 0 ? 4 : kind == 1 ? 7 : 8);
    char *text = reinterpret_cast<char *>(out.data());
    if (kind == 0) _zvkYearToYYYY(value, window, text, "YEAR-TO-YYYY");
    if (kind == 1) _zvkDayToYYYYDDD(value, window, text);
    if (kind == 2) _zvkDateToYYYYMMDD(value, window, text);
    return std::string(text, out.size());
}

TEST(DateFunctions, EveryYearFallsIntoTheWindow)
{
    time_t now = time(nullptr);
    int current = localtime(&now)->tm_year + 1900;
    for (int window : {-300, -50, -1, 0, 1, 49, 50, 100, 5000}) {
        for (int yy = 0; yy < 100; yy++) {
            int year = std::stoi(windowed(0, yy, window));
            ASSERT_EQ(year % 100, yy);
            ASSERT_LE(year, current + window);
            ASSERT_GT(year, current + window - 100);
            char day[16], date[16];
            snprintf(day, sizeof day, "%04d031", year);
            snprintf(date, sizeof date, "%04d0131", year);
            ASSERT_EQ(windowed(1, yy * 1000 + 31, window), day);
            ASSERT_EQ(windowed(2, yy * 10000 + 131, window), date);
        }
    }
}

std::string currentDate()
{
    GuardedItem out(21);
    _zvkCurrentDate(reinterpret_cast<char *>(out.data()));
    return std::string(reinterpret_cast<char *>(out.data()), 21);
}

// What the rule makes of the zone that the C library is in.
std::string offsetNow()
{
    tzset();
    time_t now = time(nullptr);
    tm local;
    localtime_r(&now, &local);
    long west = timezone / 60;
    if (local.tm_isdst > 0) west += west < 0 ? -60 : 60;
    char text[64];
    snprintf(text, sizeof text, "%c%02ld%02ld", west > 0 ? '-' : '+', labs(west) / 60, labs(west) % 60);
    return text;
}

TEST(DateFunctions, CurrentDateFollowsTheZone)
{
    // Always summer west, east and at Greenwich; half hours; none; a zone of the system.
    const std::pair<const char *, const char *> zones[] = {{"AAA5BBB,0/0,J365/25", "-0600"},
                                                           {"AAA-1BBB,0/0,J365/25", "+0200"},
                                                           {"AAA0BBB,0/0,J365/25", "-0100"},
                                                           {"AAA-5:45", "+0545"},
                                                           {"AAA3:30", "-0330"},
                                                           {"UTC0", "+0000"},
                                                           {"AAA-14", "+1400"},
                                                           {"AAA12", "-1200"},
                                                           {"Australia/Lord_Howe", ""},
                                                           {"Europe/Berlin", ""},
                                                           {"America/St_Johns", ""},
                                                           {"no such zone", "+0000"}};
    for (auto [zone, offset] : zones) {
        setenv("TZ", zone, 1);
        std::string before, shown, after;
        do { // until no second's end lies between
            time_t now = time(nullptr);
            char text[16];
            tzset();
            strftime(text, sizeof text, "%Y%m%d%H%M%S", localtime(&now));
            before = text;
            shown = currentDate();
            now = time(nullptr);
            strftime(text, sizeof text, "%Y%m%d%H%M%S", localtime(&now));
            after = text;
        } while (before != after);
        EXPECT_EQ(shown.substr(0, 14), before) << zone;
        EXPECT_EQ(strspn(shown.substr(14, 2).c_str(), "0123456789"), 2u) << zone;
        EXPECT_EQ(shown.substr(16), *offset ? offset : offsetNow()) << zone;
    }
    unsetenv("TZ");
    tzset();
}

} // namespace
