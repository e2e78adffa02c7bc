// The conversion layer: the two default converters, started on first use, and the way to UTF-16 and
// back.
//
// The layer is process-wide and unlocked; conversions come one at a time. It ends with the runtime,
// through Proccom.codePageHook, and starts again when it is next needed.
#pragma once

#include <unicode/ucnv.h>
#include <unicode/ucol.h>

#include "kvr2/code_pages.h"

inline constexpr uint32_t kMaxCodePageName = 30; // bytes of a name in a call

struct ConversionLayer {
    bool started;
    char nativeConverterName[51];
    char ebcdicConverterName[51];
    char collationLocale[6];     // language and territory of the locale, "en_US"
    UConverter *nativeConverter; // these three are opened on demand and closed at the end of the runtime
    UConverter *ebcdicConverter;
    UCollator *collator;
    UErrorCode status;      // of the ICU call at hand
    int32_t combinedStatus; // of the latest _zvkUniAtoE or _zvkUniEtoA
};

extern ConversionLayer zvkConversionLayer;

// Starts the layer if it is not started: names from the run unit's code pages, the hook that ends
// it.
void zvkStartConversionLayer();

// The converter of the native or the EBCDIC page, opened on first use; null after message 221.
UConverter *zvkNativeConverter();
UConverter *zvkEbcdicConverter();

// True for the two statuses that mean "incomplete, but what is there is good": a character cut off
// at the end, a full destination.
inline bool zvkIsOverflow(int32_t status)
{
    return status == U_TRUNCATED_CHAR_FOUND || status == U_BUFFER_OVERFLOW_ERROR;
}

// What is not a conversion's business to report on.
enum class OnOverflow { Report, KeepSilent };

// The conversions behind _zvkConvToUnicode and _zvkConvFromUnicode with an open converter; lengths
// and capacity in bytes.
int32_t zvkToUtf16(UConverter *converter, const uint8_t *source, uint32_t length, uint8_t *destination,
                   uint32_t &capacity);
int32_t zvkFromUtf16(UConverter *converter, const uint8_t *source, uint32_t length, uint8_t *destination,
                     uint32_t &capacity, OnOverflow onOverflow = OnOverflow::Report);
