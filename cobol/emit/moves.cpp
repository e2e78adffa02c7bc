// MOVE.
//
// | From                       | To alphanumeric       | To numeric, numeric-edited | To alphanumeric-edited |
// |----------------------------|-----------------------|----------------------------|------------------------|
// | text, group, edited        | bytes, cut or padded  | the number it shows, or    | edited                 |
// |                            |                       | its digits as an integer   |                        |
// | integer                    | its digits            | the number                 | its digits, edited     |
// | number with decimal places | not allowed           | the number                 | not allowed            |
// | numeric-edited             | bytes                 | de-edited                  | edited                 |
// | figurative                 | repeated              | ZERO; else its characters  | edited                 |
//
// A group on either side makes the move one of plain bytes.
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {

void Emitter::moveText(const Text &source, const Loc &target)
{
    if (!source.good || !target.good()) return;
    bool right = target.item && target.item->justified && !target.refmod;
    if (source.kind == Text::Figurative) {
        put(emits(Do::MoveBytes, Of::Figurative, Of::Text), "(", target.address, ", ", static_cast<int>(source.fill),
            ", ", target.length, ");\n");
        return;
    }
    if (source.kind == Text::All) {
        put(emits(Do::MoveBytes, Of::AllLiteral, Of::Text), "(", target.address, ", ", target.length, ", ",
            source.address, ", ", source.length, ");\n");
        return;
    }
    if (source.fixed >= 0 && target.fixed >= 0) {
        int64_t n = std::min(source.fixed, target.fixed), pad = target.fixed - n;
        const std::string_view copy = source.isLiteral ? "memcpy" : emits(Do::MoveBytes, Of::Text, Of::Text);
        std::string to = target.address, from = source.address;
        if (right) {
            if (n)
                put(copy, "(", to, pad ? cat(" + ", pad) : "", ", ", from,
                    source.fixed > n ? cat(" + ", source.fixed - n) : "", ", ", n, ");\n");
            if (pad) put("memset(", to, ", ' ', ", pad, ");\n");
            return;
        }
        if (source.isLiteral && target.fixed <= 64) {
            std::string bytes =
                source.bytes.substr(0, static_cast<size_t>(n)) + std::string(static_cast<size_t>(pad), ' ');
            put("memcpy(", to, ", ", bytesLiteral(bytes), ", ", target.fixed, ");\n");
            return;
        }
        if (n) put(copy, "(", to, ", ", from, ", ", n, ");\n");
        if (pad) put("memset(", to, n ? cat(" + ", n) : "", ", ' ', ", pad, ");\n");
        return;
    }
    put(emits(Do::MoveBytes, Of::Varying, Of::Varying), "(", target.address, ", ", right ? "-(int32_t)" : "(int32_t)",
        target.length, ", ", source.address, ", (int32_t)", source.length, ");\n");
}

// From text to an alphanumeric-edited item.
static std::string editedRecord(const Item &item, const std::string &name, bool repeat, std::string &globals)
{
    const std::string &picture = item.picture.expanded;
    std::string bytes;
    for (char c : picture) {
        char code[5] = {'\\', static_cast<char>('0' + (static_cast<unsigned char>(c) >> 6)),
                        static_cast<char>('0' + (static_cast<unsigned char>(c) >> 3 & 7)),
                        static_cast<char>('0' + (static_cast<unsigned char>(c) & 7)), 0};
        bytes += code;
    }
    globals += joined("static const struct { int16_t length; uint8_t repeat, picture[", picture.size(),
                      "]; } __attribute__((packed)) ", name, " = {", picture.size(), ", ", repeat ? 1 : 0, ", \"",
                      bytes, "\"};\n");
    return cat("(const AlphaEditRecord *)&", name);
}

void Emitter::moveNumber(Num n, const Loc &target, bool fromInteger)
{
    (void)fromInteger;
    store(std::move(n), target, false, "");
}

// Decimal places that a text is read with for an item.
static int placesOf(const Item &item)
{
    return item.usage == Usage::Float || item.usage == Usage::Double ? 9 : item.picture.scale;
}

void Emitter::moveLoc(const Loc &source, const Loc &target)
{
    if (!source.good() || !target.good()) return;
    const Item &from = *source.item, &to = *target.item;
    bool plainFrom = source.refmod || from.category == Category::Group;
    bool numericFrom = !plainFrom && isNumericItem(from),
         numericTo = !target.refmod && (isNumericItem(to) || to.category == Category::NumericEdited);
    bool groupFrom = from.category == Category::Group && !source.refmod,
         groupTo = to.category == Category::Group && !target.refmod;
    if (groupFrom || groupTo) {
        moveText(textOf(source), target);
        return;
    }
    if (numericTo) {
        if (numericFrom && isNumericItem(to) && from.usage == to.usage && from.picture.digits == to.picture.digits &&
            from.picture.scale == to.picture.scale && from.picture.sign == to.picture.sign &&
            from.signForm == to.signForm && from.size == to.size && !from.isIndexName && !to.isIndexName &&
            (from.usage != Usage::Display || from.picture.sign)) {
            put("memmove(", target.address, ", ", source.address, ", ", from.size, ");\n");
            return;
        }
        bool characters = plainFrom || (from.category != Category::NumericEdited && !numericFrom &&
                                        from.category != Category::Index && from.category != Category::Pointer);
        store(characters ? textNumber(textOf(source), placesOf(to)) : itemNumber(source), target, false, "");
        return;
    }
    Text t;
    if (numericFrom && from.usage == Usage::Display && from.signForm == SignForm::None && from.picture.scale >= 0) {
        t = textOf(source); // its digits, and whatever else it may hold
    } else if (numericFrom) {
        Num n = itemNumber(source);
        if (n.kind == Num::Float) n = scaleTo(std::move(n), 0, false);
        n = toPacked(std::move(n));
        int digits = from.picture.digits;
        if (n.scale < 0) {
            digits -= n.scale;
            n = scaleUp(std::move(n), 0);
        }
        std::string buffer = tempBytes(digits + 1);
        t.address = cat(emits(Do::ToDigits, Of::Packed), "(", n.text, ", ", buffer, ", ", digits, ", ", n.digits, ")");
        t.fixed = digits;
        t.length = cat(digits);
    } else {
        t = textOf(source);
    }
    if (to.category == Category::AlphanumericEdited && !target.refmod) {
        std::string record = editedRecord(to, cat("P", ++inFile_.constants), false, globals_);
        put(emits(Do::Edit, Of::TextEdited, Of::Text), "(", record, ", ", t.address, ", ", t.length, ", ",
            target.address, ");\n");
        return;
    }
    moveText(t, target);
}

// The same item at an address that is computed now. `copy`: a copy of its bytes, where they are not
// too many, for receivers that overlap it.
Loc Emitter::pinned(Loc loc, bool copy)
{
    if (!loc.good() || loc.item->isIndexName) return loc;
    if (copy && loc.fixed >= 0 && loc.fixed <= 1 << 16) {
        std::string t = tempBytes(loc.fixed);
        put("memcpy(", t, ", ", loc.address, ", ", loc.fixed, ");\n");
        loc.address = t;
        return loc;
    }
    std::string t = temp("uint8_t *");
    put(t, " = ", loc.address, ";\n");
    loc.address = t;
    if (loc.fixed < 0) {
        std::string length = temp("int64_t");
        put(length, " = ", loc.length, ";\n");
        loc.length = length;
    }
    return loc;
}

// MOVE of the item that `source` names, from where it was located.
void Emitter::moveFrom(const Expr *source, const Loc &from, const Loc &target)
{
    if (!from.good() || !target.good()) return;
    const Item &to = *target.item;
    bool plainTo = target.refmod || to.category == Category::Group;
    if (!plainTo && to.category == Category::Pointer) {
        if (from.item->category != Category::Pointer && from.item->category != Category::Group)
            error(source->at, "a pointer is needed here");
        put(emits(Do::Store, Of::Pointer, Of::Integer), "(", target.address, ", (int64_t)",
            emits(Do::Load, Of::Pointer), "(", from.address, "));\n");
        return;
    }
    bool numericTo = !plainTo && (isNumericItem(to) || to.category == Category::NumericEdited);
    if (from.item->isIndexName && !numericTo) error(source->at, "an index-name is set with SET");
    moveLoc(from, target);
}

// A literal such as " -12.5 ", as the number that somebody typed; as kvr_text_number has it.
static bool typedNumber(std::string text, char point, Decimal &out)
{
    auto trim = [&text] {
        while (!text.empty() && text.back() == ' ') text.pop_back();
        while (!text.empty() && text.front() == ' ') text.erase(0, 1);
    };
    bool negative = false;
    trim();
    if (text.size() > 1 && (text.front() == '-' || text.front() == '+')) {
        negative = text.front() == '-';
        text.erase(0, 1);
    } else if (text.size() > 1 && (text.back() == '-' || text.back() == '+')) {
        negative = text.back() == '-';
        text.pop_back();
    }
    trim();
    size_t digits = 0, points = 0;
    for (char c : text) {
        if (c == point)
            points++;
        else if (c >= '0' && c <= '9')
            digits++;
        else
            return false;
    }
    if (digits == 0 || digits > 38 || points > 1) return false;
    out = decimalOf(text, negative);
    return true;
}

// Text that is no item, a literal or a figurative constant, to a number.
void Emitter::moveTextToNumber(const Expr *source, const Loc &target)
{
    Text t = text(source);
    if (!t.good) return;
    const Item &to = *target.item;
    if (t.kind != Text::Bytes) {
        const bool figurative = t.kind == Text::Figurative;
        const bool characters = (to.category == Category::NumericEdited && t.fill == ' ') ||
                                (to.category == Category::Numeric && to.usage == Usage::Display);
        if (figurative && characters) { // SPACES and the like: the characters themselves
            const std::string fill =
                t.fill == ' ' && to.category == Category::NumericEdited ? "' '" : cat(static_cast<int>(t.fill));
            put("memset(", target.address, ", ", fill, ", ", target.length, ");\n");
            return;
        }
        const bool digit = t.fill >= '0' && t.fill <= '9';
        if (figurative && !digit &&
            (to.usage == Usage::Packed || to.usage == Usage::Comp6 || to.usage == Usage::Binary ||
             to.usage == Usage::Native))
            return error(source->at, "this figurative constant cannot be moved to a numeric item");
        t = repeatedDigits(t, to.picture.digits);
    }
    if (!t.isLiteral) return store(textNumber(t, placesOf(to)), target, false, "");

    Decimal typed;
    if (t.bytes.find_first_not_of("0123456789") != std::string::npos)
        meaning_.warning("move", source->at, "this literal has characters that are no digits");
    if (!typedNumber(t.bytes, program_->commaIsPoint ? ',' : '.', typed)) {
        std::string digits;
        for (char c : t.bytes) digits += static_cast<char>('0' + (static_cast<unsigned char>(c) & 15) % 10);
        if (digits.size() > 38) digits = digits.substr(digits.size() - 38);
        typed = decimalOf(digits, false);
    }
    store(literalNumber(typed), target, false, "");
}

// ALL "12" to a number: as many characters as it has digits.
Text Emitter::repeatedDigits(const Text &all, int count)
{
    std::string digits;
    while (static_cast<int>(digits.size()) < count) digits += all.bytes;
    digits.resize(static_cast<size_t>(count));
    Text t;
    t.isLiteral = true;
    t.fixed = count;
    t.length = cat(count);
    t.address = constantBytes(digits);
    t.bytes = std::move(digits);
    return t;
}

void Emitter::moveToPointer(const Expr *source, const Loc &target)
{
    std::string value = "0";
    if (source->kind == ExprKind::Reference) return moveFrom(source, locate(*source->ref), target);
    if (source->kind == ExprKind::AddressOf)
        value = cat("(int64_t)(intptr_t)", locate(*source->ref).address);
    else if (source->kind != ExprKind::Figurative || source->op != K_NULL)
        error(source->at, "a pointer is needed here");
    put(emits(Do::Store, Of::Pointer, Of::Integer), "(", target.address, ", ", value, ");\n");
}

void Emitter::move(const Expr *source, const Loc &target)
{
    if (!target.good()) return;
    source = constant(source);
    const Item &to = *target.item;
    const bool plainTo = target.refmod || to.category == Category::Group;
    if (!plainTo && to.category == Category::Pointer) return moveToPointer(source, target);
    if (source->kind == ExprKind::Reference) {
        if (meaning_.resolve(*program_, *source->ref, true)) return moveFrom(source, locate(*source->ref), target);
        if (meaning_.symbolic(*program_, source->ref->names[0]) < 0) {
            meaning_.resolve(*program_, *source->ref); // tells that it is not declared
            return;
        }
    }

    const bool numericTo = !plainTo && (isNumericItem(to) || to.category == Category::NumericEdited);
    const bool numericFrom = source->kind == ExprKind::Number || source->kind == ExprKind::Negate ||
                             source->kind == ExprKind::Arithmetic || source->kind == ExprKind::LengthOf ||
                             (source->kind == ExprKind::Function && functionIsNumeric(source)) ||
                             (source->kind == ExprKind::Figurative && source->op == K_ZERO);
    if (numericTo && numericFrom)
        store(number(source, std::max(to.picture.scale, 0)), target, false, "");
    else if (numericTo)
        moveTextToNumber(source, target);
    else if (Text t = text(source); t.good)
        moveCharacters(t, target);
}

// Characters as a number: an integer if they are digits, else what somebody typed.
Num Emitter::textNumber(const Text &t, int places)
{
    Num n;
    n.kind = Num::Packed;
    n.scale = std::clamp(places, 0, 18);
    n.digits = static_cast<int>(t.fixed >= 0 ? std::min<int64_t>(t.fixed, 38 - n.scale) : 31 - n.scale) + n.scale;
    n.isSigned = true;
    std::string p = tempBytes(n.digits / 2 + 1);
    n.text = cat(emits(Do::Load, Of::Varying, Of::Packed), "(", t.address, ", ", t.length, ", ", p, ", ", n.digits,
                 ", ", n.scale, ", '", program_->commaIsPoint ? ',' : '.', "')");
    return n;
}

// Characters to an item of any category, as MOVE of an alphanumeric item has it.
void Emitter::moveCharacters(const Text &t, const Loc &target)
{
    const Item &to = *target.item;
    bool plainTo = target.refmod || to.category == Category::Group;
    if (!plainTo && (isNumericItem(to) || to.category == Category::NumericEdited)) {
        store(textNumber(t, placesOf(to)), target, false, "");
    } else if (!plainTo && to.category == Category::AlphanumericEdited) {
        std::string record = editedRecord(to, cat("P", ++inFile_.constants), t.kind != Text::Bytes, globals_);
        put(emits(Do::Edit, Of::TextEdited, Of::Text), "(", record, ", ", t.address, ", ", t.length, ", ",
            target.address, ");\n");
    } else {
        moveText(t, target);
    }
}

// ---- CORRESPONDING

// The pairs of items with the same name and qualifiers below two groups.
void Emitter::corresponding(const Item &from, const Item &to, std::vector<std::pair<const Item *, const Item *>> &pairs,
                            bool numeric)
{
    for (const Item *a : from.children) {
        if (!a->name || a->redefines || a->occurs || a->usage == Usage::Index || a->category == Category::Pointer)
            continue;
        for (const Item *b : to.children) {
            if (b->name != a->name || b->redefines || b->occurs || b->usage == Usage::Index ||
                b->category == Category::Pointer)
                continue;
            if (!a->elementary() && !b->elementary()) {
                corresponding(*a, *b, pairs, numeric);
            } else if (numeric ? (a->elementary() && b->elementary() && isNumericItem(*a) &&
                                  (isNumericItem(*b) || b->category == Category::NumericEdited))
                               : (a->elementary() || b->elementary())) {
                pairs.push_back({a, b});
            }
            break;
        }
    }
}

// An item below a group that a reference names, with the reference's subscripts.
Loc Emitter::member(const Reference &ref, const Item &group, const Item &item, bool receiving)
{
    std::vector<const Item *> tables;
    for (const Item *a = &group; a; a = a->parent)
        if (a->occurs) tables.insert(tables.begin(), a);
    std::string displacement;
    for (size_t i = 0; i < tables.size() && i < ref.subscripts.size(); i++)
        displacement += joined(" + (", subscript(ref.subscripts[i]), " - 1) * ", tables[i]->size);
    return locateItem(item, displacement, receiving);
}

void Emitter::moveStatement(const MoveStatement &s)
{
    if (s.corresponding) {
        if (s.source->kind != ExprKind::Reference) {
            error(s.source->at, "MOVE CORRESPONDING needs groups");
            return;
        }
        Loc from = locate(*s.source->ref);
        for (const Reference *ref : s.targets) {
            Loc to = locate(*ref, true);
            if (!from.good() || !to.good()) continue;
            if (from.item->elementary() || to.item->elementary()) {
                error(s.at, "MOVE CORRESPONDING needs groups");
                continue;
            }
            std::vector<std::pair<const Item *, const Item *>> pairs;
            corresponding(*from.item, *to.item, pairs, false);
            if (pairs.empty()) meaning_.warning("corresponding", s.at, "no items correspond; nothing is moved");
            for (const auto &[a, b] : pairs) {
                Loc x = member(*s.source->ref, *from.item, *a, false), y = member(*ref, *to.item, *b, true);
                moveLoc(x, y);
            }
        }
        return;
    }
    // Several receivers: the sender is looked at once, so that a receiver that is its subscript
    // does no harm.
    if (s.targets.size() > 1 && s.source->kind == ExprKind::Function) {
        if (functionIsNumeric(s.source)) {
            Num n = keep(number(s.source), true);
            for (const Reference *ref : s.targets) {
                Loc to = locate(*ref, true);
                if (to.good()) store(n, to, false, "");
            }
            return;
        }
    }
    const Expr *source = constant(s.source);
    if (s.targets.size() > 1 && source->kind == ExprKind::Reference &&
        meaning_.resolve(*program_, *source->ref, true)) {
        Loc from = pinned(locate(*source->ref), true);
        for (const Reference *ref : s.targets) moveFrom(source, from, locate(*ref, true));
        return;
    }
    for (const Reference *ref : s.targets) {
        Loc to = locate(*ref, true);
        if (!to.good()) {
            continue;
        }
        move(s.source, to);
    }
}

} // namespace kvrcob
