// The statement table as the emitter reads it: which entry, routine or operator is emitted for what
// is done with which classes of operands. The rows are in statement_table.def.
//
//   put(cat(emits(Do::Release), "(", length, ", ", ...));
//   std::string_view how = emits(Do::Rounded, n.wide() ? Of::Wide : Of::Integer);
//
// Where the classes are known here, a row that the table does not have is an error of the compiler.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kvrcob {

// Operand classes.
enum class Of : uint8_t {
#define OF(name, words) name,
#include "cobol/emit/statement_table.def"
};

// What is done.
enum class Do : uint8_t {
#define DO(name, statement) name,
#include "cobol/emit/statement_table.def"
    End
};

struct EmitRow {
    Do what;
    Of a, b;
    const char *text;
};

inline constexpr EmitRow kEmitRows[] = {
#define ROW(does, a, b, text, remark) {Do::does, Of::a, Of::b, text},
#include "cobol/emit/statement_table.def"
};

// Where the rows of each Do begin; they follow each other.
struct EmitIndex {
    uint16_t first[static_cast<size_t>(Do::End) + 1] = {};
    bool inOrder = true;
    constexpr EmitIndex()
    {
        size_t next = 0, rows = sizeof kEmitRows / sizeof kEmitRows[0];
        for (size_t d = 0; d <= static_cast<size_t>(Do::End); d++) {
            first[d] = static_cast<uint16_t>(next);
            size_t begin = next;
            while (next < rows && static_cast<size_t>(kEmitRows[next].what) == d) next++;
            inOrder &= next > begin || d == static_cast<size_t>(Do::End);
        }
        inOrder &= next == rows;
    }
};
inline constexpr EmitIndex kEmitIndex;
static_assert(kEmitIndex.inOrder, "each DO of statement_table.def has rows, and they follow it");

constexpr const char *findRow(Do what, Of a, Of b)
{
    size_t d = static_cast<size_t>(what);
    for (size_t i = kEmitIndex.first[d]; i < kEmitIndex.first[d + 1]; i++)
        if (kEmitRows[i].a == a && kEmitRows[i].b == b) return kEmitRows[i].text;
    return nullptr;
}

const char *noSuchRow(); // never defined

// What is emitted. Without such a row the call is no constant.
consteval std::string_view emits(Do what, Of a = Of::None, Of b = Of::None)
{
    const char *text = findRow(what, a, b);
    return text ? text : noSuchRow();
}

// The same where the classes are known only when kvrcob runs.
inline std::string_view emitsFor(Do what, Of a = Of::None, Of b = Of::None)
{
    const char *text = findRow(what, a, b);
    assert(text);
    return text;
}

// What is emitted for an intrinsic function, by its name; of several rows the one of the class.
std::string_view emitsFunction(std::string_view name, Of of = Of::None);

// The routine of a utility, null if there is none of that name.
const char *emitsUtility(std::string_view name);

// All of them, as C text: the rows of a table of KvrUtilityRow.
std::string utilityRows();

} // namespace kvrcob
