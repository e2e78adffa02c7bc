// The records of each file: record area, attributes with keys and LINAGE, state, USE procedures.
#include <algorithm>
#include <cctype>

#include "cobol/emit/file_records.h"
#include "cobol/emit/join.h"
#include "cobol/emit/values.h"

namespace kvrcob {

// A name as it is handed to OPEN; kvr_assignment does the same with what an item holds. The library
// takes "abc-name" for a file system's prefix, so other names with a "-" get "./" in front; and it
// takes "a:b" for two files, so a drive, "A:NAME", and the end of "LPT1:" are left out.
static std::string assignmentOf(std::string_view text)
{
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    if (text.size() > 2 && text[1] == ':' && std::isalpha(static_cast<unsigned char>(text[0]))) text.remove_prefix(2);
    if (text.size() > 1 && text.back() == ':') text.remove_suffix(1);
    std::string name(text);
    static const char *const prefixes[] = {"jgt-", "qvr-", "hdk-", "psx-", "lsq-", "nat-", "stl-", "rsd-", "str-",
                                           "wbr-", "raw-", "rql-", "pip-", "fif-", "sok-", "mqu-", "plx-"};
    if (name.find('-') == std::string::npos || name.empty() || name[0] == '/' || name[0] == '.' || name[0] == '~' ||
        name[0] == '$')
        return name;
    for (const char *prefix : prefixes)
        if (name.compare(0, 4, prefix) == 0) return name;
    return "./" + name;
}

// The name in an assignment that describes the device too: UT-S-NAME, DA-3350-I-NAME,
// SYS010-UR-1403-S-NAME, AS-NAME. Without a name it is the unit's: SYS010.
static std::string nameOfAssignment(const std::string &text)
{
    size_t at = 0;
    auto part = [&] { return std::string_view(text).substr(at, text.find('-', at) - at); };
    auto among = [&](std::initializer_list<std::string_view> words) {
        return at < text.size() && std::count(words.begin(), words.end(), part()) != 0;
    };
    auto step = [&] { at = std::min(text.find('-', at), text.size() - 1) + 1; };
    const bool unit = text.size() > 6 && text.compare(0, 3, "SYS") == 0 && text[6] == '-';
    if (unit) step();
    const bool device = among({"UT", "UR", "DA", "DK", "MT"});
    if (device) step();
    if (device && at < text.size() && std::isdigit(static_cast<unsigned char>(text[at]))) step();
    if (among({"S", "I", "R", "D", "W"}) || (!unit && !device && among({"AS"}))) step();
    if (at < text.size()) return text.substr(at);
    return unit ? text.substr(0, 6) : text;
}

bool isPrinted(const File &f)
{
    return f.organization == K_SEQUENTIAL && (f.advancing || f.linage || f.device == K_PRINTER) && !f.readable;
}

const Alphabet *FileRecords::codeSet(const File &f) const
{
    const Alphabet *a = f.codeSet ? meaning_.alphabet(*f.program, f.codeSet) : nullptr;
    return a && (a->kind == K_EBCDIC || !a->kind) ? a : nullptr;
}

// The alphabet's table gives each character its code; here is the way back, and the room for a
// record in the file's codes.
void FileRecords::codeSetTable(const File &f, uint32_t room)
{
    if (!f.codeSet) return;
    if (!meaning_.alphabet(*f.program, f.codeSet)) error(f.at, "there is no alphabet " + wordText(f.codeSet));
    const Alphabet *a = codeSet(f);
    if (!a || a->weights.size() != 256) return;
    std::vector<int> back(256, -1);
    for (size_t c = 0; c < 256; c++) back[a->weights[c]] = static_cast<int>(c);
    if (f.organization != K_SEQUENTIAL || isPrinted(f) || std::count(back.begin(), back.end(), -1))
        return meaning_.notBuilt(f.at, f.organization != K_SEQUENTIAL || isPrinted(f)
                                           ? "CODE-SET of a file of lines"
                                           : "CODE-SET of an alphabet that gives several characters one code");
    globals_ +=
        cat("static uint8_t codes", f.number, "[", room, "];\nstatic const uint8_t native", f.number, "[256] = {");
    for (int c : back) globals_ += joined(c, ",");
    globals_ += "};\n";
}

uint32_t recordRoom(const Program &p, const File &f)
{
    uint32_t room = f.maxRecord ? f.maxRecord : 1;
    for (const Item *record : f.records) room = std::max(room, record->size);
    for (const File *other : p.files) {
        if (!f.sameArea || other->sameArea != f.sameArea) continue;
        room = std::max(room, other->maxRecord);
        for (const Item *record : other->records) room = std::max(room, record->size);
    }
    return room;
}

// ASSIGN, or what is there in place of it.
FileRecords::Assignment FileRecords::assignment(Program &p, const File &f)
{
    auto literal = [](const Expr *e) { return Assignment{assignmentOf(e->text), " | ZVK_FILE_ASSIGN_LITERAL"}; };
    if (f.assign && f.assign->kind == ExprKind::String) return literal(f.assign);
    if (f.assignItem) {
        const Item *item = f.assignExternal ? nullptr : meaning_.resolve(p, *f.assignItem, true);
        if (item && item->isConstant && item->constant && item->constant->kind == ExprKind::String)
            return literal(item->constant);
        if (item && item->level != 88) return {"", " | ZVK_FILE_ASSIGN_ITEM", true};
        return {nameOfAssignment(wordText(f.assignItem->names[0])), " | ZVK_FILE_ASSIGN_ENVIRONMENT"};
    }
    if (f.valueOfFileId && f.valueOfFileId->kind == ExprKind::String) return literal(f.valueOfFileId);
    if (f.device == K_KEYBOARD) return {"/dev/stdin", " | ZVK_FILE_ASSIGN_LITERAL", false, true};
    if (f.device == K_DISPLAY) return {"/dev/stdout", " | ZVK_FILE_ASSIGN_LITERAL", false, true};
    return {wordText(f.name), " | ZVK_FILE_ASSIGN_ENVIRONMENT"};
}

static const char *organizationOf(const File &f, bool device)
{
    if (device || f.organization == K_LINE || isPrinted(f)) return "ZVK_FILE_LINE_SEQUENTIAL";
    return f.organization == K_INDEXED ? "ZVK_FILE_INDEXED" : f.organization == K_RELATIVE ? "ZVK_FILE_RELATIVE" : "0";
}

const Item *FileRecords::keyItem(Program &p, const File &f, const Reference &ref)
{
    Item *item = meaning_.resolve(p, ref);
    if (item && item->file != &f && recordOf(*item).file != &f) error(ref.at, "a key is an item of the file's record");
    return item;
}

// A key, and the parts of a split one after its first.
void FileRecords::addKey(Program &p, const File &f, const Reference &ref, const std::vector<Reference *> &parts,
                         bool duplicates, KeyTable &table)
{
    const Item *item = keyItem(p, f, parts.empty() ? ref : *parts[0]);
    if (!item) return;
    size_t size = item->size;
    for (size_t i = 1; i < parts.size(); ++i)
        if (const Item *part = keyItem(p, f, *parts[i])) {
            size += part->size;
            table.parts += joined("{", part->size, ", ", part->offset, ", 0, {0, 0, 0}}, ");
        }
    bool split = parts.size() > 1;
    table.keys += joined("{", size, ", ", item->offset, ", ", duplicates ? "ZVK_FILE_KEY_DUPLICATES" : "0",
                         split ? " | ZVK_FILE_KEY_PARTS" : "", ", {", split ? parts.size() - 1 : 0, ", 0, 0}}, ");
    table.keyCount++;
    if (split) table.partCount += parts.size() - 1;
}

FileRecords::KeyTable FileRecords::keyTable(Program &p, const File &f)
{
    KeyTable table;
    if (f.organization != K_INDEXED) return table;
    if (f.recordKey) addKey(p, f, *f.recordKey, f.recordKeyParts, false, table);
    for (const auto &alternate : f.alternateKeys)
        addKey(p, f, *alternate.item, alternate.parts, alternate.duplicates, table);
    return table;
}

// The FIB: what the run time is told of the file.
void FileRecords::fileInformation(Program &p, const File &f, const Assignment &assigned)
{
    uint32_t n = f.number;
    KeyTable table = keyTable(p, f);
    std::string linage;
    if (f.linage) {
        linage = "ZVK_FILE_LINAGE";
        globals_ += joined("static uint32_t G", n, ";\n");
        if (f.footing) linage += " | ZVK_FILE_LINAGE_FOOTING";
        if (f.top) linage += " | ZVK_FILE_LINAGE_TOP";
        if (f.bottom) linage += " | ZVK_FILE_LINAGE_BOTTOM";
    }
    globals_ += joined("typedef struct { FIB fib; FileKey keys[", table.keyCount ? table.keyCount + table.partCount : 1,
                       "]; uint8_t relative[36]; uint8_t attribute[8]; FileLinageGroup linage[4]; } T", n,
                       ";\nstatic T", n, " I", n, " = {.fib = {\n");
    if (f.sharing || f.lockMode) {
        const char *lockMode = f.lockMode == K_MANUAL      ? "ZVK_FILE_LOCK_MANUAL"
                               : f.lockMode == K_AUTOMATIC ? "ZVK_FILE_LOCK_AUTOMATIC"
                               : f.lockMode == K_EXCLUSIVE ? "ZVK_FILE_LOCK_EXCLUSIVE"
                                                           : "0";
        globals_ += joined(".sharing = 1, .lockMode = ", lockMode, ", .shareMode = ", shareMode(f, f.sharing), ",\n");
    }
    const char *access = f.access == K_SEQUENTIAL ? "ZVK_FILE_ACCESS_SEQUENTIAL"
                         : f.access == K_RANDOM   ? "ZVK_FILE_ACCESS_RANDOM"
                                                  : "0";
    globals_ +=
        cat(".index = ", f.index, ", .prefix = \"???\", .organization = ", organizationOf(f, assigned.device),
            ", .accessMode = ", access, ", .recordFormat = ", f.minRecord != f.maxRecord ? 1 : 0,
            ", .attributes = ", f.optional ? "ZVK_FILE_OPTIONAL" : "0", f.external ? " | ZVK_FILE_EXTERNAL" : "",
            assigned.attribute, ",\n.maxRecord = ", f.maxRecord, ", .minRecord = ", f.minRecord,
            ", .keyCount = ", table.keyCount, ", .name = ", bytesLiteral(wordText(f.name).substr(0, 43)),
            ", .assignmentLength = ", assigned.name.size(), ", .linage = ", linage.empty() ? "0" : linage,
            ",\n.keysOffset = offsetof(T", n, ", keys), .relativeKeyOffset = offsetof(T", n,
            ", relative), .attributeOffset = offsetof(T", n, ", attribute), .linageOffset = offsetof(T", n,
            ", linage),\n.recordArea = &A", n, "cell, .assignment = N", n,
            f.status ? cat(", .statusBase = &I", n, "status") : "", "}",
            table.keyCount ? cat(", .keys = {", table.keys, table.parts, "}") : "", "};\n");
}

// The records of one file but a sort file's: record area, name, FIB, FCB.
void FileRecords::fileRecord(Program &p, File &f, uint32_t room)
{
    uint32_t n = f.number;
    codeSetTable(f, room);
    if (f.organization == K_INDEXED && !f.recordKey) error(f.at, "an indexed file needs a RECORD KEY");
    Assignment assigned = assignment(p, f);
    globals_ += joined("static char N", n, "[", assigned.dynamic ? 4096 : assigned.name.size() + 1, "]",
                       assigned.dynamic ? "" : cat(" = ", bytesLiteral(assigned.name)), ";\n");
    globals_ += joined("static uint8_t *A", n, "cell = (uint8_t *)&A", n, ";\n");
    if (f.status) globals_ += joined("static uint8_t *I", n, "status;\n");
    fileInformation(p, f, assigned);
    std::string use = useTable(p, f);
    globals_ += joined("static FCB C", n, " = {.eyecatcher = \"FCB\", .index = ", f.index,
                       ", .maxRecord = ", f.maxRecord, use == "0" ? "" : cat(", .useTable = ", use), "};\n");
}

void FileRecords::emit(Program &p)
{
    std::string prefix = cat("p", p.number, "_"), list, fibs;
    for (const UseStatement &use : p.uses)
        for (const auto &[word, at] : use.files) meaning_.file(p, word, at);
    size_t index = 0;
    for (File *f : p.files) {
        uint32_t n = f->number, room = recordRoom(p, *f);
        globals_ += joined("static struct { uint64_t runtime[4]; uint8_t record[", room + 8, "]; } A", n,
                           " __attribute__((aligned(16)));\n");
        if (f->sortFile) {
            globals_ += joined("static FCB C", n, " __attribute__((unused)) = {.eyecatcher = \"FCB\", .record = A", n,
                               ".record};\n#define F", n, " (&C", n, ")\n");
            continue;
        }
        f->index = ++index;
        globals_ += joined("#define F", n, " (", prefix, "files[", index - 1, "])\n");
        fileRecord(p, *f, room);
        list += joined("&C", n, ", ");
        fibs += joined("&I", n, ".fib, ");
    }
    globals_ += joined("static FCB *", prefix, "files[", index + 1, "] = {", list, "0};\nstatic FIB *", prefix, "fibs[",
                       index + 1, "] = {", fibs, "0};\n");
}

// The USE procedures that serve a file's statements in a program, by the mode in which the file is
// open. The program's own come first, then the GLOBAL ones of the programs around it. In one
// program a procedure for the file goes before one for a mode.
std::string FileRecords::useTable(Program &p, const File &f)
{
    auto known = useTables_.find({p.number, f.number});
    if (known != useTables_.end()) return known->second;
    static const Word modes[] = {K_INPUT, K_OUTPUT, K_I_O, K_EXTEND, K_none};
    std::string rows[5];
    bool any = false;
    for (Program *q = &p; q; q = q->parent) {
        for (int pass = 0; pass < 2; pass++)
            for (size_t u = 0; u < q->uses.size(); u++) {
                const UseStatement &use = q->uses[u];
                if (use.debugging || (q != &p && !use.global)) continue;
                bool named = false;
                for (const auto &[word, at] : use.files)
                    if (word == f.name && meaning_.file(*q, word, at) == &f) named = true;
                for (int m = 0; m < 5; m++) {
                    bool applies = pass == 0 ? named : use.mode && use.mode == modes[m];
                    if (!applies || !rows[m].empty()) continue;
                    rows[m] = cat("(void *)(intptr_t)&p", q->number, "_use", u + 1);
                    any = true;
                }
            }
    }
    std::string name = "0";
    if (any) {
        name = cat("U", p.number, "_", f.number);
        globals_ += joined("static void *", name, "[5] = {");
        for (int m = 0; m < 5; m++) globals_ += joined(rows[m].empty() ? "0" : rows[m], ", ");
        globals_ += "};\n";
    }
    useTables_[{p.number, f.number}] = name;
    return name;
}

} // namespace kvrcob
