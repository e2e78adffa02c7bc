// Operands: where a data item is, how long it is, and what text an expression stands for.
//
// An address is the start of the record plus what is known plus (subscript - 1) * stride for each
// table around the item.
#include "cobol/emit/emitter.h"

namespace kvrcob {

std::string Emitter::bytesLiteral(std::string_view bytes)
{
    std::string out = "\"";
    for (unsigned char c : bytes) {
        if (c == '"' || c == '\\' || c == '?') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c >= 32 && c < 127) {
            out += static_cast<char>(c);
        } else {
            char code[5] = {'\\', static_cast<char>('0' + (c >> 6)), static_cast<char>('0' + (c >> 3 & 7)),
                            static_cast<char>('0' + (c & 7)), 0};
            out += code;
        }
    }
    return out + "\"";
}

std::string Emitter::constantBytes(std::string_view bytes) { return cat("(uint8_t *)(intptr_t)", bytesLiteral(bytes)); }

std::string Emitter::baseOf(const Item &item)
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
        if (table && table->dependingItem && !(receiving && &recordOf(*table->dependingItem) == &recordOf(item))) {
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
    if (n.scale != 0 || n.kind == Num::Float) n = scaleTo(n, 0, false);
    n = toInt(n);
    return n.wide() ? cat("(int64_t)(", n.text, ")") : n.text;
}

std::string Emitter::subscript(const Expr *e) { return integer(e); }

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
    // The tables around the item, from the outside in.
    std::vector<const Item *> tables;
    for (const Item *a = item; a; a = a->parent)
        if (a->occurs) tables.insert(tables.begin(), a);
    std::string displacement;
    if (tables.size() != ref.subscripts.size()) {
        if (ref.subscripts.empty())
            error(ref.at, wordText(ref.names[0]) + " is in a table and needs " + std::to_string(tables.size()) +
                              (tables.size() == 1 ? " subscript" : " subscripts"));
        else
            error(ref.at, wordText(ref.names[0]) +
                              (tables.empty() ? " is in no table and has no subscripts"
                                              : " needs " + std::to_string(tables.size()) + " subscripts, not " +
                                                    std::to_string(ref.subscripts.size())));
        return Loc{};
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
        displacement += cat(" + (", index, " - 1) * ", table.size);
    }
    if (known) displacement = cat(" + ", known, displacement);
    Loc loc = locateItem(*item, displacement, receiving);
    if (debugs_) debugItem(ref, *item, loc, receiving || anyChange_);
    if (!ref.refmod) return loc;

    // (from : length)
    if (item->usage != Usage::Display && item->category != Category::Group)
        error(ref.at, "reference modification needs an item of usage DISPLAY");
    Loc part;
    part.item = item;
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

Text Emitter::textOf(const Loc &loc)
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

uint8_t figurativeByte(uint32_t op)
{
    switch (op) {
    case K_ZERO:
        return '0';
    case K_QUOTE:
        return '"';
    case K_HIGH_VALUE:
        return 0xFF;
    case K_LOW_VALUE:
    case K_NULL:
        return 0;
    default:
        return ' ';
    }
}

