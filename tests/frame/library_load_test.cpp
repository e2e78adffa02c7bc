// Faults these tests are there to catch: a library that cannot be loaded twice, from threads, or
// unloaded with a run unit active; a host that loads it a hundred times and has no room for its
// thread-local storage the next time; a printf that calls into what was unloaded; what else
// it leaves in the process; a load that takes long; NLSPATH entries doubled or in the wrong order.
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <thread>
#include <vector>

#include "kvr2/run_unit.h"
#include "support/child.h"
#include "support/compiled_program.h"
#include "support/require.h"

using std::string;

namespace {

string libraryPath() { return string(getenv("KVR2_BUILD_DIR")) + "/lib/libkvr2_64r.so"; }

void *load()
{
    void *library = dlopen(libraryPath().c_str(), RTLD_NOW);
    if (!library) fprintf(stderr, "%s\n", dlerror());
    REQUIRE(library);
    return library;
}

template <class Routine>
Routine *symbol(void *library, const char *name)
{
    void *address = dlsym(library, name);
    REQUIRE(address);
    return reinterpret_cast<Routine *>(address);
}

bool stillLoaded() { return readFile("/proc/self/maps").find("libkvr2_64r") != string::npos; }

TEST(LibraryLoad, AgainAndAgain)
{
    ChildRun run = runChild([] {
        for (int i = 0; i < 300; i++) {
            void *library = load();
            REQUIRE(dlopen(libraryPath().c_str(), RTLD_NOW) == library && dlclose(library) == 0);
            Proccom **proccom = symbol<Proccom *>(library, "_zvkProccom");
            REQUIRE(*proccom && (*proccom)->freeru && !(*proccom)->runcom);
            REQUIRE(dlclose(library) == 0 && !stillLoaded());
        }
    });
    EXPECT_GOOD(run);

    run = runChild([] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 8; i++)
            threads.emplace_back([] {
                for (int j = 0; j < 10; j++) dlclose(load());
            });
        for (std::thread &thread : threads) thread.join();
#ifndef __SANITIZE_THREAD__ // whose run time leaves it mapped after threads have unloaded it
        REQUIRE(!stillLoaded());
#endif
    });
    EXPECT_GOOD(run);
}

TEST(LibraryLoad, LeavesPrintfAsItWas)
{
    ChildRun run = runChild([] {
        char text[40];
        for (int i = 0; i < 20; i++) {
            REQUIRE(dlclose(load()) == 0 && !stillLoaded());
            snprintf(text, sizeof text, "%5.0f %Lf", 2.0, 3.5L);
            REQUIRE(strcmp(text, "    2 3.500000") == 0);
        }
    });
    EXPECT_GOOD(run);
}

TEST(LibraryLoad, UnloadsWithARunUnitActive)
{
    ChildRun run = runChild([] {
        for (int i = 0; i < 3; i++) {
            void *library = load();
            CompiledProgram main("MAIN");
            symbol<void(PCB *)>(library, "_zvkPgmInit")(&main.pcb);
            REQUIRE((*symbol<Proccom *>(library, "_zvkProccom"))->runcom->main == &main.pcb);
            symbol<void *()>(library, "_zvkGetJmpBuffer")();
            REQUIRE(dlclose(library) == 0);
            struct sigaction present;
            sigaction(SIGTERM, nullptr, &present);
            REQUIRE(present.sa_handler == SIG_DFL);
        }
    });
    EXPECT_GOOD(run);
}

TEST(LibraryLoad, PutsTheCatalogsInFrontOfNlspathOnce)
{
    auto nlspath = [](std::optional<string> before) {
        return runChild(
                   [] {
                       load();
                       printf("%s", getenv("NLSPATH"));
                   },
                   {.env = {{"NLSPATH", before}}})
            .out;
    };
    const string derived = string(getenv("KVR2_BUILD_DIR")) + "/usr/share/locale/%L/%N";
    const string installed = "/opt/tqx/cobol/rte/usr/share/locale/%L/%N";
    EXPECT_EQ(nlspath(std::nullopt), derived + ":" + installed);
    EXPECT_EQ(nlspath("/a/%N"), derived + ":" + installed + ":/a/%N");
    EXPECT_EQ(nlspath(installed + ":/a/%N"), derived + ":" + installed + ":/a/%N");
    EXPECT_EQ(nlspath("/a/%N:" + derived), installed + ":/a/%N:" + derived);
}

} // namespace
