// Conditions: relations, class and sign tests, condition-names, switches, AND, OR, NOT,
// abbreviations.
#include "cobol/emit/emitter.h"

namespace kvrcob {

bool Emitter::isConditionName(const Expr *e)
{
    if (e->kind != ExprKind::Reference) return false;
    bool on;
    Item *item = meaning_.resolve(*program_, *e->ref, true);
    if (item) return item->level == 88;
    return e->ref->names.size() == 1 && meaning_.switchCondition(*program_, e->ref->names[0], on) >= 0;
}

bool Emitter::isCondition(const Expr *e)
{
    switch (e->kind) {
    case ExprKind::Relation:
    case ExprKind::ClassTest:
    case ExprKind::SignTest:
    case ExprKind::And:
    case ExprKind::Or:
    case ExprKind::Not:
    case ExprKind::Truth:
        return true;
    case ExprKind::Kept:
        return !inFile_.kept[e].condition.empty();
    default:
        return isConditionName(e);
    }
}

std::string Emitter::condition(const Expr *e)
{
    Subject subject;
    return condition(e, subject);
}

// `subject` is what an abbreviated relation takes over from the relation before it.
std::string Emitter::condition(const Expr *e, Subject &subject)
{
    switch (e->kind) {
    case ExprKind::And:
    case ExprKind::Or: {
        // A chain of the same operator may be long: from the left, without recursion.
        std::vector<const Expr *> chain;
        const Expr *first = e;
        while (first->kind == e->kind) {
            chain.push_back(first->right);
            first = first->left;
        }
        std::string out = cat("(", condition(first, subject));
        for (size_t i = chain.size(); i-- > 0;)
            out += joined(e->kind == ExprKind::And ? " && " : " || ", condition(chain[i], subject));
        return out + ")";
    }
    case ExprKind::Not:
        return cat("!", condition(e->left, subject));
    case ExprKind::Truth:
        return e->op == K_TRUE ? "1" : "0";
    case ExprKind::Count: {
        const std::string count = cat("met", ++inFile_.constants);
        globals_ += cat("static int64_t ", count, ";\n");
        inProgram_.beginsAgain += joined(count, " = 0;\n");
        return cat(emits(Do::CountOfOn), "(&", count, ", ", integer(e->args[0]), ", ", integer(e->args[1]), ", ",
                   integer(e->args[2]), ")");
    }
    case ExprKind::Relation: {
        if (e->left) subject.left = e->left;
        if (!subject.left) {
            error(e->at, "this relation has no left side");
            return "0";
        }
        subject.op = e->op;
        return relation(subject.left, e->op, e->right);
    }
    case ExprKind::ClassTest:
    case ExprKind::SignTest: {
        // "A > 1 AND IS NUMERIC": the subject goes on, as in an abbreviated relation.
        Expr test = *e;
        if (test.left)
            subject.left = test.left;
        else
            test.left = const_cast<Expr *>(subject.left);
        return e->kind == ExprKind::ClassTest ? classTest(&test) : signTest(&test);
    }
    case ExprKind::Reference: {
        bool on = false;
        Item *item = meaning_.resolve(*program_, *e->ref, true);
        if (item && item->level == 88) {
            return conditionName(*item, *e->ref);
        }
        if (!item && e->ref->names.size() == 1) {
            int number = meaning_.switchCondition(*program_, e->ref->names[0], on);
            if (number >= 0) return cat("(p", program_->number, "_pcb.upsi[", number, "] ", on ? "==" : "!=", " '1')");
        }
        [[fallthrough]];
    }
    default:
        if (e->kind == ExprKind::Kept && !inFile_.kept[e].condition.empty()) return inFile_.kept[e].condition;
        if (subject.left && subject.op) return relation(subject.left, subject.op, e);
        if (e->kind == ExprKind::Reference) {
            if (meaning_.resolve(*program_, *e->ref)) error(e->at, wordText(e->ref->names[0]) + " is no condition");
        } else {
            error(e->at, "a condition is needed here");
        }
        return "0";
    }
}

// The relation that a token stands for.
Do relationOf(uint32_t op)
{
    return op == '='             ? Do::Equal
           : op == '<'           ? Do::Less
           : op == '>'           ? Do::Greater
           : op == kLessEqual    ? Do::LessEqual
           : op == kGreaterEqual ? Do::GreaterEqual
                                 : Do::NotEqual;
}

static std::string_view signOf(uint32_t op) { return emitsFor(relationOf(op), Of::Integer, Of::Integer); }

static uint32_t swapped(uint32_t op)
{
    return op == '<'             ? static_cast<uint32_t>('>')
           : op == '>'           ? static_cast<uint32_t>('<')
           : op == kLessEqual    ? static_cast<uint32_t>(kGreaterEqual)
           : op == kGreaterEqual ? static_cast<uint32_t>(kLessEqual)
                                 : op;
}

static std::string padded(std::string text, int64_t size)
{
    text.resize(static_cast<size_t>(size), ' ');
    return text;
}

std::string Emitter::compareTexts(const Text &a, const Text &b, uint32_t op)
{
    if (!a.good || !b.good) return "0";
    if (a.kind != Text::Bytes && b.kind == Text::Bytes) return compareTexts(b, a, swapped(op));
    std::string weights;
    if (program_->collating) {
        const Alphabet *alphabet = meaning_.alphabet(*program_, program_->collating);
        if (alphabet && !alphabet->weights.empty()) weights = cat("alphabet", alphabet->number);
    }
    std::string call;
    if (!weights.empty())
        call = cat(emits(Do::CompareAlphabet, Of::Text, Of::Text), "(", a.address, ", (int32_t)", a.length, ", ",
                   b.address, ", ", b.kind != Text::Bytes ? "-" : "", "(int32_t)", b.length, ", ", weights, ")");
    else if (b.kind == Text::Figurative)
        call = cat(emits(Do::Compare, Of::Text, Of::Figurative), "(", a.address, ", ", static_cast<int>(b.fill),
                   ", (int32_t)", a.length, ")");
    else if (b.kind == Text::All)
        call = cat(emits(Do::Compare, Of::Text, Of::AllLiteral), "(", a.address, ", (int32_t)", a.length, ", ",
                   b.address, ", (int32_t)", b.length, ")");
    else if (a.fixed >= 0 && b.isLiteral && b.fixed < a.fixed && a.fixed <= 256)
        call = cat(emits(Do::Compare, Of::Equal, Of::Equal), "(", a.address, ", ",
                   constantBytes(padded(b.bytes, a.fixed)), ", ", a.fixed, ")");
    else if (b.fixed >= 0 && a.isLiteral && a.fixed < b.fixed && b.fixed <= 256)
        call = cat(emits(Do::Compare, Of::Equal, Of::Equal), "(", constantBytes(padded(a.bytes, b.fixed)), ", ",
                   b.address, ", ", b.fixed, ")");
    else if (a.fixed >= 0 && a.fixed == b.fixed)
        call = cat(emits(Do::Compare, Of::Equal, Of::Equal), "(", a.address, ", ", b.address, ", ", a.fixed, ")");
    else
        call = cat(emits(Do::Compare, Of::Text, Of::Text), "(", a.address, ", ", a.length, ", ", b.address, ", ",
                   b.length, ")");
    return cat("(", call, " ", signOf(op), " 0)");
}

std::string Emitter::pointerRelation(const Expr *left, uint32_t op, const Expr *right)
{
    auto address = [&](const Expr *e) -> std::string {
        if (e->kind == ExprKind::Figurative && e->op == K_NULL) return "0";
        if (e->kind == ExprKind::AddressOf) return cat("(int64_t)(intptr_t)(", locate(*e->ref).address, ")");
        if (e->kind == ExprKind::Reference)
            return cat("(int64_t)", emits(Do::Load, Of::Pointer), "(", locate(*e->ref).address, ")");
        error(e->at, "a pointer is needed here");
        return "0";
    };
    if (op != '=' && op != kNotEqual) error(left->at, "pointers are equal or not equal, nothing else");
    std::string x = address(left), y = address(right);
    return cat("(", x, " ", signOf(op), " ", y, ")");
}

std::string Emitter::relation(const Expr *left, uint32_t op, const Expr *right)
{
    left = constant(left), right = constant(right);
    // A = (B OR C) and its like.
    if (right->kind == ExprKind::Or || right->kind == ExprKind::And) {
        Subject subject{left, op};
        return condition(right, subject);
    }
    if (isCondition(left) || (isCondition(right) && !isConditionName(right))) {
        error(left->at, "a condition cannot be compared");
        return "0";
    }
    Category a = categoryOf(left), b = categoryOf(right);
    bool figurativeA = left->kind == ExprKind::Figurative || left->kind == ExprKind::All,
         figurativeB = right->kind == ExprKind::Figurative || right->kind == ExprKind::All;
    bool numericA = a == Category::Numeric || a == Category::Index,
         numericB = b == Category::Numeric || b == Category::Index;
    bool zeroA = left->kind == ExprKind::Figurative && left->op == K_ZERO,
         zeroB = right->kind == ExprKind::Figurative && right->op == K_ZERO;
    if (a == Category::Pointer || b == Category::Pointer) return pointerRelation(left, op, right);
    if ((numericA || zeroA) && (numericB || zeroB) && (numericA || numericB)) {
        Num x = number(left), y = number(right);
        return compareNumbers(x, y, op);
    }
    // A number of usage DISPLAY with a text: the number as a text of its digits. With a group, with
    // SPACES and its like: the bytes of the item as they are.
    Text x = text(left, numericA && !figurativeB && b != Category::Group),
         y = text(right, numericB && !figurativeA && a != Category::Group);
    return compareTexts(x, y, op);
}

// The item of a condition-name, whose subscripts are those of its item.
Loc Emitter::conditionVariable(const Item &owner, const Reference &ref)
{
    Reference plain;
    plain.at = ref.at;
    plain.subscripts = ref.subscripts;
    for (const Item *a = &owner; a; a = a->parent)
        if (a->name) plain.names.push_back(a->name);
    if (owner.name != 0 && meaning_.resolve(*program_, plain, true) == &owner) return locate(plain);

    // FILLER or a name that does not tell: the item itself, with its tables' subscripts.
    std::vector<const Item *> tables;
    for (const Item *a = &owner; a; a = a->parent)
        if (a->occurs) tables.insert(tables.begin(), a);
    std::string displacement;
    for (size_t i = 0; i < tables.size() && i < ref.subscripts.size(); i++)
        displacement += joined(" + (", subscript(ref.subscripts[i]), " - 1) * ", tables[i]->size);
    if (tables.size() != ref.subscripts.size())
        error(ref.at, "this condition-name needs " + std::to_string(tables.size()) + " subscripts");
    return locateItem(owner, displacement);
}

std::string Emitter::conditionName(const Item &item, const Reference &ref)
{
    const Item *owner = item.parent;
    Loc loc = conditionVariable(*owner, ref);
    if (!loc.good()) return "0";
    bool numeric = isNumericItem(*owner);
    std::string out = "(";
    for (size_t i = 0; i < item.values.size(); i++) {
        if (i) out += " || ";
        const Expr *from = constant(item.values[i].from),
                   *to = item.values[i].to ? constant(item.values[i].to) : nullptr;
        auto test = [&](const Expr *value, uint32_t op) {
            Decimal d;
            if (numeric && decimalOf(value, d)) return compareNumbers(itemNumber(loc), literalNumber(d), op);
            Text v = text(value);
            return compareTexts(textOf(loc), v, op);
        };
        if (to)
            out += joined("(", test(from, kGreaterEqual), " && ", test(to, kLessEqual), ")");
        else
            out += test(from, '=');
    }
    return out + ")";
}

std::string Emitter::signTest(const Expr *e)
{
    if (!e->left) {
        error(e->at, "a sign test needs an operand");
        return "0";
    }
    Num n = number(e->left);
    Decimal zero;
    zero.digits = "0";
    uint32_t op = e->op == K_POSITIVE ? uint32_t{'>'} : e->op == K_NEGATIVE ? uint32_t{'<'} : uint32_t{'='};
    std::string test = compareNumbers(n, literalNumber(zero), op);
    return e->negated ? cat("!", test) : test;
}

// Does an item hold a number, or only digits?
std::string Emitter::numericTest(const Loc &loc)
{
    const Item &item = *loc.item;
    if (loc.refmod || item.category != Category::Numeric)
        return cat(emits(Do::IsNumeric, Of::Text), "(", loc.address, ", (int32_t)", loc.length, ", kvr_digits)");
    const int digits = item.picture.digits;
    if (item.usage == Usage::Packed)
        return cat(emits(Do::IsNumeric, Of::Packed), "(", loc.address, ", ", digits, ", ", item.picture.sign ? 1 : 0,
                   ")");
    if (item.usage == Usage::Comp6) return cat(emits(Do::IsNumeric, Of::Comp6), "(", loc.address, ", ", item.size, ")");
    if (item.usage != Usage::Display) return "1";
    if (item.signForm == SignForm::None)
        return cat(emits(Do::IsNumeric, Of::ZonedUnsigned), "(", loc.address, ", ", digits, ", kvr_digits)");
    return cat(emits(Do::IsNumeric, Of::ZonedTrailing), "(", loc.address, ", ", digits, ", ",
               static_cast<int>(item.signForm), ")");
}

std::string Emitter::classTest(const Expr *e)
{
    ExprKind kind = e->left ? e->left->kind : ExprKind::Omitted;
    bool isText = kind == ExprKind::String || kind == ExprKind::All || kind == ExprKind::Figurative ||
                  (kind == ExprKind::Function && !functionIsNumeric(e->left)) ||
                  (kind == ExprKind::Kept && !inFile_.kept[e->left].text.address.empty());
    if (kind != ExprKind::Reference && !isText) {
        error(e->at, "a class test needs a data item");
        return "0";
    }
    std::string test;
    const char *bang = e->negated ? "!" : "";
    if (e->op == K_NUMERIC && kind == ExprKind::Reference) {
        Loc loc = locate(*e->left->ref);
        return loc.good() ? cat(bang, numericTest(loc)) : "0";
    }
    Text t = text(e->left);
    if (!t.good) return "0";
    switch (e->op) {
    case K_NUMERIC:
        test = cat("(", t.length, " > 0 && ", emits(Do::IsNumeric, Of::Text), "(", t.address, ", (int32_t)", t.length,
                   ", kvr_digits))");
        break;
    case K_ALPHABETIC:
        test = cat(emits(Do::IsAlphabetic, Of::Text), "(", t.address, ", (int32_t)", t.length, ")");
        break;
    case K_ALPHABETIC_LOWER:
        test = cat(emits(Do::IsLower, Of::Text), "(", t.address, ", (int32_t)", t.length, ")");
        break;
    case K_ALPHABETIC_UPPER:
        test = cat(emits(Do::IsUpper, Of::Text), "(", t.address, ", (int32_t)", t.length, ")");
        break;
    default: {
        const UserClass *c = meaning_.userClass(*program_, e->op);
        if (!c) {
            error(e->at, "there is no class " + wordText(e->op));
            return "0";
        }
        test = cat(emits(Do::IsOfClass, Of::Text), "(", t.address, ", (int32_t)", t.length, ", class", c->number, ")");
    }
    }
    return cat(bang, test);
}

} // namespace kvrcob
