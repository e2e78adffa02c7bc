// Conditional compilation: >>IF, >>ELIF, >>ELSE, >>EVALUATE, >>WHEN, and >>DEFINE, which gives the
// names in them their values.
//
//     >>DEFINE LEVEL AS 3
//     >>IF LEVEL > 2 AND DEBUG IS NOT DEFINED
//     ...                                        read where the condition is true
//     >>END-IF
#pragma once

#include <string>
#include <vector>

#include "cobol/text/source_lines.h"

namespace kvrcob {

// The open conditions of one file. The names belong to the whole compilation.
class ConditionalText {
public:
    explicit ConditionalText(TextOptions &options) : options_(options) {}

    // The words of a directive in capitals, the marks of relations among them; a literal as it is,
    // after a quotation mark.
    static std::vector<std::string> split(std::string_view text);

    // Takes a directive; false if it is none of these. `dollar`: $IF, whose end is $END.
    bool directive(const std::vector<std::string> &words, bool dollar, const Spot &at);
    void define(const std::vector<std::string> &words);

    // Whether what comes now is passed over.
    bool skipping() const;

    // At the end of the file: tells what was not closed.
    void end() const;

private:
    struct Condition {
        Spot at;
        bool active;         // what comes now is read
        bool taken;          // a branch was read, or none is to be
        std::string subject; // of >>EVALUATE
    };
    // A condition in the words of a directive, read from left to right.
    struct Reading {
        const std::vector<std::string> &words;
        size_t next;
        int depth; // of parentheses
        bool at(const char *word) const { return next < words.size() && words[next] == word; }
        bool take(const char *word) { return at(word) && ++next; }
    };

    void when(const std::vector<std::string> &words);
    bool evaluate(const std::vector<std::string> &words) const;
    bool anyOf(Reading &reading) const;
    bool allOf(Reading &reading) const;
    bool term(Reading &reading) const;
    bool simple(Reading &reading) const;
    std::string valueOf(const std::string &word) const;

    TextOptions &options_;
    std::vector<Condition> conditions_;
    Spot at_; // of the directive in hand
};

} // namespace kvrcob
