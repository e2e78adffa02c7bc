// See relative_slots.h.
#include "companions/filesystems/relative_slots.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/stored_header.h"

namespace filesystems {

static uint64_t offsetOf(const RelativeFile *file, uint64_t record)
{
    return kStoredHeaderSize + (record - 1) * file->slotSize;
}

bool slotCount(RelativeFile *file, uint64_t *count)
{
    struct stat about;
    file->error = fstat(file->descriptor, &about) != 0 ? errno : 0;
    if (file->error) return false;
    uint64_t size = static_cast<uint64_t>(about.st_size);
    *count = size < kStoredHeaderSize ? 0 : (size - kStoredHeaderSize) / file->slotSize;
    uint64_t last = file->changes ? file->changes->before(kMostRecords) : 0;
    if (last > *count) *count = last;
    return true;
}

// Length of the record in its slot, `kNoRecord`, or `kNoLength` for damage.
static int64_t lengthIn(const RelativeFile *file, uint64_t record, const uint8_t *slot)
{
    uint32_t mark;
    memcpy(&mark, slot, kSlotWord);
    if (!mark) return kNoRecord;
    if (mark - 1 > file->format.longest) return kNoLength;
    if (file->sumSize && !hasSum(record, slot, kSlotWord + mark - 1)) return kNoLength;
    return static_cast<int64_t>(mark) - 1;
}

// A transfer of the file. Where others may write, what a killed commit has left comes first: it may
// be half in the file.
static int fetch(RelativeFile *file, uint8_t *to, uint64_t size, uint64_t offset, size_t *got)
{
    for (;;) {
        int error = fetchBytes(&file->whole, to, size, offset, got);
        if (error || !file->whole.locksReads || !hasJournal(file->name)) return error;
        if ((error = settleJournal(file->name))) return error;
    }
}

int64_t loadSlot(RelativeFile *file, uint64_t record)
{
    size_t got;
    file->error = 0;
    if (record == 0 || record > kMostRecords) return kNoRecord;
    if (const uint8_t *changed = file->changes ? file->changes->find(record) : nullptr) {
        memcpy(file->slot, changed, file->slotSize);
        return lengthIn(file, record, file->slot);
    }
    file->error = fetch(file, file->slot, file->slotSize, offsetOf(file, record), &got);
    if (file->error || got != file->slotSize) return kNoRecord;
    int64_t length = lengthIn(file, record, file->slot);
    if (length == kNoLength) file->error = kDamagedSlot;
    return length;
}

static bool inWindow(const RelativeFile *file, uint64_t record)
{
    return record >= file->windowFirst && record - file->windowFirst < file->windowCount;
}

static const uint8_t *windowSlot(const RelativeFile *file, uint64_t record)
{
    return file->window + (record - file->windowFirst) * file->slotSize;
}

// The window as the transaction has changed it, also where the file ends before.
static void showChanges(RelativeFile *file, uint64_t wanted)
{
    const SlotChanges &changes = *file->changes;
    for (size_t at = changes.from(file->windowFirst);
         at < changes.count && changes.slots[at].record - file->windowFirst < wanted; ++at) {
        uint64_t place = changes.slots[at].record - file->windowFirst;
        if (place >= file->windowCount) {
            memset(file->window + file->windowCount * file->slotSize, 0, (place - file->windowCount) * file->slotSize);
            file->windowCount = place + 1;
        }
        memcpy(file->window + place * file->slotSize, changes.slots[at].bytes, file->slotSize);
    }
}

// Fills the window with the slots from `record` on, or, going back, up to it. False if that slot is
// beyond the end, or on an error.
static bool fillWindow(RelativeFile *file, uint64_t record, bool back)
{
    file->windowFirst = !back ? record : record > file->windowMost ? record - file->windowMost + 1 : 1;
    file->windowCount = 0;
    uint64_t wanted = back ? record - file->windowFirst + 1 : file->windowMost;
    size_t got;
    file->error = fetch(file, file->window, wanted * file->slotSize, offsetOf(file, file->windowFirst), &got);
    file->windowCount = got / file->slotSize;
    if (file->changes) showChanges(file, wanted);
    if (!inWindow(file, record)) return false;
    file->error = 0; // what came before the failure is good
    return true;
}

void forgetWindow(RelativeFile *file)
{
    if (!file->alone) file->windowCount = 0;
}

bool putSlot(FCB *fcb, RelativeFile *file, uint64_t record, const uint8_t *data, size_t size)
{
    if (file->transactional) {
        if (!file->changes) file->changes = joinTransaction(fcb->fileName, file->descriptor, file->slotSize);
        if (!file->changes || !file->changes->put(record, data, size)) {
            doomTransaction(34);
            return fail(fcb, 34, fs2Storage);
        }
        if (inWindow(file, record)) memcpy(file->window + (record - file->windowFirst) * file->slotSize, data, size);
        return true;
    }
    while (file->whole.locksReads && hasJournal(file->name))
        if (int error = settleJournal(file->name)) return failWithErrno(fcb, error);
    if (int error = replaceBytes(&file->whole, data, size, offsetOf(file, record))) return failWithErrno(fcb, error);
    if (file->durability == Durability::commit && (fcb->mode & ZVK_OPEN_IO))
        if (int error = forceData(file->descriptor)) return failWithErrno(fcb, error);
    if (inWindow(file, record)) memcpy(file->window + (record - file->windowFirst) * file->slotSize, data, size);
    return true;
}

bool storeRecord(FCB *fcb, RelativeFile *file, uint64_t record, const uint8_t *data, uint32_t length)
{
    uint32_t mark = length + 1;
    memcpy(file->slot, &mark, kSlotWord);
    memcpy(file->slot + kSlotWord, data, length);
    memset(file->slot + kSlotWord + length, 0, file->slotSize - kSlotWord - length);
    if (file->sumSize) putSum(record, file->slot, kSlotWord + length);
    return putSlot(fcb, file, record, file->slot, file->slotSize);
}

// The first slot from `record` on that is no hole of the file, 0 for none: a number far out must
// not cost a walk through all before it.
static uint64_t dataFrom(const RelativeFile *file, uint64_t record)
{
    off_t at = static_cast<off_t>(offsetOf(file, record)), data = lseek(file->descriptor, at, SEEK_DATA);
    if (data < 0) return errno == ENXIO ? 0 : record;
    return data <= at ? record : (static_cast<uint64_t>(data) - kStoredHeaderSize) / file->slotSize + 1;
}

static uint64_t beyondHole(const RelativeFile *file, uint64_t record)
{
    uint64_t data = dataFrom(file, record), changed = file->changes ? file->changes->next(record) : 0;
    return changed && (!data || changed < data) ? changed : data;
}

// The last slot before `record` of which a byte is no hole of the file, 0 for none. The system
// looks for data forward only, so the last data before a place is found by halves.
static uint64_t dataBefore(const RelativeFile *file, uint64_t record)
{
    off_t end = static_cast<off_t>(offsetOf(file, record)), low = static_cast<off_t>(kStoredHeaderSize), high = end - 1;
    if (record == 1) return 0;
    auto nextData = [&](off_t place) {
        off_t data = lseek(file->descriptor, place, SEEK_DATA);
        if (data < 0) return errno == ENXIO ? end : place; // a file system that knows no holes
        return data < end ? data : end;
    };
    if (nextData(high) == high) return record - 1;
    low = nextData(low);
    if (low == end) return 0;
    while (high - low > 1) {
        off_t middle = low + (high - low) / 2, data = nextData(middle);
        if (data < end)
            low = data;
        else
            high = middle;
    }
    return (static_cast<uint64_t>(low) - kStoredHeaderSize) / file->slotSize + 1;
}

static uint64_t beforeHole(const RelativeFile *file, uint64_t record)
{
    uint64_t data = dataBefore(file, record), changed = file->changes ? file->changes->before(record - 1) : 0;
    return changed > data ? changed : data;
}

static uint64_t takeFromWindow(RelativeFile *file, uint64_t record)
{
    memcpy(file->slot, windowSlot(file, record), file->slotSize);
    return record;
}

uint64_t findForward(RelativeFile *file, uint64_t record, int64_t *length)
{
    bool fresh = file->alone || !file->locks.active;
    file->error = 0;
    while (record && record <= kMostRecords) {
        bool filled = false;
        if (!inWindow(file, record) && !(filled = fillWindow(file, record, false))) {
            // Beyond the end of the file; the transaction may have records there.
            uint64_t changed = file->error || !file->changes ? 0 : file->changes->next(record);
            if (changed <= record) return 0;
            record = changed;
            continue;
        }
        fresh |= filled;
        for (; inWindow(file, record); ++record) {
            *length = lengthIn(file, record, windowSlot(file, record));
            if (*length >= 0) return takeFromWindow(file, record);
            if (fresh && *length == kNoLength) file->error = kDamagedSlot;
            if (file->error) return 0;
            if (fresh) continue;
            if (!fillWindow(file, record--, false)) return 0; // looks at this slot again
            fresh = true;
        }
        record = beyondHole(file, record);
    }
    return 0;
}

uint64_t findBack(RelativeFile *file, uint64_t record, int64_t *length)
{
    bool fresh = file->alone || !file->locks.active;
    file->error = 0;
    if (record > kMostRecords) record = kMostRecords;
    while (record) {
        if (!inWindow(file, record) || (!fresh && lengthIn(file, record, windowSlot(file, record)) < 0)) {
            fresh = true;
            if (!fillWindow(file, record, true)) {
                uint64_t count;
                if (file->error || !slotCount(file, &count)) return 0;
                if (count < record) record = count; // beyond the end: on with the last slot
                continue;
            }
        }
        *length = lengthIn(file, record, windowSlot(file, record));
        if (*length >= 0) return takeFromWindow(file, record);
        if (*length == kNoLength) file->error = kDamagedSlot;
        if (file->error) return 0;
        record = record > file->windowFirst ? record - 1 : beforeHole(file, record);
    }
    return 0;
}

} // namespace filesystems
