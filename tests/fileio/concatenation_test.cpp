// Faults these tests are there to catch: names split in the wrong place, lost or invented; a group
// read in the wrong order, or not to its end.
#include <string>

#include "kvr2/fileio.h"
#include "kvr2/generations.h"
#include "support/child.h"

using std::string;

namespace {

// The names that a list gives, and whether it counts as a concatenation.
string names(string list)
{
    uint32_t isConcat = 9, prefix = 0;
    memcpy(&prefix, "sys", 3);
    ZvkConcatenation *record = _zvk_Concat_Check(list.data(), &isConcat, 0, &prefix);
    string out = std::to_string(isConcat) + (record ? "" : " none");
    if (record) {
        for (int i = 0; i < 300; i++) {
            const char *next = _zvk_Concat_Next(record);
            if (!next) break;
            out += string(" ") + next;
        }
        EXPECT_EQ(_zvk_Concat_Next(record), nullptr);
    }
    _zvk_Concat_Free(record);
    return out;
}

TEST(Concatenation, Splits)
{
    EXPECT_EQ(names("a:b::c:"), "1 a b c");
    EXPECT_EQ(names(":a"), "1 a");
    EXPECT_EQ(names("a"), "0 none");
    EXPECT_EQ(names(":"), "1");
    EXPECT_EQ(names("/.:/txmn/hdk/srv/file"), "0 none");
    EXPECT_EQ(names("x:/.:/txmn/hdk/srv/file:y"), "1 x /.:/txmn/hdk/srv/file y");
    string many = "f";
    for (int i = 1; i < 256; i++) many += ":f";
    EXPECT_EQ(names(many).size(), 1 + 2 * 256u);
    EXPECT_EQ(names(many + ":f"), "1 none") << "257 names";
}

TEST(Concatenation, WalksGroupsFromTheNewestBack)
{
    TemporaryDirectory directory;
    string group = directory.file("g"), none = directory.file("none");
    ASSERT_EQ(GDG_Create(group.data(), 10, 0, 0, "sys"), 0);
    ASSERT_EQ(GDG_Create(none.data(), 10, 0, 0, "sys"), 0);
    for (int i = 0; i < 3; i++) {
        char *name = nullptr;
        ASSERT_EQ(GDS_Name((group + "(+1)").c_str(), &name, 1, "sys"), 1);
        writeFile(name, "");
        free(name);
    }
    string all = " " + group + ".g0003v00 " + group + ".g0002v00 " + group + ".g0001v00";
    EXPECT_EQ(names(group), "1" + all);
    EXPECT_EQ(names(group + "(*)"), "1" + all);
    EXPECT_EQ(names("a:" + group + ":" + none + ":b"), "1 a" + all + " b");
    EXPECT_EQ(names(group + "(-1)"), "0 " + group + ".g0002v00");
    EXPECT_EQ(names(none), "1");
}

} // namespace
