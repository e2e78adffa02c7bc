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

void Emitter::store(Num value, const Loc &target, Rounding rounded, const std::string &sizeError)
{
    if (!value.good() || !target.good()) return;
    const Item &item = *target.item;
    if (rounded == RoundingProhibited) {
        // What would lose digits is a size error.
        value = keep(std::move(value), true);
        std::string exact = compareNumbers(value, scaleTo(value, item.picture.scale, false), '=');
        put("if (!", exact, ") ", sizeError.empty() ? ";" : cat(sizeError, " = 1;"), " else {\n");
        store(value, target, false, sizeError);
        put("}\n");
        return;
    }
    if (item.isIndexName) {
        value = toInt(scaleTo(value, 0, rounded));
        put("X", item.number, " = ", value.text, ";\n");
        return;
    }
    if (item.usage == Usage::Float || item.usage == Usage::Double) {
        value = toFloat(std::move(value));
        put(item.usage == Usage::Float ? emits(Do::Store, Of::Comp1, Of::Float)
                                       : emits(Do::Store, Of::Comp2, Of::Float),
            "(", target.address, ", ", value.text, ");\n");
        return;
    }
    int scale = item.picture.scale, digits = item.picture.digits;
    value = scaleTo(std::move(value), scale, rounded);
    if (value.kind == Num::Int && value.digits > kMostInt) value = toPacked(std::move(value));
    if (value.kind == Num::Packed && value.digits <= 18 &&
        (item.usage == Usage::Binary || item.usage == Usage::Native || item.usage == Usage::Index))
        value = toInt(std::move(value));

    // Does it fit?
    bool binary = item.usage == Usage::Binary || item.usage == Usage::Native || item.usage == Usage::Index ||
                  item.usage == Usage::CompX;
    bool byCapacity = binary && (item.usage != Usage::Binary || item.nativeBinary || !options_.truncate);
    bool check = false;
    if (!sizeError.empty()) {
        if (byCapacity) {
            value = keep(toInt(value), false);
            bool isSigned = item.picture.sign || item.usage == Usage::Index;
            put("if (!", emits(Do::Fits, Of::Signed), "(", value.text, ", ", item.size, ", ", isSigned ? 1 : 0, ")) ",
                sizeError, " = 1; else {\n");
            check = true;
        } else if (value.digits > digits) {
            value = keep(std::move(value), false);
            if (value.kind == Num::Int) {
                put("if (", value.text, emits(Do::Fits, Of::Integer), powerOfTen(digits), " || ", value.text, " <= -",
                    powerOfTen(digits), ") ", sizeError, " = 1; else {\n");
            } else {
                std::string t = tempBytes((value.digits - digits) / 2 + 1);
                put("if (!", emits(Do::IsZero, Of::Packed), "(", emits(Do::Fits, Of::Packed), "(", value.text, ", ", t,
                    ", ", value.digits - digits, ", ", value.digits, ", ", digits, "), ", value.digits - digits, ")) ",
                    sizeError, " = 1; else {\n");
            }
            check = true;
        }
    }
    bool mayBeNegative = value.isSigned;
    if (item.category == Category::NumericEdited) {
        storeEdited(value, target);
    } else if (binary) {
        if (!check && !byCapacity && value.digits > digits) {
            value = toInt(std::move(value));
            value.text = cat("((", value.text, ") % ", powerOfTen(digits), ")");
        }
        value = toInt(std::move(value));
        if (!item.picture.sign && mayBeNegative && item.usage != Usage::Index)
            value.text = cat(value.wide() ? emits(Do::Absolute, Of::Wide) : emits(Do::Absolute, Of::Integer), "(",
                             value.text, ")");
        if (item.usage == Usage::CompX)
            put(emits(Do::Store, Of::BigEndian, Of::Integer), "(", target.address, ", ", item.size, ", (uint64_t)(",
                value.text, "));\n");
        else
            put(emits(Do::Store, Of::Signed, Of::Integer), item.size, "(", target.address, ", ", "(int64_t)(",
                value.text, "));\n");
    } else if (item.usage == Usage::Packed) {
        if (value.kind == Num::Int && !value.wide() && !(!item.picture.sign && mayBeNegative)) {
            put(emits(Do::Store, Of::Packed, Of::Integer), "(", value.text, ", ", target.address, ", ", digits, ");\n");
        } else {
            value = toPacked(std::move(value));
            if (!item.picture.sign && mayBeNegative) {
                std::string t = tempBytes(digits / 2 + 1);
                put("memcpy(", target.address, ", ", emits(Do::Store, Of::PackedUnsigned, Of::Packed), "(", value.text,
                    ", ", t, ", ", digits, ", ", value.digits, "), ", digits / 2 + 1, ");\n");
            } else if (value.cut && value.text == value.cutTo(value.digits) && value.digits >= digits) {
                put(emits(Do::StoreSum, Of::Packed, Of::Packed), "(", target.address, ", ", value.cutTo(digits), ", ",
                    item.size, ");\n");
            } else {
                put(emits(Do::Store, Of::Packed, Of::Packed), "(", value.text, ", ", target.address, ", ", digits, ", ",
                    value.digits, ");\n");
            }
        }
        if (!item.picture.sign) put(target.address, "[", item.size - 1, "] |= 0x0F;\n");
    } else {
        bool plain = item.signForm == SignForm::None || item.signForm == SignForm::Trailing;
        if (value.kind == Num::Int && !value.wide() && plain) {
            if (item.signForm == SignForm::None)
                put(emits(Do::Store, Of::ZonedUnsigned, Of::Integer), "((uint64_t)",
                    mayBeNegative ? cat(emits(Do::Absolute, Of::Integer), "(", value.text, ")")
                                  : cat("(", value.text, ")"),
                    ", ", target.address, ", ", digits, ");\n");
            else
                put(emits(Do::Store, Of::ZonedTrailing, Of::Integer), "(", value.text, ", ", target.address, ", ",
                    digits, ");\n");
        } else {
            value = toPacked(std::move(value));
            put(emitsFor(Do::Store, zonedOf(item.signForm), Of::Packed), "(", value.text, ", ", target.address, ", ",
                digits, ", ", value.digits, ");\n");
        }
    }
    if (check) put("}\n");
}

} // namespace kvrcob
