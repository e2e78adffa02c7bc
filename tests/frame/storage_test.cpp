// The allocators, EXTERNAL data items, and the debugging forms of the memory routines.
//
// Faults that these tests are there to catch: sizes that wrap around and give a small block; a
// tracked list that is broken by a free in another run unit or mode than the allocation's; a
// realloc that reads or writes beyond either block; EXTERNAL items that two programs or two threads
// get at different addresses, that do not start as zeros, or whose name is read beyond its row or
// kept in storage of the program that may be unloaded; assertion texts that differ.
#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "frame/messages.h"
#include "frame/run_unit.h"
#include "frame/storage.h"
#include "kvr2/hash_table.h"
#include "support/child.h"
#include "support/guarded.h"

namespace {

constexpr uint64_t kAbsurd[] = {~uint64_t{0}, ~uint64_t{0} - 15, ~uint64_t{0} - 40, uint64_t{1} << 63,
                                uint64_t{1} << 60};

bool aligned(const void *block) { return reinterpret_cast<uintptr_t>(block) % 16 == 0; }

// A run unit of the test's own, current while the object lives; ended without its effects on the
// process, since it has no program.
struct RunUnit {
    RunUnit() : runcom(static_cast<Runcom *>(_zvkcalloc(1, sizeof(Runcom)))), flags(_zvkProccom->flags)
    {
        runcom->parent = _zvkProccom->runcom;
        _zvkProccom->runcom = runcom;
    }
    ~RunUnit()
    {
        HashTable_Destroy(runcom->externalVars);
        _zvkProccom->runcom = runcom->parent;
        _zvkProccom->flags = flags;
        _zvkcfree(runcom);
    }
    Runcom *runcom;
    uint8_t flags;
};

// A program's table of EXTERNAL items, ending at a protected page.
struct Items {
    explicit Items(const std::vector<std::pair<std::string, uint32_t>> &rows)
        : table(ZVK_EXTERNAL_ROWS + rows.size() * sizeof(ZvkExternalRow)), addresses(rows.size())
    {
        uint32_t count = static_cast<uint32_t>(rows.size());
        memset(table.data(), 0xEE, table.size());
        memcpy(table.data(), &count, 4);
        uint8_t *row = table.data() + ZVK_EXTERNAL_ROWS;
        for (auto &[name, length] : rows) {
            memcpy(row, &length, 4);
            memset(row + 4, 0, 32);
            memcpy(row + 4, name.data(), name.size());
            row += sizeof(ZvkExternalRow);
        }
    }
    std::vector<void *> &resolve()
    {
        _zvkExtVarInit(reinterpret_cast<const uint32_t *>(table.data()), addresses.data());
        return addresses;
    }
    GuardedItem table;
    std::vector<void *> addresses;
};

} // namespace

TEST(Storage, PlainBlocks)
{
    for (uint64_t size : {1, 15, 16, 17, 1000}) {
        for (void *block : {_zvkMalloc(size, 907, 0), _zvkcalloc(0, size), _zvkcalloc(1, size), _Dmr_mem_alloc(size),
                            zvkAlloc(size)}) {
            ASSERT_NE(block, nullptr);
            EXPECT_TRUE(aligned(block));
            memset(block, 0xAA, size);
            _zvkcfree(block);
        }
        uint8_t *zeroed = static_cast<uint8_t *>(_zvkcalloc(1, size));
        for (uint64_t i = 0; i < size; ++i) ASSERT_EQ(zeroed[i], 0);
        _Dmr_mem_free(zeroed);
    }
    EXPECT_EQ(_zvkcalloc(1, 0), nullptr);
    EXPECT_EQ(_zvkcalloc(0, 0), nullptr);
    void *empty = _zvkMalloc(0, 907, 0);
    EXPECT_NE(empty, nullptr);
    _zvkcfree(empty);
    _zvkcfree(nullptr);
    _Dmr_mem_free(nullptr);
}

