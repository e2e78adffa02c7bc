// SORT and MERGE over files of the file systems that come with the library, opened by its own OPEN.
//
// Faults that these tests are there to catch: records cut, padded, lost or out of order between one
// kind of file and another; an organization or access mode whose reading or writing needs more of a
// request than the engine gives; a full disk or an input that cannot be read and a sort that still
// claims success; files left open, descriptors or work files left behind by a sort that failed or
// was stopped.
#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "kvr2/messages.h"
#include "statement.h"
#include "support/compiled_file.h"
#include "support/pattern.h"

using RecordList = std::vector<Record>;

namespace {

constexpr uint32_t kLongest = 40;

struct Kind {
    const char *prefix;
    uint8_t organization;
    uint8_t access;
    uint32_t shortest;
    bool trims; // blanks at a record's end do not count
};
constexpr Kind kLines{"lsq-", ZVK_FILE_LINE_SEQUENTIAL, 0x80, kLongest, true},
    kVaryingLines{"lsq-", ZVK_FILE_LINE_SEQUENTIAL, 0x80, 1, true}, kFixed{"rsd-", 0, 0x80, kLongest, false},
    kVarying{"rsd-", 0, 0x80, 0, false}, kBinary{"wbr-", 0, 0x80, 1, false}, kDefault{"", 0, 0x80, kLongest, false},
    kVaryingDefault{"", 0, 0x80, 4, false}, kRelative{"stl-", ZVK_FILE_RELATIVE, 0x80, kLongest, false},
    kRelativeByNumber{"", ZVK_FILE_RELATIVE, 0, 4, false}, kIndexed{"", ZVK_FILE_INDEXED, 0x80, 12, false},
    kIndexedByKey{"stl-", ZVK_FILE_INDEXED, 0, kLongest, false};

// Bytes 0 to 3 are the sort's key, with few values; 4 to 11 are different in each record and the
// key of indexed files.
struct SortedFile : CompiledFile {
    SortedFile(const Kind &kind, const std::string &path)
        : CompiledFile(kind.prefix + path, {.longest = kLongest,
                                            .shortest = kind.shortest,
                                            .organization = kind.organization,
                                            .access = kind.access,
                                            .keys = {{8, 4, 0, {}}}})
    {
        if (!(kind.organization & ZVK_FILE_INDEXED)) all.laidOut.fib.keyCount = 0;
    }
    void fill(const RecordList &records)
    {
        REQUIRE(open(ZVK_OPEN_OUTPUT) == "00");
        uint64_t number = 0;
        for (const Record &record : records) REQUIRE(write(record, {.relativeKey = ++number}) == "00");
        REQUIRE(close() == "00");
    }
    RecordList content()
    {
        RecordList records;
        REQUIRE(open(ZVK_OPEN_INPUT) == "00");
        while (read({.options = ZVK_REQUEST_NEXT}) == "00") records.push_back(record());
        REQUIRE(status() == "10");
        REQUIRE(close() == "00");
        return records;
    }
};

SortFileList listOf(std::vector<FCB *> &files) { return {static_cast<uint32_t>(files.size()), 0, files.data()}; }

// What becomes of a record in a file of that kind.
Record storedIn(const Kind &kind, Record record)
{
    if (kind.trims)
        while (!record.empty() && record.back() == ' ') record.pop_back();
    else if (kind.shortest == kLongest || kind.prefix == kBinary.prefix)
        record.resize(kLongest, ' ');
    return record;
}
RecordList storedIn(const Kind &kind, RecordList records)
{
    for (Record &record : records) record = storedIn(kind, record);
    return records;
}

RecordList makeRecords(size_t count, bool varying, unsigned seed = 1)
{
    std::mt19937 random(seed);
    RecordList records(count);
    for (size_t i = 0; i < count; i++) {
        char text[kLongest + 1];
        snprintf(text, sizeof text, "%04u%08zu", static_cast<unsigned>(random() % 97), i + seed * 1000000);
        records[i] = text;
        records[i].append(varying ? random() % (kLongest - 12) : kLongest - 12, static_cast<char>('a' + random() % 26));
    }
    return records;
}

void sortByKey(RecordList &records)
{
    std::stable_sort(records.begin(), records.end(),
                     [](const Record &a, const Record &b) { return a.compare(0, 4, b, 0, 4) < 0; });
}

size_t openDescriptors()
{
    auto all = std::filesystem::directory_iterator("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(all), end(all)));
}

std::string here(const char *name) { return std::string(getenv("TMPDIR")) + "/../data/" + name; }

uint32_t sortError()
{
    uint32_t number;
    return zvkGetSortErrno(&number);
}

// Runs a piece with its files in "data" and the work files in "work", where nothing may be left.
ChildRun runOverFiles(const char *piece)
{
    TemporaryDirectory directory;
    std::filesystem::create_directory(directory.file("data"));
    std::filesystem::create_directory(directory.file("work"));
    ChildOptions options = with(kReal, directory);
    options.env[1].second = directory.file("work");
    ChildRun run = runPiece(piece, options);
    EXPECT_TRUE(std::filesystem::is_empty(directory.file("work")));
    return run;
}

} // namespace

KVR2_PIECE(files_every_kind)
{
    const Kind using_[] = {kLines,    kVaryingLines,     kFixed,   kVarying,     kBinary, kDefault, kVaryingDefault,
                           kRelative, kRelativeByNumber, kIndexed, kIndexedByKey};
    const Kind giving[] = {kLines,   kVaryingLines,   kFixed,    kVarying,         kBinary,
                           kDefault, kVaryingDefault, kRelative, kRelativeByNumber};
    size_t descriptors = 0;
    for (const Kind &from : using_)
        for (const Kind &to : giving)
            for (uint32_t format : {ZVK_SORT_FIXED, ZVK_SORT_VARIABLE}) {
                SortedFile in(from, here("in")), out(to, here("out"));
                RecordList records = makeRecords(800, from.shortest != kLongest);
                in.fill(from.prefix == kBinary.prefix ? storedIn(from, records) : records);
                std::vector<FCB *> inputs = {in.fcb}, outputs = {out.fcb};
                Statement sort(format, kLongest);
                sort.usingList = listOf(inputs);
                sort.givingList = listOf(outputs);
                int16_t result = sort.op(ZVK_SORT_START);
                if (result)
                    fprintf(stderr, "%s %02x to %s %02x, format %u\n", from.prefix, from.organization, to.prefix,
                            to.organization, format);
                REQUIRE(result == 0);
                REQUIRE(in.status() == "00" && out.status() == "00" && in.fcb->mode == 0 && out.fcb->mode == 0);
                RecordList expected = storedIn(from, records);
                if (format == ZVK_SORT_FIXED)
                    for (Record &record : expected) record.resize(kLongest, ' ');
                sortByKey(expected);
                REQUIRE(out.content() == storedIn(to, expected));
                REQUIRE(in.content() == storedIn(from, records));
                if (!descriptors) descriptors = openDescriptors();
                REQUIRE(openDescriptors() == descriptors);
                std::filesystem::remove_all(here("in"));
                std::filesystem::remove_all(here("out"));
                for (const auto &left : std::filesystem::directory_iterator(here("")))
                    std::filesystem::remove_all(left);
            }
}

// Lines that are empty, blank or longer than the record, and a file of lines as result whose
// records cannot be shorter than its longest.
KVR2_PIECE(files_odd_lines)
{
    for (const Kind &kind : {kLines, kVaryingLines})
        for (uint32_t format : {ZVK_SORT_FIXED, ZVK_SORT_VARIABLE}) {
            writeFile(here("in"), "zz\n\nb\r\n   \n" + std::string(kLongest, 'x') + "y\na");
            SortedFile in(kind, here("in")), out(kind, here("out"));
            std::vector<FCB *> inputs = {in.fcb}, outputs = {out.fcb};
            Statement sort(format, kLongest, 1);
            sort.usingList = listOf(inputs);
            sort.givingList = listOf(outputs);
            bool keyless = format == ZVK_SORT_VARIABLE; // an empty record is shorter than its key
            if (keyless) writeFile(here("in"), "zz\nb\r\n   \n" + std::string(kLongest, 'x') + "y\na");
            REQUIRE(sort.op(ZVK_SORT_START) == 0);
            std::string expected = (keyless ? "\na\nb\n" : "\n\na\nb\n") + std::string(kLongest, 'x') + "\ny\nzz\n";
            REQUIRE(readFile(here("out")) == expected);
        }
}

KVR2_PIECE(files_procedures)
{
    RecordList records = makeRecords(30000, false), sorted = records;
    sortByKey(sorted);
    for (const Kind &kind : {kVaryingLines, kVarying, kDefault}) {
        SortedFile in(kind, here("in")), out(kind, here("out")), second(kRelative, here("second"));
        in.fill(records);
        std::vector<FCB *> inputs = {in.fcb}, outputs = {out.fcb, second.fcb};
        Statement out1(ZVK_SORT_FIXED, kLongest);
        out1.usingList = listOf(inputs);
        REQUIRE(out1.op(ZVK_SORT_START) == 0);
        for (const Record &record : sorted) REQUIRE(next() == record);
        REQUIRE(next() == "END");

        Statement in1(ZVK_SORT_VARIABLE, kLongest);
        in1.eighth[1] = 1 << 20;
        in1.givingList = listOf(outputs);
        REQUIRE(in1.op(ZVK_SORT_START) == 0);
        for (const Record &record : records) REQUIRE(release(record) == 7);
        REQUIRE(in1.op(ZVK_SORT_RUN) == 0);
        REQUIRE(out.content() == sorted);
        REQUIRE(second.content() == sorted);

        // Nothing released: the files come into being, empty.
        REQUIRE(in1.op(ZVK_SORT_START) == 0 && in1.op(ZVK_SORT_RUN) == 0);
        REQUIRE(out.content().empty() && second.content().empty());

        // The result may replace the input.
        Statement same(ZVK_SORT_FIXED, kLongest);
        same.usingList = same.givingList = listOf(inputs);
        REQUIRE(same.op(ZVK_SORT_START) == 0);
        REQUIRE(in.content() == sorted);
    }
}

// A name that stands for several files, and an OPTIONAL file that is absent.
KVR2_PIECE(files_volumes)
{
    writeFile(here("a"), "bbbb2\ndddd4\n");
    writeFile(here("b"), "");
    writeFile(here("c"), "aaaa1\n");
    const FileAttributes lines{.longest = kLongest, .shortest = 1, .organization = ZVK_FILE_LINE_SEQUENTIAL};
    FileAttributes optional = lines;
    optional.optional = true;
    CompiledFile volumes("lsq-" + here("a") + ":" + here("b") + ":" + here("c"), lines),
        absent("lsq-" + here("none"), optional);
    SortedFile out(kVaryingLines, here("out"));
    std::vector<FCB *> inputs = {absent.fcb, volumes.fcb}, outputs = {out.fcb};
    Statement sort(ZVK_SORT_VARIABLE, kLongest);
    sort.usingList = listOf(inputs);
    sort.givingList = listOf(outputs);
    for (int i = 0; i < 2; i++) {
        REQUIRE(sort.op(ZVK_SORT_START) == 0);
        REQUIRE(readFile(here("out")) == "aaaa1\nbbbb2\ndddd4\n");
    }
    REQUIRE(!std::filesystem::exists(here("none")));
    inputs = {absent.fcb};
    sort.usingList = listOf(inputs);
    REQUIRE(sort.op(ZVK_SORT_START) == 0 && readFile(here("out")).empty());
}

// A record that the file's area does not hold would lose its end.
KVR2_PIECE(files_longer_records)
{
    FileAttributes longer{.longest = kLongest + 1, .shortest = 0};
    CompiledFile wide("rsd-" + here("in"), longer);
    REQUIRE(wide.open(ZVK_OPEN_OUTPUT) == "00");
    for (uint32_t length : {20u, kLongest, kLongest + 1}) REQUIRE(wide.write(Record(length, 'x')) == "00");
    REQUIRE(wide.close() == "00");
    SortedFile in(kVarying, here("in")), out(kVarying, here("out"));
    std::vector<FCB *> inputs = {in.fcb}, outputs = {out.fcb};
    for (int32_t op : {ZVK_SORT_START, ZVK_SORT_MERGE}) {
        Statement sort(ZVK_SORT_VARIABLE, kLongest + 10);
        sort.usingList = listOf(inputs);
        sort.givingList = listOf(outputs);
        REQUIRE(sort.op(op) == 16 && sortError() == ZVK_SORT_ELONG);
    }
}

// An indexed file takes its records in the order of its key only.
KVR2_PIECE(files_to_indexed)
{
    RecordList records = makeRecords(5000, true), expected = records;
    std::shuffle(records.begin(), records.end(), std::mt19937(3));
    for (const Kind &kind : {kIndexed, kIndexedByKey}) {
        SortedFile in(kVarying, here("in")), out(kind, here(kind.prefix[0] ? "indexed1" : "indexed2"));
        in.fill(records);
        std::vector<FCB *> inputs = {in.fcb}, outputs = {out.fcb};
        Statement sort(ZVK_SORT_VARIABLE, kLongest);
        TableSortKey key = sortKey(4, 8, ZVK_KEY_ALPHANUMERIC, true);
        memcpy(&sort.keys[1], &key, sizeof key);
        sort.usingList = listOf(inputs);
        sort.givingList = listOf(outputs);
        REQUIRE(sort.op(ZVK_SORT_START) == 0);
        REQUIRE(out.content() == storedIn(kind, expected));
        records.push_back(records[17]); // twice the same key
        in.fill(records);
        REQUIRE(sort.op(ZVK_SORT_START) == 16 && sortError() == ZVK_SORT_EWRITE && out.fcb->mode == 0);
        records.pop_back();
    }
}

KVR2_PIECE(files_merge)
{
    RecordList all;
    SortedFile one(kVaryingLines, here("one")), two(kVarying, here("two")), none(kDefault, here("none")),
        out(kVaryingDefault, here("out"));
    SortedFile *files[] = {&one, &two, &none};
    std::vector<FCB *> inputs, outputs = {out.fcb};
    for (unsigned i = 0; i < 3; i++) {
        RecordList records = makeRecords(i == 2 ? 0 : 5000, i == 1, i + 1);
        sortByKey(records);
        files[i]->fill(records);
        inputs.push_back(files[i]->fcb);
        all.insert(all.end(), records.begin(), records.end());
    }
    sortByKey(all);
    Statement merge(ZVK_SORT_VARIABLE, kLongest);
    merge.usingList = listOf(inputs);
    merge.givingList = listOf(outputs);
    REQUIRE(merge.op(ZVK_SORT_MERGE) == 0);
    REQUIRE(out.content() == all);
    merge.givingList = {};
    REQUIRE(merge.op(ZVK_SORT_MERGE) == 0);
    for (const Record &record : all) REQUIRE(next() == record);
    REQUIRE(next() == "END");
    // Out of order at its very end.
    RecordList disorder = makeRecords(5000, false, 1);
    sortByKey(disorder);
    std::swap(disorder.front(), disorder.back());
    one.fill(disorder);
    REQUIRE(merge.op(ZVK_SORT_MERGE) == 16 && sortError() == ZVK_SORT_EORDER && next() == "END");
    merge.givingList = listOf(outputs);
    REQUIRE(merge.op(ZVK_SORT_MERGE) == 16 && sortError() == ZVK_SORT_EORDER);
    for (SortedFile *file : files) REQUIRE(file->fcb->mode == 0);
    REQUIRE(out.fcb->mode == 0);
}

KVR2_PIECE(files_failures)
{
    RecordList records = makeRecords(30000, false);
    SortedFile in(kVarying, here("in")), absent(kDefault, here("absent")), out(kVarying, here("out")),
        damaged(kVarying, here("damaged")), folder(kVaryingLines, here(""));
    in.fill(records);
    std::string bytes = readFile(here("in"));
    bytes[20 * 44 + 3] = '\x7F'; // a length word
    writeFile(here("damaged"), bytes);
    size_t descriptors = openDescriptors();
    for (uint64_t memory : {0, 100 << 10})
        for (auto [file, error] : {std::pair<SortedFile *, uint32_t>{&absent, ZVK_SORT_EOPENIN},
                                   {&folder, ZVK_SORT_EOPENIN},
                                   {&damaged, ZVK_SORT_EREAD}}) {
            std::vector<FCB *> inputs = {in.fcb, file->fcb}, outputs = {out.fcb};
            Statement sort(ZVK_SORT_VARIABLE, kLongest);
            sort.eighth[1] = memory;
            sort.usingList = listOf(inputs);
            sort.givingList = listOf(outputs);
            writeFile(here("out"), "as it was");
            REQUIRE(sort.op(ZVK_SORT_START) == 16 && sortError() == error);
            REQUIRE(readFile(here("out")) == "as it was"); // not even opened
            sort.givingList = {};
            REQUIRE(sort.op(ZVK_SORT_START) == 16 && sortError() == error && next() == "END");
            REQUIRE(sort.op(ZVK_SORT_MERGE) == 16 && next() == "END");
            REQUIRE(in.fcb->mode == 0 && file->fcb->mode == 0 && out.fcb->mode == 0);
            REQUIRE(openDescriptors() == descriptors);
        }
    // A result that cannot be made.
    SortedFile nowhere(kFixed, here("no/such/folder"));
    std::vector<FCB *> inputs = {in.fcb}, outputs = {out.fcb, nowhere.fcb};
    Statement sort(ZVK_SORT_VARIABLE, kLongest);
    sort.usingList = listOf(inputs);
    sort.givingList = listOf(outputs);
    REQUIRE(sort.op(ZVK_SORT_START) == 16 && sortError() == ZVK_SORT_EOPENOUT && out.fcb->mode == 0);
    REQUIRE(openDescriptors() == descriptors);
}

// The disk is full under a result, a work file and a spill file.
KVR2_PIECE(files_full_disk)
{
    RecordList records = makeRecords(30000, false);
    SortedFile in(kFixed, here("in")), out(kFixed, here("out"));
    in.fill(records);
    size_t descriptors = openDescriptors();
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit{600000, RLIM_INFINITY};
    REQUIRE(setrlimit(RLIMIT_FSIZE, &limit) == 0);
    std::vector<FCB *> inputs = {in.fcb}, outputs = {out.fcb};
    for (uint64_t memory : {0, 200 << 10})
        for (bool giving : {true, false}) {
            Statement sort(ZVK_SORT_FIXED, kLongest);
            sort.eighth[1] = memory;
            sort.usingList = listOf(inputs);
            if (giving) sort.givingList = listOf(outputs);
            REQUIRE(sort.op(ZVK_SORT_START) == 16);
            REQUIRE(sortError() == (memory ? ZVK_SORT_EWORK : ZVK_SORT_EWRITE));
            if (!giving) REQUIRE(next() == "END");
            REQUIRE(in.fcb->mode == 0 && out.fcb->mode == 0 && openDescriptors() == descriptors);
        }
    // RELEASE tells it, and what it could store before is all there.
    Statement sort(ZVK_SORT_FIXED, kLongest);
    REQUIRE(sort.op(ZVK_SORT_START) == 0);
    size_t stored = 0;
    for (int failures = 0; failures < 3;) release(records[stored]) == 7 ? stored++ : failures++;
    REQUIRE(stored > 600000 / kLongest);
    limit.rlim_cur = RLIM_INFINITY;
    REQUIRE(setrlimit(RLIMIT_FSIZE, &limit) == 0);
    records.resize(stored);
    sortByKey(records);
    REQUIRE(sort.op(ZVK_SORT_RUN) == 0);
    for (const Record &record : records) REQUIRE(next() == record);
    REQUIRE(next() == "END");
}

// STOP RUN in the USE procedure of a file that the sort could not open: the engine is left in the
// middle, with runs in its work file.
KVR2_PIECE(files_stop_run)
{
    CompiledProgram main("MAINPGM");
    int status = compiledMain(main, [] {
        // static, as a program's records are: nothing here is destroyed
        static SortedFile in(kFixed, here("in")), absent(kFixed, here("absent"));
        in.fill(makeRecords(30000, false));
        struct {
            void (*routine)(uint64_t, uint64_t, void *, uint64_t);
            void *argument;
        } static use{[](uint64_t, uint64_t, void *, uint64_t) { _zvkRunUnitTerm(3); }, nullptr};
        static void *table[5] = {&use};
        absent.fcb->useTable = table;
        static std::vector<FCB *> inputs = {in.fcb, absent.fcb};
        static Statement sort(ZVK_SORT_FIXED, kLongest);
        sort.eighth[1] = 100 << 10;
        sort.usingList = listOf(inputs);
        sort.op(ZVK_SORT_START);
        REQUIRE(!"STOP RUN came back");
    });
    REQUIRE(status == 3);
}

TEST(SortOverFiles, EveryKindToEveryKind) { EXPECT_GOOD(runOverFiles("files_every_kind")); }
TEST(SortOverFiles, OddLines) { EXPECT_GOOD(runOverFiles("files_odd_lines")); }
TEST(SortOverFiles, ProceduresOnEitherSide) { EXPECT_GOOD(runOverFiles("files_procedures")); }
TEST(SortOverFiles, RecordsThatReadWouldCut) { EXPECT_GOOD(runOverFiles("files_longer_records")); }
TEST(SortOverFiles, SeveralVolumesAndNone) { EXPECT_GOOD(runOverFiles("files_volumes")); }
TEST(SortOverFiles, IndexedResult) { EXPECT_GOOD(runOverFiles("files_to_indexed")); }
TEST(SortOverFiles, Merge) { EXPECT_GOOD(runOverFiles("files_merge")); }
TEST(SortOverFiles, InputThatCannotBeReadAndOutputThatCannotBeMade)
{
    ChildRun run = runOverFiles("files_failures");
    EXPECT_GOOD(run);
    std::string flat = oneLine(run.err);
    EXPECT_TRUE(holds(flat, "sort error 3: a USING file could not be opened: file DATA-FILE (")) << "the reason";
    EXPECT_TRUE(holds(flat, "absent), file status 35. SORT-RETURN is 16.")) << "the file";
    EXPECT_TRUE(holds(flat, "sort error 6: the output could not be opened: file DATA-FILE ("));
}
TEST(SortOverFiles, FullDisk) { EXPECT_GOOD(runOverFiles("files_full_disk")); }
TEST(SortOverFiles, StopRunInTheMiddle)
{
    ChildRun run = runOverFiles("files_stop_run");
    EXPECT_GOOD(run);
    EXPECT_TRUE(holds(run.err, "ZVK012"));
}
