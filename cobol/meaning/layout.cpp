// Layout: category, size and offset of every item of a record.
//
// Binary items are native: 2 bytes up to 4 digits, 4 up to 9, 8 up to 18. Packed ones have digits /
// 2 + 1 bytes, COMP-6 ones, without the sign, (digits + 1) / 2. SYNCHRONIZED aligns binary and
// floating-point items to their size, counted from the start of the record. A table with DEPENDING
// ON has room for all its occurrences.
#include "cobol/meaning/names.h"
#include "cobol/meaning/picture.h"

#include <algorithm>

namespace kvrcob {

struct Layout {
    Meaning &meaning;
    Program &program;

    // Usage and SIGN go down from a group.
    void inherit(Item &item)
    {
        for (Item *child : item.children) {
            if (item.hasUsage && !child->hasUsage) {
                child->usage = item.usage;
                child->hasUsage = true;
                child->nativeBinary = item.nativeBinary;
                child->nativeSize = item.nativeSize;
            }
            if (item.hasSign && !child->hasSign) {
                child->hasSign = true;
                child->signLeading = item.signLeading;
                child->signSeparate = item.signSeparate;
            }
            if (item.synchronized) child->synchronized = true;
            child->section = item.section;
            child->program = item.program;
        }
    }

    void counts(Item &item)
    {
        if (!item.occurs) return;
        auto number = [&](const Expr *e, uint32_t &out) {
            if (!e) return;
            Decimal d;
            if (!meaning.constantNumber(program, e, d) || d.negative || d.scale || d.digits.size() > 9) {
                meaning.error(e->at, "OCCURS needs a positive integer");
                out = 1;
                return;
            }
            out = static_cast<uint32_t>(std::atoll(d.digits.c_str()));
        };
        number(item.occursMaxExpr, item.occursMax);
        item.occursMin = item.depending ? 0 : item.occursMax;
        if (item.occursMinExpr) number(item.occursMinExpr, item.occursMin);
        if (item.occursMax == 0) {
            meaning.error(item.at, "OCCURS needs at least one occurrence");
            item.occursMax = 1;
        }
        if (item.occursMin > item.occursMax) {
            meaning.error(item.at, "OCCURS: the first number is greater than the second");
            item.occursMin = item.occursMax;
        }
        if (item.level == 1 || item.level == 77)
            meaning.warning("occurs", item.at, "OCCURS at level 01 is an extension");
        keys(item);
    }

    // A key is the table itself or one of its items.
    void keys(const Item &table)
    {
        for (const SortKey &key : table.keys) {
            const Item *item = meaning.key(program, *key.item, table.name), *within = item;
            while (within && within != &table) within = within->parent;
            if (item && !within)
                meaning.error(key.item->at, wordText(item->name) + " is not in the table " + wordText(table.name));
        }
    }

    // COMP-X: an unsigned binary number, high byte first, of as many bytes as its picture needs.
    bool compX(Item &item)
    {
        static const int digitsOf[] = {0, 2, 4, 7, 9, 12, 14, 16, 19};
        if (item.category == Category::Alphanumeric && item.picture.positions <= 8) {
            item.size = item.picture.positions;
            item.picture = Picture{};
            item.picture.digits = std::min(digitsOf[item.size] + 1, 19);
        } else if (item.category == Category::Numeric && !item.picture.sign && item.picture.digits <= 18) {
            for (item.size = 1; digitsOf[item.size] < item.picture.digits;) item.size++;
        } else {
            meaning.error(item.at, "a COMP-X item has at most 8 bytes or 18 digits, and no sign");
            item.usage = Usage::Display;
            return false;
        }
        item.category = item.picture.category = Category::Numeric;
        return true;
    }

    // A picture with its constants as numbers: "X(LEN)" as "X(80)".
    std::string pictureOf(const Item &item)
    {
        std::string text(item.pictureText), out;
        for (size_t i = 0; i < text.size(); i++) {
            out += text[i];
            size_t close = text[i] == '(' ? text.find(')', i) : std::string::npos;
            if (close == std::string::npos || close == i + 1 || text.find_first_not_of("0123456789", i + 1) == close)
                continue;
            Expr *name = make<Expr>();
            name->kind = ExprKind::Reference;
            name->at = item.pictureAt;
            name->ref = make<Reference>();
            name->ref->at = item.pictureAt;
            name->ref->names.push_back(internWord(text.substr(i + 1, close - i - 1)));
            Decimal d;
            if (!meaning.constantNumber(program, name, d) || d.scale || d.negative) continue;
            out += d.digits + ")";
            i = close;
        }
        return out;
    }

