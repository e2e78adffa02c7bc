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

void Emitter::setStatement(const SetStatement &s)
{
    for (const SetStatement::Part &part : s.parts) {
        if (!part.value) continue;
        for (const Expr *t : part.targets) {
            if (t->kind == ExprKind::AddressOf) {
                Item *item = meaning_.resolve(*program_, *t->ref);
                if (!item) continue;
                if (item->section != Item::Linkage || item->parent) {
                    error(t->at, "SET ADDRESS OF needs a record of the LINKAGE SECTION");
                    continue;
                }
                const Expr *v = part.value;
                std::string value;
                if (v->kind == ExprKind::Figurative && v->op == K_NULL)
                    value = "0";
                else if (v->kind == ExprKind::AddressOf)
                    value = locate(*v->ref).address;
                else if (v->kind == ExprKind::Reference)
                    value =
                        cat("(uint8_t *)(intptr_t)", emits(Do::Load, Of::Pointer), "(", locate(*v->ref).address, ")");
                else
                    error(v->at, "a pointer is needed here");
                put("L", item->number, " = ", value, ";\n");
                continue;
            }
            if (part.value->kind == ExprKind::Truth && (part.value->op == K_ON || part.value->op == K_OFF)) {
                int number = meaning_.switchOf(*program_, t->ref->names[0]);
                if (number < 0)
                    error(t->at, wordText(t->ref->names[0]) + " is no switch of SPECIAL-NAMES");
                else
                    put("p", program_->number, "_pcb.upsi[", number, "] = '", part.value->op == K_ON ? '1' : '0',
                        "';\n");
                continue;
            }
            if (part.value->kind == ExprKind::Truth) {
                Item *item = meaning_.resolve(*program_, *t->ref);
                if (!item) continue;
                if (item->level != 88) {
                    error(t->at, wordText(item->name) + " is no condition-name");
                    continue;
                }
                const Expr *value = part.value->op == K_TRUE ? (item->values.empty() ? nullptr : item->values[0].from)
                                                             : item->whenFalse;
                if (!value) {
                    error(t->at, "this condition-name has no value for FALSE");
                    continue;
                }
                Item *owner = item->parent;
                std::vector<const Item *> tables;
                for (const Item *a = owner; a; a = a->parent)
                    if (a->occurs) tables.insert(tables.begin(), a);
                if (tables.size() != t->ref->subscripts.size()) {
                    error(t->at, "this condition-name needs " + std::to_string(tables.size()) + " subscripts");
                    continue;
                }
                std::string displacement;
                for (size_t i = 0; i < tables.size(); i++)
                    displacement += joined(" + (", subscript(t->ref->subscripts[i]), " - 1) * ", tables[i]->size);
                move(value, locateItem(*owner, displacement, true));
                continue;
            }
            Loc loc = locate(*t->ref, true);
            if (!loc.good()) continue;
            if (s.form == SetStatement::UpBy || s.form == SetStatement::DownBy) {
                if (loc.item->category == Category::Pointer) {
                    put(emits(Do::Store, Of::Pointer, Of::Integer), "(", loc.address, ", (int64_t)",
                        emits(Do::Load, Of::Pointer), "(", loc.address, ") ", s.form == SetStatement::UpBy ? "+" : "-",
                        " ", integer(part.value), ");\n");
                    continue;
                }
                if (!isNumericItem(*loc.item)) {
                    error(t->at, "SET needs an index, a pointer or a condition-name");
                    continue;
                }
                Num now = itemNumber(loc), by = integerNumber(integer(part.value), 10);
                store(add(now, by, s.form == SetStatement::DownBy), loc, false, "");
                continue;
            }
            if (loc.item->category == Category::Pointer && part.value->kind == ExprKind::EntryOf) {
                put(emits(Do::Store, Of::Pointer, Of::Integer), "(", loc.address, ", (int64_t)(intptr_t)",
                    findProgram(constant(part.value->left), false), ");\n");
                continue;
            }
            if (loc.item->category == Category::Pointer) {
                move(part.value, loc);
                continue;
            }
            if (!isNumericItem(*loc.item)) {
                error(t->at, "SET needs an index, a pointer or a condition-name");
                continue;
            }
            store(integerNumber(integer(part.value), 10), loc, false, "");
        }
    }
}

} // namespace kvrcob
