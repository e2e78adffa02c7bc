// The sort engine, called as the library calls it.
//
// Faults that these tests are there to catch: a key type, form or direction in another order than
// its values; equal keys that change places; records lost, doubled or cut at the edges of segments,
// runs and buffers; a MERGE that does not see that its input is out of order; failures that are not
// reported, or leave files behind; what an abandoned sort leaves allocated or touches afterwards.
#include <csetjmp>
#include <csignal>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>

#include "kvr2/fileio.h"
#include "sort_data.h"
#include "support/child.h"
#include "support/require.h"
#include "support/share.h"
#include "test_file.h"

namespace {

SortEngine engine()
{
    static auto entry = [] {
        void *library =
            dlopen((std::string(getenv("KVR2_BUILD_DIR")) + "/companions/libvortlite_64r.so").c_str(), RTLD_NOW);
        return library ? reinterpret_cast<SortEngine>(dlvsym(library, "sortmerge", "KVR2_6.1.0")) : nullptr;
    }();
    return entry;
}

struct Keys {
    explicit Keys(const std::vector<TableSortKey> &keys) : words(8 + keys.size() * sizeof(TableSortKey))
    {
        auto count = static_cast<uint32_t>(keys.size());
        memcpy(words.data(), &count, 4);
        if (count) memcpy(words.data() + 8, keys.data(), keys.size() * sizeof(TableSortKey));
    }
    std::vector<uint8_t> words;
};

struct Call {
    int32_t op = ZVK_SORT_START;
    uint32_t format = ZVK_SORT_FIXED;
    uint32_t length = 40;
    Reference order;
    uint64_t memory = 0;
    std::string control;
    std::string directory = ".";
    SortIoRecord input{}, output{};
    uint32_t error = 0;

