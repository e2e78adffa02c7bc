// Wrapping of message text.
//
// A line longer than the width breaks at a blank, or before a "=", and goes on under the first
// line's text, whose column is 9: with one blank dropped at the break, the rest is after nine
// of the ten blanks.
//
//     ZVK096C  The program LEDGER was
//              not found.
#include "frame/messages/message_wrap.h"

#include <cstring>

namespace {

constexpr size_t kIndent = 10;
constexpr size_t kEarliestBreak = 18;

size_t usableWidth(unsigned width) { return width < 18 || width > 256 ? 80 : width; }

// Where a line that is too long breaks.
size_t breakColumn(const char *line, size_t width)
{
    if (line[width] == ' ') return width;
    size_t column = width - 1;
    while (column > 0 && line[column] != ' ' && line[column] != '=') column--;
    return column < kEarliestBreak ? width - 2 : column;
}

} // namespace

size_t zvkWrapText(char *text, size_t size, unsigned terminalWidth)
{
    const size_t width = usableWidth(terminalWidth);
    size_t total = strlen(text);
    for (char *line = text; *line;) {
        char *end = strchrnul(line, '\n');
        if (static_cast<size_t>(end - line) <= width) {
            line = *end ? end + 1 : end;
            continue;
        }
        char *at = line + breakColumn(line, width);
        size_t dropped = strspn(at, " ");
        char *rest = at + dropped;
        size_t indent = dropped < kIndent ? kIndent - dropped : 0;
        size_t inserted = 1 + indent;
        size_t tail = total - static_cast<size_t>(rest - text) + 1;
        if (total - dropped + inserted + 1 > size) {
            line = *end ? end + 1 : end; // no room: the line stays as it is
            continue;
        }
        memmove(at + inserted, rest, tail);
        *at = '\n';
        memset(at + 1, ' ', indent);
        total = total - dropped + inserted;
        line = at + 1;
    }
    return total;
}
