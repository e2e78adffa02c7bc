// The catalogue of a generation data group: where it lies, its lock, reading and writing it.
//
// The lock is on the file, for the open description and not for the process, so it separates
// threads as well as processes. It is held from GDG_open to GDG_close: a generation's resolution
// and its entry are one step.
#include "fileio/generation_catalogue.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/bytes.h"
#include "base/environment.h"
#include "frame/storage.h"

namespace {

constexpr char kMagic[4] = {'G', 'D', 'G', '\n'};
constexpr uint32_t kOrder = 1234, kVersion = 1;

struct FileSystemName {
    char name[4];
    uint32_t code;
};
constexpr FileSystemName kNames[] = {{"???", kGdgUnknown}, {"sys", kGdgSys}, {"plx", kGdgPlx}, {"jgt", kGdgJgt},
                                     {"hdk", kGdgHdk},     {"rql", kGdgRql}, {"ora", kGdgOra}, {"lsq", kGdgSys}};

pthread_key_t key;
pthread_once_t once = PTHREAD_ONCE_INIT;
bool haveKey;
GdgContext *fallback;

void makeKey() { haveKey = pthread_key_create(&key, free) == 0; }

GdgContext *threadContext()
{
    pthread_once(&once, makeKey);
    auto *context = static_cast<GdgContext *>(haveKey ? pthread_getspecific(key) : fallback);
    if (context) return context;
    context = static_cast<GdgContext *>(zvkCalloc(1, sizeof(GdgContext)));
    if (haveKey)
        pthread_setspecific(key, context);
    else
        fallback = context;
    return context;
}

uint32_t codeOf(const char *prefix)
{
    if (!prefix) return kGdgUnknown;
    char lower[3];
    for (int i = 0; i < 3; i++) {
        if (!prefix[i]) return kGdgUnknown;
        lower[i] = static_cast<char>(tolower(static_cast<unsigned char>(prefix[i])));
    }
    for (const FileSystemName &row : kNames)
        if (memcmp(lower, row.name, 3) == 0) return row.code;
    return kGdgUnknown;
}

struct Split {
    char directory[1024];
    const char *base;
};

bool splitName(const char *name, Split &split)
{
    const char *slash = strrchr(name, '/');
    split.base = slash ? slash + 1 : name;
    int length = slash == name ? snprintf(split.directory, sizeof split.directory, "/")
                 : slash
                     ? snprintf(split.directory, sizeof split.directory, "%.*s", static_cast<int>(slash - name), name)
                     : snprintf(split.directory, sizeof split.directory, ".");
    return length > 0 && static_cast<size_t>(length) < sizeof split.directory;
}

void detectFileSystem(GdgContext *context, const char *name, const Split &split)
{
    bool read = context->image.flags & kGdgRead;
    if (read) context->fsCode = context->image.fileSystem;
    if (context->fsCode == kGdgUnknown) {
        char companion[2048];
        snprintf(companion, sizeof companion, "%s/.%s.QVREA", split.directory, split.base);
        if (strlen(name) > 14 && strncmp(name, "/.:/txmn/hdk/", 13) == 0)
            context->fsCode = kGdgHdk;
        else if (access(name, R_OK) == 0)
            context->fsCode = kGdgSys;
        else if (access(companion, R_OK) == 0)
            context->fsCode = kGdgJgt;
    }
    if (read && context->fsCode != context->image.fileSystem) {
        context->image.fileSystem = context->fsCode;
        context->image.flags |= kGdgDirty;
    }
}

// The directory of catalogues for a file system that has none of its own.
bool homeDirectory(const GdgContext *context, char (&directory)[1024])
{
    const char *home = environmentText("gdg_home"), *fileSystem = zvkGdgFileSystemName(context->fsCode);
    char root[512];
    int length;
    if (home)
        length = snprintf(root, sizeof root, "%s", home);
    else if ((home = environmentValue("HOME")))
        length = snprintf(root, sizeof root, "%s/gdg/", home);
    else
        return false;
    if (length < 0 || static_cast<size_t>(length) >= sizeof root) return false;
    if (context->fsCode == kGdgHdk) {
        const char *server = environmentValue("TXMN_TK_HDK_SERVER");
        Split split;
        if (!server || !splitName(server, split)) return false;
        const char *last = strrchr(split.directory, '/');
        length = snprintf(directory, sizeof directory, "%s/%s/%s", root, fileSystem, last ? last + 1 : split.directory);
    } else if (context->fsCode == kGdgRql) {
        const char *instance = environmentValue("RQLINSTANCE"), *database = environmentValue("RQLDBDFT");
        if (!instance) return false;
        length = snprintf(directory, sizeof directory, "%s/%s/%s%s%s", root, fileSystem, instance, database ? "/" : "",
                          database ? database : "");
    } else {
        length = snprintf(directory, sizeof directory, "%s/%s/", root, fileSystem);
    }
    return length > 0 && static_cast<size_t>(length) < sizeof directory;
}

// mkdir -p
bool makeDirectories(const char *directory)
{
    char path[1024];
    snprintf(path, sizeof path, "%s", directory);
    for (char *slash = strchr(path + 1, '/'); slash; slash = strchr(slash + 1, '/')) {
        *slash = 0;
        mkdir(path, 0777);
        *slash = '/';
    }
    struct stat made;
    return (mkdir(path, 0777) == 0 || errno == EEXIST) && stat(path, &made) == 0 && S_ISDIR(made.st_mode);
}

// Reads or writes the whole image at offset 0.
template <class Transfer, class Bytes>
bool transferAll(int fd, Bytes *bytes, Transfer transfer, const char *who)
{
    size_t done = 0;
    while (done < sizeof(GdgImage)) {
        ssize_t moved = transfer(fd, bytes + done, sizeof(GdgImage) - done, static_cast<off_t>(done));
        if (moved > 0) {
            done += static_cast<size_t>(moved);
            continue;
        }
        if (moved < 0 && (errno == EAGAIN || errno == EINTR)) {
            fprintf(stderr, "Info: %s - %d %s\n", who, errno, strerror(errno));
            continue;
        }
        if (moved == 0) errno = EINVAL; // shorter than a catalogue is
        fprintf(stderr, "Error: %s - %d %s\n", who, errno, strerror(errno));
        return false;
    }
    return true;
}

// A catalogue from a machine of the other byte order becomes one of ours; Empty and Scratch are
// lost on the way, and stay so.
void swapOrder(GdgImage &image)
{
    uint32_t words[1024];
    memcpy(words, &image, sizeof words);
    for (uint32_t &word : words) word = reversed(word);
    memcpy(&image, words, sizeof words);
    memcpy(image.magic, kMagic, sizeof kMagic);
    image.order = kOrder;
    image.flags = kGdgRead | kGdgDirty;
    printf("Info: Endian swapped!\n");
}

// What was read, made safe to work with. False: this is no catalogue.
bool acceptImage(GdgImage &image)
{
    if (memcmp(image.magic, kMagic, sizeof kMagic) != 0) return false;
    image.flags = (image.flags & 3) | kGdgRead;
    if (image.order != kOrder) swapOrder(image);
    if (image.version != kVersion) {
        if (image.version != 0) fprintf(stderr, "Error: GDG catalogue version unkown!\n");
        return false;
    }
    // Damaged counts must not lead out of the list.
    if (image.entries > kGdgMaxEntries) return false;
    if (image.limit == 0 || image.limit > kGdgMaxEntries) image.limit = kGdgMaxEntries;
    return true;
}

int setLock(GdgContext *context, short type)
{
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_len = sizeof(GdgImage);
    int rc;
    do {
        rc = fcntl(context->fd, F_OFD_SETLKW, &lock);
    } while (rc != 0 && errno == EINTR);
    return rc;
}

void report(const char *what, const GdgContext *context)
{
    fprintf(stderr, "Error: %s(%s) - %d %s\n", what, context->cataloguePath, errno, strerror(errno));
}

} // namespace

