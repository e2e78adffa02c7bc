// The emitter: trees to C. One file a group of statements, as in syntax/:
//
//   options.h      what it is asked for         join.h         texts and numbers joined
//   values.h       what an operand is in C      marked_code.h  the function in hand
//   state.h        what it knows on the way     ranges.h       ranges that are C functions
//   circles.h, alphabets.h, file_records.h      what needs the names of a program only
//   statement_table.def  what is emitted for which statement and operands: the names are here only
//
// The class lists its functions by the files that define them: first what a program consists of,
// then its procedures, operands, functions and statements.
//
// What is emitted for an operand is always a C expression (values.h); a statement may use it once.
// Intermediate results live in temporaries, which are declared at the start of the statement's
// block (`temp`). Statements check what they emit: an error means that no C is written.
#pragma once

#include <array>
#include <map>
#include <set>

#include "cobol/emit/alphabets.h"
#include "cobol/emit/file_records.h"
#include "cobol/emit/join.h"
#include "cobol/emit/marked_code.h"
#include "cobol/emit/options.h"
#include "cobol/emit/state.h"
#include "cobol/emit/statement_table.h"

namespace kvrcob {

class Emitter {
public:
    Emitter(Meaning &meaning, const EmitOptions &options)
        : meaning_(meaning), group_(meaning.group()), options_(options)
    {
    }
    std::string emit();

private:
    // ---- What it reads and writes

    Meaning &meaning_;
    Group &group_;
    const EmitOptions options_;
    std::string globals_;   // static data before the functions
    MarkedCode code_;       // the function in hand
    std::string functions_; // those before it
    FileRecords fileRecords_{meaning_, globals_};

    // ---- What it knows on the way (state.h)

    Program *program_ = nullptr;
    size_t procedure_ = 0; // index of the procedure in hand
    InFile inFile_;
    InProgram inProgram_;
    InProcedure inProcedure_;
    InStatement inStatement_;
    std::vector<LoopCounter> loopCounters_; // of the loops around the statement in hand

    // ---- Tools

    void line(Tok at);
    void line(Tok at, std::string &out);
    void error(Tok at, const std::string &text) { meaning_.error(at, text); }
    void notBuilt(Tok at, const std::string &phrase) { meaning_.notBuilt(at, phrase); }
    template <class... Parts>
    void put(const Parts &...parts)
    {
        code_.text += joined(parts...);
    }
    std::string temp(std::string_view type, std::string_view suffix = "");
    std::string tempBytes(int64_t size);
    std::string label() { return "l" + std::to_string(++inFile_.labels); }
    // The name of a static constant; one for all that are equal.
    std::string constantRecord(const char *prefix, const std::string &type, const std::string &value);
    void openBlock() { code_.openBlock(); }
    void closeBlock() { code_.closeBlock(); }
    // What `emitIt` emits, as a block that is not yet part of the code in hand.
    template <class F>
    std::string apart(F emitIt)
    {
        Within block(code_, MarkedCode());
        openBlock();
        emitIt();
        const std::string declarations = code_.takeDeclarations();
        return cat("{ ", declarations, code_.text, "}\n");
    }

    // ---- program.cpp: storage, the order of the parts; a statement
    void program(Program &p);
    void declarations(Program &p, std::string &out);
    std::string headers() const;
    void mainFunction(std::string &out) const;
    void useRecords(const Program &p);
    void storage(Program &p);
    uint64_t roomOf(const Item &record) const;
    friend struct StatementTable;
    void statement(const Statement &s);
    void block(const Block &b);

    // ---- entry.cpp: what a CALL reaches
    void entry(Program &p);
    // What the entry does with the program's records: saved, set and restored around its body.
    struct EntryText {
        std::string saves, sets, restores;
        uint64_t localBytes = 0;
    };
    void linkageEntry(Program &p, const Item &record, const Item *returned, EntryText &text);
    void valueParameter(const Item &record, std::string &sets);
    void localEntry(const Item &record, EntryText &text);
    void externalRecords(const Program &p, std::string &out);
    void fileEntry(Program &p, std::string &out);
    std::string returnedValue(const Program &p, const std::string &prefix, std::string &out);
    void programRecords(const Program &p, const std::string &prefix, const std::string &name, std::string &out);
    std::string parameterType(Program &p, size_t index);

