// Functions that the source defines by FUNCTION-ID: which one a name means, and its call.
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {

Program *Emitter::userFunction(const Expr *e)
{
    for (Program *p : group_.programs)
        if (p->isFunction && p->name == e->op) return p;
    for (Program *p : group_.elsewhere)
        if (p->name == e->op) return p;
    return nullptr;
}

// The C name of a function's entry. One of another source is declared here, under its own name.
std::string Emitter::functionEntry(Program &f)
{
    auto found = std::find(group_.elsewhere.begin(), group_.elsewhere.end(), &f);
    if (found == group_.elsewhere.end()) return cat("kvr_entry_", f.number);
    size_t index = static_cast<size_t>(found - group_.elsewhere.begin());
    std::string name = cat("kvr_other_", index);
    if (inFile_.declaredElsewhere.insert(index).second) {
        std::string parameters;
        for (size_t i = 0; i < f.parameters.size(); i++) parameters += i ? ", uint8_t *" : "uint8_t *";
        globals_ += joined("int64_t ", name, "(", parameters, ") __asm__(", bytesLiteral(f.cName), ");\n");
    }
    return name;
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
            put(address, " = (uint8_t *)(intptr_t)(", t.address, ");\n");
            std::string length = temp("int64_t");
            put(length, " = ", t.length, ";\n");
            lengths += joined("kvr_lengths[", i, "] = ", length, ";\n");
            arguments += joined(address, ", ");
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
            put(address, " = ", given.address, ";\n");
        } else {
            Loc copy = locateItem(*formal, "", true);
            copy.address = tempBytes(formal->size);
            put(address, " = ", copy.address, ";\n");
            move(a, copy);
        }
        arguments += joined(address, ", ");
    }
    result = Loc{};
    result.item = returned;
    result.category = returned->category;
    result.fixed = returned->size;
    result.length = cat(returned->size);
    result.address = tempBytes(std::max<int64_t>(returned->size, 1));
    const std::string entry = functionEntry(f);
    bool zeros = isNumericItem(*returned) && returned->usage != Usage::Display;
    put("memset(", result.address, ", ",
        zeros                      ? "0"
        : isNumericItem(*returned) ? "'0'"
                                   : "' '",
        ", ", returned->size, ");\n", lengths, entry, "(", arguments, result.address, ");\n");
    return true;
}

} // namespace kvrcob
