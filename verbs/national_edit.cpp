// MOVE to a national-edited item: a picture given as runs of equal positions.
//
// Insertions are stored as often as the run says. A run of data is stored unit by unit; what
// happens when the source ends before the run does is odd, and compiled programs are generated for
// it:
//
//     run X(5), source "AB", no repeat   ->  "AB" and one blank; the next run follows at once
//     run X(3), source "A", repeat       ->  "AAAAA": at each position but the last the source is taken once for
//                                         the position and once more
//     source ended before the run begins ->  the full count of blanks, or of the source over and over
#include <cstring>

#include "kvr2/edited_moves.h"

#include "base/bytes.h"

namespace {

constexpr uint16_t kBlank = 0x0020;

struct Units {
    const uint8_t *start;
    int64_t count;
    int64_t next = 0;
    bool usedUp() const { return next == count; }
    uint16_t take() { return load<uint16_t>(start + 2 * next++); }
};

uint8_t *store(uint8_t *out, uint16_t unit)
{
    memcpy(out, &unit, sizeof unit);
    return out + sizeof unit;
}

// The run begins with the source used up.
uint8_t *storeAfterSource(uint8_t *out, Units &source, int count, bool repeat)
{
    for (int position = 0; position < count; position++) {
        if (repeat && source.usedUp()) source.next = 0;
        out = store(out, source.usedUp() ? kBlank : source.take());
    }
    return out;
}

uint8_t *storeData(uint8_t *out, Units &source, int count, bool repeat)
{
    for (int position = 0; position < count; position++) {
        out = store(out, source.take());
        if (!source.usedUp() || position == count - 1) continue;
        if (!repeat) return store(out, kBlank);
        source.next = 0;
        for (int second = position; second < count && !source.usedUp(); second++) out = store(out, source.take());
        if (count <= 2) break;
        source.next = 0;
    }
    return out;
}

} // namespace

extern "C" void _zvkcMoveUnicodeEdit(const NationalEditRecord *record, const uint8_t *source, int32_t sourceLength,
                                     uint8_t *destination)
{
    Units units{source, sourceLength > 0 ? sourceLength / 2 : 0};
    int runCount = record->runBytes > 0 ? (record->runBytes - 1) / 4 + 1 : 0;
    const NationalEditRun *runs = record->runs;
    for (int i = 0; i < runCount; i++) {
        uint16_t unit = runs[i].unit;
        int count = runs[i].count;
        if (unit == '0' || unit == '/' || unit == kBlank)
            while (count-- > 0) destination = store(destination, unit);
        else if (units.usedUp())
            destination = storeAfterSource(destination, units, count, record->repeat && units.count > 0);
        else
            destination = storeData(destination, units, count, record->repeat);
    }
}