    int run() { return run(Keys(order.keys).words.data()); }
    int run(const uint8_t *keys)
    {
        SortEighth eighth{reinterpret_cast<uint64_t>(order.collating), memory, ZVK_SORT_STABLE};
        SortControlRecord record{};
        record.tempDir = directory.c_str();
        record.errnoOut = &error;
        return engine()(op, format, length, keys, control.c_str(), eighth, input, output, record);
    }
};

std::string released(const std::vector<Record> &records, bool variable)
{
    std::string all;
    for (const Record &record : records) {
        auto word = static_cast<uint32_t>(record.size() + 4);
        if (variable) all.append(reinterpret_cast<char *>(&word), 4);
        all += record;
    }
    return all;
}

std::vector<Record> makeRecords(size_t count, const std::vector<TableSortKey> &keys, bool variable, unsigned seed = 1)
{
    std::mt19937 random(seed);
    std::vector<Record> records(count);
    uint32_t number = 0;
    for (Record &record : records) {
        record = Record(variable ? 40 + random() % 60 : 40, '.');
        for (const TableSortKey &key : keys) fillKey(key, record, random);
        number++;
        memcpy(&record[36], &number, 4);
    }
    return records;
}

size_t filesIn(const std::string &directory)
{
    auto all = std::filesystem::directory_iterator(directory);
    return static_cast<size_t>(std::distance(begin(all), end(all)));
}

__attribute__((noinline)) void overwriteStack()
{
    volatile uint8_t bytes[100000];
    for (volatile uint8_t &byte : bytes) byte = 0xEE;
}

// Is the process back at one thread? The system lists one that was joined for a moment longer.
bool noWorker()
{
#ifdef __SANITIZE_THREAD__ // whose run time has threads of its own
    return true;
#endif
    for (int tries = 0; tries < 60000 && filesIn("/proc/self/task") > 1; tries++) usleep(5000);
    return filesIn("/proc/self/task") == 1;
}

// From memory to memory.
void expectSortedInPlace(std::vector<Record> records, Call call)
{
    bool variable = call.format == ZVK_SORT_VARIABLE;
    std::string buffer = released(records, variable);
    call.input.bytes = call.output.bytes = static_cast<uint32_t>(buffer.size());
    call.input.memory = call.output.memory = reinterpret_cast<uint8_t *>(buffer.data());
    ASSERT_EQ(call.run(), 0) << call.error;
    std::stable_sort(records.begin(), records.end(), call.order);
    ASSERT_TRUE(buffer == released(records, variable))
        << describe(call.order.keys[0]) << ", records " << records.size();
}

// From a spill file, with the last records still in memory, to a spill file.
void expectSortedFiles(std::vector<Record> records, Call call, const TemporaryDirectory &directory)
{
    bool variable = call.format == ZVK_SORT_VARIABLE;
    size_t inMemory = std::min<size_t>(records.size(), 100);
    writeFile(directory.file("in"), released({records.begin(), records.end() - static_cast<long>(inMemory)}, variable));
    std::string rest = released({records.end() - static_cast<long>(inMemory), records.end()}, variable);
    std::string in = directory.file("in"), out = directory.file("out");
    call.input.path = in.c_str();
    call.input.bytes = static_cast<uint32_t>(rest.size());
    call.input.memory = reinterpret_cast<uint8_t *>(rest.data());
    call.output.path = out.c_str();
    call.directory = directory.path();
    ASSERT_EQ(call.run(), 0) << call.error;
    std::stable_sort(records.begin(), records.end(), call.order);
    ASSERT_TRUE(readFile(out) == released(records, variable))
        << describe(call.order.keys[0]) << ", records " << records.size();
    ASSERT_EQ(filesIn(directory.path()), 2u);
}

} // namespace

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which reserve terabytes of addresses
// A process with little memory left sorts through the work file, by the budget that it chooses
// itself and by one that cannot be had.
TEST(SortEngine, ALimitOfMemoryIsABudget)
{
    for (uint64_t wish : {uint64_t{0}, uint64_t{1} << 30}) {
        TemporaryDirectory directory;
        ChildRun run = runChild([&] {
            Call call;
            call.order.keys = {sortKey(0, 8, ZVK_KEY_ALPHANUMERIC, true)};
            call.memory = wish;
            call.directory = directory.path();
            std::vector<Record> records = makeRecords(600000, call.order.keys, false);
            std::string in = directory.file("in"), out = directory.file("out");
            writeFile(in, released(records, false));
            std::stable_sort(records.begin(), records.end(), call.order);
            call.input.path = in.c_str();
            call.output.path = out.c_str();

            long pages = 0;
            FILE *size = fopen("/proc/self/statm", "r");
            REQUIRE(size && fscanf(size, "%ld", &pages) == 1);
            fclose(size);
            rlimit limit{static_cast<rlim_t>(pages) * 4096 + (28u << 20), RLIM_INFINITY};
            REQUIRE(setrlimit(RLIMIT_AS, &limit) == 0);
            int result = call.run();
            limit.rlim_cur = RLIM_INFINITY;
            setrlimit(RLIMIT_AS, &limit);
            REQUIRE(result == 0 && call.error == 0);
            REQUIRE(readFile(out) == released(records, false));
        });
        EXPECT_GOOD(run);
    }
}
#endif

