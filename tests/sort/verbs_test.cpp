// SORT, MERGE, RELEASE and RETURN: the library's side, first over an engine that is the test's own,
// then over the real one.
//
// Faults that these tests are there to catch: words that reach the engine changed or in the wrong
// place; buffer, fill and spill file that do not agree at the limits; records that cross a chunk;
// input that is empty; SORT-RETURN, error number and message 26 that do not follow the engine; an
// active sort that the end does not stop; files that a signal leaves behind; a failing load that
// has an effect.
#include <atomic>
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

#include "kvr2/messages.h"
#include "statement.h"
#include "support/pattern.h"
#include "test_file.h"

namespace {

struct EngineCall {
    int32_t op;
    uint64_t format;
    uint32_t length;
    const void *fourth;
    std::string fifth;
    SortEighth eighth;
    SortIoRecord input, output;
    SortControlRecord control;
    std::string inPath, outPath, memory; // copies
    uint64_t inFileSize;
};
std::vector<EngineCall> calls;
std::function<int32_t(const EngineCall &)> behaviour;

constexpr char kFake[] = "/tests/fake_engine";

} // namespace

extern "C" __attribute__((visibility("default"), used)) int32_t
testSortEngine(int32_t op, uint64_t format, uint32_t length, const void *fourth, const char *fifth, SortEighth eighth,
               SortIoRecord input, SortIoRecord output, SortControlRecord control)
{
    EngineCall call{op,
                    format,
                    length,
                    fourth,
                    fifth ? fifth : "",
                    eighth,
                    input,
                    output,
                    control,
                    input.path ? input.path : "",
                    output.path ? output.path : "",
                    std::string(reinterpret_cast<char *>(input.memory), input.memory ? input.bytes : 0),
                    0};
    if (input.path) call.inFileSize = std::filesystem::file_size(input.path);
    calls.push_back(call);
    return behaviour ? behaviour(call) : 0;
}

KVR2_PIECE(sort_words)
{
    Statement sort(ZVK_SORT_FIXED, 20);
    TestFile in, out;
    FCB *inputs[] = {&in.fcb}, *outputs[] = {&out.fcb};
    sort.usingList = {1, 0, inputs};
    sort.givingList = {1, 0, outputs};
    strcpy(sort.fifth, "ctl file  ");
    sort.eighth[0] = 11, sort.eighth[1] = 12, sort.eighth[2] = 13;
    REQUIRE(sort.op(2) == 0);
    REQUIRE(calls.size() == 1);
    const EngineCall &call = calls[0];
    REQUIRE(call.op == 2 && call.format == 1 && call.length == 20 && call.fourth == sort.keys.data());
    REQUIRE(call.fifth == "ctl" && strcmp(sort.fifth, "ctl") == 0);
    REQUIRE(call.eighth.collating == 11 && call.eighth.memory == 12 && call.eighth.flags == 13);
    REQUIRE(call.input.count == 1 && call.input.files == inputs && !call.input.path && !call.input.bytes &&
            !call.input.memory);
    REQUIRE(call.output.count == 1 && call.output.files == outputs && !call.output.path && !call.output.memory);
    REQUIRE(call.control.engineFlags == 77 && call.control.program == &sort.program.pcb &&
            call.control.tempDir == std::string(getenv("TMPDIR")));
    REQUIRE(call.control.errnoOut && call.control.errnoValue == 0);

    // A failing engine: SORT-RETURN, message, number.
    behaviour = [](const EngineCall &failing) { return *failing.control.errnoOut = 4711, 16; };
    REQUIRE(sort.op(1) == 16);
    uint32_t number = 0;
    REQUIRE(ZVKGETSORTERRNO(&number) == 4711 && number == 4711);
    sort.block.messageOff = 1;
    REQUIRE(sort.op(1) == 16);
    sort.block.messageOff = 0;
    behaviour = nullptr;
    REQUIRE(sort.op(7) == 0);
    REQUIRE(zvkGetSortErrno(&number) == 0);
    sort.block.lineNumber = 456;
    REQUIRE(sort.op(4) == 16);
    REQUIRE(calls.size() == 3);
}