    // ---- initial_values.cpp: what items begin with
    void initialValues(Program &p);
    std::string valueBytes(const Item &item);
    struct InitOp {
        uint64_t offset;
        std::string bytes;            // these bytes, or
        uint64_t size = 0, count = 0; // so many copies of the element there, or
        const Item *edited = nullptr; // the number of its VALUE, edited
    };
    void initOps(const Item &item, uint64_t offset, std::vector<InitOp> &ops);
    void initialRecord(const Item &record);
    void initialEdited(const std::string &base, const InitOp &op);
    void initialBytes(const std::string &base, uint64_t offset, const std::string &bytes);

    // ---- procedures.cpp: paragraphs as C functions
    void procedures(Program &p);
    std::string useEntries(Program &p);
    void allProcedures(Program &p);
    void bodyFunction(const Program &p, const std::string &entries, std::string &out);
    void rangeFunction(const Program &p, size_t r, std::string &out);
    void paragraph(size_t index);
    void alterable(Program &p);
    void chooseFunctions(Program &p);
    std::string functionName(const Range &r) const;
    void resolve(const Mark &mark, std::string &out);
    void resolvePerform(const Flow::Perform &perform, std::string &out);
    void resolveReturn(size_t procedure, std::string &out);
    void resolveAltered(size_t procedure, std::string &out);
    void appendProcedure(size_t index, std::string &out);

    // ---- use_procedures.cpp: USE AFTER ERROR
    void useRoutine(const Program &p);
    std::string noUseRuns() const;
    std::string runsAsUse() const;
    bool anyUse() const;
    void leaveUse(size_t target);
    void leaveInUse();
    static bool verbOfFiles(Word verb);
    void leftUse();
    void goWhereUseWent();
    void allUseTargets();

    // ---- debugging.cpp: USE FOR DEBUGGING
    void findWatched(Program &p);
    bool inDebuggingSection(size_t procedure) const;
    bool watches(const UseStatement &use, size_t procedure) const;
    void debugProcedure(size_t index);
    void debugWay(const std::string &way, Tok at);
    void debugAlter(long paragraph, long target, Tok at);
    void debugItem(const Reference &ref, const Item &item, const Loc &loc, bool changed);
    void debugFile(const File &f, const FileStatement *read);
    void debugNow();
    std::string debugCondition(const std::string &c);
    std::string debugSection(const Watch &watch, const std::string &arguments);

    // ---- operands.cpp: where an item is: addresses, subscripts, lengths
    Loc locate(const Reference &ref, bool receiving = false);
    bool displacement(const Reference &ref, const Item &item, std::string &out);
    Loc partOf(const Reference &ref, const Loc &loc);
    Loc locateItem(const Item &item, const std::string &displacement = "", bool receiving = false);
    std::string subscript(const Expr *e);
    std::string integer(const Expr *e); // a C integer of 64 bits
    std::string currentCount(const Item &table);
    bool isNumericExpr(const Expr *e);
    bool isNumericItem(const Item &item)
    {
        return item.category == Category::Numeric || item.category == Category::Index;
    }
    const Expr *constant(const Expr *e) { return meaning_.constant(*program_, e); }
    Category categoryOf(const Expr *e);

    // ---- texts.cpp: what an expression is as characters
    Text text(const Expr *e, bool numericAsText = false);
    Text figurativeText(const Expr *e);
    Text allText(const Expr *e);
    Text digitsText(const Num &n, int digits);
    Text itemText(const Expr *e, bool numericAsText);

    // ---- numbers.cpp: arithmetic expressions
    Num number(const Expr *e, int wantScale = -1);
    Num referenceNumber(const Expr *e);
    Num lengthNumber(const Expr *e);
    Num arithmeticNumber(const Expr *e, int wantScale);
    Num add(Num a, Num b, bool minus);
    Num multiply(Num a, Num b);
    Num divide(Num a, Num b, int scale);
    Num power(Num a, Num b, const Expr *exponent);
    Num negate(Num a);
    std::string compareNumbers(Num a, Num b, uint32_t op);
    std::string zeroFlag(); // C int that a division by zero sets, in this statement

