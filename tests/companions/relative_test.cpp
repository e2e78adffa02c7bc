// Faults these tests are there to catch: a record in the wrong slot, a hole delivered as a record, a READ that repeats or skips records, a START that misses, a
// number that the program cannot hold.
#include <map>
#include <random>
#include <set>

#include "stored_files.h"

namespace {

TEST(Relative, SlotsByNumberAndInOrder)
{
    TemporaryDirectory directory;
    FileAttributes attributes = {.longest = 10, .shortest = 10, .organization = ZVK_FILE_RELATIVE, .access = 0};
    CompiledFile file(directory.file("r"), attributes);
    ASSERT_EQ(file.open(ZVK_OPEN_OUTPUT), "00");
    for (uint64_t n : {5, 2, 9}) EXPECT_EQ(file.write("r" + std::to_string(n), {.relativeKey = n}), "00");
    EXPECT_EQ(file.write("again", {.relativeKey = 5}), "22");
    EXPECT_EQ(file.write("none", {.relativeKey = 0}), "24");
    file.close();
    ASSERT_EQ(file.open(ZVK_OPEN_IO), "00");
    EXPECT_EQ(file.read({.relativeKey = 3}), "23");
    EXPECT_EQ(file.read({.relativeKey = 5}), "00");
    EXPECT_EQ(file.rewrite("new5", {.relativeKey = 5}), "00");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {.relativeKey = 2}), "00");
    EXPECT_EQ(file.verb(file.fcb->deleteRecord, {.relativeKey = 2}), "23");
    EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_NOT_LESS, .relativeKey = 1}), "00");
    EXPECT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), "00");
    EXPECT_EQ(file.record(), pad("new5", 10));
    EXPECT_EQ(file.read({.options = ZVK_REQUEST_NEXT}), "00");
    EXPECT_EQ(file.request.relativeKey, 9u);
    EXPECT_EQ(file.read({.options = ZVK_REQUEST_PREVIOUS}), "00");
    EXPECT_EQ(file.request.relativeKey, 5u);
    EXPECT_EQ(file.verb(file.fcb->start, {.relation = ZVK_RELATION_GREATER, .relativeKey = 9}), "23");
    file.close();
}

} // namespace
