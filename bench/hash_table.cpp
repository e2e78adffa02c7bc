// Lookups of program names, on the path of every dynamic CALL, beside the standard library's table.
#include <algorithm>
#include <benchmark/benchmark.h>
#include <list>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "kvr2/hash_table.h"

namespace {

struct Names {
    std::vector<std::string> inserted; // in this order
    std::vector<std::string> lookedUp; // the same, shuffled
};

// `count` names of `length` bytes: "PGM00042".
const Names &names(size_t count, size_t length)
{
    static std::unordered_map<size_t, Names> made;
    Names &all = made[count * 1000 + length];
    if (!all.inserted.empty()) return all;
    for (size_t i = 0; i < count; ++i) {
        std::string digits = std::to_string(i);
        all.inserted.push_back("PGM" + std::string(length - 3 - digits.size(), '0') + digits);
    }
    all.lookedUp = all.inserted;
    std::shuffle(all.lookedUp.begin(), all.lookedUp.end(), std::mt19937(42));
    return all;
}

const char kValue[48] = {};

HashTable *filledTable(const Names &all, uint32_t flags)
{
    HashParams params = {};
    params.flags = flags;
    HashTable *table = HashTable_Create(&params);
    for (const std::string &name : all.inserted)
        HashTable_Insert(table, nullptr, name.data(), name.size(), kValue, sizeof kValue, 0, 0);
    return table;
}

struct Value {
    char bytes[48];
};

template <size_t Count, size_t Length, int32_t Touch, uint32_t Flags>
void findOurs(benchmark::State &state)
{
    const Names &all = names(Count, Length);
    HashTable *table = filledTable(all, Flags);
    size_t i = 0;
    for (auto _ : state) {
        const std::string &name = all.lookedUp[i];
        HashState found;
        benchmark::DoNotOptimize(HashTable_Find(table, &found, name.data(), name.size(), Touch, 0));
        if (++i == Count) i = 0;
    }
    HashTable_Destroy(table);
}

template <size_t Count, size_t Length>
void findPeer(benchmark::State &state)
{
    const Names &all = names(Count, Length);
    std::unordered_map<std::string, Value> table;
    for (const std::string &name : all.inserted) table.emplace(name, Value());
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(table.find(all.lookedUp[i]));
        if (++i == Count) i = 0;
    }
}

// A table in order of use, as one builds it from the library's containers.
template <size_t Count, size_t Length>
void touchPeer(benchmark::State &state)
{
    const Names &all = names(Count, Length);
    std::list<Value> byUse;
    std::unordered_map<std::string, std::list<Value>::iterator> table;
    for (const std::string &name : all.inserted) {
        byUse.emplace_front();
        table.emplace(name, byUse.begin());
    }
    size_t i = 0;
    for (auto _ : state) {
        auto found = table.find(all.lookedUp[i]);
        byUse.splice(byUse.begin(), byUse, found->second);
        benchmark::DoNotOptimize(found);
        if (++i == Count) i = 0;
    }
}

template <size_t Count>
void fillOurs(benchmark::State &state)
{
    const Names &all = names(Count, 8);
    for (auto _ : state) HashTable_Destroy(filledTable(all, 0));
}

template <size_t Count>
void fillPeer(benchmark::State &state)
{
    const Names &all = names(Count, 8);
    for (auto _ : state) {
        std::unordered_map<std::string, Value> table;
        for (const std::string &name : all.inserted) table.emplace(name, Value());
        benchmark::DoNotOptimize(table);
    }
}

} // namespace

static void figure(const std::string &name, void (*ours)(benchmark::State &), const char *who,
                   void (*peer)(benchmark::State &))
{
    benchmark::RegisterBenchmark((name + "/ours").c_str(), ours);
    benchmark::RegisterBenchmark((name + "/peer:" + who).c_str(), peer);
}

int main(int argc, char **argv)
{
    const char *map = "std::unordered_map", *mapAndList = "std::unordered_map and std::list";
    figure("find, 1,000 names of 8", findOurs<1000, 8, 0, 0>, map, findPeer<1000, 8>);
    figure("find, 1,000 names of 30", findOurs<1000, 30, 0, 0>, map, findPeer<1000, 30>);
    figure("find, 1,000,000 names of 10", findOurs<1'000'000, 10, 0, 0>, map, findPeer<1'000'000, 10>);
    // Here the peer leaves its chains as they are.
    figure("find, to the chain's front, 1,000 names of 8", findOurs<1000, 8, 1, 0>, map, findPeer<1000, 8>);
    figure("find, order of use kept, 1,000 names of 8", findOurs<1000, 8, 1, ZVK_HASH_MRU>, mapAndList,
           touchPeer<1000, 8>);
    figure("fill and destroy, 1,000 names of 8", fillOurs<1000>, map, fillPeer<1000>);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