    // ---- conversions.cpp: a number from an item, and in another form
    Num itemNumber(const Loc &loc);
    Num textInteger(const Loc &loc);
    Num deEditedNumber(const Loc &loc);
    Num binaryNumber(const Loc &loc);
    Num zonedNumber(const Loc &loc);
    std::string checkedAddress(const Loc &loc);
    Num toPacked(Num a);
    Num toInt(Num a);
    Num toFloat(Num a);
    Num decimalSingle(Num a);
    void bothFloat(Num &a, Num &b);
    Num scaleUp(Num a, int scale);
    Num roundedByMode(Num a, int scale, Rounding mode);
    Num scaledLiteral(const Num &a, int scale, bool rounded);
    Num scaledInteger(Num a, int scale, bool rounded);
    Num scaleTo(Num a, int scale, Rounding rounded);
    Num scaleTo(Num a, int scale, bool rounded)
    {
        return scaleTo(std::move(a), scale, rounded ? NearestAwayFromZero : Truncation);
    }
    Num keep(Num a, bool copy); // evaluated once, for several uses

    // ---- stores.cpp: a number into an item
    // Stores a number. `sizeError`: a C int that becomes 1 where the number does not fit, in which
    // case nothing is stored; empty: cut.
    void store(Num value, const Loc &target, Rounding rounded, const std::string &sizeError);
    void store(Num value, const Loc &target, bool rounded, const std::string &sizeError)
    {
        store(std::move(value), target, rounded ? NearestAwayFromZero : Truncation, sizeError);
    }
    void storeEdited(Num value, const Loc &target);
    void storeBinary(Num value, const Loc &target, bool fits);
    void storePacked(Num value, const Loc &target);
    void storeComp6(const Num &value, const Loc &target);
    void storeZoned(Num value, const Loc &target);
    void storeExact(Num value, const Loc &target, const std::string &sizeError);
    bool fillsItsBytes(const Item &item) const;
    bool sizeTest(Num &value, const Item &item, const std::string &sizeError);

    // ---- conditions.cpp: relations, class tests, condition-names
    struct Subject {
        const Expr *left = nullptr;
        uint32_t op = 0;
    };
    std::string condition(const Expr *e);
    std::string condition(const Expr *e, Subject &subject);
    std::string relation(const Expr *left, uint32_t op, const Expr *right);
    std::string compareTexts(const Text &a, const Text &b, uint32_t op);
    std::string pointerRelation(const Expr *left, uint32_t op, const Expr *right);
    Loc conditionVariable(const Item &owner, const Reference &ref);
    std::string conditionName(const Item &item, const Reference &ref);
    std::string numericTest(const Loc &loc);
    std::string classTest(const Expr *e);
    std::string signTest(const Expr *e);
    bool isConditionName(const Expr *e);
    bool isCondition(const Expr *e);

    // ---- functions.cpp: which function, with which arguments
    // The call of an intrinsic function, and the text that one leaves.
    struct FunctionCall {
        const Expr *e = nullptr;
        std::string name;
        std::vector<const Expr *> args; // with what ALL stands for
        bool guarded = false;           // some arguments may not exist at run time
        int wantScale = -1;             // decimal places that a quotient needs
    };
    struct FunctionText {
        std::string address, length; // temporaries
        int64_t fixed = -1;
    };
    Num functionNumber(const Expr *e, int wantScale);
    Text functionText(const Expr *e);
    bool functionIsNumeric(const Expr *e);
    void expandAll(const Expr *e, std::vector<const Expr *> &out);
    bool functionCall(const Expr *e, FunctionCall &f);

    // ---- user_functions.cpp: FUNCTION-ID
    Program *userFunction(const Expr *e);
    std::string functionEntry(Program &f);
    const Item *resultOf(Program &function);
    bool callFunction(const Expr *e, Loc &result);

    // ---- number_functions.cpp
    Num absolute(const FunctionCall &f);
    Num algebraicLimit(const FunctionCall &f);
    Num annuity(const FunctionCall &f);
    Num factorial(const FunctionCall &f);
    Num floatConstant(const FunctionCall &f);
    Num floatFunction(const FunctionCall &f);
    Num integerPart(const FunctionCall &f);
    Num random(const FunctionCall &f);
    Num remainder(const FunctionCall &f);
    Num sign(const FunctionCall &f);

    // ---- series_functions.cpp: any number of arguments
    std::string guardOf(const FunctionCall &f, size_t i);
    std::string counter();
    void count(const FunctionCall &f, size_t i, const std::string &counted);
    Num extreme(const FunctionCall &f);
    Num placeOfExtremeText(const FunctionCall &f);
    Num statistic(const FunctionCall &f);
    Num sum(const FunctionCall &f);

