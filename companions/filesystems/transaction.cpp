#include "companions/filesystems/transaction.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/durability.h"
#include "companions/filesystems/open_rules.h"
#include "companions/filesystems/share_locks.h"
#include "companions/filesystems/size_limit.h"

namespace filesystems {

namespace {

// A file that the transaction has changed.
struct Participant {
    Participant *next;
    dev_t device;
    ino_t inode;
    int descriptor; // the transaction's own; its locks are those of the file that made the first change
    Store *store;   // indexed
    MDB_txn *txn;
    uint8_t *log; // its changes, as the journal has them
    size_t logSize, logRoom;
    SlotChanges slots; // relative
    char name[];
};

struct Transaction {
    pid_t process; // a child has none of its parent's
    Participant *participants;
    uint16_t doom;
    uint64_t number, lastRollback;
};
Transaction transaction;

// Descriptors of open files that take part.
int *openFiles;
size_t openCount, openRoom;

Participant *participants()
{
    if (transaction.process == getpid()) return transaction.participants;
    transaction = {getpid(), nullptr, 0, transaction.number + 1, transaction.number + 1};
    return nullptr;
}

Participant *findParticipant(dev_t device, ino_t inode)
{
    Participant *one = participants();
    while (one && !(one->device == device && one->inode == inode)) one = one->next;
    return one;
}

Participant *findParticipant(const Store *store)
{
    Participant *one = participants();
    while (one && one->store != store) one = one->next;
    return one;
}

// The file of a descriptor as a new participant; null without storage.
Participant *addParticipant(const char *fileName, int descriptor)
{
    char name[PATH_MAX];
    struct stat about;
    participants();
    if (!realpath(fileName, name) || fstat(descriptor, &about) != 0) return nullptr;
    auto *one = static_cast<Participant *>(calloc(1, sizeof(Participant) + strlen(name) + 1));
    if (!one) return nullptr;
    one->device = about.st_dev;
    one->inode = about.st_ino;
    one->descriptor = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    strcpy(one->name, name);
    if (one->descriptor < 0) return free(one), nullptr;
    // In one order for all programs: two that commit the same files do not wait for each other.
    Participant **at = &transaction.participants;
    while (*at && ((*at)->device < about.st_dev || ((*at)->device == about.st_dev && (*at)->inode < about.st_ino)))
        at = &(*at)->next;
    one->next = *at;
    return *at = one;
}

uint16_t statusOf(int error)
{
    FCB fcb = {};
    failWithStore(&fcb, error);
    return fcb.status;
}

// All locks go, and what was not committed.
void endTransaction(bool rolledBack)
{
    while (Participant *one = participants()) {
        transaction.participants = one->next;
        if (one->txn) {
            mdb_txn_abort(one->txn);
            leaveTransaction(one->store);
        }
        leaveStore(one->store);
        unlockBytes(one->descriptor, static_cast<uint64_t>(kTransaction), 1);
        close(one->descriptor);
        one->slots.clear();
        free(one->log);
        free(one);
    }
    for (size_t i = 0; i < openCount; ++i) unlockAllRecords(openFiles[i]);
    transaction.doom = 0;
    ++transaction.number;
    if (rolledBack) transaction.lastRollback = transaction.number;
}

int commitStore(Participant *one, uint64_t journal)
{
    int error = storeIsReplaced(one->store);
    if (!error && journal) error = noteJournal(one->store, one->txn, journal);
    if (!error) {
        error = commitChange(one->store, one->txn);
        one->txn = nullptr;
        leaveTransaction(one->store);
    }
    return error;
}

// After the decision nothing is taken back: what fails here is brought in by who meets the journal.
int bringIn(Participant *one, uint64_t journal, bool force)
{
    if (one->store) return commitStore(one, journal);
    lockBytes(one->descriptor, true, 0, static_cast<uint64_t>(kFirstRecordLock));
    int error = writeSlots(one->descriptor, one->slots);
    if (!error && force) error = forceData(one->descriptor);
    unlockBytes(one->descriptor, 0, static_cast<uint64_t>(kFirstRecordLock));
    return error;
}

int commitWithJournal(size_t count)
{
    auto *parts = static_cast<JournalPart *>(calloc(count, sizeof(JournalPart)));
    if (!parts) return ENOMEM;
    size_t n = 0;
    for (Participant *one = participants(); one; one = one->next)
        parts[n++] = {one->name, one->store != nullptr, one->log, one->logSize, one->store ? nullptr : &one->slots};
    bool force = wantedDurability() != Durability::none;
    CommitJournal journal;
    int error = beginJournal(&journal, parts, count);
    if (!error) {
        error = decide(&journal, parts, count, force);
        bool decided = !error;
        for (Participant *one = participants(); one && !error; one = one->next)
            error = bringIn(one, journal.number, force);
        // The stores' own last pages, before the journal goes.
        for (Participant *one = participants(); one && !error; one = one->next)
            if (one->store) error = forceStore(one->store);
        if (decided && error) {
            close(journal.descriptor); // it stays, complete: the transaction is kept
            transaction.lastRollback = transaction.number + 1;
            error = 0;
        } else {
            endJournal(&journal, parts, count);
        }
    }
    free(parts);
    return error;
}

} // namespace

bool transactionsWanted()
{
    const char *said = getenv("VFS_TRANSACTIONS");
    return said && strcasecmp(said, "on") == 0;
}

uint64_t transactionNumber()
{
    participants();
    return transaction.number;
}

uint64_t lastRollback() { return transaction.lastRollback; }

void registerOpen(int descriptor)
{
    if (openCount == openRoom) {
        size_t wanted = openRoom ? 2 * openRoom : 16;
        int *grown = static_cast<int *>(realloc(openFiles, wanted * sizeof *openFiles));
        if (!grown) return;
        openFiles = grown;
        openRoom = wanted;
    }
    openFiles[openCount++] = descriptor;
}

void registerClosed(int descriptor)
{
    for (size_t i = 0; i < openCount; ++i)
        if (openFiles[i] == descriptor) {
            openFiles[i] = openFiles[--openCount];
            return;
        }
}

int parkedDescriptor(dev_t device, ino_t inode, bool *changed)
{
    Participant *one = findParticipant(device, inode);
    *changed = one;
    if (!one) return -1;
    for (size_t i = 0; i < openCount; ++i) {
        struct stat about;
        if (fstat(openFiles[i], &about) == 0 && about.st_dev == device && about.st_ino == inode) return -1;
    }
    return fcntl(one->descriptor, F_DUPFD_CLOEXEC, 0);
}

MDB_txn *transactionOn(const Store *store)
{
    Participant *one = transaction.participants ? findParticipant(store) : nullptr;
    return one ? one->txn : nullptr;
}

int joinTransaction(Store *store, int descriptor, MDB_txn **txn)
{
    if (!lockTransaction(descriptor)) return kInTransaction;
    int error = beginChange(store, txn, true);
    char name[PATH_MAX];
    Participant *one = error ? nullptr : addParticipant(fileOfStore(store, name), descriptor);
    if (!error && !one) {
        mdb_txn_abort(*txn);
        leaveTransaction(store);
        error = ENOMEM;
    }
    if (error) return unlockBytes(descriptor, static_cast<uint64_t>(kTransaction), 1), error;
    one->store = store;
    one->txn = *txn;
    keepStore(store);
    return 0;
}

void logChange(const Store *store, bool erased, const uint8_t *bytes, uint32_t size)
{
    Participant *one = findParticipant(store);
    if (!one) return;
    size_t wanted = one->logSize + 5 + size;
    if (wanted > one->logRoom) {
        size_t room = wanted * 2;
        auto *grown = static_cast<uint8_t *>(realloc(one->log, room));
        if (!grown) return doomTransaction(34); // what cannot be logged cannot be kept together
        one->log = grown;
        one->logRoom = room;
    }
    one->log[one->logSize] = erased ? 2 : 1;
    memcpy(one->log + one->logSize + 1, &size, sizeof size);
    memcpy(one->log + one->logSize + 5, bytes, size);
    one->logSize = wanted;
}

SlotChanges *slotChangesOf(dev_t device, ino_t inode)
{
    if (!transaction.participants) return nullptr;
    Participant *one = findParticipant(device, inode);
    return one && !one->store ? &one->slots : nullptr;
}

SlotChanges *joinTransaction(const char *fileName, int descriptor, uint64_t slotSize)
{
    Participant *one = addParticipant(fileName, descriptor);
    if (!one) return nullptr;
    one->slots.slotSize = slotSize;
    return &one->slots;
}

void doomTransaction(uint16_t status)
{
    if (!transaction.doom) transaction.doom = status;
}

uint16_t doomOfTransaction() { return transaction.process == getpid() ? transaction.doom : 0; }

int commitTransaction()
{
    SizeLimitHeldOff guard;
    size_t count = 0, relative = 0;
    for (Participant *one = participants(); one; one = one->next) ++count, relative += !one->store;
    uint16_t status = transaction.doom;
    if (!status && count == 1 && !relative) {
        Participant *one = participants();
        int error = commitStore(one, 0);
        if (!error) error = forceStore(one->store);
        if (error) status = statusOf(error);
    } else if (!status && count) {
        if (int error = commitWithJournal(count)) status = statusOf(error);
    }
    endTransaction(status);
    return status;
}

int rollbackTransaction()
{
    endTransaction(participants() != nullptr);
    return 0;
}

} // namespace filesystems

extern "C" {
ZVK_EXPORT int zvkCommitFiles(void);
ZVK_EXPORT int zvkRollBackFiles(void);

int zvkCommitFiles(void) { return filesystems::commitTransaction(); }
int zvkRollBackFiles(void) { return filesystems::rollbackTransaction(); }
}