// Signs as letters and in the zones of EBCDIC sort as the numbers that they are elsewhere.
TEST(SortEngine, ZonedSignsInAllForms)
{
    const std::pair<const char *, int> items[] = {
        {"00}", 0},  {"00{", 0},      {"01J", -11},   {"01A", 11},    {"99R", -999}, {"99I", 999}, {"01p", -10},
        {"010", 10}, {"02\xD5", -25}, {"02\xC5", 25}, {"02\xF6", 26}, {"01}", -10},  {"01{", 10},  {"123", 123},
    };
    std::vector<Record> records;
    for (const auto &[text, value] : items) records.push_back(std::string(text) + std::string(37, '.'));
    Call call;
    call.order.keys = {sortKey(0, 3, ZVK_KEY_ZONED, true, ZVK_KEY_TRAILING)};
    std::string buffer = released(records, false);
    call.input.bytes = call.output.bytes = static_cast<uint32_t>(buffer.size());
    call.input.memory = call.output.memory = reinterpret_cast<uint8_t *>(buffer.data());
    ASSERT_EQ(call.run(), 0) << call.error;
    int last = -1000;
    for (size_t at = 0; at < buffer.size(); at += 40) {
        auto found = std::find_if(std::begin(items), std::end(items),
                                  [&](const auto &item) { return buffer.compare(at, 3, item.first) == 0; });
        ASSERT_NE(found, std::end(items));
        EXPECT_LE(last, found->second) << found->first;
        last = found->second;
    }
}

TEST(SortEngine, OrdersEveryTypeFormAndDirection)
{
    for (const TableSortKey &key : everyKey(true)) {
        Call call;
        call.order.keys = {key};
        for (size_t count : {1, 2, 1000})
            ASSERT_NO_FATAL_FAILURE(expectSortedInPlace(makeRecords(count, {key}, false), call));
    }
}

TEST(SortEngine, SeveralKeysAndACollatingTable)
{
    uint8_t collating[256];
    for (int i = 0; i < 256; i++) collating[i] = static_cast<uint8_t>(255 - (i >> 1));
    for (int directions = 0; directions < 8; directions++) {
        Call call;
        call.order.keys = {sortKey(2, 3, ZVK_KEY_ALPHANUMERIC, directions & 1),
                           sortKey(20, 5, ZVK_KEY_ZONED, directions & 2, 8),
                           sortKey(10, 3, ZVK_KEY_PACKED, directions & 4)};
        call.order.collating = directions & 1 ? collating : nullptr;
        call.format = directions & 2 ? ZVK_SORT_VARIABLE : ZVK_SORT_FIXED;
        call.length = 100;
        if (call.format == ZVK_SORT_FIXED) call.length = 40;
        ASSERT_NO_FATAL_FAILURE(
            expectSortedInPlace(makeRecords(2000, call.order.keys, call.format == ZVK_SORT_VARIABLE), call));
    }
}

TEST(SortEngine, ManyRecordsInMemoryAndInRuns)
{
    TemporaryDirectory directory;
    TableSortKey plain = sortKey(0, 10, ZVK_KEY_ALPHANUMERIC, true),
                 longPlain = sortKey(0, 25, ZVK_KEY_ALPHANUMERIC, true), packed = sortKey(3, 3, ZVK_KEY_PACKED, false),
                 longer = sortKey(3, 20, ZVK_KEY_ALPHANUMERIC, false);
    for (bool variable : {false, true})
        for (const TableSortKey &key : {plain, longPlain, packed, longer})
            for (uint64_t memory : {uint64_t{0}, uint64_t{700} << 10}) {
                Call call;
                call.order.keys = {key};
                call.format = variable ? ZVK_SORT_VARIABLE : ZVK_SORT_FIXED;
                call.length = variable ? 100 : 40;
                call.memory = memory;
                for (size_t count : {0, 1, 2, 1000})
                    ASSERT_NO_FATAL_FAILURE(expectSortedFiles(makeRecords(count, {key}, variable), call, directory));
                size_t many = shareOf(variable == (memory == 0) ? size_t{300000} : size_t{40000});
                ASSERT_NO_FATAL_FAILURE(expectSortedFiles(makeRecords(many, {key}, variable), call, directory));
            }
}

