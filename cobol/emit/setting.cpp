// SET, ALLOCATE, FREE.
#include "cobol/emit/emitter.h"

namespace kvrcob {

// ALLOCATE and FREE
void Emitter::allocateStatement(const AllocateStatement &s)
{
    std::string address = temp("uint8_t *");
    for (const Expr *e : s.freed) {
        Loc loc = e->ref ? locate(*e->ref) : Loc{};
        if (!loc.good()) return;
        if (loc.item->based && !loc.item->parent && !loc.refmod)
            put(emits(Do::Free, Of::Pointer), "(L", loc.item->number, "); L", loc.item->number, " = 0;\n");
        else if (e->kind == ExprKind::Reference && loc.item->category == Category::Pointer)
            put(emits(Do::Free, Of::Pointer), "((uint8_t *)(intptr_t)", emits(Do::Load, Of::Pointer), "(", loc.address,
                ")); ", emits(Do::Store, Of::Pointer, Of::Integer), "(", loc.address, ", 0);\n");
        else
            return error(e->at, "FREE needs a pointer or the address of a BASED item");
    }
    if (s.verb == K_FREE) return;
    if (s.item) {
        Item *item = meaning_.resolve(*program_, *s.item);
        if (!item) return;
        if (!item->based) return error(s.item->at, "ALLOCATE needs a BASED item");
        put(address, " = L", item->number, " = ", emits(Do::Allocate), "(", item->storageSize(), ");\n");
        if (s.initialized) {
            InitializeStatement values;
            values.verb = K_INITIALIZE;
            values.at = s.at;
            values.targets.push_back(s.item);
            values.withFiller = values.allToValue = values.thenToDefault = true;
            initializeStatement(values);
        }
    } else {
        put(address, " = ", emits(Do::Allocate), "(", integer(s.characters), ");\n");
    }
    if (!s.returning) return;
    Loc to = locate(*s.returning, true);
    if (!to.good()) return;
    if (to.item->category != Category::Pointer) return error(s.returning->at, "a pointer is needed here");
    put(emits(Do::Store, Of::Pointer, Of::Integer), "(", to.address, ", (int64_t)(intptr_t)", address, ");\n");
}

// SET ADDRESS OF record TO ...
void Emitter::setAddress(const Expr *target, const Expr *value)
{
    Item *item = meaning_.resolve(*program_, *target->ref);
    if (!item) return;
    if (item->section != Item::Linkage || item->parent)
        return error(target->at, "SET ADDRESS OF needs a record of the LINKAGE SECTION");
    std::string address;
    if (value->kind == ExprKind::Figurative && value->op == K_NULL)
        address = "0";
    else if (value->kind == ExprKind::AddressOf)
        address = locate(*value->ref).address;
    else if (value->kind == ExprKind::Reference)
        address = cat("(uint8_t *)(intptr_t)", emits(Do::Load, Of::Pointer), "(", locate(*value->ref).address, ")");
    else
        error(value->at, "a pointer is needed here");
    put("L", item->number, " = ", address, ";\n");
}

// SET switch TO ON
void Emitter::setSwitch(const Expr *target, bool on)
{
    const Word name = target->ref->names[0];
    const int number = meaning_.switchOf(*program_, name);
    if (number < 0) return error(target->at, wordText(name) + " is no switch of SPECIAL-NAMES");
    put("p", program_->number, "_pcb.upsi[", number, "] = '", on ? '1' : '0', "';\n");
}

// SET condition-name TO TRUE: its first value is moved to its item.
void Emitter::setCondition(const Expr *target, bool truth)
{
    const Item *item = meaning_.resolve(*program_, *target->ref);
    if (!item) return;
    if (item->level != 88) return error(target->at, wordText(item->name) + " is no condition-name");
    const Expr *first = item->values.empty() ? nullptr : item->values[0].from, *value = truth ? first : item->whenFalse;
    if (!value) return error(target->at, "this condition-name has no value for FALSE");

    const std::vector<Expr *> &subscripts = target->ref->subscripts;
    std::vector<const Item *> tables;
    for (const Item *a = item->parent; a; a = a->parent)
        if (a->occurs) tables.insert(tables.begin(), a);
    if (tables.size() != subscripts.size())
        return error(target->at, "this condition-name needs " + std::to_string(tables.size()) + " subscripts");
    std::string displacement;
    for (size_t i = 0; i < tables.size(); i++)
        displacement += joined(" + (", subscript(subscripts[i]), " - 1) * ", tables[i]->size);
    move(value, locateItem(*item->parent, displacement, true));
}

// SET index UP BY n
void Emitter::stepItem(const Loc &loc, const Expr *target, const Expr *by, bool down)
{
    if (loc.item->category == Category::Pointer) {
        put(emits(Do::Store, Of::Pointer, Of::Integer), "(", loc.address, ", (int64_t)", emits(Do::Load, Of::Pointer),
            "(", loc.address, ") ", down ? "-" : "+", " ", integer(by), ");\n");
        return;
    }
    if (!isNumericItem(*loc.item)) return error(target->at, "SET needs an index, a pointer or a condition-name");
    Num now = itemNumber(loc), step = integerNumber(integer(by), 10);
    store(add(std::move(now), std::move(step), down), loc, false, "");
}

// SET index TO n, SET pointer TO ...
void Emitter::setItem(const Loc &loc, const Expr *target, const Expr *value)
{
    const bool pointer = loc.item->category == Category::Pointer;
    if (pointer && value->kind == ExprKind::EntryOf)
        put(emits(Do::Store, Of::Pointer, Of::Integer), "(", loc.address, ", (int64_t)(intptr_t)",
            findProgram(constant(value->left), false), ");\n");
    else if (pointer)
        move(value, loc);
    else if (!isNumericItem(*loc.item))
        error(target->at, "SET needs an index, a pointer or a condition-name");
    else
        store(integerNumber(integer(value), 10), loc, false, "");
}

void Emitter::setStatement(const SetStatement &s)
{
    if (s.form == SetStatement::LastException && inFile_.exceptions) put(emits(Do::ForgetException), "();\n");
    const bool steps = s.form == SetStatement::UpBy || s.form == SetStatement::DownBy;
    for (const SetStatement::Part &part : s.parts) {
        const Expr *value = part.value;
        if (!value) continue;
        const bool truth = value->kind == ExprKind::Truth;
        for (const Expr *target : part.targets) {
            if (target->kind == ExprKind::AddressOf) {
                setAddress(target, value);
            } else if (truth && (value->op == K_ON || value->op == K_OFF)) {
                setSwitch(target, value->op == K_ON);
            } else if (truth) {
                setCondition(target, value->op == K_TRUE);
            } else if (Loc loc = locate(*target->ref, true); loc.good()) {
                if (steps)
                    stepItem(loc, target, value, s.form == SetStatement::DownBy);
                else
                    setItem(loc, target, value);
            }
        }
    }
}

} // namespace kvrcob
