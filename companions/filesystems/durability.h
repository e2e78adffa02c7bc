// When data is forced to the disk, so that a loss of power cannot take it: VFS_DURABILITY.
//
//     none    never; what the system has survives the end of the program, not that of the machine
//     close   CLOSE forces the file's data, and so does each commit of an indexed file, in order: a
//             loss of power leaves a store at one of its last commits. The default
//     commit  each commit of an indexed file and each change of a relative one in I-O is on the disk
//             when the verb returns; CLOSE as above
#pragma once

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace filesystems {

enum class Durability { none, close, commit };

// Read at each OPEN.
inline Durability wantedDurability()
{
    const char *said = getenv("VFS_DURABILITY");
    if (said && strcmp(said, "none") == 0) return Durability::none;
    if (said && strcmp(said, "commit") == 0) return Durability::commit;
    return Durability::close;
}

// Forces a file's data; 0 or an errno. Devices and pipes have none to force.
inline int forceData(int descriptor)
{
    return fdatasync(descriptor) == 0 || errno == EINVAL || errno == EROFS ? 0 : errno;
}

// The entry of a file in its folder; not every file system does that.
inline void forceDirectory(const char *name)
{
    char folder[PATH_MAX];
    const char *slash = strrchr(name, '/');
    snprintf(folder, sizeof folder, "%.*s", slash ? static_cast<int>(slash - name + 1) : 2, slash ? name : "./");
    int descriptor = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

} // namespace filesystems
