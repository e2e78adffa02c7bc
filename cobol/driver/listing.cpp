// See listing.h.
#include "cobol/driver/listing.h"

#include <cstdio>
#include <iterator>

#include "cobol/diagnostics.h"

namespace kvrcob {

static const char *usageName(const Item &item)
{
    static constexpr const char *names[] = {"DISPLAY", "BINARY", "COMP-5",  "PACKED-DECIMAL",    "COMP-1",
                                            "COMP-2",  "INDEX",  "POINTER", "PROCEDURE-POINTER", "NATIONAL",
                                            "COMP-X",  "COMP-6"};
    static_assert(std::size(names) == static_cast<size_t>(Usage::Comp6) + 1);
    return item.elementary() ? names[static_cast<size_t>(item.usage)] : "GROUP";
}

static void listItem(const Item &item, int depth)
{
    std::printf("  %02d  %*s%-*s %8u %8u  %s", item.level, depth * 2, "", 32 - depth * 2 > 1 ? 32 - depth * 2 : 1,
                item.name ? wordText(item.name).c_str() : "FILLER", item.offset, item.size, usageName(item));
    if (item.occurs) std::printf(" OCCURS %u", item.occursMax);
    if (item.redefines)
        std::printf(" REDEFINES %s", item.redefines->name ? wordText(item.redefines->name).c_str() : "FILLER");
    std::putchar('\n');
    for (const Item *child : item.children) listItem(*child, depth + 1);
}

void listing(const Group &group, uint32_t file)
{
    const size_t lines = sources().lineStarts(file).size() - sources()[file].text.ends_with('\n');
    for (size_t i = 0; i < lines; i++) {
        Spot spot{file, static_cast<uint32_t>(i + 1), 1, 1};
        std::string_view line = sources().line(spot);
        std::printf("%6zu  %.*s\n", i + 1, static_cast<int>(line.size()), line.data());
    }
    auto show = [](auto &self, const Program &p) -> void {
        std::printf("\nProgram %s\n  Level  Name                           Offset   Length  Usage\n",
                    wordText(p.name).c_str());
        for (const File *f : p.files)
            for (const Item *record : f->records) listItem(*record, 0);
        for (const Item *record : p.records) listItem(*record, 0);
        for (const Program *inner : p.nested) self(self, *inner);
    };
    for (const Program *p : group.programs) show(show, *p);
}

} // namespace kvrcob