Text Emitter::text(const Expr *e, bool numericAsText)
{
    Text t;
    const Expr *original = e;
    e = constant(e);
    switch (e->kind) {
    case ExprKind::String:
        if (e->form != StringForm::Plain) {
            notBuilt(e->at, "this form of literal");
            t.good = false;
        }
        t.bytes = e->text;
        t.isLiteral = true;
        t.fixed = static_cast<int64_t>(e->text.size());
        t.length = cat(t.fixed);
        t.address = constantBytes(e->text);
        return t;
    case ExprKind::Number: {
        // The digits, without sign and point.
        for (char c : e->text)
            if (c >= '0' && c <= '9') t.bytes += c;
        t.isLiteral = true;
        t.fixed = static_cast<int64_t>(t.bytes.size());
        t.length = cat(t.fixed);
        t.address = constantBytes(t.bytes);
        return t;
    }
    case ExprKind::Figurative: {
        t.kind = Text::Figurative;
        t.fill = figurativeByte(e->op);
        if (program_->collating && (e->op == K_HIGH_VALUE || e->op == K_LOW_VALUE)) {
            const Alphabet *a = meaning_.alphabet(*program_, program_->collating);
            if (a && a->weights.size() == 256) {
                int best = 0;
                for (int b = 1; b < 256; b++) {
                    uint8_t w = a->weights[static_cast<size_t>(b)], bw = a->weights[static_cast<size_t>(best)];
                    if (e->op == K_HIGH_VALUE ? w >= bw : w < bw) best = b;
                }
                t.fill = static_cast<uint8_t>(best);
            }
        }
        t.fixed = 1;
        t.length = "1";
        t.bytes = std::string(1, static_cast<char>(t.fill));
        t.address = constantBytes(t.bytes);
        return t;
    }
    case ExprKind::All: {
        t.kind = Text::All;
        t.bytes = e->text;
        if (e->ref) {
            int byte = e->ref->names.size() == 1 ? meaning_.symbolic(*program_, e->ref->names[0]) : -1;
            Expr name;
            name.kind = ExprKind::Reference;
            name.ref = e->ref;
            const Expr *c = constant(&name);
            if (byte >= 0)
                t.bytes = std::string(1, static_cast<char>(byte));
            else if (c->kind == ExprKind::String)
                t.bytes = c->text;
            else
                error(e->at, "ALL needs a literal");
        }
        if (t.bytes.empty()) {
            error(e->at, "ALL needs a literal that is not empty");
            t.bytes = " ";
        }
        if (t.bytes.size() == 1) {
            t.kind = Text::Figurative;
            t.fill = static_cast<uint8_t>(t.bytes[0]);
        }
        t.fixed = static_cast<int64_t>(t.bytes.size());
        t.length = cat(t.fixed);
        t.address = constantBytes(t.bytes);
        return t;
    }
    case ExprKind::Reference: {
        if (e->ref->names.size() == 1 && e->ref->subscripts.empty() && !meaning_.resolve(*program_, *e->ref, true)) {
            int byte = meaning_.symbolic(*program_, e->ref->names[0]);
            if (byte >= 0) {
                t.kind = Text::Figurative;
                t.fill = static_cast<uint8_t>(byte);
                t.bytes = std::string(1, static_cast<char>(byte));
                t.fixed = 1;
                t.length = "1";
                t.address = constantBytes(t.bytes);
                return t;
            }
        }
        Loc loc = locate(*e->ref);
        if (!loc.good()) {
            t.good = false;
            return t;
        }
        bool plainDigits = loc.item->usage == Usage::Display && loc.item->signForm == SignForm::None &&
                           loc.item->picture.scale >= 0 && !loc.item->isIndexName; // whatever else they are
        if (!loc.refmod && isNumericItem(*loc.item) && !plainDigits &&
            (numericAsText || loc.item->usage != Usage::Display)) {
            // The digits as text.
            Num n = itemNumber(loc);
            if (n.kind == Num::Float || n.scale > 0) {
                if (n.kind == Num::Float) n = scaleTo(n, 0, false);
            }
            n = toPacked(n);
            int digits = loc.item->isIndexName ? 9 : loc.item->picture.digits;
            if (n.scale < 0) {
                n = scaleUp(n, 0);
                digits = n.digits;
            }
            std::string buffer = tempBytes(digits + 1);
            t.address =
                cat(emits(Do::ToDigits, Of::Packed), "(", n.text, ", ", buffer, ", ", digits, ", ", n.digits, ")");
            t.fixed = digits;
            t.length = cat(digits);
            return t;
        }
        return textOf(loc);
    }
    case ExprKind::Kept:
        if (!kept_[e].text.address.empty()) return kept_[e].text;
        return text(e->left, numericAsText); // a number as text
    case ExprKind::Function:
        if (!functionIsNumeric(e)) return functionText(e);
        [[fallthrough]];
    default: {
        Num n = number(e, 0);
        if (!n.good()) {
            t.good = false;
            return t;
        }
        n = toPacked(scaleTo(n, 0, false));
        std::string buffer = tempBytes(n.digits + 1);
        t.address =
            cat(emits(Do::ToDigits, Of::Packed), "(", n.text, ", ", buffer, ", ", n.digits, ", ", n.digits, ")");
        t.fixed = n.digits;
        t.length = cat(n.digits);
        (void)original;
        return t;
    }
    }
}

} // namespace kvrcob