    // ---- text_functions.cpp
    Num floatOfText(const FunctionCall &f);
    Num numberOfText(const FunctionCall &f);
    Num ordinal(const FunctionCall &f);
    Num storedLength(const FunctionCall &f);
    Num testFloatOfText(const FunctionCall &f);
    Num textLength(const FunctionCall &f);
    bool bitsOf(const FunctionCall &f, FunctionText &result);
    bool changedText(const FunctionCall &f, FunctionText &result);
    const Alphabet *ownSequence();
    bool charOf(const FunctionCall &f, FunctionText &result);
    bool concatenated(const FunctionCall &f, FunctionText &result);
    bool dateText(const FunctionCall &f, FunctionText &result);
    bool extremeText(const FunctionCall &f, FunctionText &result);
    bool formatted(const FunctionCall &f, FunctionText &result);
    bool hexOf(const FunctionCall &f, FunctionText &result);
    bool moduleId(const FunctionCall &f, FunctionText &result);
    bool substituted(const FunctionCall &f, FunctionText &result);
    bool textOfDigits(const FunctionCall &f, FunctionText &result);
    bool trimmed(const FunctionCall &f, FunctionText &result);

    // ---- date_functions.cpp
    Num combinedDatetime(const FunctionCall &f);
    Num dateOfInteger(const FunctionCall &f);
    Num ofFormatted(const FunctionCall &f);
    Num secondsPastMidnight(const FunctionCall &f);
    Num testDate(const FunctionCall &f);
    Num windowed(const FunctionCall &f);

    // ---- exceptions.cpp: FUNCTION EXCEPTION-STATUS and its like
    bool asksForExceptions() const;
    std::string verbAndPlace();
    void raise(const std::string &failed, const std::string &name);
    void verbBegins(const File &f);
    bool exceptionText(const FunctionCall &f, FunctionText &result);
    void sizePhrases(const ArithmeticStatement &s, const std::string &flag, const std::string &zero);

    // ---- arithmetic.cpp: ADD to COMPUTE, and the phrases of all statements
    // A receiving item of arithmetic (GIVING: or an edited one); not good, and told, if it takes
    // no number.
    Loc receivingNumber(const Target &target, bool giving);
    void addStatement(const ArithmeticStatement &s);
    void divideStatement(const ArithmeticStatement &s);
    void correspondingArithmetic(const ArithmeticStatement &s);
    void computeStatement(const ArithmeticStatement &s);
    void phrases(const Phrases &p, const std::string &failed);
    std::string sizeErrorFlag(const ArithmeticStatement &s);

    // ---- moves.cpp
    void move(const Expr *source, const Loc &target);
    void moveTextToNumber(const Expr *source, const Loc &target);
    Text repeatedDigits(const Text &all, int count);
    void moveToPointer(const Expr *source, const Loc &target);
    Loc pinned(Loc loc, bool copy);
    void moveFrom(const Expr *source, const Loc &from, const Loc &target);
    void moveText(const Text &source, const Loc &target);
    void moveCharacters(const Text &t, const Loc &target);
    Num textNumber(const Text &t, int places);
    void moveNumber(Num n, const Loc &target, bool fromInteger);
    void moveLoc(const Loc &source, const Loc &target);
    void corresponding(const Item &from, const Item &to, std::vector<std::pair<const Item *, const Item *>> &pairs,
                       bool numeric);
    Loc member(const Reference &ref, const Item &group, const Item &item, bool receiving);
    void moveStatement(const MoveStatement &s);

    // ---- initialize.cpp
    void initialize(const Loc &target, const Item &item, const InitializeStatement &s, const std::string &displacement);
    void initializeOne(const Loc &loc, const Item &item, const InitializeStatement &s);
    void initializeStatement(const InitializeStatement &s);

    // ---- setting.cpp: SET, ALLOCATE, FREE
    void setStatement(const SetStatement &s);
    void setAddress(const Expr *target, const Expr *value);
    void setSwitch(const Expr *target, bool on);
    void setCondition(const Expr *target, bool truth);
    void setItem(const Loc &loc, const Expr *target, const Expr *value);
    void stepItem(const Loc &loc, const Expr *target, const Expr *by, bool down);
    void allocateStatement(const AllocateStatement &s);

