// Operands: where a data item is, and how long it is.
//
// An address is the start of the record plus what is known plus (subscript - 1) * stride for each
// table around the item.
#include "cobol/emit/emitter.h"

namespace kvrcob {

std::string bytesLiteral(std::string_view bytes)
{
    std::string out = "\"";
    size_t from = 0; // of the bytes that stand for themselves
    for (size_t i = 0; i < bytes.size(); i++) {
        const unsigned char c = static_cast<unsigned char>(bytes[i]);
        const bool printable = c >= 32 && c < 127, marked = c == '"' || c == '\\' || c == '?';
        if (printable && !marked) continue;
        out.append(bytes, from, i - from);
        from = i + 1;
        if (marked)
            out += joined('\\', bytes[i]);
        else
            out += joined('\\', c >> 6, c >> 3 & 7, c & 7);
    }
    out.append(bytes, from);
    out += '"';
    return out;
}

std::string constantBytes(std::string_view bytes) { return cat("(uint8_t *)(intptr_t)", bytesLiteral(bytes)); }

std::string baseOf(const Item &item)
{
    const Item *record = &recordOf(item);
    if (record->section == Item::Special) return record->special;
    while (record->redefines && !record->parent) record = record->redefines;
    switch (record->section) {
    case Item::FileSection:
        return record->file ? cat("F", record->file->number, "->record") : "0";
    case Item::LocalStorage:
        return cat("S", record->number);
    case Item::Linkage:
        return cat("L", record->number);
    default:
        return record->external ? cat("E", record->number) : cat("W", record->number);
    }
}

// The number of occurrences that a table has now.
std::string Emitter::currentCount(const Item &table)
{
    if (!table.dependingItem) return cat(table.occursMax);
    Num n = toInt(itemNumber(locateItem(*table.dependingItem)));
    return cat(emits(Do::Occurrences, Of::Table), "(", n.text, ", ", table.occursMax, ")");
}

// The length of a group whose last table depends on an item.
static const Item *lastDepending(const Item &item)
{
    for (size_t i = item.children.size(); i-- > 0;) {
        const Item *child = item.children[i];
        if (child->redefines) continue;
        if (child->depending) return child;
        if (child->hasDepending) return lastDepending(*child);
        return nullptr;
    }
    return nullptr;
}

static bool within(const Item &item, const Item &group)
{
    for (const Item *a = &item; a; a = a->parent)
        if (a == &group) return true;
    return false;
}

Loc Emitter::locateItem(const Item &item, const std::string &displacement, bool receiving)
{
    Loc loc;
    loc.item = &item;
    loc.category = item.category;
    if (item.isIndexName) {
        loc.address = cat("((uint8_t *)&X", item.number, ")");
        loc.length = "8";
        loc.fixed = 8;
        return loc;
    }
    std::string base = baseOf(item);
    loc.address = item.offset || !displacement.empty()
                      ? cat("(", base, item.offset ? cat(" + ", item.offset) : "", displacement, ")")
                      : base;
    loc.fixed = item.size;
    loc.length = cat(item.size);
    if (item.anyLength || !item.specialLength.empty()) {
        loc.fixed = -1;
        loc.length = item.anyLength ? cat("N", item.number) : item.specialLength;
    }
    if (item.hasDepending && !item.elementary() && !(item.depending && item.dependingItem == nullptr)) {
        const Item *table = lastDepending(item);
        // A receiver that holds its own counter is taken whole: the counter may change with it.
        if (table && table->dependingItem && !(receiving && within(*table->dependingItem, item))) {
            loc.fixed = -1;
            loc.length = cat("(", table->offset - item.offset, " + ", currentCount(*table), " * ", table->size, ")");
        }
    }
    return loc;
}

std::string Emitter::integer(const Expr *e)
{
    Decimal d;
    if (meaning_.constantNumber(*program_, e, d) && d.scale == 0 && d.digits.size() <= 18)
        return cat(d.negative ? "-" : "", d.digits, "L");
    Num n = number(e, 0);
    if (!n.good()) return "0";
    if (n.scale != 0 || n.kind == Num::Float) n = scaleTo(std::move(n), 0, false);
    n = toInt(std::move(n));
    return n.wide() ? cat("(int64_t)(", n.text, ")") : n.text;
}

std::string Emitter::subscript(const Expr *e) { return integer(e); }

// How far from the first occurrences an item in tables is: " + ..." for each subscript. False: an
// error was told.
bool Emitter::displacement(const Reference &ref, const Item &item, std::string &out)
{
    // The tables around the item, from the outside in.
    std::vector<const Item *> tables;
    for (const Item *a = &item; a; a = a->parent)
        if (a->occurs) tables.insert(tables.begin(), a);
    if (tables.size() != ref.subscripts.size()) {
        if (ref.subscripts.empty())
            error(ref.at, wordText(ref.names[0]) + " is in a table and needs " + std::to_string(tables.size()) +
                              (tables.size() == 1 ? " subscript" : " subscripts"));
        else
            error(ref.at, wordText(ref.names[0]) +
                              (tables.empty() ? " is in no table and has no subscripts"
                                              : " needs " + std::to_string(tables.size()) +
                                                    (tables.size() == 1 ? " subscript, not " : " subscripts, not ") +
                                                    std::to_string(ref.subscripts.size())));
        return false;
    }
    int64_t known = 0;
    for (size_t i = 0; i < tables.size(); i++) {
        const Expr *e = ref.subscripts[i];
        const Item &table = *tables[i];
        Decimal d;
        if (meaning_.constantNumber(*program_, e, d)) {
            int64_t value = d.digits.size() > 9 || d.scale ? -1 : std::atoll(d.digits.c_str());
            if (d.negative || value < 1 || value > table.occursMax) {
                error(e->at, "this subscript is not from 1 to " + std::to_string(table.occursMax));
                continue;
            }
            if (!(options_.check && table.dependingItem)) {
                known += (value - 1) * static_cast<int64_t>(table.size);
                continue;
            }
        }
        if (e->kind == ExprKind::AllSubscript) {
            error(e->at, "the subscript ALL is for arguments of functions only");
            continue;
        }
        std::string index = subscript(e);
        if (options_.check)
            index = cat(emits(Do::CheckSubscript, Of::Integer), "(", index, ", ", currentCount(table), ", ",
                        bytesLiteral(wordText(ref.names[0])), ", ",
                        bytesLiteral(sources()[group_.spot(ref.at).file].path), ", ", group_.spot(ref.at).line, ")");
        out += joined(" + (", index, " - 1) * ", table.size);
    }
    if (known) out = cat(" + ", known, out);
    return true;
}

// A part of an item: (from : length).
Loc Emitter::partOf(const Reference &ref, const Loc &loc)
{
    if (loc.item->usage != Usage::Display && loc.item->category != Category::Group)
        error(ref.at, "reference modification needs an item of usage DISPLAY");
    Loc part;
    part.item = loc.item;
    part.refmod = true;
    part.category = Category::Alphanumeric;
    Decimal from, length;
    bool fromKnown = meaning_.constantNumber(*program_, ref.from, from) && from.scale == 0 && from.digits.size() < 10;
    bool lengthKnown = ref.length && meaning_.constantNumber(*program_, ref.length, length) && length.scale == 0 &&
                       length.digits.size() < 10;
    int64_t begin = fromKnown ? std::atoll(from.digits.c_str()) : 0,
            count = lengthKnown ? std::atoll(length.digits.c_str()) : 0;
    if (fromKnown && (from.negative || begin < 1 || (loc.fixed >= 0 && begin > loc.fixed))) {
        error(ref.from->at,
              "this position is outside the item, which has " + std::to_string(loc.fixed) + " characters");
        return Loc{};
    }
    if (lengthKnown &&
        (length.negative || count < 1 || (fromKnown && loc.fixed >= 0 && begin + count - 1 > loc.fixed))) {
        error(ref.length->at,
              "this length goes beyond the item, which has " + std::to_string(loc.fixed) + " characters");
        return Loc{};
    }
    std::string start;
    if (fromKnown) {
        start = cat(begin, "L");
    } else {
        start = integer(ref.from);
        // Used twice where the length follows from it.
        if (!ref.length || options_.check) {
            std::string t = temp("int64_t");
            start = cat("(", t, " = ", start, ")");
            part.address = cat("(", loc.address, " + ", start, " - 1)");
            start = t;
        }
    }
    if (part.address.empty())
        part.address = fromKnown && begin == 1 ? loc.address : cat("(", loc.address, " + ", start, " - 1)");
    if (lengthKnown) {
        part.fixed = count;
        part.length = cat(count);
    } else if (ref.length) {
        part.length = cat("(", integer(ref.length), ")");
    } else if (fromKnown && loc.fixed >= 0) {
        part.fixed = loc.fixed - begin + 1;
        part.length = cat(part.fixed);
    } else if (fromKnown) {
        part.length = cat("(", loc.length, " - ", begin - 1, ")");
    } else {
        // The length is evaluated before the address in some calls, so the start is evaluated again
        // for it.
        part.length = cat("(", loc.length, " + 1 - ", integer(ref.from), ")");
    }
    if (options_.check && !(fromKnown && lengthKnown && loc.fixed >= 0)) {
        std::string check =
            cat(emits(Do::CheckPart, Of::Integer), "(", fromKnown ? cat(begin, "L") : integer(ref.from), ", ",
                part.length, ", ", loc.length, ", ", bytesLiteral(wordText(ref.names[0])), ", ",
                bytesLiteral(sources()[group_.spot(ref.at).file].path), ", ", group_.spot(ref.at).line, ")");
        part.address = cat("(", check, ", ", part.address, ")");
    }
    return part;
}

Loc Emitter::locate(const Reference &ref, bool receiving)
{
    Item *item = meaning_.resolve(*program_, ref);
    if (!item) return Loc{};
    if (item->isConstant) {
        error(ref.at, wordText(item->name) + " is a constant");
        return Loc{};
    }
    if (item->level == 88) {
        error(ref.at, wordText(item->name) + " is a condition-name; a data item is needed here");
        return Loc{};
    }
    if (item->isIndexName) {
        if (!ref.subscripts.empty()) error(ref.at, "an index-name has no subscripts");
        return locateItem(*item);
    }
    std::string away;
    if (!displacement(ref, *item, away)) return Loc{};
    Loc loc = locateItem(*item, away, receiving);
    if (inProgram_.debugs) debugItem(ref, *item, loc, receiving || inStatement_.anyChange);
    if (receiving) receives(*item, !ref.subscripts.empty());
    if (ref.refmod) return partOf(ref, loc);
    return loc;
}

Text textOf(const Loc &loc)
{
    Text t;
    t.address = loc.address;
    t.length = loc.length;
    t.fixed = loc.fixed;
    t.item = loc.item;
    t.good = loc.good();
    return t;
}

Category Emitter::categoryOf(const Expr *e)
{
    e = constant(e);
    switch (e->kind) {
    case ExprKind::Kept:
        return categoryOf(e->left);
    case ExprKind::Number:
    case ExprKind::Negate:
    case ExprKind::Arithmetic:
    case ExprKind::LengthOf:
        return Category::Numeric;
    case ExprKind::AddressOf:
        return Category::Pointer;
    case ExprKind::Function:
        if (Program *f = userFunction(e)) {
            const Item *item = resultOf(*f);
            return item && !e->ref ? item->category : Category::Alphanumeric;
        }
        return functionIsNumeric(e) ? Category::Numeric : Category::Alphanumeric;
    case ExprKind::Reference: {
        if (e->ref->refmod) return Category::Alphanumeric;
        Item *item = meaning_.resolve(*program_, *e->ref, true);
        return item ? item->category : Category::Alphanumeric;
    }
    default:
        return Category::Alphanumeric;
    }
}

bool Emitter::isNumericExpr(const Expr *e)
{
    Category c = categoryOf(e);
    return c == Category::Numeric || c == Category::Index;
}

} // namespace kvrcob
