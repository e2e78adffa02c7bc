// A calendar that is nothing but a walk: one day after the other, with the months' lengths typed
// out. It is the reference for everything that computes dates.
#pragma once

#include <cstdint>

struct CalendarWalk {
    int year, month, day, dayOfYear, weekday; // weekday 0 Sunday

    static bool leap(int y) { return y % 400 == 0 || (y % 4 == 0 && y % 100 != 0); }
    static int lengthOf(int y, int m)
    {
        static const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        return lengths[m - 1] + (m == 2 && leap(y));
    }
    // Lilian day 1, a Friday.
    static CalendarWalk lilian() { return {1582, 10, 15, 288, 5}; }
    // Day 1 of the integer dates, a Monday.
    static CalendarWalk integers() { return {1601, 1, 1, 1, 1}; }

    void next()
    {
        weekday = (weekday + 1) % 7;
        day++;
        dayOfYear++;
        if (day <= lengthOf(year, month)) return;
        day = 1;
        if (++month <= 12) return;
        month = dayOfYear = 1;
        year++;
    }
};