    // ---- control.cpp: IF, EVALUATE, PERFORM, GO TO, ALTER, EXIT, STOP
    void ifStatement(const IfStatement &s);
    void evaluateStatement(const EvaluateStatement &s);
    Expr *keptNumber(const Expr *e, bool isSubscript);
    const Expr *keptSubject(const Expr *e);
    std::string evaluateObject(const Expr *subject, const EvaluateStatement::Object &object);
    void performStatement(const PerformStatement &s);
    void performOnce(const PerformStatement &s);
    void performTimes(const PerformStatement &s);
    void performUntil(const PerformStatement &s);
    void performVarying(const PerformStatement &s);
    void setVarying(const Varying &v);
    void stepVarying(const Varying &v);
    void breakIf(const Expr *until);
    // `way`: what DEBUG-CONTENTS says of the range.
    void performRange(const ProcedureName &first, const ProcedureName &last, const char *way = "PERFORM LOOP");
    void goStatement(const GoStatement &s);
    void jump(const ProcedureName &name);
    void alterStatement(const AlterStatement &s);
    void exitStatement(const ExitStatement &s);
    void pause(Expr *seconds);
    bool returnCode(const Expr *value, const std::string &code);
    void exitParagraph();
    void exitSection();

    // ---- loop_counters.cpp: items that PERFORM VARYING counts with, in C variables
    std::vector<bool> countersBefore(const Statement &s);
    void countersAfter(const std::vector<bool> &staleBefore);
    Num counterInStorage(const Item &item);
    void countersAtExit();
    void readStaleCounter(LoopCounter &c);
    void receives(const Item &item, bool inTable);
    LoopCounter *counterOf(const Item &item);
    LoopCounter *counterOf(const Varying &v);
    bool holdsBeyond(const Expr *condition, const Item &item, bool up);
    void countWith(const Varying &v, const Varying *next, bool testBefore);
    void cutCounter(const LoopCounter &c);
    void beginCounting(const Varying &v);
    void endCounting(const Varying &v);
    bool stepCounter(const Varying &v);

    // ---- console.cpp: DISPLAY, ACCEPT
    void displayStatement(const DisplayStatement &s);
    struct Shown { // what DISPLAY shows: C expressions
        std::string address, size;
    };
    const char *displayDevice(const DisplayStatement &s);
    bool displayed(const Expr *e, Shown &out);
    void exhibitChanged(const DisplayStatement &s);
    bool displayedNumber(Num n, const Item *item, Shown &out);
    void acceptStatement(const AcceptStatement &s);
    bool acceptsNumber(const Loc &loc);
    void acceptClock(std::string_view flags, int digits, const Loc &loc);
    void acceptOutside(const AcceptStatement &s, std::string_view routine, const Loc &loc);
    void acceptInput(const AcceptStatement &s, std::string_view flags, const Loc &loc);

    // ---- calls.cpp: CALL, CANCEL, ENTRY
    void callStatement(const CallStatement &s);
    bool wantsLength(Program *known, size_t argument);
    std::string callArgument(const CallStatement::Argument &argument, std::string &length);
    std::string valueArgument(const Expr *e);
    std::string itemArgument(const Expr *e, bool content, std::string &length);
    bool findRoutine(const CallStatement &s, const Expr *target, const std::string &routine);
    void callReturning(const CallStatement &s, const std::string &routine, const std::string &arguments, bool direct);
    void utilityArguments(const CallStatement &s);
    void cancelStatement(const CancelStatement &s);
    void entryStatement(const EntryStatement &s);
    void entryArguments(Program &p, std::string &out);
    void entryPoints(const Program &p, std::string &out);
    std::string findProgram(const Expr *name, bool exception);
    Program *visibleProgram(Program &from, Word name);
    void visiblePrograms(Program &p);
    std::string visibleTable();

    // ---- opening.cpp: OPEN, CLOSE
    void openStatement(const OpenStatement &s);
    void closeStatement(const CloseStatement &s);
    void deleteFile(const FileStatement &s);
    void assignment(const File &f);
    void openGiven(const File &f, bool probe);
    void linageValues(const File &f);
    void prepare(const File &f);

