// Storing a number into an item of any usage: to its decimal places, cut or rounded, with or
// without a check that it fits, edited where the item is.
#include "cobol/emit/emitter.h"
#include "cobol/meaning/picture.h"

namespace kvrcob {

void Emitter::storeEdited(Num value, const Loc &target)
{
    const Item &item = *target.item;
    int klass = editClass(item.picture);
    std::string picture = item.picture.expanded;
    if (item.blankWhenZero) klass = klass == 0 ? 1 : klass;
    int code = item.blankWhenZero ? 256 - klass : klass;
    bool allSuppressed = picture.find('9') == std::string::npos && picture.find_first_of("Z*") != std::string::npos;
    if (picture.find('9') == std::string::npos && klass >= 6) allSuppressed = true;
    std::string record = constantRecord("P",
                                        cat("struct { int16_t length; uint8_t point, currency, editClass, picture[",
                                            picture.size(), "]; } __attribute__((packed))"),
                                        cat("{", allSuppressed ? "-" : "", picture.size(), ", ",
                                            static_cast<int>(program_->commaIsPoint ? ',' : '.'), ", ",
                                            static_cast<int>(static_cast<uint8_t>(item.picture.currency)), ", ", code,
                                            ", ", bytesLiteral(picture), "}"));
    value = toPacked(std::move(value));
    std::string digits = tempBytes(item.picture.digits + 1);
    put(emits(Do::Edit, Of::NumericEdited, Of::Packed), "((const NumericEditRecord *)&", record, ", ",
        emits(Do::EditDigits, Of::NumericEdited, Of::Packed), "(", value.text, ", ", digits, ", ", item.picture.digits,
        ", ", value.digits, "), ", target.address, ");\n");
}

// ---- Does it fit?

static bool isBinary(const Item &item)
{
    return item.usage == Usage::Binary || item.usage == Usage::Native || item.usage == Usage::Index ||
           item.usage == Usage::CompX;
}

// A binary item that holds what its bytes can hold, whatever its picture.
bool Emitter::fillsItsBytes(const Item &item) const
{
    return isBinary(item) && (item.usage != Usage::Binary || item.nativeBinary || !options_.truncate);
}

// Emits the test of a size error and opens the branch of what fits. False: whatever the value, it
// fits.
bool Emitter::sizeTest(Num &value, const Item &item, const std::string &sizeError)
{
    const int digits = item.picture.digits, more = value.digits - digits;
    if (fillsItsBytes(item)) {
        value = keep(toInt(std::move(value)), false);
        const bool isSigned = item.picture.sign || item.usage == Usage::Index;
        put("if (!", emits(Do::Fits, Of::Signed), "(", value.text, ", ", item.size, ", ", isSigned ? 1 : 0, ")) ",
            sizeError, " = 1; else {\n");
        return true;
    }
    if (more <= 0) return false;
    value = keep(std::move(value), false);
    if (value.kind == Num::Int) {
        put("if (", value.text, emits(Do::Fits, Of::Integer), powerOfTen(digits), " || ", value.text, " <= -",
            powerOfTen(digits), ") ", sizeError, " = 1; else {\n");
    } else {
        std::string t = tempBytes(more / 2 + 1);
        put("if (!", emits(Do::IsZero, Of::Packed), "(", emits(Do::Fits, Of::Packed), "(", value.text, ", ", t, ", ",
            more, ", ", value.digits, ", ", digits, "), ", more, ")) ", sizeError, " = 1; else {\n");
    }
    return true;
}

// ---- By usage. The value has the item's decimal places.

void Emitter::storeBinary(Num value, const Loc &target, bool fits)
{
    const Item &item = *target.item;
    const bool dropsSign = value.isSigned && !item.picture.sign && item.usage != Usage::Index;
    if (!fits && value.digits > item.picture.digits) {
        value = toInt(std::move(value));
        value.text = cat(value.wide() ? emits(Do::Cut, Of::Wide) : emits(Do::Cut, Of::Integer), "(", value.text, ", ",
                         powerOfTen(item.picture.digits), ")");
    }
    value = toInt(std::move(value));
    if (dropsSign)
        value.text =
            cat(value.wide() ? emits(Do::Absolute, Of::Wide) : emits(Do::Absolute, Of::Integer), "(", value.text, ")");
    if (item.usage == Usage::CompX)
        put(emits(Do::Store, Of::BigEndian, Of::Integer), "(", target.address, ", ", item.size, ", (uint64_t)(",
            value.text, "));\n");
    else
        put(emits(Do::Store, Of::Signed, Of::Integer), item.size, "(", target.address, ", ", "(int64_t)(", value.text,
            "));\n");
}

void Emitter::storePacked(Num value, const Loc &target)
{
    const Item &item = *target.item;
    const int digits = item.picture.digits;
    const bool dropsSign = value.isSigned && !item.picture.sign;
    if (value.kind == Num::Int && !value.wide() && !dropsSign) {
        put(emits(Do::Store, Of::Packed, Of::Integer), "(", value.text, ", ", target.address, ", ", digits, ");\n");
    } else if (value = toPacked(std::move(value)); dropsSign) {
        std::string t = tempBytes(digits / 2 + 1);
        put("memcpy(", target.address, ", ", emits(Do::Store, Of::PackedUnsigned, Of::Packed), "(", value.text, ", ", t,
            ", ", digits, ", ", value.digits, "), ", digits / 2 + 1, ");\n");
    } else if (value.cut && value.text == value.cutTo(value.digits) && value.digits >= digits) {
        put(emits(Do::StoreSum, Of::Packed, Of::Packed), "(", target.address, ", ", value.cutTo(digits), ", ",
            item.size, ");\n");
    } else {
        put(emits(Do::Store, Of::Packed, Of::Packed), "(", value.text, ", ", target.address, ", ", digits, ", ",
            value.digits, ");\n");
    }
    if (!item.picture.sign) put(target.address, "[", item.size - 1, "] |= 0x0F;\n");
}

void Emitter::storeComp6(const Num &value, const Loc &target)
{
    put(emits(Do::Store, Of::Comp6, Of::Packed), "(", value.text, ", ", target.address, ", ",
        target.item->picture.digits, ", ", value.digits, ");\n");
}

void Emitter::storeZoned(Num value, const Loc &target)
{
    const SignForm form = target.item->signForm;
    const int digits = target.item->picture.digits;
    const bool inLine = value.kind == Num::Int && !value.wide();
    if (inLine && form == SignForm::None) {
        const std::string_view magnitude = value.isSigned ? emits(Do::Absolute, Of::Integer) : "";
        put(emits(Do::Store, Of::ZonedUnsigned, Of::Integer), "((uint64_t)", magnitude, "(", value.text, "), ",
            target.address, ", ", digits, ");\n");
    } else if (inLine && form == SignForm::Trailing) {
        put(emits(Do::Store, Of::ZonedTrailing, Of::Integer), "(", value.text, ", ", target.address, ", ", digits,
            ");\n");
    } else {
        value = toPacked(std::move(value));
        put(emitsFor(Do::Store, zonedOf(form), Of::Packed), "(", value.text, ", ", target.address, ", ", digits, ", ",
            value.digits, ");\n");
    }
}

// ROUNDED MODE IS PROHIBITED: what would lose digits is a size error.
void Emitter::storeExact(Num value, const Loc &target, const std::string &sizeError)
{
    value = keep(std::move(value), true);
    std::string exact = compareNumbers(value, scaleTo(value, target.item->picture.scale, false), '=');
    put("if (!", exact, ") ", sizeError.empty() ? ";" : cat(sizeError, " = 1;"), " else {\n");
    store(std::move(value), target, false, sizeError);
    put("}\n");
}

void Emitter::store(Num value, const Loc &target, Rounding rounded, const std::string &sizeError)
{
    if (!value.good() || !target.good()) return;
    const Item &item = *target.item;
    if (rounded == RoundingProhibited) {
        storeExact(std::move(value), target, sizeError);
        return;
    }
    if (item.isIndexName) {
        put("X", item.number, " = ", toInt(scaleTo(std::move(value), 0, rounded)).text, ";\n");
        return;
    }
    if (item.usage == Usage::Float || item.usage == Usage::Double) {
        put(item.usage == Usage::Float ? emits(Do::Store, Of::Comp1, Of::Float)
                                       : emits(Do::Store, Of::Comp2, Of::Float),
            "(", target.address, ", ", toFloat(std::move(value)).text, ");\n");
        return;
    }

    value = scaleTo(std::move(value), item.picture.scale, rounded);
    const bool binary = isBinary(item);
    if (value.kind == Num::Int && value.digits > kMostInt) value = toPacked(std::move(value));
    if (value.kind == Num::Packed && value.digits <= 18 && binary && item.usage != Usage::CompX)
        value = toInt(std::move(value));

    const bool tested = !sizeError.empty() && sizeTest(value, item, sizeError);
    if (item.category == Category::NumericEdited)
        storeEdited(std::move(value), target);
    else if (binary)
        storeBinary(std::move(value), target, tested || fillsItsBytes(item));
    else if (item.usage == Usage::Packed)
        storePacked(std::move(value), target);
    else if (item.usage == Usage::Comp6)
        storeComp6(toPacked(std::move(value)), target);
    else
        storeZoned(std::move(value), target);
    if (tested) put("}\n");
}

} // namespace kvrcob
