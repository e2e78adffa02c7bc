// Native to EBCDIC and back for items, with double-byte data.
//
// In EBCDIC a run of double-byte characters is between a shift-out (0x0E) and a shift-in
// (0x0F); a native code page needs none. The signs of the length and the capacity say what kind of
// item it is: mixed data keeps its shift codes, pure double-byte data has none of its own.
//
//     to EBCDIC,   pure:   SO K1 K2 SI        ->  K1 K2
//     to EBCDIC,   mixed:  "AB" SO K1 K2      ->  "AB" SO K1 K2 SI
//     from EBCDIC, pure:   K1 K2              ->  SO K1 K2 SI, then converted
#include <algorithm>
#include <cstring>

#include "chardata/conversion_layer.h"
#include "chardata/work_area.h"

namespace {

constexpr uint8_t kShiftOut = 0x0E, kShiftIn = 0x0F;

struct ShiftCodes {
    size_t outs = 0, ins = 0;
};

ShiftCodes countShiftCodes(const uint8_t *text, size_t length)
{
    ShiftCodes codes;
    for (size_t i = 0; i < length; i++) {
        codes.outs += text[i] == kShiftOut;
        codes.ins += text[i] == kShiftIn;
    }
    return codes;
}

bool isLoneShiftCode(const uint8_t *source, size_t length)
{
    return length == 1 && (*source == kShiftOut || *source == kShiftIn);
}

// Stores a lone shift code as it is.
int32_t storeLone(uint8_t code, uint8_t *destination, size_t room, int32_t *capacity)
{
    *capacity = room > 0;
    if (room > 0) *destination = code;
    return U_ZERO_ERROR;
}

// Copies double-byte data and brings its shift codes into pairs; needs room for twice the length
// and two. Returns the new length.
size_t pairShiftCodes(const uint8_t *source, size_t length, uint8_t *out)
{
    uint8_t *start = out;
    bool open = false;
    for (size_t i = 0; i < length; i++) {
        if (source[i] == kShiftOut) {
            if (open) *out++ = kShiftIn;
            open = true;
        } else if (source[i] == kShiftIn) {
            if (!open) *out++ = kShiftOut;
            open = false;
        }
        *out++ = source[i];
    }
    if (open) *out++ = kShiftIn;
    return static_cast<size_t>(out - start);
}

void padToRoom(uint8_t *destination, size_t stored, size_t room, bool rightJustified)
{
    if (stored >= room) return;
    size_t blanks = room - stored;
    if (rightJustified) memmove(destination + blanks, destination, stored);
    memset(rightJustified ? destination : destination + stored, ' ', blanks);
}

size_t magnitude(int32_t value) { return static_cast<size_t>(value < 0 ? -int64_t{value} : int64_t{value}); }

} // namespace

extern "C" {

int32_t _zvkConvToEBCDIC(const uint8_t *source, int32_t length, uint8_t *destination, int32_t *capacity)
{
    bool mixed = *capacity < 0, pure = length < 0;
    size_t room = magnitude(*capacity), sourceLength = magnitude(length);
    if (isLoneShiftCode(source, sourceLength)) return storeLone(*source, destination, room, capacity);

    size_t areaSize = room * 5 / 3 + 1;
    WorkArea<256> area(areaSize + 1); // one more for the closing shift-in
    if (!area.data()) {
        *capacity = 0;
        return U_MEMORY_ALLOCATION_ERROR;
    }
    uint32_t left = static_cast<uint32_t>(areaSize);
    int32_t status = _zvkUniAtoE(source, static_cast<uint32_t>(sourceLength), area.data(), &left);
    if (status != U_ZERO_ERROR) {
        *capacity = 0;
        return status;
    }
    uint8_t *text = area.data();
    size_t stored = areaSize - left;
    if (pure && stored > 0 && *text == kShiftOut) {
        text++;
        stored--;
        if (stored > 0 && text[stored - 1] == kShiftIn) stored--;
    }
    if (mixed) {
        ShiftCodes codes = countShiftCodes(text, stored);
        if (codes.outs == codes.ins + 1) text[stored++] = kShiftIn;
    }
    stored = std::min(stored, room);
    memcpy(destination, text, stored);
    *capacity = static_cast<int32_t>(std::min<size_t>(stored, INT32_MAX));
    return U_ZERO_ERROR;
}

int32_t _zvkConvToASCII(const uint8_t *source, int32_t length, uint8_t *destination, int32_t *capacity)
{
    bool rightJustified = *capacity < 0, needsShiftCodes = length < 0;
    size_t room = magnitude(*capacity), sourceLength = magnitude(length);

    WorkArea<256> area(needsShiftCodes ? 2 * sourceLength + 2 : 0);
    if (!area.data()) {
        *capacity = 0;
        return U_MEMORY_ALLOCATION_ERROR;
    }
    if (needsShiftCodes) {
        ShiftCodes codes = countShiftCodes(source, sourceLength);
        uint8_t *text = area.data();
        if (codes.outs == 0 && codes.ins == 0) {
            text[0] = kShiftOut;
            memcpy(text + 1, source, sourceLength);
            text[sourceLength + 1] = kShiftIn;
            sourceLength += 2;
            source = text;
        } else if (codes.outs != codes.ins) {
            sourceLength = pairShiftCodes(source, sourceLength, text);
            source = text;
        }
    }
    if (isLoneShiftCode(source, sourceLength)) return storeLone(*source, destination, room, capacity);

    uint32_t left = static_cast<uint32_t>(room);
    int32_t status = _zvkUniEtoA(source, static_cast<uint32_t>(sourceLength), destination, &left);
    if (status != U_ZERO_ERROR) {
        *capacity = 0;
        return status;
    }
    size_t stored = room - left;
    *capacity = static_cast<int32_t>(std::min<size_t>(stored, INT32_MAX));
    padToRoom(destination, stored, room, rightJustified);
    return U_ZERO_ERROR;
}
}
