// Faults these tests are there to catch: a module taken from the wrong folder, or not found where
// it is.
#include <cstdio>
#include <dlfcn.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "frame/module_load.h"
#include "support/child.h"

using std::string;

namespace {

struct LoadModule : testing::Test {
    TemporaryDirectory directory;
    const string module = string(getenv("KVR2_BUILD_DIR")) + "/lib/plain_module.so";
    string folder(const string &name)
    {
        mkdir(directory.file(name).c_str(), 0777);
        return directory.file(name) + "/";
    }
    // Under a name that the loader does not know yet.
    void install(const string &where, const string &name)
    {
        ASSERT_EQ(symlink(module.c_str(), (where + name).c_str()), 0);
    }
    static bool loads(const string &name, const char *libDir, const char *installDir)
    {
        void *handle = zvkLoadModule(name.c_str(), RTLD_NOW, libDir, installDir);
        if (handle) dlclose(handle);
        return handle;
    }
};

TEST_F(LoadModule, LooksInItsFolders)
{
    string lib = folder("lib"), installed = folder("installed");
    install(lib, "a_64r.so");
    install(installed, "b_64r.so");
    EXPECT_TRUE(loads("a_64r.so", lib.c_str(), installed.c_str()));
    EXPECT_TRUE(loads("b_64r.so", lib.c_str(), installed.c_str()));
    EXPECT_TRUE(loads("b_64r.so", nullptr, installed.c_str()));
    EXPECT_TRUE(loads("b_64r.so", (string(5000, 'x') + "/").c_str(), installed.c_str()));
    EXPECT_FALSE(loads("c_64r.so", lib.c_str(), installed.c_str()));
    EXPECT_FALSE(loads("c_64r.so", nullptr, nullptr));
}

TEST_F(LoadModule, ProfiledFolderFallsBackToItsParent)
{
    string lib = folder("lib"), profiled = folder("lib/profiled"), other = folder("lib/other");
    install(lib, "d_64r.so");
    writeFile(profiled + "e_64r.so", "no shared object");
    chmod((profiled + "e_64r.so").c_str(), 0755);
    install(lib, "e_64r.so");
    EXPECT_TRUE(loads("d_64r.so", profiled.c_str(), nullptr));
    EXPECT_TRUE(loads("e_64r.so", profiled.c_str(), nullptr)) << "there, but it does not load";
    EXPECT_FALSE(loads("d_64r.so", other.c_str(), nullptr));
}

} // namespace
