// DELETE of lines.
//
// A line cannot be taken out of the middle of a text file. DELETE remembers where it lies, and
// CLOSE makes a copy of the file without the lines that were deleted, as NAME.kvr2-lines, and
// renames it to the file. So a program that is killed before has deleted nothing, one that reads
// the file meanwhile reads the old one to its end, and no moment shows half of it.
//
// What would hinder that is found by the first DELETE, which makes the copy's file, with the owner
// and the mode of the old one: a folder that takes no file, another user's file, a file of several
// names (the others would keep the deleted lines).
#pragma once

#include <cstddef>
#include <cstdint>

#include "companions/filesystems/secondary_status.h"

namespace filesystems {

struct RemovedLines {
    int descriptor; // of the copy
    char *name;     // of the file itself; null: no line was deleted
    char *copyName;
    struct Range {
        uint64_t from, to;
    } * ranges; // in the file, ascending
    size_t count, room;
};

// False with the status set.
bool removeLine(FCB *fcb, RemovedLines *lines, int descriptor, uint64_t from, uint64_t to);

// CLOSE: puts the copy of the file's first `size` bytes in its place. 0 or an errno, and then the
// file is as it was.
int takeLinesOut(RemovedLines *lines, int descriptor, uint64_t size);

} // namespace filesystems
