// SORT of a table.
//
// Faults that these tests are there to catch: a key type or sign form whose byte string is in
// another order than its values, a direction that leaks from one key to the next, zeros of both
// signs kept apart, ties in an order that programs do not know, either way of rebuilding going
// wrong at its limit, bytes beyond the table, and tables that are touched though the key is not
// valid.
#include <gtest/gtest.h>

#include "sort_data.h"
#include "support/guarded.h"

namespace {

void tableSort(uint8_t *table, uint32_t length, int32_t count, const Reference &order)
{
    const auto &keys = order.keys;
    if (keys.size() == 1)
        _zvkcTSort(0, table, length, count, order.collating, 1, &keys[0]);
    else
        _zvkcTSort(0, table, length, count, order.collating, 3, &keys[0], &keys[1], &keys[2]);
}

// Rows in order; equal ones by their old position as stored, low byte first.
void expectSorted(uint32_t length, uint32_t count, const Reference &order, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<std::pair<Record, uint32_t>> rows(count);
    GuardedItem table(static_cast<size_t>(length) * count);
    for (uint32_t i = 0; i < count; i++) {
        rows[i] = {Record(length, '.'), __builtin_bswap32(i)};
        for (const TableSortKey &key : order.keys) fillKey(key, rows[i].first, random);
        memcpy(&rows[i].first[length - 4], &i, 4); // which row it was
        memcpy(table.data() + size_t{i} * length, rows[i].first.data(), length);
    }
    tableSort(table.data(), length, static_cast<int32_t>(count), order);
    std::sort(rows.begin(), rows.end(), [&](const auto &a, const auto &b) {
        if (order(a.first, b.first)) return true;
        return !order(b.first, a.first) && a.second < b.second;
    });
    for (uint32_t i = 0; i < count; i++)
        ASSERT_EQ(memcmp(table.data() + size_t{i} * length, rows[i].first.data(), length), 0)
            << describe(order.keys[0]) << " row " << i << " of " << count;
}

} // namespace

TEST(TableSort, OrdersEveryTypeFormAndDirection)
{
    for (const TableSortKey &key : everyKey(false)) {
        Reference order{{key}, nullptr, true};
        for (uint32_t count : {2u, 3u, 200u, 700u}) ASSERT_NO_FATAL_FAILURE(expectSorted(40, count, order, count));
    }
}

TEST(TableSort, BothWaysOfRebuildingAtTheirLimits)
{
    Reference order{{sortKey(0, 4, ZVK_KEY_ALPHANUMERIC, true), sortKey(5, 3, ZVK_KEY_PACKED, false),
                     sortKey(9, 5, ZVK_KEY_ZONED, true, 8)},
                    nullptr,
                    true};
    for (uint32_t length : {100u, 101u})
        for (uint32_t count : {200u, 201u, 5000u})
            ASSERT_NO_FATAL_FAILURE(expectSorted(length, count, order, length + count));
    uint8_t collating[256];
    for (int i = 0; i < 256; i++) collating[i] = static_cast<uint8_t>(i * 37 + 11);
    order.collating = collating;
    ASSERT_NO_FATAL_FAILURE(expectSorted(50, 1000, order, 9));
}

TEST(TableSort, TiesComeOutByTheLowByteOfTheirPosition)
{
    std::vector<uint32_t> rows(1000);
    for (uint32_t i = 0; i < rows.size(); i++) rows[i] = i;
    std::vector<uint8_t> table(8000, 'x');
    for (uint32_t i = 0; i < 1000; i++) memcpy(&table[i * 8 + 4], &i, 4);
    TableSortKey key = sortKey(0, 4, ZVK_KEY_ALPHANUMERIC, true);
    _zvkcTSort(0, table.data(), 8, 1000, nullptr, 1, &key);
    const uint32_t expected[] = {0, 256, 512, 768, 1, 257};
    for (size_t i = 0; i < std::size(expected); i++) EXPECT_EQ(memcmp(&table[i * 8 + 4], &expected[i], 4), 0) << i;
}

TEST(TableSort, WhatIsNotToBeSortedStays)
{
    Record table = "cba";
    TableSortKey key = sortKey(0, 1, ZVK_KEY_ALPHANUMERIC, true);
    _zvkcTSort(0, table.data(), 1, 1, nullptr, 1, &key);
    _zvkcTSort(0, table.data(), 0, 3, nullptr, 1, &key);
    _zvkcTSort(0, table.data(), 1, -3, nullptr, 1, &key);
    TableSortKey unknown = sortKey(0, 1, 9, true), dbcs = sortKey(0, 1, ZVK_KEY_DBCS, true),
                 outside = sortKey(1, 1, ZVK_KEY_ALPHANUMERIC, true);
    _zvkcTSort(0, table.data(), 1, 3, nullptr, 2, &key, &unknown);
    _zvkcTSort(0, table.data(), 1, 3, nullptr, 1, &dbcs);
    _zvkcTSort(0, table.data(), 1, 3, nullptr, 1, &outside);
    EXPECT_EQ(table, "cba");
    _zvkcTSort(0, table.data(), 1, 3, nullptr, 1, &key);
    EXPECT_EQ(table, "abc");
}

#define EIGHT(key) key, key, key, key, key, key, key, key

// More keys than are kept without storage; only the last two tell the rows apart.
TEST(TableSort, ManyKeys)
{
    Record table = "xb1xa2xb3xa4";
    TableSortKey same = sortKey(0, 1, ZVK_KEY_ALPHANUMERIC, true), letter = sortKey(1, 1, ZVK_KEY_ALPHANUMERIC, true),
                 digit = sortKey(2, 1, ZVK_KEY_ZONED, false);
    _zvkcTSort(0, table.data(), 3, 4, nullptr, 74, EIGHT(&same), EIGHT(&same), EIGHT(&same), EIGHT(&same), EIGHT(&same),
               EIGHT(&same), EIGHT(&same), EIGHT(&same), EIGHT(&same), &letter, &digit);
    EXPECT_EQ(table, "xa4xa2xb3xb1");
}
