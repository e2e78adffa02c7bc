// Numbers of items, and the ways between the kinds of numbers and their scales.
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {

// Where a packed or zoned item is; with -fcheck its content is looked at on the way.
std::string Emitter::checkedAddress(const Loc &loc)
{
    if (!options_.check) return loc.address;
    const Item &item = *loc.item;
    int form = item.usage != Usage::Packed ? static_cast<int>(item.signForm) : item.picture.sign ? -1 : -2;
    const Spot &spot = group_.spot(inStatement_.at);
    return cat(emits(Do::CheckNumber, Of::Packed), "(", loc.address, ", ", item.picture.digits, ", ", form, ", ",
               bytesLiteral(item.name ? wordText(item.name) : "FILLER"), ", ", bytesLiteral(sources()[spot.file].path),
               ", ", spot.line, ")");
}

// What an item's description says of its number, without the way to get it.
static Num describedNumber(const Item &item)
{
    Num n;
    n.digits = item.picture.digits;
    n.scale = item.picture.scale;
    n.isSigned = item.picture.sign;
    return n;
}

// A text taken as an integer.
Num Emitter::textInteger(const Loc &loc)
{
    const int64_t length = loc.fixed >= 0 ? loc.fixed : 18;
    Num n;
    n.kind = Num::Packed;
    n.digits = static_cast<int>(std::min<int64_t>(length, 38));
    std::string t = tempBytes(n.digits / 2 + 1);
    if (loc.fixed >= 0)
        n.text = cat(emits(Do::Load, Of::ZonedUnsigned, Of::Packed), "(", loc.address,
                     length > 38 ? cat(" + ", length - 38) : "", ", ", t, ", ", n.digits, ", ", n.digits, ")");
    else
        n.text = cat(emits(Do::Load, Of::Varying, Of::Packed), "(", loc.address, ", ", loc.length, ", ", t, ", ",
                     n.digits, ", 0, '.')");
    return n;
}

// De-editing: digits and a sign after them.
Num Emitter::deEditedNumber(const Loc &loc)
{
    const Item &item = *loc.item;
    Num n = describedNumber(item);
    n.kind = Num::Packed;
    n.isSigned = true;
    std::string raw = tempBytes(item.picture.positions + 2), t = tempBytes(n.digits / 2 + 1);
    const std::string &picture = item.picture.expanded;
    std::string record = constantRecord(
        "D", cat("struct { int16_t length; uint8_t picture[", picture.size(), "]; } __attribute__((packed))"),
        cat("{", picture.size(), ", ", bytesLiteral(picture), "}"));
    n.text = cat(emits(Do::Load, Of::NumericEdited, Of::Packed), "((const DeEditRecord *)&", record, ", ", loc.address,
                 ", ", raw, ", ", t, ", ", n.digits, ")");
    return n;
}

Num Emitter::binaryNumber(const Loc &loc)
{
    const Item &item = *loc.item;
    Num n = describedNumber(item);
    const bool hasSign = item.picture.sign || item.usage == Usage::Index;
    const bool byCapacity = item.usage == Usage::Native || item.nativeBinary || !options_.truncate;
    if (byCapacity) n.digits = item.size == 1 ? 3 : item.size == 2 ? 5 : item.size == 4 ? 10 : 20;
    // I * J + K has 19 digits, but fits into 64 bits if each of them has 32.
    if (byCapacity || (item.size == 4 && n.digits == 9))
        n.most = static_cast<unsigned __int128>(1) << (item.size * 8 - (hasSign ? 1 : 0));
    n.text =
        cat(n.wide() ? "(__int128)" : "(int64_t)",
            hasSign ? emits(Do::Load, Of::Signed) : emits(Do::Load, Of::Unsigned), item.size, "(", loc.address, ")");
    return n;
}

Num Emitter::zonedNumber(const Loc &loc)
{
    const SignForm form = loc.item->signForm;
    Num n = describedNumber(*loc.item);
    Loc zoned = loc;
    if (loc.item->section == Item::Special && form == SignForm::LeadingSeparate) // DEBUG-SUB-1
        zoned.address = cat(emits(Do::DebugSubscript, Of::ZonedLeadingSeparate), "(", loc.address, ")");
    std::string address = checkedAddress(zoned);
    if (n.digits <= 18 && (form == SignForm::None || form == SignForm::Trailing)) {
        const bool few = n.digits <= 4;
        const std::string_view unsignedOne =
            few ? emits(Do::Load, Of::FewUnsigned, Of::Integer) : emits(Do::Load, Of::ZonedUnsigned, Of::Integer);
        const std::string_view signedOne =
            few ? emits(Do::Load, Of::FewTrailing, Of::Integer) : emits(Do::Load, Of::ZonedTrailing, Of::Integer);
        n.text = cat(form == SignForm::Trailing ? signedOne : unsignedOne, "(", address, ", ", n.digits, ")");
        return n;
    }
    n.kind = Num::Packed;
    std::string t = tempBytes(n.digits / 2 + 1);
    n.text =
        cat(emitsFor(Do::Load, zonedOf(form), Of::Packed), "(", address, ", ", t, ", ", n.digits, ", ", n.digits, ")");
    return n;
}

Num Emitter::itemNumber(const Loc &loc)
{
    Num n;
    if (!loc.good()) return n;
    const Item &item = *loc.item;
    if (item.isIndexName) return integerNumber(cat("X", item.number), 10);
    if (loc.refmod || item.category == Category::Group || item.category == Category::Alphanumeric ||
        item.category == Category::Alphabetic || item.category == Category::AlphanumericEdited)
        return textInteger(loc);
    if (item.category == Category::NumericEdited) return deEditedNumber(loc);
    if (const LoopCounter *c = counterOf(item)) return c->value;

    switch (item.usage) {
    case Usage::Float:
        n = floatNumber(cat(emits(Do::Load, Of::Comp1), "(", loc.address, ")"));
        n.single = true;
        return n;
    case Usage::Double:
        return floatNumber(cat(emits(Do::Load, Of::Comp2), "(", loc.address, ")"));
    case Usage::CompX:
        n = describedNumber(item);
        n.digits = std::min(static_cast<int>(item.size * 5 + 1) / 2 + 1, 20);
        n.text = cat(n.wide() ? "(__int128)" : "(int64_t)", emits(Do::Load, Of::BigEndian), "(", loc.address, ", ",
                     item.size, ")");
        return n;
    case Usage::Binary:
    case Usage::Native:
    case Usage::Index:
        return binaryNumber(loc);
    case Usage::Packed:
        n = describedNumber(item);
        n.kind = Num::Packed;
        n.text = checkedAddress(loc);
        n.direct = true;
        return n;
    case Usage::Comp6:
        n = describedNumber(item);
        n.kind = Num::Packed;
        n.text = cat(emits(Do::Load, Of::Comp6, Of::Packed), "(", loc.address, ", ", tempBytes(n.digits / 2 + 1), ", ",
                     n.digits, ")");
        return n;
    case Usage::Pointer:
    case Usage::ProcedurePointer:
        return integerNumber(cat("(int64_t)", emits(Do::Load, Of::Pointer), "(", loc.address, ")"), 18);
    default:
        return zonedNumber(loc);
    }
}

Num Emitter::toPacked(Num a)
{
    if (a.kind == Num::Packed || !a.good()) return a;
    if (a.kind == Num::Float) a = scaleTo(std::move(a), 9, false);
    if (a.literal) {
        a.kind = Num::Packed;
        a.text = constantBytes(packedBytes(a.literal->digits, a.literal->negative, a.digits, true));
        return a;
    }
    int digits = std::min(a.digits, kMostPacked);
    std::string t = tempBytes(digits / 2 + 1);
    if (a.wide())
        a.text = cat(emits(Do::ToPacked, Of::Wide), "(", a.text, ", ", t, ", ", digits, ")");
    else
        a.text = cat(emits(Do::ToPacked, Of::Integer), "(", a.text, ", ", t, ", ", digits, ")");
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
        a.text = cat(emits(Do::ToInteger, Of::LongPacked), "(", a.text, ", ", a.digits, ")");
    else
        a.text = cat(emits(Do::ToInteger, Of::Packed), "(", a.text, ", ", a.digits, ")");
    if (a.digits > kMostInt) a.digits = kMostInt;
    a.kind = Num::Int;
    a.direct = false;
    return a;
}

Num Emitter::toFloat(Num a)
{
    if (a.kind == Num::Float || !a.good()) return a;
    if (a.literal) return floatNumber(cat(a.literal->negative ? "-" : "", a.literal->digits, "e", -a.literal->scale));
    if (a.kind == Num::Packed && a.digits > kMostInt && a.scale >= 0)
        return floatNumber(cat(emits(Do::ToFloat, Of::LongPacked), "(", a.text, ", ", a.digits, ", ", a.scale, ")"));
    int scale = a.scale;
    if (a.kind == Num::Packed) a = toInt(std::move(a));
    if (scale > 0)
        a.text = cat("((double)(", a.text, ") / 1e", scale, ")");
    else
        a.text = cat("((double)(", a.text, ")", scale < 0 ? cat(" * 1e", -scale) : "", ")");
    return floatNumber(a.text);
}

// A COMP-1 item among decimal numbers is the shortest one that it can be: 0.7, not 0.699999988.
Num Emitter::decimalSingle(Num a)
{
    a.text = cat(emits(Do::Settle, Of::Comp1), "(", a.text, ")");
    a.single = false;
    return a;
}

// Two operands, one of them floating point.
void Emitter::bothFloat(Num &a, Num &b)
{
    if (a.single && b.kind != Num::Float) a = decimalSingle(std::move(a));
    if (b.single && a.kind != Num::Float) b = decimalSingle(std::move(b));
    a = toFloat(std::move(a)), b = toFloat(std::move(b));
}

// The same value with more decimal places.
Num Emitter::scaleUp(Num a, int scale)
{
    int k = scale - a.scale;
    if (k <= 0 || !a.good()) return a;
    if (a.literal) {
        Decimal d = *a.literal;
        if (!d.isZero()) d.digits.append(static_cast<size_t>(k), '0');
        d.scale += k;
        bool packed = a.kind == Num::Packed;
        Num n = literalNumber(d);
        return packed ? toPacked(n) : n;
    }
    if (a.kind == Num::Int && a.digits + k <= kMostInt) {
        int digits = a.digits + k;
        Num scaled = a;
        scaled.digits = digits;
        scaled.most = a.most <= INT64_MAX && k <= 18 ? a.most : 0;
        for (int i = 0; i < k; i++) scaled.most *= 10;
        a.text = cat("(", scaled.wide() && !a.wide() ? "(__int128)" : "", "(", a.text, ")",
                     emits(Do::MorePlaces, Of::Integer), powerOfTen(k), ")");
        a.digits = digits;
        a.most = scaled.most;
        a.scale = scale;
        return a;
    }
    a = toPacked(std::move(a));
    int digits = std::min(a.digits + k, kMostPacked);
    std::string t = tempBytes(digits / 2 + 1);
    a.text = cat(emits(Do::MorePlaces, Of::Packed), "(", a.text, ", ", t, ", ", digits, ", ", a.digits, ", ", k, ")");
    a.digits = digits;
    a.scale = scale;
    a.direct = false;
    return a;
}

// A mode of rounding other than those of ROUNDED and of cutting: by way of an integer.
Num Emitter::roundedByMode(Num a, int scale, Rounding mode)
{
    const int k = a.scale - scale;
    if (a.digits > kMostInt || k >= kMostInt) {
        notBuilt(inStatement_.at, "this mode of rounding of a result with so many digits");
        return Num{};
    }
    a = toInt(std::move(a));
    Num n = integerNumber(
        cat(emits(Do::RoundedMode, Of::Wide), "(", a.text, ", ", powerOfTen(k), ", ", static_cast<int>(mode), ")"),
        std::max(a.digits - k + 1, 1));
    n.scale = scale;
    if (!n.wide()) n.text = cat("(int64_t)", n.text);
    return n;
}

// A literal's k last decimal places go here and now.
Num Emitter::scaledLiteral(const Num &a, int scale, bool rounded)
{
    const std::string &digits = a.literal->digits;
    const auto k = static_cast<size_t>(a.scale - scale);
    Decimal d = *a.literal;
    d.digits = digitsAtScale(*a.literal, scale);
    d.scale = scale;
    if (rounded && digits.size() >= k && digits[digits.size() - k] >= '5') {
        size_t i = d.digits.size();
        while (i > 0 && d.digits[i - 1] == '9') d.digits[--i] = '0';
        if (i == 0)
            d.digits.insert(0, "1");
        else
            d.digits[i - 1]++;
    }
    if (d.isZero()) d.negative = false;
    Num n = literalNumber(d);
    return a.kind == Num::Packed ? toPacked(n) : n;
}

Num Emitter::scaledInteger(Num a, int scale, bool rounded)
{
    const int k = a.scale - scale;
    if (k > kMostInt - 1) {
        Num zero = integerNumber("0LL", 1);
        zero.scale = scale;
        return zero;
    }
    const bool wasWide = a.wide();
    if (rounded)
        a.text = cat(wasWide || k > 18 ? emits(Do::Rounded, Of::Wide) : emits(Do::Rounded, Of::Integer), "(", a.text,
                     ", ", powerOfTen(k), ")");
    else
        a.text = cat("((", a.text, ")", emits(Do::FewerPlaces, Of::Integer), powerOfTen(k), ")");
    a.digits = std::max(a.digits - k + (rounded ? 1 : 0), 1);
    if (a.most) {
        for (int i = 0; i < k; i++) a.most /= 10;
        a.most++;
    }
    a.scale = scale;
    if (wasWide ? !a.wide() : k > 18) a.text = cat("(int64_t)", a.text);
    return a;
}

// The value with so many decimal places, cut or rounded.
Num Emitter::scaleTo(Num a, int scale, Rounding rounded)
{
    if (!a.good()) return a;
    if (a.kind == Num::Float) {
        if (a.single) a = decimalSingle(std::move(a));
        Num n = integerNumber(
            cat(emits(Do::ToInteger, Of::Float), "(", a.text, ", ", scale, ", ", static_cast<int>(rounded), ")"),
            kMostInt);
        n.scale = scale;
        return n;
    }
    const int k = a.scale - scale;
    if (k <= 0) return scaleUp(a, scale);
    if (rounded > NearestAwayFromZero) return roundedByMode(std::move(a), scale, rounded);
    if (a.literal) return scaledLiteral(a, scale, rounded != Truncation);
    if (a.kind == Num::Int) return scaledInteger(std::move(a), scale, rounded != Truncation);
    const int digits = std::max(a.digits - k + (rounded ? 1 : 0), 1);
    std::string t = tempBytes(digits / 2 + 1);
    a.text = cat(rounded ? emits(Do::Rounded, Of::Packed) : emits(Do::FewerPlaces, Of::Packed), "(", a.text, ", ", t,
                 ", ", digits, ", ", a.digits, ", ", k, ")");
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
            put("memcpy(", t, ", ", a.text, ", ", a.digits / 2 + 1, ");\n");
            a.text = t;
        } else {
            std::string t = temp("uint8_t *");
            put(t, " = ", a.text, ";\n");
            a.text = t;
        }
        a.direct = false;
        return a;
    }
    std::string t = temp(a.kind == Num::Float ? "double" : a.wide() ? "__int128" : "int64_t");
    put(t, " = ", a.text, ";\n");
    a.text = t;
    return a;
}

} // namespace kvrcob
