#include "companions/filesystems/commit_journal.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <new>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/durability.h"
#include "companions/filesystems/indexed_state.h"
#include "companions/filesystems/share_locks.h"
#include "companions/filesystems/size_limit.h"
#include "companions/filesystems/store_faults.h"

namespace filesystems {

namespace {

constexpr uint64_t kMark = 0x314D4D4F4352564Bu; // "KVRCOMM1"
constexpr uint64_t kPointer = 0x315254504352564Bu;
constexpr uint64_t kLongest = uint64_t(1) << 36;

struct Head {
    uint64_t mark, sum, size, number; // the sum is that of the `size` bytes after the head
};

struct PartHead {
    uint32_t indexed, nameSize;
    uint64_t size, slotSize;
};

uint64_t sumOf(uint64_t sum, const void *data, size_t size)
{
    const auto *bytes = static_cast<const uint8_t *>(data);
    for (size_t i = 0; i < size; ++i) sum = (sum ^ bytes[i]) * 0x100000001b3u;
    return sum;
}

bool journalName(const char *file, char *name) { return snprintf(name, PATH_MAX, "%s.kvr2-commit", file) < PATH_MAX; }

// Writes one after the other, and sums.
struct Writer {
    int descriptor;
    uint64_t at = sizeof(Head), sum = 0xcbf29ce484222325u;
    int error = 0;
    uint8_t buffer[1 << 16];
    size_t filled = 0;
    explicit Writer(int file) : descriptor(file) {}
    void put(const void *data, size_t size)
    {
        const auto *from = static_cast<const uint8_t *>(data);
        sum = sumOf(sum, data, size);
        while (size && !error) {
            size_t part = size < sizeof buffer - filled ? size : sizeof buffer - filled;
            memcpy(buffer + filled, from, part);
            filled += part, from += part, size -= part;
            if (filled == sizeof buffer) flush();
        }
    }
    void flush()
    {
        if (!error) error = writeAll(descriptor, true, buffer, filled, at);
        at += filled;
        filled = 0;
    }
};

// The content of a journal, or null: there is none that is complete, or `error` says why it cannot
// be read.
uint8_t *readJournal(int descriptor, Head *head, int *error)
{
    struct stat about;
    size_t got;
    *error = readAll(descriptor, head, sizeof *head, 0, &got);
    if (*error || got != sizeof *head || head->mark != kMark || head->size > kLongest) return nullptr;
    if (fstat(descriptor, &about) != 0) return *error = errno, nullptr;
    if (static_cast<uint64_t>(about.st_size) < sizeof *head + head->size) return nullptr;
    auto *content = static_cast<uint8_t *>(malloc(head->size + 1));
    if (!content) return *error = ENOMEM, nullptr;
    *error = readAll(descriptor, content, head->size, sizeof *head, &got);
    if (!*error && got == head->size && sumOf(0xcbf29ce484222325u, content, got) == head->sum) return content;
    free(content);
    return nullptr;
}

// --- bringing it in

int redoSlots(const char *name, const PartHead &part, const uint8_t *changes)
{
    int descriptor = open(name, O_RDWR | O_CLOEXEC);
    if (descriptor < 0) return errno;
    lockBytes(descriptor, true, 0, static_cast<uint64_t>(kFirstRecordLock));
    int error = 0;
    size_t size = sizeof(uint64_t) + part.slotSize;
    for (size_t at = 0; at + size <= part.size && !error; at += size) {
        uint64_t record;
        memcpy(&record, changes + at, sizeof record);
        error = writeAll(descriptor, true, changes + at + sizeof record, part.slotSize,
                         kStoredHeaderSize + (record - 1) * part.slotSize);
    }
    if (!error && wantedDurability() != Durability::none) error = forceData(descriptor);
    close(descriptor);
    return error;
}

int redoRecord(FCB *fcb, IndexedFile *file, MDB_txn *txn, bool erase, const uint8_t *bytes, uint32_t size)
{
    bool refused = false;
    KeyRoom room;
    MDB_val k = valueOf(erase ? bytes : keyIn(file, 0, bytes, room), file->keys[0].length), old;
    int error = findInStore(file, txn, 0, k, &old);
    if (error && error != MDB_NOTFOUND) return error;
    if (erase) return error ? 0 : removeRecord(fcb, file, txn, old);
    error = error ? insertRecord(fcb, file, txn, bytes, size, &refused)
                  : replaceRecord(fcb, file, txn, bytes, size, old, &refused);
    return refused ? MDB_CORRUPTED : error;
}

int redoRecords(const char *name, uint64_t number, const uint8_t *changes, size_t size)
{
    FCB fcb = {};
    StoredHeader header;
    size_t got = 0;
    int descriptor = open(name, O_RDWR | O_CLOEXEC), error = descriptor < 0 ? errno : 0;
    if (!error) error = readAll(descriptor, &header, sizeof header, 0, &got);
    if (!error &&
        (got != sizeof header || !hasMark(header) || header.checksum != checksumOf(header) || !keysMakeSense(header)))
        error = MDB_INVALID;
    auto *file = static_cast<IndexedFile *>(error ? nullptr : calloc(1, sizeof(IndexedFile)));
    if (!error && !file) error = ENOMEM;
    if (!error) {
        describeRecords(file, header.longest, header.shortest, header);
        fcb.moduleBuffer2 = malloc(recordRoom(file));
        fcb.fileName = const_cast<char *>(name);
        if (!fcb.moduleBuffer2) error = ENOMEM;
    }
    if (!error) file->store = useSharedStore(&fcb, header, file->data, &error);
    MDB_txn *txn = nullptr;
    if (file && file->store) {
        error = beginRedo(file->store, &txn);
        bool done = !error && lastJournal(file->store, txn) == number;
        for (size_t at = 0; !error && !done && at + 5 <= size;) {
            uint32_t length;
            memcpy(&length, changes + at + 1, sizeof length);
            if (length > size - at - 5) break;
            error = withPages(mapOfStore(file->store),
                              [&] { return redoRecord(&fcb, file, txn, changes[at] == 2, changes + at + 5, length); });
            at += 5 + length;
        }
        if (!error && !done) error = noteJournal(file->store, txn, number);
        if (!error && !done)
            error = commitChange(file->store, txn);
        else if (txn)
            mdb_txn_abort(txn);
        if (txn) leaveTransaction(file->store);
        leaveStore(file->store);
    }
    if (descriptor >= 0) close(descriptor);
    free(fcb.moduleBuffer2);
    free(file);
    return error;
}

// All parts of a complete journal; the names go afterwards, the decision last.
int bringIn(const Head &head, const uint8_t *content)
{
    int error = 0;
    for (bool names : {false, true})
        for (size_t at = 0; at + sizeof(PartHead) <= head.size && !error;) {
            PartHead part;
            char name[PATH_MAX], pointer[PATH_MAX];
            memcpy(&part, content + at, sizeof part);
            bool first = at == 0;
            at += sizeof part;
            if (part.nameSize >= PATH_MAX - 16 || part.nameSize + part.size > head.size - at) return EBADMSG;
            memcpy(name, content + at, part.nameSize);
            name[part.nameSize] = 0;
            const uint8_t *changes = content + at + part.nameSize;
            at += part.nameSize + part.size;
            if (names) {
                if (!first && journalName(name, pointer)) unlink(pointer);
                continue;
            }
            error = part.indexed ? redoRecords(name, head.number, changes, part.size) : redoSlots(name, part, changes);
            if (error == ENOENT) error = 0; // somebody has removed the file since
        }
    return error;
}

// The decision that a file's journal leads to: itself, or the one that it names.
bool decisionOf(const char *pointer, char *decision)
{
    int descriptor = open(pointer, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    uint64_t head[2];
    size_t got;
    snprintf(decision, PATH_MAX, "%s", pointer);
    if (readAll(descriptor, head, sizeof head, 0, &got) == 0 && got == sizeof head && head[0] == kPointer &&
        head[1] < PATH_MAX && readAll(descriptor, decision, head[1], sizeof head, &got) == 0)
        decision[got] = 0;
    close(descriptor);
    return true;
}

bool isSameFile(int descriptor, const char *name)
{
    struct stat ours, there;
    return fstat(descriptor, &ours) == 0 && stat(name, &there) == 0 && ours.st_ino == there.st_ino &&
           ours.st_dev == there.st_dev;
}

// A name whose decision is gone: never decided, or brought in by all others. Under its lock, and
// only if it still is what was read: meanwhile another transaction may have put its own there.
int removeName(const char *pointer, const char *gone)
{
    char leadsTo[PATH_MAX];
    int descriptor = open(pointer, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return errno == ENOENT ? 0 : errno;
    while (flock(descriptor, LOCK_EX) != 0 && errno == EINTR) {
    }
    bool same = isSameFile(descriptor, pointer) && decisionOf(pointer, leadsTo) && strcmp(leadsTo, gone) == 0;
    int error = same && access(gone, F_OK) != 0 && unlink(pointer) != 0 && errno != ENOENT ? errno : 0;
    close(descriptor);
    return error;
}

} // namespace

bool hasJournal(const char *name)
{
    char pointer[PATH_MAX];
    return journalName(name, pointer) && access(pointer, F_OK) == 0;
}

int settleJournal(const char *name)
{
    char pointer[PATH_MAX], decision[PATH_MAX];
    if (!journalName(name, pointer) || !decisionOf(pointer, decision)) return 0;
    int descriptor = open(decision, O_RDWR | O_CLOEXEC);
    const bool mayOnlyRead = descriptor < 0 && (errno == EACCES || errno == EROFS || errno == EPERM);
    if (mayOnlyRead) descriptor = open(decision, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        if (errno != ENOENT) return errno;
        return strcmp(pointer, decision) == 0 ? 0 : removeName(pointer, decision);
    }
    while (flock(descriptor, mayOnlyRead ? LOCK_SH : LOCK_EX) != 0 && errno == EINTR) {
    }
    int error = 0;
    if (isSameFile(descriptor, decision) && mayOnlyRead) {
        error = EACCES; // its maker was killed: who may write brings it to its end
    } else if (isSameFile(descriptor, decision)) {
        Head head;
        SizeLimitHeldOff guard;
        uint8_t *content = readJournal(descriptor, &head, &error);
        if (content) error = bringIn(head, content);
        free(content);
        if (!error) unlink(pointer);
        if (!error) unlink(decision);
        if (!error && wantedDurability() != Durability::none) forceDirectory(decision);
    }
    close(descriptor);
    return error;
}

// The name, if nobody has it. Not every file system has hard links.
static bool takeName(const char *own, const char *name)
{
    if (link(own, name) == 0) return true;
    return (errno == EPERM || errno == EOPNOTSUPP) && renameat2(AT_FDCWD, own, AT_FDCWD, name, RENAME_NOREPLACE) == 0;
}

// The journal of a file under its name, `name`: empty and locked, or one that leads to `decision`.
// What another transaction has there comes first. It appears when it is whole, so that nobody takes
// it for what a kill left, and for those who may use the file.
static int claimJournal(const char *file, const char *decision, char *name, int *descriptor)
{
    char own[PATH_MAX];
    struct stat about;
    if (!journalName(file, name) || snprintf(own, sizeof own, "%s.%d", name, getpid()) >= PATH_MAX) return ENAMETOOLONG;
    unlink(own);
    *descriptor = open(own, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (*descriptor < 0) return errno;
    int error = stat(file, &about) != 0 ? errno : 0;
    if (!error &&
        (fchown(*descriptor, about.st_uid, about.st_gid) != 0 || fchmod(*descriptor, about.st_mode & 0777) != 0))
        fchmod(*descriptor, about.st_mode & 0666);
    if (decision) {
        uint64_t head[2] = {kPointer, strlen(decision)};
        if (!error) error = writeAll(*descriptor, true, head, sizeof head, 0);
        if (!error) error = writeAll(*descriptor, true, decision, head[1], sizeof head);
        if (!error && wantedDurability() != Durability::none) error = forceData(*descriptor);
    } else if (!error && flock(*descriptor, LOCK_EX) != 0) {
        error = errno;
    }

    bool named = false;
    while (!error && !named) {
        error = settleJournal(file);
        named = !error && takeName(own, name);
        if (!error && !named && errno != EEXIST) error = errno;
    }
    unlink(own);
    if (error) {
        close(*descriptor);
        *descriptor = -1;
    }
    return error;
}

int beginJournal(CommitJournal *journal, const JournalPart *parts, size_t count)
{
    journal->descriptor = -1;
    if (getrandom(&journal->number, sizeof journal->number, 0) != static_cast<ssize_t>(sizeof journal->number))
        return errno;
    if (int error = claimJournal(parts[0].name, nullptr, journal->name, &journal->descriptor)) return error;
    int error = 0;
    size_t claimed = 1;
    for (; claimed < count && !error; ++claimed) {
        char pointer[PATH_MAX];
        int descriptor;
        error = claimJournal(parts[claimed].name, journal->name, pointer, &descriptor);
        if (error) break;
        close(descriptor);
        if (wantedDurability() != Durability::none) forceDirectory(pointer);
    }
    if (error) endJournal(journal, parts, claimed);
    return error;
}

int decide(CommitJournal *journal, const JournalPart *parts, size_t count, bool force)
{
    auto *writer = static_cast<Writer *>(malloc(sizeof(Writer)));
    if (!writer) return ENOMEM;
    new (writer) Writer(journal->descriptor);
    for (size_t i = 0; i < count; ++i) {
        const JournalPart &part = parts[i];
        size_t slots = part.slots ? part.slots->count : 0;
        PartHead head = {part.indexed, static_cast<uint32_t>(strlen(part.name)), part.size, 0};
        if (part.slots) head.slotSize = part.slots->slotSize;
        if (part.slots) head.size = slots * (sizeof(uint64_t) + head.slotSize);
        writer->put(&head, sizeof head);
        writer->put(part.name, head.nameSize);
        if (part.size) writer->put(part.changes, part.size);
        for (size_t n = 0; n < slots; ++n) {
            writer->put(&part.slots->slots[n].record, sizeof(uint64_t));
            writer->put(part.slots->slots[n].bytes, head.slotSize);
        }
    }
    writer->flush();
    Head head = {kMark, writer->sum, writer->at - sizeof head, journal->number};
    int error = writer->error;
    free(writer);
    if (!error && force) error = forceData(journal->descriptor);
    if (!error) error = writeAll(journal->descriptor, true, &head, sizeof head, 0);
    if (!error && force) error = forceData(journal->descriptor);
    if (error && ftruncate(journal->descriptor, 0) != 0) return error;
    if (force) forceDirectory(journal->name);
    return error;
}

void endJournal(CommitJournal *journal, const JournalPart *parts, size_t count)
{
    for (size_t i = 1; i < count; ++i) {
        char pointer[PATH_MAX];
        if (journalName(parts[i].name, pointer)) unlink(pointer);
    }
    if (journal->descriptor < 0) return;
    unlink(journal->name);
    // A loss of power must not bring it back over what comes later.
    if (wantedDurability() != Durability::none) forceDirectory(journal->name);
    close(journal->descriptor);
    journal->descriptor = -1;
}

int writeSlots(int descriptor, const SlotChanges &slots)
{
    int error = 0;
    for (size_t i = 0; i < slots.count && !error; ++i)
        error = writeAll(descriptor, true, slots.slots[i].bytes, slots.slotSize,
                         kStoredHeaderSize + (slots.slots[i].record - 1) * slots.slotSize);
    return error;
}

} // namespace filesystems
