// Faults these tests are there to catch: a backup that shows a moment that never was, or a verify
// that finds damage, while another program changes the file; a lock, or who holds it, that info
// does not show; a command that works on a file that somebody else has open.
#include "companions/stored_files.h"
#include "support/share.h"

namespace {

// The tool's standard output and exit status.
string tool(const string &arguments, int *status)
{
    string text;
    FILE *from = popen((string(KVR2_FILE_TOOL) + " " + arguments + " 2>&1").c_str(), "r");
    char part[512];
    for (size_t got; from && (got = fread(part, 1, sizeof part, from)) > 0;) text.append(part, got);
    *status = from ? WEXITSTATUS(pclose(from)) : -1;
    return text;
}

string counted(const char *key, int n)
{
    char text[32];
    snprintf(text, sizeof text, "%s%04d%04d", key, n % 10000, n % 10000);
    return text;
}

class FileTool : public testing::Test {
protected:
    void SetUp() override { setenv("LD_LIBRARY_PATH", (string(getenv("KVR2_BUILD_DIR")) + "/companions").c_str(), 1); }
};

// The writer raises record 1, then record 2, without end: at each moment the first is as high, or
// higher by one.
TEST_F(FileTool, WorksBesideAWriter)
{
    FileAttributes indexed = indexedFile(), numbered = relativeFile();
    numbered.longest = numbered.shortest = 5000; // over several pages
    for (const FileAttributes &attributes : {indexed, numbered}) {
        bool relative = attributes.organization == ZVK_FILE_RELATIVE;
        TemporaryDirectory directory;
        const string path = directory.file("f"), copy = directory.file("copy");
        {
            CompiledFile file("stl-" + path, attributes);
            ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
            ASSERT_LE(file.write(relative ? "0000" : counted("000001", 0), {.relativeKey = 1}), "02");
            ASSERT_LE(file.write(relative ? "0000" : "00000200009999", {.relativeKey = 2}), "02");
            ASSERT_EQ(file.close(), "00");
        }
        int begun[2];
        ASSERT_EQ(pipe(begun), 0);
        pid_t writer = fork();
        if (writer == 0) {
            CompiledFile file("stl-" + path, attributes);
            if (file.open(ZVK_OPEN_IO) != "00") _exit(1);
            for (int n = 1;; ++n) {
                if (n == 2 && write(begun[1], "", 1) != 1) _exit(3);
                for (uint64_t record : {1, 2}) {
                    string text = relative ? string(5000, static_cast<char>('A' + n % 26)) : "";
                    text = relative ? text.replace(0, 4, counted("", n).substr(0, 4))
                                    : counted(record == 1 ? "000001" : "000002", n).substr(0, 10) +
                                          counted("", n + static_cast<int>(record) * 5000).substr(0, 4);
                    if (file.rewrite(text, {.relativeKey = record}) > "02") _exit(2);
                }
            }
        }
        ::close(begun[1]);
        char byte;
        ASSERT_EQ(read(begun[0], &byte, 1), 1);
        ::close(begun[0]);
        int highest = 0;
        for (int round = 0; round < shareOf(12); ++round) {
            int status, one = -1, two = -1;
            EXPECT_EQ(tool("backup -f " + path + " " + copy, &status), "");
            ASSERT_EQ(status, 0);
            string said = tool("verify " + copy + " " + path, &status);
            ASSERT_EQ(status, 0) << said;
            string text = tool("dump " + copy, &status);
            size_t place = relative ? 0 : 6, line = text.find('\n') + 1;
            one = atoi(text.substr(place, 4).c_str()), two = atoi(text.substr(line + place, 4).c_str());
            EXPECT_TRUE(one == two || one == (two + 1) % 10000) << one << " " << two;
            if (one > highest) highest = one;
        }
        EXPECT_GT(highest, 0);
        int status;
        string said = tool("compact " + path + "; " + KVR2_FILE_TOOL + " info " + path, &status);
        EXPECT_EQ(said.find("in use") != string::npos, true) << said;
        EXPECT_NE(said.find("in use by   " + std::to_string(writer)), string::npos) << said;
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
    }
}

TEST_F(FileTool, TellsWhoHoldsWhichRecord)
{
    TemporaryDirectory directory;
    const string path = directory.file("f");
    Peer other("stl-" + path, relativeFile());
    ASSERT_EQ(other.open(ZVK_OPEN_OUTPUT), "00");
    for (uint64_t n = 1; n <= 9; ++n) ASSERT_EQ(other.write("x", {.relativeKey = n}), "00");
    ASSERT_EQ(other.close(), "00");
    ASSERT_EQ(other.open(ZVK_OPEN_IO), "00");
    ASSERT_EQ(other.read({.relativeKey = 7}), "00");
    int status;
    string said = tool("info " + path, &status);
    EXPECT_EQ(status, 0);
    EXPECT_NE(said.find("record 7 locked"), string::npos) << said;
    EXPECT_NE(said.find("writer"), string::npos) << said;
    ASSERT_EQ(other.close(), "00");
    said = tool("info " + path, &status);
    EXPECT_NE(said.find(getuid() == 0 ? "in use by   nobody" : "processes of others"), string::npos) << said;
}

// What is written over is nobody else's.
TEST_F(FileTool, DoesNotWriteOverAFileInUse)
{
    TemporaryDirectory directory;
    const string from = directory.file("from"), to = directory.file("to");
    for (const string &path : {from, to}) {
        CompiledFile file("stl-" + path, indexedFile());
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        ASSERT_EQ(file.write(counted(path == from ? "000001" : "000002", 1)), "00");
        ASSERT_EQ(file.close(), "00");
    }
    CompiledFile file("stl-" + to, indexedFile());
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    for (const char *command : {"backup -f ", "rebuild -f ", "copy -f "}) {
        int status;
        string said = tool(command + from + " " + to, &status);
        EXPECT_EQ(status, 1) << command << said;
        EXPECT_NE(said.find("in use"), string::npos) << command << said;
        ASSERT_EQ(file.rewrite(counted("000002", 7)), "00") << command;
    }
    ASSERT_EQ(file.close(), "00");
}

// A program that has the file for itself alone knows of no readers: nothing certain can be read.
TEST_F(FileTool, ReadsNoStoreUnderAnExclusiveWriter)
{
    TemporaryDirectory directory;
    const string path = directory.file("f"), copy = directory.file("copy");
    CompiledFile file("stl-" + path, indexedFile());
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    ASSERT_EQ(file.write(counted("000001", 1)), "00");
    int status;
    for (const string &command : {"backup " + path + " " + copy, "verify " + path, "rebuild " + path + " " + copy}) {
        string said = tool(command, &status);
        EXPECT_EQ(status, 1) << command << said;
        EXPECT_NE(said.find("kvr2-file info says"), string::npos) << said;
        EXPECT_NE(access(copy.c_str(), F_OK), 0);
    }
    string said = tool("info " + path, &status);
    EXPECT_EQ(status, 0) << said;
    EXPECT_NE(said.find("open for itself alone"), string::npos) << said;
    ASSERT_EQ(file.close(), "00");
}

// Pages that a writer uses again are no damage.
TEST_F(FileTool, InfoBesideAWriter)
{
    TemporaryDirectory directory;
    const string path = directory.file("f");
    {
        CompiledFile file("stl-" + path, indexedFile());
        ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
        for (int n = 0; n < 2000; ++n) ASSERT_LE(file.write(counted(std::to_string(100000 + n).c_str(), n)), "02");
        ASSERT_EQ(file.close(), "00");
    }
    pid_t writer = fork();
    if (writer == 0) {
        CompiledFile file("stl-" + path, indexedFile());
        if (file.open(ZVK_OPEN_IO) != "00") _exit(1);
        for (int n = 0;; n = (n + 7) % 2000) file.rewrite(counted(std::to_string(100000 + n).c_str(), n));
    }
    for (int round = 0; round < shareOf(40); ++round) {
        int status;
        string said = tool("info " + path, &status);
        EXPECT_EQ(status, 0) << said;
        ASSERT_EQ(said.find("damaged"), string::npos) << said;
        ASSERT_NE(said.find("records     2000"), string::npos) << said;
    }
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
}

} // namespace