KVR2_PIECE(sort_buffer)
{
    // All in the buffer: sorted in place, with padding.
    Statement sort(ZVK_SORT_FIXED, 8);
    REQUIRE(sort.op(1) == 0 && calls.empty());
    REQUIRE(release("bb") == 7 && release("aaaaaaaa") == 7);
    REQUIRE(sort.op(3) == 0 && calls.size() == 1);
    REQUIRE(calls[0].op == 1 && calls[0].memory == "bb      aaaaaaaa" && calls[0].outPath.empty() &&
            calls[0].inPath.empty());
    REQUIRE(calls[0].output.bytes == 16 && calls[0].output.memory == calls[0].input.memory);
    REQUIRE(next() == "bb      " && next() == "aaaaaaaa" && next() == "END" && next() == "END");

    // Exactly full is not spilled; one more is.
    Statement full(3, kBuffer / 4);
    std::string quarter(kBuffer / 4, 'q');
    REQUIRE(full.op(1) == 0);
    // A sort with files on both sides may be in the INPUT PROCEDURE.
    Statement within(ZVK_SORT_FIXED, 5);
    within.usingList.count = within.givingList.count = 1;
    REQUIRE(within.op(1) == 0);
    calls.pop_back();
    for (int i = 0; i < 4; i++) REQUIRE(release(quarter) == 7);
    std::string directory = getenv("TMPDIR");
    if (directory.back() != '/') directory += '/';
    std::string in = directory + spillName("sortwki."), out = directory + spillName("sortwko.");
    REQUIRE(!std::filesystem::exists(in));
    REQUIRE(release(quarter) == 7);
    REQUIRE(std::filesystem::file_size(in) == kBuffer);
    behaviour = [](const EngineCall &call) {
        writeFile(call.outPath, readFile(call.inPath) + call.memory);
        return 0;
    };
    REQUIRE(full.op(3) == 0);
    REQUIRE(calls[1].inPath == in && calls[1].outPath == out && calls[1].inFileSize == kBuffer &&
            calls[1].input.bytes == kBuffer / 4);
    REQUIRE(!std::filesystem::exists(in));
    for (int i = 0; i < 5; i++) REQUIRE(next() == quarter);
    REQUIRE(next() == "END" && !std::filesystem::exists(out));

    // Too long for the buffer: refused, and a record longer than the sort's is cut.
    Statement variable(ZVK_SORT_VARIABLE, 1 << 20);
    REQUIRE(variable.op(1) == 0);
    REQUIRE(release(std::string(kBuffer - 3, 'x')) == 16);
    REQUIRE(release(std::string(kBuffer - 4, 'x')) == 7);
    REQUIRE(release("") == 7); // its length word no longer fits
    REQUIRE(variable.op(3) == 0 && next().size() == kBuffer - 4 && next() == "" && next() == "END");
    Statement cut(ZVK_SORT_FIXED, 4);
    REQUIRE(cut.op(1) == 0);
    REQUIRE(release("123456") == 7 && cut.op(3) == 0 && calls.back().memory == "1234");
    REQUIRE(release("1234") == 16); // the engine has run

    // Other formats are not filled: the next record follows a short one directly, though it counts
    // in full.
    Statement unfilled(3, 8);
    REQUIRE(unfilled.op(1) == 0);
    REQUIRE(release("ab") == 7 && release("cdefghij") == 7 && unfilled.op(3) == 0);
    REQUIRE(calls.back().memory.size() == 16 && calls.back().memory.substr(0, 10) == "abcdefghij");
}