TEST(Storage, AbsurdSizesFail)
{
    RunUnit unit;
    void *old = zvkSizedAlloc(10);
    for (uint8_t tracking : {0, int{ZVK_TRACK_STORAGE}}) {
        _zvkProccom->flags = tracking;
        for (uint64_t size : kAbsurd) {
            for (void *block :
                 {zvkAlloc(size), _zvkcalloc(0, size), _zvkcalloc(1, size), _Dmr_mem_alloc(size), zvkTrackedAlloc(size),
                  zvkTrackedCalloc(1, size), zvkTrackedCalloc(16, size), zvkSizedAlloc(size), zvkSizedCalloc(1, size),
                  zvkSizedCalloc(16, size), zvkSizedRealloc(old, size)})
                EXPECT_EQ(block, nullptr) << size;
        }
    }
    EXPECT_EQ(unit.runcom->storage, nullptr);
    zvkSizedFree(old);
    ChildRun run = runChild([] { _zvkMalloc(kAbsurd[1], 13, ZVK_MSG_SEVERE); });
    EXPECT_NE(run.err.find("ZVK013"), std::string::npos) << run.err;
}

TEST(Storage, TrackedBlocksAreFreedTogether)
{
    RunUnit unit;
    _zvkProccom->flags |= ZVK_TRACK_STORAGE;
    void *first = zvkTrackedAlloc(10), *second = zvkTrackedCalloc(3, 7), *third = zvkTrackedAlloc(1);
    EXPECT_EQ(std::string(static_cast<char *>(second), 21), std::string(21, 0));
    auto blocks = [&] {
        std::vector<void *> found;
        for (TrackedBlock *block = unit.runcom->storage; block; block = block->next) {
            EXPECT_EQ(*block->link, block);
            found.push_back(block + 1);
        }
        return found;
    };
    EXPECT_EQ(blocks(), (std::vector<void *>{third, second, first}));
    for (void *block : {first, second, third}) EXPECT_TRUE(aligned(block));
    zvkTrackedFree(second); // middle
    EXPECT_EQ(blocks(), (std::vector<void *>{third, first}));
    zvkTrackedFree(third); // head
    zvkTrackedFree(nullptr);
    EXPECT_EQ(blocks(), std::vector<void *>{first});
    zvkTrackedAlloc(100);
    zvkTrackedFree(first); // end
    {
        // A nested run unit has its own list, and may free what its parent allocated.
        void *parents = zvkTrackedAlloc(5);
        RunUnit nested;
        zvkTrackedAlloc(5);
        zvkTrackedFree(parents);
        zvkTrackedFreeAll();
        EXPECT_EQ(nested.runcom->storage, nullptr);
    }
    EXPECT_EQ(blocks().size(), 1u);
    zvkTrackedFreeAll(); // the leak check sees what it leaves
    EXPECT_EQ(unit.runcom->storage, nullptr);

    // Tracking that goes on or off between allocation and free.
    void *tracked = zvkTrackedAlloc(5);
    _zvkProccom->flags = 0;
    void *plain = zvkTrackedAlloc(5);
    zvkTrackedFree(tracked);
    EXPECT_EQ(unit.runcom->storage, nullptr);
    _zvkProccom->flags = ZVK_TRACK_STORAGE;
    zvkTrackedFree(plain);
    EXPECT_EQ(unit.runcom->storage, nullptr);
}

TEST(Storage, SizedBlocks)
{
    char *block = static_cast<char *>(zvkSizedAlloc(5));
    EXPECT_TRUE(aligned(block));
    EXPECT_EQ(reinterpret_cast<uint64_t *>(block)[-2], 5u);
    memcpy(block, "12345", 5);
    char *larger = static_cast<char *>(zvkSizedRealloc(block, 40));
    char *smaller = static_cast<char *>(zvkSizedRealloc(block, 3));
    EXPECT_EQ(std::string(larger, 5), "12345");
    EXPECT_EQ(std::string(smaller, 3), "123");
    EXPECT_EQ(std::string(block, 5), "12345"); // the old one is still the caller's
    char *zeros = static_cast<char *>(zvkSizedCalloc(4, 5));
    EXPECT_EQ(std::string(zeros, 20), std::string(20, 0));
    EXPECT_EQ(reinterpret_cast<uint64_t *>(zeros)[-2], 20u);
    for (char *each : {block, larger, smaller, zeros}) zvkSizedFree(each);
    zvkSizedFree(zvkSizedRealloc(nullptr, 8));
    zvkSizedFree(nullptr);
}

