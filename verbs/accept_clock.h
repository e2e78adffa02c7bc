// ACCEPT from the clock.
#pragma once

#include <cstdint>
#include <ctime>

// Stores the form that the flags ask for, cut to `length` bytes or padded with blanks; nothing if
// they ask for none.
void zvkAcceptFromClock(uint32_t flags, int64_t length, uint8_t *target);

// The text of a form for a given time; empty if the flags ask for none.
struct ClockText {
    char text[256];
    size_t length;
};
ClockText zvkClockText(uint32_t flags, const tm &local, long microseconds);
