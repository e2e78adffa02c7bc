// See lock_file.h.
#include "companions/filesystems/lock_file.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace filesystems {

void makeLockFile(const char *store)
{
    char lock[PATH_MAX], own[PATH_MAX];
    struct stat about, made;
    if (snprintf(lock, sizeof lock, "%s-lock", store) >= PATH_MAX || access(lock, F_OK) == 0) return;
    if (snprintf(own, sizeof own, "%s.%d", lock, getpid()) >= PATH_MAX || stat(store, &about) != 0) return;
    int descriptor = open(own, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0) return;

    mode_t mode = about.st_mode & 0666;
    if (fchown(descriptor, about.st_uid, about.st_gid) != 0 &&
        fchown(descriptor, static_cast<uid_t>(-1), about.st_gid) != 0)
        errno = 0; // it stays in the group that the system gave it
    if (fstat(descriptor, &made) == 0 && made.st_uid != about.st_uid) mode |= (mode & 0444) >> 1;
    // It appears under its name with all that, or another program's is there already.
    if (fchmod(descriptor, mode) != 0 || link(own, lock) != 0) errno = 0;
    unlink(own);
    close(descriptor);
}

bool lockFileIsUsable(const char *store)
{
    char lock[PATH_MAX];
    if (snprintf(lock, sizeof lock, "%s-lock", store) >= PATH_MAX) return true;
    return faccessat(AT_FDCWD, lock, R_OK | W_OK, AT_EACCESS) == 0 || errno != EACCES;
}

} // namespace filesystems
