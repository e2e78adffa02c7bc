// Independent segments: ALTERed GO TO targets go back to their initial state when control comes to
// such a segment from another one.
#include "kvr2/edited_moves.h"

namespace {

constexpr int8_t kFirstIndependent = 50;

void resetTargets(uint8_t segment, int32_t count, void **targets, void *const *initialTargets,
                  const uint8_t *entrySegments)
{
    for (int32_t i = 0; i < count; i++)
        if (entrySegments[i] == segment) targets[i] = initialTargets[i];
}

} // namespace

extern "C" {

void _zvkcRfshUncond(int32_t segment, int32_t count, void **targets, void *const *initialTargets,
                     const uint8_t *entrySegments)
{
    resetTargets(static_cast<uint8_t>(segment), count, targets, initialTargets, entrySegments);
}

void _zvkcRfshCond(int32_t currentSegment, int32_t count, int32_t newSegment, void **targets,
                   void *const *initialTargets, const uint8_t *entrySegments)
{
    uint8_t segment = static_cast<uint8_t>(newSegment);
    // A segment number is a signed byte: 128 and above are below 50.
    if (segment == static_cast<uint8_t>(currentSegment) || static_cast<int8_t>(segment) < kFirstIndependent) return;
    resetTargets(segment, count, targets, initialTargets, entrySegments);
}

void _zvkcRfshGoDepend(int32_t index, int32_t currentSegment, int32_t count, const uint8_t *segments, void **targets,
                       void *const *initialTargets, const uint8_t *entrySegments)
{
    if (index < 1) return;
    _zvkcRfshCond(currentSegment, count, segments[index - 1], targets, initialTargets, entrySegments);
}
}
