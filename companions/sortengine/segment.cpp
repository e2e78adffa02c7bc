// Segments; see segment.h.
#include "segment.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>

namespace {

constexpr int kRadixBits = 11;
constexpr uint32_t kBuckets = 1u << kRadixBits;
constexpr uint32_t kRadixLeast = 4 * kBuckets; // fewer entries are sorted faster by comparing

bool buildIndex(Segment *segment)
{
    const KeyPlan &plan = *segment->plan;
    const RecordLayout &layout = *segment->layout;
    auto *scratch = static_cast<uint8_t *>(malloc(plan.keyBytes + kPrefixBytes));
    if (!scratch) {
        segment->job.error = ZVK_SORT_ESTORAGE;
        return false;
    }
    for (uint32_t i = 0; i < segment->count; i++) {
        const uint8_t *record = recordAt(segment, i);
        if ((layout.variable ? loadWord(record) - kLengthWord : layout.recordLength) < plan.reach) {
            segment->job.error = ZVK_SORT_ESHORT;
            break;
        }
        KeyHead head;
        readKey(plan, dataOf(layout, record), scratch, &head);
        segment->entries[i] = {head.first, head.next, i};
        if (segment->tails) memcpy(segment->tails + uint64_t{i} * plan.tailBytes, head.tail, plan.tailBytes);
    }
    free(scratch);
    return segment->job.error == 0;
}

// Entries hold twelve bytes of the key string; `from` is where the rest of it begins in the tail.
struct Less {
    const Segment *segment;
    uint32_t from;
    uint32_t size;

    Less(const Segment *of, uint32_t tailFrom)
        : segment(of), from(tailFrom), size(of->plan->tailBytes > tailFrom ? of->plan->tailBytes - tailFrom : 0)
    {
    }
    bool operator()(const Entry &a, const Entry &b) const
    {
        if (a.first != b.first) return a.first < b.first;
        if (a.next != b.next) return a.next < b.next;
        if (size) {
            int order = memcmp(tailAt(segment, a.index) + from, tailAt(segment, b.index) + from, size);
            if (order != 0) return order < 0;
        }
        return a.index < b.index;
    }
};

// Keys that all begin alike say nothing in the entries, and every compare would go to the records.
// While such a segment is sorted its entries hold the bytes from the first one that differs on.
class Window {
public:
    explicit Window(Segment *segment) : segment_(segment)
    {
        const Entry *entries = segment->entries;
        uint64_t first = 0;
        uint32_t next = 0;
        for (uint32_t i = 1; i < segment->count; i++) {
            first |= entries[i].first ^ entries[0].first;
            next |= entries[i].next ^ entries[0].next;
        }
        if (first || segment->plan->tailBytes == 0) return;
        common_ = entries[0];
        moved_ = true;
        kept_ = next ? kNextBytes : 0;
        from_ = next ? 0 : commonTail();
        for (uint32_t i = 0; i < segment->count; i++) load(&segment->entries[i]);
    }
    Less less() const { return Less(segment_, moved_ ? from_ + kPrefixBytes - kept_ : 0); }

    // Puts the beginnings of the keys back, which the merge compares.
    void restore() const
    {
        for (uint32_t i = 0; moved_ && i < segment_->count; i++) {
            Entry &entry = segment_->entries[i];
            entry.next = kept_ ? static_cast<uint32_t>(entry.first >> 32) : common_.next;
            entry.first = common_.first;
        }
    }

private:
    static constexpr uint32_t kNextBytes = 4;

    // How many bytes all tails have in common.
    uint32_t commonTail() const
    {
        const uint8_t *tail = tailAt(segment_, 0);
        uint32_t common = segment_->plan->tailBytes;
        for (uint32_t i = 1; i < segment_->count && common; i++) {
            const uint8_t *other = tailAt(segment_, i);
            if (memcmp(tail, other, common) == 0) continue;
            common = static_cast<uint32_t>(std::mismatch(tail, tail + common, other).first - tail);
        }
        return common;
    }

    // The last bytes of the beginning, if they differ, then bytes of the tail.
    void load(Entry *entry) const
    {
        uint8_t bytes[kPrefixBytes] = {};
        uint32_t next = __builtin_bswap32(entry->next);
        memcpy(bytes, &next, kept_);
        uint32_t size = std::min(segment_->plan->tailBytes - from_, kPrefixBytes - kept_);
        memcpy(bytes + kept_, tailAt(segment_, entry->index) + from_, size);
        uint64_t first;
        memcpy(&first, bytes, sizeof first);
        memcpy(&next, bytes + sizeof first, sizeof next);
        entry->first = __builtin_bswap64(first);
        entry->next = __builtin_bswap32(next);
    }

