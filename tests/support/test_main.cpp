// The test programs' main: a named piece if the command line asks for one, else GoogleTest. And
// what the sanitizers' run time is to know.
//
// The tests find the build through the environment variables KVR2_BUILD_DIR and KVR2_SOURCE_DIR.
#include <unistd.h>

#include "support/child.h"

extern "C" {
// The library's own signal handlers are under test.
#define OWN_SIGNALS "handle_segv=0:handle_sigfpe=0:handle_sigbus=0:handle_sigill=0:handle_abort=0:"
__attribute__((visibility("default"), used)) const char *__asan_default_options()
{
    return OWN_SIGNALS "use_sigaltstack=0:allocator_may_return_null=1:detect_stack_use_after_return=0";
}
// The library keeps some memory on purpose; see leaks.supp for what the system keeps.
__attribute__((visibility("default"), used)) const char *__lsan_default_options()
{
    return "suppressions=" KVR2_SOURCE_DIR "/tests/support/leaks.supp:print_suppressions=0";
}
__attribute__((visibility("default"), used)) const char *__ubsan_default_options() { return "print_stacktrace=1"; }
__attribute__((visibility("default"), used)) const char *__tsan_default_options()
{
    // After a crash the run unit is ended out of the signal handler, which calls what no handler
    // should; it is over anyway.
    return OWN_SIGNALS "report_signal_unsafe=0:halt_on_error=1:second_deadlock_stack=1:allocator_may_return_null=1";
}
// The dynamic loader, and what it runs when it loads and unloads, is ordered by a lock of its own
// that the sanitizer does not see; so are the time zone, setlocale, and what is put into a stream
// under flockfile without a call of the system's library. A store's map lock (in
// companions/filesystems) is read-locked before and after the list of stores is locked: readers do
// not wait for each other, nor for a writer that waits, and a writer takes no other lock.
__attribute__((visibility("default"), used)) const char *__tsan_default_suppressions()
{
    return "race:ld-linux\nrace:putc_unlocked\nrace:tzset_internal\nrace:zvkSetLocale\ndeadlock:enterTransaction\n";
}
}

// The library reads the environment while it is loaded, before main and in part before this. So a
// test program that was not started in the tests' own environment starts itself again in it: one
// locale, and none of the variables that a site may have set for its COBOL programs.
__attribute__((constructor(101))) static void enterTheTestsEnvironment(int, char **argv)
{
    if (!getenv("KVR2_TEST_ENVIRONMENT")) {
        for (const char *name : {"LC_ALL", "LC_CTYPE", "LC_MESSAGES", "LC_TIME", "LC_NUMERIC", "LANGUAGE", "NLSPATH",
                                 "COBRTOPT", "COBPATH", "COBOL_CPM_CACHE", "COB_CPM_SIZE_MAX", "CPM_CACHE", "COBCORE",
                                 "COBMSGS", "COBOUTDIR", "EBCDIC_CODEPAGE", "gdg_home", "__ZVKDEBUG"})
            unsetenv(name);
        setenv("LANG", "C.UTF-8", 1);
        setenv("KVR2_TEST_ENVIRONMENT", "1", 1);
        execv("/proc/self/exe", argv);
    }
    setenv("KVR2_BUILD_DIR", KVR2_BUILD_DIR, 0);
    setenv("KVR2_SOURCE_DIR", KVR2_SOURCE_DIR, 0);
}

int main(int argc, char **argv)
{
    if (runRequestedPiece(argc, argv)) return 0;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
