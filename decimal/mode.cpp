// Reading the mode word from the environment; what the bits mean is in mode.h.
#include "decimal/mode.h"

#include <cstdlib>

#include "base/environment.h"

uint32_t zvkBcdMode = ZVK_BCD_UNREAD;

void zvkBcdLoadMode()
{
    uint32_t word = 0;
    if (const char *number = environmentText("COBOL_BCD_NOVALIDATE"))
        word = static_cast<uint32_t>(strtoul(number, nullptr, 0)) & 0xFF;
    if (environmentText("COBOL_BCD_SAFE"))
        word = (word & ~uint32_t{ZVK_BCD_NO_VALIDATION | ZVK_BCD_KEEP_NEG_ZERO | ZVK_BCD_RAW_UNSIGNED}) |
               ZVK_BCD_CLEAN_UNSIGNED | ZVK_BCD_CHECK_SOURCES | ZVK_BCD_CHECK_COMPARED;
    // After SAFE, and so stronger. The validation of arithmetic stays on: NO_VALIDATION is among
    // the bits that are cleared.
    if (environmentText("COBOL_BCD_FAST")) word = (word & ~uint32_t{0x5F}) | ZVK_BCD_RAW_UNSIGNED;
    if (environmentText("COBOL_BCD_DEBUG")) word |= ZVK_BCD_DEBUG;
    if (environmentText("COBOL_BCD_EBCDIC")) word |= ZVK_BCD_EBCDIC;
    __atomic_store_n(&zvkBcdMode, word, __ATOMIC_RELAXED);
}
