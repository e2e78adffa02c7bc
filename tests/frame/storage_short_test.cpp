// The hash table and EXTERNAL data items when storage is short.
//
// Faults that these tests are there to catch: a failed allocation that leaks what was made before
// it, leaves a table half changed, leaves the mutex held, or leaves an address unset. Every
// allocation of an operation fails in turn; the linker leads the library's calls of calloc and
// aligned_alloc here.
#include <cstring>
#include <set>
#include <string>

#include "frame/locks.h"
#include "frame/storage.h"
#include "kvr2/hash_table.h"
#include "support/child.h"

static int failAfter = -1;     // allocations that still succeed; below 0: all
static size_t lastCleared = 0; // bytes that calloc was last asked for

static bool fails() { return failAfter >= 0 && failAfter-- == 0; }

extern "C" {
void *__real_calloc(size_t count, size_t size);
void *__real_aligned_alloc(size_t alignment, size_t size);
void *__wrap_calloc(size_t count, size_t size);
void *__wrap_aligned_alloc(size_t alignment, size_t size);

void *__wrap_calloc(size_t count, size_t size)
{
    lastCleared = count * size;
    return fails() ? nullptr : __real_calloc(count, size);
}

void *__wrap_aligned_alloc(size_t alignment, size_t size)
{
    return fails() ? nullptr : __real_aligned_alloc(alignment, size);
}
}

namespace {

template <class Operation>
auto shortAfter(int allocations, Operation operation)
{
    failAfter = allocations;
    auto result = operation();
    failAfter = -1;
    return result;
}

HashEntry *insert(HashTable *table, const std::string &key, bool alsoParent = false)
{
    return HashTable_Insert(table, nullptr, key.data(), key.size(), "value", 5, 0, alsoParent);
}

} // namespace

TEST(StorageShort, ATableIsMadeWholeOrNotAtAll)
{
    HashParams params = {};
    EXPECT_EQ(shortAfter(0, [&] { return HashTable_Create(&params); }), nullptr);
    EXPECT_EQ(shortAfter(1, [&] { return HashTable_Create(&params); }),
              nullptr);       // the leak check sees a record left behind
    params.size = 0xFFFFFFFF; // rounding up must not wrap around
    EXPECT_EQ(shortAfter(1, [&] { return HashTable_Create(&params); }), nullptr);
    EXPECT_GE(lastCleared, uint64_t{0x80000000} * sizeof(HashEntry *));
}

TEST(StorageShort, AFailedInsertLeavesTheTableAsItWas)
{
    HashParams params = {};
    HashTable *parent = HashTable_Create(&params);
    params.parent = parent;
    HashTable *child = HashTable_Create(&params);
    EXPECT_EQ(shortAfter(0, [&] { return insert(child, "A"); }), nullptr);
    EXPECT_EQ(child->entries + child->inserts + child->used, 0u);
    EXPECT_EQ(shortAfter(0, [&] { return insert(child, "A", true); }), nullptr);
    EXPECT_EQ(parent->entries, 0u);
    EXPECT_EQ(shortAfter(1, [&] { return insert(child, "A", true); }), nullptr);
    EXPECT_EQ(parent->entries, 1u);
    EXPECT_EQ(child->entries, 0u);
    HashState state;
    EXPECT_EQ(shortAfter(0, [&] { return HashTable_Find(child, &state, "A", 1, 1, 1); }), nullptr);
    EXPECT_EQ(state.entry, nullptr);
    EXPECT_NE(insert(child, "A", true), nullptr);
    HashTable_Destroy(child);
    HashTable_Destroy(parent);

    // A routine of the owner that has nothing to give: the heap serves.
    params = {};
    params.alloc = [](uint64_t, uint64_t) -> void * { return nullptr; };
    HashTable *table = HashTable_Create(&params);
    EXPECT_NE(insert(table, "A"), nullptr);
    HashTable_Destroy(table);
}

TEST(StorageShort, ATableThatCannotGrowGoesOn)
{
    HashParams params = {};
    params.flags = ZVK_HASH_MRU;
    HashTable *table = HashTable_Create(&params);
    for (int i = 0; i < 47; ++i) insert(table, std::to_string(i));
    testing::internal::CaptureStderr();
    EXPECT_NE(shortAfter(1, [&] { return insert(table, "47"); }), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "HashTable_Resize alloc error, continuing\n");
    EXPECT_EQ(table->size, 64u);
    EXPECT_EQ(table->entries, 48u);
    EXPECT_EQ(table->grows, 0u);
    EXPECT_EQ(table->flags & ZVK_HASH_TABLE_RESIZING, 0);
    EXPECT_EQ(table->mruHead->keyLength, 2u);
    insert(table, "48"); // the next one tries again
    EXPECT_EQ(table->size, 128u);
    for (int i = 0; i <= 48; ++i) {
        std::string key = std::to_string(i);
        EXPECT_NE(HashTable_Find(table, nullptr, key.data(), key.size(), 0, 0), nullptr) << key;
    }
    HashTable_Destroy(table);
}

TEST(StorageShort, ExternalItems)
{
    struct {
        uint32_t count = 1;
        uint8_t reserved[32] = {};
        ZvkExternalRow row = {40, "SHORT-ITEM"};
    } items;
    // The table's record, its slots, the item, its entry.
    for (int allocations = 0; allocations < 4; ++allocations) {
        ChildRun run = runChild([&] {
            if (!_zvkProccom) _zvkProccom = static_cast<Proccom *>(zvkCalloc(1, sizeof(Proccom)));
            _zvkProccom->runcom = static_cast<Runcom *>(zvkCalloc(1, sizeof(Runcom)));
            void *address = &items;
            shortAfter(allocations, [&] { return _zvkExtVarInit(&items.count, &address), 0; });
            fprintf(stderr, "address %s, mutex %s, ", address ? "set" : "null",
                    pthread_mutex_trylock(&externalMutex) == 0 ? "free" : "held");
            pthread_mutex_unlock(&externalMutex);
            _zvkExtVarInit(&items.count, &address);
            fprintf(stderr, "then %s", address && address != &items ? "made" : "missing");
            _exit(0);
        });
        EXPECT_NE(run.err.find("ZVK907"), std::string::npos) << allocations << run.err;
        if (run.signal == 0) {
            EXPECT_NE(run.err.find("address null, mutex free, then made"), std::string::npos) << allocations << run.err;
        }
    }
}
