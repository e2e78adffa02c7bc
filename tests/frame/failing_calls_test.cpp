// Faults that these tests are there to catch: a crash, a hang or a half-made state where storage or
// a call of the system fails, anywhere on the ways that all programs go: a run unit with a message,
// a dynamic CALL and EXTERNAL data, an XML PARSE, a generation data group.
#include <cstring>

#include "support/failing_calls_wrapped.h"

#include "frame/message_calls.h"
#include "frame/thread_record.h"
#include "kvr2/generations.h"
#include "support/compiled_program.h"
#include "support/require.h"
#include "xml/parse_statement.h"

namespace {

void entry() {}

void runUnit()
{
    CompiledProgram main("MAIN", entry);
    compiledMain(main, [&] {
        uint8_t name[] = "NOWHERE";
        uint32_t failures = 1;
        _zvkDynLd(nullptr, 7, name, &main.pcb, nullptr, &failures);
        CompiledProgram sub("SUB", entry);
        compiledCall(sub, [] { msg::noPunchFile(); });
        msg::unknownOption("FOO", ZVK_MSG_NO_TRACEBACK);
        zvkThreadScratch(100);
        zvkThreadScratch(100000);
    });
    uint32_t rc = 0;
    _zvkCOBOLTerm(1, &rc);
}

TEST(FailingCalls, StorageInARunUnit) { EXPECT_GT(failEach(Calls::Storage, runUnit), 5); }

TEST(FailingCalls, TheMessageCatalog)
{
    auto openAgain = [] {
        zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
        zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG);
        msg::noPunchFile(ZVK_MSG_INFORM);
    };
    for (Calls kind : {Calls::Storage, Calls::System}) EXPECT_GT(failEach(kind, openAgain), 0);
}

TEST(FailingCalls, StorageInAParse)
{
    auto parse = [] {
        const char document[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE a [<!ENTITY e \"v\">]>"
                                "<a one=\"&e;\"><b>text &amp; more</b><![CDATA[raw]]></a>";
        ParseStatement statement(document, strlen(document), 1208);
        statement.run();
    };
    auto begin = [] {
        static CompiledProgram program("XMLPGM");
        _zvkPgmInit(&program.pcb);
    };
    EXPECT_GE(failEach(Calls::Storage, parse, begin), 1);
}

// Whatever fails, the catalogue is one that can be used afterwards.
TEST(FailingCalls, AGenerationGroupStaysWhole)
{
    for (Calls kind : {Calls::Storage, Calls::System}) {
        TemporaryDirectory directory;
        std::string base;
        auto begin = [&] {
            base = directory.file("daily") + std::to_string(getpid());
            REQUIRE(GDG_Create(base.data(), 3, 0, 0, "sys") == 0);
            char *name = nullptr;
            REQUIRE(GDS_Name((base + "(+1)").c_str(), &name, 1, "sys") == 1);
            free(name);
        };
        auto add = [&] {
            char *name = nullptr;
            GDS_Name((base + "(+1)").c_str(), &name, 1, "sys");
            free(name);
            name = nullptr;
            GDS_Name((base + "(0)").c_str(), &name, 0, "sys");
            free(name);
            GDG_Alter(base.data(), 5, 0, 0, "sys");
        };
        auto look = [&] {
            char *name = nullptr;
            REQUIRE(GDS_Name((base + "(+1)").c_str(), &name, 1, "sys") == 1 && name);
            free(name);
        };
        const int calls = failEach(kind, add, begin, look);
        EXPECT_GT(calls, kind == Calls::System ? 5 : -1);
    }
}

} // namespace
