// Functions of any number of arguments: the greatest and the least, sums and means, statistics.
//
// A table with the subscript ALL stands for as many arguments as it has elements; where its OCCURS
// depends on an item, an argument counts only if there is such an element (`guardOf`).
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {

// The condition that an argument exists, where ALL made it; else empty.
std::string Emitter::guardOf(const FunctionCall &f, size_t i)
{
    auto found = guards_.find(f.args[i]);
    return found == guards_.end() ? "" : found->second;
}

// ORD-MAX, ORD-MIN of texts.
Num Emitter::placeOfExtremeText(const FunctionCall &f)
{
    bool most = f.name == "ORD-MAX";
    if (f.name != "ORD-MAX" && f.name != "ORD-MIN") {
        error(f.args[0]->at, "FUNCTION " + f.name + " needs numbers here");
        return Num{};
    }
    std::string address = temp("const uint8_t *"), length = temp("int64_t"), place = temp("int64_t");
    for (size_t i = 0; i < f.args.size(); i++) {
        Text t = text(f.args[i]);
        if (!t.good) return Num{};
        if (i == 0) {
            put(cat(address, " = ", t.address, "; ", length, " = ", t.length, "; ", place, " = 1;\n"));
        } else {
            put(cat("if (", guardOf(f, i), guardOf(f, i).empty() ? "" : " && ", emits(Do::Compare, Of::Text, Of::Text),
                    "(", t.address, ", ", t.length, ", ", address, ", ", length, ") ", most ? ">" : "<", " 0) { ",
                    address, " = ", t.address, "; ", length, " = ", t.length, "; ", place, " = ", i + 1, "; }\n"));
        }
    }
    return integerNumber(place, 5, false);
}

// MAX, MIN, ORD-MAX, ORD-MIN, RANGE, MIDRANGE
Num Emitter::extreme(const FunctionCall &f)
{
    if (!isNumericExpr(f.args[0])) return placeOfExtremeText(f);
    bool most = f.name == "MAX" || f.name == "ORD-MAX";
    // All arguments at the same scale, then the greatest and the least.
    std::vector<Num> all;
    bool isFloat = false;
    int scale = 0, wholes = 1;
    for (const Expr *a : f.args) {
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
        if (!guardOf(f, i).empty()) put(cat("if (", guardOf(f, i), ") {\n"));
        put(cat(now, " = ", n.text, ";\n"));
        if (i == 0)
            put(cat(best, " = ", least, " = ", now, "; ", place, " = 1;\n"));
        else
            put(cat("if (", now, " > ", best, ") { ", best, " = ", now, "; ",
                    most ? cat(place, " = ", i + 1, "; ") : "", "}\nif (", now, " < ", least, ") { ", least, " = ", now,
                    "; ", most ? "" : cat(place, " = ", i + 1, "; "), "}\n"));
        if (!guardOf(f, i).empty()) put("}\n");
    }
    if (f.name == "ORD-MAX" || f.name == "ORD-MIN") return integerNumber(place, 5, false);
    auto made = [&](const std::string &t) {
        if (isFloat) return floatNumber(t);
        Num n = integerNumber(t, digits);
        n.scale = scale;
        return n;
    };
    if (f.name == "MAX") return made(best);
    if (f.name == "MIN") return made(least);
    if (f.name == "RANGE") return add(made(best), made(least), true);
    Decimal two;
    two.digits = "2";
    return divide(add(made(best), made(least), false), literalNumber(two), scale + 1);
}

// SUM, MEAN
Num Emitter::sum(const FunctionCall &f)
{
    Num sum;
    std::string count;
    if (f.guarded) {
        count = temp("int64_t");
        put(cat(count, " = 0;\n"));
    }
    for (size_t i = 0; i < f.args.size(); i++) {
        Num n = number(f.args[i], -1);
        if (!n.good()) return Num{};
        if (f.guarded) {
            std::string guard = guardOf(f, i).empty() ? "1" : guardOf(f, i);
            n = n.kind == Num::Float ? n : toInt(n);
            n.text = cat("(", guard, " ? ", n.text, " : 0)");
            n.literal = n.direct = false;
            put(cat("if (", guard, ") ", count, "++;\n"));
        }
        sum = i == 0 ? n : add(sum, n, false);
        if (f.args.size() > 8 && i % 8 == 7) {
            // Many terms: no more digits than needed.
            Num kept = keep(sum, true);
            if (kept.kind != Num::Float) kept.digits = std::min(kept.digits, 37);
            sum = kept;
        }
    }
    if (f.name == "SUM") return sum;
    if (f.guarded) return divide(sum, integerNumber(count, 5), std::max({f.wantScale, sum.scale, 0}) + 10);
    Decimal howMany;
    howMany.digits = std::to_string(f.args.size());
    return divide(sum, literalNumber(howMany), std::max({f.wantScale, sum.scale, 0}) + 10);
}

// MEDIAN, VARIANCE, STANDARD-DEVIATION, PRESENT-VALUE: an array of numbers.
Num Emitter::statistic(const FunctionCall &f)
{
    std::string array = temp("double", cat("[", f.args.size(), "]"));
    std::string count = cat(f.args.size());
    if (f.guarded) {
        count = temp("int");
        put(cat(count, " = 0;\n"));
    }
    for (size_t i = 0; i < f.args.size(); i++) {
        if (!f.guarded)
            put(cat(array, "[", i, "] = ", toFloat(number(f.args[i], -1)).text, ";\n"));
        else
            put(cat("if (", guardOf(f, i).empty() ? "1" : guardOf(f, i), ") ", array, "[", count,
                    "++] = ", toFloat(number(f.args[i], -1)).text, ";\n"));
    }
    return floatNumber(cat(emitsFunction(f.name), "('",
                           f.name == "MEDIAN"               ? 'M'
                           : f.name == "VARIANCE"           ? 'V'
                           : f.name == "STANDARD-DEVIATION" ? 'S'
                                                            : 'P',
                           "', ", array, ", ", count, ")"));
}

} // namespace kvrcob
