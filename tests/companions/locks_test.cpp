// Faults these tests are there to catch: updates of two processes that overwrite each other; a file or record open to somebody who must be kept out, or kept from
// somebody who may have it; a lock that outlives its time.
#include "stored_files.h"

namespace {

TEST(Sharing, TwoProcessesLoseNoUpdate)
{
    TemporaryDirectory directory;
    CompiledFile file(directory.file("i"), indexedFile());
    file.open(ZVK_OPEN_OUTPUT);
    file.write("000001aaaabbbb000000");
    file.close();
    constexpr int updates = 500;
    auto worker = [&] {
        CompiledFile own(directory.file("i"), indexedFile());
        if (own.open(ZVK_OPEN_IO) != "00") _exit(1);
        for (int done = 0; done < updates;) {
            own.move("000001");
            string status = own.read();
            if (status == "99") {
                usleep(50);
                continue;
            }
            if (status != "00") _exit(2);
            char text[32];
            snprintf(text, sizeof text, "000001aaaabbbb%06d", atoi(own.record().substr(14).c_str()) + 1);
            if (own.rewrite(text) != "00") _exit(3);
            ++done;
        }
        own.close();
        _exit(0);
    };
    pid_t children[2];
    for (pid_t &child : children)
        if ((child = fork()) == 0) worker();
    for (pid_t child : children) {
        int ending;
        waitpid(child, &ending, 0);
        EXPECT_EQ(ending, 0);
    }
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    file.move("000001");
    EXPECT_EQ(file.read(), "00");
    EXPECT_EQ(file.record().substr(14), "001000");
    // The record is locked now, for another open of this process, too.
    CompiledFile other(directory.file("i"), indexedFile());
    ASSERT_EQ(other.open(ZVK_OPEN_IO), "00");
    other.move("000001");
    EXPECT_EQ(other.read(), "99");
    EXPECT_EQ(other.verb(other.fcb->deleteRecord, {}), "99");
    EXPECT_EQ(other.read({.options = ZVK_REQUEST_IGNORE_LOCK}), "00");
    file.close();
    EXPECT_EQ(other.read(), "00");
    other.close();
}

} // namespace
