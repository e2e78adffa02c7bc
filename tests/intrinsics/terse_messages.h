// Runs calls in a child whose message catalog has short texts and lets every message return, and
// gives the messages: "152 120 3 NUMVAL" a line.
#pragma once

#include <clocale>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

#include "frame/messages.h"
#include "support/child.h"

// Removed at the end of the tests, not by a static's destructor: that would run in every child,
// too.
inline TemporaryDirectory *terseDirectory;
struct TerseCleaner : testing::Environment {
    void TearDown() override
    {
        delete terseDirectory;
        terseDirectory = nullptr;
    }
};
inline auto *const terseCleaner = testing::AddGlobalTestEnvironment(new TerseCleaner);

inline const char *terseCatalog()
{
    if (!terseDirectory) terseDirectory = new TemporaryDirectory;
    TemporaryDirectory &directory = *terseDirectory;
    static bool made = [&directory] {
        std::map<int, const char *> inserts; // gencat wants them in order
        for (int n : {48, 49, 50, 51, 53, 54, 58, 59, 60, 61, 903}) inserts[n] = "";
        for (int n : {97, 100, 151, 163, 176, 177, 178, 179, 180}) inserts[n] = " %s";
        for (int n : {152, 155}) inserts[n] = " %d %d %s";
        std::string text;
        for (auto [n, tail] : inserts) text += "$set " + std::to_string(n) + "\n1 1 " + std::to_string(n) + tail + "\n";
        writeFile(directory.file("terse.msg"), text);
        ChildRun run = runCommand({"gencat", directory.file("kvr2run.cat"), directory.file("terse.msg")});
        return run.status == 0;
    }();
    static std::string path = directory.file("%N");
    return made ? path.c_str() : "";
}

struct TerseRun {
    std::vector<std::string> messages;
    std::string out; // what the calls wrote to stdout
    int status = -1;
};

inline TerseRun terse(const std::function<void()> &calls)
{
    ChildRun run = runChild(
        [&] {
            zvkWriteMsg(0, ZVK_MSG_CLOSE_CATALOG);
            zvkWriteMsg(0, ZVK_MSG_OPEN_CATALOG);
            calls();
        },
        {.env = {{"NLSPATH", terseCatalog()}}, .seconds = 120});
    TerseRun result;
    result.out = run.out;
    result.status = run.status;
    std::istringstream lines(run.err);
    for (std::string line; std::getline(lines, line);)
        if (line.size() > 9 && line.compare(0, 3, "ZVK") == 0)
            result.messages.push_back(line.substr(9));
        else if (!line.empty())
            result.messages.push_back("? " + line);
    return result;
}

using Messages = std::vector<std::string>;

inline Messages messagesOf(const std::function<void()> &calls)
{
    TerseRun run = terse(calls);
    if (run.status != 0) run.messages.push_back("? the child failed");
    return run.messages;
}
