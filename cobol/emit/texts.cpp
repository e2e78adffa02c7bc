// Texts: what an expression stands for where characters are wanted.
#include "cobol/emit/emitter.h"

namespace kvrcob {

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

static Text fixedText(int64_t size)
{
    Text t;
    t.fixed = size;
    t.length = cat(size);
    return t;
}

Text bytesText(std::string bytes)
{
    Text t = fixedText(static_cast<int64_t>(bytes.size()));
    t.address = constantBytes(bytes);
    t.bytes = std::move(bytes);
    return t;
}

Text fillText(uint8_t byte)
{
    Text t = bytesText(std::string(1, static_cast<char>(byte)));
    t.kind = Text::Figurative;
    t.fill = byte;
    return t;
}

// HIGH-VALUE and LOW-VALUE are the last and first characters of the program's collating sequence.
Text Emitter::figurativeText(const Expr *e)
{
    uint8_t byte = figurativeByte(e->op);
    if (program_->collating && (e->op == K_HIGH_VALUE || e->op == K_LOW_VALUE)) {
        const Alphabet *a = meaning_.alphabet(*program_, program_->collating);
        if (a && a->weights.size() == 256) {
            size_t best = 0;
            for (size_t b = 1; b < 256; b++)
                if (e->op == K_HIGH_VALUE ? a->weights[b] >= a->weights[best] : a->weights[b] < a->weights[best])
                    best = b;
            byte = static_cast<uint8_t>(best);
        }
    }
    return fillText(byte);
}

// ALL "ab", ALL of a constant or a symbolic character.
Text Emitter::allText(const Expr *e)
{
    std::string bytes(e->text);
    if (e->ref) {
        int byte = e->ref->names.size() == 1 ? meaning_.symbolic(*program_, e->ref->names[0]) : -1;
        Expr name;
        name.kind = ExprKind::Reference;
        name.ref = e->ref;
        const Expr *c = constant(&name);
        if (byte >= 0)
            bytes = std::string(1, static_cast<char>(byte));
        else if (c->kind == ExprKind::String)
            bytes = c->text;
        else
            error(e->at, "ALL needs a literal");
    }
    if (bytes.empty()) {
        error(e->at, "ALL needs a literal that is not empty");
        bytes = " ";
    }
    if (bytes.size() == 1) return fillText(static_cast<uint8_t>(bytes[0]));
    Text t = bytesText(bytes);
    t.kind = Text::All;
    return t;
}

// The digits of a number that is a packed one.
Text Emitter::digitsText(const Num &n, int digits)
{
    Text t = fixedText(digits);
    std::string buffer = tempBytes(digits + 1);
    t.address = cat(emits(Do::ToDigits, Of::Packed), "(", n.text, ", ", buffer, ", ", digits, ", ", n.digits, ")");
    return t;
}

// An item: its characters, or its digits where it is a number that has no such characters.
Text Emitter::itemText(const Expr *e, bool numericAsText)
{
    Text bad;
    bad.good = false;
    if (e->ref->names.size() == 1 && e->ref->subscripts.empty() && !meaning_.resolve(*program_, *e->ref, true)) {
        int byte = meaning_.symbolic(*program_, e->ref->names[0]);
        if (byte >= 0) return fillText(static_cast<uint8_t>(byte));
    }
    Loc loc = locate(*e->ref);
    if (!loc.good()) return bad;
    const Item &item = *loc.item;
    bool plainDigits = item.usage == Usage::Display && item.signForm == SignForm::None && item.picture.scale >= 0 &&
                       !item.isIndexName; // whatever else they are
    if (loc.refmod || !isNumericItem(item) || plainDigits || !(numericAsText || item.usage != Usage::Display))
        return textOf(loc);

    Num n = itemNumber(loc);
    if (n.kind == Num::Float) n = scaleTo(std::move(n), 0, false);
    n = toPacked(std::move(n));
    int digits = item.isIndexName ? 9 : item.picture.digits;
    if (n.scale < 0) {
        n = scaleUp(std::move(n), 0);
        digits = n.digits;
    }
    return digitsText(n, digits);
}

Text Emitter::text(const Expr *e, bool numericAsText)
{
    e = constant(e);
    switch (e->kind) {
    case ExprKind::String:
    case ExprKind::Number: {
        // Of a number the digits, without sign and point.
        std::string bytes;
        for (char c : e->text)
            if (e->kind == ExprKind::String || (c >= '0' && c <= '9')) bytes += c;
        Text t = bytesText(std::move(bytes));
        t.isLiteral = true;
        t.good = e->kind == ExprKind::Number || e->form == StringForm::Plain;
        if (!t.good) notBuilt(e->at, "this form of literal");
        return t;
    }
    case ExprKind::Figurative:
        return figurativeText(e);
    case ExprKind::All:
        return allText(e);
    case ExprKind::Reference:
        return itemText(e, numericAsText);
    case ExprKind::Kept:
        if (!inFile_.kept[e].text.address.empty()) return inFile_.kept[e].text;
        return text(e->left, numericAsText); // a number as text
    case ExprKind::Function:
        if (!functionIsNumeric(e)) return functionText(e);
        [[fallthrough]];
    default: {
        Num n = number(e, 0);
        if (n.good()) n = toPacked(scaleTo(n, 0, false));
        Text t = n.good() ? digitsText(n, n.digits) : Text{};
        t.good = n.good();
        return t;
    }
    }
}

} // namespace kvrcob
