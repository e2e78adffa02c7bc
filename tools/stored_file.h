// A file of the default file system as bytes: its header, and the pages of its store.
//
// The pages are read here and not through LMDB, which trusts them: every number that leads from
// one to another is held against the file's size, so damage is counted and what is beside it is
// read. A page of the store is a leaf or branch of one of its trees, or belongs to a value that is
// too long for one:
//
//     head, 16 bytes     number, flags, where the free middle begins and ends
//     offsets            two bytes a node, in the order of the keys
//     nodes              leaf: key and value; branch: the first key of the page that it leads to
//
// Two head pages lead to the trees, the newer one counts. A change writes new pages and frees the
// old ones, whose numbers are in the tree of free pages; their content stays until they are used
// anew, so a page that no tree leads to may hold what a record was before.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "companions/filesystems/stored_header.h"
#include "tools/file_tool.h"

namespace file_tool {

class StoredHeaderFile {
public:
    // False: `reason` says why.
    bool read(const std::string &path);
    bool isStored() const { return marked_; }         // what was read begins as a file of this file system does
    bool isUnreadable() const { return unreadable_; } // what it is cannot be said
    const char *reason() const { return reason_.c_str(); }
    const filesystems::StoredHeader &header() const { return header_; }
    Shape shape() const;

private:
    filesystems::StoredHeader header_{};
    bool marked_ = false, unreadable_ = false;
    std::string reason_;
};

// The key table of a FIB: keys, then parts.
void layOutKeys(const Shape &shape, FileKey *table, size_t room);
filesystems::StoredHeader headerOf(const Shape &shape);
// The key of a record that is long enough for it.
std::string keyIn(const filesystems::StoredHeader &header, uint32_t key, std::string_view record);
std::string storeOf(const std::string &path);                 // NAME.mdb of the file itself
bool identityOf(class StorePages &pages, uint64_t *identity); // of the file that a store belongs to

// A tree of the store, as its parent knows it.
struct Tree {
    uint32_t padding;
    uint16_t flags, depth;
    uint64_t branchPages, leafPages, overflowPages, entries, root;
};

struct Entry {
    std::string_view key, value;
};

class StorePages {
public:
    StorePages() = default;
    ~StorePages();
    StorePages(const StorePages &) = delete;
    StorePages &operator=(const StorePages &) = delete;

    // Maps the file; false: it has said why. A file without a head page that counts is mapped, too.
    // Once more after `takeHead`: if the file has grown by then.
    bool map(const std::string &name);
    // Takes the head page of that change, 0: the newer one. False: there is none. With one of the
    // two damaged, the other may be that of the change before the last: `headLost`.
    bool takeHead(uint64_t change = 0);

    // All entries of a tree in order, as far as its pages can be read. `visit` returns false to
    // end it.
    using Visit = std::function<bool(const Entry &)>;
    void walk(const Tree &tree, const Visit &visit);
    // The tree of a key by its name, "r", "1", ...; false: there is none that can be read.
    bool findTree(const char *name, Tree *tree);
    bool find(const Tree &tree, std::string_view key, std::string_view *value);
    // The pages that the tree of free pages lists are marked; two trees with one page are damage.
    void walkFree();
    // Entries of every leaf that no tree led to: of the pages that are listed as free, if `free`,
    // or of the others.
    void walkUnreached(bool free, const Visit &visit);

    uint64_t pages() const { return lastPage_ + 1; } // of the store as the head page knows it
    uint64_t filePages() const { return filePages_; }
    uint64_t freePages() const { return freePages_; }
    uint64_t reachedPages() const { return reached_; }
    uint64_t change() const { return change_; }
    bool headLost() const { return headLost_; }
    uint32_t pageSize() const { return pageSize_; }
    const Tree &mainTree() const { return trees_[1]; }

    // What was found so far.
    uint64_t damages = 0;
    std::function<void(const std::string &)> onDamage;

private:
    enum Mark : uint8_t { unknown, used, freed };
    const uint8_t *base_ = nullptr;
    size_t size_ = 0;
    uint64_t filePages_ = 0, lastPage_ = 0, change_ = 0, freePages_ = 0, reached_ = 0;
    uint32_t pageSize_ = 4096;
    bool headLost_ = false;
    Tree trees_[2]{};
    std::vector<uint8_t> marks_;

    struct Page;
    void unmap();
    bool pageAt(uint64_t number, Page *page, std::string *why) const;
    bool entryAt(const Page &page, size_t node, Entry *entry, uint64_t *firstOverflow, std::string *why) const;
    bool walkPage(uint64_t number, int depth, const Visit &visit);
    void mark(uint64_t number, uint64_t count, Mark what);
    void damage(const std::string &what);
};

} // namespace file_tool
