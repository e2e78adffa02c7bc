// See names.h.
#include "cobol/meaning/names.h"

#include <algorithm>

namespace kvrcob {

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

// RETURN-CODE and the other special registers are items that no description names.
void Meaning::specials(Program &p)
{
    auto add = [&](Word name, Usage usage, uint32_t size, int digits, const std::string &address) {
        if (p.names->items.count(name)) return;
        Item *item = make<Item>();
        item->name = name;
        item->at = p.at;
        item->level = 77;
        item->program = &p;
        item->section = Item::Special;
        item->usage = usage;
        item->size = size;
        item->category = usage == Usage::Display ? Category::Alphanumeric : Category::Numeric;
        item->picture.category = item->category;
        item->picture.digits = digits;
        item->picture.positions = size;
        item->picture.sign = name != K_TALLY;
        item->signForm = SignForm::None;
        item->special = address;
        item->laidOut = true;
        item->nativeBinary = usage == Usage::Native;
        item->specialKind = name;
        enter(p, item);
    };
    std::string prefix = "p" + std::to_string(p.number) + "_";
    add(K_RETURN_CODE, Usage::Native, 4, 9, "((uint8_t *)&" + prefix + "returnCode)");
    add(K_SORT_RETURN, Usage::Native, 2, 4, "((uint8_t *)&" + prefix + "sortReturn)");
    add(K_TALLY, Usage::Native, 4, 5, "((uint8_t *)&" + prefix + "tally)");
    add(K_WHEN_COMPILED, Usage::Display, 16, 0, "((uint8_t *)" + prefix + "whenCompiled)");
    if (p.usesXml) {
        add(K_XML_CODE, Usage::Native, 4, 9, "((uint8_t *)&" + prefix + "xml.code)");
        add(K_XML_EVENT, Usage::Display, 30, 0, "((uint8_t *)" + prefix + "xml.event)");
        add(K_XML_TEXT, Usage::Display, 1, 0, "((uint8_t *)(uintptr_t)" + prefix + "xml.text)");
        if (Item *text = p.names->items[K_XML_TEXT].front(); text->section == Item::Special) {
            text->specialLength = "((int64_t)" + prefix + "xml.textLength)";
            text->hasDepending = true;
        }
    }
    if (!p.uses.empty()) {
        // DEBUG-ITEM, for USE FOR DEBUGGING.
        Item *group = make<Item>();
        group->name = K_DEBUG_ITEM;
        group->at = p.at;
        group->program = &p;
        group->section = Item::Special;
        group->category = Category::Group;
        group->laidOut = true;
        group->special = prefix + "debugItem";
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

bool Meaning::analyse()
{
    for (Program *p : group_.programs) program(*p);
    return true;
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

void Meaning::program(Program &p)
{
    p.names = new Names();
    p.number = ++programs_;
    p.cName = cNameOf(p.nameText);
    for (File *f : p.files) f->number = ++files_;
    for (Item *constant : p.constants) enter(p, constant);
    for (File *f : p.files)
        for (Item *record : f->records) {
            record->number = ++records_;
            enterTree(p, record);
        }
    for (Item *record : p.records) {
        record->number = ++records_;
        enterTree(p, record);
    }
    for (size_t i = 0; i < p.procedures.size(); i++) {
        p.procedures[i].number = static_cast<uint32_t>(i);
        if (p.procedures[i].name) p.names->procedures[p.procedures[i].name].push_back(i);
    }
    specials(p);
    for (File *f : p.files) {
        uint32_t low = UINT32_MAX, high = 0;
        for (Item *record : f->records) {
            layOut(*this, p, *record);
            low = std::min(low, record->size - std::min(record->size, shrinks(*record)));
            high = std::max(high, record->size);
        }
        if (f->records.empty()) low = high = f->recordMax;
        f->minRecord = low;
        f->maxRecord = high;
        if (f->hasRecordClause) {
            if (f->recordMax > high) f->maxRecord = f->recordMax;
            if (f->recordVarying) {
                if (f->recordMin) f->minRecord = f->recordMin;
                if (f->recordMax) f->maxRecord = std::max(high, f->recordMax);
            } else {
                // RECORD CONTAINS n: all records have this length; n TO m: each has its own
                f->maxRecord = std::max(high, f->recordMax);
                f->minRecord = f->recordMin && f->recordMin < f->recordMax ? std::min(low, f->recordMin) : f->maxRecord;
            }
        }
        if (f->minRecord > f->maxRecord) f->minRecord = f->maxRecord;
        if (f->recordVarying && f->minRecord == f->maxRecord && f->recordMin == 0)
            f->minRecord = low == high ? (low ? 1 : 0) : low;
        if (!f->described && f->selected) error(f->at, "the file " + wordText(f->name) + " has no FD or SD");
        if (!f->selected && f->described) {
        }
    }
    for (Item *record : p.records) {
        if (record->redefinesName) {
            for (Item *other : p.records)
                if (other->name == record->redefinesName && other->section == record->section && other != record) {
                    record->redefines = other->redefines ? other->redefines : other;
                    break;
                }
            if (!record->redefines)
                error(record->redefinesAt,
                      "there is no record " + wordText(record->redefinesName) + " here to redefine");
        }
        layOut(*this, p, *record);
        if (record->redefines && record->size > record->redefines->size)
            record->redefines->size = record->redefines->size; // storage takes the longest, see emit
    }
    for (const Item *c : p.constants) {
        const Expr *value = constant(p, c->constant);
        if (value && value->kind == ExprKind::Reference && symbolic(p, value->ref->names[0]) < 0)
            error(c->at, "the value of " + wordText(c->name) + " is no constant");
    }
    for (size_t i = 0; i < p.parameters.size(); i++) {
        const Expr *e = p.parameters[i].value;
        if (!e || e->kind != ExprKind::Reference) continue;
        Item *item = resolve(p, *e->ref);
        if (!item) continue;
        if (item->section != Item::Linkage || item->parent)
            error(e->at, wordText(item->name) + " is no record of the LINKAGE SECTION");
        else
            item->parameter = static_cast<int>(i);
    }
    for (EntryStatement *entry : p.entryPoints)
        for (const CallStatement::Argument &parameter : entry->parameters) {
            Item *item = parameter.value->kind == ExprKind::Reference ? resolve(p, *parameter.value->ref) : nullptr;
            if (item && (item->section != Item::Linkage || item->parent))
                error(parameter.value->at, wordText(item->name) + " is no record of the LINKAGE SECTION");
            // It travels as a machine word, which is the item.
            if (parameter.mode == CallStatement::Value && item && item->usage != Usage::Native &&
                item->category != Category::Pointer && !(item->category == Category::Alphanumeric && item->size == 1))
                error(parameter.value->at, "BY VALUE of an ENTRY is supported for COMP-5 and pointers only");
        }
    // How files are used decides what a sequential one is: a report, or records.
    for (Word record : p.advancedRecords)
        for (Program *q = &p; q; q = q->parent)
            for (File *f : q->files)
                for (const Item *r : f->records)
                    if (r->name == record) f->advancing = true;
    for (Word name : p.readFiles)
        for (Program *q = &p; q; q = q->parent)
            for (File *f : q->files)
                if (f->name == name) f->readable = true;
    for (Program *inner : p.nested) program(*inner);
}

// Do the qualifiers name ancestors, from the inside out, and possibly the file?
bool Meaning::matches(const Item *item, const Reference &ref) const
{
    const Item *ancestor = item->parent;
    const File *file = item->file;
    if (item->isIndexName && item->table) {
        ancestor = item->table;
        file = item->table->file;
    }
    for (size_t i = 1; i < ref.names.size(); i++) {
        while (ancestor && ancestor->name != ref.names[i]) ancestor = ancestor->parent;
        if (ancestor) {
            ancestor = ancestor->parent;
            continue;
        }
        // The file's name is the outermost qualifier.
        if (i + 1 == ref.names.size() && file && file->name == ref.names[i]) return true;
        return false;
    }
    return true;
}

static bool isGlobal(const Item *item)
{
    if (item->isIndexName && item->table) return isGlobal(item->table);
    const Item *record = item;
    while (record->parent) record = record->parent;
    if (item->isConstant) return true;
    return record->global || (record->file && record->file->global);
}

void Meaning::suggest(Program &p, Word name, Tok at)
{
    if (group_.embedded || !told_.insert(name).second) return; // once for each name
    const std::string &text = wordText(name);
    for (const Program *owner = &p; owner; owner = owner->parent)
        for (const File *f : owner->files)
            if (f->name == name) {
                error(at, text + " is a file; a record or another data item is needed here");
                return;
            }
    for (const Procedure &procedure : p.procedures)
        if (procedure.name == name) {
            error(at, text + (procedure.isSection ? " is a section" : " is a paragraph") +
                          "; a data item is needed here");
            return;
        }
    if (text.rfind("END", 0) == 0 && isReserved(internWord("END-" + text.substr(3)))) { // ENDIF
        error(at, text + " is not declared; did you mean END-" + text.substr(3) + "?");
        return;
    }
    const Item *best = nullptr;
    size_t bestDistance = text.size() / 3 + 1;
    if (text.size() > 40 || p.names->items.size() > 20000) {
        error(at, text + " is not declared");
        return;
    }
    for (const auto &[word, items] : p.names->items) {
        const std::string &other = wordText(word);
        if (items.empty() || items[0]->section == Item::Special || other.size() + bestDistance < text.size() ||
            text.size() + bestDistance < other.size())
            continue;
        size_t d = spellingDistance(text, other);
        if (d < bestDistance || (d == bestDistance && best && wordText(best->name) > other)) {
            bestDistance = d;
            best = items[0];
        }
    }
    if (best) {
        error(at, text + " is not declared; did you mean " + wordText(best->name) + "?");
        diagnostics().note(group_.spot(best->at), wordText(best->name) + " is declared here");
    } else {
        error(at, text + " is not declared");
    }
}

Item *Meaning::resolve(Program &program, const Reference &ref, bool silent)
{
    if (ref.names.empty()) return nullptr;
    for (Program *p = &program; p; p = p->parent) {
        auto found = p->names->items.find(ref.names[0]);
        if (found == p->names->items.end()) continue;
        Item *match = nullptr;
        int count = 0;
        for (Item *item : found->second) {
            if (p != &program && !isGlobal(item) && (item->section != Item::Special || item->isIndexName)) continue;
            if (p != &program && item->section == Item::Special && !item->file && !item->isIndexName) continue;
            if (!matches(item, ref)) continue;
            if (count++ == 0) match = item;
        }
        if (count == 0) continue;
        if (count > 1) {
            // A name that only its record or nobody qualifies: the one that needs no more
            // qualifiers than were given, if there is just one.
            Item *complete = nullptr;
            int complets = 0;
            for (Item *item : found->second) {
                size_t depth = 0;
                for (Item *a = item->parent; a; a = a->parent)
                    if (a->name) depth++;
                if (matches(item, ref) && depth + 1 == ref.names.size()) {
                    complete = item;
                    complets++;
                }
            }
            if (complets == 1) {
                match = complete;
            } else if (!silent) {
                if (!told_.insert(ref.names[0]).second) return nullptr;
                error(ref.at, wordText(ref.names[0]) + " is ambiguous; qualify it");
                int shown = 0;
                for (Item *item : found->second)
                    if (matches(item, ref) && shown++ < 4)
                        diagnostics().note(group_.spot(item->at), "one is declared here");
                return nullptr;
            } else {
                return nullptr;
            }
        }
        match->referenced = true;
        return match;
    }
    if (!silent) {
        if (program.names->items.count(ref.names[0]) && ref.names.size() > 1)
            error(ref.at, "there is no " + wordText(ref.names[0]) + " in " + wordText(ref.names[1]));
        else
            suggest(program, ref.names[0], ref.at);
    }
    return nullptr;
}

File *Meaning::file(Program &program, Word name, Tok at)
{
    for (Program *p = &program; p; p = p->parent)
        for (File *f : p->files)
            if (f->name == name && (p == &program || f->global)) return f;
    error(at, "there is no file " + wordText(name));
    return nullptr;
}

long Meaning::procedure(Program &p, const ProcedureName &name, size_t from, bool silent)
{
    if (!name.name) return -1;
    auto found = p.names->procedures.find(name.name);
    if (found == p.names->procedures.end()) {
        if (silent) return -1;
        std::string best;
        size_t bestDistance = wordText(name.name).size() / 3 + 1;
        for (const auto &[word, list] : p.names->procedures) {
            size_t d = spellingDistance(wordText(name.name), wordText(word));
            if (d < bestDistance) {
                bestDistance = d;
                best = wordText(word);
            }
        }
        error(name.at, "there is no paragraph or section " + wordText(name.name) +
                           (best.empty() ? "" : "; did you mean " + best + "?"));
        return -1;
    }
    long match = -1;
    int count = 0;
    int section = from < p.procedures.size()
                      ? (p.procedures[from].isSection ? static_cast<int>(from) : p.procedures[from].section)
                      : -1;
    for (size_t i : found->second) {
        const Procedure &candidate = p.procedures[i];
        if (name.section) {
            if (candidate.section < 0 || p.procedures[static_cast<size_t>(candidate.section)].name != name.section)
                continue;
        } else if (found->second.size() > 1 && candidate.section == section && !candidate.isSection) {
            match = static_cast<long>(i); // in the same section: needs no qualifier
            count = 1;
            break;
        }
        match = static_cast<long>(i);
        count++;
    }
    if (silent) return count == 1 ? match : -1;
    if (count > 1) {
        error(name.at, wordText(name.name) + " is ambiguous; qualify it with its section");
        return -1;
    }
    if (count == 0) error(name.at, "there is no " + wordText(name.name) + " in the section " + wordText(name.section));
    return match;
}

const Alphabet *Meaning::alphabet(Program &p, Word name) const
{
    for (const Alphabet *a : p.alphabets)
        if (a->name == name) return a;
    return nullptr;
}

const UserClass *Meaning::userClass(Program &p, Word name) const
{
    for (const UserClass *c : p.classes)
        if (c->name == name) return c;
    return nullptr;
}

int Meaning::switchCondition(Program &p, Word name, bool &on) const
{
    for (const Mnemonic &m : p.mnemonics) {
        if (m.onName == name) {
            on = true;
            return m.switchNumber;
        }
        if (m.offName == name) {
            on = false;
            return m.switchNumber;
        }
    }
    return -1;
}

int Meaning::switchOf(Program &p, Word mnemonic) const
{
    for (const Mnemonic &m : p.mnemonics)
        if (m.name == mnemonic) return m.switchNumber;
    return -1;
}

int Meaning::symbolic(Program &p, Word name) const
{
    for (const SymbolicCharacter &s : p.symbolics) {
        if (s.name != name) continue;
        if (s.alphabet) {
            const Alphabet *a = alphabet(p, s.alphabet);
            if (a && a->weights.size() == 256)
                for (int b = 0; b < 256; b++)
                    if (a->weights[static_cast<size_t>(b)] == s.ordinal - 1) return b;
        }
        return s.ordinal - 1;
    }
    return -1;
}

const Expr *Meaning::constant(Program &p, const Expr *e)
{
    for (int depth = 0; e && depth < 100; depth++) {
        if (e->kind != ExprKind::Reference || !e->ref->subscripts.empty() || e->ref->refmod ||
            e->ref->names.size() != 1)
            return e;
        Item *item = nullptr;
        for (Program *q = &p; q && !item; q = q->parent) {
            auto found = q->names->items.find(e->ref->names[0]);
            if (found != q->names->items.end()) {
                if (found->second[0]->isConstant) item = found->second[0];
                break;
            }
        }
        if (!item) return e;
        e = item->constant;
    }
    return e;
}

bool Meaning::constantNumber(Program &p, const Expr *e, Decimal &out)
{
    e = constant(p, e);
    if (decimalOf(e, out)) return true;
    if (!e || constantDepth_ > 200) return false;
    if (e->kind == ExprKind::LengthOf) {
        int64_t n = -1;
        if (e->left && e->left->kind == ExprKind::String) n = static_cast<int64_t>(e->left->text.size());
        if (e->ref) {
            Item *item = resolve(p, *e->ref);
            if (item && !e->ref->refmod && !item->hasDepending) n = item->size;
        }
        if (n < 0) return false;
        out = decimalOf(std::to_string(n), false);
        return true;
    }
    if (e->kind == ExprKind::Arithmetic) {
        Decimal a, b;
        constantDepth_++;
        bool good = constantNumber(p, e->left, a) && constantNumber(p, e->right, b);
        constantDepth_--;
        if (!good || a.digits.size() > 17 || b.digits.size() > 17 || a.scale || b.scale) return false;
        __int128 x = std::atoll(a.digits.c_str()), y = std::atoll(b.digits.c_str()), z = 0;
        if (a.negative) x = -x;
        if (b.negative) y = -y;
        switch (e->op) {
        case '+':
            z = x + y;
            break;
        case '-':
            z = x - y;
            break;
        case '*':
            z = x * y;
            break;
        case '/':
            if (y == 0) return false;
            z = x / y;
            break;
        default:
            return false;
        }
        bool negative = z < 0;
        out = decimalOf(std::to_string(static_cast<int64_t>(negative ? -z : z)), negative);
        return true;
    }
    if (e->kind == ExprKind::Negate) {
        constantDepth_++;
        bool good = constantNumber(p, e->left, out);
        constantDepth_--;
        out.negative = !out.negative;
        return good;
    }
    return false;
}

} // namespace kvrcob
