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

static const int kMostInt = 38, kMostPacked = 63;

std::string Emitter::powerOfTen(int n)
{
    if (n <= 18) return "1" + std::string(static_cast<size_t>(n), '0') + "LL";
    std::string text = "((__int128)1000000000000000000LL";
    for (n -= 18; n > 0; n -= 18) text += " * 1" + std::string(static_cast<size_t>(std::min(n, 18)), '0') + "LL";
    return text + ")";
}

Num Emitter::integerNumber(const std::string &c, int digits, bool isSigned)
{
    Num n;
    n.text = c;
    n.digits = digits;
    n.isSigned = isSigned;
    return n;
}

Num Emitter::floatNumber(const std::string &c)
{
    Num n;
    n.kind = Num::Float;
    n.text = c;
    n.digits = 18;
    return n;
}

Num Emitter::literalNumber(const Decimal &value)
{
    Num n;
    if (value.isFloating) {
        n = floatNumber(cat(value.negative ? "-" : "", value.digits, "e", value.exponent - value.scale));
        return n;
    }
    n.literal = true;
    n.value = value;
    n.digits = std::max<int>(static_cast<int>(value.digits.size()), 1);
    n.scale = value.scale;
    n.isSigned = value.negative;
    if (n.digits <= 18) {
        n.text = cat(value.negative ? "(-" : "", value.digits, "LL", value.negative ? ")" : "");
    } else if (n.digits <= kMostInt) {
        std::string high = value.digits.substr(0, value.digits.size() - 18),
                    low = value.digits.substr(value.digits.size() - 18);
        low.erase(0, std::min(low.find_first_not_of('0'), low.size() - 1));
        n.text = cat(value.negative ? "(-" : "(", "((__int128)");
        if (high.size() > 18) {
            std::string higher = high.substr(0, high.size() - 18), middle = high.substr(high.size() - 18);
            middle.erase(0, std::min(middle.find_first_not_of('0'), middle.size() - 1));
            n.text += cat("((__int128)", higher, "LL * 1000000000000000000LL + ", middle, "LL)");
        } else {
            n.text += cat(high, "LL");
        }
        n.text += cat(" * 1000000000000000000LL + ", low, "LL))");
    } else {
        n.kind = Num::Packed;
        n.digits = std::min(n.digits, kMostPacked);
        n.text = constantBytes(packedBytes(value.digits, value.negative, n.digits, true));
    }
    return n;
}