    // Items whose USAGE says all.
    static void numericWithoutPicture(Item &item, uint32_t size, int digits, bool sign)
    {
        item.category = item.picture.category = Category::Numeric;
        item.size = size;
        item.picture.digits = digits;
        item.picture.sign = sign;
    }

    static bool byUsageAlone(Item &item)
    {
        switch (item.usage) {
        case Usage::Index:
            numericWithoutPicture(item, 4, 9, true);
            item.category = Category::Index;
            return true;
        case Usage::Pointer:
        case Usage::ProcedurePointer:
            item.category = Category::Pointer;
            item.size = 8;
            return true;
        case Usage::Float:
            numericWithoutPicture(item, 4, 7, true);
            return true;
        case Usage::Double:
            numericWithoutPicture(item, 8, 15, true);
            return true;
        default:
            break;
        }
        if (!item.nativeBinary) return false;
        const int digits = item.nativeSize == 1   ? 3
                           : item.nativeSize == 2 ? 5
                           : item.nativeSize == 4 ? 10
                           : item.isUnsigned      ? 20
                                                  : 19;
        numericWithoutPicture(item, item.nativeSize, digits, !item.isUnsigned);
        return true;
    }

    // One character, after an error.
    static void oneCharacter(Item &item)
    {
        item.size = 1;
        item.picture = Picture{};
        item.picture.positions = 1;
    }

    // Without a PICTURE it follows from the VALUE.
    void byValue(Item &item)
    {
        item.category = Category::Alphanumeric;
        const Expr *value = item.hasValue && item.values.size() == 1 ? item.values[0].from : nullptr;
        if (item.level != 66 && !(value && value->kind == ExprKind::String)) {
            if (!item.broken)
                meaning.error(item.at, (item.name ? wordText(item.name) : "FILLER") +
                                           " has neither a PICTURE nor items below it");
            oneCharacter(item);
            return;
        }
        if (item.level != 66) item.size = static_cast<uint32_t>(value->text.size());
        item.picture.positions = item.size;
    }

    // Reads an item's PICTURE; BLANK WHEN ZERO makes an edited one of it. False after an error.
    bool picture(Item &item)
    {
        char symbol = program.currencySymbol ? program.currencySymbol : program.currency;
        std::string wrong = readPicture(pictureOf(item), symbol, program.commaIsPoint, item.picture);
        item.picture.currency = program.currency;
        if (!wrong.empty()) {
            meaning.error(item.pictureAt, wrong);
            oneCharacter(item);
            return false;
        }
        item.category = item.picture.category;
        if (item.blankWhenZero && item.category == Category::Numeric) {
            item.category = Category::NumericEdited; // BLANK WHEN ZERO makes a numeric item an edited one
            item.picture.category = Category::NumericEdited;
            if (item.picture.sign) meaning.error(item.at, "BLANK WHEN ZERO does not go with S");
        }
        return true;
    }

    // PIC X(n) COMP-5: a native unsigned number of n bytes.
    static bool nativeBytes(Item &item)
    {
        const uint32_t n = item.picture.positions;
        if (item.usage != Usage::Native || item.category != Category::Alphanumeric) return false;
        if (n != 1 && n != 2 && n != 4 && n != 8) return false;
        item.picture = Picture{};
        numericWithoutPicture(item, n, n == 1 ? 3 : n == 2 ? 5 : n == 4 ? 10 : 20, false);
        return true;
    }

