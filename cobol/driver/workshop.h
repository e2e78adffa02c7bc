// What a compilation needs of the system: a temporary folder, the C compiler's run, the place of
// what comes out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kvrcob {

// ": No such file or directory" for the last system call that failed.
std::string reason();

// "/a/b/c" is in "/a/b", "c" in ".".
std::string directoryOf(const std::string &path);

// The folder of the C text, and of what the C compiler makes on its way. It goes with all that is
// in it, also when the compilation is interrupted.
class Workshop {
public:
    bool open(); // in TMPDIR, else in /tmp
    ~Workshop();
    const std::string &folder() const { return folder_; }

    bool keep = false;

private:
    std::string folder_, outer_; // outer_: TMPDIR as it was
};

// A result while it is made: a file in a folder beside its place, which it takes when it is whole.
// So a compilation that fails or is ended leaves what was there before, of two at once one wins,
// and nobody else can put anything where the file is to be. A symbolic link stays, and what it
// leads to is replaced; a device, a pipe or the like is written as it is.
class Result {
public:
    bool begin(const std::string &output); // false after an error
    const std::string &path() const { return path_; }
    bool take();
    ~Result(); // removes what has not taken its place

private:
    // As it was asked for; the folder where it is made, and its path there; where it goes.
    std::string output_, folder_, path_, place_;
};

constexpr int kCannotRun = -1; // errno says why

// Runs a command and waits for it. A signal that is to end kvrcob ends the command; interrupted()
// then tells of it.
enum class Telling : uint8_t { Silent, Plain, Verbose };
int runCommand(const std::vector<std::string> &command, Telling telling);
int interrupted();
// From here on a signal that is to end kvrcob is noted, and what was begun is removed.
void catchSignals();

// Whether a file can be made at this path; if not, an error says why.
bool canWrite(const std::string &path);
// "-" is standard output.
bool writeFile(const std::string &path, const std::string &text);

// A file's second name; where the file system has none, a copy. False after an error.
bool alsoNamed(const std::string &path, const std::string &other);

} // namespace kvrcob