Num Emitter::itemNumber(const Loc &loc)
{
    Num n;
    if (!loc.good()) return n;
    const Item &item = *loc.item;
    if (item.isIndexName) return integerNumber(cat("X", item.number), 10);
    n.digits = item.picture.digits;
    n.scale = item.picture.scale;
    n.isSigned = item.picture.sign;
    if (loc.refmod || item.category == Category::Group || item.category == Category::Alphanumeric ||
        item.category == Category::Alphabetic || item.category == Category::AlphanumericEdited) {
        // A text taken as an integer.
        int64_t length = loc.fixed >= 0 ? loc.fixed : 18;
        n.kind = Num::Packed;
        n.scale = 0;
        n.digits = static_cast<int>(std::min<int64_t>(length, 38));
        n.isSigned = true;
        std::string t = tempBytes(n.digits / 2 + 1);
        if (loc.fixed >= 0)
            n.text = cat("_zvkcBCD_CONV_ZndUS_To_Pckd(", loc.address, length > 38 ? cat(" + ", length - 38) : "", ", ",
                         t, ", ", n.digits, ", ", n.digits, ")");
        else
            n.text = cat("kvr_text_number(", loc.address, ", ", loc.length, ", ", t, ", ", n.digits, ")");
        return n;
    }
    if (item.category == Category::NumericEdited) {
        // De-editing: digits and a sign after them.
        n.kind = Num::Packed;
        n.isSigned = true;
        std::string raw = tempBytes(item.picture.positions + 2), t = tempBytes(n.digits / 2 + 1);
        std::string record = cat("D", ++constants_);
        std::string picture = item.picture.expanded;
        globals_ +=
            cat("static const struct { int16_t length; uint8_t picture[", picture.size(),
                "]; } __attribute__((packed)) ", record, " = {", picture.size(), ", ", bytesLiteral(picture), "};\n");
        n.text = cat("kvr_de_edit((const DeEditRecord *)&", record, ", ", loc.address, ", ", raw, ", ", t, ", ",
                     n.digits, ")");
        return n;
    }
    switch (item.usage) {
    case Usage::Float:
        return floatNumber(cat("kvr_get_float(", loc.address, ")"));
    case Usage::Double:
        return floatNumber(cat("kvr_get_double(", loc.address, ")"));
    case Usage::Binary:
    case Usage::Native:
    case Usage::Index:
    case Usage::CompX:
        if (item.usage == Usage::Native || item.nativeBinary || !options_.truncate)
            n.digits = item.size == 1 ? 3 : item.size == 2 ? 5 : item.size == 4 ? 10 : 20;
        n.text = cat(n.wide() ? "(__int128)" : "", "kvr_get_",
                     item.picture.sign || item.usage == Usage::Index ? "s" : "u", item.size, "(", loc.address, ")");
        if (!n.wide() && item.size < 8) n.text = cat("(int64_t)", n.text);
        if (!n.wide() && item.size == 8) n.text = cat("(int64_t)", n.text);
        return n;
    case Usage::Packed:
        n.kind = Num::Packed;
        n.text = loc.address;
        n.direct = true;
        return n;
    case Usage::Pointer:
    case Usage::ProcedurePointer:
        return integerNumber(cat("(int64_t)kvr_get_u8(", loc.address, ")"), 18);
    default:
        break;
    }
    // Zoned
    if (n.digits <= 18 && (item.signForm == SignForm::None || item.signForm == SignForm::Trailing)) {
        n.text = cat(item.signForm == SignForm::Trailing ? "kvr_zoned_number(" : "_zvkcBCD_CONV_Znd_To_Int8(",
                     loc.address, ", ", n.digits, ")");
        return n;
    }
    static const char *const forms[] = {"US", "TO", "LO", "TS", "LS"};
    n.kind = Num::Packed;
    std::string t = tempBytes(n.digits / 2 + 1);
    n.text = cat("_zvkcBCD_CONV_Znd", forms[static_cast<int>(item.signForm)], "_To_Pckd(", loc.address, ", ", t, ", ",
                 n.digits, ", ", n.digits, ")");
    return n;
}

// ---- Conversions between kinds

Num Emitter::toPacked(Num a)
{
    if (a.kind == Num::Packed || !a.good()) return a;
    if (a.kind == Num::Float) a = scaleTo(a, 9, false);
    if (a.literal) {
        a.kind = Num::Packed;
        a.text = constantBytes(packedBytes(a.value.digits, a.value.negative, a.digits, true));
        return a;
    }
    int digits = std::min(a.digits, kMostPacked);
    std::string t = tempBytes(digits / 2 + 1);
    if (a.wide())
        a.text = cat("kvr_pack(", a.text, ", ", t, ", ", digits, ")");
    else
        a.text = cat("_zvkcBCD_CONV_Int8_To_Pckd(", a.text, ", ", t, ", ", digits, ")");
    a.kind = Num::Packed;
    a.digits = digits;
    a.direct = false;
    return a;
}

Num Emitter::toInt(Num a)
{
    if (a.kind == Num::Int || !a.good()) return a;
    if (a.kind == Num::Float) return scaleTo(a, 0, false);
    if (a.digits > 18)
        a.text = cat("kvr_unpack(", a.text, ", ", a.digits, ")");
    else
        a.text = cat("_zvkcBCD_CONV_Pckd_To_Int8(", a.text, ", ", a.digits, ")");
    if (a.digits > kMostInt) a.digits = kMostInt;
    a.kind = Num::Int;
    a.direct = false;
    return a;
}

Num Emitter::toFloat(Num a)
{
    if (a.kind == Num::Float || !a.good()) return a;
    if (a.literal) return floatNumber(cat(a.value.negative ? "-" : "", a.value.digits, "e", -a.value.scale));
    int scale = a.scale;
    if (a.kind == Num::Packed) a = toInt(a);
    if (scale > 0)
        a.text = cat("((double)(", a.text, ") / 1e", scale, ")");
    else
        a.text = cat("((double)(", a.text, ")", scale < 0 ? cat(" * 1e", -scale) : "", ")");
    return floatNumber(a.text);
}

