// INTEREST as a compiler lays it out; see INTEREST.cbl.
#include "records.h"

extern "C" ZVK_EXPORT int INTEREST(const Packed<13> *balance, const Packed<5> *rate, const Packed<3> *days,
                                   Packed<13> *interest);

namespace {
Program<0> program("INTEREST", reinterpret_cast<ZvkRoutine>(INTEREST));
}

int INTEREST(const Packed<13> *balance, const Packed<5> *rate, const Packed<3> *days, Packed<13> *interest)
{
    return program.run([&] {
        // Six decimal places; a seventh for the division, whose digits beyond it cannot change how
        // the third is rounded.
        auto yearly = product(product(*balance, *rate), *days);
        auto daily = quotient(product(yearly, packed<2>(10)), packed<3>(365));
        move(*interest, rounded<5>(daily));
        return 0;
    });
}
