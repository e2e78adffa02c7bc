// Faults that these tests are there to catch: a file verb that crashes, ends the program, or loses
// or makes up a record where one allocation, or one call of the system, fails below it; a failure
// that is taken for an absent file, an absent record or the end of the file.
//
// What a program was told is done must be there when the file is opened again. Where CLOSE said
// that it failed, each record is as it was before OPEN or as the program was told.
#include <map>
#include <memory>

#include "stored_files.h"
#include "support/failing_calls.h"
#include "support/require.h"

namespace {

struct Shape {
    const char *what, *prefix;
    FileAttributes attributes;
};

const FileAttributes kIndexed = {.longest = 20,
                                 .shortest = 20,
                                 .organization = ZVK_FILE_INDEXED,
                                 .access = 0,
                                 .keys = {{6, 0, 0, {}}, {4, 6, ZVK_FILE_KEY_DUPLICATES, {}}}};

// SHARING WITH NO OTHER: changes are kept together until CLOSE, or until there are many.
FileAttributes alone(FileAttributes attributes)
{
    attributes.share = ZVK_FILE_SHARE_NONE;
    return attributes;
}

using Records = std::map<int, string>;

// One file, what was in it before and what is in it by what the program was told.
struct Run {
    const Shape &shape;
    CompiledFile file;
    Records before, now;
    bool closed = false;  // with a good status
    bool made = true;     // OPEN did not fail
    bool anew = false;    // made by OPEN OUTPUT, for which nobody else has it
    bool emptied = false; // OPEN OUTPUT did fail, perhaps too late

    Run(const Shape &s, const string &name) : shape(s), file(s.prefix + name, s.attributes) {}

    bool sequential() const { return shape.attributes.organization == 0; }
    string text(int n, const char *word) const
    {
        return pad("00000" + std::to_string(n) + word, shape.attributes.longest == 20 ? 20 : 10);
    }
    static FileRequest number(int n) { return {.relativeKey = static_cast<uint64_t>(n)}; }

    // Two records.
    void make()
    {
        REQUIRE(file.open(ZVK_OPEN_OUTPUT) == "00");
        for (int n : {1, 2}) {
            REQUIRE(file.write(text(n, "old"), number(n)) <= "02");
            before[n] = text(n, "old");
        }
        REQUIRE(file.close() == "00");
        now = before;
    }

    void open(uint16_t mode)
    {
        const string status = file.open(mode);
        REQUIRE(status != "35" && status != "05"); // it is there
        made = status < "10";
        closed = false;
        if (mode == ZVK_OPEN_OUTPUT) {
            now.clear();
            anew = true;
            if (made)
                before.clear();
            else
                emptied = true;
        }
    }
    void close() { closed = file.close() < "10"; }
    void write(int n)
    {
        if (file.write(text(n, "new"), number(n)) < "10") now[n] = text(n, "new");
    }

    void change()
    {
        open(ZVK_OPEN_IO);
        if (!made) return;
        file.move(text(1, "old"));
        REQUIRE(file.read(number(1)) != "23");
        file.move(text(1, "new"));
        string status = file.rewrite(text(1, "new"), number(1));
        REQUIRE(status != "23");
        if (status < "10") now[1] = text(1, "new");
        write(3);
        REQUIRE(file.verb(file.fcb->start, {.relation = ZVK_RELATION_FIRST}) != "23");
        REQUIRE(file.read(next) != "10");
        file.move(text(2, "old"));
        status = file.verb(file.fcb->deleteRecord, number(2));
        REQUIRE(status != "23");
        if (status < "10") now.erase(2);
        close();
    }
    void extend()
    {
        open(ZVK_OPEN_EXTEND);
        if (!made) return;
        write(3);
        // A record that was refused leaves no gap, and the file can be gone on with.
        write(4);
        close();
        read();
    }
    void read()
    {
        if (file.open(ZVK_OPEN_INPUT) >= "10") return;
        const size_t fewest = closed ? now.size() : before.size();
        for (size_t seen = 0;; seen++) {
            const string status = file.read(next);
            if (status >= "10") {
                REQUIRE(status != "10" || seen >= fewest);
                break;
            }
        }
        file.close();
    }
    void makeAnew()
    {
        open(ZVK_OPEN_OUTPUT);
        if (!made) return;
        write(1);
        write(3);
        close();
    }

    void check()
    {
        if (file.fcb->mode) file.close();
        if (file.fcb->mode) file.close();
        if (emptied && file.open(ZVK_OPEN_INPUT) != "00") { // then it can be made again
            REQUIRE(file.open(ZVK_OPEN_OUTPUT) == "00");
            REQUIRE(file.close() == "00");
            before.clear();
        } else if (emptied) {
            REQUIRE(file.close() == "00");
        }
        REQUIRE(file.open(ZVK_OPEN_INPUT) == "00");
        Records found;
        while (file.read(next) < "10") {
            const string record = pad(file.record(), shape.attributes.longest == 20 ? 20 : 10);
            found[atoi(record.substr(0, 6).c_str())] = record;
        }
        REQUIRE(file.status() == "10");
        REQUIRE(file.close() == "00");
        const bool sure = closed || (!sequential() && !shape.attributes.share && !anew);
        for (int n = 0; n < 10; n++) {
            const string is = found.count(n) ? found[n] : "", told = now.count(n) ? now[n] : "",
                         was = before.count(n) ? before[n] : "";
            if (is == told || (!sure && is == was)) continue;
            fprintf(stderr, "%s, record %d: \"%s\", told \"%s\", was \"%s\", %s\n", shape.what, n, is.c_str(),
                    told.c_str(), was.c_str(), closed ? "closed" : "not closed");
            fprintf(stderr, "%s failed\n", failingCall.name);
            exit(3);
        }
    }
};

const Shape kShapes[] = {
    {"lines", "lsq-", varying},
    {"fixed records", "rsd-", fixed10},
    {"variable records", "rsd-", varying},
    {"binary records", "wbr-", fixed10},
    {"stored records", "stl-", varying},
    {"a relative file", "stl-", relativeFile()},
    {"a relative file of this program alone", "stl-", alone(relativeFile())},
    {"an indexed file", "stl-", kIndexed},
    {"an indexed file of this program alone", "stl-", alone(kIndexed)},
};

void failEachOf(void (Run::*path)(), bool keyed, bool sequential)
{
    for (Calls kind : {Calls::Storage, Calls::System}) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        if (kind == Calls::Storage) continue;
#endif
        for (const Shape &shape : kShapes) {
            if (!(shape.attributes.organization == 0 ? sequential : keyed)) continue;
            TemporaryDirectory directory;
            std::unique_ptr<Run> run;
            const int calls = failEach(
                kind, [&] { (run.get()->*path)(); },
                [&] {
                    run = std::make_unique<Run>(shape, directory.file("f" + std::to_string(getpid())));
                    run->make();
                },
                [&] { run->check(); }, Ending::Orderly);
            EXPECT_GT(calls, kind == Calls::System ? 2 : 0)
                << shape.what << (kind == Calls::System ? ", calls" : ", storage");
        }
    }
}

TEST(FailingVerbs, ReadWriteRewriteStartDelete) { failEachOf(&Run::change, true, false); }
TEST(FailingVerbs, ExtendAndRead) { failEachOf(&Run::extend, false, true); }
TEST(FailingVerbs, MadeAnew) { failEachOf(&Run::makeAnew, true, true); }

} // namespace
