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

// Where the next item goes: the path to the latest one, and the item that level 88 belongs to.
struct Parser::OpenRecord {
    std::vector<Item *> path;
    Item *latest = nullptr;
    std::vector<Item *> &records; // of the file or the section
};

// A condition-name, level 88.
void Parser::placeCondition(Item *item, OpenRecord &open)
{
    if (!open.latest) return errorAt(item->at, "a condition-name (level 88) needs an item in front of it");
    item->parent = open.latest;
    open.latest->conditions.push_back(item);
    if (inTable(*item)) tableNames_.insert(item->name);
}

// RENAMES, level 66: its record finds it by name, as it does its condition-names.
void Parser::placeRenames(Item *item, OpenRecord &open)
{
    if (open.path.empty()) return errorAt(item->at, "RENAMES needs a record in front of it");
    item->parent = open.path.front();
    item->parent->conditions.push_back(item);
    open.latest = item;
}

// An item of its own, or one within the open record.
void Parser::placeItem(Item *item, OpenRecord &open)
{
    std::vector<Item *> &path = open.path;
    const bool top = item->level == 1 || item->level == 77;
    while (!path.empty() && (top || path.back()->level >= item->level)) path.pop_back();
    if (path.empty()) {
        if (!top) {
            errorAt(item->at, "level " + std::to_string(item->level) + " has no record (level 01) above it");
            panic_ = false;
            item->level = 1; // a record of its own, so that its names are known
        }
        open.records.push_back(item);
    } else {
        Item *group = path.back();
        if (group->level == 77) errorAt(item->at, "an item of level 77 cannot be divided");
        if (!group->children.empty() && group->children.back()->level > item->level)
            warn("level", item->at,
                 "the level number " + std::to_string(item->level) + " differs from that of the items before it");
        item->parent = group;
        group->children.push_back(item);
    }
    path.push_back(item);
    open.latest = item;
    if (inTable(*item)) tableNames_.insert(item->name);
}

// Data descriptions up to the next header; levels become a tree.
void Parser::records(Program &p, Item::Section section, File *file)
{
    OpenRecord open{{}, nullptr, section == Item::FileSection && file ? file->records : p.records};
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
        if (item->level == 88)
            placeCondition(item, open);
        else if (item->isConstant)
            p.constants.push_back(item);
        else if (item->level == 66)
            placeRenames(item, open);
        else
            placeItem(item, open);
    }
}

} // namespace kvrcob
