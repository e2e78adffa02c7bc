// Faults these tests are there to catch: a catalog looked for in the wrong place; per-thread
// scratch that is shared, shrinks or leaks; a record made where none was asked for.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "frame/run_unit.h"
#include "frame/run_unit/library_load.h"
#include "frame/thread_record.h"

namespace {

TEST(CatalogPath, FollowsFromTheLibrarysPlace)
{
    const std::pair<const char *, const char *> cases[] = {
        {"/opt/kvr2/lib/", "/opt/kvr2/usr/share/locale/%L/%N"},
        {"/opt/kvr2/usr/lib/", "/opt/kvr2/usr/share/locale/%L/%N"},
        {"/usr/lib/", "/usr/share/locale/%L/%N"},
        {"/usr/lib", "/usr/share/locale/%L/%N"},
        {"/opt/kvr2/lib/profiled/", "/opt/kvr2/usr/share/locale/%L/%N"},
        {"/opt/kvr2/profiled/", "/opt/kvr2/usr/share/locale/%L/%N"},
        {"/opt/usr/", "/opt/usr/share/locale/%L/%N"},
        {"/home/me/bin/", "/home/me/bin/%L/%N"},
        {"/x/mylib/", "/x/mylib/%L/%N"},
        {"", "/%L/%N"},
    };
    for (const auto &[directory, expected] : cases) {
        char path[256];
        zvkCatalogPath(directory, path, sizeof path);
        EXPECT_STREQ(path, expected) << directory;
    }
}

TEST(ThreadRecord, ScratchIsEachThreadsOwnAndGrows)
{
    std::thread([] {
        EXPECT_EQ(zvkThreadScratch(-1), nullptr) << "asking does not make a record";
        auto *record = static_cast<ZvkThreadRecord *>(zvkThreadScratch(0));
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(record->threadId, pthread_self());
        EXPECT_EQ(zvkThreadScratch(-1), record);
        auto *scratch = static_cast<char *>(zvkThreadScratch(17));
        EXPECT_EQ(record->scratchSize, 32u);
        memset(scratch, 'x', 32);
        EXPECT_EQ(zvkThreadScratch(3), scratch);
        auto *larger = static_cast<char *>(zvkThreadScratch(100000));
        memset(larger, 'y', 100000);
        EXPECT_EQ(zvkThreadScratch(0), record);
    }).join();
    EXPECT_NE(zvkThreadScratch(8), nullptr);
    zvkReleaseThreadRecord();
    EXPECT_EQ(zvkThreadScratch(-1), nullptr);
}

} // namespace
