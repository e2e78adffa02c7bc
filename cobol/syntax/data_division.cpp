// DATA DIVISION: file descriptions and data descriptions. Levels become a tree here; sizes and
// places come later (meaning/layout.cpp).
#include "cobol/syntax/parser.h"

#include <cstdlib>

namespace kvrcob {

// After an error: to the next entry that begins with a level number, or to a header.
void Parser::skipToDataEntry()
{
    do skipToPeriod();
    while (!atEnd() && !atNumber() && !atSectionOrDivision() && !at(K_FD) && !at(K_SD) && !atProgramEnd() &&
           !atProgramId());
}

void Parser::dataDivision(Program &p)
{
    if (at(K_DATA, K_DIVISION)) {
        step();
        step();
        expectPeriod();
        panic_ = false;
    }
    for (;;) {
        panic_ = false;
        if (takeMark('.')) continue;
        bool section = aheadIs(1, K_SECTION);
        if (at(K_FILE) && section) {
            step();
            step();
            expectPeriod();
            fileSection(p);
        } else if (at(K_WORKING_STORAGE) && section) {
            step();
            step();
            expectPeriod();
            records(p, Item::WorkingStorage, nullptr);
        } else if (at(K_LOCAL_STORAGE) && section) {
            step();
            step();
            expectPeriod();
            records(p, Item::LocalStorage, nullptr);
        } else if (at(K_LINKAGE) && section) {
            step();
            step();
            expectPeriod();
            records(p, Item::Linkage, nullptr);
        } else if ((at(K_REPORT) || at(K_SCREEN) || at(K_COMMUNICATION)) && section) {
            notBuilt(here(), "the " + wordText(now().word) + " SECTION");
            step();
            while (!atEnd() && !(atSectionOrDivision())) step();
        } else if (at(K_FD) || at(K_SD)) {
            fileSection(p);
        } else if (at(K_PROCEDURE) || at(K_END) || at(K_IDENTIFICATION) || at(K_ID) || atEnd()) {
            return;
        } else {
            error("expected a section of the DATA DIVISION or the PROCEDURE DIVISION before " + shown() + headerLike());
            if (!atNumber()) skipToDataEntry();
            panic_ = false;
            if (atNumber()) records(p, Item::WorkingStorage, nullptr); // its header is missing
        }
    }
}

void Parser::fileSection(Program &p)
{
    for (;;) {
        panic_ = false;
        if (takeMark('.')) continue;
        if (at(K_FD) || at(K_SD)) {
            fileDescription(p);
        } else if (at(K_RD) || at(K_CD)) {
            notBuilt(here(), wordText(now().word));
            skipToPeriod();
        } else {
            return;
        }
    }
}

// The words of a file description that name something and count no further: DATA RECORD IS name.
void Parser::passNames()
{
    while (atName() && !at(K_RECORDING)) step();
}

void Parser::fileDescription(Program &p)
{
    bool sort = at(K_SD);
    step();
    File *f = atName() ? findFile(p, now().word) : nullptr;
    if (!f) {
        if (atName())
            error("the file " + wordText(now().word) + " has no SELECT");
        else
            error("expected the file's name before " + shown());
        panic_ = false;
        f = make<File>();
        f->program = &p;
        f->name = now().word;
        f->at = here();
        p.files.push_back(f);
    }
    if (f->described) {
        error("the file " + wordText(f->name) + " has a description already");
        panic_ = false;
    }
    f->described = true;
    f->sortFile = sort;
    f->at = here();
    step();
    while (!atMark('.') && !atEnd() && !panic_) {
        take(K_IS);
        if (take(K_EXTERNAL)) {
            f->external = true;
        } else if (take(K_GLOBAL)) {
            f->global = true;
        } else if (take(K_BLOCK)) {
            take(K_CONTAINS);
            int64_t n;
            parseInteger(n);
            if (take(K_TO)) parseInteger(n);
            take(K_RECORDS);
            take(K_CHARACTERS);
        } else if (at(K_RECORD) && ((!aheadIs(1, K_IS) && !aheadIs(1, K_ARE)) || aheadIs(2, K_VARYING))) {
            step();
            take(K_IS);
            f->hasRecordClause = true;
            if (at(K_VARYING)) {
                step();
                f->recordVarying = true;
                take(K_IN);
                take(K_SIZE);
                take(K_FROM);
                int64_t low = 0, high = 0;
                if (atNumber()) {
                    parseInteger(low);
                    f->recordMin = static_cast<uint32_t>(low);
                }
                if (take(K_TO)) {
                    parseInteger(high);
                    f->recordMax = static_cast<uint32_t>(high);
                }
                take(K_CHARACTERS);
                if (take(K_DEPENDING)) {
                    take(K_ON);
                    f->recordDepending = identifier();
                }
            } else {
                take(K_CONTAINS);
                int64_t low = 0, high = 0;
                if (parseInteger(low)) {
                    high = low;
                    if (take(K_TO)) {
                        parseInteger(high);
                        f->recordVarying = true;
                    }
                    f->recordMin = static_cast<uint32_t>(low);
                    f->recordMax = static_cast<uint32_t>(high);
                    take(K_CHARACTERS);
                    if (take(K_DEPENDING)) {
                        take(K_ON);
                        f->recordDepending = identifier();
                    }
                }
            }
        } else if (take(K_LABEL)) {
            warn("obsolete", here(), "LABEL RECORDS is obsolete");
            take(K_RECORDS);
            take(K_RECORD);
            take(K_IS);
            take(K_ARE);
            if (!take(K_STANDARD) && !take(K_OMITTED)) passNames();
        } else if (take(K_VALUE)) {
            take(K_OF);
            while (now().kind == TokenKind::Name && !atMark('.') && !at(K_RECORD) && !at(K_DATA) && !at(K_LABEL) &&
                   !at(K_BLOCK) && !at(K_LINAGE) && !at(K_CODE_SET) && !at(K_REPORT) && !at(K_REPORTS) &&
                   !at(K_RECORDING) && !at(K_IS) && !at(K_EXTERNAL) && !at(K_GLOBAL)) {
                bool fileId = at(K_FILE_ID) || wordText(now().word) == "FILE-ID" || wordText(now().word) == "ID" ||
                              wordText(now().word) == "IDENTIFICATION";
                step();
                take(K_IS);
                Expr *value = nullptr;
                if (atString() || atNumber() || atFigurative())
                    value = literal();
                else if (atName()) {
                    value = node(ExprKind::Reference, here());
                    value->ref = identifier();
                }
                if (fileId) f->valueOfFileId = value;
                if (fileId && value->kind == ExprKind::Reference && !f->assign && !f->assignItem)
                    f->assignItem = value->ref;
            }
        } else if (at(K_DATA) || (at(K_RECORD) && (aheadIs(1, K_IS) || aheadIs(1, K_ARE)))) {
            take(K_DATA);
            take(K_RECORD);
            take(K_RECORDS);
            take(K_IS);
            take(K_ARE);
            passNames();
        } else if (take(K_LINAGE)) {
            take(K_IS);
            f->linage = operand();
            take(K_LINES);
            for (;;) {
                if (at(K_WITH) && aheadIs(1, K_FOOTING)) step();
                if (take(K_FOOTING)) {
                    take(K_AT);
                    f->footing = operand();
                    continue;
                }
                if (at(K_LINES) && (aheadIs(1, K_AT) || aheadIs(1, K_TOP) || aheadIs(1, K_BOTTOM))) step();
                if (at(K_AT) && (aheadIs(1, K_TOP) || aheadIs(1, K_BOTTOM))) step();
                if (take(K_TOP)) {
                    f->top = operand();
                    take(K_LINES);
                    continue;
                }
                if (take(K_BOTTOM)) {
                    f->bottom = operand();
                    take(K_LINES);
                    continue;
                }
                break;
            }
        } else if (take(K_CODE_SET)) {
            take(K_IS);
            if (atName()) {
                f->codeSet = now().word;
                step();
            } else {
                error("expected the alphabet's name before " + shown());
            }
        } else if (take(K_RECORDING)) {
            take(K_MODE);
            take(K_IS);
            f->recordingMode = std::string(now().text);
            if (!atMark('.')) step();
        } else if (at(K_REPORT) || at(K_REPORTS)) {
            notBuilt(here(), "REPORT IS (the report writer)");
        } else {
            error("expected a clause of the file description before " + shown());
        }
    }
    if (panic_)
        skipToPeriod();
    else
        expectPeriod();
    panic_ = false;
    records(p, Item::FileSection, f);
}

static bool inTable(const Item &item)
{
    for (const Item *a = &item; a; a = a->parent)
        if (a->occurs) return true;
    return false;
}

// Data descriptions up to the next header; levels become a tree.
void Parser::records(Program &p, Item::Section section, File *file)
{
    std::vector<Item *> open; // the path to the latest item
    Item *lastItem = nullptr; // takes level 88
    for (;;) {
        panic_ = false;
        if (takeMark('.')) continue;
        if (at(K_EXEC)) {
            Tok start = here();
            step();
            execBlock(start);
            continue;
        }
        if (!atNumber()) {
            if (atName() && !aheadIs(1, K_SECTION) && !aheadIs(1, K_DIVISION) && section != Item::FileSection) {
                error("expected a level number before " + shown());
                skipToDataEntry();
                continue;
            }
            return;
        }
        Item *item = dataDescription(p, section);
        if (!item) continue;
        item->file = file;
        item->program = &p;
        if (item->level == 88) {
            if (!lastItem) {
                errorAt(item->at, "a condition-name (level 88) needs an item in front of it");
                continue;
            }
            item->parent = lastItem;
            lastItem->conditions.push_back(item);
            if (inTable(*item)) tableNames_.insert(item->name);
            continue;
        }
        if (item->isConstant) {
            p.constants.push_back(item);
            continue;
        }
        if (item->level == 66) {
            Item *record = open.empty() ? nullptr : open.front();
            if (!record) {
                errorAt(item->at, "RENAMES needs a record in front of it");
                continue;
            }
            item->parent = record;
            record->conditions.push_back(item); // found by name there
            lastItem = item;
            continue;
        }
        if (item->level == 1 || item->level == 77) {
            open.clear();
            open.push_back(item);
            if (item->occurs) tableNames_.insert(item->name);
            lastItem = item;
            if (section == Item::FileSection && file)
                file->records.push_back(item);
            else
                p.records.push_back(item);
            continue;
        }
        while (!open.empty() && open.back()->level >= item->level) open.pop_back();
        if (open.empty()) {
            errorAt(item->at, "level " + std::to_string(item->level) + " has no record (level 01) above it");
            panic_ = false;
            // Treat it as a record of its own, so that its names are known.
            item->level = 1;
            open.push_back(item);
            (section == Item::FileSection && file ? file->records : p.records).push_back(item);
            lastItem = item;
            continue;
        }
        if (open.back()->level == 77) errorAt(item->at, "an item of level 77 cannot be divided");
        if (!open.back()->children.empty() && open.back()->children.back()->level != item->level &&
            open.back()->children.back()->level > item->level && item->level != 66)
            warn("level", item->at,
                 "the level number " + std::to_string(item->level) + " differs from that of the items before it");
        item->parent = open.back();
        open.back()->children.push_back(item);
        open.push_back(item);
        if (inTable(*item)) tableNames_.insert(item->name);
        lastItem = item;
    }
}

// A usage that could be a name, where it is the whole entry and no group: 05 BINARY-LONG UNSIGNED.
bool Parser::atUsageAlone(int level) const
{
    size_t n = aheadIs(1, K_SIGNED) || aheadIs(1, K_UNSIGNED) ? 2 : 1;
    if (ahead(n).kind != TokenKind::Punct || ahead(n).word != '.') return false;
    if (ahead(n + 1).kind != TokenKind::Number) return true;
    int next = std::atoi(std::string(ahead(n + 1).text).c_str());
    return next <= level || next > 49;
}

Item *Parser::dataDescription(Program &p, Item::Section section)
{
    Item *item = make<Item>();
    item->at = here();
    item->section = section;
    item->level = std::atoi(std::string(now().text).c_str());
    Tok levelAt = here();
    if (now().text.size() > 2 || item->level < 1 ||
        (item->level > 49 && item->level != 66 && item->level != 77 && item->level != 78 && item->level != 88)) {
        error("a level number is from 01 to 49, or 66, 77, 78 or 88");
        skipToPeriod();
        return nullptr;
    }
    step();
    if (take(K_FILLER)) {
    } else if (usageWord(*item) && (!atName() || atUsageAlone(item->level))) {
        // An item without a name: 05 BINARY-LONG.
    } else if (atName()) {
        // Words that are clauses only where no name is before them.
        item->at = here();
        item->name = now().word;
        if (item->name < K_count) declared_.insert(item->name);
        dataNames_.insert(item->name);
        step();
    } else if (now().kind == TokenKind::Name && !at(K_PIC) && !at(K_PICTURE) && !at(K_REDEFINES) && !at(K_OCCURS) &&
               !at(K_USAGE) && !at(K_VALUE) && !at(K_VALUES) && !at(K_SIGN) && !at(K_LEADING) && !at(K_TRAILING) &&
               !at(K_IS) && !at(K_JUST) && !at(K_JUSTIFIED) && !at(K_SYNC) && !at(K_SYNCHRONIZED) && !at(K_BLANK) &&
               !at(K_EXTERNAL) && !at(K_GLOBAL)) {
        error(wordText(now().word) + " is a reserved word; it cannot be an item's name");
        skipToPeriod();
        return nullptr;
    }
    if (item->level == 78 || ((item->level == 1 || item->level == 77) && at(K_CONSTANT))) {
        item->isConstant = true;
        take(K_CONSTANT);
        take(K_IS);
        take(K_GLOBAL);
        if (take(internWord("AS")) || take(K_VALUE)) {
        } else if (at(K_FROM)) {
            notBuilt(here(), "CONSTANT FROM");
        }
        take(K_IS);
        item->constant = expression();
        if (panic_)
            skipToPeriod();
        else
            expectPeriod();
        panic_ = false;
        return item;
    }
    if (item->level == 66) {
        expect(K_RENAMES);
        item->renamesFrom = identifier();
        if (take(K_THRU) || take(K_THROUGH)) item->renamesThru = identifier();
        if (panic_)
            skipToPeriod();
        else
            expectPeriod();
        panic_ = false;
        return item;
    }
    if (item->level == 88) {
        if (!item->name) errorAt(levelAt, "a condition-name (level 88) needs a name");
        if (at(K_VALUE) || at(K_VALUES))
            valueClause(*item);
        else
            error("expected VALUE before " + shown());
        if (at(K_WHEN) || at(K_FALSE)) {
            take(K_WHEN);
            take(K_SET);
            take(K_TO);
            if (take(K_FALSE)) {
                take(K_IS);
                item->whenFalse = literal();
            }
        }
        if (panic_)
            skipToPeriod();
        else
            expectPeriod();
        panic_ = false;
        return item;
    }
    while (!atMark('.') && !atEnd() && !panic_ && !atNumber()) { // a number: a period is missing
        Tok clause = here();
        if (take(K_REDEFINES)) {
            item->redefinesAt = here();
            if (atName()) {
                item->redefinesName = now().word;
                step();
            } else {
                error("expected the name of the item that is redefined before " + shown());
            }
            continue;
        }
        if (take(K_PIC) || take(K_PICTURE)) {
            take(K_IS);
            if (now().kind != TokenKind::Picture || now().text == ".") {
                error("expected a picture string before " + (now().text == "." ? "\".\"" : shown()));
                if (now().kind == TokenKind::Picture) { // "PIC." and nothing else
                    item->broken = true;
                    panic_ = false;
                    step();
                    return item;
                }
                continue;
            }
            if (item->hasPicture) errorAt(clause, "a second PICTURE clause");
            item->hasPicture = true;
            item->pictureText = now().text;
            item->pictureAt = here();
            step();
            continue;
        }
        if (take(K_OCCURS)) {
            occursClause(p, *item);
            continue;
        }
        if (item->occurs && (at(K_DEPENDING) || at(K_ASCENDING) || at(K_DESCENDING) || at(K_INDEXED))) {
            occursPhrases(p, *item);
            continue;
        }
        if (at(K_VALUE) || at(K_VALUES)) {
            valueClause(*item);
            continue;
        }
        if (at(K_SIGN) || at(K_LEADING) || at(K_TRAILING)) {
            take(K_SIGN);
            take(K_IS);
            item->hasSign = true;
            if (take(K_LEADING))
                item->signLeading = true;
            else if (!take(K_TRAILING))
                error("expected LEADING or TRAILING before " + shown());
            if (take(K_SEPARATE)) {
                item->signSeparate = true;
                take(K_CHARACTER);
            }
            continue;
        }
        if (take(K_SYNC) || take(K_SYNCHRONIZED)) {
            item->synchronized = true;
            take(K_LEFT);
            take(K_RIGHT);
            continue;
        }
        if (take(K_JUST) || take(K_JUSTIFIED)) {
            take(K_RIGHT);
            item->justified = true;
            continue;
        }
        if (take(K_BLANK)) {
            take(K_WHEN);
            if (!take(K_ZERO) && !take(K_ZEROS) && !take(K_ZEROES)) error("expected ZERO before " + shown());
            item->blankWhenZero = true;
            continue;
        }
        if (at(K_IS) && (aheadIs(1, K_EXTERNAL) || aheadIs(1, K_GLOBAL))) step();
        if (take(K_EXTERNAL)) {
            item->external = true;
            if (take(internWord("AS")) && atString()) {
                item->externalName = internWord(now().text);
                step();
            }
            continue;
        }
        if (take(K_GLOBAL)) {
            item->global = true;
            continue;
        }
        if (at(K_USAGE) || usageWord(*item)) {
            usageClause(*item);
            continue;
        }
        if (take(K_VOLATILE)) continue;
        if (take(K_BASED)) {
            // A record without storage of its own: ALLOCATE or SET ADDRESS OF gives it some.
            if (item->level != 1 && item->level != 77) errorAt(clause, "BASED is for items of level 01 or 77");
            item->based = true;
            item->section = Item::Linkage;
            continue;
        }
        if (at(K_ANY) && aheadIs(1, K_LENGTH)) {
            step();
            step();
            item->anyLength = true;
            continue;
        }
        if (at(K_ANY) || at(K_TYPEDEF) || at(K_TYPE)) {
            notBuilt(here(), "the clause " + wordText(now().word));
            continue;
        }
        if (at(K_LINE) || at(K_COLUMN) || at(K_SOURCE) || at(K_GROUP)) {
            notBuilt(here(), "the clause " + wordText(now().word));
            continue;
        }
        errorAt(clause, "expected a clause of the data description before " + shown());
    }
    item->broken = panic_;
    if (panic_)
        skipToPeriod();
    else
        expectPeriod();
    panic_ = false;
    return item;
}

} // namespace kvrcob