// Keys that begin alike, by any number of bytes: in all records, or in half of them.
TEST(SortEngine, KeysWithACommonBeginning)
{
    TemporaryDirectory directory;
    for (bool ascending : {true, false})
        for (size_t common : {1, 7, 8, 9, 11, 12, 13, 20, 24, 25})
            for (size_t count : {40, 20000}) {
                Call call;
                call.order.keys = {sortKey(3, 25, ZVK_KEY_ALPHANUMERIC, ascending)};
                call.format = ZVK_SORT_FIXED;
                call.length = 40;
                call.memory = common % 2 ? 0 : uint64_t{700} << 10;
                std::vector<Record> records = makeRecords(count, call.order.keys, false);
                for (size_t i = 0; i < count; i++)
                    if (common % 3 || i < count / 2) records[i].replace(3, common, common, 'K');
                ASSERT_NO_FATAL_FAILURE(expectSortedFiles(records, call, directory)) << common;
            }
}

// Far more runs than descriptors, and than a small budget has buffers for.
TEST(SortEngine, HundredsOfRuns)
{
    TemporaryDirectory directory, control;
    writeFile(control.file("control"), "MEMORY=1K\nSTATISTICS=YES\n");
    for (bool variable : {false, true}) {
        Call call;
        call.control = control.file("control");
        call.order.keys = {sortKey(0, 2, ZVK_KEY_ALPHANUMERIC, !variable), sortKey(3, 14, ZVK_KEY_ZONED, variable, 8)};
        call.format = variable ? ZVK_SORT_VARIABLE : ZVK_SORT_FIXED;
        call.length = variable ? 100 : 40;
        ChildRun run = runChild([&] {
            rlimit limit{16, 16};
            REQUIRE(setrlimit(RLIMIT_NOFILE, &limit) == 0);
            expectSortedFiles(makeRecords(150000, call.order.keys, variable), call, directory);
            REQUIRE(!testing::Test::HasFailure());
        });
        EXPECT_GOOD(run);
        unsigned runs = 0, passes = 0;
        ASSERT_EQ(
            sscanf(run.err.c_str(), "sort: records 150000, runs %u, merge passes before the last %u", &runs, &passes),
            2)
            << run.err;
        EXPECT_GT(runs, 256u);
        EXPECT_EQ(passes, 1u);
    }
}

// Records so long that few runs can be read at once: the passes follow one another.
TEST(SortEngine, PassesOverLongRecords)
{
    constexpr uint32_t kLong = 520000;
    TemporaryDirectory directory;
    std::string in = directory.file("in"), out = directory.file("out");
    Call call;
    call.format = ZVK_SORT_VARIABLE;
    call.length = kLong;
    call.directory = directory.path();
    call.control = directory.file("control");
    call.order.keys = {sortKey(0, 1, ZVK_KEY_ALPHANUMERIC, true)};
    writeFile(call.control, "MEMORY=1M\nSTATISTICS=YES\n");
    struct Head {
        uint32_t bytes;
        uint8_t key;
        uint32_t number;
    } __attribute__((packed));
    std::mt19937 random(5);
    std::vector<Head> heads(1700);
    FILE *file = fopen(in.c_str(), "w");
    std::string filler(kLong, 'x');
    for (uint32_t i = 0; i < heads.size(); i++) {
        heads[i] = {static_cast<uint32_t>(sizeof(Head) + 60000 + random() % 60000), static_cast<uint8_t>(random() % 50),
                    i};
        fwrite(&heads[i], sizeof(Head), 1, file);
        fwrite(filler.data(), heads[i].bytes - sizeof(Head), 1, file);
    }
    ASSERT_EQ(fclose(file), 0);
    call.input.path = in.c_str();
    call.output.path = out.c_str();
    ChildRun run = runChild([&] { REQUIRE(call.run() == 0); });
    EXPECT_GOOD(run);
    unsigned runs = 0, passes = 0;
    ASSERT_EQ(sscanf(run.err.c_str(), "sort: records 1700, runs %u, merge passes before the last %u", &runs, &passes),
              2)
        << run.err;
    EXPECT_EQ(passes, 2u) << runs;
    std::stable_sort(heads.begin(), heads.end(), [](const Head &a, const Head &b) { return a.key < b.key; });
    std::string sorted = readFile(out);
    size_t at = 0;
    for (const Head &head : heads) {
        ASSERT_LE(at + head.bytes, sorted.size());
        ASSERT_EQ(memcmp(&sorted[at], &head, sizeof head), 0);
        at += head.bytes;
    }
    EXPECT_EQ(at, sorted.size());
}

