// One word of a shell command, quoted so that the shell takes it as it is written.
//
// File names come from the environment and from data items, so they may hold blanks, quotes, ";"
// or "$". Inside single quotes the shell leaves all of them alone but the quote itself:
//
//     it's;here   ->   'it'\''s;here'
#pragma once

#include <cstddef>

// Writes `text` as one quoted word and a zero byte. Returns false, with an empty word, where the
// word does not fit into `size` bytes.
inline bool quoteShellWord(const char *text, char *word, size_t size)
{
    size_t used = 0;
    bool fits = true;
    auto put = [&](char byte) {
        if (used + 1 < size)
            word[used++] = byte;
        else
            fits = false;
    };

    put('\'');
    for (; *text; text++) {
        if (*text == '\'') {
            put('\'');
            put('\\');
            put('\'');
        }
        put(*text);
    }
    put('\'');

    if (size) word[fits ? used : 0] = 0;
    return fits;
}
