// ACCEPT from the clock: DATE, DAY, TIME, DAY-OF-WEEK of the local time, tried in this order.
#include "verbs/accept_clock.h"

#include <algorithm>
#include <cstring>

#include "calendar/clock.h"
#include "kvr2/console.h"

ClockText zvkClockText(uint32_t flags, const tm &local, long microseconds)
{
    const bool longYear = flags & ZVK_ACCEPT_LONG_YEAR;
    const char *format = flags & ZVK_ACCEPT_DATE          ? (longYear ? "%Y%m%d" : "%y%m%d")
                         : flags & ZVK_ACCEPT_DAY         ? (longYear ? "%Y%j" : "%y%j")
                         : flags & ZVK_ACCEPT_TIME        ? "%H%M%S00"
                         : flags & ZVK_ACCEPT_DAY_OF_WEEK ? "%w"
                                                          : nullptr;
    ClockText result{};
    if (!format) return result;
    result.length = strftime(result.text, sizeof result.text - 1, format, &local);
    if (strcmp(format, "%H%M%S00") == 0 && result.length >= 2) {
        long hundredths = microseconds / 10000 % 100;
        result.text[result.length - 2] = static_cast<char>('0' + hundredths / 10);
        result.text[result.length - 1] = static_cast<char>('0' + hundredths % 10);
    }
    if (strcmp(format, "%w") == 0 && *result.text == '0') *result.text = '7'; // Sunday
    return result;
}

void zvkAcceptFromClock(uint32_t flags, int64_t length, uint8_t *target)
{
    calendar::ClockReading now;
    if (!calendar::readClock(now)) return;
    ClockText clock = zvkClockText(flags, now.local, now.microseconds);
    if (clock.length == 0) return;
    size_t room = static_cast<size_t>(length), copied = std::min(room, clock.length);
    memcpy(target, clock.text, copied);
    memset(target + copied, ' ', room - copied);
}