TEST(SortEngine, ControlFileAndStatistics)
{
    TemporaryDirectory directory, work;
    writeFile(directory.file("control"), "* comment\n\nmemory=1M\nWORKDIR=" + work.path() + "\nSTATISTICS=YES\n");
    Call call;
    call.order.keys = {sortKey(0, 10, ZVK_KEY_ALPHANUMERIC, true)};
    call.control = directory.file("control");
    writeFile(directory.file("in"), released(makeRecords(300000, call.order.keys, false), false));
    std::string in = directory.file("in"), out = directory.file("out");
    call.input.path = in.c_str();
    call.output.path = out.c_str();
    ChildRun run = runChild([&] { REQUIRE(call.run() == 0); });
    EXPECT_GOOD(run);
    unsigned runs = 0;
    ASSERT_EQ(sscanf(run.err.c_str(), "sort: records 300000, runs %u", &runs), 1) << run.err;
    EXPECT_GE(runs, 40u);
    auto expect = [&](const std::string &lines, uint32_t error) {
        writeFile(call.control, lines);
        EXPECT_EQ(call.run(), error ? 16 : 0) << lines;
        EXPECT_EQ(call.error, error) << lines;
    };
    for (const char *line : {"MEMORY=much\n", "MEMORY=0\n", "MEMORY=-1\n", "MEMORY=64MB\n", "MEMORY=\n",
                             "MEMORY=99999999999999999999\n", "MEMORY=18446744073709551615G\n", "WORKDIR=\n",
                             "COLOUR=red\n", "nonsense\n", "=\n", "STATISTICS=perhaps\n", "* good\nMEMORY=1M\nbad"})
        expect(line, ZVK_SORT_ECONTROL);
    expect("WORKDIR=" + std::string(2000, 'x'), ZVK_SORT_ECONTROL);
    expect(std::string("STATISTICS=NO\0nonsense\n", 23), ZVK_SORT_ECONTROL);
    expect("*" + std::string(5000, 'x') + "\r\n  # another\r\n\tmemory=9m \r\nStatistics=no", 0);
    expect("", 0);
    expect("WORKDIR=/nonexistent\nMEMORY=1M\n", ZVK_SORT_EWORK);
    call.control = directory.path(); // there, but no file
    EXPECT_EQ(call.run(), 16);
    EXPECT_EQ(call.error, uint32_t{ZVK_SORT_ECONTROL});
    call.control = directory.file("none/such");
    EXPECT_EQ(call.run(), 0);
}

TEST(SortEngine, FilesOnBothSides)
{
    for (bool variable : {false, true})
        for (int32_t op : {ZVK_SORT_START, ZVK_SORT_MERGE}) {
            Call call;
            call.op = op;
            call.format = variable ? ZVK_SORT_VARIABLE : ZVK_SORT_FIXED;
            call.length = variable ? 100 : 40;
            call.order.keys = {sortKey(3, 4, ZVK_KEY_PACKED, false), sortKey(10, 2, ZVK_KEY_ALPHANUMERIC, true)};
            TestFile in[3], out[2];
            FCB *inputs[3], *outputs[2];
            std::vector<Record> all;
            for (int i = 0; i < 3; i++) {
                in[i].records = makeRecords(i == 1 ? 0 : 500, call.order.keys, variable, static_cast<unsigned>(i + 1));
                if (op == ZVK_SORT_MERGE) std::stable_sort(in[i].records.begin(), in[i].records.end(), call.order);
                all.insert(all.end(), in[i].records.begin(), in[i].records.end());
                inputs[i] = &in[i].fcb;
            }
            for (int i = 0; i < 2; i++) outputs[i] = &out[i].fcb;
            call.input.count = 3;
            call.input.files = inputs;
            call.output.count = 2;
            call.output.files = outputs;
            ASSERT_EQ(call.run(), 0) << call.error;
            std::stable_sort(all.begin(), all.end(), call.order);
            for (const TestFile &file : out) {
                EXPECT_TRUE(file.records == all);
                EXPECT_EQ(file.opens, 1);
                EXPECT_EQ(file.closes, 1);
            }
            for (const TestFile &file : in) EXPECT_EQ(file.closes, 1);
        }
}

