// What a transaction has changed in a relative file, before it is committed: whole slots by their
// record numbers, in order. Readers of the same run unit look here first.
#pragma once

#include <cstdlib>
#include <cstring>

namespace filesystems {

struct SlotChanges {
    struct Slot {
        uint64_t record;
        uint8_t *bytes;
    };
    Slot *slots;
    size_t count, room;
    uint64_t slotSize;

    // The first change at or after a record; `count` for none.
    size_t from(uint64_t record) const
    {
        size_t low = 0, high = count;
        while (low < high) {
            size_t middle = (low + high) / 2;
            if (slots[middle].record < record)
                low = middle + 1;
            else
                high = middle;
        }
        return low;
    }
    const uint8_t *find(uint64_t record) const
    {
        size_t at = from(record);
        return at < count && slots[at].record == record ? slots[at].bytes : nullptr;
    }
    // The next changed record at or after one, and the last one at or before it; 0 for none.
    uint64_t next(uint64_t record) const
    {
        size_t at = from(record);
        return at < count ? slots[at].record : 0;
    }
    uint64_t before(uint64_t record) const
    {
        size_t at = from(record + 1);
        return at ? slots[at - 1].record : 0;
    }

    // Bytes that a slot lacks are zeros. False without storage.
    bool put(uint64_t record, const uint8_t *bytes, size_t size)
    {
        size_t at = from(record);
        if (at == count || slots[at].record != record) {
            if (count == room) {
                size_t wanted = room ? 2 * room : 64;
                auto *grown = static_cast<Slot *>(realloc(slots, wanted * sizeof *slots));
                if (!grown) return false;
                slots = grown;
                room = wanted;
            }
            auto *made = static_cast<uint8_t *>(malloc(slotSize));
            if (!made) return false;
            memmove(slots + at + 1, slots + at, (count - at) * sizeof *slots);
            slots[at] = {record, made};
            ++count;
        }
        memcpy(slots[at].bytes, bytes, size);
        memset(slots[at].bytes + size, 0, slotSize - size);
        return true;
    }
    void clear()
    {
        for (size_t i = 0; i < count; ++i) free(slots[i].bytes);
        free(slots);
        slots = nullptr;
        count = room = 0;
    }
};

} // namespace filesystems
