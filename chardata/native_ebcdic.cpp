// Native bytes to EBCDIC and back, through UTF-16.
//
// In general that is two conversions with a work area between them. Where both default pages have
// single bytes only, the two together map byte to byte, and a table of 256 bytes says the same at a
// tenth of the time. The table is built from the converters once, and only if they really act byte
// by byte: all pairs of bytes are converted in one run (a cyclic sequence in which every pair
// stands once, 65 536 bytes), and each byte must have come out the same beside every neighbour.
#include "chardata/native_ebcdic.h"

#include <algorithm>
#include <cstring>

#include "chardata/byte_translate.h"
#include "chardata/conversion_layer.h"
#include "chardata/work_area.h"
#include "frame/message_calls.h"

namespace {

constexpr size_t kFirstArea = 32768;  // on the stack, for UTF-16
constexpr size_t kSecondArea = 16384; // on the stack, for the bytes of an incomplete source

struct ByteTable {
    enum State : uint8_t { Unknown, Unfit, Ready } state;
    uint8_t map[256];
};
ByteTable nativeToEbcdic, ebcdicToNative;

// The two directions differ in their converters, their table and the size of the second area.
struct AtoE {
    static UConverter *from() { return zvkNativeConverter(); }
    static UConverter *to() { return zvkEbcdicConverter(); }
    static ByteTable &table() { return nativeToEbcdic; }
    static size_t secondSize(size_t utf16Bytes) { return utf16Bytes * 5 / 4 + 4; }
};

struct EtoA {
    static UConverter *from() { return zvkEbcdicConverter(); }
    static UConverter *to() { return zvkNativeConverter(); }
    static ByteTable &table() { return ebcdicToNative; }
    static size_t secondSize(size_t utf16Bytes) { return utf16Bytes + 2; }
};

// Every pair of byte values once: i, then i and each larger value in turn, for all i; the first
// byte again closes the circle.
constexpr size_t kPairsLength = 65536 + 1;

void writeAllPairs(uint8_t *sequence)
{
    for (int i = 0; i < 256; i++) {
        *sequence++ = static_cast<uint8_t>(i);
        for (int j = i + 1; j < 256; j++) {
            *sequence++ = static_cast<uint8_t>(i);
            *sequence++ = static_cast<uint8_t>(j);
        }
    }
    *sequence = 0;
}

bool isSingleByte(UConverter *converter)
{
    UConverterType type = ucnv_getType(converter);
    return type == UCNV_SBCS || type == UCNV_LATIN_1 || type == UCNV_US_ASCII;
}

bool buildByteTable(UConverter *from, UConverter *to, uint8_t (&map)[256])
{
    if (!isSingleByte(from) || !isSingleByte(to)) return false;
    WorkArea<16> area(kPairsLength * 2 + 2 * (kPairsLength + 1));
    if (!area.data()) return false;
    UChar *units = reinterpret_cast<UChar *>(area.data());
    uint8_t *in = area.data() + 2 * (kPairsLength + 1), *out = in + kPairsLength;
    writeAllPairs(in);

    constexpr int32_t length = kPairsLength;
    UErrorCode status = U_ZERO_ERROR;
    if (ucnv_toUChars(from, units, length + 1, reinterpret_cast<char *>(in), length, &status) != length ||
        U_FAILURE(status))
        return false;
    status = U_ZERO_ERROR;
    if (ucnv_fromUChars(to, reinterpret_cast<char *>(out), length, units, length, &status) != length ||
        U_FAILURE(status))
        return false;
    for (size_t i = 0; i < kPairsLength; i++) map[in[i]] = out[i];
    for (size_t i = 0; i < kPairsLength; i++)
        if (map[in[i]] != out[i]) return false;
    return true;
}

const ByteTable *byteTable(ByteTable &table, UConverter *from, UConverter *to)
{
    if (table.state == ByteTable::Unknown)
        table.state = buildByteTable(from, to, table.map) ? ByteTable::Ready : ByteTable::Unfit;
    return table.state == ByteTable::Ready ? &table : nullptr;
}

int32_t convertByTable(const ByteTable &table, const uint8_t *source, uint32_t length, uint8_t *destination,
                       uint32_t &capacity)
{
    UErrorCode &status = zvkConversionLayer.status;
    status = length > capacity ? U_BUFFER_OVERFLOW_ERROR : U_ZERO_ERROR;
    uint32_t stored = std::min(length, capacity);
    zvkTranslateBytes(source, destination, stored, table.map);
    capacity -= stored;
    if (status > 0) msg::conversionFailed(static_cast<int32_t>(status));
    return status;
}

// The UTF-16 of a source that is incomplete, by way of an area of its own; what does not fit there
// or at the destination is dropped without an error.
template <class Direction>
int32_t convertIncomplete(UConverter *to, const uint8_t *utf16, uint32_t utf16Bytes, uint8_t *destination,
                          uint32_t &capacity)
{
    size_t size = Direction::secondSize(utf16Bytes);
    WorkArea<kSecondArea> area(size);
    if (!area.data()) return U_MEMORY_ALLOCATION_ERROR;
    memset(area.data(), 0, size);
    uint32_t stored = static_cast<uint32_t>(std::min<size_t>(size, UINT32_MAX));
    int32_t status = zvkFromUtf16(to, utf16, utf16Bytes, area.data(), stored, OnOverflow::KeepSilent);
    if (status > 0 && !zvkIsOverflow(status)) return status;
    stored = std::min(stored, capacity);
    memcpy(destination, area.data(), stored);
    capacity -= stored;
    return U_ZERO_ERROR;
}

template <class Direction>
int32_t convertThroughUtf16(UConverter *from, UConverter *to, const uint8_t *source, uint32_t length,
                            uint8_t *destination, uint32_t &capacity)
{
    // A length that ICU cannot take is refused below and needs no area.
    size_t size = length <= INT32_MAX ? size_t{2} * length + 4 : 4;
    WorkArea<kFirstArea> area(size);
    if (!area.data()) return U_MEMORY_ALLOCATION_ERROR;
    uint32_t utf16Bytes = static_cast<uint32_t>(std::min<size_t>(size, UINT32_MAX));
    int32_t status = zvkToUtf16(from, source, length, area.data(), utf16Bytes);
    if (zvkIsOverflow(status)) return convertIncomplete<Direction>(to, area.data(), utf16Bytes, destination, capacity);
    if (status > 0) return status;
    uint32_t stored = capacity;
    status = zvkFromUtf16(to, area.data(), utf16Bytes, destination, stored);
    if (status == U_ZERO_ERROR || zvkIsOverflow(status)) capacity -= stored;
    return status;
}

template <class Direction>
int32_t convert(const uint8_t *source, uint32_t length, uint8_t *destination, uint32_t &capacity)
{
    zvkStartConversionLayer();
    UConverter *from = Direction::from();
    UConverter *to = from ? Direction::to() : nullptr;
    if (!to) return zvkConversionLayer.status;
    const ByteTable *table = length <= INT32_MAX ? byteTable(Direction::table(), from, to) : nullptr;
    if (table) return convertByTable(*table, source, length, destination, capacity);
    return convertThroughUtf16<Direction>(from, to, source, length, destination, capacity);
}

} // namespace

void zvkForgetByteTables() { nativeToEbcdic.state = ebcdicToNative.state = ByteTable::Unknown; }

extern "C" {

int32_t _zvkUniAtoE(const uint8_t *source, uint32_t length, uint8_t *destination, uint32_t *capacity)
{
    return zvkConversionLayer.combinedStatus = convert<AtoE>(source, length, destination, *capacity);
}

int32_t _zvkUniEtoA(const uint8_t *source, uint32_t length, uint8_t *destination, uint32_t *capacity)
{
    return zvkConversionLayer.combinedStatus = convert<EtoA>(source, length, destination, *capacity);
}
}
