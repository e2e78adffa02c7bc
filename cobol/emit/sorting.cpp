// SORT, MERGE, RELEASE, RETURN.
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {

// A key as the engine, or the sort of a table, wants it. False if there is no key of this kind.
bool Emitter::sortKey(const Item &item, uint32_t offset, bool ascending, bool inTable, std::string &out)
{
    const char *type = "ZVK_KEY_ALPHANUMERIC", *sign = "0";
    const char *const bytes = "ZVK_KEY_NATIONAL"; // as they are stored, under no alphabet
    if (item.category == Category::Numeric) {
        switch (item.usage) {
        case Usage::Packed:
            // The sort of a table takes the sign of an unsigned number, 0xF, for negative.
            type = inTable && !item.picture.sign ? bytes : "ZVK_KEY_PACKED";
            break;
        case Usage::CompX:
        case Usage::Comp6:
            type = bytes;
            break;
        case Usage::Float:
        case Usage::Double:
            type = "ZVK_KEY_FLOAT";
            break;
        case Usage::Display:
            type = "ZVK_KEY_ZONED";
            sign = item.signForm == SignForm::Trailing           ? "ZVK_KEY_TRAILING"
                   : item.signForm == SignForm::Leading          ? "ZVK_KEY_LEADING"
                   : item.signForm == SignForm::TrailingSeparate ? "ZVK_KEY_TRAILING_SEPARATE"
                   : item.signForm == SignForm::LeadingSeparate  ? "ZVK_KEY_LEADING_SEPARATE"
                                                                 : "0";
            break;
        default:
            type = "ZVK_KEY_BINARY";
            sign = item.picture.sign ? "ZVK_KEY_SIGNED" : "0";
            break;
        }
    } else if (item.category == Category::Index) {
        type = "ZVK_KEY_BINARY", sign = "ZVK_KEY_SIGNED";
    } else if (item.category == Category::Pointer) {
        return false;
    }
    out = cat("{", offset, ", ", item.size, ", ", type, ", ", sign, ", ", ascending ? "ZVK_KEY_ASCENDING" : "0",
              ", {0, 0}}");
    return true;
}

// The record that lists files of USING or GIVING; its name.
std::string Emitter::sortFiles(const std::vector<std::pair<Word, Tok>> &list, bool read)
{
    std::string array = temp("FCB *", cat("[", list.size() + 1, "]")), record = temp("SortFileList");
    size_t count = 0;
    for (const auto &[word, at] : list) {
        File *f = meaning_.file(*program_, word, at);
        if (!f) continue;
        if (f->sortFile) {
            error(at, "a sort file cannot be sorted from or into");
            continue;
        }
        prepare(*f);
        assignment(*f);
        if (read && mayBeGiven(*f)) {
            put("F", f->number, "->requestedMode = ZVK_OPEN_INPUT; F", f->number, "->statement = 0;\n");
            openGiven(*f, true);
        }
        if (fileRecords_.codeSet(*f)) notBuilt(at, "SORT of a file with a CODE-SET");
        put(array, "[", count++, "] = F", f->number, ";\n");
    }
    put("memset(&", record, ", 0, sizeof ", record, "); ", record, ".count = ", count, "; ", record, ".files = ", array,
        ";\n");
    return record;
}

// The C expression of the alphabet by which keys are compared; "0": the native order.
std::string Emitter::sortWeights(const SortStatement &s)
{
    Word name = s.collating ? s.collating : program_->collating;
    if (!name) return "0";
    const Alphabet *a = meaning_.alphabet(*program_, name);
    if (!a && !standardOrder(name)) error(s.at, "there is no alphabet " + wordText(name));
    return a && (!a->kind || a->kind == K_EBCDIC) ? cat("alphabet", a->number) : "0";
}

// SORT of a table.
void Emitter::sortTable(const SortStatement &s, const std::string &weights)
{
    if (s.verb == K_MERGE) {
        const File *other = meaning_.file(*program_, s.file->names[0], s.file->at);
        if (other) error(s.file->at, wordText(other->name) + " is no sort file");
        return;
    }
    Item *table = meaning_.resolve(*program_, *s.file);
    if (!table) return;
    if (!table->occurs) {
        error(s.file->at, wordText(table->name) + " is neither a sort file nor a table");
        return;
    }
    std::vector<SortKey> keys = s.keys.empty() ? table->keys : s.keys;
    if (keys.empty()) keys.push_back({true, nullptr});
    std::string rows, name = cat("K", ++inFile_.constants), list;
    for (const SortKey &key : keys) {
        const Item *item = key.item ? meaning_.key(*program_, *key.item, table->name) : table;
        if (!item) return;
        std::string row;
        if (item->offset < table->offset || item->offset + item->size > table->offset + table->size ||
            !sortKey(*item, item->offset - table->offset, key.ascending, true, row)) {
            error(key.item ? key.item->at : s.at, "this is no key of the table");
            return;
        }
        list += joined(", &", name, "[", &key - keys.data(), "]");
        rows += joined(row, ", ");
    }
    globals_ += joined("static const TableSortKey ", name, "[", keys.size(), "] = {", rows, "};\n");

    // The table's address: its first occurrence; tables around it need their subscripts.
    Reference first = *s.file;
    Expr one;
    one.kind = ExprKind::Number;
    one.text = "1";
    one.at = s.at;
    size_t tables = 0;
    for (const Item *a = table; a; a = a->parent) tables += a->occurs;
    if (first.subscripts.size() + 1 == tables) first.subscripts.push_back(&one);
    Loc loc = locate(first, true);
    if (!loc.good()) return;
    put(emits(Do::SortTable, Of::Table), "(0, ", loc.address, ", ", table->size, ", (int32_t)", currentCount(*table),
        ", ", weights, ", ", keys.size(), list, ");\n");
}

// The keys of a sort file's records as rows; empty: an error was told.
std::string Emitter::sortKeys(const SortStatement &s, const File &file, size_t &count)
{
    std::string rows;
    count = 0;
    for (const SortKey &key : s.keys) {
        if (!key.item) {
            error(s.at, "a sort key needs an item");
            continue;
        }
        const Item *item = meaning_.key(*program_, *key.item, file.name);
        if (!item) return "";
        std::string row;
        if (recordOf(*item).file != &file || !sortKey(*item, item->offset, key.ascending, false, row)) {
            error(key.item->at, wordText(item->name) + " is no key in a record of " + wordText(file.name));
            return "";
        }
        rows += joined(row, ", ");
        count++;
    }
    if (count == 0) error(s.at, "SORT needs a key (ON ASCENDING KEY or ON DESCENDING KEY)");
    return rows;
}

// SORT and MERGE of files: the call that begins, the procedures, and between them the call that
// sorts what the input procedure released.
void Emitter::sortFile(const SortStatement &s, const File &file, const std::string &weights)
{
    size_t count;
    std::string rows = sortKeys(s, file, count);
    if (rows.empty()) return;
    const std::string verb = wordText(s.verb);
    if (s.usingFiles.empty() && !s.hasInput)
        error(s.at, verb + (s.verb == K_MERGE ? " needs USING" : " needs USING or an INPUT PROCEDURE"));
    if (s.givingFiles.empty() && !s.hasOutput) error(s.at, verb + " needs GIVING or an OUTPUT PROCEDURE");

    std::string n = cat(++inFile_.constants), prefix = cat("p", program_->number, "_");
    globals_ += joined("static struct { uint32_t count, reserved; TableSortKey keys[", count, "]; } K", n, " = {",
                       count, ", 0, {", rows, "}};\n");
    globals_ += joined("static SortVerbBlock B", n, " = {.sortReturn = &", prefix,
                       "sortReturn, .lineNumber = ", group_.spot(s.at).line, ", .program = &", prefix, "pcb};\n");
    globals_ +=
        joined("static SortRecordDesc R", n,
               " = {.recordFormat = ", file.minRecord != file.maxRecord ? "ZVK_SORT_VARIABLE" : "ZVK_SORT_FIXED",
               ", .recordLength = ", file.maxRecord, "};\n");
    globals_ += joined("static char Q", n, "[2];\n");

    std::string usingList = sortFiles(s.usingFiles, true), givingList = sortFiles(s.givingFiles, false);
    std::string eighth = temp("uint64_t", "[3]");
    const std::string fillEighth = cat(eighth, "[0] = (uint64_t)(intptr_t)", weights, "; ", eighth, "[1] = 0; ", eighth,
                                       "[2] = ZVK_SORT_STABLE;\n");
    auto operation = [&](const char *which) {
        return cat(emits(Do::Sort), "(", which, ", &B", n, ", &R", n, ", &K", n, ", Q", n, ", &", usingList, ", &",
                   givingList, ", ", eighth, ");\n");
    };
    put(fillEighth);
    put(prefix, "sortReturn = 0;\n");
    const std::string after = label();
    const bool mayEnd = (s.hasInput || s.hasOutput) && inFile_.sortReturn;
    if (mayEnd) put("memcpy(", prefix, "sortCells, x, sizeof x);\n", prefix, "sortEnd = &&", after, ";\n");
    put(operation(s.verb == K_MERGE ? "ZVK_SORT_MERGE" : "ZVK_SORT_START"));
    const std::string failed = operation("ZVK_SORT_FAILED");
    if (s.hasInput) {
        openBlock();
        performRange(s.inputFirst, s.inputLast, "SORT INPUT");
        closeBlock();
        // The lists are temporaries of this block: fill them again, for the procedure may have
        // jumped through the block.
        usingList = sortFiles(s.usingFiles, true), givingList = sortFiles(s.givingFiles, false);
        put(fillEighth);
        put(operation("ZVK_SORT_RUN"));
    }
    if (s.hasOutput) {
        openBlock();
        performRange(s.outputFirst, s.outputLast, s.verb == K_MERGE ? "MERGE OUTPUT" : "SORT OUTPUT");
        closeBlock();
    }
    if (!mayEnd) return;
    put("if (0) {\n", after, ":\nmemcpy(x, ", prefix, "sortCells, sizeof x);\nB", n, ".messageOff = 1;\n", failed, "B",
        n, ".messageOff = 0;\n}\n", prefix, "sortEnd = 0;\n");
}

void Emitter::sortStatement(const SortStatement &s)
{
    std::string weights = sortWeights(s);
    for (Program *p = program_; p; p = p->parent)
        for (File *f : p->files)
            if (f->name == s.file->names[0] && f->sortFile) return sortFile(s, *f, weights);
    sortTable(s, weights);
}

// Whether the program sets SORT-RETURN: 16 in an input or output procedure ends the SORT at the
// next RELEASE or RETURN. The PERFORMs in hand end with it.
bool Emitter::asksForSortReturn() const
{
    return std::any_of(group_.tokens.begin(), group_.tokens.end(),
                       [](const Token &token) { return token.word == K_SORT_RETURN; });
}

void Emitter::endSort()
{
    if (inFile_.sortReturn)
        put("if (p", program_->number, "_sortReturn == 16 && p", program_->number, "_sortEnd) goto *p",
            program_->number, "_sortEnd;\n");
}

void Emitter::releaseStatement(const FileStatement &s)
{
    Loc record;
    File *f = fileOfRecord(s, record);
    if (!f) return;
    if (!f->sortFile) {
        error(s.record->at, wordText(s.record->names[0]) + " is no record of a sort file");
        return;
    }
    if (s.from) move(s.from, record);
    std::string status = temp("uint16_t");
    bool variable = f->minRecord != f->maxRecord;
    std::string length = variable ? cat("(uint32_t)", locateItem(*record.item).length) : cat(f->maxRecord);
    if (f->recordDepending) {
        Loc loc = locate(*f->recordDepending);
        if (loc.good()) length = cat("(uint32_t)", toInt(scaleTo(itemNumber(loc), 0, false)).text);
    }
    endSort();
    put(status, " = 0;\n", emits(Do::Release), "(", length, ", F", f->number, "->record, &", status, ");\n");
    put("if (", status, ") p", program_->number, "_sortReturn = (int16_t)", status, ";\n");
}

void Emitter::returnStatement(const FileStatement &s)
{
    File *f = meaning_.file(*program_, s.file, s.fileAt);
    if (!f) return;
    if (!f->sortFile) {
        error(s.fileAt, wordText(s.file) + " is no sort file");
        return;
    }
    std::string status = temp("uint16_t"), length = temp("uint32_t");
    endSort();
    put(status, " = 0;\n", length, " = ", f->maxRecord, ";\n", emits(Do::Return), "(&", length, ", F", f->number,
        "->record, &", status, ");\n");
    if (f->recordDepending) {
        Loc loc = locate(*f->recordDepending, true);
        if (loc.good()) {
            put("if (!", status, ") {\n");
            store(integerNumber(cat("(int64_t)", length), 9, false), loc, false, "");
            put("}\n");
        }
    }
    if (s.into) {
        Loc to = locate(*s.into, true);
        if (to.good()) {
            put("if (!", status, ") {\n");
            if (f->records.size() == 1 && f->minRecord == f->maxRecord) {
                moveLoc(locateItem(*f->records[0]), to);
            } else {
                Text t;
                t.address = cat("F", f->number, "->record");
                t.length = f->minRecord == f->maxRecord ? cat(f->maxRecord) : length;
                if (f->minRecord == f->maxRecord) t.fixed = f->maxRecord;
                moveText(t, to);
            }
            put("}\n");
        }
    }
    phrases(s.end, status);
}

} // namespace kvrcob