    // ---- files.cpp: the other verbs of files
    void readStatement(const FileStatement &s);
    void writeStatement(const FileStatement &s);
    void rewriteStatement(const FileStatement &s);
    void deleteStatement(const FileStatement &s);
    Word undeclaredChannel(const FileStatement &s);
    void retry(const FileStatement &s, const std::string &request);
    void startStatement(const FileStatement &s);
    void unlockStatement(const FileStatement &s);
    std::string newRequest();
    void callVerb(const File &f, std::string_view routine, const std::string &request);
    File *fileOfRecord(const FileStatement &s, Loc &record);
    void relativeKeyIn(const File &f, const std::string &request);
    void relativeKeyOut(const File &f, const std::string &request);
    void recordLengthIn(const File &f, const Loc &record, const std::string &request);
    void recordLengthOut(const File &f, const std::string &request);
    void readInto(const Reference &into, const File &f, const std::string &request);
    std::string advance(const FileStatement &s);
    void endOfPage(const Phrases &p, const std::string &request);
    bool startKey(const FileStatement &s, const File &f, const std::string &request);
    std::string gaveStatus(const File &f, int low, int high) const;
    std::string succeeded(const File &f) const;
    void afterVerb(const FileStatement &s, const File &f);
    void encodeRecord(const File &f, const std::string &request);
    int keyNumber(const File &f, const Item &item, bool generic);

    // ---- sorting.cpp: SORT, MERGE, RELEASE, RETURN
    bool asksForSortReturn() const;
    void endSort();
    void sortStatement(const SortStatement &s);
    std::string sortWeights(const SortStatement &s);
    void sortTable(const SortStatement &s, const std::string &weights);
    std::string sortKeys(const SortStatement &s, const File &file, size_t &count);
    void sortFile(const SortStatement &s, const File &file, const std::string &weights);
    std::string sortFiles(const std::vector<std::pair<Word, Tok>> &list, bool read);
    void releaseStatement(const FileStatement &s);
    void returnStatement(const FileStatement &s);
    bool sortKey(const Item &item, uint32_t offset, bool ascending, bool inTable, std::string &out);

    // ---- strings.cpp: STRING, UNSTRING, INSPECT
    void stringStatement(const StringStatement &s);
    void unstringStatement(const UnstringStatement &s);
    void inspectStatement(const InspectStatement &s);
    void inspectTrailing(const InspectStatement &s, const Loc &target);
    std::string pointerIn(Reference *pointer, const std::string &length, std::string &value);
    void storeInteger(Reference *target, const std::string &c);
    struct Words; // of a block that lists a statement's operands
    struct UnstringField {
        Loc target;
        std::string buffer; // not empty: the field comes here, and a MOVE brings it to the target
    };
    bool unstringBlock(const UnstringStatement &s, const Text &source, Words &block, std::string &inRange);
    bool unstringTarget(const UnstringStatement &s, const UnstringStatement::Into &into, int64_t longest,
                        Words &targets, UnstringField &field);
    struct PhraseOperand {
        std::array<std::string, 3> words = {"0", "0", "0"}; // flags, length, address
        int64_t fixed = -1;                                 // the length without a sign, if it is known now
        bool figurative = false;
    };
    using Counters = std::vector<std::pair<const Reference *, std::string>>; // items, and what counts for them
    bool inspected(const InspectStatement &s, Loc &target);
    bool inspectOperand(const Expr *e, uint32_t kind, PhraseOperand &out);
    bool inspectPhrase(const InspectStatement::Phrase &phrase, Counters &counters, Words &block);
    void tally(const Reference &counter, const std::string &count, bool fromZero);

    // ---- searching.cpp: SEARCH
    void searchStatement(const SearchStatement &s);
    struct SearchPair {
        const Item *key;
        const Expr *operand;
    };
    bool searchKeys(const Expr *e, const Item &table, std::vector<SearchPair> &pairs);
    bool searchByLibrary(const SearchStatement &s, const Item &table);

    // ---- xml.cpp: XML PARSE, XML GENERATE
    void xmlParse(const XmlParseStatement &s);
    void xmlGenerate(const XmlGenerateStatement &s);
    friend struct XmlWalk;
};

// A verb's routine in an FCB: the field's name, with the arrow before it.
inline std::string_view slot(std::string_view text) { return text.substr(text.find("->")); }

// What a verb's routine takes first: the file's FCB, and the element of its program.
inline std::string fcbAndElement(const File &f) { return cat("F", f.number, ", p", f.program->number, "_element"); }

// The name of an EXTERNAL record, and what asks for the addresses of so many rows. (entry.cpp)
std::string externalName(const Item &record);
std::string externalTable(const std::string &rows, int count);

// The map of a program's data for the debugger. (debug_map.cpp)
std::string debugMap(const Program &p);

// The class of a zoned item.
inline Of zonedOf(SignForm form)
{
    return static_cast<Of>(static_cast<int>(Of::ZonedUnsigned) + static_cast<int>(form));
}

// The relation that a token stands for.
Do relationOf(uint32_t op);

} // namespace kvrcob