TEST(SortEngine, RecordsAreFilledCutAndRefusedByLength)
{
    Call call;
    call.length = 8;
    call.order.keys = {sortKey(0, 2, ZVK_KEY_ALPHANUMERIC, true)};
    TestFile in, out;
    FCB *input = &in.fcb, *output = &out.fcb;
    call.input.count = call.output.count = 1;
    call.input.files = &input;
    call.output.files = &output;
    in.records = {"zz", "aa345678  "};
    ASSERT_EQ(call.run(), 0) << call.error;
    EXPECT_EQ(out.records, (std::vector<Record>{"aa345678", "zz      "}));
    in.records = {"zz", "aa3456789"};
    EXPECT_EQ(call.run(), 16);
    EXPECT_EQ(call.error, uint32_t{ZVK_SORT_ELONG});
    in.records = {"zz", "aa345678"};
    out.fib.maxRecord = 7;
    EXPECT_EQ(call.run(), 16);
    EXPECT_EQ(call.error, uint32_t{ZVK_SORT_ELONG});
    EXPECT_EQ(in.closes, in.opens);
    EXPECT_EQ(out.closes, out.opens);
}

TEST(SortEngine, FailuresHaveTheirNumbersAndLeaveNothing)
{
    TemporaryDirectory directory;
    std::string in = directory.file("in"), out = directory.file("out");
    Call call;
    call.directory = directory.path();
    call.order.keys = {sortKey(30, 8, ZVK_KEY_ALPHANUMERIC, true)};
    call.input.path = in.c_str();
    call.output.path = out.c_str();
    auto expect = [&](Call failing, uint32_t error) {
        EXPECT_EQ(failing.run(), 16) << error;
        EXPECT_EQ(failing.error, error);
        EXPECT_FALSE(std::filesystem::exists(out));
    };
    expect(call, ZVK_SORT_EREAD); // no such file
    writeFile(in, std::string(100, 'x'));
    expect(call, ZVK_SORT_EFORM); // 2.5 records
    writeFile(in, released({Record(40, 'a'), Record(37, 'b')}, true));
    Call variable = call;
    variable.format = ZVK_SORT_VARIABLE;
    expect(variable, ZVK_SORT_ESHORT);
    variable.length = 39;
    expect(variable, ZVK_SORT_EFORM); // one is longer than the sort's records
    Call shorter = call;
    shorter.length = 37;
    expect(shorter, ZVK_SORT_ESHORT);
    Call request = call;
    request.op = 7;
    expect(request, ZVK_SORT_EREQUEST);
    Call nowhere = call;
    nowhere.output.path = "/nonexistent/file";
    writeFile(in, std::string(400, 'x'));
    EXPECT_EQ(nowhere.run(), 16);
    EXPECT_EQ(nowhere.error, uint32_t{ZVK_SORT_EOPENOUT});
    for (const TableSortKey &bad :
         {sortKey(0, 0, ZVK_KEY_ALPHANUMERIC, true), sortKey(0, 9, ZVK_KEY_BINARY, true),
          sortKey(0, 5, ZVK_KEY_FLOAT, true), sortKey(0, 4, 8, true), sortKey(0, 70000, ZVK_KEY_ALPHANUMERIC, true)}) {
        Call keys = call;
        keys.order.keys = {bad};
        expect(keys, ZVK_SORT_EKEYS);
    }
    Call none = call;
    none.order.keys = {};
    expect(none, ZVK_SORT_EKEYS);
    EXPECT_EQ(filesIn(directory.path()), 1u);

    TestFile first, second, giving;
    FCB *inputs[] = {&first.fcb, &second.fcb}, *output = &giving.fcb;
    Call merge = call;
    merge.op = ZVK_SORT_MERGE;
    merge.input = {};
    merge.output = {};
    merge.input.count = 2;
    merge.input.files = inputs;
    merge.output.count = 1;
    merge.output.files = &output;
    first.records = {Record(40, 'b'), Record(40, 'a')};
    expect(merge, ZVK_SORT_EORDER);
    first.records = {Record(40, 'b')};
    second.openStatus = 35;
    expect(merge, ZVK_SORT_EOPENIN);
    second.openStatus = 0;
    giving.writeStatus = 34;
    expect(merge, ZVK_SORT_EWRITE);
    second.readStatus = 30;
    expect(merge, ZVK_SORT_EREAD);
    EXPECT_EQ(first.opens, first.closes);
    EXPECT_EQ(giving.opens, giving.closes);
}

