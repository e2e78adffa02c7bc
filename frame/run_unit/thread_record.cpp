// The per-thread record; see thread_record.h.
#include "frame/thread_record.h"

#include <atomic>
#include <cstdlib>
#include <pthread.h>
#include <unistd.h>

#include "frame/messages.h"
#include "frame/run_unit.h"
#include "frame/storage.h"

namespace {

constexpr uint32_t kNoKey = 0xFFFFFFFFu;

pthread_key_t key;
bool haveKey;
pthread_once_t keyOnce = PTHREAD_ONCE_INIT;

// This thread's record as it was found last, good until any record is released at the runtime's
// end. The way through the key costs as much as the rest of a dynamic CALL.
std::atomic<uint64_t> generation{1};
struct LastRecord {
    uint64_t generation; // 0: none
    ZvkThreadRecord *record;
};
thread_local LastRecord lastRecord;

void freeRecord(void *pointer)
{
    auto *record = static_cast<ZvkThreadRecord *>(pointer);
    if (!record) return;
    lastRecord.generation = 0;
    if (record->spillHandle) close(record->spillHandle - 1);
    free(record->scratch);
    free(record->spillPath);
    free(record->buffer);
    free(record);
}

void makeKey()
{
    haveKey = pthread_key_create(&key, freeRecord) == 0;
    if (haveKey) __atomic_store_n(&_zvkProccom->threadKey, key, __ATOMIC_RELEASE);
}

// Another thread may be making it.
uint32_t presentKey() { return __atomic_load_n(&_zvkProccom->threadKey, __ATOMIC_ACQUIRE); }

ZvkThreadRecord *currentRecord()
{
    uint32_t present = presentKey();
    return static_cast<ZvkThreadRecord *>(present == kNoKey ? _zvkProccom->threadFallback
                                                            : pthread_getspecific(present));
}

void setRecord(ZvkThreadRecord *record)
{
    uint32_t present = presentKey();
    if (present == kNoKey)
        _zvkProccom->threadFallback = record;
    else
        pthread_setspecific(present, record);
}

bool growScratch(ZvkThreadRecord *record, uint64_t size)
{
    uint64_t rounded = (size + 15) & ~uint64_t{15};
    free(record->scratch);
    record->scratch = static_cast<uint8_t *>(rounded < size ? nullptr : malloc(rounded));
    record->scratchSize = record->scratch ? rounded : 0;
    if (!record->scratch) zvkNoStorage();
    return record->scratch;
}

} // namespace

void *zvkThreadScratch(int64_t size)
{
    if (size > 0 && lastRecord.generation == generation.load(std::memory_order_relaxed) &&
        static_cast<uint64_t>(size) <= lastRecord.record->scratchSize)
        return lastRecord.record->scratch;
    if (!_zvkProccom) return nullptr;
    if (presentKey() == kNoKey) pthread_once(&keyOnce, makeKey);

    ZvkThreadRecord *record = currentRecord();
    if (size == -1) return record;
    if (!record) {
        record = static_cast<ZvkThreadRecord *>(_zvkcalloc(1, sizeof *record));
        if (!record) {
            zvkNoStorage();
            return nullptr;
        }
        record->threadId = pthread_self();
        setRecord(record);
    }
    if (size == 0) return record;
    auto wanted = static_cast<uint64_t>(size);
    if (wanted > record->scratchSize && !growScratch(record, wanted)) return nullptr;
    lastRecord = {generation.load(std::memory_order_relaxed), record};
    return record->scratch;
}

void zvkReleaseThreadRecord()
{
    generation++;
    freeRecord(zvkThreadScratch(-1));
    setRecord(nullptr);
}

void zvkDeleteThreadKey()
{
    generation++;
    if (haveKey) pthread_key_delete(key);
    haveKey = false;
    keyOnce = PTHREAD_ONCE_INIT;
}
