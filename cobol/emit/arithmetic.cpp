// ADD, SUBTRACT, MULTIPLY, DIVIDE, COMPUTE.
//
// The operands are evaluated once, before anything is stored. With ON SIZE ERROR a receiving item
// that cannot hold its result keeps its value; the others get theirs. Without the phrase high-order
// digits are lost. A division by zero stores nothing.
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {

std::string Emitter::sizeErrorFlag(const ArithmeticStatement &s)
{
    if (!s.sizeError.has && !s.sizeError.hasNot) return "";
    std::string flag = temp("int");
    put(flag, " = 0;\n");
    return flag;
}

void Emitter::phrases(const Phrases &p, const std::string &failed)
{
    debugNow();
    if (!p.has && !p.hasNot) return;
    if (p.has) {
        put("if (", failed, ") {\n");
        block(p.on);
        put("}\n");
        if (p.hasNot) {
            put("else {\n");
            block(p.onNot);
            put("}\n");
        }
        return;
    }
    put("if (!(", failed, ")) {\n");
    block(p.onNot);
    put("}\n");
}

Loc Emitter::receivingNumber(const Target &target, bool giving)
{
    Loc loc = locate(*target.ref, true);
    if (!loc.good()) return loc;
    Category category = loc.item->category;
    if (category == Category::Index)
        meaning_.warning("extension", target.ref->at, "arithmetic on an index is an extension; SET changes it");
    bool takes =
        category == Category::Numeric || category == Category::Index || (giving && category == Category::NumericEdited);
    if (takes && !loc.refmod) return loc;
    error(target.ref->at, wordText(target.ref->names[0]) + " is no numeric item");
    return {};
}

void Emitter::correspondingArithmetic(const ArithmeticStatement &s)
{
    bool minus = s.verb == K_SUBTRACT;
    const Expr *source = s.operands[0];
    Loc from = locate(*source->ref);
    std::string flag = sizeErrorFlag(s);
    for (const Target &target : s.targets) {
        Loc to = locate(*target.ref, true);
        if (!from.good() || !to.good()) continue;
        if (from.item->elementary() || to.item->elementary()) {
            error(s.at, "CORRESPONDING needs groups");
            continue;
        }
        std::vector<std::pair<const Item *, const Item *>> pairs;
        corresponding(*from.item, *to.item, pairs, true);
        for (const auto &[a, b] : pairs) {
            Loc x = member(*source->ref, *from.item, *a, false), y = member(*target.ref, *to.item, *b, true);
            store(add(itemNumber(y), itemNumber(x), minus), y, target.rounded, flag);
        }
    }
    sizePhrases(s, flag, "");
}

void Emitter::addStatement(const ArithmeticStatement &s)
{
    if (s.corresponding) {
        correspondingArithmetic(s);
        return;
    }
    // The sum of the operands, or the product's first factor.
    std::string flag = sizeErrorFlag(s);
    Num sum;
    for (size_t i = 0; i < s.operands.size(); i++) {
        Num n = number(s.operands[i]);
        if (!n.good()) return;
        sum = i == 0 ? n : add(sum, n, false);
    }
    auto combine = [&](const Num &first) {
        if (s.verb == K_ADD) return add(first, sum, false);
        if (s.verb == K_SUBTRACT) return add(first, sum, true);
        return multiply(first, sum);
    };
    bool several = s.targets.size() > 1;
    if (s.giving) {
        Num result = sum;
        if (s.verb != K_ADD) {
            Num second = number(s.second);
            if (!second.good()) return;
            result = combine(second);
        }
        if (several) result = keep(std::move(result), true);
        for (const Target &t : s.targets) {
            Loc loc = receivingNumber(t, true);
            if (!loc.good()) continue;
            store(result, loc, t.rounded, flag);
        }
    } else {
        if (several) sum = keep(std::move(sum), true);
        for (const Target &t : s.targets) {
            Loc loc = receivingNumber(t, false);
            if (!loc.good()) continue;
            store(combine(itemNumber(loc)), loc, t.rounded, flag);
        }
    }
    sizePhrases(s, flag, "");
}

// Decimal places of a quotient that is the whole of what is stored; -1: as many as there is room
// for.
static int quotientScale(const Item &item, Rounding rounded)
{
    if (item.usage == Usage::Float || item.usage == Usage::Double || rounded > NearestAwayFromZero) return -1;
    return std::max(item.picture.scale, 0) + (rounded ? 1 : 0);
}

void Emitter::divideStatement(const ArithmeticStatement &s)
{
    std::string flag = sizeErrorFlag(s);
    std::string zero = zeroFlag();
    Num first = number(s.operands[0]);
    if (!first.good()) return;
    if (s.giving) {
        Num second = number(s.second);
        if (!second.good()) return;
        Num dividend = s.into ? second : first, divisor = s.into ? first : second;
        if (s.targets.size() > 1 || s.remainder.ref)
            dividend = keep(std::move(dividend), true), divisor = keep(std::move(divisor), true);
        Num quotient; // as stored in the first target, for REMAINDER
        for (size_t i = 0; i < s.targets.size(); i++) {
            const Target &t = s.targets[i];
            Loc loc = receivingNumber(t, true);
            if (!loc.good()) continue;
            Num q = keep(divide(dividend, divisor, quotientScale(*loc.item, t.rounded)), true);
            if (i == 0 && s.remainder.ref) quotient = scaleTo(q, loc.item->picture.scale, false);
            put("if (!", zero, ") {\n");
            store(q, loc, t.rounded, flag);
            put("}\n");
        }
        if (s.remainder.ref) {
            Loc loc = receivingNumber(s.remainder, true);
            if (loc.good() && quotient.good()) {
                if (dividend.kind == Num::Float || divisor.kind == Num::Float || quotient.kind == Num::Float) {
                    error(s.remainder.ref->at, "REMAINDER does not go with floating-point items");
                    return;
                }
                put("if (!", zero, flag.empty() ? "" : cat(" && !", flag), ") {\n");
                Num remainder = add(dividend, multiply(quotient, divisor), true);
                store(remainder, loc, s.remainder.rounded, flag);
                put("}\n");
            }
        }
    } else {
        if (s.targets.size() > 1) first = keep(std::move(first), true);
        for (const Target &t : s.targets) {
            Loc loc = receivingNumber(t, false);
            if (!loc.good()) continue;
            Num q = keep(divide(itemNumber(loc), first, quotientScale(*loc.item, t.rounded)), true);
            put("if (!", zero, ") {\n");
            store(q, loc, t.rounded, flag);
            put("}\n");
        }
    }
    if (!flag.empty()) {
        put(flag, " |= ", zero, ";\n");
        sizePhrases(s, flag, zero);
    }
}

void Emitter::computeStatement(const ArithmeticStatement &s)
{
    if (s.operands.empty()) return;
    std::string flag = sizeErrorFlag(s);
    int scale = 0;
    bool all = false; // a quotient needs all its places
    std::vector<Loc> locs;
    for (const Target &t : s.targets) {
        Loc loc = receivingNumber(t, true);
        locs.push_back(loc);
        if (!loc.good()) continue;
        int wanted = quotientScale(*loc.item, t.rounded);
        scale = std::max(scale, wanted);
        all |= wanted < 0;
    }
    const Expr *e = s.operands[0];
    Num value = number(e, all ? -1 : scale);
    if (!value.good()) return;
    bool guarded = !inStatement_.zeroFlag.empty();
    if (s.targets.size() > 1 || guarded) value = keep(std::move(value), true);
    if (guarded) put("if (!", inStatement_.zeroFlag, ") {\n");
    for (size_t i = 0; i < s.targets.size(); i++) store(value, locs[i], s.targets[i].rounded, flag);
    if (guarded) put("}\n");
    if (!flag.empty()) {
        if (guarded) put(flag, " |= ", inStatement_.zeroFlag, ";\n");
        sizePhrases(s, flag, inStatement_.zeroFlag);
    }
}

} // namespace kvrcob
