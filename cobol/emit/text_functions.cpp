// Functions of texts: those that give a text, and those that give a number.
//
// A text function leaves its result in a temporary; its length is known now unless it depends on
// what the argument holds.
#include "cobol/emit/emitter.h"

namespace kvrcob {

// CURRENT-DATE, WHEN-COMPILED
bool Emitter::dateText(const FunctionCall &f, FunctionText &result)
{
    std::string buffer = tempBytes(22);
    put(emitsFunction(f.name), f.name == "CURRENT-DATE" ? "((char *)" : "(__DATE__, __TIME__, (char *)", buffer,
        ");\n");
    put(result.address, " = ", buffer, "; ", result.length, " = 21;\n");
    result.fixed = 21;
    return true;
}

// UPPER-CASE, LOWER-CASE, REVERSE
bool Emitter::changedText(const FunctionCall &f, FunctionText &result)
{
    Text a = text(f.args[0], true);
    if (!a.good) return false;
    const std::string_view entry = emitsFunction(f.name);
    if (a.fixed >= 0) {
        std::string buffer = tempBytes(a.fixed + 1);
        put(result.address, " = ", buffer, "; ", result.length, " = ", a.fixed, "; ", entry, "(", result.length, ", ",
            a.address, ", ", result.address, ");\n");
        result.fixed = a.fixed;
    } else {
        std::string from = temp("const uint8_t *");
        put(from, " = ", a.address, "; ", result.length, " = ", a.length, "; ", result.address, " = ",
            emits(Do::FunctionRoom, Of::Varying), "(", result.length, "); ", entry, "(", result.length, ", ", from,
            ", ", result.address, ");\n");
    }
    return true;
}

bool Emitter::trimmed(const FunctionCall &f, FunctionText &result)
{
    Text a = text(f.args[0], true);
    if (!a.good) return false;
    int mode = 3;
    if (f.args.size() > 1) mode = f.args[1]->op == K_LEADING ? 1 : 2;
    put(result.address, " = (uint8_t *)(intptr_t)(", a.address, "); ", result.length, " = ", a.length, "; ",
        emitsFunction(f.name), "(&", result.address, ", &", result.length, ", ", mode, ");\n");
    return true;
}

// FORMATTED-DATE, -TIME, -DATETIME, -CURRENT-DATE
bool Emitter::formatted(const FunctionCall &f, FunctionText &result)
{
    Text a = text(f.args[0], true);
    if (!a.good) return false;
    std::string from = temp("const uint8_t *");
    put(from, " = ", a.address, "; ", result.length, " = ", a.length, "; ", result.address, " = ",
        emits(Do::FunctionRoom, Of::Varying), "(", result.length, ");\n");
    if (f.name == "FORMATTED-CURRENT-DATE") {
        put(emitsFunction(f.name), "(", from, ", ", result.length, ", ", result.address, ");\n");
    } else {
        size_t next = 1;
        std::string date = f.name == "FORMATTED-TIME" ? "1" : integer(f.args[next++]), nanos = "0", offset = "0";
        if (f.name != "FORMATTED-DATE") {
            Num n = scaleTo(number(f.args[next++], 9), 9, false);
            if (!n.good()) return false;
            n.digits = std::min(n.digits, 18);
            nanos = toInt(n).text;
        }
        bool hasOffset = next < f.args.size();
        if (hasOffset) offset = integer(f.args[next]);
        put(emitsFunction(f.name), "(", from, ", ", result.length, ", ", date, ", (int64_t)", nanos, ", ",
            hasOffset ? 1 : 0, ", ", offset, ", ", result.address, ");\n");
    }
    if (a.fixed >= 0) result.fixed = a.fixed;
    return true;
}

// HEX-TO-CHAR, BIT-TO-CHAR
bool Emitter::textOfDigits(const FunctionCall &f, FunctionText &result)
{
    Text a = text(f.args[0], true);
    if (!a.good) return false;
    std::string from = temp("const uint8_t *");
    put(from, " = ", a.address, "; ", result.length, " = ", a.length, "; ", result.address, " = ",
        emits(Do::FunctionRoom, Of::Varying), "(", result.length, "); ", result.length, " = ", emitsFunction(f.name),
        "(", from, ", ", result.length, ", ", f.name[0] == 'H' ? 2 : 8, ", ", result.address, ");\n");
    return true;
}

bool Emitter::bitsOf(const FunctionCall &f, FunctionText &result)
{
    Text a = text(f.args[0], true);
    if (!a.good) return false;
    std::string from = temp("const uint8_t *");
    put(from, " = ", a.address, "; ", result.length, " = 8 * (", a.length, "); ", result.address, " = ",
        emits(Do::FunctionRoom, Of::Varying), "(", result.length, "); ", emitsFunction(f.name), "(", from, ", ",
        result.length, " / 8, ", result.address, ");\n");
    return true;
}

bool Emitter::moduleId(const FunctionCall &, FunctionText &result)
{
    const std::string &id = wordText(program_->name);
    put(result.address, " = (uint8_t *)(intptr_t)", constantBytes(id), "; ", result.length, " = ", id.size(), ";\n");
    result.fixed = static_cast<int64_t>(id.size());
    return true;
}

bool Emitter::hexOf(const FunctionCall &f, FunctionText &result)
{
    Text a = text(f.args[0], true);
    if (!a.good) return false;
    std::string from = temp("const uint8_t *");
    put(from, " = ", a.address, "; ", result.length, " = 2 * (", a.length, "); ", result.address, " = ",
        emits(Do::FunctionRoom, Of::Varying), "(", result.length, "); ", emitsFunction(f.name), "(", from, ", ",
        result.length, " / 2, ", result.address, ");\n");
    return true;
}

// The program's own collating sequence, or null.
const Alphabet *Emitter::ownSequence()
{
    const Alphabet *a = program_->collating ? meaning_.alphabet(*program_, program_->collating) : nullptr;
    return a && a->weights.size() == 256 ? a : nullptr;
}

bool Emitter::charOf(const FunctionCall &f, FunctionText &result)
{
    std::string buffer = tempBytes(1);
    std::string place = integer(f.args[0]);
    const Alphabet *a = ownSequence();
    put(buffer, "[0] = ",
        a ? cat(emitsFunction(f.name), "(alphabet", a->number, ", ", place, ")") : cat("(uint8_t)(", place, " - 1)"),
        "; ", result.address, " = ", buffer, "; ", result.length, " = 1;\n");
    result.fixed = 1;
    return true;
}

bool Emitter::concatenated(const FunctionCall &f, FunctionText &result)
{
    std::string list = temp("KvrPiece", cat("[", f.args.size(), "]"));
    for (size_t i = 0; i < f.args.size(); i++) {
        Text a = text(f.args[i], true);
        if (!a.good) return false;
        put(list, "[", i, "].text = ", a.address, "; ", list, "[", i, "].length = ", a.length, ";\n");
    }
    put(result.address, " = ", emitsFunction(f.name), "(", list, ", ", f.args.size(), ", &", result.length, ");\n");
    return true;
}

// SUBSTITUTE, SUBSTITUTE-CASE
bool Emitter::substituted(const FunctionCall &f, FunctionText &result)
{
    std::string list = temp("KvrPiece", cat("[", f.args.size(), "]"));
    for (size_t i = 0; i < f.args.size(); i++) {
        Text a = text(f.args[i], true);
        if (!a.good) return false;
        put(list, "[", i, "].text = ", a.address, "; ", list, "[", i, "].length = ", a.length, ";\n");
    }
    put(result.address, " = ", emitsFunction(f.name), "(", list, ", ", f.args.size(), ", ",
        f.name == "SUBSTITUTE" ? 0 : 1, ", &", result.length, ");\n");
    return true;
}

// MAX, MIN of texts.
bool Emitter::extremeText(const FunctionCall &f, FunctionText &result)
{
    if (isNumericExpr(f.args[0])) { // of numbers it is a text only where a part of it is asked for
        error(f.e->at, "FUNCTION " + f.name + " gives a number and has no parts");
        return false;
    }
    std::string now = temp("const uint8_t *"), nowLength = temp("int64_t");
    for (size_t i = 0; i < f.args.size(); i++) {
        Text a = text(f.args[i], true);
        if (!a.good) return false;
        if (i == 0)
            put(result.address, " = (uint8_t *)(intptr_t)", a.address, "; ", result.length, " = ", a.length, ";\n");
        else
            put(now, " = ", a.address, "; ", nowLength, " = ", a.length, "; if (",
                inFile_.guards.count(f.args[i]) ? inFile_.guards[f.args[i]] + " && " : "",
                emits(Do::Compare, Of::Text, Of::Text), "(", now, ", ", nowLength, ", ", result.address, ", ",
                result.length, ") ", f.name == "MAX" ? ">" : "<", " 0) { ", result.address, " = (uint8_t *)(intptr_t)",
                now, "; ", result.length, " = ", nowLength, "; }\n");
    }
    return true;
}

// LENGTH, BYTE-LENGTH
Num Emitter::textLength(const FunctionCall &f)
{
    const Expr *a = constant(f.args[0]);
    if (a->kind == ExprKind::Reference) {
        Item *item = meaning_.resolve(*program_, *a->ref, true);
        if (item && !a->ref->refmod && a->ref->subscripts.empty() && fixedOccurrence(*item))
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

Num Emitter::ordinal(const FunctionCall &f)
{
    Text t = text(f.args[0]);
    if (!t.good) return Num{};
    if (const Alphabet *a = ownSequence())
        return integerNumber(cat("((int64_t)alphabet", a->number, "[*(", t.address, ")] + 1)"), 3, false);
    return integerNumber(cat("((int64_t)*", t.address, " + 1)"), 3, false);
}

// Without the blanks at the end.
Num Emitter::storedLength(const FunctionCall &f)
{
    Text t = text(f.args[0]);
    if (!t.good) return Num{};
    return integerNumber(cat(emitsFunction(f.name), "(", t.address, ", ", t.length, ")"), 10, false);
}

// NUMVAL-F
Num Emitter::floatOfText(const FunctionCall &f)
{
    Text t = text(f.args[0]);
    if (!t.good) return Num{};
    return floatNumber(
        cat(emitsFunction(f.name), "(", t.address, ", ", t.length, ", '", program_->commaIsPoint ? ',' : '.', "')"));
}

// TEST-NUMVAL-F
Num Emitter::testFloatOfText(const FunctionCall &f)
{
    Text t = text(f.args[0]);
    if (!t.good) return Num{};
    return integerNumber(
        cat(emitsFunction(f.name), "(", t.address, ", ", t.length, ", '", program_->commaIsPoint ? ',' : '.', "')"), 10,
        false);
}

// NUMVAL, NUMVAL-C and the tests of their arguments.
Num Emitter::numberOfText(const FunctionCall &f)
{
    Text t = text(f.args[0]);
    if (!t.good) return Num{};
    std::string record = tempBytes(20);
    std::string currency = "0, 0";
    if (f.args.size() > 1) {
        Text c = text(f.args[1]);
        currency = cat(c.address, ", ", c.length);
    } else if (f.name == "NUMVAL-C" || f.name == "TEST-NUMVAL-C") {
        currency = cat(bytesLiteral(std::string(1, program_->currency)), ", 1");
    }
    if (f.name == "TEST-NUMVAL" || f.name == "TEST-NUMVAL-C")
        return integerNumber(cat(emitsFunction(f.name), "(", t.address, ", ", t.length, ", '",
                                 program_->commaIsPoint ? ',' : '.', "', (const uint8_t *)", currency, ")"),
                             10, false);
    Num n;
    n.kind = Num::Packed;
    n.digits = 36;
    n.scale = 18;
    n.text = cat(emitsFunction(f.name), "(", t.address, ", ", t.length, ", ", record, ", '",
                 program_->commaIsPoint ? ',' : '.', "', (const uint8_t *)", currency, ")");
    return n;
}

} // namespace kvrcob
