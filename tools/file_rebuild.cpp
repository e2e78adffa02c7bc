// rebuild: what is readable out of a damaged file, and a count of what is not.
#include <climits>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/open_rules.h"
#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/share_locks.h"
#include "tools/file_program.h"
#include "tools/store_builder.h"
#include "tools/stored_file.h"
#include "tools/stored_records.h"

namespace file_tool {

namespace {

using filesystems::kStoredHeaderSize;
using filesystems::StoredHeader;

struct Salvage {
    uint64_t kept = 0, refused = 0, unreadable = 0, fromLost = 0, fromFree = 0;
    bool headLost = false, countKnown = true;
};

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
        if (!isPossibleSlot(header, number, mark, slot) || mark - 1 < header.shortest)
            return ++salvage->unreadable, true;
        std::string status = made.write(slot.substr(4, mark - 1), number);
        ++(status > "09" ? salvage->refused : salvage->kept);
        return !(failed = status >= "30");
    });
    if (uint64_t rest = tornSlot(header, file)) {
        say("%llu bytes at the end are no record", static_cast<unsigned long long>(rest));
        ++salvage->unreadable;
    }
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
    OpenFile source(path); // while it is read, nobody writes to it
    FCB fcb{};
    FIB fib{};
    filesystems::ShareHeld held;
    fcb.requestedMode = ZVK_OPEN_INPUT;
    if (source.descriptor < 0) return kFailed;
    if (!filesystems::takeFile(&fcb, &fib, source.descriptor, {filesystems::shareReadOnly, filesystems::shareReadOnly},
                               &held))
        return say("%s: the file is in use; kvr2-file info says by whom", path.c_str()), kFailed;
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

} // namespace file_tool
