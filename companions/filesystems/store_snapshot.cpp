// The map of a store's file, and its snapshots: which of the two head pages counts, and what it
// leads to.
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <initializer_list>

#include "companions/filesystems/store_page.h"

namespace filesystems {

namespace {

struct Mapping {
    Mapping *older;
    const uint8_t *base;
    size_t size;
};

// A head page: magic, version, address, size of the map, the two trees, the last page, the change.
constexpr size_t kTreesAt = kHeadSize + 24, kLastPageAt = kTreesAt + 2 * sizeof(StoreTree), kChangeAt = kLastPageAt + 8,
                 kHeadEnd = kChangeAt + 8;

bool isHead(const uint8_t *page, uint64_t number)
{
    constexpr uint32_t magic = 0xBEEFC0DE;
    return load<uint64_t>(page) == number && load<uint16_t>(page + 10) == kHead &&
           load<uint32_t>(page + kHeadSize) == magic && load<uint32_t>(page + kHeadSize + 4) == 1;
}

// What a head leads to, if it makes sense. A page of the store that no commit has written yet may
// be beyond the end of the file, but not far.
int readHead(const uint8_t *page, uint64_t filePages, StoreSnapshot *snapshot)
{
    constexpr uint16_t numbers = 0x08, oneFile = 0x4000; // the keys of the free pages; a store that is no folder
    StoreTree trees[2];
    memcpy(trees, page + kTreesAt, sizeof trees);
    snapshot->pageSize = trees[0].pad;
    snapshot->lastPage = load<uint64_t>(page + kLastPageAt);
    snapshot->change = load<uint64_t>(page + kChangeAt);
    snapshot->pages = snapshot->lastPage < filePages ? snapshot->lastPage + 1 : filePages;
    snapshot->freePages = trees[0];
    snapshot->names = trees[1];
    bool good = (trees[0].flags & ~oneFile) == numbers && trees[1].flags == 0 && snapshot->lastPage >= 1 &&
                snapshot->lastPage < filePages + filePages / 2 + 4096 && treeMakesSense(*snapshot, trees[0]) &&
                treeMakesSense(*snapshot, trees[1]);
    return good ? 0 : MDB_CORRUPTED;
}

} // namespace

struct StoreMap {
    int descriptor;
    pthread_mutex_t growing;
    std::atomic<Mapping *> mapping;
};

StoreMap *openStoreMap(int descriptor)
{
    auto *map = static_cast<StoreMap *>(calloc(1, sizeof(StoreMap)));
    if (!map) return nullptr;
    map->descriptor = descriptor;
    pthread_mutex_init(&map->growing, nullptr);
    return map;
}

void closeStoreMap(StoreMap *map)
{
    if (!map) return;
    while (Mapping *one = map->mapping) {
        map->mapping = one->older;
        munmap(const_cast<uint8_t *>(one->base), one->size);
        free(one);
    }
    pthread_mutex_destroy(&map->growing);
    free(map);
}

bool isInMap(const StoreMap *map, const void *address)
{
    const auto *at = static_cast<const uint8_t *>(address);
    for (const Mapping *one = map->mapping.load(std::memory_order_acquire); one; one = one->older)
        if (at >= one->base && at < one->base + one->size) return true;
    return false;
}

// A map that holds so many bytes; with room for the file to grow. Null: the system gives none.
static const uint8_t *mapOf(StoreMap *map, size_t size)
{
    constexpr size_t least = size_t(1) << 22;
    Mapping *now = map->mapping.load(std::memory_order_acquire);
    if (now && now->size >= size) return now->base;
    pthread_mutex_lock(&map->growing);
    now = map->mapping.load(std::memory_order_acquire);
    if (!now || now->size < size) {
        auto *grown = static_cast<Mapping *>(malloc(sizeof(Mapping)));
        size_t wanted = size < least ? least : size * 2;
        void *base = grown ? mmap(nullptr, wanted, PROT_READ, MAP_SHARED, map->descriptor, 0) : MAP_FAILED;
        if (base == MAP_FAILED) {
            free(grown);
            now = nullptr;
        } else {
            *grown = {now, static_cast<const uint8_t *>(base), wanted};
            map->mapping.store(now = grown, std::memory_order_release);
        }
    }
    pthread_mutex_unlock(&map->growing);
    return now ? now->base : nullptr;
}

// One look at both heads. The older may have been hit by a write that failed, and it counts no
// more; but it is a head, and changes write the two in turn.
static int lookAtHeads(int descriptor, uint64_t fileSize)
{
    uint8_t heads[2][kHeadEnd];
    uint64_t changes[2];
    uint32_t pageSize = 0;
    for (uint64_t number = 0; number < 2; ++number) {
        ssize_t got = pread(descriptor, heads[number], kHeadEnd, static_cast<off_t>(number * pageSize));
        if (got < 0) return errno;
        if (got != static_cast<ssize_t>(kHeadEnd) || !isHead(heads[number], number)) return MDB_INVALID;
        uint32_t size = load<uint32_t>(heads[number] + kTreesAt);
        if (size < 512 || size > kLargestPage || (size & (size - 1)) || (number && size != pageSize))
            return MDB_CORRUPTED;
        pageSize = size;
        changes[number] = load<uint64_t>(heads[number] + kChangeAt);
    }
    if (changes[0] != changes[1] && changes[0] + 1 != changes[1] && changes[1] + 1 != changes[0]) return MDB_CORRUPTED;
    StoreSnapshot snapshot;
    return readHead(heads[changes[1] > changes[0]], fileSize / pageSize, &snapshot);
}

int checkHeads(const char *name)
{
    constexpr int tries = 100; // others may be writing
    struct stat about;
    int descriptor = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return errno;
    int error = MDB_CORRUPTED;
    for (int n = 0; error && n < tries; ++n)
        error = fstat(descriptor, &about) != 0 ? errno : lookAtHeads(descriptor, static_cast<uint64_t>(about.st_size));
    close(descriptor);
    return error;
}

static uint64_t changeOf(const uint8_t *head)
{
    return __atomic_load_n(reinterpret_cast<const uint64_t *>(head + kChangeAt), __ATOMIC_ACQUIRE);
}

// The head of a change is written over by the second one after it. So the newest is read in peace:
// nobody writes it before the next is there. One that a newer follows may be hit while it is read.
int sizeOfStore(const StoreMap *map, uint64_t *size)
{
    constexpr uint64_t heads = 2 * 4096; // as pages are here at least, where LMDB looks first
    struct stat about;
    if (fstat(map->descriptor, &about) != 0) return errno;
    *size = static_cast<uint64_t>(about.st_size);
    return *size < heads ? MDB_CORRUPTED : 0;
}

int takeSnapshot(StoreMap *map, uint64_t change, bool stuck, uint64_t size, StoreSnapshot *snapshot)
{
    const uint8_t *base = mapOf(map, size);
    if (!base) return ENOMEM;
    const uint32_t pageSize = load<uint32_t>(base + kTreesAt);
    if (pageSize < 512 || pageSize > kLargestPage || (pageSize & (pageSize - 1)) || size < 2 * uint64_t(pageSize))
        return MDB_CORRUPTED;
    const uint8_t *heads[] = {base, base + pageSize}, *wanted = nullptr;
    for (uint64_t number : {0, 1}) {
        if (!isHead(heads[number], number)) return MDB_CORRUPTED;
        if (changeOf(heads[number]) == change) wanted = heads[number];
    }
    if (const uint8_t *next = heads[(change + 1) % 2]; stuck && changeOf(next) == change + 1) {
        wanted = next;
        ++change;
    }
    if (!wanted) return changeOf(heads[0]) < change && changeOf(heads[1]) < change ? MDB_CORRUPTED : kSnapshotPassed;
    uint8_t copy[kHeadEnd];
    memcpy(copy, wanted, sizeof copy);
    if (changeOf(heads[0]) > change || changeOf(heads[1]) > change) return kSnapshotPassed;
    // It may have grown since it was asked.
    int error = 0;
    if (load<uint64_t>(copy + kLastPageAt) >= size / pageSize) error = sizeOfStore(map, &size);
    if (!error && !(base = mapOf(map, size))) error = ENOMEM;
    if (!error) error = readHead(copy, size / pageSize, snapshot);
    if (!error && (snapshot->pageSize != pageSize || snapshot->change != change)) error = MDB_CORRUPTED;
    snapshot->base = base;
    return error;
}

} // namespace filesystems
