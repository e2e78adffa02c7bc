// OPEN, CLOSE, READ, WRITE, REWRITE, DELETE, START, UNLOCK; the records of each file.
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

// A sequential file that is printed, and so a file of lines: WRITE ... ADVANCING or LINAGE, and
// never read.
static bool isPrinted(const File &f)
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

// The record goes out in the file's codes.
void Emitter::encodeRecord(const File &f, const std::string &request)
{
    if (const Alphabet *a = codeSet(f))
        put(cat(request, ".into = kvr_recode(codes", f.number, ", F", f.number, "->record, sizeof codes", f.number,
                ", alphabet", a->number, ");\n"));
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
                nameText = wordText(f->assignItem->names[0]);
                // UT-S-NAME and AS-NAME: the last part is the name.
                for (const char *lead : {"UT-S-", "DA-S-", "UR-S-", "DA-I-", "DA-R-", "UT-", "UR-", "DA-", "AS-", "S-"})
                    if (nameText.rfind(lead, 0) == 0 && nameText.size() > std::strlen(lead)) {
                        nameText = nameText.substr(std::strlen(lead));
                        break;
                    }
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
        std::string keys;
        size_t keyCount = 0;
        auto key = [&](const Reference &ref, bool duplicates) {
            Item *item = meaning_.resolve(p, ref);
            if (!item) return;
            if (item->file != f && recordOf(*item).file != f) error(ref.at, "a key is an item of the file's record");
            keys += cat("{", item->size, ", ", item->offset, ", ", duplicates ? "ZVK_FILE_KEY_DUPLICATES" : "0",
                        ", {0, 0, 0}}, ");
            keyCount++;
        };
        if (f->organization == K_INDEXED) {
            if (f->recordKey) key(*f->recordKey, false);
            for (const auto &alternate : f->alternateKeys) key(*alternate.item, alternate.duplicates);
        }
        std::string linage;
        if (f->linage) {
            linage = "ZVK_FILE_LINAGE";
            globals_ += cat("static KvrPage G", n, ";\n");
            if (f->footing) linage += " | ZVK_FILE_LINAGE_FOOTING";
            if (f->top) linage += " | ZVK_FILE_LINAGE_TOP";
            if (f->bottom) linage += " | ZVK_FILE_LINAGE_BOTTOM";
        }
        std::string type = cat("struct { FIB fib; FileKey keys[", keyCount ? keyCount : 1,
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
                keyCount ? cat(", .keys = {", keys, "}") : "", "};\n");
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

// A file that several programs share has one FCB. Before a statement it takes what is the
// program's own: the index of its attributes, its USE procedures.
void Emitter::prepare(const File &f)
{
    if (f.external) put(cat("F", f.number, "->index = ", f.index, ";\n"));
    if (f.external || (f.global && (program_ != f.program || !f.program->nested.empty())))
        put(cat("F", f.number, "->useTable = ", useTable(*program_, f), ";\n"));
}

// A sequential file with records of one length may come from another system, as records or as lines
// without a header.
bool Emitter::mayBeGiven(const File &f)
{
    return f.organization == K_SEQUENTIAL && !isPrinted(f) && f.minRecord == f.maxRecord && !f.external &&
           f.device == 0;
}

void Emitter::openGiven(const File &f, bool probe)
{
    openGiven_ = true;
    put(cat("kvr_open_given(F", f.number, ", p", f.program->number, "_element, &I", f.number, ".fib, ", probe ? 1 : 0,
            ");\n"));
}

File *Emitter::fileOfRecord(const FileStatement &s, Loc &record)
{
    if (s.wholeFile) {
        File *f = meaning_.file(*program_, s.file, s.fileAt);
        if (!f || f->records.empty()) return nullptr;
        const Item *longest = f->records[0];
        for (const Item *item : f->records)
            if (item->size > longest->size) longest = item;
        record = locateItem(*longest, "", true);
        record.category = Category::Group;
        return f;
    }
    record = locate(*s.record, true);
    if (!record.good()) return nullptr;
    const Item &top = recordOf(*record.item);
    if (!top.file || record.item->parent) {
        error(s.record->at, wordText(s.record->names[0]) + " is no record of a file");
        return nullptr;
    }
    return top.file;
}

void Emitter::linageValues(const File &f)
{
    if (!f.linage) return;
    const Expr *values[4] = {f.linage, f.footing, f.top, f.bottom};
    for (int i = 0; i < 4; i++) {
        if (!values[i]) continue;
        put(cat("I", f.number, ".linage[", i, "].value = (uint32_t)", integer(values[i]), ";\n"));
    }
}

// What the file's other users may do, of its SELECT or of an OPEN.
std::string Emitter::shareMode(const File &f, Word sharing)
{
    int others = sharing == K_ALL ? 1 : sharing == K_READ ? 2 : sharing == K_NO ? 3 : f.lockMode == K_EXCLUSIVE ? 3 : 0;
    return cat(others, f.lockMultiple ? " | ZVK_FILE_LOCK_COUNT" : "");
}

void Emitter::openStatement(const OpenStatement &s)
{
    for (const OpenStatement::Part &part : s.parts) {
        File *f = meaning_.file(*program_, part.file, part.at);
        if (!f) continue;
        if (f->sortFile) {
            error(part.at, "a sort file is not opened");
            continue;
        }
        if (part.reversed && (part.mode != K_INPUT || f->organization == K_RELATIVE || f->organization == K_INDEXED))
            error(part.at, "REVERSED goes with OPEN INPUT of a sequential file");
        linageValues(*f);
        if (f->linage) put(cat("kvr_linage_open(&I", f->number, ".linage[0], &G", f->number, ");\n"));
        assignment(*f);
        prepare(*f);
        if (f->program->openShares || program_->openShares) // each OPEN anew: what another one said is over
            put(cat("I", f->number, ".fib.sharing = ", part.sharing || f->sharing || f->lockMode ? 1 : 0, "; I",
                    f->number, ".fib.shareMode = ", shareMode(*f, part.sharing ? part.sharing : f->sharing), ";\n"));
        const char *mode = part.mode == K_INPUT    ? "ZVK_OPEN_INPUT"
                           : part.mode == K_OUTPUT ? "ZVK_OPEN_OUTPUT"
                           : part.mode == K_I_O    ? "ZVK_OPEN_IO"
                                                   : "ZVK_OPEN_EXTEND";
        put(cat("F", f->number, "->requestedMode = ", mode, part.noRewind ? " | ZVK_OPEN_STATUS_07" : "", "; F",
                f->number, "->statement = 0;\n"));
        if ((part.mode != K_OUTPUT || f->readable) && mayBeGiven(*f))
            openGiven(*f, false);
        else
            put(cat("F", f->number, "->open(F", f->number, ", p", f->program->number, "_element);\n"));
        if (part.reversed) {
            reversed_ = true;
            put(cat("kvr_open_reversed(F", f->number, ", p", f->program->number, "_element);\n"));
        }
        debugFile(*f, nullptr);
    }
}

void Emitter::closeStatement(const CloseStatement &s)
{
    for (const CloseStatement::Part &part : s.parts) {
        File *f = meaning_.file(*program_, part.file, part.at);
        if (!f) continue;
        if (f->sortFile) {
            error(part.at, "a sort file is not closed");
            continue;
        }
        prepare(*f);
        if (part.reel) {
            // There are no reels: the statement is successful, with status 07, and the file stays
            // open.
            put(cat("kvr_close_reel(F", f->number, ", p", f->program->number, "_element);\n"));
            debugFile(*f, nullptr);
            continue;
        }
        put(cat("F", f->number, "->closeOptions = ", part.lock ? "ZVK_CLOSE_LOCK" : "0",
                part.noRewind ? " | 0x0800" : "", "; F", f->number, "->statement = 0;\n"));
        put(cat("F", f->number, "->close(F", f->number, ", p", f->program->number, "_element);\n"));
        debugFile(*f, nullptr);
    }
}

// The RELATIVE KEY item's value into the request.
void Emitter::relativeKeyIn(const File &f, const std::string &request)
{
    if (f.organization != K_RELATIVE || !f.relativeKey) return;
    Unwatched unwatched(*this);
    Loc loc = locate(*f.relativeKey);
    if (!loc.good()) return;
    Num n = toInt(scaleTo(itemNumber(loc), 0, false));
    put(cat(request, ".relativeKey = (uint64_t)(", n.text, ");\n"));
    if (loc.item->picture.digits < 18) {
        std::string limit(static_cast<size_t>(loc.item->picture.digits), '9');
        put(cat(request, ".relativeKeyLimit = ", limit, ";\n"));
    }
}

void Emitter::relativeKeyOut(const File &f, const std::string &request)
{
    if (f.organization != K_RELATIVE || !f.relativeKey) return;
    Unwatched unwatched(*this);
    Loc loc = locate(*f.relativeKey, true);
    if (!loc.good()) return;
    put(cat("if (F", f.number, "->status < 10) {\n"));
    store(integerNumber(cat("(int64_t)", request, ".relativeKey"), 18, false), loc, false, "");
    put("}\n");
}

// The branches of AT END, INVALID KEY and their opposites.
void Emitter::afterVerb(const FileStatement &s, const File &f, bool)
{
    std::string status = cat("F", f.number, "->status");
    debugNow();
    if (s.end.has || s.end.hasNot) {
        if (s.end.has) {
            put(cat("if (", status, " >= 10 && ", status, " < 20) {\n"));
            block(s.end.on);
            put("}\n");
        }
        if (s.end.hasNot) {
            put(cat(s.end.has ? "else " : "", "if (", status, " < 10) {\n"));
            block(s.end.onNot);
            put("}\n");
        }
        if ((s.invalid.has || s.invalid.hasNot) && s.end.has) put("else ");
    }
    if (s.invalid.has) {
        put(cat("if (", status, " >= 20 && ", status, " < 30) {\n"));
        block(s.invalid.on);
        put("}\n");
        if (s.invalid.hasNot) put("else ");
    }
    if (s.invalid.hasNot) {
        put(cat("if (", status, " < 10) {\n"));
        block(s.invalid.onNot);
        put("}\n");
    }
    if (!s.invalid.has && !s.invalid.hasNot && (s.end.has || s.end.hasNot)) put(";\n");
}

// The number of the key that an item is: 0 the primary one; -1 none. Generic: the item begins where
// the key begins.
int Emitter::keyNumber(const File &f, const Item &item, bool generic)
{
    auto is = [&](const Reference &ref) {
        Item *key = meaning_.resolve(*f.program, ref, true);
        return key && (key == &item ||
                       (key->offset == item.offset && (generic ? item.size <= key->size : item.size == key->size) &&
                        recordOf(item).file == &f));
    };
    if (f.recordKey && is(*f.recordKey)) return 0;
    for (size_t i = 0; i < f.alternateKeys.size(); i++)
        if (is(*f.alternateKeys[i].item)) return static_cast<int>(i) + 1;
    return -1;
}

static std::string statementFlags(const FileStatement &s, bool next)
{
    std::string flags = "0";
    if (s.end.has) flags += " | ZVK_STATEMENT_AT_END";
    if (s.invalid.has) flags += " | ZVK_STATEMENT_INVALID_KEY";
    if (next) flags += " | ZVK_STATEMENT_NEXT";
    return flags;
}

void Emitter::readStatement(const FileStatement &s)
{
    File *f = meaning_.file(*program_, s.file, s.fileAt);
    if (!f) return;
    if (f->sortFile) {
        error(s.fileAt, "a sort file is read with RETURN");
        return;
    }
    std::string request = temp("FileRequest");
    bool sequential =
        s.next || s.previous || f->access == K_SEQUENTIAL || f->organization == K_SEQUENTIAL ||
        f->organization == K_LINE ||
        (f->access == K_DYNAMIC && !s.key && (s.end.has || s.end.hasNot) && !(s.invalid.has || s.invalid.hasNot));
    put(cat("memset(&", request, ", 0, sizeof ", request, ");\n"));
    std::string options = sequential ? (s.previous ? "ZVK_REQUEST_PREVIOUS" : "ZVK_REQUEST_NEXT") : "ZVK_REQUEST_KEY";
    if (s.lock == K_LOCK) options += " | ZVK_REQUEST_LOCK";
    if (s.lock == K_NO) options += " | ZVK_REQUEST_NO_LOCK";
    if (s.lock == K_IGNORING) options += " | ZVK_REQUEST_IGNORE_LOCK";
    if (!sequential && s.key) {
        Item *item = meaning_.resolve(*program_, *s.key);
        if (!item) return;
        int key = keyNumber(*f, *item, false);
        if (key < 0 && f->organization == K_INDEXED) {
            error(s.key->at, wordText(item->name) + " is no key of the file");
            return;
        }
        if (key > 0) put(cat(request, ".key = ", key, ";\n"));
    }
    if (s.lock == K_ADVANCING) notBuilt(s.at, "READ ... ADVANCING ON LOCK");
    put(cat(request, ".options = ", options, ";\n"));
    retry(s, request);
    relativeKeyIn(*f, request);
    put(cat("F", f->number, "->statement = ", statementFlags(s, sequential), ";\n"));
    prepare(*f);
    put(cat("F", f->number, "->read(F", f->number, ", p", f->program->number, "_element, &", request, ");\n"));
    if (codeSet(*f))
        put(cat("if (F", f->number, "->status < 10) kvr_recode(F", f->number, "->record, F", f->number, "->record, ",
                request, ".recordLength, native", f->number, ");\n"));
    if (sequential) relativeKeyOut(*f, request);
    if (f->recordDepending) {
        Unwatched unwatched(*this);
        Loc loc = locate(*f->recordDepending, true);
        if (loc.good()) {
            put(cat("if (F", f->number, "->status < 10) {\n"));
            store(integerNumber(cat("(int64_t)", request, ".recordLength"), 9, false), loc, false, "");
            put("}\n");
        }
    }
    if (s.into) {
        Loc to = locate(*s.into, true);
        if (to.good()) {
            put(cat("if (F", f->number, "->status < 10) {\n"));
            // As a move of the record; of several records as a group.
            if (f->records.size() == 1 && f->minRecord == f->maxRecord) {
                moveLoc(locateItem(*f->records[0]), to);
            } else {
                Text t;
                t.address = cat("F", f->number, "->record");
                t.length = f->minRecord == f->maxRecord ? cat(f->maxRecord) : cat(request, ".recordLength");
                if (f->minRecord == f->maxRecord) t.fixed = f->maxRecord;
                moveText(t, to);
            }
            put("}\n");
        }
    }
    debugFile(*f, &s);
    afterVerb(s, *f, false);
}

void Emitter::writeStatement(const FileStatement &s)
{
    Loc record;
    File *f = fileOfRecord(s, record);
    if (!f) return;
    if (f->sortFile) {
        error(s.at, "a record of a sort file is written with RELEASE");
        return;
    }
    if (s.from) move(s.from, record);
    std::string request = temp("FileRequest");
    put(cat("memset(&", request, ", 0, sizeof ", request, ");\n"));
    // In a file of pages or one that is advanced anywhere, a WRITE without ADVANCING is one AFTER a
    // line.
    if (s.before || s.after || f->linage || isPrinted(*f)) {
        std::string advance = "1";
        if (s.page) {
            advance = "ZVK_ADVANCE_PAGE";
        } else if (s.mnemonic) {
            const std::string &device = wordText(s.mnemonic);
            if (device == "C01" || device == "FORMFEED" || device == "TOP" || device == "PAGE" ||
                device == "TOP-OF-PAGE" || device == "XXXXX049")
                advance = "ZVK_ADVANCE_PAGE";
            else if (device.rfind("CSP", 0) == 0)
                advance = "0";
            else
                advance = "1";
        } else if (s.advancing) {
            advance = cat("(int32_t)", integer(s.advancing));
        }
        put(cat(request, ".options = ", s.before ? "ZVK_REQUEST_BEFORE" : "ZVK_REQUEST_AFTER", "; ", request,
                ".advance = ", advance, ";\n"));
    }
    encodeRecord(*f, request);
    linageValues(*f);
    if (f->linage) put(cat("kvr_linage_before(F", f->number, ", &I", f->number, ".linage[0], &G", f->number, ");\n"));
    std::string length;
    if (f->recordDepending) {
        Unwatched unwatched(*this);
        Loc loc = locate(*f->recordDepending);
        if (loc.good()) length = cat("(uint32_t)", toInt(scaleTo(itemNumber(loc), 0, false)).text);
    } else {
        // The record's own length, with the present number of occurrences.
        Loc now = locateItem(*record.item);
        length = cat("(uint32_t)", now.length);
    }
    if (f->minRecord == f->maxRecord && f->organization != K_LINE) length = cat(f->maxRecord);
    put(cat(request, ".recordLength = ", length, ";\n"));
    if (f->access != K_SEQUENTIAL)
        relativeKeyIn(*f, request);
    else if (f->organization == K_RELATIVE && f->relativeKey) {
        relativeKeyIn(*f, request);
        put(cat(request, ".relativeKey = 0;\n"));
    }
    if (f->organization == K_RELATIVE && f->access != K_SEQUENTIAL) put(cat(request, ".options |= ZVK_REQUEST_KEY;\n"));
    put(cat("F", f->number, "->statement = ", statementFlags(s, false), ";\n"));
    debugNow();
    prepare(*f);
    if (f->access == K_SEQUENTIAL && f->organization != K_LINE)
        put(cat("if (F", f->number, "->mode & ZVK_OPEN_IO) kvr_refuse(F", f->number, ", p", f->program->number,
                "_element, 48, ZVK_VERB_WRITE);\nelse "));
    put(cat("F", f->number, "->write(F", f->number, ", p", f->program->number, "_element, &", request, ");\n"));
    if (f->linage)
        put(cat("kvr_linage_after(F", f->number, ", &I", f->number, ".linage[0], &G", f->number, ", ", request,
                ".advance);\n"));
    if (f->access == K_SEQUENTIAL) relativeKeyOut(*f, request);
    if (s.eop.has || s.eop.hasNot) {
        if (s.eop.has) {
            put(cat("if (", request, ".options & ZVK_REQUEST_END_OF_PAGE) {\n"));
            block(s.eop.on);
            put("}\n");
        }
        if (s.eop.hasNot) {
            put(cat(s.eop.has ? "else " : cat("if (!(", request, ".options & ZVK_REQUEST_END_OF_PAGE)) "), "{\n"));
            block(s.eop.onNot);
            put("}\n");
        }
    }
    afterVerb(s, *f, true);
}

void Emitter::rewriteStatement(const FileStatement &s)
{
    Loc record;
    File *f = fileOfRecord(s, record);
    if (!f) return;
    if (s.from) move(s.from, record);
    std::string request = temp("FileRequest");
    put(cat("memset(&", request, ", 0, sizeof ", request, ");\n"));
    std::string length = cat("(uint32_t)", locateItem(*record.item).length);
    if (f->recordDepending) {
        Unwatched unwatched(*this);
        Loc loc = locate(*f->recordDepending);
        if (loc.good()) length = cat("(uint32_t)", toInt(scaleTo(itemNumber(loc), 0, false)).text);
    }
    if (f->minRecord == f->maxRecord) length = cat(f->maxRecord);
    put(cat(request, ".recordLength = ", length, ";\n"));
    if (f->access != K_SEQUENTIAL) {
        put(cat(request, ".options = ZVK_REQUEST_KEY;\n"));
        relativeKeyIn(*f, request);
    }
    encodeRecord(*f, request);
    retry(s, request);
    put(cat("F", f->number, "->statement = ", statementFlags(s, false), ";\n"));
    debugNow();
    prepare(*f);
    put(cat("F", f->number, "->rewrite(F", f->number, ", p", f->program->number, "_element, &", request, ");\n"));
    afterVerb(s, *f, true);
}

// RETRY into the request.
void Emitter::retry(const FileStatement &s, const std::string &request)
{
    if (!s.retry) return;
    put(cat(request, ".options |= ",
            s.retry == K_TIMES     ? "ZVK_REQUEST_RETRY_TIMES"
            : s.retry == K_SECONDS ? "ZVK_REQUEST_RETRY_SECONDS"
                                   : "ZVK_REQUEST_RETRY_FOREVER",
            "; ", request, ".retry = ", s.retries ? cat("(int32_t)", integer(s.retries)) : "0", ";\n"));
}

// The name of the file that an item holds at this moment.
void Emitter::assignment(const File &f)
{
    if (!f.assignItem || f.assignExternal) return;
    Item *item = meaning_.resolve(*f.program, *f.assignItem, true);
    if (!item || item->isConstant || item->level == 88) return;
    Loc loc = locate(*f.assignItem);
    if (loc.good())
        put(cat("I", f.number, ".fib.assignmentLength = kvr_assignment(N", f.number, ", ", loc.address, ", ",
                loc.length, ");\n"));
}

void Emitter::deleteFile(const FileStatement &s)
{
    std::vector<std::pair<Word, Tok>> files = s.moreFiles;
    files.insert(files.begin(), {s.file, s.fileAt});
    for (const auto &[name, at] : files) {
        File *f = meaning_.file(*program_, name, at);
        if (!f) continue;
        if (f->sortFile) {
            error(at, "a sort file is not deleted");
            continue;
        }
        assignment(*f);
        prepare(*f);
        deleteFile_ = true;
        put(cat("kvr_delete_file(F", f->number, ", p", f->program->number, "_element, &I", f->number, ".fib);\n"));
    }
}

void Emitter::deleteStatement(const FileStatement &s)
{
    if (s.wholeFile) return deleteFile(s);
    File *f = meaning_.file(*program_, s.file, s.fileAt);
    if (!f) return;
    if (f->sortFile) {
        error(s.fileAt, "a sort file is not deleted");
        return;
    }
    if (f->organization != K_INDEXED && f->organization != K_RELATIVE) {
        error(s.fileAt, "DELETE goes with an indexed or a relative file");
        return;
    }
    std::string request = temp("FileRequest");
    put(cat("memset(&", request, ", 0, sizeof ", request, ");\n"));
    if (f->access != K_SEQUENTIAL) {
        put(cat(request, ".options = ZVK_REQUEST_KEY;\n"));
        relativeKeyIn(*f, request);
    }
    retry(s, request);
    put(cat("F", f->number, "->statement = ", statementFlags(s, false), ";\n"));
    prepare(*f);
    put(cat("F", f->number, "->deleteRecord(F", f->number, ", p", f->program->number, "_element, &", request, ");\n"));
    debugFile(*f, nullptr);
    afterVerb(s, *f, true);
}

void Emitter::startStatement(const FileStatement &s)
{
    File *f = meaning_.file(*program_, s.file, s.fileAt);
    if (!f) return;
    if (f->organization != K_INDEXED && f->organization != K_RELATIVE) {
        error(s.fileAt, "START goes with an indexed or a relative file");
        return;
    }
    std::string request = temp("FileRequest");
    put(cat("memset(&", request, ", 0, sizeof ", request, ");\n"));
    const char *relation = s.relation == '='             ? "ZVK_RELATION_EQUAL"
                           : s.relation == '>'           ? "ZVK_RELATION_GREATER"
                           : s.relation == kGreaterEqual ? "ZVK_RELATION_NOT_LESS"
                           : s.relation == '<'           ? "ZVK_RELATION_LESS"
                           : s.relation == kLessEqual    ? "ZVK_RELATION_NOT_GREATER"
                           : s.relation == K_FIRST       ? "ZVK_RELATION_FIRST"
                           : s.relation == K_LAST        ? "ZVK_RELATION_LAST"
                                                         : nullptr;
    if (!relation) {
        error(s.at, "START does not go with NOT EQUAL");
        return;
    }
    put(cat(request, ".relation = ", relation, ";\n"));
    if (f->organization == K_INDEXED && s.key) {
        Item *item = meaning_.resolve(*program_, *s.key);
        if (!item) return;
        int key = keyNumber(*f, *item, true);
        if (key < 0) {
            error(s.key->at, wordText(item->name) + " is no key of the file, and no beginning of one");
            return;
        }
        put(cat(request, ".key = ", key, "; ", request, ".keyLength = ", item->size, ";\n"));
        if (s.advancing) // START ... WITH LENGTH: no more than the key has
            put(cat("if (", integer(s.advancing), " > 0 && ", integer(s.advancing), " < ", item->size, ") ", request,
                    ".keyLength = (uint32_t)", integer(s.advancing), ";\n"));
    }
    relativeKeyIn(*f, request);
    put(cat("F", f->number, "->statement = ", statementFlags(s, false), ";\n"));
    prepare(*f);
    put(cat("F", f->number, "->start(F", f->number, ", p", f->program->number, "_element, &", request, ");\n"));
    debugFile(*f, nullptr);
    afterVerb(s, *f, true);
}

void Emitter::unlockStatement(const FileStatement &s)
{
    File *f = meaning_.file(*program_, s.file, s.fileAt);
    if (!f) return;
    if (!f->sharing && !f->lockMode) {
        put(";\n"); // no record of it can be locked by this program
        return;
    }
    prepare(*f);
    std::string request = temp("FileRequest");
    put(cat("memset(&", request, ", 0, sizeof ", request, ");\nF", f->number, "->unlock(F", f->number, ", p",
            f->program->number, "_element, &", request, ");\n"));
}

} // namespace kvrcob
