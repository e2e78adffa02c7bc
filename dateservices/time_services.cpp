// The services that carry the time of day: Lilian seconds, the present time, the offset from
// Greenwich, the day of the week.
#include <cmath>
#include <cstring>

#include "calendar/clock.h"
#include "calendar/decimal_text.h"
#include "dateservices/text_services.h"

namespace dates {
namespace {

constexpr double kFirstSecond = 86400.0, kLastSecond = 265621679999.999;
constexpr double kSecondsOfDay = 86400.0;
constexpr int32_t kMinutesOfDay = 1440;
constexpr uint32_t kSecondsRange = 2505, kDayRange = 2512, kNoOffset = 2502, kNoClock = 2503, kNoLocalTime = 2531;
constexpr uint32_t kHours = 2510, kMinutes = 2516, kSeconds = 2519, kMilliseconds = 2515;
constexpr int32_t kLocalText = 17;

double secondsOf(int64_t lilian, const DateParts &parts)
{
    return static_cast<double>(lilian) * kSecondsOfDay + parts.hour * 3600.0 + parts.minute * 60.0 + parts.second +
           parts.millisecond / 1000.0;
}

bool isSeconds(double seconds) { return seconds >= kFirstSecond && seconds <= kLastSecond; }

// The small amounts take up what binary fractions lose. They go into each part alone, and what is
// left after a part is the rest without them: 0.05 milliseconds before an hour that hour counts,
// with 60 minutes, 60 seconds and 1000 milliseconds, and from 0.9995 on a fraction counts 1000
// milliseconds, without a carry; on purpose.
void setTime(DateParts &parts, double seconds)
{
    double day = std::floor((seconds + 0.0001) / kSecondsOfDay);
    double rest = seconds - day * kSecondsOfDay;
    setDate(parts, static_cast<int64_t>(day));
    parts.hour = static_cast<int32_t>(std::floor((rest + 0.0001) / 3600.0));
    rest = std::fmod(rest, 3600.0);
    parts.minute = static_cast<int32_t>(std::floor((rest + 0.0001) / 60.0));
    rest = std::fmod(rest, 60.0);
    parts.second = static_cast<int32_t>(std::floor(rest + 0.0001));
    rest = std::fmod(rest, 1.0);
    parts.millisecond = static_cast<int32_t>(std::floor((rest + 0.0005) * 1000.0));
}

void setLocal(DateParts &parts, const calendar::ClockReading &now)
{
    parts.year = calendar::yearOf(now.local);
    parts.month = now.local.tm_mon + 1;
    parts.day = now.local.tm_mday;
    parts.hour = now.local.tm_hour;
    parts.minute = now.local.tm_min;
    parts.second = now.local.tm_sec;
    parts.millisecond = now.microseconds / 1000;
}

// Local time less time in Greenwich, both on the day of the earlier one.
bool offsetFromGreenwich(int32_t &seconds)
{
    tm local, greenwich;
    if (!calendar::readLocalAndGreenwich(local, greenwich)) return false;
    auto later = [](const tm &a, const tm &b) {
        return a.tm_year != b.tm_year ? a.tm_year > b.tm_year : a.tm_yday > b.tm_yday;
    };
    if (later(local, greenwich)) local.tm_hour += 24;
    if (later(greenwich, local)) greenwich.tm_hour += 24;
    auto ofDay = [](const tm &parts) { return parts.tm_hour * 3600 + parts.tm_min * 60 + parts.tm_sec; };
    seconds = ofDay(local) - ofDay(greenwich);
    return true;
}

uint32_t greenwichNow(int64_t &lilian, double &seconds)
{
    calendar::ClockReading now;
    if (!calendar::readClock(now)) return kNoClock;
    int32_t offset;
    if (!offsetFromGreenwich(offset)) return kNoOffset;
    DateParts parts{};
    setLocal(parts, now);
    int64_t minutes = parts.hour * 60 + parts.minute - offset / 60;
    int64_t days = calendar::floorDiv(minutes, kMinutesOfDay);
    minutes -= days * kMinutesOfDay;
    lilian = lilianOf(parts) + days;
    parts.hour = static_cast<int32_t>(minutes / 60);
    parts.minute = static_cast<int32_t>(minutes % 60);
    seconds = secondsOf(lilian, parts);
    return kSuccess;
}

uint32_t localNow(int64_t &lilian, double &seconds, char *text)
{
    calendar::ClockReading now;
    if (!calendar::readClock(now)) return kNoClock;
    DateParts parts{};
    setLocal(parts, now);
    lilian = lilianOf(parts);
    seconds = secondsOf(lilian, parts);
    const int32_t fields[] = {parts.month, parts.day, parts.hour, parts.minute, parts.second};
    calendar::putDigits(text, 4, static_cast<uint32_t>(parts.year));
    for (int i = 0; i < 5; i++) calendar::putDigits(text + 4 + 2 * i, 2, static_cast<uint32_t>(fields[i]));
    calendar::putDigits(text + 14, 3, static_cast<uint32_t>(parts.millisecond));
    return kSuccess;
}

uint32_t checkTime(int32_t hours, int32_t minutes, int32_t seconds, int32_t milliseconds)
{
    // Negative numbers count as large ones.
    if (static_cast<uint32_t>(hours) > 23) return kHours;
    if (static_cast<uint32_t>(minutes) > 59) return kMinutes;
    if (static_cast<uint32_t>(seconds) > 59) return kSeconds;
    return static_cast<uint32_t>(milliseconds) > 999 ? kMilliseconds : kSuccess;
}

} // namespace
} // namespace dates

