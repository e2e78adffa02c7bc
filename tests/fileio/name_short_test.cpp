// A file's name when storage is short.
//
// Faults that these tests are there to catch: a name that could not be resolved taken as it is
// written, so that another file than the one meant is made with a good status; a generation entered
// whose file nobody can name. Each allocation of an OPEN fails in turn; the linker leads the
// library's calls here.
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <unistd.h>

#include "kvr2/generations.h"
#include "support/child.h"
#include "support/compiled_file.h"
#include "support/require.h"

using std::string;

static int failAfter = -1; // allocations that still succeed; below 0: all
static bool fails() { return failAfter >= 0 && failAfter-- == 0; }

extern "C" {
void *__real_malloc(size_t size);
char *__real_strdup(const char *text);
char *__real_strndup(const char *text, size_t size);
void *__real_calloc(size_t count, size_t size);
void *__wrap_malloc(size_t size);
char *__wrap_strdup(const char *text);
char *__wrap_strndup(const char *text, size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_malloc(size_t size) { return fails() ? nullptr : __real_malloc(size); }
char *__wrap_strdup(const char *text) { return fails() ? nullptr : __real_strdup(text); }
char *__wrap_strndup(const char *text, size_t size) { return fails() ? nullptr : __real_strndup(text, size); }
void *__wrap_calloc(size_t count, size_t size) { return fails() ? nullptr : __real_calloc(count, size); }
}

namespace {

std::set<string> filesIn(const string &directory)
{
    std::set<string> names;
    for (const auto &entry : std::filesystem::directory_iterator(directory))
        names.insert(entry.path().filename().string());
    return names;
}

TEST(NameShort, NoOtherFileIsMade)
{
    struct Case {
        string assignment, file;
    };
    for (const Case &each :
         {Case{"rsd-$WHERE/rejects", "rejects"}, Case{"rsd-statements(+1)", "statements.g0001v00"}}) {
        int failures = 0;
        bool came = false;
        for (int n = 0; n < 60 && !came; n++) {
            TemporaryDirectory directory;
            ChildRun run = runChild(
                [&] {
                    setenv("WHERE", directory.path().c_str(), 1);
                    GDG_Create(const_cast<char *>("statements"), 5, 0, 0, "sys");
                    CompiledFile file(each.assignment, {.longest = 20, .shortest = 20});
                    failAfter = n;
                    string status = file.open(ZVK_OPEN_OUTPUT);
                    bool all = failAfter >= 0; // nothing was left to fail
                    failAfter = -1;
                    fputs(status.c_str(), stdout);
                    exit(all ? 10 : 0);
                },
                {.directory = directory.path()});
            came = run.status == 10;
            std::set<string> names = filesIn(directory.path());
            names.erase("statements.catalogue");
            if (run.out < "10") {
                EXPECT_EQ(names, std::set<string>{each.file}) << each.assignment << " " << n;
            } else {
                failures++;
                EXPECT_TRUE(names.empty() || names == std::set<string>{each.file}) << each.assignment << " " << n;
            }
        }
        EXPECT_TRUE(came) << each.assignment;
        EXPECT_GE(failures, 3) << each.assignment;
    }
}

} // namespace
