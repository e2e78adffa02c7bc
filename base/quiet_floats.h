// Keeps floating-point traps away while a routine computes.
//
// A run unit traps divisions by zero, and a host may trap more. What an item or an argument holds
// must not end the program inside the library, so routines that leave plain arithmetic on clean
// numbers run under this guard: it masks every exception and restores the caller's masks and flags.
//
//     double logarithm(double x)
//     {
//         QuietFloats quiet;
//         return log(x);
//     }
#pragma once

#include <cstdint>

class QuietFloats {
public:
    QuietFloats()
    {
        asm volatile("stmxcsr %0" : "=m"(vector_));
        asm volatile("fnstcw %0" : "=m"(stack_));
        uint32_t vector = (vector_ | kVectorMasks) & ~kVectorFlags;
        uint16_t stack = stack_ | kStackMasks;
        asm volatile("ldmxcsr %0" : : "m"(vector) : "memory");
        if (stack != stack_) asm volatile("fldcw %0" : : "m"(stack));
    }
    ~QuietFloats()
    {
        asm volatile("ldmxcsr %0" : : "m"(vector_) : "memory");
        if ((stack_ & kStackMasks) != kStackMasks) {
            asm volatile("fnclex"); // or the next instruction there would trap
            asm volatile("fldcw %0" : : "m"(stack_));
        }
    }
    QuietFloats(const QuietFloats &) = delete;
    QuietFloats &operator=(const QuietFloats &) = delete;

private:
    static constexpr uint32_t kVectorMasks = 0x1F80, kVectorFlags = 0x003F;
    static constexpr uint16_t kStackMasks = 0x003F;

    uint32_t vector_;
    uint16_t stack_;
};
