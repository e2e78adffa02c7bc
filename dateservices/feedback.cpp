// Condition tokens; see feedback.h. What a status means to a service is a table.
#include "dateservices/feedback.h"

#include <cstring>

#include "frame/messages.h"

namespace dates {
namespace {

struct Meaning {
    int status;
    uint16_t message;
};

constexpr Meaning kDateMeanings[] = {{kBeyondCalendar, 2513}, {kBadEraYear, 2521}, {kUnknownEra, 2509},
                                     {kBadDay, 2508},         {kBadMonth, 2517},   {kBadHour, 2510},
                                     {kBadMinute, 2516},      {kBadSecond, 2519},  {kBadPicture, 2518},
                                     {kNoSuchEra, 2509},      {kNotEnough, 2507}};
constexpr Meaning kPartsMeanings[] = {{kBeyondCalendar, 2514}, {kBadDay, 2511}, {kBadMonth, 2517}};
constexpr Meaning kWriterMeanings[] = {{kBadPicture, 2518}, {99, 2534}};

constexpr uint32_t kBeforeLilian = 2513;

template <size_t N>
uint32_t meaningIn(const Meaning (&table)[N], int status)
{
    for (const Meaning &row : table)
        if (row.status == status) return row.message;
    return kUnknownFault;
}

bool isWarning(uint32_t message) { return message == 2526 || message == 2527; }

} // namespace

void report(FeedbackCode *fc, uint32_t message)
{
    if (!fc) {
        if (message != kSuccess) zvkWriteMsg(message, 0);
        return;
    }
    *fc = FeedbackCode{};
    if (message == kSuccess) return;
    fc->messageNumber = static_cast<uint16_t>(message);
    if (message == kUnknownFault) return; // the number alone
    fc->severity = isWarning(message) ? 2 : 3;
    fc->flags = isWarning(message) ? 0x51 : 0x59;
    memcpy(fc->facility, "LSV", 3);
}

uint32_t messageOfScan(Service service, Status status)
{
    if (status == kGood) return kSuccess;
    if (status == kBadText) return service == Service::seconds ? 2525 : 2520;
    if (status == kTokenSet) return kNoWorkStorage;
    return meaningIn(kDateMeanings, status);
}

uint32_t messageOfValidation(Service service, Status status)
{
    if (status == kGood) return kSuccess;
    if (status == kBeforeCalendar) return kBeforeLilian;
    return service == Service::parts ? meaningIn(kPartsMeanings, status) : meaningIn(kDateMeanings, status);
}

uint32_t messageOfWriting(Service service, Status status)
{
    bool seconds = service == Service::secondsToText;
    switch (static_cast<int>(status)) {
    case kGood:
        return kSuccess;
    case kCut:
        return seconds ? 2527 : 2526;
    case kNoEraForDate:
        return seconds ? 2506 : 2522;
    case kBadYear:
        return seconds ? 2506 : 2512;
    case kBadPicture:
    case 99:
        return meaningIn(kWriterMeanings, status);
    default:
        return kSuccess;
    }
}

} // namespace dates