// Variable records whose length words and bytes lie across the chunks in every way.
KVR2_PIECE(sort_chunks)
{
    behaviour = [](const EngineCall &call) {
        writeFile(call.outPath, readFile(call.inPath) + call.memory);
        return 0;
    };
    for (size_t shift = 0; shift < 12; shift++) {
        Statement sort(ZVK_SORT_VARIABLE, 5000);
        REQUIRE(sort.op(1) == 0);
        std::vector<std::string> records = {std::string(shift, 's')};
        for (size_t i = 0; i < 700; i++) records.push_back(numbered(i, 1020));
        for (const auto &record : records) REQUIRE(release(record) == 7);
        REQUIRE(sort.op(3) == 0);
        for (const auto &record : records) REQUIRE(next() == record);
        REQUIRE(next() == "END");
    }
    Statement fixed(ZVK_SORT_FIXED, 999);
    fixed.usingList.count = 1;
    behaviour = [](const EngineCall &call) {
        std::string all;
        for (size_t i = 0; i < 600; i++) all += numbered(i, 999);
        writeFile(call.outPath, all);
        return 0;
    };
    REQUIRE(fixed.op(2) == 0 && calls.back().op == 2);
    for (size_t i = 0; i < 600; i++) REQUIRE(next() == numbered(i, 999));
    REQUIRE(next() == "END");
    // What is not returned to its end stays behind, until the next result of this thread takes its
    // name.
    REQUIRE(fixed.op(2) == 0 && next() == numbered(0, 999));
    std::string unread = std::string(getenv("TMPDIR")) + "/" + spillName("sortwko.");
    fixed.usingList.count = 0;
    REQUIRE(fixed.op(1) == 0 && fixed.op(3) == 0 && next() == "END" && std::filesystem::file_size(unread) == 600 * 999);
    fixed.usingList.count = 1;
    REQUIRE(fixed.op(2) == 0 && next() == numbered(0, 999));
    for (size_t i = 1; i < 600; i++) REQUIRE(next() == numbered(i, 999));
    REQUIRE(next() == "END" && !std::filesystem::exists(unread));
    // Records longer than the buffer, between short ones; the last of them at the end.
    for (uint32_t format : {ZVK_SORT_FIXED, ZVK_SORT_VARIABLE}) {
        Statement longer(format, kBuffer + 1000);
        longer.usingList.count = 1;
        std::vector<std::string> records;
        for (size_t length : {kBuffer + 1000, kBuffer - 4, kBuffer + 1, size_t{7}, size_t{0}, kBuffer - 3, kBuffer})
            records.push_back(numbered(records.size(), format == ZVK_SORT_FIXED ? kBuffer + 1000 : length, 'a'));
        behaviour = [&](const EngineCall &call) {
            std::string all;
            for (const std::string &record : records) {
                auto word = static_cast<uint32_t>(record.size() + 4);
                if (format == ZVK_SORT_VARIABLE) all.append(reinterpret_cast<char *>(&word), 4);
                all += record;
            }
            writeFile(call.outPath, all);
            return 0;
        };
        REQUIRE(longer.op(1) == 0);
        for (const std::string &record : records) REQUIRE(next() == record);
        REQUIRE(next() == "END" && next() == "END");
    }
    // No records at all, but bytes: no engine writes this, and nobody may read beyond it.
    for (const char *word : {"\x03\0\0\0abcd", "\xFF\xFF\xFF\xFF", "\x09\0\0\0abcd", "ab"}) {
        Statement damaged(ZVK_SORT_VARIABLE, 100);
        damaged.usingList.count = 1;
        behaviour = [&](const EngineCall &call) {
            return writeFile(call.outPath, std::string(word, word[1] == 'b' ? 2 : word[0] == -1 ? 4 : 8)), 0;
        };
        REQUIRE(damaged.op(1) == 0 && next() == "FAILED" && damaged.sortReturn == 16 && next() == "END");
    }
    // A result that cannot be read is not the end of the data: no descriptor is left, or the file
    // is gone.
    std::string all;
    for (size_t i = 0; i < 600; i++) all += numbered(i, 999);
    behaviour = [&](const EngineCall &call) { return writeFile(call.outPath, all), 0; };
    Statement without(ZVK_SORT_FIXED, 999);
    without.usingList.count = 1;
    REQUIRE(without.op(1) == 0);
    rlimit before, none{3, 3};
    getrlimit(RLIMIT_NOFILE, &before);
    none.rlim_max = before.rlim_max;
    setrlimit(RLIMIT_NOFILE, &none);
    std::string first = next();
    setrlimit(RLIMIT_NOFILE, &before);
    REQUIRE(first == "FAILED" && without.sortReturn == 16);
    // Opened once: a program that uses its descriptors up in between reads on.
    REQUIRE(without.op(1) == 0 && next() == numbered(0, 999));
    setrlimit(RLIMIT_NOFILE, &none);
    for (size_t i = 1; i < 600; i++) REQUIRE(next() == numbered(i, 999));
    REQUIRE(next() == "END");
    setrlimit(RLIMIT_NOFILE, &before);
    // An empty result.
    behaviour = [](const EngineCall &call) { return writeFile(call.outPath, ""), 0; };
    REQUIRE(fixed.op(1) == 0 && next() == "END");
}

KVR2_PIECE(sort_empty)
{
    Statement sort(ZVK_SORT_FIXED, 10);
    TestFile out;
    out.records = {"old"};
    FCB *outputs[] = {&out.fcb};
    sort.givingList = {1, 0, outputs};
    out.fcb.requestedMode = ZVK_OPEN_INPUT;
    REQUIRE(sort.op(1) == 0 && sort.op(3) == 0 && calls.empty());
    REQUIRE(out.records.empty() && out.opens == 1 && out.closes == 1 && out.fcb.requestedMode == ZVK_OPEN_OUTPUT);
    sort.givingList = {};
    REQUIRE(sort.op(1) == 0 && sort.op(3) == 0 && calls.empty() && next() == "END");
    // A file that cannot be made is not claimed to be there.
    TestFile none;
    none.openStatus = 37;
    FCB *both[] = {&none.fcb, &out.fcb};
    sort.givingList = {2, 0, both};
    sort.block.messageOff = 1;
    REQUIRE(sort.op(1) == 0 && sort.op(3) == 16 && none.closes == 0 && out.opens == 2 && out.closes == 2 &&
            none.fcb.status == 37);
    uint32_t number;
    REQUIRE(zvkGetSortErrno(&number) == ZVK_SORT_EOPENOUT);
}

