// compact, keys add, keys drop: a new store takes the old one's place.
#include <cstdlib>
#include <memory>
#include <sys/stat.h>

#include "tools/file_program.h"
#include "tools/store_builder.h"
#include "tools/stored_file.h"
#include "tools/stored_records.h"

namespace file_tool {

namespace {

using filesystems::StoredHeader;

// Opens the store of a file that is `owned`; damage ends the command.
bool openOwned(OwnedFile &owned, const std::string &path, StoredHeaderFile *header, StorePages *pages, Tree *trees)
{
    if (!owned.take()) return false;
    if (!header->read(path)) return say("%s: %s", path.c_str(), header->reason()), false;
    if (!(header->header().organization & ZVK_FILE_INDEXED)) return true;
    pages->onDamage = [=](const std::string &what) { say("%s.mdb: %s", path.c_str(), what.c_str()); };
    if (!pages->map(storeOf(path))) return false;
    bool good = pages->takeHead() && !pages->headLost();
    for (uint32_t key = 0; key < header->header().keyCount && good; ++key) {
        char name[8];
        filesystems::databaseName(key, name);
        good = pages->findTree(name, &trees[key]);
    }
    if (!good) say("%s: its store is damaged; kvr2-file rebuild takes what is readable", path.c_str());
    return good;
}

int ended(bool good, const StorePages &pages, const std::string &path)
{
    if (pages.damages)
        say("%s: it is damaged and stays as it was; kvr2-file rebuild takes what is readable", path.c_str());
    return good && !pages.damages ? kDone : pages.damages ? kDamaged : kFailed;
}

// The file with other keys: `from` says for each of the new keys which it was, -1: none.
int changeKeys(const std::string &path, OwnedFile &owned, const StoredHeader &old, StorePages &pages, const Tree *trees,
               const StoredHeader &wanted, const std::vector<int> &from)
{
    StoreBuilder builder;
    if (!builder.create(owned.newName(), wanted)) return kFailed;
    uint64_t records = 0;
    bool failed = false;
    Progress progress("records", trees[0].entries);
    pages.walk(trees[0], [&](const Entry &entry) {
        std::vector<uint64_t> numbers, newNumbers;
        std::string_view record;
        if (!takeApart(old, entry.value, &numbers, &record)) return ++pages.damages, false;
        for (uint32_t key = 1; key < wanted.keyCount; ++key) {
            if (!hasDuplicates(wanted, key)) continue;
            size_t n = 0;
            for (int before = 1; before < from[key]; ++before) n += hasDuplicates(old, static_cast<uint32_t>(before));
            newNumbers.push_back(from[key] < 0 ? 0 : numbers[n]);
        }
        auto added = builder.add(record, newNumbers);
        if (added == StoreBuilder::Added::refused)
            say("%s: the record %s has a value of the new key that another has, too; the key needs duplicates",
                path.c_str(), quoted(entry.key).c_str());
        failed = added != StoreBuilder::Added::yes;
        progress.at(++records);
        return !failed;
    });
    bool good = !failed && !pages.damages && records == trees[0].entries && builder.finish() && owned.replaceByNew();
    if (!good && !failed && !pages.damages && records != trees[0].entries) ++pages.damages;
    return ended(good, pages, path);
}

// A store of the same entries without free pages.
int compactStore(const std::string &path, OwnedFile &owned, const StoredHeader &header, StorePages &pages,
                 const Tree *trees)
{
    StoreBuilder builder;
    bool good = builder.create(owned.newName(), header);
    for (uint32_t key = 0; key < header.keyCount && good; ++key) {
        uint64_t entries = 0;
        Progress progress("compact", trees[key].entries);
        pages.walk(trees[key], [&](const Entry &entry) {
            std::vector<uint64_t> numbers;
            std::string_view record;
            progress.at(++entries);
            if (!key && !looksLikeRecord(header, entry, &numbers, &record)) ++pages.damages;
            return good = builder.append(key, entry);
        });
        if (entries != trees[key].entries) ++pages.damages;
    }

    struct stat before {
    }, after{};
    stat(storeOf(path).c_str(), &before);
    good = good && !pages.damages && builder.finish() && owned.replaceByNew();
    int outcome = ended(good, pages, path);
    if (outcome == kDone && stat(storeOf(path).c_str(), &after) == 0)
        say("%s: %lld KB before, %lld KB now", path.c_str(), static_cast<long long>(before.st_size / 1024),
            static_cast<long long>(after.st_size / 1024));
    return outcome;
}

} // namespace

int runCompact(const Arguments &arguments)
{
    int outcome = kDone;
    for (const std::string &name : arguments.names) {
        std::string path = pathOf(name);
        OwnedFile owned(path);
        StoredHeaderFile header;
        StorePages pages;
        auto trees = std::make_unique<Tree[]>(filesystems::kMostKeys);
        int now = kFailed;
        if (openOwned(owned, path, &header, &pages, trees.get())) {
            now = kDone;
            if (header.header().organization & ZVK_FILE_INDEXED)
                now = compactStore(path, owned, header.header(), pages, trees.get());
            else
                say("%s: only an indexed file has anything to compact", path.c_str());
        }
        if (now > outcome || now == kFailed) outcome = now;
    }
    return outcome;
}

int runKeysAdd(const Arguments &arguments)
{
    std::string path = pathOf(arguments.names[0]);
    OwnedFile owned(path);
    StoredHeaderFile file;
    StorePages pages;
    auto trees = std::make_unique<Tree[]>(filesystems::kMostKeys);
    if (arguments.shape.keys.empty()) return say("say which: --key=POSITION:LENGTH[,POSITION:LENGTH...][:d]"), kUsage;
    if (!openOwned(owned, path, &file, &pages, trees.get())) return kFailed;
    StoredHeader old = file.header();
    if (!(old.organization & ZVK_FILE_INDEXED)) return say("%s: it is no indexed file", path.c_str()), kFailed;
    Shape wanted = file.shape();
    std::vector<int> from;
    for (size_t key = 0; key < wanted.keys.size(); ++key) from.push_back(static_cast<int>(key));
    for (const FileKey &key : arguments.shape.keys) {
        wanted.keys.push_back(key);
        from.push_back(-1);
    }
    wanted.parts.insert(wanted.parts.end(), arguments.shape.parts.begin(), arguments.shape.parts.end());
    if (wanted.keys.size() > filesystems::kMostKeys) return say("%s: too many keys", path.c_str()), kFailed;
    StoredHeader header = headerOf(wanted);
    for (uint32_t key = old.keyCount; key < header.keyCount; ++key)
        if (header.keys[key].length > filesystems::kLongestKey ||
            !filesystems::keyMakesSense(header.keys[key], header.parts, header.longest))
            return say("%s: the key does not fit its records", path.c_str()), kFailed;
    return changeKeys(path, owned, old, pages, trees.get(), header, from);
}

int runKeysDrop(const Arguments &arguments)
{
    std::string path = pathOf(arguments.names[0]);
    OwnedFile owned(path);
    StoredHeaderFile file;
    StorePages pages;
    auto trees = std::make_unique<Tree[]>(filesystems::kMostKeys);
    char *end;
    unsigned long number = strtoul(arguments.names[1].c_str(), &end, 10);
    if (*end || number == 0) return say("'%s' is no number of an alternate key", arguments.names[1].c_str()), kUsage;
    if (!openOwned(owned, path, &file, &pages, trees.get())) return kFailed;
    StoredHeader old = file.header();
    Shape wanted = file.shape();
    if (number >= wanted.keys.size()) return say("%s: it has no alternate key %lu", path.c_str(), number), kFailed;
    std::vector<int> from;
    for (size_t key = 0; key < wanted.keys.size(); ++key)
        if (key != number) from.push_back(static_cast<int>(key));
    long before = 0; // parts of the keys before it
    for (size_t key = 0; key < number; ++key) before += wanted.keys[key].reserved[0];
    wanted.parts.erase(wanted.parts.begin() + before, wanted.parts.begin() + before + wanted.keys[number].reserved[0]);
    wanted.keys.erase(wanted.keys.begin() + static_cast<long>(number));
    return changeKeys(path, owned, old, pages, trees.get(), headerOf(wanted), from);
}

} // namespace file_tool
