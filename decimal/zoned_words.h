// Zoned digits as words: up to sixteen bytes to a digit a nibble, and back.
//
// The two ends of an item are loaded into one vector register, overlapping in the middle, so no
// byte beyond the item is touched. There all bytes are tested for "0" to "9" at once, and pairs of
// them are folded into packed bytes:
//
//     "1" "2" "3" "4"  ->  01 02 03 04  ->  12 34
//
// Every x86-64 has the instructions.
#pragma once

#include <emmintrin.h>

#include "decimal/words.h"

namespace bcd {

// Gathers digits and keeps what is found wrong on the way, so that one test at the end is enough
// for all items of a call.
class Gatherer {
public:
    // 1 to 16 bytes, a digit each.
    [[gnu::always_inline]] uint64_t digits(const uint8_t *item, int32_t n) { return gather<0xFF>(item, n); }

    // The same with 0 in place of the last digit, whose byte is not looked at: it carries the sign.
    [[gnu::always_inline]] uint64_t digitsBeforeLast(const uint8_t *item, int32_t n) { return gather<0>(item, n); }

    // Whether all bytes were "0" to "9".
    [[gnu::always_inline]] bool clean() const
    {
        return _mm_movemask_epi8(_mm_cmpeq_epi8(excess_, _mm_setzero_si128())) == 0xFFFF;
    }

private:
    template <uint8_t keepLast>
    [[gnu::always_inline]] uint64_t gather(const uint8_t *item, int32_t n)
    {
        constexpr auto lastOf8 = static_cast<int64_t>(uint64_t{keepLast} << 56 | ~uint64_t{0} >> 8);
        if (n > 8) {
            __m128i ends = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(item));
            ends =
                _mm_castps_si128(_mm_loadh_pi(_mm_castsi128_ps(ends), reinterpret_cast<const __m64 *>(item + n - 8)));
            uint64_t pairs = fold(ends, _mm_set_epi64x(lastOf8, -1));
            return (pairs & 0xFFFFFFFFu) | pairs >> 32 >> (4 * (16 - n)) << 32;
        }
        if (n > 3) {
            __m128i ends = _mm_unpacklo_epi32(_mm_cvtsi32_si128(load<int32_t>(item)),
                                              _mm_cvtsi32_si128(load<int32_t>(item + n - 4)));
            uint64_t pairs = fold(ends, _mm_set_epi64x(0, lastOf8)) >> 32;
            return (pairs & 0xFFFFu) | pairs >> 16 >> (4 * (8 - n)) << 16;
        }
        uint32_t few = keepLast ? item[n - 1] ^ 0x30u : 0;
        if (n > 1) few |= (item[n - 2] ^ 0x30u) << 8;
        if (n > 2) few |= (item[0] ^ 0x30u) << 16;
        note(_mm_cvtsi32_si128(static_cast<int>(few)));
        return (few & 0x0F) | (few >> 4 & 0xF0) | (few >> 8 & 0xF00);
    }

    void note(__m128i values) { excess_ = _mm_or_si128(excess_, _mm_subs_epu8(values, _mm_set1_epi8(9))); }

    // The kept bytes as eight packed bytes, the first the most significant.
    [[gnu::always_inline]] uint64_t fold(__m128i bytes, __m128i kept)
    {
        const __m128i values = _mm_and_si128(_mm_xor_si128(bytes, _mm_set1_epi8(0x30)), kept);
        note(values);
        const __m128i pairs = _mm_or_si128(_mm_slli_epi16(values, 4), _mm_srli_epi16(values, 8));
        const __m128i packed = _mm_packus_epi16(_mm_and_si128(pairs, _mm_set1_epi16(0x00FF)), _mm_setzero_si128());
        return reversed(static_cast<uint64_t>(_mm_cvtsi128_si64(packed)));
    }

    __m128i excess_ = _mm_setzero_si128();
};

// Writes the low n digits of 1 to 16.
[[gnu::always_inline]] inline void spreadDigits(uint8_t *item, int32_t n, uint64_t digits)
{
    const __m128i packed = _mm_cvtsi64_si128(static_cast<int64_t>(reversed(digits)));
    const __m128i low = _mm_set1_epi8(0x0F);
    const __m128i pairs = _mm_unpacklo_epi8(_mm_and_si128(_mm_srli_epi16(packed, 4), low), _mm_and_si128(packed, low));
    const __m128i bytes = _mm_or_si128(pairs, _mm_set1_epi8(0x30));
    const auto back = static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(bytes, bytes)));
    if (n >= 8) {
        // What the first store writes too far to the right is overwritten.
        const auto front = static_cast<uint64_t>(_mm_cvtsi128_si64(bytes));
        if (n > 8) store<uint64_t>(item, front >> (8 * (16 - n)));
        store<uint64_t>(item + n - 8, back);
    } else if (n > 3) {
        store<uint32_t>(item, static_cast<uint32_t>(back >> (8 * (8 - n))));
        store<uint32_t>(item + n - 4, static_cast<uint32_t>(back >> 32));
    } else {
        item[n - 1] = static_cast<uint8_t>(back >> 56);
        if (n > 1) item[n - 2] = static_cast<uint8_t>(back >> 48);
        if (n > 2) item[0] = static_cast<uint8_t>(back >> 40);
    }
}

// The same for as many digits as the word has, of which the last is not looked at.
template <class Word>
[[gnu::always_inline]] inline Word gatherBeforeLast(Gatherer &gatherer, const uint8_t *item, int32_t n)
{
    if constexpr (sizeof(Word) == 8) {
        return gatherer.digitsBeforeLast(item, n);
    } else {
        if (n <= 16) return gatherer.digitsBeforeLast(item, n);
        return fromWords(gatherer.digits(item, n - 16), gatherer.digitsBeforeLast(item + n - 16, 16));
    }
}

template <class Word>
[[gnu::always_inline]] inline Word gatherAll(Gatherer &gatherer, const uint8_t *item, int32_t n)
{
    if constexpr (sizeof(Word) == 8) {
        return gatherer.digits(item, n);
    } else {
        if (n <= 16) return gatherer.digits(item, n);
        return fromWords(gatherer.digits(item, n - 16), gatherer.digits(item + n - 16, 16));
    }
}

// Any number of digits; those beyond the word's are zeros.
template <class Word>
[[gnu::always_inline]] inline void spreadItem(uint8_t *item, int32_t n, Word digits)
{
    constexpr int32_t most = 2 * sizeof(Word);
    if (__builtin_expect(n > most, 0)) {
        memset(item, '0', static_cast<size_t>(n - most));
        item += n - most;
        n = most;
    }
    if constexpr (sizeof(Word) > 8) {
        if (n > 16) {
            spreadDigits(item, n - 16, highWord(digits));
            item += n - 16;
            n = 16;
        }
    }
    spreadDigits(item, n, lowWord(digits));
}

} // namespace bcd
