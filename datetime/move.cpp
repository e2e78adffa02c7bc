// MOVE of a date-time item to another one, and text as it is into an item.
#include "datetime/move.h"

#include <algorithm>
#include <cstring>

#include "datetime/assertion.h"
#include "datetime/range_check.h"

namespace {

constexpr char kNoTime[] = "00:00:00.000000000000", kNoDate[] = "0000-01-01";

// The base that a date or a time goes into: the receiver's own timestamp if it holds one, otherwise
// 0000-01-01 at 00:00:00.
void timestampBase(const char *receiver, const FD *fd, char *base, int16_t windowYear)
{
    bool keeps = fd->storageLength != 0 && isValidItem(receiver, fd, fd->storageLength, windowYear);
    if (keeps) return itemToSystemForm(receiver, fd, base, windowYear, false);
    memcpy(base, kNoDate, kDateForm);
    base[kDateForm] = '-';
    memcpy(base + kTimeInTimestamp, kNoTime, sizeof kNoTime);
}

} // namespace

void moveItem(const char *sender, char *receiver, const FD *senderFD, const FD *receiverFD, int16_t windowYear)
{
    SystemForm from, to;
    itemToSystemForm(sender, senderFD, from.text, windowYear, false);
    bool stamp = senderFD->category == ctTIMESTAMP;
    switch (receiverFD->category) {
    case ctTIME:
        if (!stamp) break; // whatever it is, it goes to the writer as it is
        memcpy(to.text, from.text + kTimeInTimestamp, kTimeForm);
        from = to;
        break;
    case ctDATE:
        if (stamp) memset(from.text + kDateForm, 0, sizeof from.text - kDateForm);
        break;
    default:
        if (stamp) break;
        timestampBase(receiver, receiverFD, to.text, windowYear);
        if (senderFD->category == ctDATE)
            memcpy(to.text, from.text, kDateForm);
        else
            memcpy(to.text + kTimeInTimestamp, from.text, kTimeForm);
        from = to;
        break;
    }
    systemFormToItem(from.text, receiver, receiverFD, windowYear);
}

void _zvkcDateTime_Move(const char *senderPtr, char *receiverPtr, const FD *senderFDPtr, const FD *receiverFDPtr,
                        uint64_t, int16_t windowYear, NewCallInfo newCallInfo)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(senderFDPtr);
    ASSERT_POINTER(receiverFDPtr);
    ASSERT_DATE_TIME(senderFDPtr);
    ASSERT_DATE_TIME(receiverFDPtr);
    if (newCallInfo.rangeCheck == 1) rangeCheckItem(senderPtr, senderFDPtr, windowYear);
    moveItem(senderPtr, receiverPtr, senderFDPtr, receiverFDPtr, windowYear);
}

void copyPadded(const char *from, uint64_t length, char *to, uint64_t room)
{
    uint64_t copied = std::min(length, room);
    memmove(to, from, copied);
    memset(to + copied, ' ', room - copied);
}

void _zvkcDateTime_Move_AToD(const char *senderPtr, char *receiverPtr, const FD *senderFDPtr, const FD *receiverFDPtr,
                             uint64_t senderLength, uint64_t receiverLength)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    DATETIME_ASSERT((senderFDPtr && senderFDPtr->hasLocale == 1) || (receiverFDPtr && receiverFDPtr->hasLocale == 1),
                    "( (senderFDPtr) -> hasLocale) == 1 || ( (receiverFDPtr) -> hasLocale) == 1");
    copyPadded(senderPtr, senderLength ? senderLength : strlen(senderPtr), receiverPtr, receiverLength);
}

void _zvkcDateTime_Move_DToA(const char *senderPtr, char *receiverPtr, const FD *senderFDPtr, uint64_t,
                             uint64_t senderLength, uint64_t receiverLength, int32_t justified)
{
    ASSERT_POINTER(senderPtr);
    ASSERT_POINTER(receiverPtr);
    ASSERT_POINTER(senderFDPtr);
    DATETIME_ASSERT(senderFDPtr->hasLocale == 1, "( (senderFDPtr) -> hasLocale) == 1");
    uint64_t length = senderLength ? senderLength : strlen(senderPtr);
    if (!justified || length == receiverLength) return copyPadded(senderPtr, length, receiverPtr, receiverLength);
    uint64_t cut = length > receiverLength ? length - receiverLength : 0, blanks = receiverLength - (length - cut);
    memmove(receiverPtr + blanks, senderPtr + cut, length - cut);
    memset(receiverPtr, ' ', blanks);
}
