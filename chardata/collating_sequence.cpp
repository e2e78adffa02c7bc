// The native collating sequence: the byte values in the order of the locale.
//
// The 256 values are sorted in place as characters, but compared as strings: from a byte on, the
// comparison sees the rest of the array as it is at that moment. So the order of two bytes can
// depend on what follows them, and with bytes that sort together only by what follows it does.
// Compiled programs have this order in their indexes: it is to stay.
#include <cstdlib>
#include <cstring>
#include <pthread.h>

#include "frame/locale/locale_handles.h"
#include "frame/locks.h"
#include "kvr2/conditions.h"

namespace {

constexpr int kValues = 256;

pthread_mutex_t sequenceMutex;
bool sequenceMade;
uint8_t collatingWeights[kValues];
uint8_t collatingOrder[kValues + 1]; // the NUL at the end closes the last string

int compareStrings(const void *left, const void *right)
{
    return strcoll(static_cast<const char *>(left), static_cast<const char *>(right));
}

// Single bytes have no order of their own in a locale of multi-byte characters: "en_US" stands in
// for it.
class SingleByteCollation {
public:
    SingleByteCollation()
    {
        if (MB_CUR_MAX < 2) return;
        const char *current = zvkLocaleName(LC_COLLATE);
        saved_ = current ? strdup(current) : nullptr;
        zvkSetLocale(LC_COLLATE, "en_US");
    }
    ~SingleByteCollation()
    {
        if (saved_) zvkSetLocale(LC_COLLATE, saved_);
        free(saved_);
    }
    SingleByteCollation(const SingleByteCollation &) = delete;
    SingleByteCollation &operator=(const SingleByteCollation &) = delete;

private:
    char *saved_ = nullptr;
};

void makeSequence()
{
    SingleByteCollation collation;
    for (int i = 0; i < kValues; i++) collatingOrder[i] = static_cast<uint8_t>(i);
    qsort(collatingOrder, kValues, 1, compareStrings);
    for (int i = 0; i < kValues; i++) collatingWeights[collatingOrder[i]] = static_cast<uint8_t>(i);
}

} // namespace

extern "C" void _zvkcCollSeq(AlphabetRecord *record)
{
    ZvkGuard guard(&sequenceMutex);
    if (!sequenceMade) {
        makeSequence();
        sequenceMade = true;
    }
    record->collatingWeights = collatingWeights;
    record->collatingOrder = collatingOrder;
}
