// The items that an inline PERFORM VARYING counts with, in C variables beside their storage.
//
// The storage always has the value, too: whoever looks at the bytes sees what he would see without
// the variable. What the variable saves is the way from the bytes to a number at each use; and of a
// counter that does not wrap in each step the C compiler knows that it walks through a table.
//
// Between two statements variable and storage agree. A statement that may change the item's bytes
// makes the variable stale: what follows in it takes the storage, and after it the variable is read
// anew. Of most statements nobody says what they change: they make all variables stale.
#include "cobol/emit/emitter.h"

namespace kvrcob {

// Statements that change no item but the receivers that they locate. Those in an IF or an inline
// PERFORM are looked at one by one.
static bool locatesReceivers(const Statement &s)
{
    switch (s.verb) {
    case K_ADD:
    case K_SUBTRACT:
    case K_MULTIPLY:
    case K_DIVIDE:
    case K_COMPUTE:
    case K_MOVE:
    case K_IF:
    case K_EVALUATE:
    case K_DISPLAY:
    case K_CONTINUE:
    case K_EXIT:
    case K_NEXT:
    case K_GO:
    case K_GOBACK:
    case K_STOP:
        return true;
    case K_PERFORM:
        return static_cast<const PerformStatement &>(s).isInline;
    default:
        return false;
    }
}

// Begins a statement, and says of each counter whether it was stale before.
std::vector<bool> Emitter::countersBefore(const Statement &s)
{
    std::vector<bool> stale;
    const bool all = !loopCounters_.empty() && !locatesReceivers(s);
    for (LoopCounter &c : loopCounters_) {
        stale.push_back(c.stale);
        c.stale |= all;
    }
    return stale;
}

// Ends a statement: what it made stale is read.
void Emitter::countersAfter(const std::vector<bool> &staleBefore)
{
    for (size_t i = 0; i < staleBefore.size(); i++)
        if (!staleBefore[i]) readStaleCounter(loopCounters_[i]);
}

// EXIT PERFORM: on to the loop's end, past the ends of the statements around it.
void Emitter::countersAtExit()
{
    for (LoopCounter c : loopCounters_) readStaleCounter(c);
}

// The number in the item's storage.
Num Emitter::counterInStorage(const Item &item)
{
    Within noCounters(loopCounters_, std::vector<LoopCounter>());
    Num n = itemNumber(locateItem(item));
    return n.kind == Num::Float ? n : toInt(std::move(n));
}

void Emitter::readStaleCounter(LoopCounter &c)
{
    if (!c.stale) return;
    put(c.value.text, " = ", counterInStorage(*c.item).text, ";\n");
    c.stale = false;
}

static const Item &storageOf(const Item &item)
{
    const Item *record = &recordOf(item);
    while (record->redefines) record = record->redefines;
    return *record;
}

// What a receiver overlaps is stale. Records of LINKAGE and BASED ones may be anywhere.
void Emitter::receives(const Item &item, bool inTable)
{
    const Item &storage = storageOf(item);
    const bool anywhere = storage.section == Item::Linkage || storage.based || item.level == 66;
    for (LoopCounter &c : loopCounters_) {
        const bool apart =
            &storage != &storageOf(*c.item) || (!inTable && (item.offset + item.storageSize() <= c.item->offset ||
                                                             c.item->offset + c.item->size <= item.offset));
        if (anywhere || !apart) c.stale = true;
    }
}

// The counter that an item is at the moment, innermost loop first.
LoopCounter *Emitter::counterOf(const Item &item)
{
    for (size_t i = loopCounters_.size(); i-- > 0;)
        if (loopCounters_[i].item == &item) return loopCounters_[i].stale ? nullptr : &loopCounters_[i];
    return nullptr;
}

LoopCounter *Emitter::counterOf(const Varying &v)
{
    const Item *item = loopCounters_.empty() ? nullptr : meaning_.resolve(*program_, *v.item, true);
    return item ? counterOf(*item) : nullptr;
}

// Is the item at one place, which this program's own statements change only where they name it or
// what it overlaps?
static bool inOnePlace(const Item &item)
{
    for (const Item *a = &item; a; a = a->parent)
        if (a->occurs) return false;
    const Item &storage = storageOf(item);
    const bool ours = storage.section == Item::WorkingStorage || storage.section == Item::LocalStorage;
    return ours && !storage.external && !storage.based && !item.isIndexName && item.level != 66;
}

// What an item of up to 17 digits can hold without losing digits.
struct CounterRange {
    int64_t least = 0, most = 0;
};
static CounterRange rangeOf(const Item &item, bool byBytes)
{
    CounterRange range;
    if (byBytes)
        range.most = (int64_t{1} << (8 * item.size - (item.picture.sign ? 1 : 0))) - 1;
    else
        range.most = std::atoll(std::string(static_cast<size_t>(item.picture.digits), '9').c_str());
    if (item.picture.sign) range.least = byBytes ? -range.most - 1 : -range.most;
    return range;
}

// Does this condition hold for any number beyond the item's range on the side that the steps go to,
// as I > LIMIT does if LIMIT cannot be more than I? What comes first in it decides; nothing after
// it sees such a number.
bool Emitter::holdsBeyond(const Expr *condition, const Item &item, bool up)
{
    while (condition->kind == ExprKind::Or) condition = condition->left;
    const uint32_t op = condition->op;
    const bool goesOn = up ? op == '>' || op == kGreaterEqual : op == '<' || op == kLessEqual;
    const Expr *left = condition->left, *right = condition->right;
    if (condition->kind != ExprKind::Relation || !goesOn || !left || left->kind != ExprKind::Reference) return false;
    if (left->ref->refmod || meaning_.resolve(*program_, *left->ref, true) != &item) return false;

    const CounterRange range = rangeOf(item, fillsItsBytes(item));
    Decimal limit;
    if (meaning_.constantNumber(*program_, right, limit)) {
        if (limit.scale != 0 || limit.digits.size() > 17) return false;
        const int64_t value = std::atoll((limit.negative ? "-" + limit.digits : limit.digits).c_str());
        return up ? value <= range.most : value >= range.least;
    }
    if (right->kind != ExprKind::Reference || right->ref->refmod) return false;
    const Item *other = meaning_.resolve(*program_, *right->ref, true);
    if (!other || !fillsItsBytes(*other) || other->picture.scale != 0 || other->size > 4) return false;
    const CounterRange others = rangeOf(*other, true);
    return up ? others.most <= range.most : others.least >= range.least;
}

// Called where the loop's items have their first values. `next`: the item of the loop within this
// one, which begins anew before this loop's test; `testBefore`: TEST BEFORE.
void Emitter::countWith(const Varying &v, const Varying *next, bool testBefore)
{
    const Item *item = meaning_.resolve(*program_, *v.item, true);
    if (inProgram_.debugs || !item || item->category != Category::Numeric || !inOnePlace(*item) || v.item->refmod)
        return;
    // A function of the user's may change what it is given, in the midst of an expression.
    const bool functions =
        std::any_of(group_.programs.begin(), group_.programs.end(), [](const Program *p) { return p->isFunction; });
    if (functions || !group_.elsewhere.empty()) return;

    Num n = counterInStorage(*item);
    if (n.kind != Num::Int || n.digits >= 18) return;
    std::string variable = temp("int64_t");
    put(variable, " = ", n.text, ";\n");
    n.text = variable;

    Decimal by, from;
    const bool oneWay = !v.by || meaning_.constantNumber(*program_, v.by, by);
    const bool constantNext = !next || (next->from && meaning_.constantNumber(*program_, next->from, from));
    const bool leaves =
        testBefore && oneWay && constantNext && n.scale == 0 && v.until && holdsBeyond(v.until, *item, !by.negative);
    loopCounters_.push_back({item, n, false, leaves});
}

// Where a counter is out of its range: the number that its storage keeps.
void Emitter::cutCounter(const LoopCounter &c)
{
    const Item &item = *c.item;
    const std::string &variable = c.value.text;
    const bool byBytes = fillsItsBytes(item);
    const int64_t most = rangeOf(item, byBytes).most;
    const std::string magnitude =
        item.picture.sign ? variable : cat(emits(Do::Absolute, Of::Integer), "(", variable, ")");
    if (!byBytes)
        put(variable, " = ", magnitude, " % ", powerOfTen(item.picture.digits), ";\n");
    else if (item.picture.sign)
        put(variable, " = (int", 8 * item.size, "_t)", variable, ";\n");
    else
        put(variable, " = ", magnitude, " & ", most, "LL;\n");
}

static std::string outOfRange(const std::string &variable, const CounterRange &range, bool up, bool down)
{
    const std::string over = cat(variable, " > ", range.most, "LL");
    const std::string under = cat(variable, " < ", range.least, "LL");
    return up && down ? cat(over, " || ", under) : up ? over : under;
}

// A loop that ends where its counter may have left its range: if it has, the loop goes on with what
// the item's storage keeps of the number. So the way around the loop has UNTIL as its only test.
void Emitter::beginCounting(const Varying &v)
{
    const LoopCounter *c = counterOf(v);
    if (c && c->leavesByTest) put("for (;;) {\nKVR_AGAIN;\n");
}

void Emitter::endCounting(const Varying &v)
{
    const LoopCounter *c = counterOf(v);
    if (!c || !c->leavesByTest) return;
    const CounterRange range = rangeOf(*c->item, fillsItsBytes(*c->item));
    put("if (__builtin_expect(!(", outOfRange(c->value.text, range, true, true), "), 1)) break;\n");
    cutCounter(*c);
    store(c->value, locateItem(*c->item), false, "");
    put("}\n");
}

// BY, of a counter. False: this step has to go by the storage.
bool Emitter::stepCounter(const Varying &v)
{
    LoopCounter *c = counterOf(v);
    if (!c) return false;
    const Item *item = c->item;
    const Num by = v.by ? number(v.by) : integerNumber("1LL", 1, false);
    const Num next = add(c->value, by, false);
    if (next.kind != Num::Int || next.wide() || next.scale != c->value.scale) return false;

    put(c->value.text, " = ", next.text, ";\n");
    if (!c->leavesByTest) {
        const bool up = !by.literal || !by.literal->negative, down = by.isSigned;
        put("if (__builtin_expect(", outOfRange(c->value.text, rangeOf(*item, fillsItsBytes(*item)), up, down),
            ", 0)) {\n");
        cutCounter(*c);
        put("}\n");
    }
    store(c->value, locateItem(*item), false, "");
    receives(*item, false); // of other loops
    c->stale = false;
    return true;
}

} // namespace kvrcob
