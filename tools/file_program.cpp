#include "tools/file_program.h"

#include <cctype>
#include <cstring>
#include <sys/stat.h>

#include "tools/stored_file.h"

namespace file_tool {

// Room for what compiled code has in its data section.
struct FileProgram::Records {
    std::string programName = "KVR2FILE";
    IPCB ipcb{};
    PCB pcb{};
    struct {
        FIB fib{};
        FileKey keys[filesystems::kMostKeys + filesystems::kMostKeyParts]{};
    } laidOut;
    FCB fcb{};
    FCB *fcbCell = &fcb;
    FIB *fibCell = &laidOut.fib;
    std::vector<uint64_t> area;
    uint8_t *areaCell = nullptr;
    uint8_t status[2] = {'0', '0'};
    uint8_t *statusCell = status;
    std::string assignment;
};

FileProgram::FileProgram(const std::string &name, const Shape &shape, bool randomAccess)
    : all_(new Records), fcb_(&all_->fcb), shape_(shape), name_(name)
{
    static int programs;
    all_->programName += std::to_string(++programs); // two programs of one name would be one
    FIB &fib = all_->laidOut.fib;
    all_->area.resize((shape.longest + 40) / 8 + 1);
    all_->areaCell = reinterpret_cast<uint8_t *>(all_->area.data());
    all_->assignment = name;
    memcpy(fib.prefix, "???", 3);
    memcpy(fcb_->eyecatcher, "FCB", 3);
    fcb_->index = fib.index = 1;
    fib.organization = shape.organization;
    fib.accessMode = randomAccess ? 0 : ZVK_FILE_ACCESS_SEQUENTIAL;
    fib.attributes = ZVK_FILE_ASSIGN_LITERAL;
    fib.maxRecord = fcb_->maxRecord = shape.longest;
    fib.minRecord = shape.shortest;
    fib.keyCount = static_cast<uint32_t>(shape.keys.size());
    layOutKeys(shape, all_->laidOut.keys, filesystems::kMostKeys + filesystems::kMostKeyParts);
    fib.keysOffset =
        static_cast<uint32_t>(reinterpret_cast<uint8_t *>(all_->laidOut.keys) - reinterpret_cast<uint8_t *>(&fib));
    strcpy(fib.name, "FILE");
    fib.recordArea = &all_->areaCell;
    fib.statusBase = &all_->statusCell;
    fib.assignment = all_->assignment.data();
    fib.assignmentLength = static_cast<uint16_t>(all_->assignment.size());

    PCB &pcb = all_->pcb;
    pcb.version[0] = 5;
    pcb.version[1] = pcb.version[2] = 1;
    pcb.ipcb = &all_->ipcb;
    pcb.name = all_->programName.data();
    pcb.nameLength = static_cast<uint32_t>(all_->programName.size());
    pcb.yearWindow = ZVK_NO_YEAR_WINDOW;
    all_->ipcb.files = &all_->fcbCell;
    all_->ipcb.fileCount = 1;
    pcb.fibs = &all_->fibCell;
    _zvkPgmInit(&pcb);
    fcb_ = all_->fcbCell;
}

FileProgram::~FileProgram()
{
    if (open_) fcb_->close(fcb_, &all_->ipcb);
    static_cast<void>(all_.release()); // the run unit knows the program until the process ends
}

std::string FileProgram::reason() const
{
    auto text =
        fcb_->moduleOperations ? reinterpret_cast<FileText>(fcb_->moduleOperations[ZVK_FILE_TEXT_SLOT]) : nullptr;
    const char *said = text && fcb_->fs2 ? text(fcb_->moduleBuffer, fcb_->fs2, 0, 1) : nullptr;
    return "file status " + status_ + (said ? std::string(", ") + said : std::string());
}

bool FileProgram::took(const char *verb)
{
    status_.assign(all_->status, all_->status + 2);
    if (status_ < "10") return true;
    failed_ = true;
    say("%s: %s: %s", name_.c_str(), verb, reason().c_str());
    return false;
}

bool FileProgram::open(uint16_t mode)
{
    fcb_->requestedMode = mode;
    fcb_->open(fcb_, &all_->ipcb);
    return open_ = took("OPEN");
}

bool FileProgram::close()
{
    open_ = false;
    fcb_->closeOptions = 0;
    fcb_->close(fcb_, &all_->ipcb);
    return took("CLOSE");
}

bool FileProgram::readNext()
{
    FileRequest request{};
    request.options = ZVK_REQUEST_NEXT;
    fcb_->read(fcb_, &all_->ipcb, &request);
    status_.assign(all_->status, all_->status + 2);
    return status_ != "10" && took("READ");
}

bool FileProgram::startFirst(uint32_t key)
{
    FileRequest request{};
    request.key = key;
    request.relation = ZVK_RELATION_FIRST;
    fcb_->start(fcb_, &all_->ipcb, &request);
    status_.assign(all_->status, all_->status + 2);
    return status_ == "23" ? false : took("START");
}

std::string FileProgram::write(std::string_view record, uint64_t number)
{
    FileRequest request{};
    size_t size = record.size() < shape_.longest ? record.size() : shape_.longest;
    memcpy(fcb_->record, record.data(), size);
    memset(fcb_->record + size, ' ', shape_.longest - size);
    request.recordLength = shape_.variable() ? static_cast<uint32_t>(size) : shape_.longest;
    request.relativeKey = number;
    fcb_->write(fcb_, &all_->ipcb, &request);
    return status_.assign(all_->status, all_->status + 2);
}

std::string_view FileProgram::record() const
{
    return {reinterpret_cast<const char *>(fcb_->record), fcb_->recordLength};
}

static bool isPrefix(const std::string &name)
{
    static const char *const prefixes[] = {"lsq", "nat", "rsd", "str", "wbr", "raw", "stl", "jgt", "qvr"};
    if (name.size() < 5 || name[3] != '-') return false;
    for (const char *prefix : prefixes)
        if (strncasecmp(name.c_str(), prefix, 3) == 0) return true;
    return false;
}

std::string pathOf(const std::string &name) { return isPrefix(name) ? name.substr(4) : name; }
std::string prefixOf(const std::string &name)
{
    std::string prefix = isPrefix(name) ? name.substr(0, 3) : "";
    for (char &c : prefix) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return prefix;
}

bool isStored(const std::string &prefix) { return prefix == "stl" || prefix == "jgt" || prefix == "qvr"; }
bool isLines(const std::string &prefix) { return prefix == "lsq" || prefix == "nat"; }

bool isSameFile(const std::string &one, const std::string &two)
{
    struct stat first, second;
    if (stat(one.c_str(), &first) != 0 || stat(two.c_str(), &second) != 0 || first.st_dev != second.st_dev ||
        first.st_ino != second.st_ino)
        return false;
    say("%s and %s are the same file", one.c_str(), two.c_str());
    return true;
}

bool findShape(std::string &name, const Arguments &arguments, Shape *shape)
{
    std::string prefix = prefixOf(name), path = pathOf(name);
    bool stored = isStored(prefix);
    StoredHeaderFile header;
    if (stored || prefix.empty()) {
        if (header.read(path)) {
            *shape = header.shape();
            if (prefix.empty()) name = "stl-" + name;
            return true;
        }
        struct stat about;
        bool isFile = stat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode);
        if (stored || header.isStored() || !isFile) return say("%s: %s", name.c_str(), header.reason()), false;
        say("%s: %s; if its file system keeps none, say which and how long its records are: lsq-%s --record=80",
            name.c_str(), header.reason(), name.c_str());
        return false;
    }
    if (arguments.shape.longest) {
        *shape = arguments.shape;
        shape->organization = 0;
        shape->keys.clear();
        return true;
    }
    if (isLines(prefix)) { // of any length
        shape->longest = 32767;
        return true;
    }
    say("%s: say how long its records are: --record=LENGTH or --record=SHORTEST-LONGEST", name.c_str());
    return false;
}

} // namespace file_tool
