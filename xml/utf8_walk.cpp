// Checking UTF-8; see utf8_walk.h. ASCII goes by 16 bytes at a time.
#include "xml/utf8_walk.h"

#include <emmintrin.h>

namespace {

const uint8_t *skipAscii(const uint8_t *at, const uint8_t *end)
{
    for (; end - at >= 32; at += 32) {
        auto *block = reinterpret_cast<const __m128i *>(at);
        __m128i both = _mm_or_si128(_mm_loadu_si128(block), _mm_loadu_si128(block + 1));
        if (_mm_movemask_epi8(both)) break;
    }
    while (at < end && *at < 0x80) at++;
    return at;
}

bool isTrail(uint8_t byte) { return (byte & 0xC0) == 0x80; }

// Bytes of a character by its first byte; 0 for what is none. The second byte has narrower bounds
// where a form would be overlong, a surrogate or above U+10FFFF.
struct Lead {
    uint8_t length, low, high;
};

Lead leadOf(uint8_t byte)
{
    if (byte >= 0xC2 && byte <= 0xDF) return {2, 0x80, 0xBF};
    if (byte >= 0xE0 && byte <= 0xEF)
        return {3, static_cast<uint8_t>(byte == 0xE0 ? 0xA0 : 0x80), static_cast<uint8_t>(byte == 0xED ? 0x9F : 0xBF)};
    if (byte >= 0xF0 && byte <= 0xF4)
        return {4, static_cast<uint8_t>(byte == 0xF0 ? 0x90 : 0x80), static_cast<uint8_t>(byte == 0xF4 ? 0x8F : 0xBF)};
    return {0, 0, 0};
}

} // namespace

Utf8Walk zvkWalkUtf8(const uint8_t *text, const uint8_t *end)
{
    Utf8Walk walk{true, end, false, nullptr};
    const uint8_t *at = text;
    while ((at = skipAscii(at, end)) < end) {
        walk.ascii = false;
        Lead lead = leadOf(*at);
        int good = lead.length ? 1 : 0;
        while (good && good < lead.length && at + good < end &&
               (good == 1 ? at[1] >= lead.low && at[1] <= lead.high : isTrail(at[good])))
            good++;
        if (good == 0 || good < lead.length) {
            walk.invalid = at;
            walk.truncated = good > 0 && at + good == end;
            break;
        }
        if (lead.length == 4 && !walk.secondPlane) walk.secondPlane = at;
        at += lead.length;
    }
    if (!walk.secondPlane) walk.secondPlane = walk.invalid;
    return walk;
}
