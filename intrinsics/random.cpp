// FUNCTION RANDOM: a Lehmer generator, x = x * 950706376 mod (2^31 - 1).
//
// Its state is a field of the run unit's record, so that each run unit has its own sequence;
// outside of any run unit there is one for the process. A state of 0, like the 1 that a run unit
// starts with, makes 950706376 the first number. Threads that draw at once share the sequence: each
// number goes to one of them.
#include "base/quiet_floats.h"
#include "frame/run_unit.h"
#include "intrinsics/float_functions.h"
#include "intrinsics/function_errors.h"
#include "kvr2/mathematics.h"

namespace {

using namespace floats;

constexpr uint32_t kMultiplier = 950706376, kModulus = 2147483647;
constexpr uint32_t kMostSeed = 2147483645;
constexpr int64_t kSeedLimit = 1'000'000'000'000'000'000;

uint32_t ownState;

uint32_t &state()
{
    Runcom *run = zvkCurrentRuncom();
    return run ? run->randomSeed : ownState;
}

// The number after `from`. The product has up to 62 bits, and 2^31 is 1 here: the parts above and
// below bit 31 add up to the same rest.
uint32_t after(uint32_t from)
{
    uint64_t product = uint64_t{from ? from : 1} * kMultiplier;
    uint64_t folded = (product & kModulus) + (product >> 31);
    folded = (folded & kModulus) + (folded >> 31);
    return static_cast<uint32_t>(folded == kModulus ? 0 : folded);
}

// The next number of the sequence.
uint32_t draw()
{
    uint32_t &shared = state();
    uint32_t from = __atomic_load_n(&shared, __ATOMIC_RELAXED), number;
    do number = after(from);
    while (!__atomic_compare_exchange_n(&shared, &from, number, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED));
    return number;
}

// Begins the sequence anew, after `from`; its first number.
uint32_t begin(uint32_t from)
{
    uint32_t number = after(from);
    __atomic_store_n(&state(), number, __ATOMIC_RELAXED);
    return number;
}

template <class F>
typename F::Value fractionOf(uint32_t number)
{
    return static_cast<typename F::Value>(number) / static_cast<typename F::Value>(kModulus);
}

// The low-order word of a number as a 64-bit integer; 0 for what is none.
template <class F>
uint32_t lowWordOf(typename F::Value x)
{
    constexpr auto limit = uint64_t{1} << 63;
    if (F::isNan(x) || !(magnitudeOf<F>(x) < static_cast<typename F::Value>(limit))) return 0;
    return static_cast<uint32_t>(static_cast<uint64_t>(static_cast<int64_t>(x)));
}

struct SeedFaults {
    bool negative, tooLarge, notInteger;
};

template <class F>
SeedFaults faultsOf(typename F::Value seed)
{
    if (F::isNan(seed)) return {};
    return quietly([&] {
        return SeedFaults{seed < 0, seed >= static_cast<typename F::Value>(kSeedLimit),
                          F::isFinite(seed) && Functions<F>::trunc(seed) != seed};
    });
}

template <class F>
typename F::Value seeded(typename F::Value seed)
{
    using Value = typename F::Value;
    SeedFaults faults = faultsOf<F>(seed);
    if (faults.negative) reportArgument(msg::negativeArgument, "RANDOM");
    if (faults.tooLarge) reportTooLarge("RANDOM", kSeedLimit);
    if (faults.notInteger) reportArgument(msg::argumentNotInteger, "RANDOM");
    return quietly([&] {
        constexpr auto most = static_cast<Value>(kMostSeed);
        Value x = seed;
        if (x > most) {
            Value turns = x / most;
            x = F::isFinite(turns) ? (turns - Functions<F>::trunc(turns)) * most : static_cast<Value>(0);
        }
        return fractionOf<F>(begin(lowWordOf<F>(x + 1)));
    });
}

} // namespace

double _zvkRandom(void) { return fractionOf<Binary64>(draw()); }

double _zvkRandomInt8(uint64_t seed)
{
    const bool tooLarge = seed >= static_cast<uint64_t>(kSeedLimit);
    if (tooLarge) reportTooLarge("RANDOM", kSeedLimit);
    if (seed > kMostSeed) seed %= kMostSeed + 1;
    return fractionOf<Binary64>(begin(static_cast<uint32_t>(seed) + 1));
}

double _zvkRandomFloat8(double seed) { return seeded<Binary64>(seed); }
ZvkFloat128 _zvkRandomFloat16(ZvkFloat128 seed) { return seeded<Binary128>(seed); }
ZvkDecimal128 _Dmr_random_decfloat16(ZvkDecimal128 seed) { return seeded<Decimal128>(seed); }