using namespace dates;

void LSVDYWK(const LsvNumber *lilian, LsvNumber *weekday, FeedbackCode *fc)
{
    int32_t day = *lilian;
    bool valid = day >= 1 && day <= calendar::kLastLilian;
    *weekday = valid ? calendar::weekday(day + calendar::kLilianBase) + 1 : 0;
    report(fc, valid ? kSuccess : kDayRange);
}

void LSVISEC(const LsvNumber *year, const LsvNumber *month, const LsvNumber *day, const LsvNumber *hours,
             const LsvNumber *minutes, const LsvNumber *seconds, const LsvNumber *milliseconds,
             LsvSeconds *lilianSeconds, FeedbackCode *fc)
{
    DateParts parts{};
    parts.year = *year;
    parts.month = *month;
    parts.day = *day;
    parts.hour = *hours;
    parts.minute = *minutes;
    parts.second = *seconds;
    parts.millisecond = *milliseconds;
    uint32_t message = messageOfValidation(Service::parts, validateDate(parts, nullptr));
    if (message == kSuccess) message = checkTime(parts.hour, parts.minute, parts.second, parts.millisecond);
    *lilianSeconds = message == kSuccess ? secondsOf(lilianOf(parts), parts) : 0.0;
    report(fc, message);
}

void LSVSECI(const LsvSeconds *lilianSeconds, LsvNumber *year, LsvNumber *month, LsvNumber *day, LsvNumber *hours,
             LsvNumber *minutes, LsvNumber *seconds, LsvNumber *milliseconds, FeedbackCode *fc)
{
    double given = *lilianSeconds;
    DateParts parts{};
    bool valid = isSeconds(given);
    if (valid) setTime(parts, given);
    *year = parts.year;
    *month = parts.month;
    *day = parts.day;
    *hours = parts.hour;
    *minutes = parts.minute;
    *seconds = parts.second;
    *milliseconds = parts.millisecond;
    report(fc, valid ? kSuccess : kSecondsRange);
}

void LSVSECS(const VSTRING *timestamp, const VSTRING *picture, LsvSeconds *lilianSeconds, FeedbackCode *fc)
{
    DateParts parts;
    uint32_t message = readDate(Service::seconds, timestamp, picture, parts);
    // The scanner left 12 AM as 12.
    if (parts.halfOfDay == kMorning && parts.hour == 12) parts.hour = 0;
    *lilianSeconds = message == kSuccess ? secondsOf(lilianOf(parts), parts) : 0.0;
    report(fc, message);
}

void LSVDATM(const LsvSeconds *lilianSeconds, const VSTRING *picture, char *out, FeedbackCode *fc)
{
    constexpr size_t kClearedAfterFailure = 20;
    memset(out, ' ', kOutput);
    double given = *lilianSeconds;
    if (!isSeconds(given)) return report(fc, kSecondsRange);
    DateParts parts{};
    setTime(parts, given);
    parts.halfOfDay = parts.hour >= 12 ? kAfternoon : kMorning;
    uint32_t message = printDate(Service::secondsToText, picture, out, parts);
    if (message != kSuccess && message != 2527) memset(out, ' ', kClearedAfterFailure);
    report(fc, message);
}

void LSVGMT(LsvNumber *lilian, LsvSeconds *lilianSeconds, FeedbackCode *fc)
{
    int64_t day = 0;
    double seconds = 0;
    uint32_t message = greenwichNow(day, seconds);
    *lilian = static_cast<int32_t>(day);
    *lilianSeconds = seconds;
    report(fc, message);
}

void LSVUTC(LsvNumber *lilian, LsvSeconds *lilianSeconds, FeedbackCode *fc) { LSVGMT(lilian, lilianSeconds, fc); }

void LSVGMTO(LsvNumber *hours, LsvNumber *minutes, LsvSeconds *seconds, FeedbackCode *fc)
{
    int32_t offset = 0;
    bool known = offsetFromGreenwich(offset);
    *hours = offset / 3600;
    *minutes = (offset < 0 ? -offset : offset) % 3600 / 60;
    *seconds = offset;
    report(fc, known ? kSuccess : kNoClock);
}

void LSVLOCT(LsvNumber *lilian, LsvSeconds *lilianSeconds, char *gregorian, FeedbackCode *fc)
{
    int64_t day = 0;
    double seconds = 0;
    char text[kLocalText];
    memset(text, '0', sizeof text);
    uint32_t message = localNow(day, seconds, text);
    *lilian = static_cast<int32_t>(day);
    *lilianSeconds = seconds;
    memcpy(gregorian, text, sizeof text);
    report(fc, message);
}

void TKJEDT4(char *out, FeedbackCode *fc)
{
    int64_t day;
    double seconds;
    char text[kLocalText];
    uint32_t message = localNow(day, seconds, text);
    if (message == kSuccess)
        memcpy(out, text, 8);
    else
        *out = 0;
    report(fc, message == kSuccess ? kSuccess : kNoLocalTime);
}
