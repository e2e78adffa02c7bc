// C code with marks: places where something comes in when all of the code is there.
//
// A block's temporaries are declared at its start, and become known one by one within it. What is
// emitted for a PERFORM, and for the end of a procedure, depends on all PERFORMs of the program
// (procedures.cpp). Both are marks in the text, in the order of their places.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kvrcob {

struct Mark {
    enum Kind : uint8_t { Declarations, Perform, Return, Altered };
    size_t at; // in the text
    Kind kind;
    size_t index;             // Perform: into Flow::performs; else of the procedure that ends or was altered
    std::string declarations; // of a block's temporaries
};

struct MarkedCode {
    std::string text;
    std::vector<Mark> marks;
    std::vector<size_t> blocks; // indices into `marks` of the open blocks
    // Where each part begins, in text and marks; one more for the end.
    std::vector<std::pair<size_t, size_t>> parts;

    void mark(Mark::Kind kind, size_t index) { marks.push_back({text.size(), kind, index, ""}); }
    void beginPart() { parts.emplace_back(text.size(), marks.size()); }

    // Appends a part to `out`; `resolve(mark, out)` appends what comes in at a mark.
    template <class Resolve>
    void appendPart(size_t part, std::string &out, Resolve resolve) const
    {
        size_t from = parts[part].first;
        for (size_t i = parts[part].second; i < parts[part + 1].second; i++) {
            out.append(text, from, marks[i].at - from);
            from = marks[i].at;
            resolve(marks[i], out);
        }
        out.append(text, from, parts[part + 1].first - from);
    }

    void openBlock()
    {
        blocks.push_back(marks.size());
        mark(Mark::Declarations, 0);
    }
    void declare(std::string_view declaration) { marks[blocks.back()].declarations += declaration; }
    // A block has braces if it has temporaries: the C compiler's time for labels grows with the
    // number of blocks.
    void closeBlock()
    {
        const size_t block = blocks.back();
        blocks.pop_back();
        if (!marks[block].declarations.empty()) {
            marks[block].declarations.insert(0, "{\n");
            text += "}\n";
        } else if (block + 1 == marks.size()) {
            marks.pop_back();
        }
    }
    // Ends a block that was opened for its declarations alone, which go elsewhere.
    std::string takeDeclarations()
    {
        std::string declarations = std::move(marks.back().declarations);
        marks.pop_back();
        blocks.pop_back();
        return declarations;
    }
};

} // namespace kvrcob
