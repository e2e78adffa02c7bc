// The mode word: what the environment asks of decimal arithmetic.
//
// One 32-bit word for the process, read from the environment by the first decimal entry point that
// is called and never again. With no variable set it is 0: arithmetic operands are validated,
// comparisons and copies are not, a negative zero is made positive, zoned data is native, nothing
// is dumped.
//
//     COBOL_BCD_NOVALIDATE=N   the word's low eight bits, by number; the other variables
//                              only have to be set and not empty:
//     COBOL_BCD_SAFE           validate everything, keep ASCII digits clean
//     COBOL_BCD_FAST           the bits of SAFE and NOVALIDATE off again, raw copies of unsigned items
//     COBOL_BCD_DEBUG          dump operands and results to stderr
//     COBOL_BCD_EBCDIC         the EBCDIC convention for zoned data
#pragma once

#include <cstdint>

enum : uint32_t {
    ZVK_BCD_NO_VALIDATION = 0x001,  // arithmetic does not validate; mutes a validator with check mode 0
    ZVK_BCD_KEEP_NEG_ZERO = 0x002,  // copies, negation, shifts and conversions leave -0 as it is
    ZVK_BCD_CLEAN_UNSIGNED = 0x004, // a conversion from or to ZndUS makes every byte an ASCII digit
    ZVK_BCD_RAW_UNSIGNED = 0x008,   // ZndUS to ZndUS copies the last byte raw; goes before CLEAN_UNSIGNED
    ZVK_BCD_CHECK_SOURCES = 0x010,  // validate sources of copies, zoned conversions and of ABS on zoned items
    ZVK_BCD_UNUSED = 0x020,         // looked at by nobody
    ZVK_BCD_CHECK_COMPARED = 0x040, // validate what is compared
    ZVK_BCD_EBCDIC = 0x080,         // letters carry the sign in converted zoned items
    ZVK_BCD_DEBUG = 0x100,          // dump

    ZVK_BCD_UNREAD = 0xFF00 // the environment has not been read; has the DEBUG bit, so one test finds both
};

extern uint32_t zvkBcdMode;

// Reads the environment into zvkBcdMode.
void zvkBcdLoadMode();

namespace bcd {

// The word as it is, perhaps unread. Threads that race to load it store the same value, so no
// order is needed.
inline uint32_t rawMode() { return __atomic_load_n(&zvkBcdMode, __ATOMIC_RELAXED); }

inline uint32_t mode()
{
    uint32_t word = rawMode();
    if (__builtin_expect(word == ZVK_BCD_UNREAD, 0)) {
        zvkBcdLoadMode();
        word = rawMode();
    }
    return word;
}

} // namespace bcd
