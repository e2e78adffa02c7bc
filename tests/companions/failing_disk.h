// Transfers of this process that fail as a disk or a full file system makes them fail: the system's
// calls are taken from the modules and from LMDB.
//
//     FailingDisk disk(FailingDisk::shortWrite);
//     EXPECT_EQ(file.write("x"), "30");
#pragma once

#include <string>
#include <vector>

class FailingDisk {
public:
    enum Failure { none, inputOutput, shortWrite, full, killed, stopped };
    // From the `good`-th write on, all writes fail; a short one takes half of what it was given.
    // `killed`: the process ends after `good` bytes of a write at an offset. `stopped`: it ends in
    // place of a write or the removal of a name, after `good` of them.
    explicit FailingDisk(Failure failure, int good = 0);
    ~FailingDisk();
    FailingDisk(const FailingDisk &) = delete;
    FailingDisk &operator=(const FailingDisk &) = delete;
    static int writes(); // since it was made
};

// What the process writes, in order, with the moments at which it has it forced to the disk.
struct RecordedWrite {
    enum : long { forced = -1, made = -2, removed = -3, linked = -4 };
    unsigned long inode;
    long offset; // forced: all before it of this inode is on the disk; made, removed, linked: `bytes` is a name
    std::string bytes;
};
class RecordingDisk {
public:
    RecordingDisk();
    ~RecordingDisk();
    RecordingDisk(const RecordingDisk &) = delete;
    RecordingDisk &operator=(const RecordingDisk &) = delete;
    static std::vector<RecordedWrite> writes;
};

// A file system that knows no locks, as a network folder may be mounted.
class LocklessDisk {
public:
    LocklessDisk();
    ~LocklessDisk();
    LocklessDisk(const LocklessDisk &) = delete;
    LocklessDisk &operator=(const LocklessDisk &) = delete;
};

// A file that is cut off to so many bytes once, right after it was asked for its size: the `nth`
// time from here on.
class ShrinkingFile {
public:
    ShrinkingFile(const std::string &name, long size, int nth = 0);
    ~ShrinkingFile();
    ShrinkingFile(const ShrinkingFile &) = delete;
    ShrinkingFile &operator=(const ShrinkingFile &) = delete;
    static bool happened();
};

// One call that asks what a file holds (fstat, pread) fails with an input/output error: the `nth`
// from here on.
class FailingRead {
public:
    explicit FailingRead(int nth);
    ~FailingRead();
    FailingRead(const FailingRead &) = delete;
    FailingRead &operator=(const FailingRead &) = delete;
    static bool happened();
};
