// SORT and MERGE statements as compiled programs make them, for the tests: the statement's records,
// RELEASE and RETURN.
#pragma once

#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include "kvr2/sort.h"
#include "sort_data.h"
#include "support/child.h"
#include "support/compiled_program.h"
#include "support/require.h"

constexpr size_t kBuffer = 262144;
constexpr char kReal[] = "/companions"; // the engine and the file systems that come with the library

struct Statement {
    CompiledProgram program{"SORTPGM"};
    int16_t sortReturn = 99;
    SortVerbBlock block{};
    SortRecordDesc desc{};
    SortFileList usingList{}, givingList{};
    uint64_t eighth[3] = {0, 0, 1};
    char fifth[16] = "";
    std::vector<uint64_t> keys = {1, 0, 0, 0};

    Statement(uint32_t format, uint32_t length, uint32_t keyLength = 4)
    {
        block.sortReturn = &sortReturn;
        block.engineFlags = 77;
        block.lineNumber = 123;
        block.program = &program.pcb;
        desc.recordFormat = format;
        desc.recordLength = length;
        TableSortKey key = sortKey(0, keyLength, ZVK_KEY_ALPHANUMERIC, true);
        memcpy(&keys[1], &key, sizeof key);
        _zvkPgmInit(&program.pcb);
    }
    int16_t op(int32_t number)
    {
        sortReturn = 99;
        _zvkSortMerge(number, &block, &desc, keys.data(), fifth, &usingList, &givingList, eighth);
        return sortReturn;
    }
};

inline uint16_t release(const std::string &record)
{
    uint16_t status = 7;
    std::string copy = record;
    _zvkRelease(static_cast<uint32_t>(record.size()), copy.data(), &status);
    return status;
}

// The next record; "END" at the end, "FAILED" where it cannot be had.
inline std::string next()
{
    static thread_local std::vector<char> area(2 * kBuffer);
    uint32_t length = 0;
    uint16_t status = 7;
    _zvkReturn(&length, area.data(), &status);
    REQUIRE(status == 7 || status == 1 || status == 16);
    return status == 16 ? "FAILED" : status == 1 ? "END" : std::string(area.data(), length);
}

inline std::string spillName(const char *prefix)
{
    char name[64];
    snprintf(name, sizeof name, "%s%010u.%010u", prefix, static_cast<unsigned>(getpid()),
             static_cast<unsigned>(pthread_self()));
    return name;
}

inline std::string numbered(size_t number, size_t length, char fill = '.')
{
    char text[16];
    snprintf(text, sizeof text, "%08zu", number * 7919 % 100000000);
    std::string record(text, 8);
    record.resize(length, fill);
    return record;
}

// Engine and file systems from that folder of the build; work files in `directory`.
inline ChildOptions with(const char *engines, const TemporaryDirectory &directory)
{
    ChildOptions options;
    options.env = {{"LD_LIBRARY_PATH", std::string(getenv("KVR2_BUILD_DIR")) + engines}, {"TMPDIR", directory.path()}};
    options.directory = directory.path();
    return options;
}
