// See names.h.
#include "cobol/meaning/names.h"

#include <algorithm>

namespace kvrcob {

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

// Whether a word is an item or a number, a minus sign and another one: COUNT-1.
static bool isDifference(Program &p, const std::string &text)
{
    auto isOperand = [&](const std::string &part) {
        if (part.find_first_not_of("0123456789") == std::string::npos) return !part.empty();
        return p.names->items.count(internWord(part)) > 0;
    };
    for (size_t i = text.find('-'); i != std::string::npos; i = text.find('-', i + 1))
        if (isOperand(text.substr(0, i)) && isOperand(text.substr(i + 1))) return true;
    return false;
}

// A misspelled name is compared with all that there are, if they are not more than this.
constexpr size_t kMostCompared = 20000;

void Meaning::suggest(Program &p, Word name, Tok at)
{
    if (group_.embedded || !told_.insert(name).second) return; // once for each name
    const std::string &text = wordText(name);
    if (diagnostics().full()) {
        error(at, text + " is not declared");
        return;
    }
    for (const Program *owner = &p; owner; owner = owner->parent)
        for (const File *f : owner->files)
            if (f->name == name) {
                error(at, text + " is a file; a record or another data item is needed here");
                return;
            }
    for (const Procedure &procedure : p.procedures)
        if (procedure.name == name) {
            error(at,
                  text + (procedure.isSection ? " is a section" : " is a paragraph") + "; a data item is needed here");
            return;
        }
    if (text.rfind("END", 0) == 0 && isReserved(internWord("END-" + text.substr(3)))) { // ENDIF
        error(at, text + " is not declared; did you mean END-" + text.substr(3) + "?");
        return;
    }
    const Item *best = nullptr;
    size_t bestDistance = text.size() / 3 + 1;
    if (text.size() > 40 || p.names->items.size() > kMostCompared) {
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
    } else if (isDifference(p, text)) {
        error(at, text + " is not declared; a minus sign has blanks around it");
    } else if (Word reserved = text.size() > 4 ? reservedLike(text, [](Word) { return true; }) : 0) { // DISPLYA
        error(at, text + " is not declared; did you mean " + wordText(reserved) + "?");
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
    if (Item *clock = clockRegister(program, ref)) return clock;
    if (!silent) {
        if (program.names->items.count(ref.names[0]) && ref.names.size() > 1)
            error(ref.at, "there is no " + wordText(ref.names[0]) + " in " + wordText(ref.names[1]));
        else
            suggest(program, ref.names[0], ref.at);
    }
    return nullptr;
}

Item *Meaning::key(Program &program, const Reference &ref, Word outer)
{
    if (Item *item = resolve(program, ref, true)) return item;
    Reference qualified = ref;
    qualified.names.push_back(outer);
    if (Item *item = resolve(program, qualified, true)) return item;
    return resolve(program, ref);
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
        const bool compares = !diagnostics().full() && p.names->procedures.size() <= kMostCompared;
        for (const auto &[word, list] : p.names->procedures) {
            if (!compares) break;
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
    long match = -1, near = -1;
    int count = 0, nearCount = 0;
    int section = from < p.procedures.size()
                      ? (p.procedures[from].isSection ? static_cast<int>(from) : p.procedures[from].section)
                      : -1;
    for (size_t i : found->second) {
        const Procedure &candidate = p.procedures[i];
        if (name.section) {
            if (candidate.section < 0 || p.procedures[static_cast<size_t>(candidate.section)].name != name.section)
                continue;
        } else if (found->second.size() > 1 && candidate.section == section && !candidate.isSection) {
            near = static_cast<long>(i); // in the same section: needs no qualifier
            nearCount++;
        }
        match = static_cast<long>(i);
        count++;
    }
    if (nearCount > 1 && !silent) {
        error(name.at, "there are " + std::to_string(nearCount) + " paragraphs " + wordText(name.name) +
                           "; this could be any of them");
        return -1;
    }
    if (nearCount > 0) match = near, count = nearCount;
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

static bool seesConstants(const Program *p)
{
    for (; p; p = p->parent)
        if (!p->constants.empty()) return true;
    return false;
}

const Expr *Meaning::constant(Program &p, const Expr *e)
{
    if (!seesConstants(&p)) return e; // most programs
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