GdgContext *zvkGdgContext(const char *prefix)
{
    GdgContext *context = threadContext();
    if (!context) return nullptr;
    context->fd = -1;
    context->generation = 0;
    context->made = false;
    context->fsCode = codeOf(prefix);
    context->image.flags = 0;
    return context;
}

bool zvkGdgMade()
{
    const GdgContext *context = threadContext();
    return context && context->made;
}

void zvkGdgReleaseFallback()
{
    free(fallback);
    fallback = nullptr;
    if (!haveKey) return;
    free(pthread_getspecific(key));
    pthread_key_delete(key);
    haveKey = false;
}

__attribute__((destructor)) static void releaseAtUnload() { zvkGdgReleaseFallback(); }

const char *zvkGdgFileSystemName(uint32_t code)
{
    for (const FileSystemName &row : kNames)
        if (row.code == code) return row.name;
    return kNames[0].name;
}

int GDG_path(GdgContext *context, const char *name, int mode)
{
    Split split;
    context->cataloguePath[0] = 0; // that of the name before must not be taken for this one's
    if (!splitName(name, split)) {
        errno = ENAMETOOLONG;
        return -1;
    }
    detectFileSystem(context, name, split);
    if (context->fsCode > kGdgJgt && !homeDirectory(context, split.directory)) return -1;
    int length =
        snprintf(context->cataloguePath, sizeof context->cataloguePath, "%s/%s.catalogue", split.directory, split.base);
    if (length < 0 || static_cast<size_t>(length) >= sizeof context->cataloguePath) {
        context->cataloguePath[0] = 0;
        errno = ENAMETOOLONG;
        return -1;
    }
    struct stat found;
    if (stat(context->cataloguePath, &found) == 0 && S_ISREG(found.st_mode)) return 0;
    if (mode < 0) return -1;
    if (stat(split.directory, &found) == 0) return S_ISDIR(found.st_mode) ? 0 : -1;
    if (makeDirectories(split.directory)) return 0;
    fprintf(stderr, "Could not create catalogue structure\nTried %s\n tune $gdg_home?\n", split.directory);
    return -1;
}

