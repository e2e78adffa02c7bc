// Translating bytes through a table of 256 bytes, as fast as the machine goes; see
// byte_translate.h.
//
// One load a byte is the floor of the plain loop, and byte stores cost as much again, so it gathers
// eight results into one word. With AVX2 the table lies in sixteen vectors of sixteen bytes. A
// byte's low half is the place in a vector: sixteen shuffles look it up in all of them at once, for
// 32 bytes at a time, and its high half, bit by bit, chooses among the sixteen answers in a tree of
// blends:
//
//     bit 4: answers 0/1, 2/3 ... 14/15  ->  8        bit 6: 4 -> 2
//     bit 5: 8 -> 4                                   bit 7: 2 -> 1
#include "chardata/byte_translate.h"

#include <cstring>
#include <immintrin.h>

namespace {

void translateByWords(const uint8_t *source, uint8_t *destination, size_t length, const uint8_t *table)
{
    size_t i = 0;
    for (; i + 8 <= length; i += 8) {
        uint64_t in, out = 0;
        memcpy(&in, source + i, 8);
        for (int shift = 0; shift < 64; shift += 8) out |= uint64_t{table[(in >> shift) & 0xFF]} << shift;
        memcpy(destination + i, &out, 8);
    }
    for (; i < length; i++) destination[i] = table[source[i]];
}

__attribute__((target("avx2"))) __m256i part(const uint8_t *table, int index)
{
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(table + 16 * index)));
}

// The answer for bytes whose high half lies in [first, first + width), a power of two.
template <int first, int width>
__attribute__((target("avx2"), always_inline)) inline __m256i lookUp(const uint8_t *table, __m256i low, __m256i bytes)
{
    if constexpr (width == 1) {
        return _mm256_shuffle_epi8(part(table, first), low);
    } else {
        // A blend looks at bit 7 of each byte of its mask: the bit that decides is shifted there;
        // what else the shift moves does not matter.
        constexpr int shift = width == 2 ? 3 : width == 4 ? 2 : width == 8 ? 1 : 0;
        __m256i without = lookUp<first, width / 2>(table, low, bytes);
        __m256i with = lookUp<first + width / 2, width / 2>(table, low, bytes);
        return _mm256_blendv_epi8(without, with, _mm256_slli_epi16(bytes, shift));
    }
}

__attribute__((target("avx2"))) void translateByShuffles(const uint8_t *source, uint8_t *destination, size_t length,
                                                         const uint8_t *table)
{
    size_t i = 0;
    for (; i + 32 <= length; i += 32) {
        __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(source + i));
        __m256i low = _mm256_and_si256(bytes, _mm256_set1_epi8(0x0F));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(destination + i), lookUp<0, 16>(table, low, bytes));
    }
    translateByWords(source + i, destination + i, length - i, table);
}

} // namespace

void zvkTranslateBytes(const uint8_t *source, uint8_t *destination, size_t length, const uint8_t (&table)[256])
{
    if (length >= 64 && __builtin_cpu_supports("avx2"))
        translateByShuffles(source, destination, length, table);
    else
        translateByWords(source, destination, length, table);
}