    // The size of a binary or packed item. False: it is neither.
    bool computational(Item &item)
    {
        const bool packed = item.usage == Usage::Packed || item.usage == Usage::Comp6;
        if (!packed && item.usage != Usage::Binary && item.usage != Usage::Native) return false;
        if (item.category != Category::Numeric) {
            meaning.error(item.at,
                          packed ? "a packed item needs a numeric picture" : "a binary item needs a numeric picture");
            item.usage = Usage::Display;
            return false;
        }
        int &digits = item.picture.digits;
        if (item.usage == Usage::Comp6) {
            if (item.picture.sign) meaning.error(item.at, "a COMP-6 item has no sign");
            item.picture.sign = false;
            item.size = static_cast<uint32_t>(digits + 1) / 2;
            return true;
        }
        if (packed) {
            item.size = static_cast<uint32_t>(digits) / 2 + 1;
            return true;
        }
        if (digits > 18) {
            meaning.error(item.at, "binary items of more than 18 digits are not supported yet");
            digits = 18;
        }
        item.size = digits <= 4 ? 2 : digits <= 9 ? 4 : 8;
        return true;
    }

    void elementary(Item &item)
    {
        if (byUsageAlone(item)) return;
        if (!item.hasPicture) {
            byValue(item);
            return;
        }
        if (!picture(item)) return;
        if (item.usage == Usage::CompX && compX(item)) return;
        if (nativeBytes(item)) return;
        if (item.picture.digits > 38 && item.picture.category != Category::Alphanumeric) {
            meaning.error(item.pictureAt, "a numeric item has at most 38 digits");
            item.picture.digits = 38;
        }
        if (item.isUnsigned) item.picture.sign = false;
        if (computational(item)) return;

        item.size = item.picture.positions;
        if (item.category != Category::Numeric || !item.picture.sign) return;
        item.signForm = item.signSeparate ? (item.signLeading ? SignForm::LeadingSeparate : SignForm::TrailingSeparate)
                                          : (item.signLeading ? SignForm::Leading : SignForm::Trailing);
        if (item.signSeparate) item.size++;
    }

    uint32_t alignment(const Item &item) const
    {
        if (!item.synchronized || !item.elementary()) return 1;
        switch (item.usage) {
        case Usage::Binary:
        case Usage::Native:
        case Usage::Float:
        case Usage::Double:
        case Usage::Index:
        case Usage::Pointer:
        case Usage::ProcedurePointer:
            return item.size ? item.size : 1;
        default:
            return 1;
        }
    }

    // Slack bytes before the elements of a table, so that each occurrence is aligned alike.
    uint32_t greatestAlignment(const Item &item) const
    {
        uint32_t most = alignment(item);
        for (const Item *child : item.children) most = std::max(most, greatestAlignment(*child));
        return most;
    }

    // Lays an item out at an offset.
    void place(Item &item, uint64_t offset, int depth)
    {
        inherit(item);
        counts(item);
        item.offset = static_cast<uint32_t>(offset);
        item.laidOut = true;
        if (item.elementary()) {
            elementary(item);
            if (item.depending || item.anyLength) item.hasDepending = true;
            if (item.anyLength && (item.parent || item.section != Item::Linkage))
                meaning.notBuilt(item.at, "ANY LENGTH of other items than parameters");
            checkValue(item);
            return;
        }
        if (item.hasPicture) meaning.error(item.pictureAt, "a group has no PICTURE");
        item.category = Category::Group;
        uint64_t at = offset, end = offset;
        for (size_t i = 0; i < item.children.size(); i++) {
            Item &child = *item.children[i];
            if (child.redefinesName) {
                for (size_t j = i; j-- > 0;) {
                    Item *other = item.children[j];
                    if (other->name != child.redefinesName) continue;
                    child.redefines = other->redefines ? other->redefines : other;
                    break;
                }
                if (!child.redefines) {
                    meaning.error(child.redefinesAt, "there is no item " + wordText(child.redefinesName) +
                                                         " at this level in front of it to redefine");
                } else {
                    place(child, child.redefines->offset, depth + 1);
                    end = std::max(end, child.offset + static_cast<uint64_t>(child.storageSize()));
                    at = std::max(at, end);
                    if (child.hasDepending) item.hasDepending = true;
                    continue;
                }
            }
            uint32_t align = 1;
            place(child, at, depth + 1);
            align = child.elementary() ? alignment(child) : 1;
            if (child.occurs && !child.elementary()) {
                // A table of groups: occurrences begin at the alignment of what is in them if that
                // is synchronized.
                align = greatestAlignment(child);
            }
            if (align > 1 && (at % align)) {
                at += align - at % align;
                place(child, at, depth + 1);
            }
            if (child.occurs && align > 1 && child.size % align) child.size += align - child.size % align;
            if (child.hasDepending) item.hasDepending = true;
            at += static_cast<uint64_t>(child.storageSize());
            end = std::max(end, at);
            if (end > 0x40000000) {
                meaning.error(child.at, "the record is too large");
                at = end = 0x1000;
            }
        }
        item.size = static_cast<uint32_t>(end - offset);
        if (item.depending) item.hasDepending = true;
        checkValue(item);
    }

