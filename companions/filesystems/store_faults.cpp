#include "companions/filesystems/store_faults.h"

#include <csignal>

namespace filesystems {

__thread PageGuard *pageGuard;

namespace {

struct sigaction before;

void onBusError(int, siginfo_t *info, void *)
{
    PageGuard *guard = pageGuard;
    while (guard && !isInMap(guard->map, info->si_addr)) guard = guard->outer;
    if (guard && info->si_code > 0) {
        pageGuard = guard;
        siglongjmp(guard->back, 1);
    }
    // Not ours: the access is made again, and meets who was here before.
    sigaction(SIGBUS, &before, nullptr);
    if (info->si_code <= 0) raise(SIGBUS); // somebody sent it
}

// The library may unload the module.
[[gnu::destructor]] void giveBack()
{
    struct sigaction now;
    if (sigaction(SIGBUS, nullptr, &now) == 0 && (now.sa_flags & SA_SIGINFO) && now.sa_sigaction == onBusError)
        sigaction(SIGBUS, &before, nullptr);
}

} // namespace

void heedPageFaults()
{
    struct sigaction now, ours = {};
    if (sigaction(SIGBUS, nullptr, &now) != 0) return;
    if ((now.sa_flags & SA_SIGINFO) && now.sa_sigaction == onBusError) return;
    before = now;
    ours.sa_sigaction = onBusError;
    ours.sa_flags = SA_SIGINFO | SA_NODEFER; // it is left by a jump, and must come again
    sigemptyset(&ours.sa_mask);
    sigaction(SIGBUS, &ours, nullptr);
}

} // namespace filesystems
