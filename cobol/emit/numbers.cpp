// Numbers: arithmetic expressions, conversions, and the storing of results.
//
// Every number carries how many digits it can have and how many of them are decimal places, so that
// each intermediate result has the room it needs and nothing is lost before the last step:
//
// | Kind   | For                                                | Operations                                    |
// |--------|----------------------------------------------------|-----------------------------------------------|
// | Int    | binary items, zoned items of up to 18 digits       | in line, 64 bits up to 18 digits, else 128 up to 38 |
// | Packed | packed items, long zoned ones, more than 38 digits | the library's, up to 63 digits                |
// | Float  | COMP-1, COMP-2, floating-point functions           | in line                                       |
//
// Mixed operands: Float wins, then Packed. A result of more than 63 digits loses decimal places
// first.
//
// A quotient at the top of an expression has the decimal places that the receiving item needs, one
// more for ROUNDED, and is exact to them. One inside an expression has as many as 38 digits in all
// allow.
#include "cobol/emit/emitter.h"
#include "cobol/meaning/picture.h"

#include <algorithm>

namespace kvrcob {

// An operand whose C is longer is computed first, so that long expressions take linear time.
constexpr size_t kLongText = 4000;

std::string powerOfTen(int n)
{
    if (n <= 18) return "1" + std::string(static_cast<size_t>(n), '0') + "LL";
    std::string text = "((__int128)1000000000000000000LL";
    for (n -= 18; n > 0; n -= 18) text += " * 1" + std::string(static_cast<size_t>(std::min(n, 18)), '0') + "LL";
    return text + ")";
}

Num integerNumber(const std::string &c, int digits, bool isSigned)
{
    Num n;
    n.text = c;
    n.digits = digits;
    n.isSigned = isSigned;
    return n;
}

Num floatNumber(const std::string &c)
{
    Num n;
    n.kind = Num::Float;
    n.text = c;
    n.digits = 18;
    return n;
}

Num literalNumber(const Decimal &value)
{
    Num n;
    if (value.isFloating) {
        n = floatNumber(cat(value.negative ? "-" : "", value.digits, "e", value.exponent - value.scale));
        return n;
    }
    n.literal = new Decimal(value);
    n.digits = std::max<int>(static_cast<int>(value.digits.size()), 1);
    n.scale = value.scale;
    n.isSigned = value.negative;
    if (n.digits <= 18) {
        n.most = 1; // of zero, too: it is known
        for (char c : value.digits) n.most = n.most == 1 && c == '0' ? 1 : n.most * 10 + static_cast<unsigned>(c - '0');
        n.text = cat(value.negative ? "(-" : "", value.digits, "LL", value.negative ? ")" : "");
    } else if (n.digits <= kMostInt) {
        std::string high = value.digits.substr(0, value.digits.size() - 18),
                    low = value.digits.substr(value.digits.size() - 18);
        low.erase(0, std::min(low.find_first_not_of('0'), low.size() - 1));
        n.text = cat(value.negative ? "(-" : "(", "((__int128)");
        if (high.size() > 18) {
            std::string higher = high.substr(0, high.size() - 18), middle = high.substr(high.size() - 18);
            middle.erase(0, std::min(middle.find_first_not_of('0'), middle.size() - 1));
            n.text += joined("((__int128)", higher, "LL * 1000000000000000000LL + ", middle, "LL)");
        } else {
            n.text += joined(high, "LL");
        }
        n.text += joined(" * 1000000000000000000LL + ", low, "LL))");
    } else {
        n.kind = Num::Packed;
        n.digits = std::min(n.digits, kMostPacked);
        n.text = constantBytes(packedBytes(value.digits, value.negative, n.digits, true));
    }
    return n;
}

// ---- Operations

Num Emitter::add(Num a, Num b, bool minus)
{
    if (!a.good() || !b.good()) return Num{};
    if (a.kind == Num::Float || b.kind == Num::Float) {
        bothFloat(a, b);
        return floatNumber(cat("(", a.text,
                               minus ? emits(Do::Subtract, Of::Float, Of::Float) : emits(Do::Add, Of::Float, Of::Float),
                               "(", b.text, "))"));
    }
    if (a.text.size() > kLongText) a = keep(std::move(a), true);
    int scale = std::max(a.scale, b.scale);
    int whole = std::max(a.digits - a.scale, b.digits - b.scale);
    int digits = whole + scale + 1;
    if (a.kind == Num::Int && b.kind == Num::Int && digits <= kMostInt) {
        a = scaleUp(std::move(a), scale), b = scaleUp(std::move(b), scale);
        if (a.kind == Num::Int && b.kind == Num::Int) {
            Num n = integerNumber("", digits);
            n.most = a.most && b.most ? a.most + b.most : 0;
            bool wide = n.wide();
            n.text =
                cat("(", wide && !a.wide() ? "(__int128)" : "", "(", a.text, ")",
                    minus ? emits(Do::Subtract, Of::Integer, Of::Integer) : emits(Do::Add, Of::Integer, Of::Integer),
                    wide && !b.wide() ? "(__int128)" : "", "(", b.text, "))");
            n.scale = scale;
            return n;
        }
    }
    // What is too long loses decimal places.
    if (digits > kMostPacked) {
        int cut = std::min(digits - kMostPacked, scale);
        scale -= cut;
        digits = std::min(digits - cut, kMostPacked);
    }
    a = toPacked(a.scale > scale ? scaleTo(a, scale, false) : scaleUp(toPacked(a), scale));
    b = toPacked(b.scale > scale ? scaleTo(b, scale, false) : scaleUp(toPacked(b), scale));
    if (minus) b = negate(std::move(b));
    std::string t = tempBytes(digits / 2 + 1);
    Num n;
    n.kind = Num::Packed;
    n.digits = digits;
    n.scale = scale;
    n.cut = new std::string(
        cat(minus ? emits(Do::Subtract, Of::Packed, Of::Packed) : emits(Do::Add, Of::Packed, Of::Packed), "(", a.text,
            ", ", b.text, ", ", t, ", @, ", b.digits, ", ", a.digits, ")"));
    n.text = n.cutTo(digits);
    return n;
}

std::string Num::cutTo(int places) const
{
    const size_t at = cut->rfind('@');
    return cat(std::string_view(*cut).substr(0, at), places, std::string_view(*cut).substr(at + 1));
}

Num Emitter::negate(Num a)
{
    if (!a.good()) return a;
    if (a.literal) {
        Decimal d = *a.literal;
        if (!d.isZero()) d.negative = !d.negative;
        bool packed = a.kind == Num::Packed;
        Num n = literalNumber(d);
        return packed ? toPacked(n) : n;
    }
    if (a.kind != Num::Packed) {
        a.text = cat("(", emits(Do::Negate, Of::Integer), "(", a.text, "))");
        a.isSigned = true;
        return a;
    }
    std::string t = tempBytes(a.digits / 2 + 1);
    a.text = cat(emits(Do::Negate, Of::Packed), "(", a.text, ", ", t, ", ", a.digits, ", ", a.digits, ")");
    a.isSigned = true;
    a.direct = false;
    return a;
}

Num Emitter::multiply(Num a, Num b)
{
    if (!a.good() || !b.good()) return Num{};
    if (a.kind == Num::Float || b.kind == Num::Float) {
        bothFloat(a, b);
        return floatNumber(cat("(", a.text, emits(Do::Multiply, Of::Float, Of::Float), b.text, ")"));
    }
    if (a.text.size() > kLongText) a = keep(std::move(a), true);
    int digits = a.digits + b.digits, scale = a.scale + b.scale;
    if (a.kind == Num::Int && b.kind == Num::Int && digits <= kMostInt) {
        Num n = integerNumber("", digits);
        n.most = a.most && b.most && a.most <= INT64_MAX && b.most <= INT64_MAX ? a.most * b.most : 0;
        bool wide = n.wide();
        n.text = cat("(", wide && !a.wide() ? "(__int128)" : "", "(", a.text, ")",
                     emits(Do::Multiply, Of::Integer, Of::Integer), wide && !b.wide() ? "(__int128)" : "", "(", b.text,
                     "))");
        n.scale = scale;
        return n;
    }
    // The factors have 63 digits together: decimal places of the longer one go first.
    while (a.digits + b.digits > kMostPacked && (a.scale > 0 || b.scale > 0)) {
        Num &longer = (a.scale > 0 && (a.digits >= b.digits || b.scale <= 0)) ? a : b;
        int cut = std::min(a.digits + b.digits - kMostPacked, longer.scale);
        int half = std::max(1, std::min(cut, std::max(1, longer.digits - kMostPacked / 2)));
        longer = scaleTo(longer, longer.scale - half, false);
    }
    a = toPacked(std::move(a)), b = toPacked(std::move(b));
    digits = std::min(a.digits + b.digits, kMostPacked);
    scale = a.scale + b.scale;
    std::string t = tempBytes(digits / 2 + 1);
    Num n;
    n.kind = Num::Packed;
    n.digits = digits;
    n.scale = scale;
    n.text = cat(emits(Do::Multiply, Of::Packed, Of::Packed), "(", a.text, ", ", b.text, ", ", t, ", ", digits, ", ",
                 b.digits, ", ", a.digits, ")");
    return n;
}

std::string Emitter::zeroFlag()
{
    if (inStatement_.zeroFlag.empty()) {
        inStatement_.zeroFlag = temp("int");
        code_.declare(joined(inStatement_.zeroFlag, " = 0; "));
    }
    return inStatement_.zeroFlag;
}

// The quotient with `scale` decimal places; -1: as many as there is room for.
Num Emitter::divide(Num a, Num b, int scale)
{
    if (!a.good() || !b.good()) return Num{};
    if (a.kind == Num::Float || b.kind == Num::Float) {
        bothFloat(a, b);
        return floatNumber(
            cat(emits(Do::Divide, Of::Float, Of::Float), "(", a.text, ", ", b.text, ", &", zeroFlag(), ")"));
    }
    if (scale < 0) {
        int room = kMostInt - a.digits;
        scale = std::max(std::min(room - b.scale + a.scale, 24), std::max(a.scale, 12));
    }
    int k = scale + b.scale - a.scale;
    if (k < 0) {
        // More places than wanted come out anyway; they are cut later.
        scale -= k;
        k = 0;
    }
    int digits = a.digits + k;
    if (a.kind == Num::Int && b.kind == Num::Int && digits <= kMostInt) {
        a = scaleUp(a, a.scale + k);
        bool wide = (a.most ? a.wide() : digits > 18) || b.wide();
        Num n = integerNumber(
            cat(wide ? emits(Do::Divide, Of::Wide, Of::Wide) : emits(Do::Divide, Of::Integer, Of::Integer), "(", a.text,
                ", ", b.text, ", &", zeroFlag(), ")"),
            std::max(digits, b.wide() ? 19 : 1));
        n.scale = scale;
        return n;
    }
    if (digits > kMostPacked) {
        int cut = std::min(digits - kMostPacked, k);
        k -= cut;
        scale -= cut;
        digits = std::min(a.digits + k, kMostPacked);
    }
    a = toPacked(std::move(a)), b = toPacked(std::move(b));
    int aScale = a.scale;
    a = scaleUp(a, aScale + k);
    std::string t = tempBytes(digits / 2 + 1);
    Num n;
    n.kind = Num::Packed;
    n.digits = digits;
    n.scale = scale;
    n.text = cat(emits(Do::Divide, Of::Packed, Of::Packed), "(", a.text, ", ", b.text, ", ", t, ", ", digits, ", ",
                 b.digits, ", ", a.digits, ", &", zeroFlag(), ")");
    return n;
}

// The product of two strings of digits.
static std::string product(const std::string &a, const std::string &b)
{
    std::vector<int> sums(a.size() + b.size());
    for (size_t i = 0; i < a.size(); i++)
        for (size_t j = 0; j < b.size(); j++) sums[i + j + 1] += (a[i] - '0') * (b[j] - '0');

    std::string text(sums.size(), '0');
    for (size_t i = sums.size(); i-- > 0;) {
        text[i] = static_cast<char>('0' + sums[i] % 10);
        if (i > 0) sums[i - 1] += sums[i] / 10;
    }
    return text.erase(0, std::min(text.find_first_not_of('0'), text.size() - 1));
}

// A literal to a whole power, exactly; false if that has too many digits.
static bool literalPower(const Decimal &base, int n, Decimal &out)
{
    out = base;
    out.negative = base.negative && n % 2;
    out.scale = base.scale * n;
    for (int i = 1; i < n; i++) {
        out.digits = product(out.digits, base.digits);
        if (out.digits.size() > kMostPacked) return false;
    }
    return out.scale <= kMostPacked;
}

Num Emitter::power(Num a, Num b, const Expr *exponent)
{
    Decimal d;
    if (a.kind != Num::Float && meaning_.constantNumber(*program_, exponent, d) && !d.negative && d.scale == 0 &&
        d.digits.size() <= 3) {
        int n = std::atoi(d.digits.c_str());
        if (n == 0) {
            if (a.literal && !a.literal->isZero()) return integerNumber("1LL", 1);
            Decimal zero;
            zero.digits = "0";
            std::string test = compareNumbers(a, literalNumber(zero), '=');
            return integerNumber(cat("(", zeroFlag(), " |= ", test, ", 1LL)"), 1); // zero to the power of zero
        }
        if (n == 1) return a;
        Decimal exact;
        if (a.literal && literalPower(*a.literal, n, exact)) return literalNumber(exact);
        if (a.digits * n <= kMostPacked) {
            Num base = keep(a, false), result = base;
            for (int i = 1; i < n; i++) result = multiply(result, base);
            return result;
        }
    }
    bothFloat(a, b);
    return floatNumber(cat(emits(Do::Power, Of::Float, Of::Float), "(", a.text, ", ", b.text, ", &", zeroFlag(), ")"));
}

Num Emitter::referenceNumber(const Expr *e)
{
    Loc loc = locate(*e->ref);
    if (!loc.good()) return Num{};
    const Category category = loc.item->category;
    if (loc.refmod) {
        // A part of a number's digits, such as the year of a date: many programs compute with it.
        if (category != Category::Numeric) {
            error(e->at, "a part of an item is no number");
            return Num{};
        }
        meaning_.warning("extension", e->at, "a part of a numeric item as a number is an extension");
    }
    if (!isNumericItem(*loc.item) && category != Category::NumericEdited && category != Category::Pointer) {
        error(e->at, wordText(e->ref->names[0]) + " is no numeric item");
        return Num{};
    }
    if (category == Category::NumericEdited)
        meaning_.warning("extension", e->at, "an edited item as a number is an extension");
    return itemNumber(loc);
}

// LENGTH OF a literal or an item.
Num Emitter::lengthNumber(const Expr *e)
{
    if (e->left) return integerNumber(cat(e->left->text.size(), "LL"), 10);
    if (!e->ref) return Num{};
    Item *item = meaning_.resolve(*program_, *e->ref);
    if (!item) return Num{};
    // A table's own length of one occurrence needs no subscripts.
    if (e->ref->subscripts.empty() && !e->ref->refmod && fixedOccurrence(*item))
        return integerNumber(cat(item->size, "LL"), 10);
    return integerNumber(cat("(int64_t)(", locate(*e->ref).length, ")"), 10);
}

// A chain of operators may be long: from the left, without recursion.
Num Emitter::arithmeticNumber(const Expr *e, int wantScale)
{
    std::vector<const Expr *> chain;
    const Expr *first = e;
    for (; first->kind == ExprKind::Arithmetic; first = first->left) chain.push_back(first);
    Num n = number(first, -1);
    for (size_t i = chain.size(); i-- > 0;) {
        const Expr &step = *chain[i];
        Num right = number(step.right, -1);
        if (step.op == '+' || step.op == '-')
            n = add(n, right, step.op == '-');
        else if (step.op == '*')
            n = multiply(n, right);
        else if (step.op == '/')
            n = divide(n, right, i == 0 ? wantScale : -1);
        else
            n = n.good() && right.good() ? power(n, right, step.right) : Num{};
    }
    return n;
}

Num Emitter::number(const Expr *e, int wantScale)
{
    e = constant(e);
    Decimal d;
    switch (e->kind) {
    case ExprKind::Number:
        return literalNumber(decimalOf(e->text, false));
    case ExprKind::Figurative:
        if (e->op == K_ZERO) {
            d.digits = "0";
            return literalNumber(d);
        }
        error(e->at, "a number is needed here");
        return Num{};
    case ExprKind::Negate:
        return negate(number(e->left, wantScale));
    case ExprKind::Reference:
        return referenceNumber(e);
    case ExprKind::LengthOf:
        return lengthNumber(e);
    case ExprKind::Arithmetic:
        return arithmeticNumber(e, wantScale);
    case ExprKind::Kept:
        return inFile_.kept[e].num;
    case ExprKind::Function:
        return functionNumber(e, wantScale);
    case ExprKind::AddressOf: {
        Loc loc = locate(*e->ref);
        return integerNumber(cat("(int64_t)(intptr_t)", loc.address), 18);
    }
    default:
        error(e->at, "a number is needed here");
        return Num{};
    }
}

// ---- Comparison

std::string Emitter::compareNumbers(Num a, Num b, uint32_t op)
{
    if (!a.good() || !b.good()) return "0";
    const std::string_view sign = emitsFor(relationOf(op), Of::Integer, Of::Integer);
    if (a.kind == Num::Float || b.kind == Num::Float) {
        bothFloat(a, b);
        return cat("(", emits(Do::Compare, Of::Float, Of::Float), "(", a.text, ", ", b.text, ") ", sign, " 0)");
    }
    int scale = std::max(a.scale, b.scale);
    if ((a.kind == Num::Int && b.kind == Num::Int) &&
        std::max(a.digits - a.scale, b.digits - b.scale) + scale <= kMostInt) {
        a = scaleUp(std::move(a), scale), b = scaleUp(std::move(b), scale);
        return cat("(", a.text, " ", sign, " ", b.text, ")");
    }
    if (b.literal && b.literal->isZero() && a.kind == Num::Packed && (op == '=' || op == kNotEqual))
        return cat("(", op == '=' ? "" : "!", emits(Do::IsZero, Of::Packed), "(", a.text, ", ", a.digits, "))");
    a = toPacked(std::move(a)), b = toPacked(std::move(b));
    a = scaleUp(std::move(a), scale), b = scaleUp(std::move(b), scale);
    return cat("(", emitsFor(relationOf(op), Of::Packed, Of::Packed), "(", a.text, ", ", b.text, ", ", b.digits, ", ",
               a.digits, "))");
}

} // namespace kvrcob
