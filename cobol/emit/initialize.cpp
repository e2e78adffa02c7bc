// INITIALIZE: each elementary item gets what its category, REPLACING or its VALUE says.
#include "cobol/emit/emitter.h"

namespace kvrcob {

void Emitter::initializeOne(const Loc &loc, const Item &item, const InitializeStatement &s)
{
    Category category = item.category;
    bool numeric = category == Category::Numeric;
    auto categoryWord = [&](Word word) {
        switch (word) {
        case K_ALPHABETIC:
            return category == Category::Alphabetic;
        case K_ALPHANUMERIC:
            return category == Category::Alphanumeric;
        case K_NUMERIC:
            return category == Category::Numeric;
        case K_ALPHANUMERIC_EDITED:
            return category == Category::AlphanumericEdited;
        case K_NUMERIC_EDITED:
            return category == Category::NumericEdited;
        default:
            return false;
        }
    };
    bool toValue = s.allToValue;
    for (Word w : s.toValue)
        if (categoryWord(w)) toValue = true;
    if (toValue && item.hasValue) {
        move(item.values[0].from, loc);
        return;
    }
    for (const auto &r : s.replacing)
        if (categoryWord(r.category)) {
            move(r.value, loc);
            return;
        }
    if ((!s.replacing.empty() || s.allToValue || !s.toValue.empty()) && !s.thenToDefault) return;
    if (category == Category::Index || category == Category::Pointer) return;
    if (numeric || category == Category::NumericEdited) {
        Decimal zero;
        zero.digits = "0";
        store(literalNumber(zero), loc, false, "");
    } else if (category == Category::AlphanumericEdited) {
        // The characters that the picture inserts stay.
        Expr *space = make<Expr>();
        space->kind = ExprKind::Figurative;
        space->at = s.at;
        space->op = K_SPACE;
        move(space, loc);
    } else {
        put("memset(", loc.address, ", ' ', ", loc.length, ");\n");
    }
}

void Emitter::initialize(const Loc &target, const Item &item, const InitializeStatement &s,
                         const std::string &displacement)
{
    if (item.elementary()) {
        initializeOne(target, item, s);
        return;
    }
    for (const Item *child : item.children) {
        if (child->redefines) continue;
        if (!child->name && child->elementary() && !s.withFiller) continue;
        if (child->occurs) {
            std::string i = temp("int64_t");
            put("for (", i, " = 0; ", i, " < ", currentCount(*child), "; ", i, "++) {\n");
            std::string inner = cat(displacement, " + ", i, " * ", child->size);
            initialize(locateItem(*child, inner, true), *child, s, inner);
            put("}\n");
        } else {
            initialize(locateItem(*child, displacement, true), *child, s, displacement);
        }
    }
}

void Emitter::initializeStatement(const InitializeStatement &s)
{
    for (const Reference *ref : s.targets) {
        Loc loc = locate(*ref, true);
        if (!loc.good()) continue;
        if (loc.refmod || loc.item->elementary()) {
            if (loc.refmod) {
                put("memset(", loc.address, ", ' ', ", loc.length, ");\n");
            } else {
                initializeOne(loc, *loc.item, s);
            }
            continue;
        }
        std::vector<const Item *> tables;
        for (const Item *a = loc.item; a; a = a->parent)
            if (a->occurs) tables.insert(tables.begin(), a);
        std::string displacement;
        for (size_t i = 0; i < tables.size() && i < ref->subscripts.size(); i++)
            displacement += joined(" + (", subscript(ref->subscripts[i]), " - 1) * ", tables[i]->size);
        initialize(loc, *loc.item, s, displacement);
    }
}

} // namespace kvrcob
