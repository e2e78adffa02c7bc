// The forms of FILE STATUS; see file_status.h.
#include "fileio/file_status.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "kvr2/code_pages.h"

namespace {

constexpr uint8_t kEbcdicBlank = 0x40;
constexpr uint8_t kEbcdicZero = 0xF0;

// Appends text to the area, cut at its end less `keep` bytes.
struct Writer {
    uint8_t *at;
    uint8_t *end;
    void put(const char *text, size_t length, size_t keep = 0)
    {
        size_t room = static_cast<size_t>(end - at);
        room = room > keep ? room - keep : 0;
        length = std::min(length, room);
        memcpy(at, text, length);
        at += length;
    }
};

// In place; a character that the EBCDIC page lacks leaves the field as it was.
void convertToEbcdic(uint8_t *area, uint64_t length)
{
    uint8_t converted[UINT16_MAX];
    auto size = static_cast<int32_t>(std::min<uint64_t>(length, sizeof converted));
    int32_t capacity = size;
    if (_zvkConvToEBCDIC(area, size, converted, &capacity) == 0) memcpy(area, converted, static_cast<size_t>(size));
}

} // namespace

void zvkStoreStatus(const FCB *fcb, const FIB *fib)
{
    uint8_t *field = zvkStatusField(fib);
    if (!field) return;
    auto tens = static_cast<uint8_t>(fcb->status / 10 % 10), units = static_cast<uint8_t>(fcb->status % 10);
    if (fib->shareMode & ZVK_FILE_STATUS_NATIONAL) {
        const uint8_t national[4] = {static_cast<uint8_t>('0' + tens), 0, static_cast<uint8_t>('0' + units), 0};
        memcpy(field, national, sizeof national);
        return;
    }
    uint8_t zero = fib->shareMode & ZVK_FILE_STATUS_EBCDIC ? kEbcdicZero : '0';
    field[0] = static_cast<uint8_t>(zero + tens);
    field[1] = static_cast<uint8_t>(zero + units);
}

void zvkFormatFeedback(uint8_t *area, uint64_t length, int32_t fs2, const FCB *fcb)
{
    memset(area, ' ', length);
    if (length < 6) return;
    char number[16];
    snprintf(number, sizeof number, "%6.6d", fs2);
    Writer writer{area, area + length};
    writer.put(number, 6);
    const char *name = fcb->fileName ? fcb->fileName : "";
    if (fcb->status == 33 || fcb->status == 35) {
        writer.put(",", 1);
        writer.put(name, strlen(name));
    } else if (fcb->status == 96) {
        writer.put(",", 1);
        writer.put(fcb->prefix, 3);
        writer.put(",", 1);
        writer.put(name, strlen(name), 4);
    }
}

void zvkStoreFeedback(FCB *fcb, const FIB *fib)
{
    uint8_t *field = zvkFeedbackField(fib);
    if (!field) return;
    zvkFormatFeedback(field, fib->feedbackLength, static_cast<int32_t>(fcb->fs2), fcb);
    if (fib->shareMode & ZVK_FILE_FEEDBACK_EBCDIC) convertToEbcdic(field, fib->feedbackLength);
}

void zvkResetFeedback(const FIB *fib)
{
    uint8_t *field = zvkFeedbackField(fib);
    if (!field) return;
    bool ebcdic = fib->shareMode & ZVK_FILE_FEEDBACK_EBCDIC;
    memset(field, ebcdic ? kEbcdicBlank : ' ', fib->feedbackLength);
    if (fib->feedbackLength > 5) memset(field, ebcdic ? kEbcdicZero : '0', 6);
}
