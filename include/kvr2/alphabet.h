/**
 * The alphabet record: what a compiled program knows of its PROGRAM COLLATING SEQUENCE and of an
 * EBCDIC alphabet.
 *
 * The compiler lays the record out, 96 bytes; the library stores table addresses in it
 * (`_zvkcEBCDIC` the two translate tables) and reads the collating weights. Tables are indexed by
 * the byte and hold 256 bytes.
 */
#ifndef KVR2_ALPHABET_H
#define KVR2_ALPHABET_H

#include "kvr2/export.h"

ZVK_BEGIN_DECLS

typedef struct AlphabetRecord {
    uint8_t reserved0[40];
    const uint8_t *collatingWeights; /**< byte value to weight; null: native order */
    uint8_t reserved48[24];
    const uint8_t *collatingOrder;   /**< weight to byte value */
    const uint8_t *nativeFromEbcdic; /**< translate table, set by `_zvkcEBCDIC` */
    const uint8_t *ebcdicFromNative; /**< translate table, set by `_zvkcEBCDIC` */
} AlphabetRecord;

ZVK_AT(AlphabetRecord, collatingWeights, 40);
ZVK_AT(AlphabetRecord, collatingOrder, 72);
ZVK_AT(AlphabetRecord, nativeFromEbcdic, 80);
ZVK_AT(AlphabetRecord, ebcdicFromNative, 88);
ZVK_STATIC_ASSERT(sizeof(AlphabetRecord) == 96, "AlphabetRecord");

ZVK_END_DECLS

#endif
