// TYPEDEF, TYPE and SAME AS: descriptions that are taken from another item.
//
//     01 POINT TYPEDEF.  02 X PIC 9(3).  02 Y PIC 9(3).
//     01 LINE-OF-2.      02 A TYPE POINT.  02 B SAME AS A.
//
// Before names are entered each item that asks for a description gets a copy of it: the clauses,
// the items below, and condition-names. So nothing after this file knows of types. A type itself
// has no storage and leaves the program's records.
#include "cobol/meaning/names.h"

#include <algorithm>

namespace kvrcob {

namespace {

// Types of types could double with each.
constexpr size_t kMostCopies = 1000000;

struct Descriptions {
    Meaning &meaning;
    Program &program;
    std::vector<Item *> under; // items whose description is being made
    size_t copies = 0;

    static bool holds(const Item &item, Word name)
    {
        return std::any_of(item.children.begin(), item.children.end(),
                           [&](const Item *child) { return child->name == name || holds(*child, name); });
    }

    // A name in a description, as its copy means it: an item of the type is the one that is copied
    // with it, and has the names around the copy for qualifiers.
    static Reference *copied(Reference *ref, const Item &type, const Item &target)
    {
        if (!ref || !holds(type, ref->names[0])) return ref;
        Reference *own = make<Reference>();
        *own = *ref;
        while (!holds(type, own->names.back())) own->names.pop_back();
        for (const Item *around = &target; around; around = around->parent)
            if (around->name) own->names.push_back(around->name);
        return own;
    }

    // What lies below an item, for another one. `type` and `target` are the outermost of the two.
    void copyBelow(const Item &from, Item &to, const Item &type, Item &target)
    {
        auto copyOf = [&](const Item *item) {
            copies++;
            Item *copy = make<Item>();
            *copy = *item;
            copy->parent = &to;
            copy->program = to.program;
            copy->file = to.file;
            return copy;
        };
        for (const Item *condition : from.conditions)
            if (condition->level == 88) to.conditions.push_back(copyOf(condition));
        for (const Item *child : from.children) {
            if (copies > kMostCopies) return;
            Item *copy = copyOf(child);
            copy->children.clear();
            copy->conditions.clear();
            to.children.push_back(copy);
            for (Item *&index : copy->indexes) {
                index = copyOf(index);
                index->table = copy;
            }
            copyBelow(*child, *copy, type, target);
            copy->depending = copied(child->depending, type, target);
            for (SortKey &key : copy->keys) key.item = copied(key.item, type, target);
        }
    }

    // The description of `from` for an item that has no PICTURE, USAGE or items of its own.
    void take(const Item &from, Item &to)
    {
        to.pictureText = from.pictureText;
        to.pictureAt = from.pictureAt;
        to.hasPicture = from.hasPicture;
        to.hasUsage = from.hasUsage;
        to.usage = from.usage;
        to.nativeBinary = from.nativeBinary;
        to.nativeSize = from.nativeSize;
        to.isUnsigned = from.isUnsigned;
        to.hasSign = from.hasSign;
        to.signLeading = from.signLeading;
        to.signSeparate = from.signSeparate;
        to.broken |= from.broken;
        to.justified |= from.justified;
        to.blankWhenZero |= from.blankWhenZero;
        to.synchronized |= from.synchronized;
        if (!to.hasValue) {
            to.hasValue = from.hasValue;
            to.values = from.values;
        }
        copyBelow(from, to, from, to);
        if (copies > kMostCopies) meaning.error(to.at, "the record is too large");
    }

    // Items of this name, types or not.
    void find(const Reference &ref, bool types, const std::vector<Item *> &items, std::vector<Item *> &found) const
    {
        for (Item *item : items) {
            if (item->name == ref.names[0] && item->isTypedef == types && meaning.matches(item, ref))
                found.push_back(item);
            if (!item->isTypedef) find(ref, types, item->children, found);
        }
    }

    // The item whose description is wanted; null: an error was told.
    Item *described(const Item &item)
    {
        const Reference &ref = *item.describedBy;
        std::vector<Item *> found;
        for (Program *p = &program; p && found.empty(); p = p->parent) {
            find(ref, !item.sameAs, p == &program ? p->records : p->types, found);
            for (const File *f : p->files)
                if (p == &program) find(ref, !item.sameAs, f->records, found);
        }
        const std::string name = wordText(ref.names[0]);
        if (found.size() == 1) return found[0];
        if (!found.empty())
            meaning.error(ref.at, name + " is ambiguous; qualify it");
        else
            meaning.error(ref.at, "there is no " + std::string(item.sameAs ? "item " : "type ") + name + " here");
        return nullptr;
    }

    void complete(Item &item)
    {
        if (item.describedBy) {
            Item *from = described(item);
            bool within = std::find(under.begin(), under.end(), from) != under.end();
            for (const Item *a = &item; a && from; a = a->parent) within |= a == from;
            if (within) meaning.error(item.describedBy->at, "an item cannot be described by itself");
            if (!item.children.empty()) meaning.error(item.at, "an item with TYPE or SAME AS has no items below it");
            item.describedBy = nullptr;
            item.broken |= !from || within;
            if (!from || within) return;
            under.push_back(&item);
            complete(*from);
            under.pop_back();
            take(*from, item);
        }
        under.push_back(&item);
        for (Item *child : item.children) complete(*child);
        under.pop_back();
    }
};

} // namespace

void describe(Meaning &meaning, Program &program)
{
    Descriptions descriptions{meaning, program, {}};
    for (Item *record : program.records) descriptions.complete(*record);
    for (File *f : program.files)
        for (Item *record : f->records) descriptions.complete(*record);

    auto type = [](const Item *record) { return record->isTypedef; };
    std::copy_if(program.records.begin(), program.records.end(), std::back_inserter(program.types), type);
    program.records.erase(std::remove_if(program.records.begin(), program.records.end(), type), program.records.end());
}

} // namespace kvrcob
