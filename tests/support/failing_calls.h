// Calls of the system that fail, one after the other: a path is run once for each allocation (or
// each call of the system) that it makes, and each time another one of them fails.
//
//     failEach(Calls::Storage, [] { zvkSomething(); });
//
// Every run is a child process. It may come to its end or end with a message, by SIGABRT; any other
// signal, a hang or a failed REQUIRE is a failure. The calls are taken in one of two ways: by the
// linker, for a program that is linked from the library's objects (failing_calls_wrapped.h), or by
// the program's own routines of their names, for shared objects (failing_calls_exported.cpp).
#pragma once

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>

#include "support/child.h"

enum class Calls { Storage, System };

struct FailingCall {
    Calls kind = Calls::Storage;
    int after = -1; // calls that still succeed; below 0: all of them
    bool reached = false;
    const char *name = ""; // the call that failed
};
inline FailingCall failingCall;

inline bool callFails(Calls kind, int error, const char *name)
{
    if (failingCall.kind != kind || failingCall.after < 0 || failingCall.after-- != 0) return false;
    failingCall.reached = true;
    failingCall.name = name;
    errno = error;
    return true;
}

// `before` and `after` run without failures, in the same child; returns how many calls failed.
enum class Ending { MayAbort, Orderly };
inline int failEach(Calls kind, const std::function<void()> &path, const std::function<void()> &before = {},
                    const std::function<void()> &after = {}, Ending ending = Ending::MayAbort)
{
    constexpr int kNotReached = 77, kMost = 3000;
    for (int n = 0; n < kMost; n++) {
        ChildRun run = runChild(
            [&] {
                if (before) before();
                failingCall = {kind, n, false};
                path();
                failingCall.after = -1;
                if (!failingCall.reached) exit(kNotReached);
                if (after) after();
            },
            {.seconds = 60});
        if (run.status == kNotReached) return n;
        const bool good = run.status == 0 || (run.signal == SIGABRT && ending == Ending::MayAbort);
        EXPECT_TRUE(good) << "call " << n << ": status " << run.status << ", signal " << run.signal
                          << (run.timedOut ? ", hangs" : "") << "\n"
                          << run.err;
        if (!good) return n;
    }
    ADD_FAILURE() << "the path never comes to an end without a failure";
    return kMost;
}
