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
    auto found = inFile_.guards.find(f.args[i]);
    return found == inFile_.guards.end() ? "" : found->second;
}

// An item of its own that counts the arguments that exist.
std::string Emitter::counter()
{
    std::string counted = temp("int64_t");
    put(counted, " = 0;\n");
    return counted;
}

void Emitter::count(const FunctionCall &f, size_t i, const std::string &counted)
{
    std::string guard = guardOf(f, i);
    put(guard.empty() ? "" : cat("if (", guard, ") "), counted, "++;\n");
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
    std::string counted = f.guarded ? counter() : "";
    for (size_t i = 0; i < f.args.size(); i++) {
        Text t = text(f.args[i]);
        if (!t.good) return Num{};
        if (f.guarded) count(f, i, counted);
        if (i == 0) {
            put(address, " = ", t.address, "; ", length, " = ", t.length, "; ", place, " = 1;\n");
        } else {
            put("if (", guardOf(f, i), guardOf(f, i).empty() ? "" : " && ", emits(Do::Compare, Of::Text, Of::Text), "(",
                t.address, ", ", t.length, ", ", address, ", ", length, ") ", most ? ">" : "<", " 0) { ", address,
                " = ", t.address, "; ", length, " = ", t.length, "; ", place, " = ", f.guarded ? counted : cat(i + 1),
                "; }\n");
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
    std::string counted = f.guarded ? counter() : "";
    for (size_t i = 0; i < all.size(); i++) {
        Num n = isFloat ? toFloat(all[i]) : toInt(scaleTo(all[i], scale, false));
        std::string here = f.guarded ? counted : cat(i + 1);
        if (f.guarded) count(f, i, counted);
        if (!guardOf(f, i).empty()) put("if (", guardOf(f, i), ") {\n");
        put(now, " = ", n.text, ";\n");
        if (i == 0)
            put(best, " = ", least, " = ", now, "; ", place, " = 1;\n");
        else
            put("if (", now, " > ", best, ") { ", best, " = ", now, "; ", most ? cat(place, " = ", here, "; ") : "",
                "}\nif (", now, " < ", least, ") { ", least, " = ", now, "; ",
                most ? "" : cat(place, " = ", here, "; "), "}\n");
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
    std::vector<Num> all;
    int wholes = static_cast<int>(std::to_string(f.args.size()).size()), widest = 0, scale = 0;
    std::string counted = f.guarded ? counter() : "";
    for (size_t i = 0; i < f.args.size(); i++) {
        Num n = number(f.args[i], -1);
        if (!n.good()) return Num{};
        std::string guard = guardOf(f, i);
        if (!guard.empty()) {
            std::string zero = n.kind == Num::Packed ? constantBytes(packedBytes("0", false, n.digits, true)) : "0";
            n.text = cat("(", guard, " ? ", n.text, " : ", zero, ")");
            n.literal = nullptr;
            n.direct = false;
        }
        if (f.guarded) count(f, i, counted);
        widest = std::max(widest, n.digits - n.scale);
        scale = std::max(scale, n.scale);
        all.push_back(n);
    }

    // Many terms: no more digits than their sum can have.
    Num sum = all[0];
    int most = std::max(widest + wholes + scale, 19);
    for (size_t i = 1; i < all.size(); i++) {
        sum = add(sum, all[i], false);
        if (sum.kind == Num::Int) sum.digits = std::min(sum.digits, most);
        if (sum.kind == Num::Packed && sum.digits > most && sum.cut) {
            sum.text = sum.cutTo(most);
            sum.digits = most;
        }
        if (i % 8 == 7) sum = keep(std::move(sum), true);
    }
    if (f.name == "SUM") return sum;
    Decimal howMany;
    howMany.digits = std::to_string(f.args.size());
    return divide(sum, f.guarded ? integerNumber(counted, 5) : literalNumber(howMany),
                  std::max({f.wantScale, sum.scale, 0}) + 10);
}

// MEDIAN, VARIANCE, STANDARD-DEVIATION, PRESENT-VALUE: an array of numbers.
Num Emitter::statistic(const FunctionCall &f)
{
    std::string array = temp("double", cat("[", f.args.size(), "]"));
    std::string count = cat(f.args.size());
    if (f.guarded) {
        count = temp("int");
        put(count, " = 0;\n");
    }
    for (size_t i = 0; i < f.args.size(); i++) {
        if (!f.guarded)
            put(array, "[", i, "] = ", toFloat(number(f.args[i], -1)).text, ";\n");
        else
            put("if (", guardOf(f, i).empty() ? "1" : guardOf(f, i), ") ", array, "[", count,
                "++] = ", toFloat(number(f.args[i], -1)).text, ";\n");
    }
    return floatNumber(cat(emitsFunction(f.name), "('",
                           f.name == "MEDIAN"               ? 'M'
                           : f.name == "VARIANCE"           ? 'V'
                           : f.name == "STANDARD-DEVIATION" ? 'S'
                                                            : 'P',
                           "', ", array, ", ", count, ")"));
}

} // namespace kvrcob
