// Intrinsic functions.
//
// The table says of each function what comes out and what goes in. Integer and decimal functions
// are computed exactly, on numbers as arithmetic has them; the others are floating point, by the
// library's entries. A text function leaves its result in a temporary, and its length is known at
// run time only where it depends on what the argument holds.
#include "cobol/syntax/functions.h"
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {
// ---- Functions that the source defines by FUNCTION-ID

Program *Emitter::userFunction(const Expr *e)
{
    for (Program *p : group_.programs)
        if (p->isFunction && p->name == e->op) return p;
    return nullptr;
}

const Item *Emitter::resultOf(Program &function)
{
    return function.functionResult ? meaning_.resolve(function, *function.functionResult) : nullptr;
}

// The call of such a function. An argument that is no item of the parameter's own kind and size is
// moved to one that is.
bool Emitter::callFunction(const Expr *e, Loc &result)
{
    Program &f = *userFunction(e);
    const Item *returned = resultOf(f);
    if (!returned) return false;
    std::vector<const Expr *> args;
    for (const Expr *a : e->args) expandAll(a, args);
    if (args.size() + 1 != f.parameters.size()) {
        error(e->at, "FUNCTION " + wordText(e->op) + " has " + std::to_string(args.size()) + " arguments; it needs " +
                         std::to_string(f.parameters.size() - 1));
        return false;
    }
    std::string arguments, lengths;
    for (size_t i = 0; i < args.size(); i++) {
        const CallStatement::Argument &parameter = f.parameters[i];
        const Item *formal = parameter.value && parameter.value->kind == ExprKind::Reference
                                 ? meaning_.resolve(f, *parameter.value->ref)
                                 : nullptr;
        if (!formal) return false;
        if (parameter.mode == CallStatement::Value) {
            notBuilt(e->at, "BY VALUE of a function");
            return false;
        }
        const Expr *a = constant(args[i]);
        std::string address = temp("uint8_t *");
        if (formal->anyLength) {
            Text t = text(a, true);
            if (!t.good) return false;
            put(cat(address, " = (uint8_t *)(intptr_t)(", t.address, ");\n"));
            std::string length = temp("int64_t");
            put(cat(length, " = ", t.length, ";\n"));
            lengths += cat("kvr_lengths[", i, "] = ", length, ";\n");
            arguments += cat(address, ", ");
            continue;
        }
        Loc given;
        if (a->kind == ExprKind::Reference) given = locate(*a->ref);
        bool same = given.good() && !given.refmod && given.item->category == formal->category &&
                    given.item->usage == formal->usage && given.item->signForm == formal->signForm &&
                    given.item->picture.scale == formal->picture.scale && given.item->size == formal->size;
        if (formal->category == Category::Group || formal->category == Category::Alphanumeric)
            same = given.good() && given.fixed >= static_cast<int64_t>(formal->size) &&
                   (formal->category == Category::Group || !isNumericItem(*given.item));
        if (same) {
            put(cat(address, " = ", given.address, ";\n"));
        } else {
            Loc copy = locateItem(*formal, "", true);
            copy.address = tempBytes(formal->size);
            put(cat(address, " = ", copy.address, ";\n"));
            move(a, copy);
        }
        arguments += cat(address, ", ");
    }
    result = Loc{};
    result.item = returned;
    result.category = returned->category;
    result.fixed = returned->size;
    result.length = cat(returned->size);
    result.address = tempBytes(std::max<int64_t>(returned->size, 1));
    bool zeros = isNumericItem(*returned) && returned->usage != Usage::Display;
    put(cat("memset(", result.address, ", ",
            zeros                      ? "0"
            : isNumericItem(*returned) ? "'0'"
                                       : "' '",
            ", ", returned->size, ");\n", lengths, "kvr_entry_", f.number, "(", arguments, result.address, ");\n"));
    return true;
}

bool Emitter::functionIsNumeric(const Expr *e)
{
    if (e->ref) return false;
    if (Program *f = userFunction(e)) {
        const Item *item = resultOf(*f);
        return item && isNumericItem(*item);
    }
    const FunctionRow *row = functionRow(e->op);
    if (!row) return true;
    if (row->result == FunctionResult::Text) return false;
    if (row->result == FunctionResult::OfArgument) return !e->args.empty() && isNumericExpr(e->args[0]);
    return true;
}

static bool hasAll(const Expr *e)
{
    if (e->kind != ExprKind::Reference) return false;
    for (const Expr *s : e->ref->subscripts)
        if (s->kind == ExprKind::AllSubscript) return true;
    return false;
}

// The occurrences that ALL stands for, as references of their own. At most 10,000.
void Emitter::expandAll(const Expr *e, std::vector<const Expr *> &out)
{
    if (!hasAll(e)) {
        out.push_back(e);
        return;
    }
    Item *item = meaning_.resolve(*program_, *e->ref);
    if (!item) return;
    std::vector<const Item *> tables;
    for (const Item *a = item; a; a = a->parent)
        if (a->occurs) tables.insert(tables.begin(), a);
    size_t i = 0;
    while (e->ref->subscripts[i]->kind != ExprKind::AllSubscript) i++;
    if (i >= tables.size()) {
        error(e->at, "there is no table for this subscript");
        return;
    }
    std::string count;
    if (tables[i]->dependingItem) {
        // Only the occurrences that the table has now are arguments.
        count = temp("int64_t");
        put(cat(count, " = ", currentCount(*tables[i]), ";\n"));
    }
    std::string outer = guards_.count(e) ? guards_[e] : "";
    for (uint32_t k = 1; k <= tables[i]->occursMax; k++) {
        Expr *copy = make<Expr>();
        *copy = *e;
        copy->ref = make<Reference>();
        *copy->ref = *e->ref;
        Expr *number = make<Expr>();
        number->kind = ExprKind::Number;
        number->at = e->at;
        number->text = keepText(std::to_string(k));
        copy->ref->subscripts[i] = number;
        std::string guard = count.empty() ? outer : cat(outer, outer.empty() ? "" : " && ", k, " <= ", count);
        if (!guard.empty()) guards_[copy] = guard;
        expandAll(copy, out);
        if (out.size() > 10000) {
            error(e->at, "these are too many arguments");
            return;
        }
    }
}

Num Emitter::functionNumber(const Expr *e, int wantScale)
{
    const std::string &name = wordText(e->op);
    const FunctionRow *row = functionRow(e->op);
    if (userFunction(e)) {
        Loc result;
        if (!callFunction(e, result)) return Num{};
        if (!functionIsNumeric(e)) {
            error(e->at, "FUNCTION " + name + " gives a text; a number is needed here");
            return Num{};
        }
        return itemNumber(result);
    }
    if (!row) {
        notBuilt(e->at, "FUNCTION " + name);
        return Num{};
    }
    std::vector<const Expr *> args;
    for (const Expr *a : e->args) expandAll(a, args);
    if (static_cast<int>(args.size()) < row->least || (row->most >= 0 && static_cast<int>(args.size()) > row->most)) {
        error(e->at, "FUNCTION " + name + " has " + std::to_string(args.size()) + " arguments; it needs " +
                         std::to_string(row->least) +
                         (row->most < 0            ? " or more"
                          : row->most > row->least ? " to " + std::to_string(row->most)
                                                   : ""));
        return Num{};
    }
    if (row->result == FunctionResult::Text || e->ref) {
        error(e->at, "FUNCTION " + name + " gives a text; a number is needed here");
        return Num{};
    }
    auto guardOf = [&](size_t i) { return guards_.count(args[i]) ? guards_[args[i]] : std::string(); };
    bool guarded = false;
    for (size_t i = 0; i < args.size(); i++) guarded |= !guardOf(i).empty();
    auto argument = [&](size_t i) { return number(args[i], -1); };
    auto whole = [&](size_t i) { return integer(args[i]); };
    auto floating = [&](size_t i) { return toFloat(number(args[i], -1)).text; };

    if (name == "LENGTH" || name == "BYTE-LENGTH") {
        const Expr *a = constant(args[0]);
        if (a->kind == ExprKind::Reference) {
            Item *item = meaning_.resolve(*program_, *a->ref, true);
            if (item && !a->ref->refmod && a->ref->subscripts.empty() && !item->hasDepending)
                return integerNumber(cat(item->size, "LL"), 10, false);
            Loc loc = locate(*a->ref);
            if (!loc.good()) return Num{};
            return integerNumber(cat("(int64_t)(", loc.length, ")"), 10, false);
        }
        Text t = text(a);
        if (!t.good) return Num{};
        if (t.fixed >= 0) return integerNumber(cat(t.fixed, "LL"), 10, false);
        return integerNumber(cat("((void)", t.address, ", (int64_t)(", t.length, "))"), 10, false);
    }
    if (name == "ORD") {
        Text t = text(args[0]);
        if (!t.good) return Num{};
        return integerNumber(cat("((int64_t)*", t.address, " + 1)"), 3, false);
    }
    if (name == "STORED-CHAR-LENGTH") {
        Text t = text(args[0]);
        if (!t.good) return Num{};
        return integerNumber(cat(emitsFunction(name), "(", t.address, ", ", t.length, ")"), 10, false);
    }
    if (name == "NUMVAL-F") {
        Text t = text(args[0]);
        if (!t.good) return Num{};
        return floatNumber(
            cat(emitsFunction(name), "(", t.address, ", ", t.length, ", '", program_->commaIsPoint ? ',' : '.', "')"));
    }
    if (name == "TEST-NUMVAL-F") {
        Text t = text(args[0]);
        if (!t.good) return Num{};
        return integerNumber(
            cat(emitsFunction(name), "(", t.address, ", ", t.length, ", '", program_->commaIsPoint ? ',' : '.', "')"),
            10, false);
    }
    if (name == "INTEGER-OF-FORMATTED-DATE" || name == "SECONDS-FROM-FORMATTED-TIME" ||
        name == "TEST-FORMATTED-DATETIME") {
        Text format = text(args[0]), t = text(args[1]);
        if (!format.good || !t.good) return Num{};
        bool seconds = name[0] == 'S';
        Num n = integerNumber(
            cat(emitsFunction(name), "(", format.address, ", ", format.length, ", ", t.address, ", ", t.length, ")"),
            seconds ? 14 : 10, false);
        if (seconds) n.scale = 9;
        return n;
    }
    if (name == "COMBINED-DATETIME") {
        // Seconds as a part of 100,000, so that the time of day does not reach the days.
        Num seconds = toInt(scaleTo(argument(1), 9, false));
        if (!seconds.good()) return Num{};
        seconds.scale += 5;
        return add(integerNumber(whole(0), 8, false), seconds, false);
    }
    if (name == "HIGHEST-ALGEBRAIC" || name == "LOWEST-ALGEBRAIC") {
        const Expr *a = constant(args[0]);
        Item *item = a->kind == ExprKind::Reference ? meaning_.resolve(*program_, *a->ref) : nullptr;
        bool edited = item && item->category == Category::NumericEdited;
        if (!item || a->ref->refmod || (item->category != Category::Numeric && !edited) || item->nativeBinary ||
            item->usage == Usage::Native || item->usage == Usage::CompX || item->usage == Usage::Float ||
            item->usage == Usage::Double) {
            notBuilt(e->at, "FUNCTION " + name + " of an item without a picture of a number");
            return Num{};
        }
        Decimal d;
        bool isSigned =
            item->picture.sign || (edited && item->picture.expanded.find_first_of("+-CD") != std::string::npos);
        bool least = name[0] == 'L';
        d.digits = least && !isSigned ? "0" : std::string(static_cast<size_t>(item->picture.digits), '9');
        d.negative = least && isSigned;
        d.scale = item->picture.scale;
        if (d.scale < 0) {
            d.digits.append(static_cast<size_t>(-d.scale), '0');
            d.scale = 0;
        }
        return literalNumber(d);
    }
    if (name == "SECONDS-PAST-MIDNIGHT") return integerNumber(cat(emitsFunction(name), "()"), 5, false);
    if (name == "TEST-DATE-YYYYMMDD" || name == "TEST-DAY-YYYYDDD")
        return integerNumber(cat(emitsFunction(name), "(", whole(0), ", ", name == "TEST-DAY-YYYYDDD" ? 1 : 0, ")"), 1,
                             false);
    if (name == "NUMVAL" || name == "NUMVAL-C" || name == "TEST-NUMVAL" || name == "TEST-NUMVAL-C") {
        Text t = text(args[0]);
        if (!t.good) return Num{};
        std::string record = tempBytes(20);
        std::string currency = "0, 0";
        if (args.size() > 1) {
            Text c = text(args[1]);
            currency = cat(c.address, ", ", c.length);
        } else if (name == "NUMVAL-C" || name == "TEST-NUMVAL-C") {
            currency = cat(bytesLiteral(std::string(1, program_->currency)), ", 1");
        }
        if (name == "TEST-NUMVAL" || name == "TEST-NUMVAL-C")
            return integerNumber(cat(emitsFunction(name), "(", t.address, ", ", t.length, ", '",
                                     program_->commaIsPoint ? ',' : '.', "', (const uint8_t *)", currency, ")"),
                                 10, false);
        Num n;
        n.kind = Num::Packed;
        n.digits = 36;
        n.scale = 18;
        n.text = cat(emitsFunction(name), "(", t.address, ", ", t.length, ", ", record, ", '",
                     program_->commaIsPoint ? ',' : '.', "', (const uint8_t *)", currency, ")");
        return n;
    }
    if (name == "MAX" || name == "MIN" || name == "ORD-MAX" || name == "ORD-MIN" || name == "RANGE" ||
        name == "MIDRANGE") {
        bool numeric = isNumericExpr(args[0]);
        bool most = name == "MAX" || name == "ORD-MAX";
        if (!numeric) {
            if (name != "ORD-MAX" && name != "ORD-MIN") {
                error(args[0]->at, "FUNCTION " + name + " needs numbers here");
                return Num{};
            }
            std::string address = temp("const uint8_t *"), length = temp("int64_t"), place = temp("int64_t");
            for (size_t i = 0; i < args.size(); i++) {
                Text t = text(args[i]);
                if (!t.good) return Num{};
                if (i == 0) {
                    put(cat(address, " = ", t.address, "; ", length, " = ", t.length, "; ", place, " = 1;\n"));
                } else {
                    put(cat("if (", guardOf(i), guardOf(i).empty() ? "" : " && ",
                            emits(Do::Compare, Of::Text, Of::Text), "(", t.address, ", ", t.length, ", ", address, ", ",
                            length, ") ", most ? ">" : "<", " 0) { ", address, " = ", t.address, "; ", length, " = ",
                            t.length, "; ", place, " = ", i + 1, "; }\n"));
                }
            }
            return integerNumber(place, 5, false);
        }
        // All arguments at the same scale, then the greatest and the least.
        std::vector<Num> all;
        bool isFloat = false;
        int scale = 0, wholes = 1;
        for (const Expr *a : args) {
            Num n = number(a, -1);
            if (!n.good()) return Num{};
            isFloat |= n.kind == Num::Float;
            scale = std::max(scale, n.scale);
            wholes = std::max(wholes, n.digits - n.scale);
            all.push_back(n);
        }
        int digits = std::min(wholes + scale, 38);
        const char *type = isFloat ? "double" : digits > 18 ? "__int128" : "int64_t";
        std::string best = temp(type), least = temp(type), now = temp(type), place = temp("int64_t");
        for (size_t i = 0; i < all.size(); i++) {
            Num n = isFloat ? toFloat(all[i]) : toInt(scaleTo(all[i], scale, false));
            if (!guardOf(i).empty()) put(cat("if (", guardOf(i), ") {\n"));
            put(cat(now, " = ", n.text, ";\n"));
            if (i == 0)
                put(cat(best, " = ", least, " = ", now, "; ", place, " = 1;\n"));
            else
                put(cat("if (", now, " > ", best, ") { ", best, " = ", now, "; ",
                        most ? cat(place, " = ", i + 1, "; ") : "", "}\nif (", now, " < ", least, ") { ", least, " = ",
                        now, "; ", most ? "" : cat(place, " = ", i + 1, "; "), "}\n"));
            if (!guardOf(i).empty()) put("}\n");
        }
        if (name == "ORD-MAX" || name == "ORD-MIN") return integerNumber(place, 5, false);
        auto made = [&](const std::string &t) {
            if (isFloat) return floatNumber(t);
            Num n = integerNumber(t, digits);
            n.scale = scale;
            return n;
        };
        if (name == "MAX") return made(best);
        if (name == "MIN") return made(least);
        if (name == "RANGE") return add(made(best), made(least), true);
        Decimal two;
        two.digits = "2";
        return divide(add(made(best), made(least), false), literalNumber(two), scale + 1);
    }
    if (name == "SUM" || name == "MEAN") {
        Num sum;
        std::string count;
        if (guarded) {
            count = temp("int64_t");
            put(cat(count, " = 0;\n"));
        }
        for (size_t i = 0; i < args.size(); i++) {
            Num n = number(args[i], -1);
            if (!n.good()) return Num{};
            if (guarded) {
                std::string guard = guardOf(i).empty() ? "1" : guardOf(i);
                n = n.kind == Num::Float ? n : toInt(n);
                n.text = cat("(", guard, " ? ", n.text, " : 0)");
                n.literal = n.direct = false;
                put(cat("if (", guard, ") ", count, "++;\n"));
            }
            sum = i == 0 ? n : add(sum, n, false);
            if (args.size() > 8 && i % 8 == 7) {
                // Many terms: no more digits than needed.
                Num kept = keep(sum, true);
                if (kept.kind != Num::Float) kept.digits = std::min(kept.digits, 37);
                sum = kept;
            }
        }
        if (name == "SUM") return sum;
        if (guarded) return divide(sum, integerNumber(count, 5), std::max({wantScale, sum.scale, 0}) + 10);
        Decimal howMany;
        howMany.digits = std::to_string(args.size());
        return divide(sum, literalNumber(howMany), std::max({wantScale, sum.scale, 0}) + 10);
    }
    if (name == "ABS") {
        Num n = argument(0);
        if (!n.good()) return n;
        if (n.kind == Num::Float) return floatNumber(cat(emits(Do::Absolute, Of::Float), "(", n.text, ")"));
        if (n.kind == Num::Int) {
            n.text = cat(n.wide() ? emits(Do::Absolute, Of::Wide) : emits(Do::Absolute, Of::Integer), "(", n.text, ")");
            n.literal = false;
            n.isSigned = false;
            return n;
        }
        std::string t = tempBytes(n.digits / 2 + 1);
        n.text = cat(emits(Do::Absolute, Of::Packed), "(", n.text, ", ", t, ", ", n.digits, ", ", n.digits, ")");
        n.direct = false;
        return n;
    }
    if (name == "SIGN") {
        Num n = keep(argument(0), false);
        Decimal zero;
        zero.digits = "0";
        std::string above = compareNumbers(n, literalNumber(zero), '>'),
                    below = compareNumbers(n, literalNumber(zero), '<');
        return integerNumber(cat("((int64_t)", above, " - ", below, ")"), 1);
    }
    if (name == "INTEGER" || name == "INTEGER-PART" || name == "FRACTION-PART") {
        Num n = argument(0);
        if (!n.good()) return n;
        if (n.kind == Num::Float) {
            if (name == "INTEGER")
                return scaleTo(
                    floatNumber(cat(emitsFunction(name), "(", emits(Do::Settle, Of::Float), "(", n.text, "))")), 0,
                    false);
            if (name == "INTEGER-PART")
                return scaleTo(
                    floatNumber(cat(emitsFunction(name), "(", emits(Do::Settle, Of::Float), "(", n.text, "))")), 0,
                    false);
            n = scaleTo(n, 9, false);
        }
        if (n.scale <= 0) {
            if (name != "FRACTION-PART") return scaleUp(n, 0);
            return integerNumber("0LL", 1);
        }
        n = keep(n, false);
        Num part = scaleTo(n, 0, false);
        if (name == "INTEGER-PART") return part;
        if (name == "FRACTION-PART") return add(n, part, true);
        // The greatest integer not above: one less where a fraction of a negative number was cut.
        part = toInt(part);
        part = keep(part, false);
        std::string below = compareNumbers(n, part, '<');
        Num result = integerNumber(cat("(", part.text, " - ", below, ")"), std::min(part.digits + 1, 38));
        return result;
    }
    if (name == "MOD" || name == "REM") {
        Num a = argument(0), b = argument(1);
        if (!a.good() || !b.good()) return Num{};
        if (a.kind == Num::Float || b.kind == Num::Float) {
            if (name == "REM")
                return floatNumber(
                    cat(emitsFunction(name, Of::Float), "(", toFloat(a).text, ", ", toFloat(b).text, ")"));
            a = scaleTo(a, 0, false), b = scaleTo(b, 0, false);
        }
        int scale = std::max({a.scale, b.scale, 0});
        a = toInt(scaleUp(a, scale)), b = toInt(scaleUp(b, scale));
        Num n = integerNumber(cat(emitsFunction(name, Of::Integer), "(", a.text, ", ", b.text, ", &", zeroFlag(), ")"),
                              std::min(std::max(b.digits, 19), 38));
        n.scale = scale;
        if (b.digits <= 18) {
            n.text = cat("(int64_t)", n.text);
            n.digits = b.digits;
        }
        return n;
    }
    if (name == "FACTORIAL") {
        std::string t = tempBytes(33);
        Num n;
        n.kind = Num::Packed;
        n.digits = 38;
        n.text = cat(emitsFunction(name), "(", whole(0), ", ", t, ")");
        return n;
    }
    if (name == "DATE-OF-INTEGER")
        return integerNumber(cat("(int64_t)", emitsFunction(name), "((int32_t)", whole(0), ")"), 8, false);
    if (name == "DAY-OF-INTEGER")
        return integerNumber(cat("(int64_t)", emitsFunction(name), "((int32_t)", whole(0), ")"), 7, false);
    if (name == "INTEGER-OF-DATE")
        return integerNumber(cat("(int64_t)", emitsFunction(name), "((int32_t)", whole(0), ")"), 7, false);
    if (name == "INTEGER-OF-DAY")
        return integerNumber(cat("(int64_t)", emitsFunction(name), "((int32_t)", whole(0), ")"), 7, false);
    if (name == "YEAR-TO-YYYY" || name == "DATE-TO-YYYYMMDD" || name == "DAY-TO-YYYYDDD") {
        std::string window = args.size() > 1 ? whole(1) : "50";
        int digits = name[0] == 'Y' ? 4 : name == "DATE-TO-YYYYMMDD" ? 8 : 7;
        return integerNumber(cat(emitsFunction(name), "(", digits, ", (int32_t)", whole(0), ", (int32_t)", window, ")"),
                             digits, false);
    }
    if (row->result == FunctionResult::Float && row->least == 1 && row->most == 1) // ACOS, SQRT and their like
        return floatNumber(cat(emitsFunction(name), "(", floating(0), ")"));
    if (name == "PI" || name == "E") return floatNumber(emitsFunction(name));
    if (name == "ANNUITY") {
        std::string a = floating(0), b = floating(1);
        return floatNumber(cat(emitsFunction(name), "(", a, ", ", b, ")"));
    }
    if (name == "RANDOM") {
        if (args.empty()) return floatNumber(cat(emitsFunction(name), "()"));
        return floatNumber(cat(emitsFunction(name, Of::Integer), "((uint64_t)", whole(0), ")"));
    }
    // MEDIAN, VARIANCE, STANDARD-DEVIATION, PRESENT-VALUE: an array of numbers.
    std::string array = temp("double", cat("[", args.size(), "]"));
    std::string count = cat(args.size());
    if (guarded) {
        count = temp("int");
        put(cat(count, " = 0;\n"));
    }
    for (size_t i = 0; i < args.size(); i++) {
        if (!guarded)
            put(cat(array, "[", i, "] = ", floating(i), ";\n"));
        else
            put(cat("if (", guardOf(i).empty() ? "1" : guardOf(i), ") ", array, "[", count, "++] = ", floating(i),
                    ";\n"));
    }
    return floatNumber(cat(emitsFunction(name), "('",
                           name == "MEDIAN"               ? 'M'
                           : name == "VARIANCE"           ? 'V'
                           : name == "STANDARD-DEVIATION" ? 'S'
                                                          : 'P',
                           "', ", array, ", ", count, ")"));
}

Text Emitter::functionText(const Expr *e)
{
    Text t;
    const std::string &name = wordText(e->op);
    const FunctionRow *row = functionRow(e->op);
    t.good = false;
    bool own = userFunction(e) != nullptr;
    if (!own && !row) {
        notBuilt(e->at, "FUNCTION " + name);
        return t;
    }
    std::vector<const Expr *> args;
    if (!own)
        for (const Expr *a : e->args) expandAll(a, args);
    if (!own &&
        (static_cast<int>(args.size()) < row->least || (row->most >= 0 && static_cast<int>(args.size()) > row->most))) {
        error(e->at, "FUNCTION " + name + " does not have " + std::to_string(args.size()) + " arguments");
        return t;
    }
    std::string address = temp("uint8_t *"), length = temp("int64_t");
    auto argument = [&](size_t i) {
        Text a = text(args[i], true);
        return a;
    };
    t.fixed = -1;
    if (own) {
        Loc result;
        if (!callFunction(e, result)) return t;
        put(cat(address, " = ", result.address, "; ", length, " = ", result.length, ";\n"));
        t.fixed = result.fixed;
    } else if (name == "CURRENT-DATE" || name == "WHEN-COMPILED") {
        std::string buffer = tempBytes(22);
        put(cat(emitsFunction(name), name == "CURRENT-DATE" ? "((char *)" : "(__DATE__, __TIME__, (char *)", buffer,
                ");\n"));
        put(cat(address, " = ", buffer, "; ", length, " = 21;\n"));
        t.fixed = 21;
    } else if (name == "UPPER-CASE" || name == "LOWER-CASE" || name == "REVERSE") {
        Text a = argument(0);
        if (!a.good) return t;
        const char *entry = emitsFunction(name);
        if (a.fixed >= 0) {
            std::string buffer = tempBytes(a.fixed + 1);
            put(cat(address, " = ", buffer, "; ", length, " = ", a.fixed, "; ", entry, "(", length, ", ", a.address,
                    ", ", address, ");\n"));
            t.fixed = a.fixed;
        } else {
            std::string from = temp("const uint8_t *");
            put(cat(from, " = ", a.address, "; ", length, " = ", a.length, "; ", address, " = ",
                    emits(Do::FunctionRoom, Of::Varying), "(", length, "); ", entry, "(", length, ", ", from, ", ",
                    address, ");\n"));
        }
    } else if (name == "TRIM") {
        Text a = argument(0);
        if (!a.good) return t;
        int mode = 3;
        if (args.size() > 1) mode = args[1]->op == K_LEADING ? 1 : 2;
        put(cat(address, " = (uint8_t *)(intptr_t)(", a.address, "); ", length, " = ", a.length, "; ",
                emitsFunction(name), "(&", address, ", &", length, ", ", mode, ");\n"));
    } else if (name == "FORMATTED-DATE" || name == "FORMATTED-TIME" || name == "FORMATTED-DATETIME" ||
               name == "FORMATTED-CURRENT-DATE") {
        Text a = argument(0);
        if (!a.good) return t;
        std::string from = temp("const uint8_t *");
        put(cat(from, " = ", a.address, "; ", length, " = ", a.length, "; ", address, " = ",
                emits(Do::FunctionRoom, Of::Varying), "(", length, ");\n"));
        if (name == "FORMATTED-CURRENT-DATE") {
            put(cat(emitsFunction(name), "(", from, ", ", length, ", ", address, ");\n"));
        } else {
            size_t next = 1;
            std::string date = name == "FORMATTED-TIME" ? "1" : integer(args[next++]), nanos = "0", offset = "0";
            if (name != "FORMATTED-DATE") {
                Num n = scaleTo(number(args[next++], 9), 9, false);
                if (!n.good()) return t;
                n.digits = std::min(n.digits, 18);
                nanos = toInt(n).text;
            }
            bool hasOffset = next < args.size();
            if (hasOffset) offset = integer(args[next]);
            put(cat(emitsFunction(name), "(", from, ", ", length, ", ", date, ", (int64_t)", nanos, ", ",
                    hasOffset ? 1 : 0, ", ", offset, ", ", address, ");\n"));
        }
        if (a.fixed >= 0) t.fixed = a.fixed;
    } else if (name == "HEX-TO-CHAR" || name == "BIT-TO-CHAR") {
        Text a = argument(0);
        if (!a.good) return t;
        std::string from = temp("const uint8_t *");
        put(cat(from, " = ", a.address, "; ", length, " = ", a.length, "; ", address, " = ",
                emits(Do::FunctionRoom, Of::Varying), "(", length, "); ", length, " = ", emitsFunction(name), "(", from,
                ", ", length, ", ", name[0] == 'H' ? 2 : 8, ", ", address, ");\n"));
    } else if (name == "BIT-OF") {
        Text a = argument(0);
        if (!a.good) return t;
        std::string from = temp("const uint8_t *");
        put(cat(from, " = ", a.address, "; ", length, " = 8 * (", a.length, "); ", address, " = ",
                emits(Do::FunctionRoom, Of::Varying), "(", length, "); ", emitsFunction(name), "(", from, ", ", length,
                " / 8, ", address, ");\n"));
    } else if (name == "MODULE-ID") {
        const std::string &id = wordText(program_->name);
        put(cat(address, " = (uint8_t *)(intptr_t)", constantBytes(id), "; ", length, " = ", id.size(), ";\n"));
        t.fixed = static_cast<int64_t>(id.size());
    } else if (name == "HEX-OF") {
        Text a = argument(0);
        if (!a.good) return t;
        std::string from = temp("const uint8_t *");
        put(cat(from, " = ", a.address, "; ", length, " = 2 * (", a.length, "); ", address, " = ",
                emits(Do::FunctionRoom, Of::Varying), "(", length, "); ", emitsFunction(name), "(", from, ", ", length,
                " / 2, ", address, ");\n"));
    } else if (name == "CHAR") {
        std::string buffer = tempBytes(1);
        put(cat(buffer, "[0] = (uint8_t)(", integer(args[0]), " - 1); ", address, " = ", buffer, "; ", length,
                " = 1;\n"));
        t.fixed = 1;
    } else if (name == "CONCATENATE" || name == "CONCAT") {
        std::string list = temp("KvrPiece", cat("[", args.size(), "]"));
        for (size_t i = 0; i < args.size(); i++) {
            Text a = argument(i);
            if (!a.good) return t;
            put(cat(list, "[", i, "].text = ", a.address, "; ", list, "[", i, "].length = ", a.length, ";\n"));
        }
        put(cat(address, " = ", emitsFunction(name), "(", list, ", ", args.size(), ", &", length, ");\n"));
    } else if (name == "SUBSTITUTE" || name == "SUBSTITUTE-CASE") {
        std::string list = temp("KvrPiece", cat("[", args.size(), "]"));
        for (size_t i = 0; i < args.size(); i++) {
            Text a = argument(i);
            if (!a.good) return t;
            put(cat(list, "[", i, "].text = ", a.address, "; ", list, "[", i, "].length = ", a.length, ";\n"));
        }
        put(cat(address, " = ", emitsFunction(name), "(", list, ", ", args.size(), ", ", name == "SUBSTITUTE" ? 0 : 1,
                ", &", length, ");\n"));
    } else if (name == "MAX" || name == "MIN") {
        if (isNumericExpr(args[0])) {
            Num n = functionNumber(e, -1);
            (void)n;
            return t;
        }
        std::string now = temp("const uint8_t *"), nowLength = temp("int64_t");
        for (size_t i = 0; i < args.size(); i++) {
            Text a = argument(i);
            if (!a.good) return t;
            if (i == 0)
                put(cat(address, " = (uint8_t *)(intptr_t)", a.address, "; ", length, " = ", a.length, ";\n"));
            else
                put(cat(now, " = ", a.address, "; ", nowLength, " = ", a.length, "; if (",
                        guards_.count(args[i]) ? guards_[args[i]] + " && " : "", emits(Do::Compare, Of::Text, Of::Text),
                        "(", now, ", ", nowLength, ", ", address, ", ", length, ") ", name == "MAX" ? ">" : "<",
                        " 0) { ", address, " = (uint8_t *)(intptr_t)", now, "; ", length, " = ", nowLength, "; }\n"));
        }
    } else {
        // A numeric function with a reference modifier: none.
        error(e->at, "FUNCTION " + name + " gives a number and has no parts");
        return t;
    }
    t.good = true;
    t.address = address;
    t.length = t.fixed >= 0 ? cat(t.fixed) : length;
    if (e->ref) {
        std::string from = integer(e->ref->from);
        std::string size = e->ref->length ? integer(e->ref->length) : "0";
        put(cat(emits(Do::FunctionPart, Of::Varying), "(&", address, ", &", length, ", ", from, ", ", size, ");\n"));
        t.length = length;
        Decimal d;
        t.fixed = -1;
        if (e->ref->length && meaning_.constantNumber(*program_, e->ref->length, d) && d.scale == 0 &&
            d.digits.size() < 9) {
            // It may be shortened, but a valid program stays inside.
        }
    }
    return t;
}

} // namespace kvrcob
