// STRING.
//
// Sources are sent one after the other, each whole or up to its delimiter, as far as the target has
// room. A statement that runs out of room goes on to its end, so that POINTER and overflow come out
// right, but sends nothing more.
//
// The groups of a block have different sizes and follow each other directly:
//
//     delimiter "," | 2 sources | delimiter null | 1 source
#include <cstring>

#include "base/text_units.h"
#include "chardata/collating.h"
#include "kvr2/string_unstring.h"

namespace {

const uint8_t *bytes(const void *data) { return static_cast<const uint8_t *>(data); }

// The first place where bytes stand that weigh what the delimiter's do, or null.
const uint8_t *findWeighted(const uint8_t *from, const uint8_t *end, const uint8_t *what, size_t length,
                            const uint8_t *weights)
{
    uint8_t first = weights[*what];
    for (const uint8_t *last = end - length; from <= last; from++)
        if (weights[*from] == first && zvkCompareWeighted(from, what, length, weights) == 0) return from;
    return nullptr;
}

// The bytes of a source to send.
template <class Unit>
size_t sentLength(const StringSource &source, const StringGroup &group, const uint8_t *weights)
{
    if (!group.delimiter || group.delimiterLength == 0 || group.delimiterLength > source.length) return source.length;
    const uint8_t *text = bytes(source.data), *end = text + source.length, *delimiter = bytes(group.delimiter);
    const uint8_t *found = weights ? findWeighted(text, end, delimiter, group.delimiterLength, weights)
                                   : findText<Unit>(text, end, delimiter, group.delimiterLength);
    return found ? static_cast<size_t>(found - text) : source.length;
}

// Where the next byte goes.
struct Target {
    uint8_t *start;
    uint64_t offset, room;
    bool overflow = false;

    void send(const void *source, uint64_t length)
    {
        if (length > room) {
            overflow = true;
            length = room;
        }
        if (length == 0) return;
        memmove(start + offset, source, length);
        offset += length;
        room -= length;
    }
};

const StringGroup *sendGroup(const StringGroup *group, Target &target, const uint8_t *weights, bool pairs)
{
    const StringSource *source = group->sources, *end = source + group->sourceCount;
    for (; source < end; source++)
        target.send(source->data, pairs ? sentLength<DoubleByte>(*source, *group, nullptr)
                                        : sentLength<SingleByte>(*source, *group, weights));
    return reinterpret_cast<const StringGroup *>(end);
}

} // namespace

extern "C" void _zvkcString(StringBlock *block, const AlphabetRecord *alphabet, uint32_t *overflow)
{
    bool pairs = (block->flags & (ZVK_STRING_NATIONAL | ZVK_STRING_DBCS)) != 0;
    const uint8_t *weights = block->flags & ZVK_STRING_COLLATED && !pairs ? zvkWeights(alphabet) : nullptr;

    // A POINTER outside the target leaves no room.
    uint64_t size = pairs ? 2 : 1, skipped = block->flags & ZVK_STRING_POINTER ? block->pointer - 1 : 0;
    bool inside = skipped <= block->targetLength / size;
    uint64_t offset = inside ? skipped * size : 0;
    Target target{static_cast<uint8_t *>(block->target), offset, inside ? block->targetLength - offset : 0};

    const StringGroup *group = block->groups;
    for (uint32_t i = 0; i < block->groupCount; i++) group = sendGroup(group, target, weights, pairs);

    if (target.overflow && overflow && *overflow) ++*overflow;
    if (inside) block->pointer = pairs ? (target.offset + 2) / 2 : target.offset + 1;
}
