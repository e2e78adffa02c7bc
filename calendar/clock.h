// The clock: the time of day here and in Greenwich, with the zone that TZ names at the moment of
// the call.
#pragma once

#include <cstdint>
#include <ctime>

namespace calendar {

struct ClockReading {
    tm local;
    int32_t microseconds;
    int32_t zoneMinutes; // standard time of the zone, west of Greenwich
};

// False if the clock or the zone cannot be read.
bool readClock(ClockReading &reading);

// The same instant in local time and in Greenwich.
bool readLocalAndGreenwich(tm &local, tm &greenwich);

inline int32_t yearOf(const tm &parts) { return parts.tm_year + 1900; }

} // namespace calendar
