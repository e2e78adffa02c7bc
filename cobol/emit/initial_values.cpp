// The values that storage begins with: those of VALUE clauses, else zeros and spaces.
//
// A record becomes a list of operations: bytes to copy, runs to fill, and a table's first
// occurrence to repeat, so that large tables cost little in the C text.
#include "cobol/emit/emitter.h"

#include <algorithm>

namespace kvrcob {

static std::string defaultBytes(const Item &item)
{
    switch (item.category) {
    case Category::Numeric: {
        Decimal zero;
        zero.digits = "0";
        return numericBytes(item, zero);
    }
    case Category::Index:
    case Category::Pointer:
        return std::string(item.size, '\0');
    default:
        return std::string(item.size, ' ');
    }
}

// The bytes of an item with a VALUE clause.
std::string Emitter::valueBytes(const Item &item)
{
    Program &p = *program_;
    const Expr *value = item.values.empty() ? nullptr : meaning_.constant(p, item.values[0].from);
    if (!value) return defaultBytes(item);
    Decimal d;
    bool numeric = item.elementary() && item.category == Category::Numeric;
    bool isNumber = decimalOf(value, d) || (value->kind != ExprKind::String && meaning_.constantNumber(p, value, d));
    if (numeric && isNumber) return numericBytes(item, d);
    std::string bytes;
    switch (value->kind) {
    case ExprKind::String:
        bytes = value->text;
        break;
    case ExprKind::Number:
        bytes = value->text;
        break;
    case ExprKind::Negate:
        if (item.category == Category::NumericEdited) break;
        error(value->at, "VALUE needs a literal");
        return defaultBytes(item);
    case ExprKind::Figurative:
        if (value->op == K_NULL && item.category == Category::Pointer) return std::string(item.size, '\0');
        [[fallthrough]];
    case ExprKind::All:
    case ExprKind::Reference: {
        code_.openBlock();
        Text t = text(value);
        code_.takeDeclarations();
        if (t.bytes.empty()) {
            error(value->at, "VALUE needs a literal");
            return defaultBytes(item);
        }
        while (bytes.size() < item.size) bytes += t.bytes;
        break;
    }
    default:
        error(value->at, "VALUE needs a literal");
        return defaultBytes(item);
    }
    if (numeric && value->kind == ExprKind::String) {
        // A literal for a number: its digits, if it has only those.
        if (bytes.find_first_not_of("0123456789") == std::string::npos && !bytes.empty())
            return numericBytes(item, decimalOf(bytes, false));
        if (item.usage != Usage::Display) return defaultBytes(item);
    }
    if (numeric && item.usage != Usage::Display && value->kind != ExprKind::Figurative) return defaultBytes(item);
    // JUSTIFIED does not count here.
    if (bytes.size() > item.size) return bytes.substr(0, item.size);
    return bytes + std::string(item.size - bytes.size(), ' ');
}

void Emitter::initOps(const Item &item, uint64_t offset, std::vector<InitOp> &ops)
{
    auto add = [&](std::string bytes) {
        if (!ops.empty() && ops.back().count == 0 && !ops.back().edited &&
            ops.back().offset + ops.back().bytes.size() == offset)
            ops.back().bytes += bytes;
        else
            ops.push_back({offset, std::move(bytes)});
    };
    bool table = item.occurs && item.occursMax > 1;
    // The first occurrence of a table is set apart, so that it can be copied.
    if (item.elementary() && item.values.size() > 1) {
        std::string all;
        Item one = item;
        for (uint32_t i = 0; i < item.occursMax; i++) {
            if (i < item.values.size()) one.values = {item.values[i]};
            all += i < item.values.size() ? valueBytes(one) : defaultBytes(item);
        }
        add(all);
        return;
    }
    if (item.elementary()) {
        std::string bytes = item.hasValue ? valueBytes(item) : defaultBytes(item);
        const Expr *value = item.hasValue ? meaning_.constant(*program_, item.values[0].from) : nullptr;
        Decimal number;
        if (item.category == Category::NumericEdited && decimalOf(value, number)) {
            add(bytes);
            ops.push_back({offset, "", 0, 0, &item});
            if (table) ops.push_back({offset, "", item.size, item.occursMax});
            return;
        }
        if (table && bytes.size() * item.occursMax <= 4096) {
            std::string all;
            for (uint32_t i = 0; i < item.occursMax; i++) all += bytes;
            add(all);
            return;
        }
        add(bytes);
    } else if (item.hasValue) {
        add(valueBytes(item));
    } else {
        for (const Item *child : item.children)
            if (!child->redefines) initOps(*child, offset + child->offset - item.offset, ops);
    }
    if (table) ops.push_back({offset, "", item.size, item.occursMax});
}

static std::string fillOrCopy(const std::string &to, const std::string &bytes, const std::string &literal)
{
    bool same = bytes.find_first_not_of(bytes[0]) == std::string::npos;
    if (same && bytes.size() > 8)
        return cat("memset(", to, ", ", static_cast<int>(static_cast<unsigned char>(bytes[0])), ", ", bytes.size(),
                   ");\n");
    return cat("memcpy(", to, ", ", literal, ", ", bytes.size(), ");\n");
}

// The length of the run of equal bytes at a place.
static size_t runAt(const std::string &bytes, size_t at)
{
    size_t end = at;
    while (end < bytes.size() && bytes[end] == bytes[at]) end++;
    return end - at;
}

// Long runs of one character are filled; the rest is copied, in pieces that a C literal can have.
void Emitter::initialBytes(const std::string &base, uint64_t offset, const std::string &bytes)
{
    constexpr size_t longRun = 64, longestLiteral = 16000;
    for (size_t from = 0; from < bytes.size();) {
        size_t end = from; // of what is copied
        while (end < bytes.size() && runAt(bytes, end) < longRun) end += runAt(bytes, end);
        for (; from < end; from += std::min(longestLiteral, end - from)) {
            std::string piece = bytes.substr(from, std::min(longestLiteral, end - from));
            put(fillOrCopy(cat(base, " + ", offset + from), piece, bytesLiteral(piece)));
        }
        if (from == bytes.size()) break;
        const size_t run = runAt(bytes, from);
        put("memset(", base, " + ", offset + from, ", ", static_cast<int>(static_cast<unsigned char>(bytes[from])),
            ", ", run, ");\n");
        from += run;
    }
}

// An edited item that begins with a number: by a MOVE, which has temporaries of its own.
void Emitter::initialEdited(const std::string &base, const InitOp &op)
{
    put(apart([&] {
        Loc loc = locateItem(*op.edited, "", true);
        loc.address = cat("(", base, " + ", op.offset, ")");
        move(op.edited->values[0].from, loc);
    }));
}

void Emitter::initialRecord(const Item &record)
{
    std::vector<InitOp> ops;
    initOps(record, 0, ops);
    const std::string base = baseOf(record);
    for (const InitOp &op : ops) {
        if (op.edited)
            initialEdited(base, op);
        else if (op.count)
            put(emits(Do::Replicate, Of::Table), "(", base, " + ", op.offset, ", ", op.size, ", ", op.count, ");\n");
        else
            initialBytes(base, op.offset, op.bytes);
    }
}

void Emitter::initialValues(Program &p)
{
    auto records = [&](Item::Section section) {
        for (const Item *record : p.records)
            if (record->section == section && !record->redefines && !record->external) initialRecord(*record);
    };
    // A file's record area begins as its first record does, with blanks after it.
    auto recordAreas = [&] {
        for (const File *f : p.files) {
            if (f->external || f->records.empty()) continue;
            uint32_t room = recordRoom(p, *f);
            if (room > f->records[0]->size) put("memset(F", f->number, "->record, 32, ", room, ");\n");
            initialRecord(*f->records[0]);
        }
    };
    // The run time makes EXTERNAL records as zero bytes. The first program that has one gives it
    // its values; a mark of one byte, EXTERNAL as well, says that this was done. One that is not
    // zero any more was filled by a program that does not know of marks.
    auto externals = [&] {
        std::string rows;
        std::vector<const Item *> made;
        for (const Item *record : p.records) {
            if (record->section != Item::WorkingStorage || !record->external || record->redefines) continue;
            made.push_back(record);
            rows += joined("{1, ", bytesLiteral("?" + externalName(*record)), "}, ");
        }
        if (made.empty()) return;
        put("{ ", externalTable(rows, static_cast<int>(made.size())));
        for (size_t i = 0; i < made.size(); i++) {
            put("if (", emits(Do::FirstExternal), "(addresses[", i, "], E", made[i]->number, ", ",
                made[i]->storageSize(), ")) {\n");
            initialRecord(*made[i]);
            put("}\n");
        }
        put("}\n");
    };
    put("static void p", p.number, "_initialize(void)\n{\n");
    recordAreas();
    records(Item::WorkingStorage);
    externals();
    for (Item *index : p.indexNames) put("X", index->number, " = 1;\n");
    put("p", p.number, "_returnCode = 0;\np", p.number, "_tally = 0;\np", p.number, "_sortReturn = 0;\n");
    put(noUseRuns());
    bool altered = false;
    for (const Procedure &procedure : p.procedures) altered |= procedure.altered;
    if (altered) put("memset(p", p.number, "_altered, 0, sizeof p", p.number, "_altered);\n");
    put(inProgram_.beginsAgain);
    put("}\n");
    put("static void p", p.number, "_initialize_local(void)\n{\n");
    records(Item::LocalStorage);
    put("}\n");
}

} // namespace kvrcob
