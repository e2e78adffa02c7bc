// Catches: carries that stop short or go on too far; months whose last day is not kept to;
// durations so large that a loop would not end; differences with a wrong sign or a borrow that is
// missing.
#include <ctime>
#include <random>

#include "datetime/item.h"
#include "support/calendar_walk.h"
#include "support/child.h"

namespace {

using Durations = std::vector<DurationEntry>;

std::string shifted(const std::string &text, const Format &format, const Durations &durations, bool adding = true,
                    NewCallInfo info = kCheck)
{
    Item item(text); // source and receiver in one
    auto words = static_cast<uint32_t>(2 * durations.size());
    (adding ? _zvkcDateTime_Add_Duration : _zvkcDateTime_Sub_Duration)(item.get(), &format.fd, item.get(), words,
                                                                       durations.data(), 1950, info);
    return item.text();
}

std::string stampOf(time_t at, int micro)
{
    tm parts;
    gmtime_r(&at, &parts);
    char text[64];
    snprintf(text, sizeof text, "%04d-%02d-%02d-%02d:%02d:%02d.%06d", parts.tm_year + 1900, parts.tm_mon + 1,
             parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec, micro);
    return text;
}

// Days and all that is smaller are seconds of the system's calendar.
TEST(Durations, AgreeWithTheSystemsCalendar)
{
    std::mt19937_64 random(1);
    const int64_t units[] = {86400000000, 3600000000, 60000000, 1000000, 1};
    const int32_t limits[] = {1000000, 20000000, INT32_MAX, INT32_MAX, INT32_MAX};
    for (int i = 0; i < 20000; i++) {
        int unit = static_cast<int>(random() % 5);
        auto value = static_cast<int32_t>(random() % static_cast<uint64_t>(limits[unit]));
        if (random() % 2) value %= 100;
        int64_t at = static_cast<int64_t>(random() % 100000000000) * 1000000 +
                     static_cast<int64_t>(random() % 1000000); // to 5138
        at += 20000000000000000;
        int64_t after = at + value * units[unit], before = at - value * units[unit];
        auto show = [](int64_t micros) { return stampOf(micros / 1000000, static_cast<int>(micros % 1000000)); };
        DurationEntry duration{static_cast<uint32_t>(duDays + unit), random() % 2 ? value : -value};
        if (after < 253402300800000000) {
            ASSERT_EQ(shifted(show(at), isoStamp(), {duration}), show(after)) << show(at);
        }
        if (before >= 0) {
            ASSERT_EQ(shifted(show(at), isoStamp(), {duration}, false), show(before)) << show(at) << " " << value;
        }
    }
}

TEST(Durations, MonthsEndOnTheirLastDay)
{
    EXPECT_EQ(shifted("2026-01-31", isoDate(), {{duMonths, 1}}), "2026-02-28");
    EXPECT_EQ(shifted("2024-01-31", isoDate(), {{duMonths, 1}}), "2024-02-29");
    EXPECT_EQ(shifted("2026-01-31", isoDate(), {{duMonths, 1}, {duMonths, 1}, {duMonths, 1}}), "2026-04-28");
    EXPECT_EQ(shifted("2026-01-31", isoDate(), {{duMonths, 25}}), "2028-02-29");
    EXPECT_EQ(shifted("2026-03-31", isoDate(), {{duMonths, 1}}, false), "2026-02-28");
    EXPECT_EQ(shifted("2026-01-15", isoDate(), {{duMonths, 1}}, false), "2025-12-15");
    EXPECT_EQ(shifted("2026-12-15", isoDate(), {{duMonths, -1}}), "2027-01-15");
    EXPECT_EQ(shifted("2026-12-15", isoDate(), {{duMonths, 24000}}, false), "0026-12-15");
    EXPECT_EQ(shifted("2024-02-29", isoDate(), {{duYears, 1}}), "2025-02-29"); // years leave the day alone
    EXPECT_EQ(shifted("2026-01-31", isoDate(), {{duDays, 1}}), "2026-02-01");
}

// Subtracting looks at a month only where a day is to go below 1, and counts a month or day 0 as
// one of before.
TEST(Durations, SubtractingTakesPartsAsTheyAre)
{
    EXPECT_EQ(shifted("2026-00-15", isoDate(), {{duDays, 5}}, false, kNoCheck), "2026-00-10");
    EXPECT_EQ(shifted("2026-00-15", isoDate(), {{duMonths, 0}}, false, kNoCheck), "2025-12-15");
    EXPECT_EQ(shifted("2026-03-00", isoDate(), {{duDays, 0}}, false, kNoCheck), "2026-02-28");
    EXPECT_EQ(shifted("2026-02-31", isoDate(), {{duDays, 1}}, false, kNoCheck), "2026-02-30");
    EXPECT_EQ(shifted("2026-13-01", isoDate(), {{duDays, 1}}, false, kNoCheck), "2026-12-31");
    EXPECT_EQ(shifted("2026-03-00", isoDate(), {{duDays, 0}}, true, kNoCheck), "2026-03-00");
    EXPECT_EQ(shifted("2026-02-31", isoDate(), {{duDays, 0}}, true, kNoCheck), "2026-03-03");
}

TEST(Durations, TimesWrapWithinTheDay)
{
    EXPECT_EQ(shifted("10:00:00", isoTime(), {{duHours, 25}}), "11:00:00");
    EXPECT_EQ(shifted("10:00:00", isoTime(), {{duHours, 2147483647}}), "17:00:00");
    EXPECT_EQ(shifted("00:00:00", isoTime(), {{duSeconds, 1}}, false), "23:59:59");
    EXPECT_EQ(shifted("00:00:00", isoTime(), {{duPicoseconds, 1}}, false), "23:59:59");
    EXPECT_EQ(shifted("2026-12-31-23:59:59.000000", isoStamp(), {{duSeconds, 1}}), "2027-01-01-00:00:00.000000");
}

TEST(Durations, WhatIsNoneIsRefused)
{
    void (*const calls[])() = {
        [] {
            shifted("2026-01-01", isoDate(), {{duPicoseconds, 1}});
        },
        [] {
            shifted("2026-01-01", isoDate(), {{12, 1}});
        },
        [] {
            shifted("2026-01-01", isoDate(), {{21, 1}}, false);
        },
        [] {
            shifted("9999-12-31", isoDate(), {{duDays, 1}});
        },
        [] {
            shifted("2026-01-01", isoDate(), {{duYears, INT32_MAX}});
        },
        [] {
            shifted("10:00:00", isoTime(), {{duDays, 1}});
        }, // a month outside 1 to 12
    };
    for (auto call : calls) {
        ChildRun run = runChild(call);
        EXPECT_NE(run.signal, 0);
        EXPECT_NE(run.err.find("Assertion"), std::string::npos);
    }
    EXPECT_EQ(shifted("0001-01-01", isoDate(), {{duYears, 2}}, false),
              "-001-01-01"); // a year below 0 is written as it is
}

int32_t between(const std::string &a, const std::string &b, const Format &format, uint32_t unit)
{
    Item left(a), right(b);
    return _zvkcDateTime_Find_Duration(left.get(), &format.fd, right.get(), &format.fd, unit, 1950, kCheck);
}

TEST(Durations, Differences)
{
    EXPECT_EQ(between("2026-03-31", "2026-03-01", isoDate(), duMonths), 0);
    EXPECT_EQ(between("2026-03-31", "2026-03-01", isoDate(), duDays), 30);
    EXPECT_EQ(between("2026-03-01", "2026-03-31", isoDate(), duDays), -30);
    EXPECT_EQ(between("2028-01-01", "2026-01-01", isoDate(), duDays), 730);
    EXPECT_EQ(between("2030-01-01", "2026-01-01", isoDate(), duDays), 1461);
    EXPECT_EQ(between("2025-01-01", "2024-12-31", isoDate(), duDays), 1);
    EXPECT_EQ(between("2025-01-01", "2024-12-31", isoDate(), duYears), 0);
    EXPECT_EQ(between("2026-02-28", "2025-03-01", isoDate(), duMonths), 11);
    EXPECT_EQ(between("2024-03-01", "2023-03-02", isoDate(), duMonths), 11);
    EXPECT_EQ(between("10:00:00", "08:30:30", isoTime(), duMinutes), 89);
    EXPECT_EQ(between("10:00:00", "08:30:30", isoTime(), duSeconds), 5370);
    EXPECT_EQ(between("08:30:30", "10:00:00", isoTime(), duSeconds), -5370);
    EXPECT_EQ(between("2026-01-02-00:00:00.000000", "2026-01-01-23:59:59.999999", isoStamp(), duMicroseconds), 1);
    EXPECT_EQ(between("2026-01-02-00:00:00.000000", "2026-01-01-23:59:59.999999", isoStamp(), duHours), 0);
    // Within a year days are the calendar's.
    CalendarWalk at{2024, 1, 1, 1, 1};
    for (int n = 0; n < 366; n++, at.next()) {
        char text[32];
        snprintf(text, sizeof text, "%04d-%02d-%02d", at.year, at.month, at.day);
        ASSERT_EQ(between(text, "2024-01-01", isoDate(), duDays), n);
        ASSERT_EQ(between("2024-01-01", text, isoDate(), duHours), -24 * n);
    }
}

} // namespace
