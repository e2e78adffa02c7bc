// Catches: Lilian seconds that lose a millisecond or carry wrongly; ranges that are open at one
// end; offsets of half hours, of zones west of Greenwich, and over the end of a year; a host form
// that lets a number through or loses a failure.
#include <clocale>
#include <cmath>
#include <ctime>
#include <random>

#include "dateservices/service_calls.h"
#include "kvr2/kvr2.h"
#include "support/calendar_walk.h"
#include "support/child.h"

namespace {

struct Parts {
    int32_t number[7]; // year, month, day, hours, minutes, seconds, milliseconds
};

Seconds toSeconds(const Parts &parts)
{
    Guarded<int32_t> in[7];
    for (int i = 0; i < 7; i++) memcpy(in[i].item.data(), &parts.number[i], 4);
    Guarded<double> out(-1.0);
    Guarded<FeedbackCode> fc;
    auto at = [&](int i) { return in[i].as<LsvNumber>(); };
    LSVISEC(at(0), at(1), at(2), at(3), at(4), at(5), at(6), out.as<LsvSeconds>(), fc.as<FeedbackCode>());
    return {tokenOf(fc.value()), out.value()};
}

int toParts(double value, Parts &parts)
{
    Guarded<int32_t> out[7];
    Guarded<double> in(value);
    Guarded<FeedbackCode> fc;
    auto at = [&](int i) { return out[i].as<LsvNumber>(); };
    LSVSECI(in.as<LsvSeconds>(), at(0), at(1), at(2), at(3), at(4), at(5), at(6), fc.as<FeedbackCode>());
    for (int i = 0; i < 7; i++) parts.number[i] = out[i].value();
    return tokenOf(fc.value());
}

TEST(TimeServices, SecondsBothWaysToTheMillisecond)
{
    std::mt19937_64 random(3);
    CalendarWalk at = CalendarWalk::lilian();
    for (int32_t day = 1; day <= 3074324; day++, at.next()) {
        if (day > 3 && day < 3074320 && day % 1499) continue;
        for (int64_t ms : {int64_t{0}, int64_t{86399999}, static_cast<int64_t>(random() % 86400000)}) {
            Parts parts{{at.year, at.month, at.day, int32_t(ms / 3600000), int32_t(ms / 60000 % 60),
                         int32_t(ms / 1000 % 60), int32_t(ms % 1000)}};
            Seconds there = toSeconds(parts);
            ASSERT_EQ(there.token, 0);
            ASSERT_NEAR(there.value, day * 86400.0 + static_cast<double>(ms) / 1000.0, 0.0001);
            Parts back;
            ASSERT_EQ(toParts(there.value, back), 0);
            ASSERT_EQ(memcmp(&back, &parts, sizeof parts), 0) << day << " " << ms;
        }
    }
}

TEST(TimeServices, RangesAreClosed)
{
    Parts parts, zero{};
    EXPECT_EQ(toParts(86400.0, parts), 0);
    EXPECT_EQ(parts.number[2], 15);
    EXPECT_EQ(toParts(265621679999.999, parts), 0);
    EXPECT_EQ(parts.number[6], 999);
    for (double beyond : {86399.999, 0.0, -1e300, 265621680000.0, 1e300, double(INFINITY), double(NAN)}) {
        EXPECT_EQ(toParts(beyond, parts), 2505);
        EXPECT_EQ(memcmp(&parts, &zero, sizeof zero), 0);
        EXPECT_EQ(dateTime(beyond, "YYYY").token, 2505);
    }
    const std::pair<Parts, int> refused[] = {
        {{{1581, 1, 1, 0, 0, 0, 0}}, 2514},        {{{10000, 1, 1, 0, 0, 0, 0}}, 2514},
        {{{1582, 10, 14, 0, 0, 0, 0}}, 2513},      {{{2026, 13, 1, 0, 0, 0, 0}}, 2517},
        {{{2026, 0, 1, 0, 0, 0, 0}}, 2517},        {{{2026, 2, 29, 0, 0, 0, 0}}, 2511},
        {{{2026, 1, -1, 0, 0, 0, 0}}, 2511},       {{{2026, 1, 1, 24, 60, 60, 1000}}, 2510},
        {{{2026, 1, 1, 23, 60, 60, 1000}}, 2516},  {{{2026, 1, 1, 23, 59, 60, 1000}}, 2519},
        {{{2026, 1, 1, 23, 59, 59, 1000}}, 2515},  {{{2026, 1, 1, -1, 0, 0, 0}}, 2510},
        {{{2026, 1, 1, 0, 0, 0, INT32_MIN}}, 2515}};
    for (const auto &[given, token] : refused) {
        EXPECT_EQ(toSeconds(given).token, token);
        EXPECT_EQ(toSeconds(given).value, 0.0);
    }
}

TEST(TimeServices, TextOfSeconds)
{
    double at = toSeconds({{2026, 3, 7, 0, 5, 9, 87}}).value;
    EXPECT_EQ(dateTime(at, "").value, "03/07/26 12:05:09 AM");
    EXPECT_EQ(dateTime(at, "YYYY-MM-DD-HH.MI.SS.999").value, "2026-03-07-00.05.09.087");
    EXPECT_EQ(dateTime(at, "9 99").value, "0 08");
    EXPECT_EQ(seconds("03/07/26 12:05:09 AM", "").value, std::floor(at));
    EXPECT_EQ(seconds("20260307120509", "YYYYMMDDHHMISS").value, std::floor(at) + 43200);
    EXPECT_EQ(seconds("2026030712AM", "YYYYMMDDHHAP").value, std::floor(at) - 309);
    EXPECT_EQ(seconds("2026030712PM", "YYYYMMDDHHAP").value, std::floor(at) - 309 + 43200);
    EXPECT_EQ(seconds("20260307 5", "YYYYMMDD 9").value, std::floor(at) - 309 + 0.5);
    EXPECT_EQ(seconds("2026030", "YYYYMMDD").token, 2525);
    EXPECT_EQ(seconds("15821014", "YYYYMMDD").token, 2513);
    EXPECT_EQ(dateTime(at, std::string(81, 'x')).token, 2527);
    EXPECT_EQ(dateTime(at, std::string(81, 'x')).value, std::string(80, 'x'));
    EXPECT_EQ(dateTime(at, "YYYY ZYY").token, 2518);
    EXPECT_EQ(dateTime(at, "YYYY ZYY").value, "");
    EXPECT_EQ(dateTime(86400, "<JJJJ>").token, 2506);
}

// What is small enough to be lost counts as the next part, but is no carry: the parts after it do
// not begin anew.
TEST(TimeServices, FractionsBelowTheNextPart)
{
    auto shown = [](double ofDay) {
        Parts parts;
        EXPECT_EQ(toParts(150000 * 86400.0 + ofDay, parts), 0);
        char text[64];
        snprintf(text, sizeof text, "%d:%d:%d.%d", parts.number[3], parts.number[4], parts.number[5], parts.number[6]);
        return std::string(text);
    };
    EXPECT_EQ(shown(3600.0), "1:0:0.0");
    EXPECT_EQ(shown(3599.9997), "0:59:59.1000");
    EXPECT_EQ(shown(3599.99995), "1:60:60.1000");
    EXPECT_EQ(shown(10.99995), "0:0:11.1000");
    EXPECT_EQ(shown(-0.00005), "0:0:0.0"); // the day is begun anew
    double before = 150000 * 86400.0 + 12.9997;
    for (const char *picture : {"SS.999", "HH:MI:SS.999", "SS.999 AP"})
        EXPECT_NE(dateTime(before, picture).value.find("12.100"), std::string::npos) << picture;
}

struct Offset {
    int32_t hours, minutes;
    double seconds;
};

Offset offsetIn(const char *zone)
{
    setenv("TZ", zone, 1);
    Offset result;
    FeedbackCode fc;
    LSVGMTO(&result.hours, &result.minutes, &result.seconds, &fc);
    EXPECT_EQ(tokenOf(fc), 0);
    return result;
}

TEST(TimeServices, TheClockInEveryKindOfZone)
{
    for (const char *zone :
         {"UTC0", "AAA-5:45", "AAA3:30", "AAA-14", "AAA12", "AAA5BBB,0/0,J365/25", "AAA-1BBB,M3.5.0,M10.5.0/3",
          "Australia/Lord_Howe", "America/St_Johns", "Asia/Kathmandu", "Pacific/Kiritimati", "no zone", ""}) {
        Offset offset = offsetIn(zone);
        time_t now = time(nullptr);
        tm local;
        localtime_r(&now, &local);
        EXPECT_EQ(offset.seconds, local.tm_gmtoff) << zone;
        EXPECT_EQ(offset.hours, local.tm_gmtoff / 3600) << zone;
        EXPECT_EQ(offset.minutes, labs(local.tm_gmtoff) % 3600 / 60) << zone;

        int32_t day, localDay;
        double there, here;
        char text[17];
        FeedbackCode fc;
        LSVGMT(&day, &there, &fc);
        EXPECT_EQ(tokenOf(fc), 0);
        double expected =
            static_cast<double>(time(nullptr)) + 141427 * 86400.0 + 86400.0 * 1; // 1970-01-01 is day 141428
        EXPECT_NEAR(there, expected, 2.0) << zone;
        EXPECT_EQ(day, static_cast<int32_t>(there / 86400.0));
        LSVUTC(&day, &there, &fc);
        EXPECT_NEAR(there, expected, 2.0) << zone;
        LSVLOCT(&localDay, &here, text, &fc);
        EXPECT_EQ(tokenOf(fc), 0);
        EXPECT_NEAR(here - there, local.tm_gmtoff, 2.0) << zone;
        Seconds read = seconds(std::string(text, 17), "YYYYMMDDHHMISS999");
        EXPECT_EQ(read.value, here);
        char today[8];
        TKJEDT4(today, &fc);
        EXPECT_EQ(std::string(today, 8), std::string(text, 8));
    }
    unsetenv("TZ");
    tzset();
}

// ---- host forms: in a child, since they choose code pages

std::string ebcdic(const std::string &native)
{
    std::string made(native.size(), '\0');
    int32_t room = static_cast<int32_t>(made.size());
    _zvkConvToEBCDIC(reinterpret_cast<const uint8_t *>(native.data()), static_cast<int32_t>(native.size()),
                     reinterpret_cast<uint8_t *>(made.data()), &room);
    return made;
}

std::string shown(const FeedbackCode &fc)
{
    char text[64];
    snprintf(text, sizeof text, "%d.%d.%02X.%02X%02X%02X ", fc.severity, fc.messageNumber, fc.flags,
             uint8_t(fc.facility[0]), uint8_t(fc.facility[1]), uint8_t(fc.facility[2]));
    return text;
}

TEST(TimeServices, HostFormsLetNoNumberThrough)
{
    ChildRun run = runChild([] {
        GuardedString good(ebcdic("2026-03-07")), bad(ebcdic("2026-02-30")), picture(ebcdic("YYYY-MM-DD"));
        Guarded<int32_t> number(7);
        Guarded<double> value(7.0);
        FeedbackCode fc{};
        auto *n = number.as<LsvNumber>();
        auto *v = value.as<LsvSeconds>();
        LSVDAYS_HOST(good.get(), picture.get(), n, &fc);
        printf("%d %s", number.value(), shown(fc).c_str());
        memset(number.item.data(), 7, 4);
        LSVDAYS_HOST(bad.get(), picture.get(), n, &fc);
        printf("%d %s", number.value(), shown(fc).c_str());
        LSVSECS_HOST(bad.get(), picture.get(), v, &fc);
        printf("%g %s", value.value(), shown(fc).c_str());
        GuardedItem out(80);
        LSVDATE_HOST(n, picture.get(), reinterpret_cast<char *>(out.data()), &fc);
        bool blank = true;
        for (size_t i = 0; i < 80; i++) blank &= out.data()[i] == 0x40;
        printf("%d %s", blank, shown(fc).c_str());
        memset(number.item.data(), 7, 4);
        LSVQCEN_HOST(number.as<LsvUnsigned>(), &fc);
        printf("%d %s", number.value(), shown(fc).c_str());
        GuardedItem text(17), day(8);
        memset(value.item.data(), 7, 8);
        LSVLOCT_HOST(n, v, reinterpret_cast<char *>(text.data()), &fc);
        TKJEDT4_HOST(reinterpret_cast<char *>(day.data()), &fc);
        printf("%g %d %d", value.value(), text.data()[0] == 0xF2, memcmp(text.data(), day.data(), 8));
        GuardedString none(std::string(0xFFFF, '\xF1'));
        LSVCBLDY_HOST(none.get(), none.get(), n, &fc);
        printf(" %s", shown(fc).c_str());
        LSVDYWK_HOST(n, n, nullptr);
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out,
              "0 0.0.00.000000 0 0.0.59.C3C5C5 0 0.0.59.C3C5C5 1 0.0.59.C3C5C5 0 0.0.00.000000 0 1 0 0.0.59.C3C5C5 ");
    EXPECT_NE(run.err.find("ZVK2512"), std::string::npos) << run.err;
}

} // namespace
