// Faults these tests are there to catch: records lost that were promised, half records, and an index that disagrees with its records, after the program was killed.
#include <random>

#include "stored_files.h"

namespace {

// A writer is killed at some moment; a pipe tells which records were acknowledged, or closed over.
TEST(Crash, KilledWriterLosesNothingThatWasPromised)
{
    std::mt19937 random(3);
    for (int round = 0; round < 120; ++round) {
        TemporaryDirectory directory;
        bool indexed = round % 2;
        string name = (indexed ? "stl-" : "rsd-") + directory.file("f");
        FileAttributes attributes = indexed ? indexedFile() : varying;
        if (indexed) {
            CompiledFile made(name, attributes);
            made.open(ZVK_OPEN_OUTPUT);
            made.close();
        }
        int promised[2];
        ASSERT_EQ(pipe(promised), 0);
        pid_t child = fork();
        if (child == 0) {
            CompiledFile file(name, attributes);
            int n = 0;
            for (int opened = 0;; ++opened) {
                if (file.open(indexed ? ZVK_OPEN_IO : opened ? ZVK_OPEN_EXTEND : ZVK_OPEN_OUTPUT) > "09") _exit(1);
                for (int i = 0; i < 100; ++i) {
                    char text[32];
                    snprintf(text, sizeof text, "%06daaaa%04d", n, n);
                    if (file.write(text) > "09") _exit(2);
                    ++n;
                    if (indexed && write(promised[1], &n, sizeof n) < 0) _exit(3);
                }
                if (file.close() != "00") _exit(4);
                if (!indexed && write(promised[1], &n, sizeof n) < 0) _exit(5);
                if (n > 9000) _exit(0);
            }
        }
        close(promised[1]);
        usleep(500 + random() % 20000);
        kill(child, SIGKILL);
        int ending, n = 0, last = 0;
        waitpid(child, &ending, 0);
        ASSERT_TRUE(WIFSIGNALED(ending) || WEXITSTATUS(ending) == 0) << ending;
        while (read(promised[0], &n, sizeof n) == sizeof n) last = n;
        close(promised[0]);
        CompiledFile file(name, attributes);
        string opened = file.open(ZVK_OPEN_INPUT);
        if (!indexed && opened == "35" && last == 0) continue; // killed before it made the file
        ASSERT_EQ(opened, "00");
        int count = 0;
        while (file.read({.options = ZVK_REQUEST_NEXT}) == "00") ASSERT_EQ(atoi(file.record().substr(0, 6).c_str()), count++);
        EXPECT_EQ(file.status(), "10");
        EXPECT_GE(count, last);
        if (indexed && count) { // the alternate keys know the same records
            file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST, .key = 2});
            int other = 0;
            while (file.read({.options = ZVK_REQUEST_NEXT}) < "10") ++other;
            EXPECT_EQ(other, count);
        }
        file.close();
    }
}

} // namespace
