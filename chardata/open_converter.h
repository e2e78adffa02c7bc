// Opening a converter: the one place where a code-page name meets ICU.
//
// A name goes to ICU as it is first. ICU does not know the prefix "TQX-"; the digits after it
// are the number (CCSID) of a coded character set, and the converter that bears that number among
// the available ones is opened instead:
//
//     UErrorCode status = U_ZERO_ERROR;
//     UConverter *converter = zvkOpenConverter("TQX-037", &status);       // ICU's converter number 37
#pragma once

#include <unicode/ucnv.h>

// Null, with an error in *status, if there is no such converter. Any thread. Close it with
// ucnv_close.
UConverter *zvkOpenConverter(const char *name, UErrorCode *status);

// ICU's own name for the converter with this number, or null. Of several, ICU's first; never a
// variant with options.
const char *zvkConverterNameOfCcsid(uint32_t ccsid);