KVR2_PIECE(sort_end)
{
    _zvkSortMerge(11, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr); // nothing there yet
    Statement sort(ZVK_SORT_FIXED, 10);
    sort.usingList.count = 1;
    behaviour = [&](const EngineCall &call) {
        if (call.op == 11) {
            REQUIRE(!call.fourth && call.length == 0 && call.input.count == 0 && !call.control.errnoOut);
            return 0;
        }
        if (calls.size() == 1) _zvkSortMerge(11, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        return 0;
    };
    REQUIRE(sort.op(1) == 0);
    REQUIRE(calls.size() == 2 && calls[1].op == 11);
    REQUIRE(sort.op(1) == 0 && calls.size() == 3);
    // Not active: nothing to stop.
    _zvkSortMerge(11, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    REQUIRE(calls.size() == 3);
    // A sort within a sort.
    behaviour = [&](const EngineCall &) {
        if (calls.size() == 4) sort.op(1);
        return 0;
    };
    sort.op(1);
}

KVR2_PIECE(sort_without_engine)
{
    Statement sort(ZVK_SORT_FIXED, 10);
    REQUIRE(sort.op(1) == 99);
    REQUIRE(release("x") == 16);
    REQUIRE(sort.op(4) == 99);
}

// With the real engine: INPUT and OUTPUT PROCEDURE.
KVR2_PIECE(sort_procedures)
{
    for (uint32_t format : {1u, 2u})
        for (size_t count : {0u, 1u, 1000u, 100000u}) {
            Statement sort(format, 60, 8);
            sort.eighth[1] = 1 << 20;
            std::vector<std::string> records;
            REQUIRE(sort.op(1) == 0);
            for (size_t i = 0; i < count; i++) {
                records.push_back(numbered(i, format == 1 ? 60 : 8 + i % 52));
                REQUIRE(release(records.back()) == 7);
            }
            REQUIRE(sort.op(3) == 0);
            std::stable_sort(records.begin(), records.end());
            for (const auto &record : records) REQUIRE(next() == record);
            REQUIRE(next() == "END");
        }
    // USING to an OUTPUT PROCEDURE, an INPUT PROCEDURE to GIVING.
    TestFile in, out;
    FCB *inputs[] = {&in.fcb}, *outputs[] = {&out.fcb};
    in.records = {"b         ", "a         "};
    Statement sort(ZVK_SORT_FIXED, 10);
    sort.usingList = {1, 0, inputs};
    REQUIRE(sort.op(1) == 0);
    REQUIRE(next() == in.records[1] && next() == in.records[0] && next() == "END");
    Statement giving(ZVK_SORT_FIXED, 10);
    giving.givingList = {1, 0, outputs};
    REQUIRE(giving.op(1) == 0 && release("z") == 7 && release("y") == 7 && giving.op(3) == 0);
    REQUIRE(out.records == (std::vector<std::string>{"y         ", "z         "}));
    // A failure, and the run unit's end in the middle of a sort.
    in.openStatus = 35;
    REQUIRE(sort.op(1) == 16);
    uint32_t number;
    REQUIRE(zvkGetSortErrno(&number) == ZVK_SORT_EOPENIN);
    in.openStatus = 0;
    in.fcb.mode = 0;
    TestFile::onCall = [] {
        if (std::exchange(TestFile::onCall, nullptr))
            _zvkSortMerge(11, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    };
    sort.block.messageOff = 1;
    REQUIRE(sort.op(1) == 16 && zvkGetSortErrno(&number) == ZVK_SORT_EABANDONED);
}

// The first sorts of the process, all at once, each with spill files and runs of its own.
KVR2_PIECE(sort_threads)
{
    constexpr size_t kThreads = 6;
    std::vector<std::unique_ptr<Statement>> sorts;
    for (size_t i = 0; i < kThreads; i++) {
        sorts.push_back(std::make_unique<Statement>(i % 2 ? ZVK_SORT_FIXED : ZVK_SORT_VARIABLE, 60, 8));
        sorts[i]->eighth[1] = 200 << 10;
    }
    std::atomic<size_t> waiting{kThreads};
    std::vector<std::thread> threads;
    for (auto &sort : sorts)
        threads.emplace_back([&waiting, &sort] {
            waiting--;
            while (waiting) sched_yield();
            REQUIRE(sort->op(1) == 0);
            for (size_t i = 0; i < 10000; i++) REQUIRE(release(numbered(i, 60)) == 7);
            REQUIRE(sort->op(3) == 0);
            std::string last = next();
            for (size_t i = 1; i < 10000; i++) {
                std::string record = next();
                REQUIRE(record > last);
                last = record;
            }
            REQUIRE(next() == "END");
        });
    for (std::thread &thread : threads) thread.join();
}

// A signal ends the run unit while the engine sorts what was spilled.
KVR2_PIECE(sort_signal)
{
    Statement sort(3, kBuffer);
    REQUIRE(sort.op(1) == 0);
    const std::string record(kBuffer, 'r');
    for (int i = 0; i < 2; i++) REQUIRE(release(record) == 7);
    behaviour = [](const EngineCall &call) {
        REQUIRE(call.inFileSize == kBuffer);
        writeFile(call.outPath, call.memory);
        return raise(SIGTERM);
    };
    sort.op(3);
}

TEST(SortVerbs, TheEngineGetsTheStatementsWordsAndItsResultIsReported)
{
    TemporaryDirectory directory;
    ChildRun run = runPiece("sort_words", with(kFake, directory));
    EXPECT_GOOD(run);
    EXPECT_TRUE(holds(run.err + run.out, "ZVK026W"));
    std::string flat = run.err + run.out;
    std::replace(flat.begin(), flat.end(), '\n', ' ');
    EXPECT_TRUE(holds(flat, "program SORTPGM at line 123, sort error 4711"));
    EXPECT_TRUE(holds(flat, "program SORTPGM at line 456, sort error 0"));
    size_t messages = 0;
    for (size_t at = 0; (at = flat.find("ZVK026", at)) != std::string::npos; at++) messages++;
    EXPECT_EQ(messages, 2u);
}

TEST(SortVerbs, BufferSpillFilesAndChunks)
{
    TemporaryDirectory directory;
    for (const char *piece : {"sort_buffer", "sort_chunks", "sort_empty"})
        EXPECT_GOOD(runPiece(piece, with(kFake, directory))) << piece;
    ChildOptions slash = with(kFake, directory);
    slash.env[1].second = directory.path() + "/";
    EXPECT_GOOD(runPiece("sort_buffer", slash));
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST(SortVerbs, AnUnusableTemporaryDirectoryMeansTheCurrentOne)
{
    TemporaryDirectory directory;
    for (std::optional<std::string> unusable :
         {std::optional<std::string>("/nonexistent"), std::optional<std::string>(""), std::optional<std::string>()}) {
        ChildOptions options = with(kReal, directory);
        options.env[1].second = unusable;
        EXPECT_GOOD(runPiece("sort_procedures", options));
    }
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST(SortVerbs, TheEndStopsAnActiveSortAndASecondSortIsReported)
{
    TemporaryDirectory directory;
    ChildRun run = runPiece("sort_end", with(kFake, directory));
    EXPECT_TRUE(holds(run.err + run.out, "ZVK013"));
    EXPECT_EQ((run.err + run.out).find("sort/verbs_test.cpp"), std::string::npos) << run.err;
}

TEST(SortVerbs, ASignalLeavesNoSpillFiles)
{
    TemporaryDirectory directory;
    ChildRun run = runPiece("sort_signal", with(kFake, directory));
    EXPECT_TRUE(holds(run.err, "ZVK995")) << run.err;
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST(SortVerbs, WithoutAnEngineTheStatementHasNoEffect)
{
    TemporaryDirectory directory;
    ChildRun run = runPiece("sort_without_engine", with("/nowhere", directory));
    EXPECT_GOOD(run);
    EXPECT_TRUE(holds(run.err, "dlopen(libvortlite_64r.so) error"));
    EXPECT_TRUE(holds(run.err, "dlopen fail: libvortlite_64r.so"));
}

TEST(SortVerbs, ProceduresWithTheRealEngine)
{
    TemporaryDirectory directory;
    EXPECT_GOOD(runPiece("sort_procedures", with(kReal, directory)));
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST(SortVerbs, FirstSortsOfSeveralThreads)
{
    TemporaryDirectory directory;
    EXPECT_GOOD(runPiece("sort_threads", with(kReal, directory)));
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}
