// Keeps floating-point traps away while a routine computes.
//
// A run unit traps divisions by zero, and a host may trap more. What an item or an argument holds
// must not end the program inside the library, so routines that leave plain arithmetic on clean
// numbers run under this guard: it masks every exception and restores the caller's masks.
//
//     double logarithm(double x)
//     {
//         return quietly([&] { return log(x); });
//     }
//
// The computation is a routine of its own, which the compiler knows nothing of: otherwise it would
// be free to move arithmetic out of the guarded stretch.
#pragma once

#include <cstdint>

class QuietFloats {
public:
    QuietFloats()
    {
        asm volatile("stmxcsr %0" : "=m"(vector_));
        asm volatile("fnstcw %0" : "=m"(stack_));
        if (hasVectorTraps()) { // to load the register takes as long as a logarithm
            uint32_t vector = (vector_ | kVectorMasks) & ~kVectorFlags;
            asm volatile("ldmxcsr %0" : : "m"(vector) : "memory");
        }
        if (!hasStackTraps()) return;
        // An exception that is pending since before the traps were enabled would fire here.
        asm volatile("fnstsw %0" : "=m"(pending_));
        if (pending_ & kStackMasks) asm volatile("fnclex");
        uint16_t stack = stack_ | kStackMasks;
        asm volatile("fldcw %0" : : "m"(stack));
    }
    ~QuietFloats()
    {
        if (hasVectorTraps()) asm volatile("ldmxcsr %0" : : "m"(vector_) : "memory");
        if (!hasStackTraps()) return;
        asm volatile("fnstsw %0" : "=m"(pending_)); // what happened meanwhile would trap at the next instruction there
        if (pending_ & kStackMasks) asm volatile("fnclex");
        asm volatile("fldcw %0" : : "m"(stack_));
    }
    QuietFloats(const QuietFloats &) = delete;
    QuietFloats &operator=(const QuietFloats &) = delete;

private:
    static constexpr uint32_t kVectorMasks = 0x1F80, kVectorFlags = 0x003F;
    static constexpr uint16_t kStackMasks = 0x003F;

    bool hasVectorTraps() const { return (vector_ & kVectorMasks) != kVectorMasks; }
    bool hasStackTraps() const { return (stack_ & kStackMasks) != kStackMasks; }

    uint32_t vector_;
    uint16_t stack_;
    uint16_t pending_;
};

#if defined(__clang__) // reads this for clang-tidy only
#define ZVK_APART gnu::noinline
#else
#define ZVK_APART gnu::noipa
#endif

template <class Body>
[[ZVK_APART]] auto runApart(const Body &body)
{
    return body();
}

template <class Body>
inline auto quietly(const Body &body)
{
    QuietFloats quiet;
    return runApart(body);
}
