// Intrinsic functions: from the name to what emits it.
//
// syntax/functions.cpp says of each function what comes out and how many arguments go in; the
// tables here, which routine of *_functions.cpp emits it; statement_table.def, what that is.
#include "cobol/syntax/functions.h"
#include "cobol/emit/emitter.h"

namespace kvrcob {

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
        put(count, " = ", currentCount(*tables[i]), ";\n");
    }
    std::string outer = inFile_.guards.count(e) ? inFile_.guards[e] : "";
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
        if (!guard.empty()) inFile_.guards[copy] = guard;
        expandAll(copy, out);
        if (out.size() > 10000) {
            error(e->at, "these are too many arguments");
            return;
        }
    }
}

// The arguments, with what ALL stands for; false if there are too many or too few.
bool Emitter::functionCall(const Expr *e, FunctionCall &f)
{
    f.e = e;
    f.name = wordText(e->op);
    for (const Expr *a : e->args) expandAll(a, f.args);
    for (const Expr *a : f.args) f.guarded |= inFile_.guards.count(a) != 0;
    const FunctionRow *row = functionRow(e->op);
    if (!row) {
        notBuilt(e->at, "FUNCTION " + f.name);
        return false;
    }
    int count = static_cast<int>(f.args.size());
    if (count >= row->least && (row->most < 0 || count <= row->most)) return true;
    error(e->at, "FUNCTION " + f.name + " has " + std::to_string(count) + " arguments; it needs " +
                     std::to_string(row->least) +
                     (row->most < 0            ? " or more"
                      : row->most > row->least ? " to " + std::to_string(row->most)
                                               : ""));
    return false;
}

Num Emitter::functionNumber(const Expr *e, int wantScale)
{
    static const struct {
        const char *name;
        Num (Emitter::*emit)(const FunctionCall &);
    } routines[] = {
        {"ABS", &Emitter::absolute},
        {"ANNUITY", &Emitter::annuity},
        {"BYTE-LENGTH", &Emitter::textLength},
        {"COMBINED-DATETIME", &Emitter::combinedDatetime},
        {"DATE-OF-INTEGER", &Emitter::dateOfInteger},
        {"DATE-TO-YYYYMMDD", &Emitter::windowed},
        {"DAY-OF-INTEGER", &Emitter::dateOfInteger},
        {"DAY-TO-YYYYDDD", &Emitter::windowed},
        {"E", &Emitter::floatConstant},
        {"FACTORIAL", &Emitter::factorial},
        {"FRACTION-PART", &Emitter::integerPart},
        {"HIGHEST-ALGEBRAIC", &Emitter::algebraicLimit},
        {"INTEGER", &Emitter::integerPart},
        {"INTEGER-OF-DATE", &Emitter::dateOfInteger},
        {"INTEGER-OF-DAY", &Emitter::dateOfInteger},
        {"INTEGER-OF-FORMATTED-DATE", &Emitter::ofFormatted},
        {"INTEGER-PART", &Emitter::integerPart},
        {"LENGTH", &Emitter::textLength},
        {"LOWEST-ALGEBRAIC", &Emitter::algebraicLimit},
        {"MAX", &Emitter::extreme},
        {"MEAN", &Emitter::sum},
        {"MEDIAN", &Emitter::statistic},
        {"MIDRANGE", &Emitter::extreme},
        {"MIN", &Emitter::extreme},
        {"MOD", &Emitter::remainder},
        {"NUMVAL", &Emitter::numberOfText},
        {"NUMVAL-C", &Emitter::numberOfText},
        {"NUMVAL-F", &Emitter::floatOfText},
        {"ORD", &Emitter::ordinal},
        {"ORD-MAX", &Emitter::extreme},
        {"ORD-MIN", &Emitter::extreme},
        {"PI", &Emitter::floatConstant},
        {"PRESENT-VALUE", &Emitter::statistic},
        {"RANDOM", &Emitter::random},
        {"RANGE", &Emitter::extreme},
        {"REM", &Emitter::remainder},
        {"SECONDS-FROM-FORMATTED-TIME", &Emitter::ofFormatted},
        {"SECONDS-PAST-MIDNIGHT", &Emitter::secondsPastMidnight},
        {"SIGN", &Emitter::sign},
        {"STANDARD-DEVIATION", &Emitter::statistic},
        {"STORED-CHAR-LENGTH", &Emitter::storedLength},
        {"SUM", &Emitter::sum},
        {"TEST-DATE-YYYYMMDD", &Emitter::testDate},
        {"TEST-DAY-YYYYDDD", &Emitter::testDate},
        {"TEST-FORMATTED-DATETIME", &Emitter::ofFormatted},
        {"TEST-NUMVAL", &Emitter::numberOfText},
        {"TEST-NUMVAL-C", &Emitter::numberOfText},
        {"TEST-NUMVAL-F", &Emitter::testFloatOfText},
        {"VARIANCE", &Emitter::statistic},
        {"YEAR-TO-YYYY", &Emitter::windowed},
    };
    if (userFunction(e)) {
        Loc result;
        if (!callFunction(e, result)) return Num{};
        if (functionIsNumeric(e)) return itemNumber(result);
    }
    FunctionCall f;
    f.wantScale = wantScale;
    if (!userFunction(e) && !functionCall(e, f)) return Num{};
    const FunctionRow *row = functionRow(e->op);
    if (!row || row->result == FunctionResult::Text || e->ref) {
        error(e->at, "FUNCTION " + wordText(e->op) + " gives a text; a number is needed here");
        return Num{};
    }
    for (const auto &routine : routines)
        if (f.name == routine.name) return (this->*routine.emit)(f);
    return floatFunction(f);
}

