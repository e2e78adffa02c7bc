// FUNCTION MEDIAN, VARIANCE and STANDARD-DEVIATION.
//
// MEDIAN is a quickselect in place: the array is split around its middle element, smaller ones to
// the left, and the part that holds the middle place is split again. The split does not branch on the
// values. Of values that are equal one split would take away only one, so after a lopsided split
// those equal to the pivot are gathered, too.
#include "intrinsics/statistics.h"
#include "base/quiet_floats.h"
#include "intrinsics/float_functions.h"
#include "intrinsics/stored.h"
#include "kvr2/statistics.h"

namespace {

using namespace floats;

// Puts the elements of (place, high] for which `first` holds right after `place`, in any order.
// Returns the place of the last of them.
template <class Value, class First>
uint32_t gather(Stored<Value> *array, uint32_t place, uint32_t high, First first)
{
    for (uint32_t i = place; i++ != high;) {
        Value value = array[i], other = array[place + 1];
        bool moves = first(value);
        array[i] = moves ? other : value;
        array[place + 1] = moves ? value : other;
        place += moves;
    }
    return place;
}

template <class Value>
void exchange(Stored<Value> &a, Stored<Value> &b)
{
    Value value = a;
    a = static_cast<Value>(b);
    b = value;
}

template <class F>
typename F::Value median(uint32_t count, Stored<typename F::Value> *array)
{
    using Value = typename F::Value;
    if (count == 0) return 0;
    const uint32_t k = (count - 1) / 2;
    uint32_t low = 0, high = count - 1, lopsided = 0;
    for (;;) {
        // Arrays that lead the middle astray again and again get pivots from elsewhere.
        uint32_t pivotAt = low + (high - low) / 2;
        if (lopsided > 8) pivotAt = low + static_cast<uint32_t>(uint64_t{high - low} * (lopsided * 2654435761U) >> 32);
        exchange(array[low], array[pivotAt]);
        const Value pivot = array[low];
        uint32_t p = gather(array, low, high, [pivot](Value value) { return pivot > value; });
        exchange(array[low], array[p]);
        if (p == k) break;
        if (p > k) {
            lopsided += high - p < (high - low) / 16;
            high = p - 1;
            continue;
        }
        if (p - low < (high - low) / 16) {
            lopsided++;
            p = gather(array, p, high, [pivot](Value value) { return !(value > pivot); });
            if (p >= k) break;
        }
        low = p + 1;
    }
    const Value middle = array[k];
    if (count % 2) return middle;
    // All up to `high` are not below the middle one; the first after them is not above those that follow.
    Value upper = array[k + 1];
    for (uint32_t i = k + 2; i <= high && i > k; i++) {
        Value value = array[i];
        if (!(value < upper)) continue;
        array[i] = upper;
        upper = value;
    }
    array[k + 1] = upper;
    if constexpr (F::isDecimal)
        return (upper + middle) / 2;
    else
        return static_cast<Value>(0.5) * (upper + middle);
}

template <class F>
typename F::Value variance(uint32_t count, const Stored<typename F::Value> *array, typename F::Value mean)
{
    using Value = typename F::Value;
    if (count == 0) return 0;
    Value sum = 0;
    for (uint32_t i = 0; i < count; i++) {
        Value distance = array[i] - mean;
        sum += distance * distance;
    }
    return sum / static_cast<Value>(count);
}

template <class F>
typename F::Value quietMedian(uint32_t count, void *array)
{
    return quietly([&] { return median<F>(count, storedAt<typename F::Value>(array)); });
}

template <class F>
typename F::Value quietVariance(uint32_t count, const void *array, typename F::Value mean)
{
    return quietly([&] { return variance<F>(count, storedAt<typename F::Value>(array), mean); });
}

template <class F>
typename F::Value quietDeviation(uint32_t count, const void *array, typename F::Value mean)
{
    return quietly([&] { return Functions<F>::sqrt(variance<F>(count, storedAt<typename F::Value>(array), mean)); });
}

} // namespace

void _zvkcMedian(uint32_t count, ZvkFloat64Item *result, ZvkFloat64Item *array)
{
    *result = quietMedian<Binary64>(count, array);
}

double _zvkcMedianFloat8(uint32_t count, ZvkFloat64Item *array) { return quietMedian<Binary64>(count, array); }

ZvkFloat128 _zvkcMedian16(uint32_t count, ZvkFloat128Item *result, ZvkFloat128Item *array)
{
    ZvkFloat128 value = quietMedian<Binary128>(count, array);
    *result = value;
    return value;
}

ZvkFloat128 _zvkcMedianFloat16(uint32_t count, ZvkFloat128Item *result, ZvkFloat128Item *array)
{
    return _zvkcMedian16(count, result, array);
}

ZvkDecimal128 zvkMedianDecimal128(uint32_t count, ZvkDecimal128Item *array)
{
    return quietMedian<Decimal128>(count, array);
}

void _zvkcVariance(uint32_t count, ZvkFloat64Item *result, const ZvkFloat64Item *array, double mean)
{
    *result = quietVariance<Binary64>(count, array, mean);
}

void _zvkcVariance16(uint32_t count, ZvkFloat128Item *result, const ZvkFloat128Item *array, ZvkFloat128 mean)
{
    *result = quietVariance<Binary128>(count, array, mean);
}

void _zvkcStandardDeviation(uint32_t count, ZvkFloat64Item *result, const ZvkFloat64Item *array, double mean)
{
    *result = quietDeviation<Binary64>(count, array, mean);
}

void _zvkcStandardDeviation16(uint32_t count, ZvkFloat128Item *result, const ZvkFloat128Item *array, ZvkFloat128 mean)
{
    *result = quietDeviation<Binary128>(count, array, mean);
}
