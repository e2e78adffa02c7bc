// The map of a program's data for the debugger (-g).
//
// A debugger sees the storage of a record as bytes. So a program made with -g carries a text that
// says what lies where, which tools/gdb_cobol.py reads from the program in hand. A line an item, in
// the order of the source:
//
//     DEPTH|NAME|ADDRESS|OFFSET|SIZE|USAGE|DIGITS|SCALE|SIGN|OCCURS
//
// ADDRESS is the C text of its record's address, given with the record (depth 0); SIGN is 0 for
// unsigned items, else 1 to 4 as in SignForm. The first line, SYMBOL|NUMBER, has the program's
// symbol and the number of the program that contains it, or 0, whose GLOBAL items it sees.
#include "cobol/emit/emitter.h"

namespace kvrcob {

static const char *mapUsage(const Item &item)
{
    if (!item.elementary()) return "group";
    switch (item.usage) {
    case Usage::Binary:
    case Usage::Native:
    case Usage::Index:
        return "binary";
    case Usage::CompX:
        return "big-endian";
    case Usage::Packed:
        return "packed";
    case Usage::Comp6:
        return "comp-6";
    case Usage::Float:
        return "float";
    case Usage::Double:
        return "double";
    case Usage::Pointer:
    case Usage::ProcedurePointer:
        return "pointer";
    default:
        return item.category == Category::Numeric ? "zoned" : "text";
    }
}

static void mapItem(const Item &item, int depth, const std::string &base, std::string &out)
{
    int sign = static_cast<int>(item.signForm);
    if (item.usage != Usage::Display)
        sign = item.usage == Usage::Index || (item.nativeBinary ? !item.isUnsigned : item.picture.sign);
    out += joined(depth, "|", item.name ? std::string(wordText(item.name)) : "FILLER", "|", depth ? "" : base, "|",
                  item.offset, "|", item.size, "|", mapUsage(item), "|", item.picture.digits, "|", item.picture.scale,
                  "|", sign, "|", item.occurs ? item.occursMax : 0, "\n");
    for (const Item *child : item.children)
        if (child->level != 66 && child->level != 88) mapItem(*child, depth + 1, base, out);
}

std::string debugMap(const Program &p)
{
    std::string map = cat(p.cName, "|", p.parent ? p.parent->number : 0, "\n");
    for (const Item *record : p.records)
        if (!record->isConstant && record->level != 66 && record->level != 88)
            mapItem(*record, 0, baseOf(*record), map);
    for (const File *file : p.files)
        for (const Item *record : file->records) mapItem(*record, 0, baseOf(*record), map);
    for (const Item *index : p.indexNames)
        map += joined("0|", wordText(index->name), "|(unsigned char *)&X", index->number, "|0|8|binary|18|0|1|0\n");
    std::string out = cat("static const char p", p.number, "_map[] __attribute__((used)) =\n");
    for (size_t from = 0; from < map.size();) { // a C string a line
        size_t to = map.find('\n', from) + 1;
        out += bytesLiteral(map.substr(from, to - from)) + "\n";
        from = to;
    }
    return out += ";\n";
}

} // namespace kvrcob