Text Emitter::functionText(const Expr *e)
{
    static const struct {
        const char *name;
        bool (Emitter::*emit)(const FunctionCall &, FunctionText &);
    } routines[] = {
        {"BIT-OF", &Emitter::bitsOf},
        {"BIT-TO-CHAR", &Emitter::textOfDigits},
        {"CHAR", &Emitter::charOf},
        {"CONCAT", &Emitter::concatenated},
        {"CONCATENATE", &Emitter::concatenated},
        {"CURRENT-DATE", &Emitter::dateText},
        {"EXCEPTION-FILE", &Emitter::exceptionText},
        {"EXCEPTION-LOCATION", &Emitter::exceptionText},
        {"EXCEPTION-STATEMENT", &Emitter::exceptionText},
        {"EXCEPTION-STATUS", &Emitter::exceptionText},
        {"FORMATTED-CURRENT-DATE", &Emitter::formatted},
        {"FORMATTED-DATE", &Emitter::formatted},
        {"FORMATTED-DATETIME", &Emitter::formatted},
        {"FORMATTED-TIME", &Emitter::formatted},
        {"HEX-OF", &Emitter::hexOf},
        {"HEX-TO-CHAR", &Emitter::textOfDigits},
        {"LOWER-CASE", &Emitter::changedText},
        {"MAX", &Emitter::extremeText},
        {"MIN", &Emitter::extremeText},
        {"MODULE-ID", &Emitter::moduleId},
        {"REVERSE", &Emitter::changedText},
        {"SUBSTITUTE", &Emitter::substituted},
        {"SUBSTITUTE-CASE", &Emitter::substituted},
        {"TRIM", &Emitter::trimmed},
        {"UPPER-CASE", &Emitter::changedText},
        {"WHEN-COMPILED", &Emitter::dateText},
    };
    Text t;
    t.good = false;
    FunctionCall f;
    bool own = userFunction(e) != nullptr;
    if (!own && !functionCall(e, f)) return t;
    FunctionText result{temp("uint8_t *"), temp("int64_t")};
    if (own) {
        Loc loc;
        if (!callFunction(e, loc)) return t;
        put(result.address, " = ", loc.address, "; ", result.length, " = ", loc.length, ";\n");
        result.fixed = loc.fixed;
    } else {
        bool (Emitter::*call)(const FunctionCall &, FunctionText &) = nullptr;
        for (const auto &routine : routines)
            if (f.name == routine.name) call = routine.emit;
        if (!call) {
            error(e->at, "FUNCTION " + f.name + " gives a number and has no parts");
            return t;
        }
        if (!(this->*call)(f, result)) return t;
    }
    t.good = true;
    t.fixed = result.fixed;
    t.address = result.address;
    t.length = t.fixed >= 0 ? cat(t.fixed) : result.length;
    if (e->ref) {
        std::string from = integer(e->ref->from);
        std::string size = e->ref->length ? integer(e->ref->length) : "0";
        put(emits(Do::FunctionPart, Of::Varying), "(&", result.address, ", &", result.length, ", ", from, ", ", size,
            ");\n");
        t.length = result.length;
        t.fixed = -1;
    }
    return t;
}

} // namespace kvrcob
