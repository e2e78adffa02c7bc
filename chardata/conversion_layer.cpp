// Start and end of the conversion layer, and conversion between bytes and UTF-16; see
// conversion_layer.h.
#include "chardata/conversion_layer.h"

#include <algorithm>
#include <cstring>

#include "chardata/code_page_choice.h"
#include "chardata/copy_text.h"
#include "chardata/native_ebcdic.h"
#include "chardata/open_converter.h"
#include "frame/message_calls.h"

ConversionLayer zvkConversionLayer;

namespace {

void endConversionLayer()
{
    ConversionLayer &layer = zvkConversionLayer;
    if (layer.nativeConverter) ucnv_close(layer.nativeConverter);
    if (layer.ebcdicConverter) ucnv_close(layer.ebcdicConverter);
    if (layer.collator) ucol_close(layer.collator);
    layer.nativeConverter = layer.ebcdicConverter = nullptr;
    layer.collator = nullptr;
    zvkForgetByteTables();
    layer.started = false;
}

UConverter *openOrReport(const char *name)
{
    UConverter *converter = zvkOpenConverter(name, &zvkConversionLayer.status);
    if (!converter) msg::noConverter(name, static_cast<int32_t>(zvkConversionLayer.status));
    return converter;
}

UConverter *openOnce(UConverter *&handle, const char *name)
{
    if (!handle) handle = openOrReport(name);
    return handle;
}

// A converter for one call: one of the two cached, or one that is closed when the call ends.
class SelectedConverter {
public:
    SelectedConverter(const char *name, int32_t nameLength)
    {
        zvkStartConversionLayer();
        zvkConversionLayer.status = U_ZERO_ERROR;
        if (nameLength == ZVK_CODE_PAGE_EBCDIC) {
            converter_ = zvkEbcdicConverter();
        } else if (nameLength == ZVK_CODE_PAGE_NATIVE) {
            converter_ = zvkNativeConverter();
        } else {
            char text[kMaxCodePageName + 1] = {};
            bool fits = nameLength > 0 && static_cast<uint32_t>(nameLength) <= kMaxCodePageName;
            memcpy(text, name, fits ? static_cast<size_t>(nameLength) : nameLength > 0 ? kMaxCodePageName : 0);
            if (fits) {
                owned_ = converter_ = openOrReport(text);
            } else {
                zvkConversionLayer.status = U_ILLEGAL_ARGUMENT_ERROR;
                msg::noConverter(text, static_cast<int32_t>(U_ILLEGAL_ARGUMENT_ERROR), ZVK_MSG_SEVERE);
            }
        }
    }
    // Closing cannot fail, so message 223 (a converter did not close, its status) has no cause with
    // today's ICU.
    ~SelectedConverter()
    {
        if (owned_) ucnv_close(owned_);
    }
    SelectedConverter(const SelectedConverter &) = delete;
    SelectedConverter &operator=(const SelectedConverter &) = delete;

    UConverter *get() const { return converter_; }

private:
    UConverter *converter_ = nullptr;
    UConverter *owned_ = nullptr;
};

// A length that ICU can take; -1, which it reads as "up to the NUL", is out of reach this way.
bool isIcuLength(uint32_t length) { return length <= INT32_MAX; }

int32_t refuse()
{
    zvkConversionLayer.status = U_ILLEGAL_ARGUMENT_ERROR;
    msg::conversionFailed(static_cast<int32_t>(U_ILLEGAL_ARGUMENT_ERROR));
    return U_ILLEGAL_ARGUMENT_ERROR;
}

} // namespace

void zvkStartConversionLayer()
{
    ConversionLayer &layer = zvkConversionLayer;
    if (layer.started) return;
    layer.started = true;
    if (_zvkProccom) _zvkProccom->codePageHook = reinterpret_cast<uint64_t>(&endConversionLayer);
    CodePageChoice choice;
    zvkCurrentCodePages(choice);
    copyText(layer.collationLocale, choice.localeName);
    // A locale name that is shorter than five bytes was filled up with blanks.
    if (char *blank = strchr(layer.collationLocale, ' ')) *blank = 0;
    copyText(layer.nativeConverterName, choice.localeName + 6);
    copyText(layer.ebcdicConverterName, choice.ebcdicCodePage);
}

UConverter *zvkNativeConverter()
{
    return openOnce(zvkConversionLayer.nativeConverter, zvkConversionLayer.nativeConverterName);
}
UConverter *zvkEbcdicConverter()
{
    return openOnce(zvkConversionLayer.ebcdicConverter, zvkConversionLayer.ebcdicConverterName);
}

int32_t zvkToUtf16(UConverter *converter, const uint8_t *source, uint32_t length, uint8_t *destination,
                   uint32_t &capacity)
{
    if (!isIcuLength(length)) return refuse();
    UErrorCode &status = zvkConversionLayer.status;
    status = U_ZERO_ERROR;
    int32_t room = static_cast<int32_t>(std::min<uint32_t>(capacity / 2, INT32_MAX));
    int32_t units = ucnv_toUChars(converter, reinterpret_cast<UChar *>(destination), room,
                                  reinterpret_cast<const char *>(source), static_cast<int32_t>(length), &status);
    if (status > 0) {
        if (!zvkIsOverflow(status)) {
            msg::conversionFailed(static_cast<int32_t>(status));
            return status;
        }
        msg::conversionFailed(static_cast<int32_t>(status), ZVK_MSG_INFORM);
    }
    // For a full destination ICU answers with the length that it would have needed.
    capacity = 2 * static_cast<uint32_t>(std::clamp(units, 0, room));
    if (status < 0) status = U_ZERO_ERROR;
    return status;
}

int32_t zvkFromUtf16(UConverter *converter, const uint8_t *source, uint32_t length, uint8_t *destination,
                     uint32_t &capacity, OnOverflow onOverflow)
{
    UErrorCode &status = zvkConversionLayer.status;
    status = U_ZERO_ERROR;
    int32_t room = static_cast<int32_t>(std::min<uint32_t>(capacity, INT32_MAX));
    int32_t bytes = ucnv_fromUChars(converter, reinterpret_cast<char *>(destination), room,
                                    reinterpret_cast<const UChar *>(source), static_cast<int32_t>(length / 2), &status);
    if (status > 0) {
        if (onOverflow == OnOverflow::Report || !zvkIsOverflow(status))
            msg::conversionFailed(static_cast<int32_t>(status));
        return status;
    }
    capacity = static_cast<uint32_t>(bytes);
    status = U_ZERO_ERROR;
    return status;
}

extern "C" {

int32_t _zvkConvToUnicode(const uint8_t *source, uint32_t sourceLength, uint8_t *destination, uint32_t *capacity,
                          const char *name, int32_t nameLength)
{
    SelectedConverter converter(name, nameLength);
    if (!converter.get()) return zvkConversionLayer.status;
    return zvkToUtf16(converter.get(), source, sourceLength, destination, *capacity);
}

int32_t _zvkConvFromUnicode(const uint8_t *source, uint32_t sourceLength, uint8_t *destination, uint32_t *capacity,
                            const char *name, int32_t nameLength)
{
    SelectedConverter converter(name, nameLength);
    if (!converter.get()) return zvkConversionLayer.status;
    return zvkFromUtf16(converter.get(), source, sourceLength, destination, *capacity);
}
}
