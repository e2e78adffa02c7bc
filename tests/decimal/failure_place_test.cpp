// Faults that these tests are there to catch: a message about bad data that does not say whose it
// is: no program, another program, a line that is not the call's; a process started for the line
// where nobody asked for lines.
#include <csignal>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>

#include "kvr2/run_unit.h"
#include "support/child.h"
#include "support/pattern.h"
#include "support/require.h"

using std::string;

namespace {

// What a program in an object of its own, with line tables, ends with when it makes a call.
string failureOf(const char *tracebackLines, const string &call)
{
    TemporaryDirectory directory;
    writeFile(directory.file("ledger.c"), R"(#include "kvr2/kvr2.h"
static IPCB ipcb;
static PCB pcb = {.version = {5, 1, 1},
                  .name = "LEDGER", .nameLength = 6, .ipcb = &ipcb, .yearWindow = ZVK_NO_YEAR_WINDOW};
static unsigned char one[] = {0x1C}, zero[] = {0x0C}, bad[] = {0xAC}, result[1];
void run(void)
{
    ipcb.pcb = &pcb;
    _zvkPgmInit(&pcb);
#line 120 "ledger.cob"
)" + call + ";\n}\n");
    const string object = directory.file("LEDGER.so");
    ChildRun built = runCommand({"cc", "-g", "-shared", "-fPIC", "-I" + string(getenv("KVR2_SOURCE_DIR")) + "/include",
                                 "-o", object, directory.file("ledger.c")});
    EXPECT_EQ(built.status, 0) << built.err;
    ChildRun run = runChild(
        [&] {
            void *handle = dlopen(object.c_str(), RTLD_NOW);
            REQUIRE(handle && _zvkProccom); // the library is there for it
            reinterpret_cast<void (*)()>(dlsym(handle, "run"))();
        },
        {.env = {{"traceback_lines", tracebackLines}}});
    EXPECT_EQ(run.signal, SIGABRT) << run.err;
    return oneLine(run.err);
}

TEST(DecimalFailure, NamesProgramAndLine)
{
#ifdef KVR2_SANITIZED
    GTEST_SKIP() << "the sanitizer has a backtrace() of its own, whose frame is then the caller";
#endif
    for (const char *call :
         {"_zvkcBCD_DIV_Pckd(one, zero, result, 1, 1, 1)", "_zvkcBCD_ADD_Pckd(one, bad, result, 1, 1, 1)"}) {
        string told = failureOf("1", call);
        EXPECT_NE(told.find("(program LEDGER, line ledger.cob:120). COBOL_BCD_DEBUG=1 shows"), string::npos) << told;
        told = failureOf("0", call);
        EXPECT_NE(told.find("(program LEDGER). COBOL_BCD_DEBUG=1 shows"), string::npos) << told;
    }
}

} // namespace
