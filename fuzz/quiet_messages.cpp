// Messages for the targets: none is shown and all return, as a site's catalog may have it, so that
// an input goes on beyond its first error.
#include <cstdarg>

#include "kvr2/messages.h"
#include "frame/messages.h"

// Whatever the linker finds as zvkWriteMsg(unsigned, unsigned, ...).
extern "C" uint32_t __wrap__Z11zvkWriteMsgjjz(uint32_t number, uint32_t control, ...)
{
    va_list args;
    va_start(args, control);
    uint32_t result = 0;
    bool forText = control == ZVK_MSG_OPEN_CATALOG || control == ZVK_MSG_CLOSE_CATALOG || (control & ZVK_MSG_TO_STRING);
    if (forText) result = writeERRmsg(number, control, 0, &args);
    va_end(args);
    return result;
}
