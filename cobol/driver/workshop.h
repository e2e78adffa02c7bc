// What a compilation needs of the system: a temporary folder, the C compiler's run, the place of
// what comes out.
#pragma once

#include <string>
#include <vector>

namespace kvrcob {

// ": No such file or directory" for the last system call that failed.
std::string reason();

// The folder of the C text. It goes with all that was made in it, also when the compilation is
// interrupted.
class Workshop {
public:
    bool open(); // in TMPDIR, else in /tmp
    ~Workshop();
    // The path of a file of this name; it is removed at the end.
    std::string file(const std::string &name);
    // Removed at the end if it is still there: what has not reached its place.
    void litter(const std::string &path) { files_.push_back(path); }
    const std::string &folder() const { return folder_; }

    bool keep = false;

private:
    std::string folder_;
    std::vector<std::string> files_;
};

constexpr int kCannotRun = 127;

// Runs a command and waits for it. A signal that is to end kvrcob ends the command; interrupted()
// then tells of it.
int runCommand(const std::vector<std::string> &command, bool verbose);
int interrupted();

// Whether a file can be made at this path; if not, an error says why.
bool canWrite(const std::string &path);
// "-" is standard output.
bool writeFile(const std::string &path, const std::string &text);

// A file's second name; where the file system has none, a copy. False after an error.
bool alsoNamed(const std::string &path, const std::string &other, Workshop &shop);

} // namespace kvrcob