    Segment *segment_;
    Entry common_{};
    bool moved_ = false;
    uint32_t kept_ = 0; // bytes of the beginning that differ and go along
    uint32_t from_ = 0; // of the tail
};

// Storage for sorting: in the arena between the records and the offsets, which is kept free for as
// much, so that a segment takes no more than its share of the budget.
void *indexStorage(Segment *segment, uint64_t *taken, uint64_t bytes)
{
    uint64_t start = (segment->used + *taken + 15) & ~uint64_t{15};
    uint64_t offsets = segment->layout->variable ? segment->count * sizeof(uint32_t) : 0;
    if (start + bytes + offsets > segment->capacity) return malloc(bytes); // a few bytes of alignment
    *taken = start + bytes - segment->used;
    return segment->records + start;
}

void freeIndexStorage(const Segment *segment, void *block)
{
    auto *at = static_cast<uint8_t *>(block);
    bool inArena = at && at >= segment->records && at < segment->records + segment->capacity;
    if (!inArena) free(block);
}

// Deals the entries out by the first bits in which any two differ, then sorts each bucket.
void radixSort(Segment *segment, Entry *spare, const Less &less)
{
    Entry *entries = segment->entries;
    uint32_t count = segment->count;
    uint64_t differ = 0;
    for (uint32_t i = 1; i < count; i++) differ |= entries[i].first ^ entries[0].first;
    if (differ == 0) {
        std::sort(entries, entries + count, less);
        freeIndexStorage(segment, spare);
        return;
    }
    int shift = std::max(64 - __builtin_clzll(differ) - kRadixBits, 0);
    uint32_t ends[kBuckets] = {};
    auto bucketOf = [shift](const Entry &entry) {
        return static_cast<uint32_t>(entry.first >> shift) & (kBuckets - 1);
    };
    for (uint32_t i = 0; i < count; i++) ends[bucketOf(entries[i])]++;
    uint32_t place = 0;
    for (uint32_t &end : ends) {
        uint32_t size = end;
        end = place;
        place += size;
    }
    for (uint32_t i = 0; i < count; i++) spare[ends[bucketOf(entries[i])]++] = entries[i];
    std::swap(segment->entries, spare);
    uint32_t start = 0;
    for (uint32_t end : ends) {
        if (segment->worker->cancel) break;
        if (end - start > 1) std::sort(segment->entries + start, segment->entries + end, less);
        start = end;
    }
    freeIndexStorage(segment, spare);
}

} // namespace

bool openSegment(Segment *segment, uint64_t capacity)
{
    capacity = (capacity + 4095) & ~uint64_t{4095};
    void *arena = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (arena == MAP_FAILED) return false;
    if (capacity >= 4u << 20) madvise(arena, capacity, MADV_HUGEPAGE);
    segment->records = static_cast<uint8_t *>(arena);
    segment->capacity = capacity;
    segment->job.run = sortSegment;
    return true;
}

void emptySegment(Segment *segment)
{
    freeIndexStorage(segment, segment->entries);
    freeIndexStorage(segment, segment->tails);
    segment->entries = nullptr;
    segment->tails = nullptr;
    segment->used = 0;
    segment->count = 0;
    segment->job.state = JobState::Idle;
}

void closeSegment(Segment *segment)
{
    emptySegment(segment);
    if (segment->records) munmap(segment->records, segment->capacity);
    segment->records = nullptr;
}

void sortSegment(Job *job)
{
    auto *segment = reinterpret_cast<Segment *>(job);
    const KeyPlan &plan = *segment->plan;
    uint64_t count = segment->count;
    if (count == 0 || segment->worker->cancel) return;
    uint64_t taken = 0;
    segment->entries = static_cast<Entry *>(indexStorage(segment, &taken, count * sizeof(Entry)));
    bool needsTails = !plan.plain && plan.tailBytes;
    if (needsTails) segment->tails = static_cast<uint8_t *>(indexStorage(segment, &taken, count * plan.tailBytes));
    if (!segment->entries || (needsTails && !segment->tails)) {
        job->error = ZVK_SORT_ESTORAGE;
        return;
    }
    // Without room for a second index the entries are sorted where they are.
    auto *spare =
        count >= kRadixLeast ? static_cast<Entry *>(indexStorage(segment, &taken, count * sizeof(Entry))) : nullptr;
    bool radix = spare;
    if (!buildIndex(segment)) return freeIndexStorage(segment, spare);
    const Window window(segment);
    if (radix)
        radixSort(segment, spare, window.less());
    else
        std::sort(segment->entries, segment->entries + count, window.less());
    window.restore();
}
