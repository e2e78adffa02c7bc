// What the emitter knows while it works, by how long that holds: for the C file, for a program, a
// procedure or a statement. Each struct begins anew where its scope does (Emitter::emit, program,
// paragraph, statement), so nothing is left over from the one before.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cobol/emit/circles.h"
#include "cobol/emit/ranges.h"
#include "cobol/emit/values.h"

namespace kvrcob {

// Gives a variable another value until the end of the scope.
template <class T>
class Within {
public:
    Within(T &variable, T value) : variable_(variable), outer_(std::exchange(variable, std::move(value))) {}
    ~Within() { variable_ = std::move(outer_); }
    Within(const Within &) = delete;
    Within &operator=(const Within &) = delete;

private:
    T &variable_;
    T outer_;
};

struct InFile {
    // The last number of each kind of name: t1, l1, K1, r1.
    uint32_t temps = 0, labels = 0, constants = 0, sites = 0;
    std::map<std::string, std::string> records; // constantRecord: names by type and value
    std::set<size_t> declaredElsewhere;         // functions of other sources, by their index
    bool groupVisible = false;                  // the table of all outermost programs was emitted

    Alphabet ebcdic; // the order of -febcdic

    // What the source asks for.
    bool exceptions = false; // EXCEPTION-STATUS and its like
    bool sortReturn = false; // SORT-RETURN

    // What was emitted that needs a header of its own.
    bool reversed = false;     // an OPEN REVERSED
    bool deleteFile = false;   // a DELETE FILE
    bool openGiven = false;    // an OPEN of a file that may be another system's
    bool xml = false;          // XML PARSE or XML GENERATE
    bool utilities = false;    // the CALL of a utility
    bool utilityNames = false; // a CALL of an item

    // Of the last #line; its path as C has it.
    uint32_t lineFile = UINT32_MAX;
    std::string linePath;

    // Of expressions that the emitter made: what they stand for.
    std::map<const Expr *, KeptValue> kept;
    // Of arguments that ALL made: the condition that there is such an element.
    std::map<const Expr *, std::string> guards;
};

// What a USE FOR DEBUGGING watches (debugging.cpp).
struct Watch {
    size_t use = 0;   // index of the USE statement
    bool all = false; // ALL REFERENCES OF
    std::string name; // as the USE statement has it
};

struct InProgram {
    // Of records that others redefine: the bytes of the longest of them.
    std::map<const Item *, uint64_t> rooms;
    bool usesVisible = false; // it has a CALL or CANCEL of an item
    std::string beginsAgain;  // what its statements keep begins anew after CANCEL

    // Its procedures, and the ranges of them that are C functions of their own.
    Flow flow;
    std::vector<Range> ranges;
    std::vector<int> owners; // of each procedure: the index of the range it is in, or -1
    std::map<size_t, std::set<size_t>> alterTargets;
    Circles circles;
    uint32_t firstSite = 1, counters = 0; // PERFORM sites, PERFORM n TIMES

    // What the library calls within it: entry points, USE procedures, processing procedures.
    std::string entryCases, useReturns;
    std::set<size_t> useTargets; // where GO TOs of its USE procedures go

    // USE FOR DEBUGGING
    bool debugs = false; // it is in force
    std::map<const Item *, Watch> watchedItems;
    std::map<const File *, Watch> watchedFiles;
};

struct InProcedure {
    std::string sentenceEnd; // the label after the sentence in hand
    bool sentenceEndUsed = false, paragraphEndUsed = false;
    struct InlinePerform {
        std::string exit, cycle; // labels
    };
    std::vector<InlinePerform> performs; // around the statement in hand
};

// An item that PERFORM VARYING counts with, in a C variable (loop_counters.cpp).
struct LoopCounter {
    const Item *item;
    Num value;         // its text is the C variable
    bool stale;        // the storage may have another value
    bool leavesByTest; // it leaves the item's range only where UNTIL holds
};

struct InStatement {
    Tok at = 0;
    std::string zeroFlag;            // a C int that a division by zero sets, if something may divide
    bool anyChange = false;          // every reference counts as one that may change the item
    std::vector<std::string> debugs; // debugging sections to run
    // EVALUATE and SEARCH: the calls that their conditions owe, and the flag of each that was made.
    std::map<std::string, std::string> *toldOnce = nullptr;
};

} // namespace kvrcob
