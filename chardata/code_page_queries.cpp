// Questions about a code page by its name. Each opens a converter of its own and closes it, so any
// thread may ask.
#include <cstdlib>
#include <cstring>

#include "chardata/conversion_layer.h"
#include "chardata/open_converter.h"
#include "frame/message_calls.h"

extern "C" {

int32_t _zvkValidateCPID(const char *name, int32_t length)
{
    char text[kMaxCodePageName + 1] = {};
    if (length <= 0) return 1;
    if (static_cast<uint32_t>(length) > kMaxCodePageName) {
        memcpy(text, name, kMaxCodePageName);
        msg::noConverter(text, static_cast<int32_t>(U_ILLEGAL_ARGUMENT_ERROR), ZVK_MSG_SEVERE);
        return 1;
    }
    memcpy(text, name, static_cast<size_t>(length));
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = zvkOpenConverter(text, &status);
    if (!converter) return 1;
    ucnv_close(converter);
    return 0;
}

uint32_t _zvkGetMaxCharSize(const char *name)
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = zvkOpenConverter(name, &status);
    if (!converter) return 0;
    uint32_t size = static_cast<uint32_t>(ucnv_getMaxCharSize(converter));
    ucnv_close(converter);
    return size;
}

int32_t _zvkGetCCSID(const char *name, uint32_t *ccsid)
{
    *ccsid = 0xFFFFFFFF;
    UErrorCode status = U_ZERO_ERROR;
    UConverter *converter = zvkOpenConverter(name, &status);
    if (!converter) return 2;
    status = U_ZERO_ERROR;
    int32_t number = ucnv_getCCSID(converter, &status);
    ucnv_close(converter);
    if (U_FAILURE(status) || number <= 0) return 1;
    *ccsid = static_cast<uint32_t>(number);
    return 0;
}

uint64_t _zvkGetMBCurMax(void) { return MB_CUR_MAX; }
}
