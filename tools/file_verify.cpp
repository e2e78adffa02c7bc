// verify: what is damaged in a file of the default file system.
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/record_sum.h"
#include "companions/filesystems/store_layout.h"
#include "tools/file_program.h"
#include "tools/store_reader.h"
#include "tools/stored_file.h"
#include "tools/stored_records.h"

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
        clearProgress();
        if (++count <= kMostTold) printf("%s: %s\n", path.c_str(), what.c_str());
        if (count == kMostTold + 1) printf("%s: further damage is only counted\n", path.c_str());
    }
};

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
    StoreReader reader;
    StorePages pages;
    pages.onDamage = [&](const std::string &what) { findings->add("store: " + what); };
    const StoreReader::Mapped mapped = reader.map(path, &pages);
    if (mapped == StoreReader::Mapped::failed) {
        say("%s: %s", path.c_str(), reader.reason().c_str());
        findings->failed = true;
        return;
    }
    if (reader.damaged())
        findings->add("its store cannot be opened (" + reader.reason() + "); it is looked at as it is");
    if (mapped == StoreReader::Mapped::headless) return findings->add("its store has no head page");
    if (pages.headLost()) findings->add("one of the two head pages of its store is damaged");
    Tree trees[filesystems::kMostKeys], about{};
    uint64_t identity;
    pages.findTree(filesystems::kAboutDatabase, &about);
    if (!identityOf(pages, &identity) || identity != header.identity)
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

void verifyRelative(const StoredHeader &header, const std::string &path, Findings *findings)
{
    OpenFile file(path);
    uint64_t records = 0;
    bool read = walkSlots(header, file, [&](uint64_t number, uint32_t mark, std::string_view slot) {
        if (isPossibleSlot(header, number, mark, slot))
            ++records;
        else
            findings->add("record " + std::to_string(number) + " is damaged: its length or its checksum");
        return true;
    });
    if (!read) findings->add("not all of it can be read");
    if (uint64_t rest = read ? tornSlot(header, file) : 0)
        findings->add(std::to_string(rest) + " bytes at its end are no record");
    if (access((path + ".kvr2-rewrite").c_str(), F_OK) == 0)
        printf("%s: a change is under way, or was interrupted and is completed by the next OPEN I-O\n", path.c_str());
    printf("%s: %llu records\n", path.c_str(), static_cast<unsigned long long>(records));
}

// Sequential files of any file system: read as a program reads them.
void verifySequential(const std::string &name, const Shape &shape, Findings *findings)
{
    FileProgram file(name, shape);
    const std::string prefix = prefixOf(name);
    if (!file.open(ZVK_OPEN_INPUT)) return findings->add("it cannot be opened");
    StoredHeaderFile header;
    uint64_t records = 0, bytes = 0, sum = header.read(pathOf(name)) ? filesystems::sumSizeOf(header.header()) : 0;
    while (file.readNext()) {
        ++records;
        bytes += file.record().size() + (shape.variable() ? sizeof(uint32_t) : 0) + sum;
        if (file.cut()) findings->add("record " + std::to_string(records) + " is longer than a record");
    }
    if (file.failed()) findings->add("damaged after record " + std::to_string(records));
    OpenFile about(pathOf(name));
    uint64_t start = isStored(prefix) ? kStoredHeaderSize : 0;
    if (!isLines(prefix) && !file.failed() && about.size > start + bytes)
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

} // namespace file_tool
