// The special registers of a program: items that no description names.
#include "cobol/meaning/names.h"

namespace kvrcob {

// DEBUG-ITEM and its parts, for USE FOR DEBUGGING.
void Meaning::debugItem(Program &p)
{
    Item *group = make<Item>();
    group->name = K_DEBUG_ITEM;
    group->at = p.at;
    group->program = &p;
    group->section = Item::Special;
    group->category = Category::Group;
    group->laidOut = true;
    group->special = "p" + std::to_string(p.number) + "_debugItem";
    uint32_t offset = 0;
    auto part = [&](Word name, uint32_t size, bool number) {
        Item *item = make<Item>();
        item->name = name;
        item->at = p.at;
        item->program = &p;
        item->section = Item::Special;
        item->parent = group;
        item->offset = offset;
        item->size = size;
        item->category = number ? Category::Numeric : Category::Alphanumeric;
        item->picture.category = item->category;
        item->picture.positions = size;
        item->picture.digits = number ? static_cast<int>(size) - 1 : 0;
        item->picture.sign = number;
        item->signForm = number ? SignForm::LeadingSeparate : SignForm::None;
        item->laidOut = true;
        offset += size + 1; // a blank between them
        group->children.push_back(item);
        if (!p.names->items.count(name)) enter(p, item);
    };
    part(K_DEBUG_LINE, 6, false);
    part(K_DEBUG_NAME, 30, false);
    part(K_DEBUG_SUB_1, 5, true);
    part(K_DEBUG_SUB_2, 5, true);
    part(K_DEBUG_SUB_3, 5, true);
    part(K_DEBUG_CONTENTS, 200, false);
    group->size = offset - 1;
    if (!p.names->items.count(K_DEBUG_ITEM)) enter(p, group);
}

// LINAGE-COUNTER of each file with a LINAGE clause.
void Meaning::linageCounters(Program &p)
{
    for (File *f : p.files) {
        if (!f->linage) continue;
        Item *counter = make<Item>();
        counter->name = K_LINAGE_COUNTER;
        counter->at = f->at;
        counter->program = &p;
        counter->file = f;
        counter->section = Item::Special;
        counter->usage = Usage::Native;
        counter->size = 4;
        counter->category = Category::Numeric;
        counter->picture.category = Category::Numeric;
        counter->picture.digits = 9;
        counter->laidOut = true;
        counter->nativeBinary = true;
        counter->isUnsigned = true;
        counter->special = "((uint8_t *)&F" + std::to_string(f->number) + "->linageCounter)";
        counter->global = f->global;
        f->linageCounter = counter;
        enter(p, counter);
    }
}

// A register that is a record of its own; `digits` 0: a text.
void Meaning::special(Program &p, Word name, Usage usage, uint32_t size, int digits, const std::string &address)
{
    if (p.names->items.count(name)) return;
    Item *item = make<Item>();
    item->name = name;
    item->at = p.at;
    item->level = 77;
    item->program = &p;
    item->section = Item::Special;
    item->usage = usage;
    item->size = size;
    item->category = digits == 0 ? Category::Alphanumeric : Category::Numeric;
    item->picture.category = item->category;
    item->picture.digits = digits;
    item->picture.positions = size;
    item->picture.sign = name != K_TALLY && usage != Usage::Display;
    item->signForm = SignForm::None;
    item->special = address;
    item->laidOut = true;
    item->nativeBinary = usage == Usage::Native;
    item->specialKind = name;
    enter(p, item);
}

// CURRENT-DATE and TIME-OF-DAY of older programs: only where no item has the name, so that theirs,
// and those of the programs around, go first. Null: it is neither.
Item *Meaning::clockRegister(Program &p, const Reference &ref)
{
    const Word date = internWord("CURRENT-DATE"), time = internWord("TIME-OF-DAY"), name = ref.names[0];
    if (ref.names.size() != 1 || (name != date && name != time) || p.names->items.count(name)) return nullptr;
    warning("obsolete", ref.at,
            name == date ? "CURRENT-DATE is a register, MM/DD/YY; the function is FUNCTION CURRENT-DATE"
                         : "the register TIME-OF-DAY is obsolete");
    if (name == date)
        special(p, name, Usage::Display, 8, 0, "kvr_register_of_clock(0)");
    else
        special(p, name, Usage::Display, 6, 6, "kvr_register_of_clock(1)");
    return p.names->items[name].front();
}

void Meaning::specials(Program &p)
{
    std::string prefix = "p" + std::to_string(p.number) + "_";
    special(p, K_RETURN_CODE, Usage::Native, 4, 9, "((uint8_t *)&" + prefix + "returnCode)");
    special(p, K_SORT_RETURN, Usage::Native, 2, 4, "((uint8_t *)&" + prefix + "sortReturn)");
    special(p, K_TALLY, Usage::Native, 4, 5, "((uint8_t *)&" + prefix + "tally)");
    special(p, K_WHEN_COMPILED, Usage::Display, 16, 0, "((uint8_t *)" + prefix + "whenCompiled)");
    if (p.usesXml) {
        special(p, K_XML_CODE, Usage::Native, 4, 9, "((uint8_t *)&" + prefix + "xml.code)");
        special(p, K_XML_EVENT, Usage::Display, 30, 0, "((uint8_t *)" + prefix + "xml.event)");
        special(p, K_XML_TEXT, Usage::Display, 1, 0, "((uint8_t *)(uintptr_t)" + prefix + "xml.text)");
        if (Item *text = p.names->items[K_XML_TEXT].front(); text->section == Item::Special) {
            text->specialLength = "((int64_t)" + prefix + "xml.textLength)";
            text->hasDepending = true;
        }
    }
    if (!p.uses.empty()) debugItem(p);
    linageCounters(p);
}

} // namespace kvrcob
