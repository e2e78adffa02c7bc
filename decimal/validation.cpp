// Validation of packed and zoned items.
//
// Both scans go from the right to the left in the widest words that fit. The packed one is the
// add-six test: adding six to a nibble carries into the next one exactly when the nibble is above
// 9, and the carry shows in the next nibble's bit 0:
//
//       w  0x000000 12      w  0x000000 1A
//     + 6  0x666666 66    + 6  0x666666 66
//       =  0x666666 78      =  0x666666 80      bit 4 of 0x1A and of 0x80 differ: the low digit is bad
//
// The top nibble of a word has no next one, so a bad digit there passes: of each word of 2, 4 or 8
// bytes, the high nibble of the rightmost byte. That gap is known and stays, as programs with such
// data run.
#include "decimal/validation.h"

#include "decimal/mode.h"
#include "decimal/packed.h"
#include "decimal/words.h"
#include "decimal/zoned.h"
#include "frame/message_calls.h"
#include "frame/signals/call_site.h"

namespace {

constexpr uint32_t kMsgZeroDivisor = 902, kMsgBadData = 903;
constexpr uint32_t kPlaced = 1; // the variant with the program and line

using bcd::all;

template <class T>
bool packedWordIsBad(T word)
{
    constexpr T firstBits = all<T>(0x11) & ~T{1};
    return ((static_cast<T>(word + all<T>(0x66)) ^ word) & firstBits) != 0;
}

// The one-byte test has nine bits to look at and no gap.
bool packedByteIsBad(uint8_t byte) { return (((byte + 0x66u) ^ byte) & 0x110u) != 0; }

template <class T>
bool scanPacked(const uint8_t *start, const uint8_t *&end)
{
    while (end - start >= static_cast<ptrdiff_t>(sizeof(T))) {
        end -= sizeof(T);
        if (packedWordIsBad(load<T>(end))) return false;
    }
    return true;
}

// Adding 0xC6 to "0" to "9" gives 0xF6 to 0xFF; any other byte of zone 3 carries out.
template <class T>
bool zonedWordIsGood(T word)
{
    constexpr T zones = all<T>(0xF0);
    return (word & zones) == all<T>(0x30) && (static_cast<T>(word + all<T>(0xC6)) & zones) == zones;
}

} // namespace

int zvkBcdCheckPacked(const uint8_t *address, int32_t digits, int checkMode)
{
    const uint8_t *start = address;
    const uint8_t *end = address + bcd::packedBytes(digits) - 1; // where the last byte stands
    if (checkMode == kCheckArithmetic) {
        if (bcd::mode() & ZVK_BCD_NO_VALIDATION) return 0;
        start = bcd::skipZeroBytes(start, end);
    }
    uint8_t last = *end;
    // A lone byte with sign nibble 0 is good, whatever its digit.
    if (start == end && (last & 0x0F) == 0) return 0;
    if ((last & 0x0F) < 10 || last > 0x9F) return 1;
    if (!scanPacked<uint64_t>(start, end) || !scanPacked<uint32_t>(start, end) || !scanPacked<uint16_t>(start, end))
        return 1;
    return end > start && packedByteIsBad(*start) ? 1 : 0;
}

int zvkBcdCheckZoned(const uint8_t *address, int32_t digits, int checkMode)
{
    if (digits < 1) return 0;
    const uint8_t *start = address;
    const uint8_t *end = address + digits - 1;
    if (checkMode == kCheckArithmetic) {
        if (bcd::mode() & ZVK_BCD_NO_VALIDATION) return 0;
        start = bcd::skipZeroDigits(start, end);
    }
    if (!bcd::kOverpunch[*end].valid) return 1;
    if (start == end) return 0;

    // Between the first byte and the last. The width follows the address of the current end; a NUL
    // is good where the scan goes by single bytes and bad inside a wider word, so the answer for
    // such an item depends on its alignment. That is known and stays.
    while (end - start > 1) {
        auto alignment = reinterpret_cast<uintptr_t>(end);
        ptrdiff_t inner = end - start - 1;
        if (alignment % 8 == 0 && inner >= 8) {
            end -= 8;
            if (!zonedWordIsGood(load<uint64_t>(end))) return 1;
        } else if (alignment % 4 == 0 && inner >= 4) {
            end -= 4;
            if (!zonedWordIsGood(load<uint32_t>(end))) return 1;
        } else if (alignment % 2 == 0 && inner >= 2) {
            end -= 2;
            if (!zonedWordIsGood(load<uint16_t>(end))) return 1;
        } else {
            end -= 1;
            if (!zonedWordIsGood(*end) && *end != 0x00) return 1;
        }
    }
    // The first byte may be whatever the last may: a leading overpunch passes the same test.
    return bcd::kOverpunch[*start].valid ? 0 : 1;
}

// Where the program called, for the variant that says so; false where that is not known, or the
// catalog has no such text.
static bool findPlace(uint32_t number, char (&place)[512])
{
    return zvkHasMessage(number, kPlaced) && zvkDescribeCallSite(place, sizeof place);
}

void bcd::reportBadData()
{
    char place[512];
    if (findPlace(kMsgBadData, place))
        msg::badDecimalDataAt(place);
    else
        msg::badDecimalData();
}

void bcd::reportZeroDivisor()
{
    char place[512];
    if (findPlace(kMsgZeroDivisor, place))
        msg::zeroDivisorAt(place);
    else
        msg::zeroDivisor();
}

void bcd::reportBadSource(int answer)
{
    // Reserved: no validator gives an answer above 1 now.
    if (answer > 1)
        msg::badSourceData();
    else
        reportBadData();
}

void bcd::reportBadSeparateSign() { msg::badSeparateSign(); }