// A spill file whose bytes changed is refused or sorted as it is; nobody reads beyond it.
TEST(SortEngine, DamagedSpillFiles)
{
    TemporaryDirectory directory;
    std::string in = directory.file("in"), out = directory.file("out");
    Call call;
    call.format = ZVK_SORT_VARIABLE;
    call.length = 100;
    call.directory = directory.path();
    call.memory = 1;
    call.order.keys = {sortKey(2, 5, ZVK_KEY_PACKED, true), sortKey(9, 30, ZVK_KEY_ZONED, false, 1)};
    call.input.path = in.c_str();
    call.output.path = out.c_str();
    std::string whole = released(makeRecords(1500, call.order.keys, true), true);
    std::mt19937 random(11);
    int refused = 0;
    for (int i = 0; i < 200; i++) {
        std::string bytes = whole.substr(0, i % 2 ? whole.size() : random() % whole.size());
        for (unsigned n = random() % 4; n-- && !bytes.empty();)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        writeFile(in, bytes);
        if (call.run() == 0) {
            ASSERT_EQ(readFile(out).size(), bytes.size());
            std::filesystem::remove(out);
        } else {
            ASSERT_TRUE(call.error == ZVK_SORT_EFORM || call.error == ZVK_SORT_ESHORT) << call.error;
            refused++;
        }
        ASSERT_EQ(filesIn(directory.path()), 1u);
    }
    EXPECT_GT(refused, 90);
    EXPECT_LT(refused, 200);
}

// Two places where the disk may be full: the work file and the result.
TEST(SortEngine, FullDisk)
{
    TemporaryDirectory directory;
    std::string in = directory.file("in"), out = directory.file("out");
    Call call;
    call.directory = directory.path();
    call.order.keys = {sortKey(0, 10, ZVK_KEY_ALPHANUMERIC, true)};
    call.input.path = in.c_str();
    call.output.path = out.c_str();
    writeFile(in, released(makeRecords(100000, call.order.keys, false), false));
    for (bool runs : {false, true}) {
        call.memory = runs ? 512 << 10 : 0;
        EXPECT_GOOD(runChild([&] {
            signal(SIGXFSZ, SIG_IGN);
            rlimit limit{3000000, 3000000};
            REQUIRE(setrlimit(RLIMIT_FSIZE, &limit) == 0);
            REQUIRE(call.run() == 16);
            REQUIRE(call.error == (runs ? ZVK_SORT_EWORK : ZVK_SORT_EWRITE));
        }));
        EXPECT_EQ(filesIn(directory.path()), 1u);
    }
}

