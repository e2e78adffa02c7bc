// Key strings; see key_plan.h.
#include "key_plan.h"

#include <algorithm>

#include "kvr2/sort_keys.h"

uint32_t makeKeyPlan(KeyPlan *plan, const SortKeyList *list, const uint8_t *collating)
{
    *plan = {};
    if (!list || list->count == 0 || list->count > ZVK_SORT_MAX_KEYS) return ZVK_SORT_EKEYS;
    plan->keys = list->keys;
    plan->count = list->count;
    plan->collating = collating;
    uint64_t space = 0, reach = 0;
    for (uint32_t i = 0; i < list->count; i++) {
        const TableSortKey &key = list->keys[i];
        uint64_t own = zvkKeySpace(&key);
        if (own == 0) return ZVK_SORT_EKEYS;
        space += own;
        reach = std::max(reach, uint64_t{key.offset} + key.length);
    }
    if (space > ZVK_SORT_MAX_KEY_BYTES || reach > UINT32_MAX) return ZVK_SORT_EKEYS;
    const TableSortKey &first = list->keys[0];
    bool bytes = (first.keyType == ZVK_KEY_ALPHANUMERIC && !collating) || first.keyType == ZVK_KEY_NATIONAL ||
                 first.keyType == ZVK_KEY_DBCS;
    plan->keyBytes = static_cast<uint32_t>(space);
    plan->tailBytes = plan->keyBytes > kPrefixBytes ? plan->keyBytes - kPrefixBytes : 0;
    plan->reach = static_cast<uint32_t>(reach);
    plan->plain = list->count == 1 && bytes && (first.orderFlags & ZVK_KEY_ASCENDING);
    plan->plainOffset = first.offset;
    return 0;
}

void readKey(const KeyPlan &plan, const uint8_t *data, uint8_t *scratch, KeyHead *head)
{
    uint8_t *end = scratch;
    if (plan.plain) {
        uint32_t size = std::min(plan.keyBytes, kPrefixBytes);
        memcpy(scratch, data + plan.plainOffset, size);
        end += size;
        head->tail = plan.tailBytes ? plainTail(plan, data) : nullptr;
    } else {
        for (uint32_t i = 0; i < plan.count; i++)
            end = zvkNormaliseKey(&plan.keys[i], data, plan.collating,
                                  ZVK_NORMALISE_UNSIGNED_PACKED | ZVK_NORMALISE_ALL_SIGNS, end);
        head->tail = scratch + kPrefixBytes;
    }
    uint8_t *full = scratch + std::max(plan.plain ? 0 : plan.keyBytes, kPrefixBytes);
    memset(end, 0, static_cast<size_t>(full - end));
    memcpy(&head->first, scratch, 8);
    memcpy(&head->next, scratch + 8, 4);
    head->first = __builtin_bswap64(head->first);
    head->next = __builtin_bswap32(head->next);
}
