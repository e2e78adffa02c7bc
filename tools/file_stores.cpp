// verify, rebuild, compact, keys: files of the default file system as bytes.
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/open_rules.h"
#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/share_locks.h"
#include "tools/file_program.h"
#include "tools/store_builder.h"
#include "tools/stored_file.h"

namespace file_tool {

namespace {

using filesystems::kSequenceSize;
using filesystems::kStoredHeaderSize;
using filesystems::StoredHeader;

constexpr uint64_t kMostTold = 20;

// Damage of one file: told and counted.
struct Findings {
    std::string path;
    uint64_t count = 0;
    bool failed = false; // it cannot be said whether there is any
    void add(const std::string &what)
    {
        if (++count <= kMostTold) printf("%s: %s\n", path.c_str(), what.c_str());
        if (count == kMostTold + 1) printf("%s: further damage is only counted\n", path.c_str());
    }
};

bool hasDuplicates(const StoredHeader &header, uint32_t key)
{
    return key && (header.keys[key].flags & ZVK_FILE_KEY_DUPLICATES);
}

size_t numbersSize(const StoredHeader &header)
{
    size_t size = 0;
    for (uint32_t key = 1; key < header.keyCount; ++key) size += hasDuplicates(header, key) ? kSequenceSize : 0;
    return size;
}

// The numbers and the record out of its stored form; false if no record of this file is so long.
bool takeApart(const StoredHeader &header, std::string_view stored, std::vector<uint64_t> *numbers,
               std::string_view *record)
{
    size_t size = numbersSize(header), sum = filesystems::sumSizeOf(header), around = size + sum;
    if (stored.size() < around || stored.size() - around > header.longest || stored.size() - around < header.shortest)
        return false;
    if (sum && !filesystems::hasSum(0, reinterpret_cast<const uint8_t *>(stored.data()), stored.size() - sum))
        return false;
    numbers->resize(size / kSequenceSize);
    if (size) memcpy(numbers->data(), stored.data(), size);
    *record = stored.substr(size, stored.size() - around);
    for (uint32_t key = 0; key < header.keyCount; ++key)
        if (filesystems::endOfKey(header.keys[key], header.parts) > record->size()) return false;
    return true;
}

std::string entryOf(const StoredHeader &header, uint32_t key, std::string_view record,
                    const std::vector<uint64_t> &numbers)
{
    std::string entry = keyIn(header, key, record);
    size_t n = 0;
    for (uint32_t before = 1; before < key; ++before) n += hasDuplicates(header, before);
    if (!hasDuplicates(header, key) || n >= numbers.size()) return entry;
    uint64_t swapped = __builtin_bswap64(numbers[n]);
    return entry.append(reinterpret_cast<char *>(&swapped), kSequenceSize);
}

std::string quoted(std::string_view key)
{
    std::string text = "'";
    for (unsigned char c : key)
        if (c < 0x20 || c > 0x7E) {
            char hex[8];
            snprintf(hex, sizeof hex, "\\x%02X", c);
            text += hex;
        } else {
            text += static_cast<char>(c);
        }
    return text + "'";
}

// A snapshot of a store: registered as a reader, so that what it shows stays while others write.
class Snapshot {
public:
    ~Snapshot()
    {
        if (txn_) mdb_txn_abort(txn_);
        if (env_) mdb_env_close(env_);
        if (guard_ >= 0) ::close(guard_);
    }
    Snapshot() = default;
    Snapshot(const Snapshot &) = delete;
    Snapshot &operator=(const Snapshot &) = delete;

