// Comparing bytes through the weights of an alphabet.
//
// Bytes that are equal weigh the same, so equal words are passed over whole; only where a word
// differs are its bytes looked up.
#pragma once

#include <cstddef>
#include <cstring>

#include "base/bytes.h"
#include "kvr2/alphabet.h"

// The weights of an alphabet, or null for the native order.
inline const uint8_t *zvkWeights(const AlphabetRecord *alphabet)
{
    return alphabet ? alphabet->collatingWeights : nullptr;
}

// Below 0, 0 or above 0; both operands have `length` bytes.
inline int zvkCompareWeighted(const uint8_t *left, const uint8_t *right, size_t length, const uint8_t *weights)
{
    size_t i = 0;
    for (; i + 8 <= length; i += 8) {
        if (load<uint64_t>(left + i) == load<uint64_t>(right + i)) continue;
        for (size_t j = i; j < i + 8; j++)
            if (int difference = weights[left[j]] - weights[right[j]]) return difference;
    }
    for (; i < length; i++)
        if (int difference = weights[left[i]] - weights[right[i]]) return difference;
    return 0;
}

// The same against one weight, repeated.
inline int zvkCompareToWeight(const uint8_t *left, size_t length, uint8_t weight, const uint8_t *weights)
{
    for (size_t i = 0; i < length; i++)
        if (int difference = weights[left[i]] - weight) return difference;
    return 0;
}

// Equality of short texts, with or without weights.
inline bool zvkSameText(const uint8_t *left, const uint8_t *right, size_t length, const uint8_t *weights)
{
    return weights ? zvkCompareWeighted(left, right, length, weights) == 0 : memcmp(left, right, length) == 0;
}
