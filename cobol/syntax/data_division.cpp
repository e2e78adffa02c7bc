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

// Whether an item needs subscripts; one of a type may, for tables may be of the type.
static bool inTable(const Item &item)
{
    for (const Item *a = &item; a; a = a->parent)
        if (a->occurs || (a->isTypedef && a != &item)) return true;
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

} // namespace kvrcob
