// The translate tables of an EBCDIC alphabet.
//
// The record of a compiled program has two of them, one for each direction by their names. Both are
// made by the conversion from EBCDIC to native, into storage of their own, and so are equal:
// compiled programs are generated for that, and it is to stay.
#include <pthread.h>

#include "chardata/conversion_layer.h"
#include "frame/locks.h"
#include "frame/message_calls.h"

namespace {

pthread_mutex_t tableMutex;
bool tablesMade;
uint8_t nativeFromEbcdic[256], ebcdicFromNative[256];

void makeTable(uint8_t (&table)[256])
{
    uint8_t all[256];
    for (int i = 0; i < 256; i++) all[i] = static_cast<uint8_t>(i);
    uint32_t capacity = sizeof table;
    if (_zvkUniEtoA(all, sizeof all, table, &capacity) != U_ZERO_ERROR) msg::codePageTablesFailed();
}

} // namespace

extern "C" void _zvkcEBCDIC(AlphabetRecord *record)
{
    ZvkGuard guard(&tableMutex);
    if (!tablesMade) {
        makeTable(nativeFromEbcdic);
        makeTable(ebcdicFromNative);
        tablesMade = true;
    }
    record->nativeFromEbcdic = nativeFromEbcdic;
    record->ebcdicFromNative = ebcdicFromNative;
}
