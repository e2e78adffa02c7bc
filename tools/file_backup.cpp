// backup: a copy of a file that others may have open, as it was at one moment.
//
// The store of an indexed file is copied out of a snapshot, and writers go on. The records of all
// other files are in the file itself: while it is copied, changes in place wait; what is appended
// meanwhile is left out. The copy bears its name only when all of it is on the disk.
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "companions/filesystems/byte_stream.h"
#include "companions/filesystems/whole_records.h"
#include "tools/file_program.h"
#include "tools/store_builder.h"
#include "tools/store_reader.h"

namespace file_tool {

namespace {

bool failed(const std::string &path, int error) { return say("%s: %s", path.c_str(), strerror(error)), false; }

// One file with the rights of the other, under a name of its own.
struct Copy {
    std::string path;
    int descriptor;
    bool named = false;
    Copy(const std::string &to, mode_t mode)
        : path(to + ".kvr2-part"), descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, mode & 0777))
    {
        if (descriptor < 0) failed(path, errno);
    }
    ~Copy()
    {
        if (descriptor >= 0) ::close(descriptor);
        if (descriptor >= 0 && !named) unlink(path.c_str());
    }
    Copy(const Copy &) = delete;
    Copy &operator=(const Copy &) = delete;
    bool force() const { return fsync(descriptor) == 0 || failed(path, errno); }
    bool name(const std::string &to)
    {
        named = rename(path.c_str(), to.c_str()) == 0;
        return named || failed(to, errno);
    }
};

bool copyBytes(filesystems::WholeRecords *whole, uint64_t size, int to, const std::string &path)
{
    std::string block(1 << 20, 0);
    Progress progress("backup", size);
    for (uint64_t at = 0; at < size;) {
        off_t data = lseek(whole->descriptor, static_cast<off_t>(at), SEEK_DATA);
        if (data < 0 && errno == ENXIO) break; // a hole up to the end
        if (data > static_cast<off_t>(at)) at = static_cast<uint64_t>(data) & ~uint64_t(4095);
        size_t wanted = size - at < block.size() ? static_cast<size_t>(size - at) : block.size(), got;
        int error = filesystems::fetchBytes(whole, block.data(), wanted, at, &got);
        if (!error && got) error = filesystems::writeAll(to, true, block.data(), got, at);
        if (error || !got) return !error || failed(path, error);
        progress.at(at += got);
    }
    return ftruncate(to, static_cast<off_t>(size)) == 0 || failed(path, errno);
}

// All of a file on the disk, under the copy's own name.
bool fill(const Copy &copy, const std::string &from, const std::string &to)
{
    int descriptor = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return failed(from, errno);
    std::string name = from;
    FCB fcb{};
    fcb.requestedMode = ZVK_OPEN_INPUT;
    fcb.fileName = name.data();
    filesystems::Opened opened = {descriptor, true, false, 0, {false, false}};
    filesystems::WholeRecords whole;
    filesystems::startWhole(&fcb, opened, &whole);
    // All bytes of the data at once, instead of each transfer's own.
    whole.locksReads = false;
    filesystems::lockBytes(descriptor, false, 0, static_cast<uint64_t>(filesystems::kFirstRecordLock));
    struct stat now;
    bool good = copy.descriptor >= 0 && (fstat(descriptor, &now) == 0 || failed(from, errno)) &&
                copyBytes(&whole, static_cast<uint64_t>(now.st_size), copy.descriptor, to);
    filesystems::endWhole(&whole);
    ::close(descriptor);
    return good && copy.force();
}

bool copyPlain(const std::string &from, const std::string &to, const struct stat &about)
{
    Copy copy(to, about.st_mode);
    return copy.descriptor >= 0 && fill(copy, from, to) && copy.name(to);
}

bool copyIndexed(const std::string &from, const std::string &to, const struct stat &about)
{
    struct stat store {};
    std::string storeName = storeOf(from);
    stat(storeName.c_str(), &store);
    Copy pages(to + ".mdb", store.st_mode), header(to, about.st_mode);
    StoreReader reader;
    if (pages.descriptor < 0 || header.descriptor < 0) return false;
    if (!reader.open(from))
        return say("%s: %s", (reader.damaged() ? storeName : from).c_str(), reader.reason().c_str()), false;
    if (int error = mdb_env_copyfd(reader.environment(), pages.descriptor))
        return say("%s.mdb: %s", to.c_str(), mdb_strerror(error)), false;
    if (!pages.force() || !fill(header, from, to)) return false;

    // Until here an older copy is as it was. Its header must not lead to the new store.
    unlink((to + ".mdb-lock").c_str());
    unlink(to.c_str());
    return pages.name(to + ".mdb") && header.name(to);
}

} // namespace

int runBackup(const Arguments &arguments)
{
    std::string name = arguments.names[0], from = pathOf(name), to = pathOf(arguments.names[1]);
    struct stat about;
    if (stat(from.c_str(), &about) != 0) return failed(from, errno), kFailed;
    if (!S_ISREG(about.st_mode)) return say("%s: it is no regular file", from.c_str()), kFailed;
    if (isSameFile(from, to)) return kUsage;
    if (!arguments.force && access(to.c_str(), F_OK) == 0)
        return say("%s: it exists; --force writes over it", to.c_str()), kFailed;
    OwnedFile old(to); // what is written over is nobody else's
    if (struct stat there; stat(to.c_str(), &there) == 0 && S_ISREG(there.st_mode) && !old.take()) return kFailed;
    StoredHeaderFile header;
    bool known = header.read(from);
    if (!known && (header.isStored() || header.isUnreadable()))
        return say("%s: %s", from.c_str(), header.reason()), kFailed;
    bool indexed = known && (header.header().organization & ZVK_FILE_INDEXED);
    if (!(indexed ? copyIndexed(from, to, about) : copyPlain(from, to, about))) return kFailed;
    forceFile(to);
    return kDone;
}

} // namespace file_tool
