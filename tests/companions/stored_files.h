// What the tests of the file-system modules share: the usual files, and a second process to hold
// against the first.
#pragma once

#include <csignal>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/child.h"
#include "support/compiled_file.h"
#include "support/share.h"

using std::string;

// The tests' files need no disk; those of the tests that do say so.
inline const int durabilityOfTests = setenv("VFS_DURABILITY", "none", 1);

inline string pad(string text, size_t size) { return text.append(size - text.size(), ' '); }

inline const FileAttributes fixed10 = {.longest = 10, .shortest = 10};
inline const FileAttributes varying = {.longest = 40, .shortest = 1};

constexpr uint8_t sequentialAccess = ZVK_FILE_ACCESS_SEQUENTIAL;

// Key 0 in bytes 0 to 5, key 1 in 6 to 9 with duplicates, key 2 in 10 to 13 without.
inline FileAttributes indexedFile(uint8_t access = 0)
{
    return {.longest = 20,
            .shortest = 20,
            .organization = ZVK_FILE_INDEXED,
            .access = access,
            .keys = {{6, 0, 0, {}}, {4, 6, ZVK_FILE_KEY_DUPLICATES, {}}, {4, 10, 0, {}}}};
}

inline FileAttributes relativeFile(uint8_t access = 0)
{
    return {.longest = 10, .shortest = 10, .organization = ZVK_FILE_RELATIVE, .access = access};
}

constexpr FileRequest next = {.options = ZVK_REQUEST_NEXT};
constexpr FileRequest previous = {.options = ZVK_REQUEST_PREVIOUS};

// The module's text for the FS2 of the last verb; empty for none.
inline string reason(const CompiledFile &file)
{
    if (!file.fcb->moduleOperations) return "";
    auto text = reinterpret_cast<FileText>(file.fcb->moduleOperations[ZVK_FILE_TEXT_SLOT]);
    const char *said = text(file.fcb->moduleBuffer, file.fcb->fs2, 0, 1);
    return said ? said : "";
}

// The programs that end a transaction.
inline int ended(const char *how)
{
    static void *programs = dlopen((string(getenv("KVR2_BUILD_DIR")) + "/companions/KVR2_COMMIT").c_str(), RTLD_NOW);
    return reinterpret_cast<int (*)()>(dlsym(programs, how))();
}
inline int commit() { return ended("KVR2_COMMIT"); }
inline int rollBack() { return ended("KVR2_ROLLBACK"); }

// The long forms of the campaigns of kills, power cuts and flips: KVR2_TORTURE_KILLS and so on say
// how many there are to be in all (scripts/torture); `parts` tests, or parts of one, share them.
inline int torture(const char *what, int small, int parts)
{
    const char *said = getenv((string("KVR2_TORTURE_") + what).c_str());
    return said ? (atoi(said) + parts - 1) / parts : small;
}
// Without it 590 kills are made; each test has its part of them.
inline int killRounds(int small)
{
    int all = torture("KILLS", 590, 1);
    return all ? (small * all + 589) / 590 : 0;
}
inline unsigned tortureSeed()
{
    const char *said = getenv("KVR2_TORTURE_SEED");
    return said ? static_cast<unsigned>(atoi(said)) : 0;
}
template <class... Values>
void tortureFigure(const char *format, Values... values)
{
    if (getenv("KVR2_TORTURE_SEED")) printf(format, values...), puts("");
}

// The same file in another process, which does what it is told:
//
//     Peer peer(name, attributes);                      // before this process opens the file
//     EXPECT_EQ(peer.open(ZVK_OPEN_IO), "00");
//     EXPECT_EQ(peer.read("000001"), "99");
class Peer {
public:
    Peer(const string &name, const FileAttributes &attributes)
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) != 0) abort();
        child = fork();
        if (child == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL); // two peers hold each other's lines: no end of file would tell them
            serve(ends[1], name, attributes);
        }
        ::close(ends[1]);
        line = ends[0];
    }
    ~Peer()
    {
        if (child <= 0) return;
        ask('q');
        wait();
    }
    Peer(const Peer &) = delete;
    Peer &operator=(const Peer &) = delete;

    string open(uint16_t mode) { return ask('o', "", {}, mode); }
    string close() { return ask('c'); }
    string read(const string &key, const FileRequest &request = {}) { return ask('r', key, request); }
    string read(const FileRequest &request = {}) { return ask('r', "", request); }
    string write(const string &text, const FileRequest &request = {}) { return ask('w', text, request); }
    string rewrite(const string &text, const FileRequest &request = {}) { return ask('x', text, request); }
    string erase(const string &key, const FileRequest &request = {}) { return ask('d', key, request); }
    string start(const string &key, const FileRequest &request) { return ask('s', key, request); }
    string unlock() { return ask('u'); }
    const string &record() const { return lastRecord; }

    // kill -9
    void die()
    {
        ::kill(child, SIGKILL);
        wait();
    }

private:
    struct Command {
        char verb;
        uint16_t mode;
        uint32_t length;
        FileRequest request;
        char text[200];
    };
    struct Answer {
        char status[2];
        uint32_t length;
        char record[200];
    };
    pid_t child;
    int line;
    string lastRecord;

    string ask(char verb, const string &text = "", const FileRequest &request = {}, uint16_t mode = 0)
    {
        Command command = {verb, mode, static_cast<uint32_t>(text.size()), request, {}};
        memcpy(command.text, text.data(), text.size());
        Answer answer = {};
        if (send(line, &command, sizeof command, MSG_NOSIGNAL) < 0 || recv(line, &answer, sizeof answer, 0) <= 0)
            return "??";
        lastRecord.assign(answer.record, answer.length);
        return string(answer.status, 2);
    }

    void wait()
    {
        ::close(line);
        waitpid(child, nullptr, 0);
        child = 0;
    }

    [[noreturn]] static void serve(int line, const string &name, const FileAttributes &attributes)
    {
        CompiledFile file(name, attributes);
        Command command;
        while (recv(line, &command, sizeof command, 0) > 0 && command.verb != 'q') {
            string text(command.text, command.length), status;
            if (command.verb == 'r' || command.verb == 'd' || command.verb == 's')
                if (!text.empty()) file.move(text);
            switch (command.verb) {
            case 'o':
                status = file.open(command.mode);
                break;
            case 'c':
                status = file.close();
                break;
            case 'r':
                status = file.read(command.request);
                break;
            case 'w':
                status = file.write(text, command.request);
                break;
            case 'x':
                status = file.rewrite(text, command.request);
                break;
            case 'd':
                status = file.verb(file.fcb->deleteRecord, command.request);
                break;
            case 's':
                status = file.verb(file.fcb->start, command.request);
                break;
            default:
                status = file.verb(file.fcb->unlock, {});
                break;
            }
            Answer answer = {};
            memcpy(answer.status, status.data(), 2);
            answer.length = command.verb == 'r' && status < "10" ? file.fcb->recordLength : 0;
            memcpy(answer.record, file.fcb->record, answer.length);
            if (send(line, &answer, sizeof answer, 0) < 0) break;
        }
        _exit(0);
    }
};
