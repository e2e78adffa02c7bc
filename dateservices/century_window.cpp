// The hundred years that a year of two digits lies in: they start some years before the present
// one, 80 unless LSVSCEN says otherwise.
#include "calendar/clock.h"
#include "dateservices/date_parts.h"
#include "dateservices/feedback.h"
#include "frame/run_unit.h"

namespace dates {
namespace {

constexpr uint32_t kDefaultWindow = 80, kLongestWindow = 100;
constexpr uint32_t kNoClock = 2502, kWindowRange = 2533;

// For callers outside of any run unit.
uint32_t windowWithoutRunUnit = kDefaultWindow;

uint32_t &window()
{
    Runcom *runcom = zvkCurrentRuncom();
    return runcom ? runcom->century : windowWithoutRunUnit;
}

} // namespace

int32_t windowedYear(int32_t yy)
{
    calendar::ClockReading now;
    if (!calendar::readClock(now)) return -1;
    int32_t start = calendar::yearOf(now.local) - static_cast<int32_t>(__atomic_load_n(&window(), __ATOMIC_RELAXED));
    int32_t within = yy >= start % 100 ? start : start + 99;
    return within / 100 * 100 + yy;
}

} // namespace dates

void LSVSCEN(const LsvUnsigned *century, FeedbackCode *fc)
{
    calendar::ClockReading now;
    if (!calendar::readClock(now)) return dates::report(fc, dates::kNoClock);
    if (*century > dates::kLongestWindow) return dates::report(fc, dates::kWindowRange);
    __atomic_store_n(&dates::window(), *century, __ATOMIC_RELAXED);
    dates::report(fc, dates::kSuccess);
}

void LSVQCEN(LsvUnsigned *century, FeedbackCode *fc)
{
    *century = __atomic_load_n(&dates::window(), __ATOMIC_RELAXED);
    dates::report(fc, dates::kSuccess);
}
