// Functions of numbers.
//
// Integer and decimal functions are computed exactly, on numbers as arithmetic has them; the others
// are floating point, by the library's entries.
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {

Num Emitter::absolute(const FunctionCall &f)
{
    Num n = number(f.args[0], -1);
    if (!n.good()) return n;
    if (n.kind == Num::Float) return floatNumber(cat(emits(Do::Absolute, Of::Float), "(", n.text, ")"));
    if (n.kind == Num::Int) {
        n.text = cat(n.wide() ? emits(Do::Absolute, Of::Wide) : emits(Do::Absolute, Of::Integer), "(", n.text, ")");
        n.literal = nullptr;
        n.isSigned = false;
        return n;
    }
    std::string t = tempBytes(n.digits / 2 + 1);
    n.text = cat(emits(Do::Absolute, Of::Packed), "(", n.text, ", ", t, ", ", n.digits, ", ", n.digits, ")");
    n.direct = false;
    return n;
}

Num Emitter::sign(const FunctionCall &f)
{
    Num n = keep(number(f.args[0], -1), false);
    Decimal zero;
    zero.digits = "0";
    std::string above = compareNumbers(n, literalNumber(zero), '>'),
                below = compareNumbers(n, literalNumber(zero), '<');
    return integerNumber(cat("((int64_t)", above, " - ", below, ")"), 1);
}

// INTEGER, INTEGER-PART, FRACTION-PART
Num Emitter::integerPart(const FunctionCall &f)
{
    Num n = number(f.args[0], -1);
    if (!n.good()) return n;
    if (n.kind == Num::Float) {
        if (f.name == "INTEGER")
            return scaleTo(
                floatNumber(cat(emitsFunction(f.name), "(", emits(Do::Settle, Of::Float), "(", n.text, "))")), 0,
                false);
        if (f.name == "INTEGER-PART")
            return scaleTo(
                floatNumber(cat(emitsFunction(f.name), "(", emits(Do::Settle, Of::Float), "(", n.text, "))")), 0,
                false);
        n = scaleTo(std::move(n), 9, false);
    }
    if (n.scale <= 0) {
        if (f.name != "FRACTION-PART") return scaleUp(n, 0);
        return integerNumber("0LL", 1);
    }
    n = keep(std::move(n), false);
    Num part = scaleTo(n, 0, false);
    if (f.name == "INTEGER-PART") return part;
    if (f.name == "FRACTION-PART") return add(n, part, true);
    // The greatest integer not above: one less where a fraction of a negative number was cut.
    part = toInt(std::move(part));
    part = keep(std::move(part), false);
    std::string below = compareNumbers(n, part, '<');
    int digits = std::min(part.digits + 1, kMostInt);
    return integerNumber(cat("(", digits > 18 && !part.wide() ? "(__int128)" : "", part.text, " - ", below, ")"),
                         digits);
}

// MOD, REM
Num Emitter::remainder(const FunctionCall &f)
{
    Num a = number(f.args[0], -1), b = number(f.args[1], -1);
    if (!a.good() || !b.good()) return Num{};
    if (a.kind == Num::Float || b.kind == Num::Float) {
        if (f.name == "REM")
            return floatNumber(cat(emitsFunction(f.name, Of::Float), "(", toFloat(a).text, ", ", toFloat(b).text, ")"));
        a = scaleTo(std::move(a), 0, false), b = scaleTo(std::move(b), 0, false);
    }
    int scale = std::max({a.scale, b.scale, 0});
    a = toInt(scaleUp(a, scale)), b = toInt(scaleUp(b, scale));
    Num n = integerNumber(cat(emitsFunction(f.name, Of::Integer), "(", a.text, ", ", b.text, ", &", zeroFlag(), ")"),
                          std::min(std::max(b.digits, 19), 38));
    n.scale = scale;
    if (b.digits <= 18) {
        n.text = cat("(int64_t)", n.text);
        n.digits = b.digits;
    }
    return n;
}

// HIGHEST-ALGEBRAIC, LOWEST-ALGEBRAIC
Num Emitter::algebraicLimit(const FunctionCall &f)
{
    const Expr *a = constant(f.args[0]);
    Item *item = a->kind == ExprKind::Reference ? meaning_.resolve(*program_, *a->ref) : nullptr;
    bool edited = item && item->category == Category::NumericEdited;
    if (!item || a->ref->refmod || (item->category != Category::Numeric && !edited) || item->nativeBinary ||
        item->usage == Usage::Native || item->usage == Usage::CompX || item->usage == Usage::Float ||
        item->usage == Usage::Double) {
        notBuilt(f.e->at, "FUNCTION " + f.name + " of an item without a picture of a number");
        return Num{};
    }
    Decimal d;
    bool isSigned = item->picture.sign || (edited && item->picture.expanded.find_first_of("+-CD") != std::string::npos);
    bool least = f.name[0] == 'L';
    d.digits = least && !isSigned ? "0" : std::string(static_cast<size_t>(item->picture.digits), '9');
    d.negative = least && isSigned;
    d.scale = item->picture.scale;
    if (d.scale < 0) {
        d.digits.append(static_cast<size_t>(-d.scale), '0');
        d.scale = 0;
    }
    return literalNumber(d);
}

Num Emitter::factorial(const FunctionCall &f)
{
    std::string t = tempBytes(33);
    Num n;
    n.kind = Num::Packed;
    n.digits = 38;
    n.text = cat(emitsFunction(f.name), "(", integer(f.args[0]), ", ", t, ")");

    // Of an argument of one digit: the digits of 362880, so that a product keeps its places.
    const Expr *a = constant(f.args[0]);
    Item *item = a->kind == ExprKind::Reference ? meaning_.resolve(*program_, *a->ref) : nullptr;
    bool small = a->kind == ExprKind::Number ? a->text.size() == 1
                                             : item && item->usage == Usage::Display && item->picture.digits == 1;
    if (!small) return n;
    n = toInt(std::move(n));
    n.text = cat("(int64_t)", n.text);
    n.digits = 6;
    return n;
}

// ACOS, SQRT and their like.
Num Emitter::floatFunction(const FunctionCall &f)
{
    return floatNumber(cat(emitsFunction(f.name), "(", toFloat(number(f.args[0], -1)).text, ")"));
}

// PI, E
Num Emitter::floatConstant(const FunctionCall &f) { return floatNumber(std::string(emitsFunction(f.name))); }

Num Emitter::annuity(const FunctionCall &f)
{
    std::string a = toFloat(number(f.args[0], -1)).text, b = toFloat(number(f.args[1], -1)).text;
    return floatNumber(cat(emitsFunction(f.name), "(", a, ", ", b, ")"));
}

Num Emitter::random(const FunctionCall &f)
{
    if (f.args.empty()) return floatNumber(cat(emitsFunction(f.name), "()"));
    return floatNumber(cat(emitsFunction(f.name, Of::Integer), "((uint64_t)", integer(f.args[0]), ")"));
}

} // namespace kvrcob