TEST(ExternalData, ProgramsOfARunUnitShareItems)
{
    RunUnit unit;
    std::string longest(32, 'L'); // fills its row: no terminator
    Items first({{"TAX-TABLE", 80}, {"RUN-COUNT", 4}, {longest, 8}});
    std::vector<void *> got = first.resolve();
    for (size_t i = 0; i < 3; ++i) ASSERT_NE(got[i], nullptr);
    EXPECT_EQ(std::string(static_cast<char *>(got[0]), 80), std::string(80, 0));
    uint64_t length;
    memcpy(&length, static_cast<char *>(got[0]) - 8, 8);
    EXPECT_EQ(length, 80u);
    memset(got[0], 'T', 80);
    memset(got[1], 'R', 4);
    memset(got[2], 'L', 8);

    // The program goes, its table with it; the next one finds the items all the same.
    memset(first.table.data() + ZVK_EXTERNAL_ROWS, 0x11, 3 * sizeof(ZvkExternalRow));
    Items second({{longest, 8}, {"OTHER", 1}, {"TAX-TABLE", 80}, {"OTHER", 1}});
    std::vector<void *> again = second.resolve();
    EXPECT_EQ(again[0], got[2]);
    EXPECT_EQ(again[2], got[0]);
    EXPECT_EQ(again[1], again[3]);
    EXPECT_EQ(std::string(static_cast<char *>(again[2]), 80), std::string(80, 'T'));
    EXPECT_EQ(unit.runcom->externalVars->entries, 4u);

    testing::internal::CaptureStderr();
    HashTable_Dump(unit.runcom->externalVars);
    std::string dump = testing::internal::GetCapturedStderr();
    EXPECT_NE(dump.find("\tName: RUN-COUNT\n\tLen:  4\n\tData: RRRR\n"), std::string::npos) << dump;

    // At the run unit's end the table is emptied and stays.
    HashTable_Clear(unit.runcom->externalVars);
    EXPECT_EQ(*static_cast<char *>(second.resolve()[2]), 0);
}

TEST(ExternalData, AnotherLengthIsReportedAndTheFirstCounts)
{
    RunUnit unit;
    void *first = Items({{"X", 10}}).resolve()[0];
    ChildRun run = runChild([&] {
        void *second = Items({{"X", 11}}).resolve()[0];
        fprintf(stderr, "same %d", first == second); // where the message returns
    });
    EXPECT_NE(run.err.find("ZVK066"), std::string::npos) << run.err;
    if (run.signal == 0) {
        EXPECT_NE(run.err.find("same 1"), std::string::npos) << run.err;
    }
}

TEST(ExternalData, NoRunUnitIsReported)
{
    ChildRun run = runChild([] {
        if (_zvkProccom) _zvkProccom->runcom = nullptr;
        void *address = Items({{"X", 10}}).resolve()[0];
        fprintf(stderr, "null %d", address == nullptr);
    });
    EXPECT_NE(run.err.find("ZVK907"), std::string::npos) << run.err;
    if (run.signal == 0) {
        EXPECT_NE(run.err.find("null 1"), std::string::npos) << run.err;
    }
}

