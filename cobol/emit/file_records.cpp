// The records of each file: record area, attributes with keys and LINAGE, state, USE procedures.
#include "cobol/emit/emitter.h"

#include <algorithm>
#include <cstring>

namespace kvrcob {

// A name as it is handed to OPEN. The library takes "abc-name" for a file system's prefix, so other
// names with a "-" get "./" in front.
static std::string assignmentOf(const std::string &name)
{
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

// A sequential file that is printed, and so a file of lines: WRITE ... ADVANCING or LINAGE, and
// never read.
bool isPrinted(const File &f)
{
    return f.organization == K_SEQUENTIAL && (f.advancing || f.linage || f.device == K_PRINTER) && !f.readable;
}

// CODE-SET: the alphabet whose codes the records have in the file; null for the native one.
const Alphabet *Emitter::codeSet(const File &f)
{
    const Alphabet *a = f.codeSet ? meaning_.alphabet(*f.program, f.codeSet) : nullptr;
    return a && (a->kind == K_EBCDIC || !a->kind) ? a : nullptr;
}

// The alphabet's table gives each character its code; here is the way back, and the room for a
// record in the file's codes.
void Emitter::codeSetTable(const File &f, uint32_t room)
{
    if (!f.codeSet) return;
    if (!meaning_.alphabet(*f.program, f.codeSet)) error(f.at, "there is no alphabet " + wordText(f.codeSet));
    const Alphabet *a = codeSet(f);
    if (!a || a->weights.size() != 256) return;
    std::vector<int> back(256, -1);
    for (size_t c = 0; c < 256; c++) back[a->weights[c]] = static_cast<int>(c);
    if (f.organization != K_SEQUENTIAL || isPrinted(f) || std::count(back.begin(), back.end(), -1))
        return notBuilt(f.at, f.organization != K_SEQUENTIAL || isPrinted(f)
                                  ? "CODE-SET of a file of lines"
                                  : "CODE-SET of an alphabet that gives several characters one code");
    globals_ +=
        cat("static uint8_t codes", f.number, "[", room, "];\nstatic const uint8_t native", f.number, "[256] = {");
    for (int c : back) globals_ += cat(c, ",");
    globals_ += "};\n";
}

void Emitter::fileRecords(Program &p)
{
    std::string prefix = cat("p", p.number, "_");
    std::vector<File *> files;
    for (File *f : p.files)
        if (!f->sortFile) files.push_back(f);
    std::string list, fibs;
    size_t index = 0;
    for (const UseStatement &use : p.uses)
        for (const auto &[word, at] : use.files) meaning_.file(p, word, at);
    for (File *f : p.files) {
        uint32_t n = f->number;
        uint32_t room = f->maxRecord ? f->maxRecord : 1;
        for (const Item *record : f->records) room = std::max(room, record->size);
        // A record area that files share has room for the longest.
        for (const File *other : p.files)
            if (f->sameArea && other->sameArea == f->sameArea) {
                room = std::max(room, other->maxRecord);
                for (const Item *record : other->records) room = std::max(room, record->size);
            }
        globals_ += cat("static struct { uint64_t runtime[4]; uint8_t record[", room + 8, "]; } A", n,
                        " __attribute__((aligned(16)));\n");
        if (f->sortFile) {
            globals_ += cat("static FCB C", n, " __attribute__((unused)) = {.eyecatcher = \"FCB\", .record = A", n,
                            ".record};\n#define F", n, " (&C", n, ")\n");
            continue;
        }
        f->index = ++index;
        globals_ += cat("#define F", n, " (", prefix, "files[", index - 1, "])\n");
        codeSetTable(*f, room);
        if (f->organization == K_INDEXED && !f->recordKey) error(f->at, "an indexed file needs a RECORD KEY");
        bool print = isPrinted(*f);
        std::string organization = f->organization == K_LINE || print ? "ZVK_FILE_LINE_SEQUENTIAL"
                                   : f->organization == K_INDEXED     ? "ZVK_FILE_INDEXED"
                                   : f->organization == K_RELATIVE    ? "ZVK_FILE_RELATIVE"
                                                                      : "0";
        std::string attributes = f->optional ? "ZVK_FILE_OPTIONAL" : "0", name;
        if (f->external) attributes += " | ZVK_FILE_EXTERNAL";
        std::string nameText;
        bool dynamic = false;
        if (f->assign && f->assign->kind == ExprKind::String) {
            nameText = assignmentOf(std::string(f->assign->text));
            attributes += " | ZVK_FILE_ASSIGN_LITERAL";
        } else if (f->assignItem) {
            Item *item = f->assignExternal ? nullptr : meaning_.resolve(p, *f->assignItem, true);
            const Expr *constantName = nullptr;
            if (item && item->isConstant) constantName = item->constant;
            if (constantName && constantName->kind == ExprKind::String) {
                nameText = assignmentOf(std::string(constantName->text));
                attributes += " | ZVK_FILE_ASSIGN_LITERAL";
            } else if (item && item->level != 88) {
                dynamic = true;
                attributes += " | ZVK_FILE_ASSIGN_ITEM";
            } else {
                nameText = nameOfAssignment(wordText(f->assignItem->names[0]));
                attributes += " | ZVK_FILE_ASSIGN_ENVIRONMENT";
            }
        } else if (f->valueOfFileId && f->valueOfFileId->kind == ExprKind::String) {
            nameText = assignmentOf(std::string(f->valueOfFileId->text));
            attributes += " | ZVK_FILE_ASSIGN_LITERAL";
        } else {
            nameText = f->device == K_KEYBOARD  ? "/dev/stdin"
                       : f->device == K_DISPLAY ? "/dev/stdout"
                                                : wordText(f->name);
            attributes += f->device == K_KEYBOARD || f->device == K_DISPLAY ? " | ZVK_FILE_ASSIGN_LITERAL"
                                                                            : " | ZVK_FILE_ASSIGN_ENVIRONMENT";
            if (f->device == K_KEYBOARD || f->device == K_DISPLAY) organization = "ZVK_FILE_LINE_SEQUENTIAL";
        }
        globals_ += cat("static char N", n, "[", dynamic ? 4096 : nameText.size() + 1, "]",
                        dynamic ? "" : cat(" = ", bytesLiteral(nameText)), ";\n");
        globals_ += cat("static uint8_t *A", n, "cell = (uint8_t *)&A", n, ";\n");
        if (f->status) globals_ += cat("static uint8_t *I", n, "status;\n");

        // Keys
        std::string keys, moreParts;
        size_t keyCount = 0, partCount = 0;
        auto keyItem = [&](const Reference &ref) {
            Item *item = meaning_.resolve(p, ref);
            if (item && item->file != f && recordOf(*item).file != f)
                error(ref.at, "a key is an item of the file's record");
            return item;
        };
        auto key = [&](const Reference &ref, const std::vector<Reference *> &parts, bool duplicates) {
            Item *item = keyItem(parts.empty() ? ref : *parts[0]);
            if (!item) return;
            size_t size = item->size;
            for (size_t i = 1; i < parts.size(); ++i)
                if (const Item *part = keyItem(*parts[i])) {
                    size += part->size;
                    moreParts += cat("{", part->size, ", ", part->offset, ", 0, {0, 0, 0}}, ");
                }
            bool split = parts.size() > 1;
            keys += cat("{", size, ", ", item->offset, ", ", duplicates ? "ZVK_FILE_KEY_DUPLICATES" : "0",
                        split ? " | ZVK_FILE_KEY_PARTS" : "", ", {", split ? parts.size() - 1 : 0, ", 0, 0}}, ");
            keyCount++;
            if (split) partCount += parts.size() - 1;
        };
        if (f->organization == K_INDEXED) {
            if (f->recordKey) key(*f->recordKey, f->recordKeyParts, false);
            for (const auto &alternate : f->alternateKeys) key(*alternate.item, alternate.parts, alternate.duplicates);
        }
        std::string linage;
        if (f->linage) {
            linage = "ZVK_FILE_LINAGE";
            globals_ += cat("static KvrPage G", n, ";\n");
            if (f->footing) linage += " | ZVK_FILE_LINAGE_FOOTING";
            if (f->top) linage += " | ZVK_FILE_LINAGE_TOP";
            if (f->bottom) linage += " | ZVK_FILE_LINAGE_BOTTOM";
        }
        std::string type = cat("struct { FIB fib; FileKey keys[", keyCount ? keyCount + partCount : 1,
                               "]; uint8_t relative[36]; uint8_t attribute[8]; FileLinageGroup linage[4]; }");
        globals_ += cat("typedef ", type, " T", n, ";\nstatic T", n, " I", n, " = {.fib = {\n");
        if (f->sharing || f->lockMode) {
            globals_ += cat(".sharing = 1, .lockMode = ",
                            f->lockMode == K_MANUAL      ? 1
                            : f->lockMode == K_AUTOMATIC ? 2
                            : f->lockMode == K_EXCLUSIVE ? 3
                                                         : 0,
                            ", .shareMode = ", shareMode(*f, f->sharing), ",\n");
        }
        globals_ +=
            cat(".index = ", index, ", .prefix = \"???\", .organization = ", organization, ", .accessMode = ",
                f->access == K_SEQUENTIAL ? "0x80"
                : f->access == K_RANDOM   ? "0x40"
                                          : "0",
                ", .recordFormat = ", f->minRecord != f->maxRecord ? 1 : 0, ", .attributes = ", attributes,
                ",\n.maxRecord = ", f->maxRecord, ", .minRecord = ", f->minRecord, ", .keyCount = ", keyCount,
                ", .name = ", bytesLiteral(wordText(f->name).substr(0, 43)), ", .assignmentLength = ", nameText.size(),
                ", .linage = ", linage.empty() ? "0" : linage, ",\n.keysOffset = offsetof(T", n,
                ", keys), .relativeKeyOffset = offsetof(T", n, ", relative), .attributeOffset = offsetof(T", n,
                ", attribute), .linageOffset = offsetof(T", n, ", linage),\n.recordArea = &A", n,
                "cell, .assignment = N", n, f->status ? cat(", .statusBase = &I", n, "status") : "", "}",
                keyCount ? cat(", .keys = {", keys, moreParts, "}") : "", "};\n");
        std::string use = useTable(p, *f);
        globals_ += cat("static FCB C", n, " = {.eyecatcher = \"FCB\", .index = ", index,
                        ", .maxRecord = ", f->maxRecord, use == "0" ? "" : cat(", .useTable = ", use), "};\n");
        list += cat("&C", n, ", ");
        fibs += cat("&I", n, ".fib, ");
    }
    globals_ += cat("static FCB *", prefix, "files[", files.size() + 1, "] = {", list, "0};\nstatic FIB *", prefix,
                    "fibs[", files.size() + 1, "] = {", fibs, "0};\n");
}

// The USE procedures that serve a file's statements in a program, by the mode in which the file is
// open. The program's own come first, then the GLOBAL ones of the programs around it. In one
// program a procedure for the file goes before one for a mode.
std::string Emitter::useTable(Program &p, const File &f)
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
        globals_ += cat("static void *", name, "[5] = {");
        for (int m = 0; m < 5; m++) globals_ += cat(rows[m].empty() ? "0" : rows[m], ", ");
        globals_ += "};\n";
    }
    useTables_[{p.number, f.number}] = name;
    return name;
}

} // namespace kvrcob