int GDG_open(GdgContext *context, int extra)
{
    if (context->fd >= 0) return 0;
    context->fd = open(context->cataloguePath, O_RDWR | O_SYNC | O_CLOEXEC | extra, 0664);
    if (context->fd < 0) {
        report("GDG_open:open", context);
        return -1;
    }
    if (setLock(context, F_WRLCK) != 0) report("GDG_open:fcntl", context);
    if (extra & O_CREAT) return 0;
    if (!transferAll(context->fd, reinterpret_cast<char *>(&context->image), pread, "GDG_read:read")) {
        context->image.flags = 0;
        return -1;
    }
    if (acceptImage(context->image)) return 0;
    context->image.flags = 0;
    errno = EINVAL;
    return -1;
}

int GDG_close(GdgContext *context)
{
    if (context->fd < 0) return -1;
    int result = 0;
    if (context->image.flags & kGdgDirty) {
        GdgImage stored = context->image;
        stored.flags &= 3;
        if (!transferAll(context->fd, reinterpret_cast<const char *>(&stored), pwrite, "GDG_write:write")) result = -1;
        context->image.flags &= ~kGdgDirty;
        if (fsync(context->fd) != 0) {
            report("GDG_close:fsync", context);
            result = -1;
        }
    }
    if (setLock(context, F_UNLCK) != 0) report("GDG_close:fcntl", context);
    if (close(context->fd) != 0) report("GDG_close:close", context);
    context->fd = -1;
    return result;
}