// Threads that look items up while others make new ones and the table grows under them. The thread
// sanitizer watches.
TEST(ExternalData, ThreadsGetTheSameItems)
{
    constexpr int kThreads = 4, kItems = 600;
    for (int round = 0; round < 5; ++round) {
        RunUnit unit;
        std::vector<std::vector<void *>> got(kThreads);
        std::atomic<int> waiting{kThreads};
        testing::internal::CaptureStderr(); // threads that meet at the mutex show there
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                --waiting;
                while (waiting) {
                }
                for (int i = 0; i < kItems; ++i) {
                    // Each thread begins elsewhere, so that all of them both make and find.
                    int n = (i + t * kItems / kThreads) % kItems;
                    std::string name = "ITEM-" + std::to_string(n);
                    got[t].push_back(Items({{name, 16}}).resolve()[0]);
                    for (int back = 1; back <= 3 && back <= i; ++back) {
                        std::string earlier = "ITEM-" + std::to_string((n + kItems - back) % kItems);
                        void *known = Items({{earlier, 16}}).resolve()[0];
                        if (known != got[t][static_cast<size_t>(i - back)]) abort();
                    }
                }
            });
        }
        for (std::thread &thread : threads) thread.join();
        testing::internal::GetCapturedStderr();
        for (int t = 1; t < kThreads; ++t) {
            std::rotate(got[t].begin(), got[t].end() - t * kItems / kThreads, got[t].end());
            ASSERT_EQ(got[t], got[0]);
        }
        EXPECT_EQ(unit.runcom->externalVars->entries, static_cast<uint32_t>(kItems));
        EXPECT_GE(unit.runcom->externalVars->size, 1024u);
    }
}

TEST(CheckedMemory, DoesTheWorkAndShowsIt)
{
    char a[8] = "ABC", b[8] = "ABD";
    testing::internal::CaptureStderr();
    EXPECT_EQ(dbg_memset(a + 4, 0x41, 2), a + 4);
    EXPECT_EQ(dbg_memcpy(a, "XYZ", 3), a);
    EXPECT_LT(dbg_memcmp("ABC", b, 3), 0);
    std::string shown = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::string(a, 7), std::string("XYZ\0AA\0", 7));
    char line[80];
    snprintf(line, sizeof line, "memset(@%p, 0x41, 2\nmemcpy(@%p, @", static_cast<void *>(a + 4),
             static_cast<void *>(a));
    EXPECT_EQ(shown.rfind(line, 0), 0u) << shown;
    snprintf(line, sizeof line, ", @%p, 3\n", static_cast<void *>(b));
    EXPECT_NE(shown.find(line), std::string::npos) << shown;

    EXPECT_EQ(c__memcpy(a, "QQQ", 3), a);
    EXPECT_EQ(c__memset(a, 'R', 1), a);
    EXPECT_EQ(c__memcmp(a, "RQQ", 3), 0);
    EXPECT_EQ(c__strcpy(b, "HELLO"), b);
    EXPECT_EQ(c__strcmp(b, "HELLO"), 0);
    EXPECT_GT(c__strcmp(b, "HELL"), 0);
    EXPECT_EQ(c__strlen(b), 5u);
}

TEST(CheckedMemory, NullArgumentsFailAnAssertion)
{
    static char item[8];
    struct {
        void (*call)();
        const char *text;
    } const cases[] = {
        {[] { c__memcpy(nullptr, item, 0); }, "(s1)!=((void *)0)"},
        {[] { c__memcpy(item, nullptr, 0); }, "(s2)!=((void *)0)"},
        {[] { c__memcmp(nullptr, item, 1); }, "(s1)!=((void *)0)"},
        {[] { c__memcmp(item, nullptr, 1); }, "(s2)!=((void *)0)"},
        {[] { c__memset(nullptr, 0, 1); }, "(s1)!=((void *)0)"},
        {[] { c__strcpy(nullptr, item); }, "(s1)!=((void *)0)"},
        {[] { c__strcpy(item, nullptr); }, "(s2)!=((void *)0)"},
        {[] { c__strcmp(nullptr, item); }, "(s1)!=((void *)0)"},
        {[] { c__strcmp(item, nullptr); }, "(s2)!=((void *)0)"},
        {[] { c__strlen(nullptr); }, "(s1)!=((void *)0)"},
    };
    for (auto &each : cases) {
        ChildRun run = runChild(each.call);
        EXPECT_EQ(run.signal, SIGABRT);
        EXPECT_NE(run.err.find(std::string("Assertion `") + each.text + "' failed."), std::string::npos) << run.err;
    }
}
