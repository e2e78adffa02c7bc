// Runs a piece of a test in a process of its own and hands back its output and its ending.
//
// Whatever may end the run unit, or depends on the environment that the library reads when it is
// loaded, goes into a child:
//
//     ChildRun run = runChild([] { zvkWriteMsg(907, 0); });              // forked: the library is loaded already
//     EXPECT_EQ(run.signal, SIGABRT);
//     EXPECT_TRUE(holds(run.err, "ZVK907S"));          // support/pattern.h
//
//     KVR2_PIECE(traced_entry) { _zvkPgmInit(&pcb); }                    // a named piece: a fresh process
//     ChildRun run = runPiece("traced_entry", {.env = {{"__ZVKDEBUG", "1"}}});
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct ChildRun {
    std::string out;
    std::string err;
    int status = -1;       // exit status, -1 when it was ended by a signal
    int signal = 0;        // the signal that ended it, 0 when it exited
    bool timedOut = false; // it was killed because it took too long
};

struct ChildOptions {
    std::vector<std::pair<std::string, std::optional<std::string>>> env; // set, or with nullopt unset, in the child
    std::string input;                                                   // its standard input
    std::string directory;                                               // its working directory; empty: the parent's
    int seconds = 600;
};

// Forks and runs `body`; the child exits with 0 when it returns, through exit(), so that the
// library's destructor runs.
ChildRun runChild(const std::function<void()> &body, const ChildOptions &options = {});

// Starts this test program afresh to run the piece of that name, which stands under KVR2_PIECE in
// any of its files.
ChildRun runPiece(const std::string &name, const ChildOptions &options = {});

// Starts any program.
ChildRun runCommand(const std::vector<std::string> &command, const ChildOptions &options = {});

struct PieceRegistration {
    PieceRegistration(const char *name, void (*body)());
};

#define KVR2_PIECE(name)                                                                                               \
    static void piece_##name();                                                                                        \
    static const PieceRegistration registration_##name(#name, piece_##name);                                           \
    static void piece_##name()

// Runs the piece that the command line asks for, if it does; used by the test programs' main.
bool runRequestedPiece(int argc, char **argv);

// A directory that is removed with all it holds when the object goes.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;
    const std::string &path() const { return path_; }
    std::string file(const std::string &name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

std::string readFile(const std::string &path);
void writeFile(const std::string &path, const std::string &content);