// The same value with more decimal places.
Num Emitter::scaleUp(Num a, int scale)
{
    int k = scale - a.scale;
    if (k <= 0 || !a.good()) return a;
    if (a.literal) {
        Decimal d = a.value;
        if (!d.isZero()) d.digits.append(static_cast<size_t>(k), '0');
        d.scale += k;
        bool packed = a.kind == Num::Packed;
        Num n = literalNumber(d);
        return packed ? toPacked(n) : n;
    }
    if (a.kind == Num::Int && a.digits + k <= kMostInt) {
        int digits = a.digits + k;
        a.text = cat("(", digits > 18 && !a.wide() ? "(__int128)" : "", "(", a.text, ") * ", powerOfTen(k), ")");
        a.digits = digits;
        a.scale = scale;
        return a;
    }
    a = toPacked(a);
    int digits = std::min(a.digits + k, kMostPacked);
    std::string t = tempBytes(digits / 2 + 1);
    a.text = cat("_zvkcBCD_SHFD_Pckd_Left(", a.text, ", ", t, ", ", digits, ", ", a.digits, ", ", k, ")");
    a.digits = digits;
    a.scale = scale;
    a.direct = false;
    return a;
}

// The value with so many decimal places, cut or rounded.
Num Emitter::scaleTo(Num a, int scale, bool rounded)
{
    if (!a.good()) return a;
    if (a.kind == Num::Float) {
        Num n = integerNumber(cat("kvr_fixed(", a.text, ", ", scale, ", ", rounded ? 1 : 0, ")"), kMostInt);
        n.scale = scale;
        return n;
    }
    int k = a.scale - scale;
    if (k <= 0) return scaleUp(a, scale);
    if (a.literal) {
        std::string digits = a.value.digits;
        Decimal d = a.value;
        d.digits = digitsAtScale(a.value, scale);
        d.scale = scale;
        if (rounded && static_cast<int>(digits.size()) >= k && digits[digits.size() - static_cast<size_t>(k)] >= '5') {
            size_t i = d.digits.size();
            while (i > 0 && d.digits[i - 1] == '9') d.digits[--i] = '0';
            if (i == 0)
                d.digits.insert(0, "1");
            else
                d.digits[i - 1]++;
        }
        if (d.isZero()) d.negative = false;
        bool packed = a.kind == Num::Packed;
        Num n = literalNumber(d);
        return packed ? toPacked(n) : n;
    }
    if (a.kind == Num::Int) {
        if (k > kMostInt - 1) {
            Num zero = integerNumber("0LL", 1);
            zero.scale = scale;
            return zero;
        }
        if (rounded)
            a.text = cat(a.wide() ? "kvr_round_wide("
                         : k > 18 ? "kvr_round_wide("
                                  : "kvr_round(",
                         a.text, ", ", powerOfTen(k), ")");
        else
            a.text = cat("((", a.text, ") / ", powerOfTen(k), ")");
        bool wasWide = a.wide();
        a.digits = std::max(a.digits - k + (rounded ? 1 : 0), 1);
        a.scale = scale;
        if (wasWide && !a.wide()) a.text = cat("(int64_t)", a.text);
        if (!wasWide && k > 18) a.text = cat("(int64_t)", a.text);
        return a;
    }
    int digits = std::max(a.digits - k + (rounded ? 1 : 0), 1);
    std::string t = tempBytes(digits / 2 + 1);
    a.text = cat("_zvkcBCD_SHFD_Pckd_Right", rounded ? "Rnd" : "", "(", a.text, ", ", t, ", ", digits, ", ", a.digits,
                 ", ", k, ")");
    a.digits = digits;
    a.scale = scale;
    a.direct = false;
    return a;
}

// Evaluates a number once; what comes back may be used several times. `copy`: also of an item that
// is changed later.
Num Emitter::keep(Num a, bool copy)
{
    if (a.literal || !a.good()) return a;
    if (a.kind == Num::Packed) {
        if (a.direct && !copy) return a;
        if (a.direct) {
            std::string t = tempBytes(a.digits / 2 + 1);
            put(cat("memcpy(", t, ", ", a.text, ", ", a.digits / 2 + 1, ");\n"));
            a.text = t;
        } else {
            std::string t = temp("uint8_t *");
            put(cat(t, " = ", a.text, ";\n"));
            a.text = t;
        }
        a.direct = false;
        return a;
    }
    std::string t = temp(a.kind == Num::Float ? "double" : a.wide() ? "__int128" : "int64_t");
    put(cat(t, " = ", a.text, ";\n"));
    a.text = t;
    return a;
}

