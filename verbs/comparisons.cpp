// Comparisons of alphanumeric items: under an alphabet, with a literal repeated, with a pad byte.
//
// A repeated literal is not written out. An item that begins with the literal equals its repetition
// just where each byte equals the one a literal's length before it, so one memcmp of the item with
// itself, moved on, finds the first difference:
//
//     item     A B C A B C A X     literal ABC
//     moved on       A B C A B C A X
//                            ^ the first difference, with the sign that the literal would give
#include "base/signed_length.h"
#include "chardata/collating.h"
#include "kvr2/conditions.h"

namespace {

int sign(int difference) { return (difference > 0) - (difference < 0); }

// Below 0, 0 or above 0 for the item against the figurative value, repeated or cut.
int compareWithFigurative(const uint8_t *item, size_t length, const uint8_t *value, size_t valueLength,
                          const uint8_t *weights)
{
    if (valueLength == 0) return 0;
    for (; length > valueLength; item += valueLength, length -= valueLength)
        if (int difference = zvkCompareWeighted(item, value, valueLength, weights)) return difference;
    return zvkCompareWeighted(item, value, length, weights);
}

int compareWithWeights(const uint8_t *left, SignedLength leftSize, const uint8_t *right, SignedLength rightSize,
                       const uint8_t *weights)
{
    if (rightSize.negative) return compareWithFigurative(left, leftSize.size, right, rightSize.size, weights);
    if (leftSize.negative) return -compareWithFigurative(right, rightSize.size, left, leftSize.size, weights);
    size_t common = leftSize.size < rightSize.size ? leftSize.size : rightSize.size;
    if (int difference = zvkCompareWeighted(left, right, common, weights)) return difference;
    if (leftSize.size > common) return zvkCompareToWeight(left + common, leftSize.size - common, weights[' '], weights);
    return -zvkCompareToWeight(right + common, rightSize.size - common, weights[' '], weights);
}

constexpr struct NativeOrder {
    uint8_t weights[256];
    constexpr NativeOrder() : weights()
    {
        for (int i = 0; i < 256; i++) weights[i] = static_cast<uint8_t>(i);
    }
} kNativeOrder;

} // namespace

extern "C" {

int32_t _zvkcCmpACS(const uint8_t *left, int32_t leftLength, const uint8_t *right, int32_t rightLength,
                    const uint8_t *weights)
{
    return compareWithWeights(left, SignedLength(leftLength), right, SignedLength(rightLength),
                              weights ? weights : kNativeOrder.weights);
}

int32_t _zvkcCmpMultiByteFig(const uint8_t *left, int32_t length, const uint8_t *literal, int32_t literalLength)
{
    if (length <= 0 || literalLength <= 0) return 0;
    size_t size = static_cast<size_t>(length), period = static_cast<size_t>(literalLength);
    if (size <= period) return memcmp(left, literal, size);
    if (int difference = memcmp(left, literal, period)) return difference;
    return memcmp(left + period, left, size - period);
}

int32_t _zvkcCmpToPad(const uint8_t *left, uint8_t pad, int32_t length)
{
    if (length <= 0) return 0;
    if (*left != pad) return *left < pad ? -1 : 1;
    return sign(memcmp(left + 1, left, static_cast<size_t>(length) - 1));
}
}