    // 0, an errno, or what makes it no store that LMDB opens.
    int take(const std::string &path)
    {
        int error = openStoreToRead(path, &env_, &guard_);
        return error ? error : mdb_txn_begin(env_, nullptr, MDB_RDONLY, &txn_);
    }
    uint64_t change() const { return mdb_txn_id(txn_); }
    bool renew() { return mdb_txn_reset(txn_), mdb_txn_renew(txn_) == 0; }

private:
    MDB_env *env_ = nullptr;
    MDB_txn *txn_ = nullptr;
    int guard_ = -1;
};

// Maps the store as it was at one change, and stays so while `snapshot` lives.
bool mapSnapshot(const std::string &path, Snapshot *snapshot, StorePages *pages, Findings *findings)
{
    int error = snapshot->take(path);
    bool held = !error;
    if (error > 0 && error != ENOENT && error != EINVAL) {
        say("%s: %s", path.c_str(),
            error == EBUSY ? "a program is writing it, and its lock file may not be used" : strerror(error));
        return !(findings->failed = true);
    }
    if (!held)
        findings->add(std::string("its store cannot be opened (") + mdb_strerror(error) +
                      "); it is looked at as it is");
    if (!pages->map(storeOf(path))) return false;
    // Two changes after the snapshot its head page is written over.
    for (int tries = 0; tries < 1000 && held; ++tries) {
        if (pages->takeHead(snapshot->change())) return true;
        if (!snapshot->renew()) break;
    }
    return pages->takeHead();
}

// Every entry of the primary key, or of what is left of it.
uint64_t verifyRecords(const StoredHeader &header, StorePages &pages, const Tree *trees, Findings *findings)
{
    uint64_t records = 0;
    std::string before;
    Progress progress("records", trees[0].entries);
    pages.walk(trees[0], [&](const Entry &entry) {
        std::vector<uint64_t> numbers;
        std::string_view record;
        progress.at(++records);
        if (records > 1 && entry.key <= before) findings->add("the record " + quoted(entry.key) + " is out of order");
        before = entry.key;
        if (!takeApart(header, entry.value, &numbers, &record)) {
            findings->add("the record " + quoted(entry.key) + " is damaged: its length or its checksum");
            return true;
        }
        if (keyIn(header, 0, record) != entry.key)
            findings->add("the record " + quoted(entry.key) + " has the key " + quoted(keyIn(header, 0, record)));
        for (uint32_t key = 1; key < header.keyCount; ++key) {
            std::string_view primary;
            if (!pages.find(trees[key], entryOf(header, key, record, numbers), &primary) || primary != entry.key)
                findings->add("key " + std::to_string(key) + " does not lead to the record " + quoted(entry.key));
        }
        return true;
    });
    return records;
}

void verifyEntries(const StoredHeader &header, StorePages &pages, const Tree *trees, uint32_t key, uint64_t records,
                   Findings *findings)
{
    uint64_t entries = 0;
    std::string before;
    Progress progress("keys", trees[key].entries);
    pages.walk(trees[key], [&](const Entry &entry) {
        std::vector<uint64_t> numbers;
        std::string_view record, stored;
        std::string what = "key " + std::to_string(key) + ": the entry " + quoted(entry.key);
        progress.at(++entries);
        if (entries > 1 && entry.key <= before) findings->add(what + " is out of order");
        before = entry.key;
        if (!pages.find(trees[0], entry.value, &stored))
            findings->add(what + " leads to no record");
        else if (takeApart(header, stored, &numbers, &record) && entryOf(header, key, record, numbers) != entry.key)
            findings->add(what + " leads to a record with another key");
        return true;
    });
    if (entries != records)
        findings->add("key " + std::to_string(key) + " has " + std::to_string(entries) + " entries for " +
                      std::to_string(records) + " records");
}

void verifyIndexed(const StoredHeader &header, const std::string &path, Findings *findings)
{
    Snapshot snapshot;
    StorePages pages;
    pages.onDamage = [&](const std::string &what) { findings->add("store: " + what); };
    if (!mapSnapshot(path, &snapshot, &pages, findings)) {
        if (!findings->failed) findings->add("its store has no head page");
        return;
    }
    if (pages.headLost()) findings->add("one of the two head pages of its store is damaged");
    Tree trees[filesystems::kMostKeys], about;
    std::string_view identity;
    if (!pages.findTree(filesystems::kAboutDatabase, &about) || !pages.find(about, "identity", &identity) ||
        identity.size() != sizeof header.identity || memcmp(identity.data(), &header.identity, identity.size()) != 0)
        findings->add("its store belongs to another file");
    for (uint32_t key = 0; key < header.keyCount; ++key) {
        char name[8];
        filesystems::databaseName(key, name);
        if (!pages.findTree(name, &trees[key])) return findings->add("key " + std::to_string(key) + " is missing");
    }
    uint64_t records = verifyRecords(header, pages, trees, findings);
    if (records != trees[0].entries)
        findings->add("it says that it has " + std::to_string(trees[0].entries) + " records");
    for (uint32_t key = 1; key < header.keyCount; ++key) verifyEntries(header, pages, trees, key, records, findings);

    // Each page of the store is in one tree, or free.
    pages.walk(pages.mainTree(), [](const Entry &) { return true; });
    pages.walk(about, [](const Entry &) { return true; });
    pages.walkFree();
    if (pages.pages() > pages.filePages() + pages.freePages()) findings->add("its store ends before its last page");
    uint64_t counted = pages.reachedPages() + pages.freePages();
    printf("%s: %llu records under %u key%s; %llu pages, %llu of them free", path.c_str(),
           static_cast<unsigned long long>(records), header.keyCount, header.keyCount == 1 ? "" : "s",
           static_cast<unsigned long long>(pages.pages()), static_cast<unsigned long long>(pages.freePages()));
    if (counted < pages.pages())
        printf(", %llu lost until compact", static_cast<unsigned long long>(pages.pages() - counted));
    printf("\n");
}

// --- relative and sequential files

struct OpenFile {
    int descriptor = -1;
    uint64_t size = 0;
    explicit OpenFile(const std::string &path) : descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
        struct stat about;
        if (descriptor < 0 || fstat(descriptor, &about) != 0)
            say("%s: %s", path.c_str(), strerror(errno));
        else
            size = static_cast<uint64_t>(about.st_size);
    }
    ~OpenFile()
    {
        if (descriptor >= 0) ::close(descriptor);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
};

// Visits the slots that hold something: number, length word, record.
bool walkSlots(const StoredHeader &header, OpenFile &file,
               const std::function<bool(uint64_t, uint32_t, std::string_view)> &visit)
{
    uint64_t slotSize = 4 + uint64_t(header.longest) + filesystems::sumSizeOf(header);
    std::string slot(slotSize, 0);
    Progress progress("slots", file.size);
    for (uint64_t number = 1;; ++number) {
        uint64_t at = kStoredHeaderSize + (number - 1) * slotSize;
        if (at + slotSize > file.size) break;
        size_t got;
        filesystems::lockBytes(file.descriptor, false, at, slotSize); // as READ does, beside a writer
        int error = filesystems::readAll(file.descriptor, slot.data(), slotSize, at, &got);
        filesystems::unlockBytes(file.descriptor, at, slotSize);
        if (error) return say("record %llu: %s", static_cast<unsigned long long>(number), strerror(error)), false;
        uint32_t mark;
        memcpy(&mark, slot.data(), 4);
        progress.at(at);
        if (mark && !visit(number, mark, slot)) break;
        off_t data = mark ? -2 : lseek(file.descriptor, static_cast<off_t>(at + slotSize), SEEK_DATA);
        if (data == -1 && errno == ENXIO) break; // a hole up to the end
        if (data > 0 && static_cast<uint64_t>(data) > at + slotSize)
            number = (static_cast<uint64_t>(data) - kStoredHeaderSize) / slotSize; // the next one is there
    }
    return true;
}

bool possible(const StoredHeader &header, uint64_t number, uint32_t mark, std::string_view slot)
{
    if (!mark || mark - 1 > header.longest) return false;
    return !filesystems::sumSizeOf(header) ||
           filesystems::hasSum(number, reinterpret_cast<const uint8_t *>(slot.data()), 3 + size_t(mark));
}

void verifyRelative(const StoredHeader &header, const std::string &path, Findings *findings)
{
    OpenFile file(path);
    uint64_t records = 0;
    bool read = walkSlots(header, file, [&](uint64_t number, uint32_t mark, std::string_view slot) {
        if (possible(header, number, mark, slot))
            ++records;
        else
            findings->add("record " + std::to_string(number) + " is damaged: its length or its checksum");
        return true;
    });
    if (!read) findings->add("not all of it can be read");
    if (access((path + ".kvr2-rewrite").c_str(), F_OK) == 0)
        printf("%s: a change is under way, or was interrupted and is completed by the next OPEN I-O\n", path.c_str());
    printf("%s: %llu records\n", path.c_str(), static_cast<unsigned long long>(records));
}

// Sequential files of any file system: read as a program reads them.
void verifySequential(const std::string &name, const Shape &shape, Findings *findings)
{
    FileProgram file(name, shape);
    if (!file.open(ZVK_OPEN_INPUT)) return findings->add("it cannot be opened");
    StoredHeaderFile header;
    uint64_t records = 0, bytes = 0, sum = header.read(pathOf(name)) ? filesystems::sumSizeOf(header.header()) : 0;
    while (file.readNext()) {
        ++records;
        bytes += file.record().size() + (shape.variable() && prefixOf(name) != "lsq" ? 4 : 0) + sum;
        if (file.cut()) findings->add("record " + std::to_string(records) + " is longer than a record");
    }
    if (file.failed()) findings->add("damaged after record " + std::to_string(records));
    OpenFile about(pathOf(name));
    bool lines = prefixOf(name) == "lsq" || prefixOf(name) == "nat";
    uint64_t start =
        prefixOf(name) == "stl" || prefixOf(name) == "jgt" || prefixOf(name) == "qvr" ? kStoredHeaderSize : 0;
    if (!lines && !file.failed() && about.size > start + bytes)
        findings->add(std::to_string(about.size - start - bytes) + " bytes at its end are no record");
    printf("%s: %llu records\n", name.c_str(), static_cast<unsigned long long>(records));
}

} // namespace

int runVerify(const Arguments &arguments)
{
    int outcome = kDone;
    for (std::string name : arguments.names) {
        StoredHeaderFile header;
        Findings findings = {name};
        std::string path = pathOf(name), prefix = prefixOf(name);
        bool good = header.read(path);
        if (access(path.c_str(), R_OK) != 0) {
            say("%s: %s", name.c_str(), strerror(errno));
            outcome = kFailed;
            continue;
        }
        if (header.isStored() && !good)
            findings.add(header.reason());
        else if (good && (header.header().organization & ZVK_FILE_INDEXED))
            verifyIndexed(header.header(), path, &findings);
        else if (good && (header.header().organization & ZVK_FILE_RELATIVE))
            verifyRelative(header.header(), path, &findings);
        else {
            Shape shape;
            if (!findShape(name, arguments, &shape)) {
                outcome = kFailed;
                continue;
            }
            verifySequential(name, shape, &findings);
        }
        fflush(stdout);
        if (findings.count)
            say("%s: damaged in %llu place%s", name.c_str(), static_cast<unsigned long long>(findings.count),
                findings.count == 1 ? "" : "s");
        if (findings.failed) outcome = kFailed;
        if (findings.count && outcome == kDone) outcome = kDamaged;
    }
    return outcome;
}

// --- rebuild

namespace {

struct Salvage {
    uint64_t kept = 0, refused = 0, unreadable = 0, fromLost = 0, fromFree = 0;
    bool headLost = false, countKnown = true;
};

// A record of this file is known by its length and by its key, which the entry bears, too.
bool looksLikeRecord(const StoredHeader &header, const Entry &entry, std::vector<uint64_t> *numbers,
                     std::string_view *record)
{
    return takeApart(header, entry.value, numbers, record) && entry.key == keyIn(header, 0, *record);
}

// First what the tree leads to; then leaves that nothing leads to and that are not free, as a
// damaged branch leaves them; where a head page or the tree itself is lost, also free ones, which
// may be old.
bool salvageIndexed(const StoredHeader &header, const std::string &path, StoreBuilder &builder, Salvage *salvage)
{
    StorePages pages;
    if (!pages.map(storeOf(path))) return false;
    bool failed = false;
    std::vector<uint64_t> numbers;
    std::string_view record;
    auto keep = [&](uint64_t *from) {
        auto added = builder.add(record, numbers);
        if (added == StoreBuilder::Added::failed) return !(failed = true);
        if (added == StoreBuilder::Added::refused)
            ++salvage->refused;
        else
            ++salvage->kept;
        if (from && added == StoreBuilder::Added::yes) ++*from;
        return true;
    };
    bool headed = pages.takeHead();
    salvage->headLost = pages.headLost();
    Tree records, tree;
    bool rooted = headed && pages.findTree("r", &records);
    if (rooted)
        pages.walk(records, [&](const Entry &entry) {
            if (looksLikeRecord(header, entry, &numbers, &record)) return keep(nullptr);
            return ++salvage->unreadable, true;
        });
    for (uint32_t key = 1; key < header.keyCount && headed; ++key) {
        char name[8];
        filesystems::databaseName(key, name);
        if (pages.findTree(name, &tree)) pages.walk(tree, [](const Entry &) { return true; });
    }
    if (headed) pages.walkFree();
    salvage->countKnown = rooted;
    bool complete = rooted && salvage->kept + salvage->refused == records.entries;
    if (complete && !pages.headLost()) return !failed;
    auto lost = [&](uint64_t *count) {
        return [&, count](const Entry &entry) {
            if (!looksLikeRecord(header, entry, &numbers, &record) || builder.has(entry.key)) return true;
            return keep(count);
        };
    };
    pages.walkUnreached(false, lost(pages.headLost() ? &salvage->fromFree : &salvage->fromLost));
    if (!rooted || pages.headLost()) pages.walkUnreached(true, lost(&salvage->fromFree));
    salvage->unreadable = 0;
    if (rooted && records.entries > salvage->kept) salvage->unreadable = records.entries - salvage->kept;
    return !failed;
}

bool salvageRelative(const StoredHeader &header, const std::string &path, const std::string &to, Salvage *salvage)
{
    Shape shape;
    shape.organization = header.organization;
    shape.longest = header.longest;
    shape.shortest = header.shortest;
    OpenFile file(path);
    FileProgram made("stl-" + to, shape, true);
    if (file.descriptor < 0 || !made.open(ZVK_OPEN_OUTPUT)) return false;
    bool failed = false;
    bool read = walkSlots(header, file, [&](uint64_t number, uint32_t mark, std::string_view slot) {
        if (!possible(header, number, mark, slot) || mark - 1 < header.shortest) return ++salvage->unreadable, true;
        std::string status = made.write(slot.substr(4, mark - 1), number);
        ++(status > "09" ? salvage->refused : salvage->kept);
        return !(failed = status >= "30");
    });
    return made.close() && read && !failed;
}

bool salvageSequential(const StoredHeader &header, const std::string &path, const std::string &to, Salvage *salvage)
{
    Shape shape;
    shape.longest = header.longest;
    shape.shortest = header.shortest;
    OpenFile file(path);
    FileProgram made("stl-" + to, shape);
    if (file.descriptor < 0 || !made.open(ZVK_OPEN_OUTPUT)) return false;
    std::string record(header.longest + 4, 0);
    uint64_t at = kStoredHeaderSize;
    const size_t sum = filesystems::sumSizeOf(header);
    while (at < file.size) {
        uint32_t length = header.longest;
        size_t got = 0, word = shape.variable() ? 4 : 0;
        if (word && (filesystems::readAll(file.descriptor, &length, 4, at, &got) || got != 4)) break;
        if (length > header.longest || length < header.shortest) break; // where the next one begins is not known
        if (filesystems::readAll(file.descriptor, record.data(), length + sum, at + word, &got) || got != length + sum)
            break;
        if (sum && !filesystems::hasSum(at + word, reinterpret_cast<const uint8_t *>(record.data()), length)) {
            ++salvage->unreadable; // its length leads to the next one all the same
            at += word + length + sum;
            continue;
        }
        if (made.write(std::string_view(record).substr(0, length)) > "09") return false;
        ++salvage->kept;
        at += word + length + sum;
    }
    if (at < file.size) {
        say("%llu bytes at the end are no record", static_cast<unsigned long long>(file.size - at));
        ++salvage->unreadable;
    }
    return made.close();
}

// The header of a damaged file: its own, or what the command line says of it.
bool headerToSalvage(const std::string &path, const Arguments &arguments, StoredHeader *header)
{
    StoredHeaderFile file;
    if (file.read(path)) {
        *header = file.header();
        return true;
    }
    if (arguments.shape.longest && arguments.shape.indexed() == !arguments.shape.keys.empty()) {
        *header = headerOf(arguments.shape);
        return true;
    }
    say("%s: %s; say what it is: --organization, --record, --key", path.c_str(), file.reason());
    return false;
}

} // namespace

int runRebuild(const Arguments &arguments)
{
    std::string path = pathOf(arguments.names[0]), to = pathOf(arguments.names[1]);
    StoredHeader header;
    if (!headerToSalvage(path, arguments, &header)) return kFailed;
    if (!arguments.force && access(to.c_str(), F_OK) == 0)
        return say("%s: it exists; --force writes over it", to.c_str()), kFailed;
    if (isSameFile(path, to)) return kUsage;
    char room[PATH_MAX];
    if (const char *itself = filesystems::resolvedName(to.c_str(), room)) to = itself;
    Salvage salvage;
    bool good;
    if (header.organization & ZVK_FILE_INDEXED) {
        StoreBuilder builder;
        OwnedFile old(to); // what is written over is nobody else's
        if (access(to.c_str(), F_OK) == 0 && !old.take()) return kFailed;
        unlink((to + ".mdb-lock").c_str());
        good = builder.create(to, header) && salvageIndexed(header, path, builder, &salvage) && builder.finish();
    } else if (header.organization & ZVK_FILE_RELATIVE) {
        good = salvageRelative(header, path, to, &salvage);
    } else {
        good = salvageSequential(header, path, to, &salvage);
    }
    auto number = [](uint64_t n) { return static_cast<unsigned long long>(n); };
    if (!good) return say("%s: not rebuilt", path.c_str()), kFailed;
    say("%llu records kept, %llu lost, %llu refused for a key that is there twice", number(salvage.kept),
        number(salvage.unreadable), number(salvage.refused));
    if (!salvage.countKnown) say("how many are missing is not known: the index of the records is lost");
    if (salvage.fromLost) say("%llu of them were found beside the damaged index", number(salvage.fromLost));
    if (salvage.fromFree)
        say("%llu of them lie in pages whose use is not known: they may be old, or deleted", number(salvage.fromFree));
    if (salvage.headLost) say("a head page is damaged: changes of the last commit may be missing");
    return salvage.unreadable || salvage.refused || !salvage.countKnown || salvage.headLost ? kDamaged : kDone;
}

// --- compact and keys: a new store in the old one's place

namespace {

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
            if (!(header.header().organization & ZVK_FILE_INDEXED)) {
                say("%s: only an indexed file has anything to compact", path.c_str());
                now = kDone;
            } else {
                StoreBuilder builder;
                bool good = builder.create(owned.newName(), header.header());
                for (uint32_t key = 0; key < header.header().keyCount && good; ++key) {
                    uint64_t entries = 0;
                    Progress progress("compact", trees[key].entries);
                    pages.walk(trees[key], [&](const Entry &entry) {
                        std::vector<uint64_t> numbers;
                        std::string_view record;
                        progress.at(++entries);
                        if (!key && !looksLikeRecord(header.header(), entry, &numbers, &record)) ++pages.damages;
                        return good = builder.append(key, entry);
                    });
                    if (entries != trees[key].entries) ++pages.damages;
                }
                struct stat before {
                }, after{};
                stat(storeOf(path).c_str(), &before);
                good = good && !pages.damages && builder.finish() && owned.replaceByNew();
                now = ended(good, pages, path);
                if (now == kDone && stat(storeOf(path).c_str(), &after) == 0)
                    say("%s: %lld KB before, %lld KB now", path.c_str(), static_cast<long long>(before.st_size / 1024),
                        static_cast<long long>(after.st_size / 1024));
            }
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
