// info: what a file is, and who has it open or holds records of it.
//
// Locks are of the open file description, and the system tells them, with their bytes, for each
// descriptor of a process (/proc/PID/fdinfo). Those of processes that may not be looked at are not
// seen, which is said.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/share_locks.h"
#include "companions/filesystems/store_layout.h"
#include "tools/file_program.h"
#include "tools/store_reader.h"

namespace file_tool {

namespace {

unsigned long long number(uint64_t n) { return n; }

struct Holder {
    int64_t process;
    std::string command;
    std::vector<std::string> holds;
};

std::string commandOf(const std::string &process)
{
    char text[64] = "";
    FILE *file = fopen(("/proc/" + process + "/comm").c_str(), "re");
    if (file && fgets(text, sizeof text, file)) text[strcspn(text, "\n")] = 0;
    if (file) fclose(file);
    return text;
}

// What a lock means. The system tells neighbouring bytes of one kind as one lock.
std::vector<std::string> meanings(const Shape &shape, bool exclusive, uint64_t first, uint64_t last)
{
    using namespace filesystems;
    const struct {
        int64_t byte;
        const char *shared, *exclusive;
    } shares[] = {
        {kPresent, "open", "open for itself alone"},        {kWriters, "writer", "only writer"},
        {kDeniers, "admits no writer", "admits no writer"}, {kLoners, "admits nobody", "admits nobody"},
        {kMaking, "making the file", "making the file"},    {kChanging, "changing a record", "changing a record"}};
    constexpr uint64_t records = static_cast<uint64_t>(kFirstRecordLock), end = static_cast<uint64_t>(kPresent);
    std::vector<std::string> all;
    for (const auto &share : shares)
        if (first <= static_cast<uint64_t>(share.byte) && static_cast<uint64_t>(share.byte) <= last)
            all.push_back(exclusive ? share.exclusive : share.shared);
    if (first < records) all.push_back("transfer");
    if (first < records || first >= end) return all;
    // The records of a relative file go by their numbers, those of an indexed one by a sum of the
    // key.
    std::string text = "a record locked";
    if (shape.relative() && first == last) text = "record " + std::to_string(first - records) + " locked";
    if (shape.relative() && first < last)
        text = "records " + std::to_string(first - records) + " to " + std::to_string(last - records) + " locked";
    all.push_back(text);
    return all;
}

void readLocks(const std::string &path, const Shape &shape, Holder *holder)
{
    FILE *file = fopen(path.c_str(), "re");
    char line[256], kind[32], access[16], advisory[16], device[64], end[32];
    long long process;
    unsigned long long start;
    while (file && fgets(line, sizeof line, file)) {
        int order;
        if (sscanf(line, "lock: %d: %31s %15s %15s %lld %63s %llu %31s", &order, kind, advisory, access, &process,
                   device, &start, end) != 8)
            continue;
        uint64_t last = strcmp(end, "EOF") == 0 ? ~uint64_t(0) : strtoull(end, nullptr, 10);
        for (const std::string &text : meanings(shape, strcmp(access, "WRITE") == 0, start, last)) {
            bool known = std::find(holder->holds.begin(), holder->holds.end(), text) != holder->holds.end();
            if (!known || text == "a record locked") holder->holds.push_back(text);
        }
    }
    if (file) fclose(file);
}

// Everybody who has the file open.
std::vector<Holder> holdersOf(const struct stat &wanted, const Shape &shape, bool *all)
{
    std::vector<Holder> holders;
    *all = true;
    DIR *processes = opendir("/proc");
    if (!processes) *all = false;
    while (dirent *process = processes ? readdir(processes) : nullptr) {
        std::string id = process->d_name, descriptors = "/proc/" + id + "/fd";
        if (id.find_first_not_of("0123456789") != id.npos || id == std::to_string(getpid())) continue;
        DIR *opened = opendir(descriptors.c_str());
        if (!opened) {
            if (errno == EACCES || errno == EPERM) *all = false;
            continue;
        }
        Holder holder = {atoll(id.c_str()), commandOf(id), {}};
        bool has = false;
        while (dirent *one = readdir(opened)) {
            struct stat about;
            if (stat((descriptors + "/" + one->d_name).c_str(), &about) != 0 || about.st_dev != wanted.st_dev ||
                about.st_ino != wanted.st_ino)
                continue;
            has = true;
            readLocks("/proc/" + id + "/fdinfo/" + one->d_name, shape, &holder);
        }
        closedir(opened);
        if (has) holders.push_back(holder);
    }
    if (processes) closedir(processes);
    return holders;
}

const char *organizationOf(const Shape &shape)
{
    return shape.indexed() ? "indexed" : shape.relative() ? "relative" : "sequential";
}

// "bytes 1 to 6", or "bytes 11 to 12 and 1 to 4"; `part`: where its further parts begin.
std::string placeOf(const Shape &shape, const FileKey &key, size_t part)
{
    auto range = [](uint32_t position, uint32_t length) {
        return std::to_string(position + 1) + " to " + std::to_string(position + length);
    };
    uint32_t first = key.length;
    std::string more;
    for (size_t n = part; n < part + key.reserved[0]; ++n) {
        first -= shape.parts[n].length;
        more += " and " + range(shape.parts[n].position, shape.parts[n].length);
    }
    return "bytes " + range(key.position, first) + more;
}

void printStore(const std::string &path, const Shape &shape)
{
    StoreReader reader;
    StorePages pages;
    const StoreReader::Mapped mapped = reader.map(path, &pages, true);
    if (mapped == StoreReader::Mapped::failed) {
        printf("  store       not looked at: %s\n", reader.reason().c_str());
        return;
    }
    if (mapped == StoreReader::Mapped::headless) {
        printf("  store       damaged: it has no head page\n");
        return;
    }
    uint64_t records = 0;
    size_t parts = 0;
    for (uint32_t key = 0; key < shape.keys.size(); ++key) {
        char name[8];
        Tree tree{};
        filesystems::databaseName(key, name);
        bool found = pages.findTree(name, &tree);
        const FileKey &about = shape.keys[key];
        printf("  key %-7u %s%s, ", key, placeOf(shape, about, parts).c_str(),
               about.flags & ZVK_FILE_KEY_DUPLICATES ? ", duplicates" : "");
        parts += about.reserved[0];
        if (found)
            printf("%llu entries, depth %u\n", number(tree.entries), tree.depth);
        else
            printf("damaged\n");
        if (!key) records = tree.entries;
    }
    printf("  records     %llu\n", number(records));
    pages.walkFree();
    printf("  store       %s: %llu KB, %llu%% of it free, change %llu%s\n", storeOf(path).c_str(),
           number(pages.pages() * pages.pageSize() / 1024), number(pages.freePages() * 100 / pages.pages()),
           number(pages.change()), pages.damages ? ", damaged" : "");
}

bool printFile(std::string name, const Arguments &arguments)
{
    struct stat about;
    std::string path = pathOf(name);
    if (stat(path.c_str(), &about) != 0) return say("%s: %s", name.c_str(), strerror(errno)), false;
    Shape shape;
    if (!findShape(name, arguments, &shape)) return false;
    StoredHeaderFile header;
    printf("%s\n  kind        %s, file system %s\n", name.c_str(), organizationOf(shape), prefixOf(name).c_str());
    printf("  size        %lld bytes\n", static_cast<long long>(about.st_size));
    if (shape.variable())
        printf("  record      %u to %u bytes\n", shape.shortest, shape.longest);
    else
        printf("  record      %u bytes\n", shape.longest);
    if (shape.indexed()) {
        printStore(path, shape);
    } else if (header.read(path) && shape.relative()) {
        printf("  slots       %lld\n",
               (static_cast<long long>(about.st_size) - static_cast<long long>(filesystems::kStoredHeaderSize)) /
                   (4 + static_cast<long long>(shape.longest) + filesystems::sumSizeOf(header.header())));
    }
    bool all;
    std::vector<Holder> holders = holdersOf(about, shape, &all);
    for (const Holder &holder : holders) {
        printf("  in use by   %lld (%s)", static_cast<long long>(holder.process), holder.command.c_str());
        std::map<std::string, int> counts;
        for (const std::string &text : holder.holds) ++counts[text];
        for (const auto &[text, count] : counts)
            if (count > 1)
                printf("; %s, %d times", text.c_str(), count);
            else
                printf("; %s", text.c_str());
        printf("\n");
    }
    if (holders.empty() && all) printf("  in use by   nobody\n");
    if (!all) printf("  in use by   %sprocesses of others could not be looked at\n", holders.empty() ? "" : "further ");
    return true;
}

} // namespace

int runInfo(const Arguments &arguments)
{
    int outcome = kDone;
    for (const std::string &name : arguments.names)
        if (!printFile(name, arguments)) outcome = kFailed;
    return outcome;
}

} // namespace file_tool
