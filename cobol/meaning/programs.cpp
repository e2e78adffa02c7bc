// A program's names and layout, and the checks that need no statement.
#include "cobol/meaning/names.h"

#include <algorithm>

namespace kvrcob {

void Meaning::analyse()
{
    for (Program *p : group_.programs) program(*p);
    Callables symbols;
    calledOnce(group_.programs, symbols, symbols);
}

// Programs side by side have names of their own. Those of the outermost programs, and of all
// entries, are symbols of the C text.
void Meaning::calledOnce(const std::vector<Program *> &programs, Callables &among, Callables &symbols)
{
    const auto enterOnce = [this](const std::string &symbol, Word name, Tok at, Callables &names) {
        const auto [first, fresh] = names.emplace(symbol, at);
        if (fresh || !name) return;
        error(at, "there is another program or entry " + wordText(name));
        diagnostics().note(group_.spot(first->second), "it is named here");
    };
    for (const Program *p : programs) {
        enterOnce(p->cName, p->name, p->at, among);
        for (const EntryStatement *entry : p->entryPoints)
            enterOnce(wordText(entry->name), entry->name, entry->at, symbols);
        Callables contained;
        calledOnce(p->nested, contained, symbols);
    }
}

void Meaning::enter(Program &p, Item *item)
{
    if (item->name) p.names->items[item->name].push_back(item);
}

void Meaning::enterTree(Program &p, Item *item)
{
    enter(p, item);
    for (Item *condition : item->conditions) enter(p, condition);
    for (Item *index : item->indexes) {
        index->number = ++indexes_;
        index->parent = nullptr;
        index->program = &p;
        index->size = 8;
        index->global = false;
        index->picture.digits = 10;
        index->picture.sign = true;
        index->picture.category = Category::Numeric;
        enter(p, index);
        p.indexNames.push_back(index);
    }
    for (Item *child : item->children) {
        child->program = item->program;
        child->file = item->file;
        enterTree(p, child);
    }
}

static std::string cNameOf(std::string_view name)
{
    std::string out;
    for (char c : name) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
        if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_')
            out += c;
        else if (c == '-')
            out += "__";
        else
            out += "_x";
    }
    if (out.empty() || (out[0] >= '0' && out[0] <= '9')) out = "_" + out;
    return out;
}

void Meaning::enterNames(Program &p)
{
    p.names = new Names();
    p.number = ++programs_;
    p.cName = cNameOf(p.nameText);
    describe(*this, p);
    for (File *f : p.files) f->number = ++files_;
    for (Item *constant : p.constants) enter(p, constant);
    auto enterRecord = [&](Item *record) {
        record->number = ++records_;
        enterTree(p, record);
    };
    for (File *f : p.files) std::for_each(f->records.begin(), f->records.end(), enterRecord);
    std::for_each(p.records.begin(), p.records.end(), enterRecord);
    for (size_t i = 0; i < p.procedures.size(); i++) {
        p.procedures[i].number = static_cast<uint32_t>(i);
        if (p.procedures[i].name) p.names->procedures[p.procedures[i].name].push_back(i);
    }
    specials(p);
}

// By how much an item is shorter when its tables have the fewest occurrences.
static uint32_t shrinks(const Item &item)
{
    uint32_t inner = 0;
    for (const Item *child : item.children)
        if (!child->redefines) inner += shrinks(*child);
    if (!item.occurs) return inner;
    return item.depending ? (item.occursMax - item.occursMin) * item.size + item.occursMin * inner
                          : item.occursMax * inner;
}

// The lengths of a file's records: of its descriptions, and of its RECORD clause.
void Meaning::recordLengths(Program &p, File &f)
{
    uint32_t low = UINT32_MAX, high = 0;
    for (Item *record : f.records) {
        layOut(*this, p, *record);
        low = std::min(low, record->size - std::min(record->size, shrinks(*record)));
        high = std::max(high, record->size);
    }
    if (f.records.empty()) low = high = f.recordMax;
    f.minRecord = low;
    f.maxRecord = high;
    if (f.hasRecordClause) {
        if (f.recordMax > high) f.maxRecord = f.recordMax;
        if (f.recordVarying) {
            if (f.recordMin) f.minRecord = f.recordMin;
            if (f.recordMax) f.maxRecord = std::max(high, f.recordMax);
        } else {
            // RECORD CONTAINS n: all records have this length; n TO m: each has its own
            f.maxRecord = std::max(high, f.recordMax);
            f.minRecord = f.recordMin && f.recordMin < f.recordMax ? std::min(low, f.recordMin) : f.maxRecord;
        }
    }
    if (f.minRecord > f.maxRecord) f.minRecord = f.maxRecord;
    if (f.recordVarying && f.minRecord == f.maxRecord && f.recordMin == 0)
        f.minRecord = low == high ? (low ? 1 : 0) : low;
}

void Meaning::redefinition(Program &p, Item &record)
{
    if (!record.redefinesName) return;
    for (Item *other : p.records)
        if (other->name == record.redefinesName && other->section == record.section && other != &record) {
            record.redefines = other->redefines ? other->redefines : other;
            return;
        }
    error(record.redefinesAt, "there is no record " + wordText(record.redefinesName) + " here to redefine");
}

// What PROCEDURE DIVISION USING and the ENTRY statements name.
void Meaning::parameters(Program &p)
{
    auto parameter = [&](const Expr *e) -> Item * {
        Item *item = e && e->kind == ExprKind::Reference ? resolve(p, *e->ref) : nullptr;
        if (!item || (item->section == Item::Linkage && !item->parent)) return item;
        error(e->at, wordText(item->name) + " is no record of the LINKAGE SECTION");
        return nullptr;
    };
    for (size_t i = 0; i < p.parameters.size(); i++)
        if (Item *item = parameter(p.parameters[i].value)) item->parameter = static_cast<int>(i);
    for (const Item *record : p.records)
        if (record->anyLength && record->section == Item::Linkage && record->parameter < 0)
            notBuilt(record->at, "ANY LENGTH of other items than parameters");
    for (EntryStatement *entry : p.entryPoints)
        for (const CallStatement::Argument &argument : entry->parameters) {
            const Item *item = parameter(argument.value);
            // It travels as a machine word, which is the item.
            if (argument.mode == CallStatement::Value && item && item->usage != Usage::Native &&
                item->category != Category::Pointer && !(item->category == Category::Alphanumeric && item->size == 1))
                error(argument.value->at, "BY VALUE of an ENTRY is supported for COMP-5 and pointers only");
        }
}

// How files are used decides what a sequential one is: a report, or records.
void Meaning::usesOfFiles(Program &p)
{
    for (Program *q = &p; q; q = q->parent)
        for (File *f : q->files) {
            for (Word record : p.advancedRecords)
                for (const Item *r : f->records) f->advancing |= r->name == record;
            for (Word name : p.readFiles) f->readable |= f->name == name;
        }
}

void Meaning::program(Program &p)
{
    enterNames(p);
    for (File *f : p.files) {
        recordLengths(p, *f);
        if (f->selected && !f->described) error(f->at, "the file " + wordText(f->name) + " has no FD or SD");
    }
    for (Item *record : p.records) {
        redefinition(p, *record);
        layOut(*this, p, *record);
    }
    for (const Item *c : p.constants) {
        const Expr *value = constant(p, c->constant);
        if (value && value->kind == ExprKind::Reference && symbolic(p, value->ref->names[0]) < 0)
            error(c->at, "the value of " + wordText(c->name) + " is no constant");
    }
    parameters(p);
    usesOfFiles(p);
    for (Program *inner : p.nested) program(*inner);
}

} // namespace kvrcob