    void checkValue(Item &item)
    {
        if (!item.hasValue || item.values.empty()) return;
        if (item.values.size() > 1 && item.occurs && item.elementary() && item.values.size() <= item.occursMax) {
            // VALUES "JAN" "FEB" ...: one for each occurrence.
        } else if (item.values.size() > 1 || item.values[0].to) {
            meaning.error(item.at, "only a condition-name has several values");
            return;
        }
        const Expr *value = meaning.constant(program, item.values[0].from);
        Decimal d;
        if (item.elementary() && item.category == Category::Numeric && item.usage != Usage::Float &&
            item.usage != Usage::Double) {
            if (!decimalOf(value, d)) {
                if (value && value->kind == ExprKind::Figurative && value->op != K_ZERO && value->op != K_NULL) {
                    meaning.warning("value", value->at, "VALUE of a numeric item should be a number");
                } else if (value && (value->kind == ExprKind::String || value->kind == ExprKind::All)) {
                    meaning.warning("value", value->at, "VALUE of a numeric item should be a number");
                }
                return;
            }
            if (item.category == Category::Numeric && item.usage != Usage::Native && item.usage != Usage::CompX &&
                !item.nativeBinary) {
                std::string digits = digitsAtScale(d, item.picture.scale);
                if (digits != "0" && digits.size() > static_cast<size_t>(item.picture.digits))
                    meaning.warning("value", value->at, "VALUE has more digits than the item; the first ones are lost");
            }
        } else if (value && value->kind == ExprKind::String && item.category != Category::Numeric &&
                   value->text.size() > item.size && item.category != Category::Group) {
            meaning.warning("value", value->at, "VALUE is longer than the item; its end is lost");
        }
    }

    void renames(Item &record)
    {
        for (Item *item : record.conditions) {
            if (item->level != 66) continue;
            // The names are those of this record, whatever else has them.
            auto here = [&](const Reference &ref) {
                Reference whole = ref;
                if (record.name && whole.names.back() != record.name) whole.names.push_back(record.name);
                Item *found = meaning.resolve(program, whole, true);
                return found ? found : meaning.resolve(program, ref);
            };
            Item *from = here(*item->renamesFrom);
            Item *thru = item->renamesThru ? here(*item->renamesThru) : from;
            if (!from || !thru) continue;
            item->section = record.section;
            item->offset = from->offset;
            uint64_t end = thru->offset + static_cast<uint64_t>(thru->storageSize());
            if (end <= from->offset) {
                meaning.error(item->at, "RENAMES: the second item ends before the first one begins");
                continue;
            }
            item->size = static_cast<uint32_t>(end - from->offset);
            item->laidOut = true;
            if (item->renamesThru) {
                item->category = Category::Group;
            } else {
                item->category = from->category;
                item->picture = from->picture;
                item->usage = from->usage;
                item->signForm = from->signForm;
                item->justified = from->justified;
                item->size = from->size;
            }
        }
    }

    void depending(Item &item)
    {
        if (item.depending) item.dependingItem = meaning.resolve(program, *item.depending);
        if (const Item *count = item.dependingItem; count && (!count->elementary() || count->level == 88)) {
            // A group could even be one around the table, whose length would depend on itself.
            meaning.error(item.depending->at, wordText(count->name) + " is no number; OCCURS cannot depend on it");
            item.dependingItem = nullptr;
        }
        for (Item *child : item.children) depending(*child);
    }
};

void layOut(Meaning &meaning, Program &program, Item &record)
{
    if (record.laidOut) return;
    Layout layout{meaning, program};
    layout.place(record, 0, 0);
    layout.renames(record);
    layout.depending(record);
}

} // namespace kvrcob
