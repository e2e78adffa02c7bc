// READ, WRITE, REWRITE, DELETE, START, UNLOCK: a request for one record.
//
//     READ F INTO X AT END ...    ->    memset(&t1, 0, sizeof t1); t1.options = ZVK_REQUEST_NEXT;
//                                       F1->statement = ZVK_STATEMENT_AT_END;
//                                       F1->read(F1, p1_element, &t1);
//                                       if (F1->status < 10) memmove(X, F1->record, ...);
//                                       if (F1->status >= 10 && F1->status < 20) { ... }
#include "cobol/emit/emitter.h"

namespace kvrcob {

// A request of this statement's own, all zeros.
std::string Emitter::newRequest()
{
    std::string request = temp("FileRequest");
    put("memset(&", request, ", 0, sizeof ", request, ");\n");
    return request;
}

void Emitter::callVerb(const File &f, std::string_view routine, const std::string &request)
{
    put(anyUse() ? "useRan = 0, " : "", "F", f.number, slot(routine), "(", fcbAndElement(f), ", &", request, ");\n");
}

// The C condition that the verb gave a status from `low` on and below `high`. One after which a USE
// procedure ran gave neither success nor a status that has a phrase: what is in the file control
// block then comes from the procedure's own verbs.
std::string Emitter::gaveStatus(const File &f, int low, int high) const
{
    const std::string status = cat("F", f.number, "->status");
    return cat(low > 0 ? cat(status, " >= ", low, " && ") : "", status, " < ", high, anyUse() ? " && !useRan" : "");
}

// The C condition that the verb was successful.
std::string Emitter::succeeded(const File &f) const { return gaveStatus(f, 0, 10); }

// The record goes out in the file's codes.
void Emitter::encodeRecord(const File &f, const std::string &request)
{
    if (const Alphabet *a = fileRecords_.codeSet(f))
        put(request, ".into = ", emits(Do::Recode, Of::Text), "(codes", f.number, ", F", f.number,
            "->record, sizeof codes", f.number, ", alphabet", a->number, ");\n");
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

// The RELATIVE KEY item's value into the request.
void Emitter::relativeKeyIn(const File &f, const std::string &request)
{
    if (f.organization != K_RELATIVE || !f.relativeKey) return;
    Within unwatched(inProgram_.debugs, false);
    Loc loc = locate(*f.relativeKey);
    if (!loc.good()) return;
    Num n = toInt(scaleTo(itemNumber(loc), 0, false));
    put(request, ".relativeKey = (uint64_t)(", n.text, ");\n");
    if (loc.item->picture.digits < 18) {
        std::string limit(static_cast<size_t>(loc.item->picture.digits), '9');
        put(request, ".relativeKeyLimit = ", limit, ";\n");
    }
}

void Emitter::relativeKeyOut(const File &f, const std::string &request)
{
    if (f.organization != K_RELATIVE || !f.relativeKey) return;
    Within unwatched(inProgram_.debugs, false);
    Loc loc = locate(*f.relativeKey, true);
    if (!loc.good()) return;
    put("if (", succeeded(f), ") {\n");
    store(integerNumber(cat("(int64_t)", request, ".relativeKey"), 18, false), loc, false, "");
    put("}\n");
}

// The length of the record that goes out: what DEPENDING says, else with the present number of
// occurrences.
void Emitter::recordLengthIn(const File &f, const Loc &record, const std::string &request)
{
    std::string length = cat("(uint32_t)", locateItem(*record.item).length);
    if (f.recordDepending) {
        Within unwatched(inProgram_.debugs, false);
        Loc loc = locate(*f.recordDepending);
        if (loc.good()) length = cat("(uint32_t)", toInt(scaleTo(itemNumber(loc), 0, false)).text);
    }
    if (f.minRecord == f.maxRecord && f.organization != K_LINE) length = cat(f.maxRecord);
    put(request, ".recordLength = ", length, ";\n");
}

// The DEPENDING item says how long the record was that came in.
void Emitter::recordLengthOut(const File &f, const std::string &request)
{
    if (!f.recordDepending) return;
    Within unwatched(inProgram_.debugs, false);
    Loc loc = locate(*f.recordDepending, true);
    if (!loc.good()) return;
    put("if (", succeeded(f), ") {\n");
    store(integerNumber(cat("(int64_t)", request, ".recordLength"), 9, false), loc, false, "");
    put("}\n");
}

// The branches of AT END, INVALID KEY and their opposites.
void Emitter::afterVerb(const FileStatement &s, const File &f)
{
    const std::string good = succeeded(f);
    debugNow();
    if (s.end.has || s.end.hasNot) {
        if (s.end.has) {
            put("if (", gaveStatus(f, 10, 20), ") {\n");
            block(s.end.on);
            put("}\n");
        }
        if (s.end.hasNot) {
            put(s.end.has ? "else " : "", "if (", good, ") {\n");
            block(s.end.onNot);
            put("}\n");
        }
        if ((s.invalid.has || s.invalid.hasNot) && s.end.has) put("else ");
    }
    if (s.invalid.has) {
        put("if (", gaveStatus(f, 20, 30), ") {\n");
        block(s.invalid.on);
        put("}\n");
        if (s.invalid.hasNot) put("else ");
    }
    if (s.invalid.hasNot) {
        put("if (", good, ") {\n");
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
    if (f.recordKey && f.recordKeyParts.empty() && is(*f.recordKey)) return 0;
    for (size_t i = 0; i < f.alternateKeys.size(); i++)
        if (f.alternateKeys[i].parts.empty() && is(*f.alternateKeys[i].item)) return static_cast<int>(i) + 1;
    return -1;
}

// The number of the split key of that name, which is no data item; -1: it is none.
static int splitKeyNumber(const File &f, const Reference &ref)
{
    auto is = [&](const std::vector<Reference *> &parts, const Reference &key) {
        return !parts.empty() && ref.names.size() == 1 && key.names[0] == ref.names[0];
    };
    if (f.recordKey && is(f.recordKeyParts, *f.recordKey)) return 0;
    for (size_t i = 0; i < f.alternateKeys.size(); i++)
        if (is(f.alternateKeys[i].parts, *f.alternateKeys[i].item)) return static_cast<int>(i) + 1;
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

// INTO: as a move of the record; of several records as a group.
void Emitter::readInto(const Reference &into, const File &f, const std::string &request)
{
    Loc to = locate(into, true);
    if (!to.good()) return;
    const bool oneLength = f.minRecord == f.maxRecord;
    put("if (", succeeded(f), ") {\n");
    if (f.records.size() == 1 && oneLength) {
        moveLoc(locateItem(*f.records[0]), to);
    } else {
        Text record;
        record.address = cat("F", f.number, "->record");
        record.length = oneLength ? cat(f.maxRecord) : cat(request, ".recordLength");
        if (oneLength) record.fixed = f.maxRecord;
        moveText(record, to);
    }
    put("}\n");
}

void Emitter::readStatement(const FileStatement &s)
{
    File *f = meaning_.file(*program_, s.file, s.fileAt);
    if (!f) return;
    if (f->sortFile) return error(s.fileAt, "a sort file is read with RETURN");
    const std::string request = newRequest();
    const bool sequential =
        s.next || s.previous || f->access == K_SEQUENTIAL || f->organization == K_SEQUENTIAL ||
        f->organization == K_LINE ||
        (f->access == K_DYNAMIC && !s.key && (s.end.has || s.end.hasNot) && !(s.invalid.has || s.invalid.hasNot));
    std::string options = sequential ? (s.previous ? "ZVK_REQUEST_PREVIOUS" : "ZVK_REQUEST_NEXT") : "ZVK_REQUEST_KEY";
    if (s.lock == K_LOCK) options += " | ZVK_REQUEST_LOCK";
    if (s.lock == K_NO) options += " | ZVK_REQUEST_NO_LOCK";
    if (s.lock == K_IGNORING) options += " | ZVK_REQUEST_IGNORE_LOCK";
    if (!sequential && s.key) {
        int key = splitKeyNumber(*f, *s.key);
        Item *item = key < 0 ? meaning_.resolve(*program_, *s.key) : nullptr;
        if (key < 0 && !item) return;
        if (item) key = keyNumber(*f, *item, false);
        if (key < 0 && f->organization == K_INDEXED)
            return error(s.key->at, wordText(item->name) + " is no key of the file");
        if (key > 0) put(request, ".key = ", key, ";\n");
    }
    if (s.lock == K_ADVANCING) notBuilt(s.at, "READ ... ADVANCING ON LOCK");
    put(request, ".options = ", options, ";\n");
    retry(s, request);
    relativeKeyIn(*f, request);
    put("F", f->number, "->statement = ", statementFlags(s, sequential), ";\n");
    prepare(*f);
    callVerb(*f, emits(Do::Read), request);

    if (fileRecords_.codeSet(*f))
        put("if (", succeeded(*f), ") ", emits(Do::Recode, Of::Text), "(F", f->number, "->record, F", f->number,
            "->record, ", request, ".recordLength, native", f->number, ");\n");
    if (sequential) relativeKeyOut(*f, request);
    recordLengthOut(*f, request);
    if (s.into) readInto(*s.into, *f, request);
    debugFile(*f, &s);
    afterVerb(s, *f);
}

// AFTER ADVANCING C01 without an entry of SPECIAL-NAMES.
Word Emitter::undeclaredChannel(const FileStatement &s)
{
    if (!s.advancing || s.advancing->kind != ExprKind::Reference || s.advancing->ref->names.size() != 1) return 0;
    const std::string &name = wordText(s.advancing->ref->names[0]);
    const bool channel = name == "CSP" || (name.size() == 3 && name >= "C01" && name <= "C12" && name[2] <= '9');
    return channel && !meaning_.resolve(*program_, *s.advancing->ref, true) ? s.advancing->ref->names[0] : 0;
}

// How far a WRITE advances the paper: lines, as a C expression.
std::string Emitter::advance(const FileStatement &s)
{
    if (s.page) return "ZVK_ADVANCE_PAGE";
    if (const Word channel = s.mnemonic ? s.mnemonic : undeclaredChannel(s)) {
        const std::string &device = wordText(channel);
        for (const char *top : {"C01", "FORMFEED", "TOP", "PAGE", "TOP-OF-PAGE", "XXXXX049"})
            if (device == top) return "ZVK_ADVANCE_PAGE";
        return device.rfind("CSP", 0) == 0 ? "0" : "1";
    }
    if (!s.advancing) return "1";
    if (!s.positioning) return cat("(int32_t)", integer(s.advancing));
    if (isNumericExpr(s.advancing)) {
        const std::string sign = integer(s.advancing);
        return cat("(int32_t)", sign, " > 0 ? (int32_t)", integer(s.advancing), " : ZVK_ADVANCE_PAGE");
    }
    // A printer's control character: blank, 0, - and + for so many lines, 1 for a page.
    const std::string c = cat("*", text(s.advancing).address);
    return cat(c, " == '1' ? ZVK_ADVANCE_PAGE : ", c, " == '0' ? 2 : ", c, " == '-' ? 3 : ", c, " != '+'");
}

void Emitter::endOfPage(const Phrases &p, const std::string &request)
{
    const std::string reached = cat(request, ".options & ZVK_REQUEST_END_OF_PAGE");
    if (p.has) {
        put("if (", reached, ") {\n");
        block(p.on);
        put("}\n");
    }
    if (p.hasNot) {
        put(p.has ? "else " : cat("if (!(", reached, ")) "), "{\n");
        block(p.onNot);
        put("}\n");
    }
}

void Emitter::writeStatement(const FileStatement &s)
{
    Loc record;
    File *f = fileOfRecord(s, record);
    if (!f) return;
    if (f->sortFile) return error(s.at, "a record of a sort file is written with RELEASE");
    if (s.from) move(s.from, record);
    const std::string request = newRequest();

    // In a file of pages or one that is advanced anywhere, a WRITE without ADVANCING is one AFTER a
    // line.
    if (s.before || s.after || f->linage || isPrinted(*f)) {
        const std::string lines = advance(s);
        put(request, ".options = ", s.before ? "ZVK_REQUEST_BEFORE" : "ZVK_REQUEST_AFTER", "; ", request,
            ".advance = ", lines, ";\n");
    }
    encodeRecord(*f, request);
    linageValues(*f);
    if (f->linage)
        put(emits(Do::LinageBefore), "(F", f->number, ", &I", f->number, ".linage[0], &G", f->number, ");\n");
    recordLengthIn(*f, record, request);

    // In sequence the run time numbers the records, and only the item's limit counts.
    relativeKeyIn(*f, request);
    if (f->organization == K_RELATIVE && f->access != K_SEQUENTIAL)
        put(request, ".options |= ZVK_REQUEST_KEY;\n");
    else if (f->organization == K_RELATIVE && f->relativeKey)
        put(request, ".relativeKey = 0;\n");

    put("F", f->number, "->statement = ", statementFlags(s, false), ";\n");
    debugNow();
    prepare(*f);
    if (f->access == K_SEQUENTIAL && f->organization != K_LINE)
        put("if (F", f->number, "->mode & ZVK_OPEN_IO) ", emits(Do::Refuse), "(", fcbAndElement(*f),
            ", 48, ZVK_VERB_WRITE);\nelse ");
    callVerb(*f, emits(Do::Write), request);

    if (f->linage)
        put(emits(Do::LinageAfter), "(F", f->number, ", &I", f->number, ".linage[0], &G", f->number, ", ", request,
            ".advance);\n");
    if (f->access == K_SEQUENTIAL) relativeKeyOut(*f, request);
    endOfPage(s.eop, request);
    afterVerb(s, *f);
}

void Emitter::rewriteStatement(const FileStatement &s)
{
    Loc record;
    File *f = fileOfRecord(s, record);
    if (!f) return;
    if (s.from) move(s.from, record);
    const std::string request = newRequest();
    recordLengthIn(*f, record, request);
    if (f->access != K_SEQUENTIAL) {
        put(request, ".options = ZVK_REQUEST_KEY;\n");
        relativeKeyIn(*f, request);
    }
    encodeRecord(*f, request);
    retry(s, request);
    put("F", f->number, "->statement = ", statementFlags(s, false), ";\n");
    debugNow();
    prepare(*f);
    callVerb(*f, emits(Do::Rewrite), request);
    afterVerb(s, *f);
}

// RETRY into the request.
void Emitter::retry(const FileStatement &s, const std::string &request)
{
    if (!s.retry) return;
    put(request, ".options |= ",
        s.retry == K_TIMES     ? "ZVK_REQUEST_RETRY_TIMES"
        : s.retry == K_SECONDS ? "ZVK_REQUEST_RETRY_SECONDS"
                               : "ZVK_REQUEST_RETRY_FOREVER",
        "; ", request, ".retry = ", s.retries ? cat("(int32_t)", integer(s.retries)) : "0", ";\n");
}

void Emitter::deleteStatement(const FileStatement &s)
{
    if (s.wholeFile) return deleteFile(s);
    File *f = meaning_.file(*program_, s.file, s.fileAt);
    if (!f) return;
    if (f->sortFile) return error(s.fileAt, "a sort file is not deleted");
    if (f->organization != K_INDEXED && f->organization != K_RELATIVE)
        return error(s.fileAt, "DELETE goes with an indexed or a relative file");
    const std::string request = newRequest();
    if (f->access != K_SEQUENTIAL) {
        put(request, ".options = ZVK_REQUEST_KEY;\n");
        relativeKeyIn(*f, request);
    }
    retry(s, request);
    put("F", f->number, "->statement = ", statementFlags(s, false), ";\n");
    prepare(*f);
    callVerb(*f, emits(Do::Delete), request);
    debugFile(*f, nullptr);
    afterVerb(s, *f);
}

// The key of START, an indexed file's or the beginning of one. False: it is none.
bool Emitter::startKey(const FileStatement &s, const File &f, const std::string &request)
{
    int key = splitKeyNumber(f, *s.key);
    Item *item = key < 0 ? meaning_.resolve(*program_, *s.key) : nullptr;
    if (key < 0 && !item) return false;
    if (item) key = keyNumber(f, *item, true);
    if (key < 0) {
        error(s.key->at, wordText(item->name) + " is no key of the file, and no beginning of one");
        return false;
    }
    // 0: the whole of a split key
    put(request, ".key = ", key, "; ", request, ".keyLength = ", item ? item->size : 0, ";\n");
    if (s.advancing) // START ... WITH LENGTH: no more than the key has
        put("if (", integer(s.advancing), " > 0",
            item ? cat(" && ", integer(s.advancing), " < ", item->size) : std::string(), ") ", request,
            ".keyLength = (uint32_t)", integer(s.advancing), ";\n");
    return true;
}

void Emitter::startStatement(const FileStatement &s)
{
    File *f = meaning_.file(*program_, s.file, s.fileAt);
    if (!f) return;
    if (f->organization != K_INDEXED && f->organization != K_RELATIVE)
        return error(s.fileAt, "START goes with an indexed or a relative file");
    const std::string request = newRequest();
    const char *relation = s.relation == '='             ? "ZVK_RELATION_EQUAL"
                           : s.relation == '>'           ? "ZVK_RELATION_GREATER"
                           : s.relation == kGreaterEqual ? "ZVK_RELATION_NOT_LESS"
                           : s.relation == '<'           ? "ZVK_RELATION_LESS"
                           : s.relation == kLessEqual    ? "ZVK_RELATION_NOT_GREATER"
                           : s.relation == K_FIRST       ? "ZVK_RELATION_FIRST"
                           : s.relation == K_LAST        ? "ZVK_RELATION_LAST"
                                                         : nullptr;
    if (!relation) return error(s.at, "START does not go with NOT EQUAL");
    put(request, ".relation = ", relation, ";\n");
    if (f->organization == K_RELATIVE && s.key && f->relativeKey) {
        Item *item = meaning_.resolve(*program_, *s.key);
        if (!item) return;
        if (item != meaning_.resolve(*f->program, *f->relativeKey))
            return error(s.key->at, "the key of a relative file is the item of its RELATIVE KEY");
    }
    if (f->organization == K_INDEXED && s.key && !startKey(s, *f, request)) return;
    relativeKeyIn(*f, request);
    put("F", f->number, "->statement = ", statementFlags(s, false), ";\n");
    prepare(*f);
    callVerb(*f, emits(Do::Start), request);
    debugFile(*f, nullptr);
    afterVerb(s, *f);
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
    const std::string request = newRequest();
    callVerb(*f, emits(Do::Unlock), request);
}

} // namespace kvrcob
