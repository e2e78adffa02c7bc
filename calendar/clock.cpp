// The clock; see clock.h.
#include "calendar/clock.h"

#include <sys/time.h>

namespace calendar {

bool readClock(ClockReading &reading)
{
    timeval now;
    if (gettimeofday(&now, nullptr) != 0) return false;
    // localtime_r alone looks at TZ only once in a process.
    tzset();
    if (!localtime_r(&now.tv_sec, &reading.local)) return false;
    reading.microseconds = static_cast<int32_t>(now.tv_usec);
    reading.zoneMinutes = static_cast<int32_t>(timezone / 60);
    return true;
}

bool readLocalAndGreenwich(tm &local, tm &greenwich)
{
    tzset();
    time_t now = time(nullptr);
    return now != static_cast<time_t>(-1) && gmtime_r(&now, &greenwich) && localtime_r(&now, &local);
}

} // namespace calendar
