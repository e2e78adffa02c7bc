// Runs: how far a text goes on before a byte that matters.
//
// Most of a document is content, comments and values, of which only a few bytes matter: some
// mark-up and what XML does not allow. A run is looked through 16 bytes at a time. A byte is a
// candidate if it equals one of four or is not above a limit (control characters all lie at the low
// end of ASCII and of EBCDIC pages); a table says of a candidate whether it really stops the run.
// The table has the last word, so that a page with unusual places only gets slower.
//
//     const uint8_t *stop = set.next(at, end);      // of content: "<", "&", "]", illegal; or end
#pragma once

#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

struct StopSet {
    alignas(16) uint8_t equal[4][16];
    uint8_t low[16];
    bool stops[256];

    // The bytes with stops[] set; the limit up to which all are candidates.
    constexpr void finish(uint8_t limit)
    {
        int found = 0;
        uint8_t values[4] = {limit, limit, limit, limit};
        for (unsigned b = limit + 1u; b < 256; b++) {
            if (!stops[b]) continue;
            if (found < 4) values[found] = static_cast<uint8_t>(b);
            found++;
        }
        if (found > 4) limit = 0xFF;
        for (int i = 0; i < 16; i++) {
            low[i] = limit;
            for (int k = 0; k < 4; k++) equal[k][i] = values[k];
        }
    }

    const uint8_t *next(const uint8_t *at, const uint8_t *end) const
    {
        while (end - at >= 16) {
            for (unsigned candidates = candidatesAt(at); candidates; candidates &= candidates - 1) {
                const uint8_t *place = at + __builtin_ctz(candidates);
                if (stops[*place]) return place;
            }
            at += 16;
        }
        while (at < end && !stops[*at]) at++;
        return at;
    }

private:
    static __m128i lanes(const uint8_t *from) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(from)); }

    unsigned candidatesAt(const uint8_t *at) const
    {
        __m128i bytes = lanes(at);
        __m128i one = _mm_or_si128(_mm_cmpeq_epi8(bytes, lanes(equal[0])), _mm_cmpeq_epi8(bytes, lanes(equal[1])));
        __m128i two = _mm_or_si128(_mm_cmpeq_epi8(bytes, lanes(equal[2])), _mm_cmpeq_epi8(bytes, lanes(equal[3])));
        __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(bytes, lanes(low)), bytes);
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(one, two), control)));
    }
};
