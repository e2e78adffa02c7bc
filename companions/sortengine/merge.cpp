// The tournament tree and sorted segments as its sources; see merge.h.
#include "merge.h"

// Does source a go out before source b?
static inline bool before(const MergeTree &tree, uint32_t a, uint32_t b)
{
    const Source &left = tree.sources[a], &right = tree.sources[b];
    if (left.done || right.done) return left.done == right.done ? a < b : right.done;
    int order = compareHeads(*tree.plan, left.head, right.head);
    return order != 0 ? order < 0 : a < b;
}

// Plays the matches under `node` and leaves the losers there. Leaves are count .. 2 * count - 1.
static uint32_t play(MergeTree *tree, uint32_t node)
{
    if (node >= tree->count) return node - tree->count;
    uint32_t left = play(tree, 2 * node), right = play(tree, 2 * node + 1);
    bool leftWins = before(*tree, left, right);
    tree->losers[node] = leftWins ? right : left;
    return leftWins ? left : right;
}

void plantTree(MergeTree *tree, const KeyPlan *plan, Source *sources, uint32_t count, uint32_t *losers)
{
    *tree = {plan, sources, count, losers};
    losers[0] = play(tree, 1);
}

void replay(MergeTree *tree)
{
    uint32_t best = tree->losers[0];
    for (uint32_t node = (best + tree->count) / 2; node > 0; node /= 2) {
        uint32_t rival = tree->losers[node];
        if (before(*tree, rival, best)) {
            tree->losers[node] = best;
            best = rival;
        }
    }
    tree->losers[0] = best;
}

bool advanceSegment(Sort *, Source *source)
{
    constexpr uint32_t kAhead = 8; // the records lie anywhere: ask for them early
    const Segment *segment = source->segment;
    uint32_t position = source->position;
    if (position == segment->count) {
        source->done = true;
        return true;
    }
    if (position + kAhead < segment->count) {
        const uint8_t *ahead = recordAt(segment, segment->entries[position + kAhead].index);
        __builtin_prefetch(ahead);
        __builtin_prefetch(ahead + 64);
    }
    const Entry &entry = segment->entries[position];
    const RecordLayout &layout = *segment->layout;
    source->record = recordAt(segment, entry.index);
    source->bytes = layout.variable ? loadWord(source->record) : layout.recordLength;
    source->head.first = entry.first;
    source->head.next = entry.next;
    if (segment->plan->tailBytes) source->head.tail = tailAt(segment, entry.index);
    source->position = position + 1;
    return true;
}

void openSegmentSource(Source *source, const Segment *segment)
{
    *source = {};
    source->segment = segment;
    source->advance = advanceSegment;
    advanceSegment(nullptr, source);
}
