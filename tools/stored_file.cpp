#include "tools/stored_file.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/store_layout.h"

namespace file_tool {

// --- the header

bool StoredHeaderFile::read(const std::string &path)
{
    int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat about;
    ssize_t got = -1;
    if (descriptor >= 0 && fstat(descriptor, &about) == 0 && !S_ISREG(about.st_mode))
        reason_ = "it is no regular file";
    else if (descriptor < 0 || (got = pread(descriptor, &header_, sizeof header_, 0)) < 0)
        reason_ = strerror(errno);
    if (descriptor >= 0) ::close(descriptor);
    unreadable_ = got < 0;
    if (unreadable_) return false;
    size_t size = static_cast<size_t>(got);
    marked_ = size >= 11 && filesystems::hasMark(header_);
    if (!size)
        reason_ = "it is empty";
    else if (!marked_)
        reason_ = "it has no header";
    else if (size != sizeof header_ || header_.checksum != filesystems::checksumOf(header_))
        reason_ = "its header is damaged";
    else if (header_.keyCount > filesystems::kMostKeys)
        reason_ = "its header has too many keys";
    else if (!filesystems::keysMakeSense(header_))
        reason_ = "its header has a key that is too long, or outside its records";
    return reason_.empty();
}

Shape StoredHeaderFile::shape() const
{
    Shape shape;
    shape.organization = header_.organization;
    shape.longest = header_.longest;
    shape.shortest = header_.shortest;
    for (uint32_t i = 0; i < header_.keyCount; ++i) {
        FileKey key = header_.keys[i];
        for (uint32_t n = 1; n <= key.reserved[0]; ++n) {
            filesystems::KeyPart part = filesystems::partOf(key, header_.parts, n);
            shape.parts.push_back({part.length, part.position, 0, {}});
        }
        if (filesystems::isSplit(key)) key.flags |= ZVK_FILE_KEY_PARTS;
        shape.keys.push_back(key);
    }
    return shape;
}

void layOutKeys(const Shape &shape, FileKey *table, size_t room)
{
    size_t at = 0;
    for (const auto *some : {&shape.keys, &shape.parts})
        for (const FileKey &key : *some)
            if (at < room) table[at++] = key;
}

filesystems::StoredHeader headerOf(const Shape &shape)
{
    struct {
        FIB fib{};
        FileKey keys[filesystems::kMostKeys + filesystems::kMostKeyParts]{};
    } laidOut;
    laidOut.fib.organization = shape.organization;
    laidOut.fib.maxRecord = shape.longest;
    laidOut.fib.minRecord = shape.shortest;
    laidOut.fib.keyCount = static_cast<uint32_t>(shape.keys.size());
    laidOut.fib.keysOffset =
        static_cast<uint32_t>(reinterpret_cast<uint8_t *>(laidOut.keys) - reinterpret_cast<uint8_t *>(&laidOut.fib));
    layOutKeys(shape, laidOut.keys, filesystems::kMostKeys + filesystems::kMostKeyParts);
    filesystems::StoredHeader header;
    filesystems::describeFile(&laidOut.fib, &header);
    return header;
}

std::string keyIn(const filesystems::StoredHeader &header, uint32_t key, std::string_view record)
{
    const FileKey &about = header.keys[key];
    std::string room(about.length, 0);
    const uint8_t *bytes =
        filesystems::bytesOfKey(about, header.parts, reinterpret_cast<const uint8_t *>(record.data()),
                                reinterpret_cast<uint8_t *>(room.data()));
    return bytes == reinterpret_cast<uint8_t *>(room.data())
               ? room
               : std::string(reinterpret_cast<const char *>(bytes), about.length);
}

std::string storeOf(const std::string &path)
{
    char link, room[PATH_MAX];
    bool isLink = readlink(path.c_str(), &link, 1) == 1 && realpath(path.c_str(), room);
    return (isLink ? std::string(room) : path) + ".mdb";
}

// --- pages

static constexpr uint16_t kBranch = 1, kLeaf = 2, kOverflow = 4, kHead = 8;
static constexpr uint16_t kValueElsewhere = 1;
static constexpr size_t kHeadSize = 16, kNodeSize = 8;
static constexpr uint64_t kNoPage = ~uint64_t(0);
static constexpr int kDeepest = 32;

struct StorePages::Page {
    const uint8_t *bytes;
    uint64_t number;
    uint16_t flags, lower, upper;
    size_t nodes;
};

template <class T>
static T load(const uint8_t *from)
{
    T value;
    memcpy(&value, from, sizeof value);
    return value;
}

// The disk gives a page no more: there is no status for it.
static void onBusError(int)
{
    static const char text[] = "kvr2-file: the disk could not be read, or the file became shorter meanwhile\n";
    if (write(2, text, sizeof text - 1) < 0) _exit(kFailed);
    _exit(kFailed);
}

StorePages::~StorePages() { unmap(); }

void StorePages::unmap()
{
    if (base_) munmap(const_cast<uint8_t *>(base_), size_);
    base_ = nullptr;
}

bool StorePages::map(const std::string &name)
{
    unmap();
    int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat about {};
    if (descriptor < 0 || fstat(descriptor, &about) != 0) {
        say("%s: %s", name.c_str(), strerror(errno));
        if (descriptor >= 0) ::close(descriptor);
        return false;
    }
    size_ = static_cast<size_t>(about.st_size);
    void *mapped = size_ ? mmap(nullptr, size_, PROT_READ, MAP_SHARED, descriptor, 0) : nullptr;
    ::close(descriptor);
    if (!mapped || mapped == MAP_FAILED) {
        say("%s: %s", name.c_str(), size_ ? strerror(errno) : "it is empty");
        return false;
    }
    signal(SIGBUS, onBusError);
    base_ = static_cast<const uint8_t *>(mapped);
    filePages_ = size_ / pageSize_;
    if (!change_) lastPage_ = filePages_ ? filePages_ - 1 : 0;
    marks_.assign(filePages_, unknown);
    if (change_) mark(0, 2, used);
    return true;
}

// A head page: magic, version, address, map size, the two trees, the last page, the change.
bool StorePages::takeHead(uint64_t change)
{
    constexpr uint32_t magic = 0xBEEFC0DE;
    constexpr size_t treesAt = kHeadSize + 24, lastAt = treesAt + 2 * sizeof(Tree), changeAt = lastAt + 8;
    bool found = false;
    int good = 0;
    uint32_t agreed = 0;
    // The second head first: it is where its page size says, so that says more than the other's.
    for (size_t at : {size_t(pageSize_), size_t(0)}) {
        if (size_ < at + changeAt + 8) continue;
        const uint8_t *page = base_ + at;
        if (load<uint32_t>(page + kHeadSize) != magic || load<uint32_t>(page + kHeadSize + 4) != 1) continue;
        if (!(load<uint16_t>(page + 10) & kHead)) continue;
        uint64_t itsChange = load<uint64_t>(page + changeAt);
        uint32_t pageSize = load<uint32_t>(page + treesAt);
        if (pageSize < 512 || pageSize > 65536 || (pageSize & (pageSize - 1)) || size_ < 2 * size_t(pageSize)) continue;
        if (at ? pageSize != at : agreed && pageSize != agreed) continue;
        // Pages that no commit has written yet may be beyond the end of the file, but not far.
        uint64_t last = load<uint64_t>(page + lastAt), filePages = size_ / pageSize;
        if (last < 1 || last >= filePages + filePages / 2 + 4096) continue;
        ++good;
        agreed = pageSize;
        if (change ? itsChange != change : found && itsChange < change_) continue;
        found = true;
        pageSize_ = pageSize;
        change_ = itsChange;
        lastPage_ = last;
        memcpy(trees_, page + treesAt, sizeof trees_);
    }
    headLost_ = good < 2;
    if (!found) return false;
    // A head is written over by the second change after its own, in the order of its bytes. It was
    // read in peace if not even the first one is there.
    for (size_t at : {size_t(0), size_t(pageSize_)})
        if (change && size_ >= at + changeAt + 8 &&
            __atomic_load_n(reinterpret_cast<const uint64_t *>(base_ + at + changeAt), __ATOMIC_ACQUIRE) > change)
            return change_ = 0, false;
    filePages_ = size_ / pageSize_;
    marks_.assign(filePages_, unknown);
    reached_ = freePages_ = 0;
    mark(0, 2, used);
    return true;
}

void StorePages::damage(const std::string &what)
{
    ++damages;
    if (onDamage) onDamage(what);
}

void StorePages::mark(uint64_t number, uint64_t count, Mark what)
{
    for (uint64_t page = number; page < number + count && page < filePages_; ++page) {
        if (marks_[page] != unknown)
            damage("page " + std::to_string(page) + " belongs to two places");
        else
            (what == used ? reached_ : freePages_) += 1;
        marks_[page] = what;
    }
}

// A leaf or branch, if its head makes sense.
bool StorePages::pageAt(uint64_t number, Page *page, std::string *why) const
{
    *why = "page " + std::to_string(number) + " ";
    if (number < 2 || number >= filePages_) return *why += "is outside the file", false;
    const uint8_t *bytes = base_ + number * pageSize_;
    *page = {bytes, number, load<uint16_t>(bytes + 10), load<uint16_t>(bytes + 12), load<uint16_t>(bytes + 14), 0};
    if (load<uint64_t>(bytes) != number) return *why += "bears another number", false;
    if (page->flags != kBranch && page->flags != kLeaf) return *why += "is neither branch nor leaf", false;
    if (page->lower < kHeadSize || page->lower > page->upper || page->upper > pageSize_ || page->lower % 2)
        return *why += "has an impossible head", false;
    page->nodes = (page->lower - kHeadSize) / 2;
    if (page->flags == kBranch && page->nodes < 2) return *why += "is a branch without branches", false;
    return true;
}

bool StorePages::entryAt(const Page &page, size_t node, Entry *entry, uint64_t *firstOverflow, std::string *why) const
{
    uint16_t offset = load<uint16_t>(page.bytes + kHeadSize + 2 * node);
    *firstOverflow = 0;
    *why = "page " + std::to_string(page.number) + ", node " + std::to_string(node) + ": ";
    if (offset < page.upper || offset + kNodeSize > pageSize_) return *why += "it is outside the page", false;
    const uint8_t *bytes = page.bytes + offset;
    size_t size = load<uint16_t>(bytes) | size_t(load<uint16_t>(bytes + 2)) << 16;
    uint16_t flags = load<uint16_t>(bytes + 4);
    size_t keySize = load<uint16_t>(bytes + 6);
    const char *key = reinterpret_cast<const char *>(bytes + kNodeSize);
    if (offset + kNodeSize + keySize > pageSize_) return *why += "its key is outside the page", false;
    entry->key = {key, keySize};
    if (page.flags == kBranch) {
        // A branch keeps the number of the page below in place of size and flags.
        *firstOverflow = size | uint64_t(flags) << 32;
        return true;
    }
    size_t inPage = flags & kValueElsewhere ? 8 : size;
    if (offset + kNodeSize + keySize + inPage > pageSize_) return *why += "its value is outside the page", false;
    if (!(flags & kValueElsewhere)) {
        entry->value = {key + keySize, size};
        return true;
    }
    uint64_t first = load<uint64_t>(bytes + kNodeSize + keySize);
    uint64_t count = (kHeadSize + size + pageSize_ - 1) / pageSize_;
    if (first < 2 || first >= filePages_ || count > filePages_ - first)
        return *why += "its value is outside the file", false;
    const uint8_t *value = base_ + first * pageSize_;
    if (load<uint64_t>(value) != first || load<uint16_t>(value + 10) != kOverflow || load<uint32_t>(value + 12) < count)
        return *why += "its value's page is none", false;
    *firstOverflow = first;
    entry->value = {reinterpret_cast<const char *>(value + kHeadSize), size};
    return true;
}

bool StorePages::walkPage(uint64_t number, int depth, const Visit &visit)
{
    Page page;
    std::string why;
    if (depth > kDeepest) return damage("a tree is too deep"), true;
    if (!pageAt(number, &page, &why)) return damage(why), true;
    if (marks_[number] == used) return damage("page " + std::to_string(number) + " belongs to two places"), true;
    mark(number, 1, used);
    for (size_t node = 0; node < page.nodes; ++node) {
        Entry entry;
        uint64_t next;
        if (!entryAt(page, node, &entry, &next, &why)) {
            damage(why);
            continue;
        }
        if (page.flags == kBranch) {
            if (!walkPage(next, depth + 1, visit)) return false;
            continue;
        }
        if (next) mark(next, load<uint32_t>(base_ + next * pageSize_ + 12), used);
        if (!visit(entry)) return false;
    }
    return true;
}

void StorePages::walk(const Tree &tree, const Visit &visit)
{
    if (tree.root != kNoPage) walkPage(tree.root, 0, visit);
}

bool StorePages::find(const Tree &tree, std::string_view key, std::string_view *value)
{
    uint64_t number = tree.root;
    Page page;
    std::string why;
    for (int depth = 0; number != kNoPage && depth <= kDeepest && pageAt(number, &page, &why); ++depth) {
        // The last node that is not above the key; the first of a branch has no key.
        size_t low = page.flags == kBranch ? 1 : 0, high = page.nodes;
        Entry entry;
        while (low < high) {
            size_t middle = (low + high) / 2;
            if (!entryAt(page, middle, &entry, &number, &why)) return false;
            if (entry.key <= key)
                low = middle + 1;
            else
                high = middle;
        }
        if (low == 0 || !entryAt(page, low - 1, &entry, &number, &why)) return false;
        if (page.flags == kBranch) continue;
        *value = entry.value;
        return entry.key == key;
    }
    return false;
}

bool StorePages::findTree(const char *name, Tree *tree)
{
    std::string_view value;
    if (!find(trees_[1], name, &value) || value.size() != sizeof *tree) return false;
    memcpy(tree, value.data(), sizeof *tree);
    return true;
}

bool identityOf(StorePages &pages, uint64_t *identity)
{
    Tree about;
    std::string_view value;
    if (!pages.findTree(filesystems::kAboutDatabase, &about) || !pages.find(about, "identity", &value)) return false;
    if (value.size() != sizeof *identity) return false;
    memcpy(identity, value.data(), sizeof *identity);
    return true;
}

void StorePages::walkFree()
{
    walk(trees_[0], [&](const Entry &entry) {
        // The change that freed them, and a list: how many, then their numbers.
        size_t words = entry.value.size() / 8;
        const auto *list = reinterpret_cast<const uint8_t *>(entry.value.data());
        uint64_t count = words ? load<uint64_t>(list) : 0;
        if (!words || count > words - 1) return damage("a list of free pages is longer than its room"), true;
        for (uint64_t i = 1; i <= count; ++i) {
            uint64_t page = load<uint64_t>(list + 8 * i);
            // Pages beyond the end of the file were never written.
            if (page < 2 || page > lastPage_)
                damage("a free page is outside the store");
            else if (page < filePages_)
                mark(page, 1, freed);
            else
                ++freePages_;
        }
        return true;
    });
}

void StorePages::walkUnreached(bool free, const Visit &visit)
{
    Page page;
    std::string why;
    // What lies beyond the last page was never committed, if the last page is known.
    for (uint64_t number = 2; number < filePages_ && (headLost_ || number <= lastPage_); ++number) {
        if (marks_[number] != (free ? freed : unknown) || !pageAt(number, &page, &why) || page.flags != kLeaf) continue;
        for (size_t node = 0; node < page.nodes; ++node) {
            Entry entry;
            uint64_t next;
            if (entryAt(page, node, &entry, &next, &why) && !visit(entry)) return;
        }
    }
}

} // namespace file_tool
