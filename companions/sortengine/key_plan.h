// The plan by which a record's keys become one byte string.
//
// The first 12 bytes of the string travel with every index entry as two numbers, which decides
// nearly all compares without touching a record. What is longer stays behind as the `tail`. A
// single ascending key of plain bytes needs no string at all: it is read where it lies in the
// record ("plain").
#pragma once

#include "kvr2/sort.h"

constexpr uint32_t kPrefixBytes = 12;

struct KeyPlan {
    const TableSortKey *keys;
    uint32_t count;
    const uint8_t *collating;
    uint32_t keyBytes;  // of the string; shorter ones are filled with zeros
    uint32_t tailBytes; // keyBytes beyond the prefix
    uint32_t reach;     // a record must have so many bytes
    bool plain;
    uint32_t plainOffset;
};

// One key string, as far as compares need it.
struct KeyHead {
    uint64_t first; // bytes 0 to 7
    uint32_t next;  // bytes 8 to 11
    const uint8_t *tail;
};

// 0 or the error number of an invalid list. The plan has list and table where they are.
uint32_t makeKeyPlan(KeyPlan *plan, const SortKeyList *list, const uint8_t *collating);

// Where the tail of a plain key lies; the record without length word.
inline const uint8_t *plainTail(const KeyPlan &plan, const uint8_t *data)
{
    return data + plan.plainOffset + kPrefixBytes;
}

// The prefix numbers of a record's keys. `scratch` has keyBytes rounded up to the prefix; the tail,
// unless plain, is in it after the prefix.
void readKey(const KeyPlan &plan, const uint8_t *data, uint8_t *scratch, KeyHead *head);

inline int compareHeads(const KeyPlan &plan, const KeyHead &a, const KeyHead &b)
{
    if (a.first != b.first) return a.first < b.first ? -1 : 1;
    if (a.next != b.next) return a.next < b.next ? -1 : 1;
    return plan.tailBytes ? __builtin_memcmp(a.tail, b.tail, plan.tailBytes) : 0;
}
