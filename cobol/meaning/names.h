// Names: which item, file or procedure a word means, with qualification and GLOBAL.
#pragma once

#include <map>
#include <set>
#include <unordered_map>

#include "cobol/meaning/constants.h"

namespace kvrcob {

// The names of one program.
struct Names {
    std::unordered_map<Word, std::vector<Item *>> items; // data-names, condition-names, index-names, constants
    std::unordered_map<Word, std::vector<size_t>> procedures;
};

class Meaning {
public:
    explicit Meaning(Group &group) : group_(group) {}

    // Names, layout and checks of all programs.
    void analyse();

    // The item that a reference means; null after an error (which was told unless `silent`).
    Item *resolve(Program &program, const Reference &ref, bool silent = false);
    // The key of a table or of a sort file; a name that others have, too, is the one in `outer`.
    Item *key(Program &program, const Reference &ref, Word outer);
    File *file(Program &program, Word name, Tok at);
    // Do the qualifiers of a reference fit an item that has the name?
    bool matches(const Item *item, const Reference &ref) const;
    // The index of a procedure, or -1 after an error. `from`: the procedure in which the name
    // stands.
    long procedure(Program &program, const ProcedureName &name, size_t from, bool silent = false);
    const Alphabet *alphabet(Program &program, Word name) const;
    const UserClass *userClass(Program &program, Word name) const;
    // The switch of a condition-name of SPECIAL-NAMES: number, or -1; `on` tells which status.
    int switchCondition(Program &program, Word name, bool &on) const;
    int switchOf(Program &program, Word mnemonic) const;
    // A symbolic character's byte, or -1.
    int symbolic(Program &program, Word name) const;
    // A constant's or literal's number. False if it is none.
    bool constantNumber(Program &program, const Expr *e, Decimal &out);
    // A constant's literal, or `e` itself.
    const Expr *constant(Program &program, const Expr *e);

    void error(Tok at, const std::string &text) { diagnostics().error(group_.spot(at), text); }
    void notBuilt(Tok at, const std::string &phrase) { error(at, phrase + " is not supported yet"); }
    void warning(const char *name, Tok at, const std::string &text)
    {
        diagnostics().warning(name, group_.spot(at), text);
    }
    Group &group() { return group_; }

private:
    std::set<Word> told_; // names that were reported as not declared or ambiguous
    friend struct Layout;
    // meaning/programs.cpp
    void program(Program &p);
    using Callables = std::map<std::string, Tok>; // by symbol
    void calledOnce(const std::vector<Program *> &programs, Callables &among, Callables &symbols);
    void enterNames(Program &p);
    void enter(Program &p, Item *item);
    void enterTree(Program &p, Item *item);
    void recordLengths(Program &p, File &f);
    void redefinition(Program &p, Item &record);
    void parameters(Program &p);
    void usesOfFiles(Program &p);
    // meaning/special_registers.cpp
    void specials(Program &p);
    void special(Program &p, Word name, Usage usage, uint32_t size, int digits, const std::string &address);
    Item *clockRegister(Program &p, const Reference &ref);
    void debugItem(Program &p);
    void linageCounters(Program &p);

    void suggest(Program &p, Word name, Tok at);

    Group &group_;
    uint32_t programs_ = 0, records_ = 0, files_ = 0, indexes_ = 0;
    int constantDepth_ = 0;
};

// meaning/typedefs.cpp: items with TYPE or SAME AS get the description of the other item.
void describe(Meaning &meaning, Program &program);

// meaning/layout.cpp: sizes and places of a record and all that is in it.
void layOut(Meaning &meaning, Program &program, Item &record);

} // namespace kvrcob