// ---- Operations

Num Emitter::add(Num a, Num b, bool minus)
{
    if (!a.good() || !b.good()) return Num{};
    if (a.kind == Num::Float || b.kind == Num::Float) {
        a = toFloat(a), b = toFloat(b);
        return floatNumber(cat("(", a.text, minus ? " - " : " + ", "(", b.text, "))"));
    }
    int scale = std::max(a.scale, b.scale);
    int whole = std::max(a.digits - a.scale, b.digits - b.scale);
    int digits = whole + scale + 1;
    bool packed = (a.kind == Num::Packed || b.kind == Num::Packed) &&
                  !(a.kind == Num::Int && !a.literal && b.digits <= 18 && digits <= kMostInt && false);
    if (!packed && digits <= kMostInt) {
        a = scaleUp(a, scale), b = scaleUp(b, scale);
        if (a.kind == Num::Int && b.kind == Num::Int) {
            bool wide = digits > 18;
            Num n = integerNumber(cat("(", wide && !a.wide() ? "(__int128)" : "", "(", a.text, ")",
                                      minus ? " - " : " + ", wide && !b.wide() ? "(__int128)" : "", "(", b.text, "))"),
                                  digits);
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
    if (minus) b = negate(b);
    std::string t = tempBytes(digits / 2 + 1);
    Num n;
    n.kind = Num::Packed;
    n.digits = digits;
    n.scale = scale;
    n.cut = cat("_zvkcBCD_ADD_Pckd(", a.text, ", ", b.text, ", ", t, ", @, ", b.digits, ", ", a.digits, ")");
    n.text = n.cut;
    n.text.replace(n.text.rfind('@'), 1, std::to_string(digits));
    n.cutOf = n.text;
    return n;
}

Num Emitter::negate(Num a)
{
    if (!a.good()) return a;
    if (a.literal) {
        Decimal d = a.value;
        if (!d.isZero()) d.negative = !d.negative;
        bool packed = a.kind == Num::Packed;
        Num n = literalNumber(d);
        return packed ? toPacked(n) : n;
    }
    if (a.kind != Num::Packed) {
        a.text = cat("(-(", a.text, "))");
        a.isSigned = true;
        return a;
    }
    std::string t = tempBytes(a.digits / 2 + 1);
    a.text = cat("_zvkcBCD_NEG_Pckd(", a.text, ", ", t, ", ", a.digits, ", ", a.digits, ")");
    a.isSigned = true;
    a.direct = false;
    return a;
}

Num Emitter::multiply(Num a, Num b)
{
    if (!a.good() || !b.good()) return Num{};
    if (a.kind == Num::Float || b.kind == Num::Float) {
        a = toFloat(a), b = toFloat(b);
        return floatNumber(cat("(", a.text, " * ", b.text, ")"));
    }
    int digits = a.digits + b.digits, scale = a.scale + b.scale;
    if (a.kind == Num::Int && b.kind == Num::Int && digits <= kMostInt) {
        bool wide = digits > 18;
        Num n = integerNumber(cat("(", wide && !a.wide() ? "(__int128)" : "", "(", a.text, ") * ",
                                  wide && !b.wide() ? "(__int128)" : "", "(", b.text, "))"),
                              digits);
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
    a = toPacked(a), b = toPacked(b);
    digits = std::min(a.digits + b.digits, kMostPacked);
    scale = a.scale + b.scale;
    std::string t = tempBytes(digits / 2 + 1);
    Num n;
    n.kind = Num::Packed;
    n.digits = digits;
    n.scale = scale;
    n.text =
        cat("_zvkcBCD_MPY_Pckd(", a.text, ", ", b.text, ", ", t, ", ", digits, ", ", b.digits, ", ", a.digits, ")");
    return n;
}

std::string Emitter::zeroFlag()
{
    if (zeroFlag_.empty()) {
        zeroFlag_ = temp("int");
        insertions_[blocks_.back()].text += cat(zeroFlag_, " = 0; ");
    }
    return zeroFlag_;
}

// The quotient with `scale` decimal places; -1: as many as there is room for.
Num Emitter::divide(Num a, Num b, int scale)
{
    if (!a.good() || !b.good()) return Num{};
    if (a.kind == Num::Float || b.kind == Num::Float) {
        a = toFloat(a), b = toFloat(b);
        return floatNumber(cat("kvr_divide_float(", a.text, ", ", b.text, ", &", zeroFlag(), ")"));
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
        bool wide = digits > 18 || b.wide();
        a = scaleUp(a, a.scale + k);
        Num n =
            integerNumber(cat(wide ? "kvr_divide_wide(" : "kvr_divide(", a.text, ", ", b.text, ", &", zeroFlag(), ")"),
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
    a = toPacked(a), b = toPacked(b);
    int aScale = a.scale;
    a = scaleUp(a, aScale + k);
    std::string t = tempBytes(digits / 2 + 1);
    Num n;
    n.kind = Num::Packed;
    n.digits = digits;
    n.scale = scale;
    n.text = cat("kvr_divide_packed(", a.text, ", ", b.text, ", ", t, ", ", digits, ", ", b.digits, ", ", a.digits,
                 ", &", zeroFlag(), ")");
    return n;
}

Num Emitter::power(Num a, Num b, const Expr *exponent)
{
    Decimal d;
    if (a.kind != Num::Float && meaning_.constantNumber(*program_, exponent, d) && !d.negative && d.scale == 0 &&
        d.digits.size() <= 2) {
        int n = std::atoi(d.digits.c_str());
        if (n == 0) {
            if (a.literal && !a.value.isZero()) return integerNumber("1LL", 1);
            Decimal zero;
            zero.digits = "0";
            std::string test = compareNumbers(a, literalNumber(zero), '=');
            return integerNumber(cat("(", zeroFlag(), " |= ", test, ", 1LL)"), 1); // zero to the power of zero
        }
        if (n == 1) return a;
        if (a.digits * n <= kMostPacked) {
            Num base = keep(a, false), result = base;
            for (int i = 1; i < n; i++) result = multiply(result, base);
            return result;
        }
    }
    a = toFloat(a), b = toFloat(b);
    return floatNumber(cat("kvr_power(", a.text, ", ", b.text, ", &", zeroFlag(), ")"));
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
    case ExprKind::Negate: {
        Num n = number(e->left, wantScale);
        return negate(n);
    }
    case ExprKind::Reference: {
        Loc loc = locate(*e->ref);
        if (!loc.good()) return Num{};
        if (!loc.refmod && !isNumericItem(*loc.item) && loc.item->category != Category::NumericEdited &&
            loc.item->category != Category::Pointer) {
            error(e->at, wordText(e->ref->names[0]) + " is no numeric item");
            return Num{};
        }
        if (loc.refmod) {
            error(e->at, "a part of an item is no number");
            return Num{};
        }
        return itemNumber(loc);
    }
    case ExprKind::LengthOf: {
        if (e->left) return integerNumber(cat(e->left->text.size(), "LL"), 10);
        if (!e->ref) return Num{};
        Item *item = meaning_.resolve(*program_, *e->ref);
        if (!item) return Num{};
        // A table's own length of one occurrence needs no subscripts.
        if (e->ref->subscripts.empty() && !e->ref->refmod && !item->hasDepending)
            return integerNumber(cat(item->size, "LL"), 10);
        Loc loc = locate(*e->ref);
        return integerNumber(cat("(int64_t)(", loc.length, ")"), 10);
    }
    case ExprKind::Arithmetic: {
        if (e->op == '+' || e->op == '-') {
            Num a = number(e->left, -1), b = number(e->right, -1);
            return add(a, b, e->op == '-');
        }
        if (e->op == '*') {
            Num a = number(e->left, -1), b = number(e->right, -1);
            return multiply(a, b);
        }
        if (e->op == '/') {
            Num a = number(e->left, -1), b = number(e->right, -1);
            return divide(a, b, wantScale);
        }
        Num a = number(e->left, -1), b = number(e->right, -1);
        if (!a.good() || !b.good()) return Num{};
        return power(a, b, e->right);
    }
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
    const char *sign = op == '='             ? "=="
                       : op == '<'           ? "<"
                       : op == '>'           ? ">"
                       : op == kLessEqual    ? "<="
                       : op == kGreaterEqual ? ">="
                                             : "!=";
    if (a.kind == Num::Float || b.kind == Num::Float) {
        a = toFloat(a), b = toFloat(b);
        return cat("(kvr_compare_float(", a.text, ", ", b.text, ") ", sign, " 0)");
    }
    int scale = std::max(a.scale, b.scale);
    if ((a.kind == Num::Int && b.kind == Num::Int) &&
        std::max(a.digits - a.scale, b.digits - b.scale) + scale <= kMostInt) {
        a = scaleUp(a, scale), b = scaleUp(b, scale);
        return cat("(", a.text, " ", sign, " ", b.text, ")");
    }
    if (b.literal && b.value.isZero() && a.kind == Num::Packed && (op == '=' || op == kNotEqual))
        return cat("(", op == '=' ? "" : "!", "_zvkcBCD_NOT_Pckd(", a.text, ", ", a.digits, "))");
    a = toPacked(a), b = toPacked(b);
    a = scaleUp(a, scale), b = scaleUp(b, scale);
    const char *entry = op == '='             ? "EQU"
                        : op == '<'           ? "LES"
                        : op == '>'           ? "GRT"
                        : op == kLessEqual    ? "LEQ"
                        : op == kGreaterEqual ? "GEQ"
                                              : "NEQ";
    return cat("(_zvkcBCD_", entry, "_Pckd(", a.text, ", ", b.text, ", ", b.digits, ", ", a.digits, "))");
}

// ---- Storing

void Emitter::storeEdited(Num value, const Loc &target)
{
    const Item &item = *target.item;
    int klass = editClass(item.picture);
    std::string picture = item.picture.expanded;
    if (item.blankWhenZero) klass = klass == 0 ? 1 : klass;
    int code = item.blankWhenZero ? 256 - klass : klass;
    bool allSuppressed = picture.find('9') == std::string::npos && picture.find_first_of("Z*") != std::string::npos;
    if (picture.find('9') == std::string::npos && klass >= 6) allSuppressed = true;
    std::string record = cat("P", ++constants_);
    globals_ += cat("static const struct { int16_t length; uint8_t point, currency, editClass, picture[",
                    picture.size(), "]; } __attribute__((packed)) ", record, " = {", allSuppressed ? "-" : "",
                    picture.size(), ", ", static_cast<int>(program_->commaIsPoint ? ',' : '.'), ", ",
                    static_cast<int>(static_cast<uint8_t>(item.picture.currency)), ", ", code, ", ",
                    bytesLiteral(picture), "};\n");
    value = toPacked(value);
    std::string digits = tempBytes(item.picture.digits + 1);
    put(cat("_zvkcMoveNumToNumEdit((const NumericEditRecord *)&", record, ", _zvkcBCD_CONV_Pckd_To_ZndLS(", value.text,
            ", ", digits, ", ", item.picture.digits, ", ", value.digits, "), ", target.address, ");\n"));
}

void Emitter::store(Num value, const Loc &target, bool rounded, const std::string &sizeError)
{
    if (!value.good() || !target.good()) return;
    const Item &item = *target.item;
    if (item.isIndexName) {
        value = toInt(scaleTo(value, 0, rounded));
        put(cat("X", item.number, " = ", value.text, ";\n"));
        return;
    }
    if (item.usage == Usage::Float || item.usage == Usage::Double) {
        value = toFloat(value);
        put(cat("kvr_put_", item.usage == Usage::Float ? "float" : "double", "(", target.address, ", ", value.text,
                ");\n"));
        return;
    }
    int scale = item.picture.scale, digits = item.picture.digits;
    value = scaleTo(value, scale, rounded);
    if (value.kind == Num::Int && value.digits > kMostInt) value = toPacked(value);
    if (value.kind == Num::Packed && value.digits <= 18 &&
        (item.usage == Usage::Binary || item.usage == Usage::Native || item.usage == Usage::Index))
        value = toInt(value);

    // Does it fit?
    bool binary = item.usage == Usage::Binary || item.usage == Usage::Native || item.usage == Usage::Index ||
                  item.usage == Usage::CompX;
    bool byCapacity = binary && (item.usage != Usage::Binary || item.nativeBinary || !options_.truncate);
    bool check = false;
    if (!sizeError.empty()) {
        if (byCapacity) {
            value = keep(toInt(value), false);
            bool isSigned = item.picture.sign || item.usage == Usage::Index;
            put(cat("if (!kvr_fits_binary(", value.text, ", ", item.size, ", ", isSigned ? 1 : 0, ")) ", sizeError,
                    " = 1; else {\n"));
            check = true;
        } else if (value.digits > digits) {
            value = keep(value, false);
            if (value.kind == Num::Int) {
                put(cat("if (", value.text, " >= ", powerOfTen(digits), " || ", value.text, " <= -", powerOfTen(digits),
                        ") ", sizeError, " = 1; else {\n"));
            } else {
                std::string t = tempBytes((value.digits - digits) / 2 + 1);
                put(cat("if (!_zvkcBCD_NOT_Pckd(_zvkcBCD_SHFD_Pckd_Right(", value.text, ", ", t, ", ",
                        value.digits - digits, ", ", value.digits, ", ", digits, "), ", value.digits - digits, ")) ",
                        sizeError, " = 1; else {\n"));
            }
            check = true;
        }
    }
    bool mayBeNegative = value.isSigned;
    if (item.category == Category::NumericEdited) {
        storeEdited(value, target);
    } else if (binary) {
        if (!check && !byCapacity && value.digits > digits) {
            value = toInt(value);
            value.text = cat("((", value.text, ") % ", powerOfTen(digits), ")");
        }
        value = toInt(value);
        if (!item.picture.sign && mayBeNegative && item.usage != Usage::Index)
            value.text = cat(value.wide() ? "kvr_abs_wide(" : "kvr_abs(", value.text, ")");
        put(cat("kvr_put_", item.size, "(", target.address, ", ", "(int64_t)(", value.text, "));\n"));
    } else if (item.usage == Usage::Packed) {
        if (value.kind == Num::Int && !value.wide() && !(!item.picture.sign && mayBeNegative)) {
            put(cat("_zvkcBCD_CONV_Int8_To_Pckd(", value.text, ", ", target.address, ", ", digits, ");\n"));
        } else {
            value = toPacked(value);
            if (!item.picture.sign && mayBeNegative) {
                std::string t = tempBytes(digits / 2 + 1);
                put(cat("memcpy(", target.address, ", _zvkcBCD_ABS_Pckd(", value.text, ", ", t, ", ", digits, ", ",
                        value.digits, "), ", digits / 2 + 1, ");\n"));
            } else if (!value.cut.empty() && value.text == value.cutOf && value.digits >= digits) {
                std::string cut = value.cut;
                cut.replace(cut.rfind('@'), 1, std::to_string(digits));
                put(cat("kvr_put_packed(", target.address, ", ", cut, ", ", item.size, ");\n"));
            } else {
                put(cat("_zvkcBCD_Cpy_Pckd(", value.text, ", ", target.address, ", ", digits, ", ", value.digits,
                        ");\n"));
            }
        }
        if (!item.picture.sign) put(cat(target.address, "[", item.size - 1, "] |= 0x0F;\n"));
    } else {
        static const char *const forms[] = {"US", "TO", "LO", "TS", "LS"};
        bool plain = item.signForm == SignForm::None || item.signForm == SignForm::Trailing;
        if (value.kind == Num::Int && !value.wide() && plain) {
            if (item.signForm == SignForm::None)
                put(cat("_zvkcBCD_CONV_UInt8_To_Znd((uint64_t)",
                        mayBeNegative ? cat("kvr_abs(", value.text, ")") : cat("(", value.text, ")"), ", ",
                        target.address, ", ", digits, ");\n"));
            else
                put(cat("_zvkcBCD_CONV_Int8_To_Znd(", value.text, ", ", target.address, ", ", digits, ");\n"));
        } else {
            value = toPacked(value);
            put(cat("_zvkcBCD_CONV_Pckd_To_Znd", forms[static_cast<int>(item.signForm)], "(", value.text, ", ",
                    target.address, ", ", digits, ", ", value.digits, ");\n"));
        }
    }
    if (check) put("}\n");
}

} // namespace kvrcob
