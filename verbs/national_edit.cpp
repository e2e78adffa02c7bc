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
#include "base/text_units.h"
#include "kvr2/edited_moves.h"

namespace {

constexpr uint16_t kBlank = 0x0020;

using Units = TextCursor<Utf16>;

// The run begins with the source used up.
uint8_t *storeAfterSource(uint8_t *out, Units &source, int count, bool repeat)
{
    for (int position = 0; position < count; position++) {
        if (repeat && source.ended()) source.rewind();
        out = putUnit<Utf16>(out, source.ended() ? kBlank : source.take());
    }
    return out;
}

uint8_t *storeData(uint8_t *out, Units &source, int count, bool repeat)
{
    for (int position = 0; position < count; position++) {
        out = putUnit<Utf16>(out, source.take());
        if (!source.ended() || position == count - 1) continue;
        if (!repeat) return putUnit<Utf16>(out, kBlank);
        source.rewind();
        for (int second = position; second < count && !source.ended(); second++)
            out = putUnit<Utf16>(out, source.take());
        if (count <= 2) break;
        source.rewind();
    }
    return out;
}

} // namespace

extern "C" void _zvkcMoveUnicodeEdit(const NationalEditRecord *record, const uint8_t *source, int32_t sourceLength,
                                     uint8_t *destination)
{
    Units units(source, sourceLength > 0 ? static_cast<size_t>(sourceLength) : 0);
    int runCount = record->runBytes > 0 ? (record->runBytes - 1) / 4 + 1 : 0;
    const NationalEditRun *runs = record->runs;
    for (int i = 0; i < runCount; i++) {
        uint16_t unit = runs[i].unit;
        int count = runs[i].count;
        if (unit == '0' || unit == '/' || unit == kBlank)
            while (count-- > 0) destination = putUnit<Utf16>(destination, unit);
        else if (units.ended())
            destination = storeAfterSource(destination, units, count, record->repeat && !units.empty());
        else
            destination = storeData(destination, units, count, record->repeat);
    }
}