// A file's routine ends the run unit while its sort is under way; in a child each, so that the
// sanitizers look at what is left.
TEST(SortEngine, AbandonedInEachOfItsCalls)
{
    TemporaryDirectory directory;
    for (int32_t op : {ZVK_SORT_START, ZVK_SORT_MERGE})
        for (int at : {1, 2, 3, 50, 20000, 30005, 30008})
            EXPECT_GOOD(runChild([&] {
                Call call;
                call.op = op;
                call.memory = 300 << 10;
                call.directory = directory.path();
                call.order.keys = {sortKey(3, 20, ZVK_KEY_ALPHANUMERIC, false)};
                TestFile in[2], out;
                FCB *inputs[] = {&in[0].fcb, &in[1].fcb}, *output = &out.fcb;
                for (TestFile &file : in) {
                    file.records = makeRecords(15000, call.order.keys, false);
                    if (op == ZVK_SORT_MERGE) std::stable_sort(file.records.begin(), file.records.end(), call.order);
                }
                call.input.count = 2;
                call.input.files = inputs;
                call.output.count = 1;
                call.output.files = &output;
                int calls = 0;
                size_t descriptors = filesIn("/proc/self/fd");
                TestFile::onCall = [&] {
                    if (++calls != at) return;
                    engine()(ZVK_SORT_END, 0, 0, nullptr, nullptr, {}, {}, {}, {});
                    REQUIRE(filesIn("/proc/self/fd") == descriptors && noWorker());
                };
                REQUIRE(call.run() == 16);
                REQUIRE(call.error == ZVK_SORT_EABANDONED);
                REQUIRE(calls == at);
                // The next sort of this thread is a new one.
                TestFile::onCall = nullptr;
                for (TestFile *file : {&in[0], &in[1], &out}) file->fcb.mode = 0;
                out.records.clear();
                REQUIRE(call.run() == 0);
                REQUIRE(out.records.size() == 30000);
            }));
    EXPECT_EQ(filesIn(directory.path()), 0u);
}

// A file's routine jumps past the engine, as STOP RUN does; whatever stood in the frames is
// overwritten before operation 11 comes.
TEST(SortEngine, AbandonedAfterAJumpOutOfIt)
{
    TemporaryDirectory directory;
    for (int32_t op : {ZVK_SORT_START, ZVK_SORT_MERGE})
        for (int at : {1, 5000, 20000, 30005, 30008})
            EXPECT_GOOD(runChild([&] {
                auto call = std::make_unique<Call>();
                call->op = op;
                call->memory = 1 << 20;
                call->directory = directory.path();
                call->order.keys = {sortKey(3, 20, ZVK_KEY_ALPHANUMERIC, false)};
                std::vector<uint8_t> collating(256);
                for (size_t i = 0; i < 256; i++) collating[i] = static_cast<uint8_t>(~i);
                call->order.collating = collating.data();
                TestFile in[2], out;
                FCB *inputs[] = {&in[0].fcb, &in[1].fcb}, *output = &out.fcb;
                for (TestFile &file : in) {
                    file.records = makeRecords(15000, call->order.keys, false);
                    if (op == ZVK_SORT_MERGE) std::stable_sort(file.records.begin(), file.records.end(), call->order);
                }
                call->input.count = 2;
                call->input.files = inputs;
                call->output.count = 1;
                call->output.files = &output;
                static jmp_buf back;
                int calls = 0;
                size_t descriptors = filesIn("/proc/self/fd");
                TestFile::onCall = [&] {
                    if (++calls == at) longjmp(back, 1);
                };
                Keys kept(call->order.keys);
                if (setjmp(back) == 0) call->run(kept.words.data());
                kept.words.assign(kept.words.size(), 0xEE);
                std::fill(collating.begin(), collating.end(), 0);
                overwriteStack();
                engine()(ZVK_SORT_END, 0, 0, nullptr, nullptr, {}, {}, {}, {});
                REQUIRE(filesIn("/proc/self/fd") == descriptors && noWorker());
            }));
    EXPECT_EQ(filesIn(directory.path()), 0u);
}
