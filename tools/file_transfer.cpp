// dump, load and copy: records between files, and between files and text, by the verbs of a
// program. What the file refuses is counted and told, and the rest goes on.
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/file_program.h"
#include "tools/record_text.h"

namespace file_tool {

namespace {

constexpr uint64_t kMostTold = 10; // refusals that are told one by one

// Counts what is not taken, and tells the first of them.
struct Refusals {
    uint64_t count = 0;
    void add(const std::string &what, const std::string &why)
    {
        if (++count <= kMostTold) say("%s: %s", what.c_str(), why.c_str());
        if (count == kMostTold + 1) say("further ones are only counted");
    }
};

uint64_t sizeOf(const std::string &name)
{
    struct stat about;
    return stat(pathOf(name).c_str(), &about) == 0 ? static_cast<uint64_t>(about.st_size) : 0;
}

bool mayBeMade(const std::string &name, bool force)
{
    if (force || access(pathOf(name).c_str(), F_OK) != 0) return true;
    say("%s: it exists; --force writes over it", name.c_str());
    return false;
}

int summary(uint64_t done, const char *verb, const Refusals &refusals)
{
    say("%llu record%s %s", static_cast<unsigned long long>(done), done == 1 ? "" : "s", verb);
    if (!refusals.count) return kDone;
    say("%llu refused", static_cast<unsigned long long>(refusals.count));
    return kDamaged;
}

// Writes until the file has no more, or fails for good (34 no space, 30, 9x).
bool refusedForGood(const std::string &status) { return status >= "30" && status != "44"; }

// A record as text, its line end included. False: it cannot be, and why.
bool textOf(const Arguments &arguments, const FileProgram &file, bool numbered, std::string *line, std::string *why)
{
    const Shape &shape = file.shape();
    const std::string_view record = file.record();
    const uint64_t number = file.number();
    bool good = true;
    if (file.cut()) *why = "it is longer than a record and was cut", good = false;
    if (arguments.format == Format::rsd) {
        auto length = static_cast<uint32_t>(record.size());
        if (shape.variable()) line->assign(reinterpret_cast<char *>(&length), sizeof length);
        *line += record;
        return good;
    }
    if (arguments.format == Format::lsq) {
        *line = record;
        while (!line->empty() && line->back() == ' ') line->pop_back();
        if (line->find('\n') != std::string::npos || (!line->empty() && line->back() == '\r'))
            *why = "it holds a line end; another format takes it", good = false;
    } else {
        good = good && formatRecord(arguments, shape, record, numbered ? &number : nullptr, line, why);
    }
    *line += '\n';
    return good;
}

// The file that `load` writes to, and how it is opened. An Outcome; kDone: all is known.
int loadTarget(const Arguments &arguments, std::string &name, Shape *shape, uint16_t *mode)
{
    if (!arguments.create) {
        if (!findShape(name, arguments, shape)) return kFailed;
        *mode = shape->indexed() || shape->relative() ? ZVK_OPEN_IO : ZVK_OPEN_EXTEND;
        return kDone;
    }
    if (!mayBeMade(name, arguments.force)) return kFailed;
    *shape = arguments.shape;
    *mode = ZVK_OPEN_OUTPUT;
    if (!shape->longest) return say("--create needs --record=LENGTH"), kUsage;
    if (shape->indexed() != !shape->keys.empty())
        return say("an indexed file needs --key, and no other file has one"), kUsage;
    if (prefixOf(name).empty()) name = "stl-" + name;
    return kDone;
}

// What keeps a record of a text out of the file before it is written; "": nothing. A short one is
// filled.
std::string unfit(const Shape &shape, std::string *record, bool numberMissing)
{
    if (numberMissing) return "it has no record number";
    if (record->size() > shape.longest) return "it is longer than a record";
    if (shape.variable() && record->size() < shape.shortest) record->resize(shape.shortest, ' ');
    return "";
}

// The shape of what `copy` makes of a file.
Shape copyShape(const Arguments &arguments, const Shape &source, const std::string &prefix)
{
    Shape target = source;
    if (arguments.shapeGiven) {
        target.organization = arguments.shape.organization;
        target.keys = arguments.shape.keys;
        target.parts = arguments.shape.parts;
        if (arguments.shape.longest)
            target.longest = arguments.shape.longest, target.shortest = arguments.shape.shortest;
    }
    if (!isStored(prefix)) target.organization = 0, target.keys.clear(), target.parts.clear();
    if (prefix == "wbr" || prefix == "raw") target.shortest = target.longest;
    return target;
}

} // namespace

int runDump(const Arguments &arguments)
{
    std::string name = arguments.names[0];
    Shape shape;
    if (!findShape(name, arguments, &shape)) return kFailed;
    if (arguments.key && (!shape.indexed() || arguments.key >= shape.keys.size()))
        return say("%s: it has no key %u", name.c_str(), arguments.key), kUsage;
    FILE *to = stdout;
    if (arguments.names.size() > 1) {
        if (!mayBeMade(arguments.names[1], arguments.force)) return kFailed;
        if (isSameFile(pathOf(name), arguments.names[1])) return kUsage;
        to = fopen(arguments.names[1].c_str(), "we");
    }
    if (!to) return say("%s: %s", arguments.names[1].c_str(), strerror(errno)), kFailed;

    FileProgram file(name, shape);
    if (!file.open(ZVK_OPEN_INPUT)) return kFailed;
    bool some = !arguments.key || file.startFirst(arguments.key);
    uint64_t done = 0;
    Refusals refusals;
    Progress progress("dump", 0, to != stdout || !isatty(1));
    bool numbered = shape.relative() && (arguments.format == Format::csv || arguments.format == Format::jsonLines);
    if (arguments.format == Format::csv) fprintf(to, "%s\n", csvHead(arguments, shape, numbered).c_str());
    while (some && file.readNext()) {
        std::string line, why;
        ++done;
        if (textOf(arguments, file, numbered, &line, &why))
            fwrite(line.data(), 1, line.size(), to);
        else
            refusals.add("record " + std::to_string(done), why);
        if (ferror(to)) break;
        progress.at(done);
    }
    bool failed = file.failed();
    bool written = !ferror(to) && (to == stdout ? fflush(to) : fclose(to)) == 0;
    if (!written) return say("the text could not be written: %s", strerror(errno)), kFailed;
    if (!file.close() || failed) return kFailed;
    return summary(done - refusals.count, "written", refusals);
}

int runLoad(const Arguments &arguments)
{
    std::string name = arguments.names[0];
    Shape shape;
    uint16_t mode = 0;
    if (int outcome = loadTarget(arguments, name, &shape, &mode)) return outcome;
    if (arguments.names.size() > 1 && isSameFile(pathOf(name), arguments.names[1])) return kUsage;
    FILE *from = arguments.names.size() > 1 ? fopen(arguments.names[1].c_str(), "re") : stdin;
    if (!from) return say("%s: %s", arguments.names[1].c_str(), strerror(errno)), kFailed;

    // Random access: the text's order need not be that of the keys. A relative file without
    // numbers in the text is written in sequence.
    bool numbers = arguments.format == Format::csv || arguments.format == Format::jsonLines;
    bool random = shape.indexed() || (shape.relative() && (numbers || mode == ZVK_OPEN_IO));
    FileProgram file(name, shape, random);
    if (!file.open(mode)) return kFailed;
    RecordReader reader(from, arguments, shape);
    Refusals refusals;
    Progress progress("load", arguments.names.size() > 1 ? sizeOf(arguments.names[1]) : 0);
    std::string record, why;
    uint64_t number, done = 0;
    bool failed = false;
    for (;;) {
        bool got = reader.next(&record, &number, &why);
        if (!got && why.empty()) break;
        std::string where = "line " + std::to_string(reader.line());
        if (why.empty()) why = unfit(shape, &record, shape.relative() && random && !number);
        if (why.empty()) {
            std::string status = file.write(record, number);
            if (status > "09") why = file.reason();
            failed = refusedForGood(status);
        }
        if (!why.empty())
            refusals.add(where, why);
        else
            ++done;
        if (failed || (!got && arguments.format == Format::rsd)) break;
        if (ftello(from) > 0) progress.at(static_cast<uint64_t>(ftello(from)));
    }
    bool unread = ferror(from);
    if (unread) say("the text could not be read: %s", strerror(errno));
    if (from != stdin) fclose(from);
    bool closed = file.close();
    int outcome = summary(done, "loaded", refusals);
    return closed && !failed && !unread ? outcome : kFailed;
}

int runCopy(const Arguments &arguments)
{
    std::string from = arguments.names[0], to = arguments.names[1];
    Shape shape;
    if (!findShape(from, arguments, &shape)) return kFailed;
    if (!mayBeMade(to, arguments.force)) return kFailed;
    if (isSameFile(pathOf(from), pathOf(to))) return kUsage;
    std::string prefix = prefixOf(to);
    if (prefix.empty()) to = "stl-" + to, prefix = "stl";
    const Shape target = copyShape(arguments, shape, prefix);
    if (target.indexed() != !target.keys.empty())
        return say("an indexed file needs --key, and no other file has one"), kUsage;

    FileProgram source(from, shape), copy(to, target, target.indexed() || (target.relative() && shape.relative()));
    if (!source.open(ZVK_OPEN_INPUT) || !copy.open(ZVK_OPEN_OUTPUT)) return kFailed;
    Refusals refusals;
    Progress progress("copy", 0);
    uint64_t done = 0, read = 0;
    bool failed = false;
    std::string padded;
    while (!failed && source.readNext()) {
        std::string_view record = source.record();
        std::string where = "record " + std::to_string(++read);
        if (source.cut()) refusals.add(where, "it is longer than a record and was cut");
        if (record.size() > target.longest && record.substr(target.longest).find_first_not_of(' ') != record.npos) {
            refusals.add(where, "it is longer than a record");
            continue;
        }
        if (record.size() < target.shortest)
            record = padded = std::string(record) + std::string(target.shortest - record.size(), ' ');
        std::string status = copy.write(record.substr(0, target.longest), shape.relative() ? source.number() : 0);
        if (status > "09")
            refusals.add(where, copy.reason());
        else
            ++done;
        failed = refusedForGood(status);
        progress.at(read);
    }
    bool closed = copy.close() && source.close();
    int outcome = summary(done, "copied", refusals);
    return closed && !failed && !source.failed() ? outcome : kFailed;
}

} // namespace file_tool
