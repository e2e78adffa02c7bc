// The emitter: trees to C. One file a group of statements, as in syntax/:
//
//   statement_table.def  what is emitted for which statement and operands: the names are here only
//   program.cpp          the C file: storage, the order of its parts; entry.cpp: a program's entry
//   procedures.cpp       paragraphs as C functions; ranges.cpp: which have one of their own
//   operands.cpp         where an operand is: addresses, subscripts, lengths; texts.cpp: its text
//   numbers.cpp          arithmetic expressions; conversions.cpp, stores.cpp: the ways of a number
//   conditions.cpp       relations, class tests, condition-names
//   functions.cpp        intrinsic functions; by kinds in *_functions.cpp, FUNCTION-IDs in
//                        user_functions.cpp
//   file_records.cpp     what the run time is told of each file
//   loop_counters.cpp    items that PERFORM VARYING counts with, in C variables
//   arithmetic.cpp moves.cpp initialize.cpp setting.cpp control.cpp console.cpp calls.cpp
//   opening.cpp files.cpp sorting.cpp strings.cpp searching.cpp xml.cpp  the statements
//
// What is emitted for an operand is always a C expression; a statement may use it once.
// Intermediate results live in temporaries, which are declared at the start of the statement's
// block (`temp`). Statements check what they emit: an error means that no C is written.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <map>
#include <set>

#include "cobol/emit/ranges.h"
#include "cobol/emit/statement_table.h"
#include "cobol/meaning/names.h"

namespace kvrcob {

struct EmitOptions {
    bool check = false;   // -fcheck=all
    bool truncate = true; // -fno-trunc turns it off
    bool ebcdic = false;  // -febcdic: the order of texts
    // Whether the first program is what main calls. MainIfFirst: a weak main, of which the linker
    // takes that of the first object, or another one in its place.
    enum MainFunction : uint8_t { NoMain, Main, MainIfFirst } main = Main;
    bool lines = true;                      // #line
    bool readable = false;                  // -S: C for people, several lines a statement
    bool debugMap = false;                  // -g: what lies where, for the debugger
    std::vector<std::string> otherPrograms; // names of outermost programs of the other sources
};

// Joins texts and numbers: `cat` gives a text, `joined` a view of it that is good until the next
// call of either, for they put all texts together in the same room.
inline std::vector<char> joinRoom(4096);

inline size_t roomFor(std::string_view text) { return text.size(); }
template <size_t N>
constexpr size_t roomFor(const char (&)[N]) // a literal
{
    return N - 1;
}
template <std::integral T>
size_t roomFor(T)
{
    return 20;
}
inline char *written(char *out, std::string_view text) { return std::copy(text.begin(), text.end(), out); }
template <size_t N>
char *written(char *out, const char (&literal)[N])
{
    return std::copy_n(literal, N - 1, out);
}
inline char *written(char *out, char c)
{
    *out = c;
    return out + 1;
}
template <std::integral T>
char *written(char *out, T number)
{
    return std::to_chars(out, out + roomFor(number), number).ptr;
}

template <class... Parts>
std::string_view joined(const Parts &...parts)
{
    const size_t room = (roomFor(parts) + ...);
    if (room > joinRoom.size()) joinRoom.resize(2 * room);
    char *end = joinRoom.data();
    ((end = written(end, parts)), ...);
    return {joinRoom.data(), end};
}
template <class... Parts>
std::string cat(const Parts &...parts)
{
    return std::string(joined(parts...));
}

// Where a data item is.
struct Loc {
    const Item *item = nullptr;
    std::string address; // of type uint8_t *
    std::string length;  // in bytes
    int64_t fixed = -1;  // the length, if it is known now
    Category category = Category::Alphanumeric;
    bool refmod = false;
    bool good() const { return !address.empty(); }
};

// A text operand.
struct Text {
    enum Kind : uint8_t { Bytes, Figurative, All } kind = Bytes;
    std::string address, length;
    int64_t fixed = -1;
    std::string bytes; // of a literal, and of ALL literal
    bool isLiteral = false;
    uint8_t fill = ' '; // Figurative
    const Item *item = nullptr;
    bool good = true;
};

// Digits that a C integer and a packed number can have.
constexpr int kMostInt = 38, kMostPacked = 63;

// A number.
struct Num {
    enum Kind : uint8_t { Int, Packed, Float } kind = Int;
    // Int: a C integer, 64 bits wide up to 18 digits, else 128; Packed: the address of a packed
    // item; Float: a double
    std::string text;
    int digits = 1; // at most so many
    int scale = 0;
    bool isSigned = true;
    bool single = false;              // Float: a COMP-1 item as it is, good for 6 to 9 digits
    bool direct = false;              // Packed: the item itself, not a copy
    const Decimal *literal = nullptr; // the value, if it is a literal
    // Int: never more than this, above or below zero, whatever the item holds; 0: only the digits
    // are known
    unsigned __int128 most = 0;
    // Packed, a sum as the library computes it: @ stands for the digits that it is cut to. It holds
    // while `text` is `cutTo(digits)`.
    const std::string *cut = nullptr;
    std::string cutTo(int places) const;
    bool wide() const { return most ? most > INT64_MAX : digits > 18; }
    bool good() const { return !text.empty(); }
};

class Emitter {
public:
    Emitter(Meaning &meaning, const EmitOptions &options)
        : meaning_(meaning), group_(meaning.group()), options_(options)
    {
    }
    std::string emit();

private:
    // ---- program.cpp
    void program(Program &p);
    void declarations(Program &p, std::string &out);
    std::string headers() const;
    void mainFunction(std::string &out) const;
    void useRecords(const Program &p);
    void storage(Program &p);
    void initialValues(Program &p);

    // ---- file_records.cpp
    void fileRecords(Program &p);
    void fileRecord(Program &p, File &f, uint32_t room);
    struct Assignment {
        std::string name;
        const char *attribute;
        bool dynamic = false; // an item holds the name
        bool device = false;  // the keyboard or the display
    };
    Assignment assignment(Program &p, const File &f);
    void fileInformation(Program &p, const File &f, const Assignment &assigned);
    struct KeyTable {
        std::string keys, parts;
        size_t keyCount = 0, partCount = 0;
    };
    KeyTable keyTable(Program &p, const File &f);
    void addKey(Program &p, const File &f, const Reference &ref, const std::vector<Reference *> &parts, bool duplicates,
                KeyTable &table);
    const Item *keyItem(Program &p, const File &f, const Reference &ref);

    // ---- entry.cpp
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
    static std::string externalName(const Item &record);
    static std::string externalTable(const std::string &rows, int count);
    void fileEntry(Program &p, std::string &out);
    std::string returnedValue(const Program &p, const std::string &prefix, std::string &out);
    void programRecords(const Program &p, const std::string &prefix, const std::string &name, std::string &out);
    std::string parameterType(Program &p, size_t index);

    // ---- alphabets.cpp
    void alphabets(Program &p);
    void alphabet(Alphabet &a);
    void userClass(UserClass &c);
    void collatingSequence(Program &p);
    std::string alphabetCharacters(const Expr *e);
    bool alphabetRange(const Expr *from, const Expr *to, int &first, int &last);
    void clauseWeights(const Alphabet &a, std::vector<int> &weight, int &next);
    void byteTable(const char *prefix, uint32_t number, const std::vector<int> &bytes);

    void debugMap(Program &p); // debug_map.cpp
    std::string defaultBytes(const Item &item);
    std::string valueBytes(Program &p, const Item &item);

    // ---- procedures.cpp
    // What comes into the code in hand, in the order of places, when all of it is there.
    struct Insertion {
        enum Kind : uint8_t { Text, Perform, Return, Altered };
        size_t at;
        Kind kind;
        size_t index;     // into flow_.performs; of the procedure that ends or was altered
        std::string text; // declarations of a block's temporaries
    };
    void procedures(Program &p);
    std::string useEntries(Program &p);
    void allProcedures(Program &p);
    void bodyFunction(const Program &p, const std::string &entries, std::string &out);
    void rangeFunction(const Program &p, size_t r, std::string &out);
    void paragraph(size_t index);
    void alterable(Program &p);
    void chooseFunctions(Program &p);
    std::string functionName(const Range &r) const;
    void resolve(const Insertion &insertion, std::string &out);
    void resolvePerform(const Flow::Perform &perform, std::string &out);
    void resolveReturn(size_t procedure, std::string &out);
    void resolveAltered(size_t procedure, std::string &out);
    void appendProcedure(size_t index, std::string &out);

    // ---- use_procedures.cpp
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
    struct Watch {
        size_t use = 0;   // index of the USE statement
        bool all = false; // ALL REFERENCES OF
        std::string name; // as the USE statement has it
    };
    // References that the program does not write itself, such as that to a RELATIVE KEY.
    struct Unwatched {
        explicit Unwatched(Emitter &e) : emitter(e), debugs(e.debugs_) { e.debugs_ = false; }
        ~Unwatched() { emitter.debugs_ = debugs; }
        Unwatched(const Unwatched &) = delete;
        Unwatched &operator=(const Unwatched &) = delete;
        Emitter &emitter;
        bool debugs;
    };
    void findWatched(Program &p);
    bool inDebuggingSection(size_t procedure) const;
    bool watches(const UseStatement &use, size_t procedure) const;
    void debugProcedure(size_t index);
    void debugWay(const std::string &way, Tok at);
    void debugAlter(long paragraph, long target, Tok at);
    void debugItem(const Reference &ref, const Item &item, const Loc &loc, bool changed);
    void debugFile(const File &f, const FileStatement *read);
    // EVALUATE and SEARCH: the calls that their conditions owe, and the flag of each that was made.
    struct ToldOnce {
        explicit ToldOnce(Emitter &e) : emitter(e) { e.debugTold_ = &flags; }
        ~ToldOnce() { emitter.debugTold_ = nullptr; }
        ToldOnce(const ToldOnce &) = delete;
        ToldOnce &operator=(const ToldOnce &) = delete;
        Emitter &emitter;
        std::map<std::string, std::string> flags;
    };
    void debugNow();
    std::string debugCondition(const std::string &c);
    std::string debugSection(const Watch &watch, const std::string &arguments);

    // ---- tools
    void line(Tok at);
    void line(Tok at, std::string &out);
    void error(Tok at, const std::string &text) { meaning_.error(at, text); }
    void notBuilt(Tok at, const std::string &phrase) { meaning_.error(at, phrase + " is not supported yet"); }
    template <class... Parts>
    void put(const Parts &...parts)
    {
        code_ += joined(parts...);
    }
    std::string temp(std::string_view type, std::string_view suffix = "");
    std::string tempBytes(int64_t size);
    std::string label() { return "l" + std::to_string(++labels_); }
    std::string bytesLiteral(std::string_view bytes);  // "..." as C has it
    std::string constantBytes(std::string_view bytes); // an address of static bytes
    // The name of a static constant; one for all that are equal.
    std::string constantRecord(const char *prefix, const std::string &type, const std::string &value);
    void openBlock();
    void closeBlock();

    // ---- operands.cpp
    Loc locate(const Reference &ref, bool receiving = false);
    bool displacement(const Reference &ref, const Item &item, std::string &out);
    Loc partOf(const Reference &ref, const Loc &loc);
    Loc locateItem(const Item &item, const std::string &displacement = "", bool receiving = false);
    std::string baseOf(const Item &item);
    uint64_t roomOf(const Item &record) const;
    std::string subscript(const Expr *e);
    std::string integer(const Expr *e); // a C integer of 64 bits
    Text text(const Expr *e, bool numericAsText = false);
    Text bytesText(std::string bytes);
    Text fillText(uint8_t byte);
    Text figurativeText(const Expr *e);
    Text allText(const Expr *e);
    Text digitsText(const Num &n, int digits);
    Text itemText(const Expr *e, bool numericAsText);
    Text textOf(const Loc &loc);
    std::string currentCount(const Item &table);
    bool isNumericExpr(const Expr *e);
    bool isNumericItem(const Item &item)
    {
        return item.category == Category::Numeric || item.category == Category::Index;
    }
    const Expr *constant(const Expr *e) { return meaning_.constant(*program_, e); }
    Category categoryOf(const Expr *e);
    void range(int64_t low, int64_t high);

    // ---- numbers.cpp
    Num number(const Expr *e, int wantScale = -1);
    Num referenceNumber(const Expr *e);
    Num lengthNumber(const Expr *e);
    Num arithmeticNumber(const Expr *e, int wantScale);
    Num itemNumber(const Loc &loc);
    Num textInteger(const Loc &loc);
    Num deEditedNumber(const Loc &loc);
    Num binaryNumber(const Loc &loc);
    Num zonedNumber(const Loc &loc);
    std::string checkedAddress(const Loc &loc);
    Num literalNumber(const Decimal &value);
    Num integerNumber(const std::string &c, int digits, bool isSigned = true);
    Num floatNumber(const std::string &c);
    Num add(Num a, Num b, bool minus);
    Num multiply(Num a, Num b);
    Num divide(Num a, Num b, int scale);
    Num power(Num a, Num b, const Expr *exponent);
    Num negate(Num a);
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
    std::string powerOfTen(int n);
    std::string compareNumbers(Num a, Num b, uint32_t op);
    // Stores a number. `sizeError`: a C int that becomes 1 where the number does not fit, in which
    // case nothing is stored; empty: cut.
    void store(Num value, const Loc &target, Rounding rounded, const std::string &sizeError);
    void store(Num value, const Loc &target, bool rounded, const std::string &sizeError)
    {
        store(std::move(value), target, rounded ? NearestAwayFromZero : Truncation, sizeError);
    }
    // A receiving item of arithmetic (GIVING: or an edited one); not good, and told, if it takes
    // no number.
    Loc receivingNumber(const Target &target, bool giving);
    // Decimal places of a quotient that is the whole of what is stored; -1: as many as there is
    // room for.
    static int quotientScale(const Item &item, Rounding rounded);
    void storeEdited(Num value, const Loc &target);
    void storeBinary(Num value, const Loc &target, bool fits);
    void storePacked(Num value, const Loc &target);
    void storeComp6(const Num &value, const Loc &target);
    void storeZoned(Num value, const Loc &target);
    void storeExact(Num value, const Loc &target, const std::string &sizeError);
    bool fillsItsBytes(const Item &item) const;
    bool sizeTest(Num &value, const Item &item, const std::string &sizeError);
    std::string zeroFlag(); // C int that a division by zero sets, in this statement
    std::string lengthAsText(const Num &n);

    // ---- conditions.cpp
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
    void initialize(const Loc &target, const Item &item, const InitializeStatement &s, const std::string &displacement);
    void initializeOne(const Loc &loc, const Item &item, const InitializeStatement &s);
    void corresponding(const Item &from, const Item &to, std::vector<std::pair<const Item *, const Item *>> &pairs,
                       bool numeric);
    Loc member(const Reference &ref, const Item &group, const Item &item, bool receiving);

    // ---- statements
    friend struct StatementTable;
    void statement(const Statement &s);
    void block(const Block &b);
    void addStatement(const ArithmeticStatement &s);
    void divideStatement(const ArithmeticStatement &s);
    void correspondingArithmetic(const ArithmeticStatement &s);
    void computeStatement(const ArithmeticStatement &s);
    void phrases(const Phrases &p, const std::string &failed);
    std::string sizeErrorFlag(const ArithmeticStatement &s);

    void moveStatement(const MoveStatement &s);
    void initializeStatement(const InitializeStatement &s);
    void setStatement(const SetStatement &s);
    void setAddress(const Expr *target, const Expr *value);
    void setSwitch(const Expr *target, bool on);
    void setCondition(const Expr *target, bool truth);
    void setItem(const Loc &loc, const Expr *target, const Expr *value);
    void stepItem(const Loc &loc, const Expr *target, const Expr *by, bool down);
    void allocateStatement(const AllocateStatement &s);

    void ifStatement(const IfStatement &s);
    void evaluateStatement(const EvaluateStatement &s);
    // What stands for an expression that is evaluated once and used several times.
    struct KeptValue {
        Num num;
        Text text;
        std::string condition;
    };
    Expr *keptNumber(const Expr *e, bool isSubscript);
    const Expr *keptSubject(const Expr *e);
    std::map<const Expr *, KeptValue> kept_;
    std::string evaluateObject(const Expr *subject, const EvaluateStatement::Object &object);
    void performStatement(const PerformStatement &s);
    void performOnce(const PerformStatement &s);
    void performTimes(const PerformStatement &s);
    void performUntil(const PerformStatement &s);
    void performVarying(const PerformStatement &s);
    void setVarying(const Varying &v);
    void stepVarying(const Varying &v);
    void breakIf(const Expr *until);

    // ---- loop_counters.cpp
    struct LoopCounter {
        const Item *item;
        Num value;         // its text is a C variable
        bool stale;        // the storage may have another value
        bool leavesByTest; // it leaves the item's range only where UNTIL holds
    };
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
    std::vector<LoopCounter> loopCounters_; // of the loops around the statement in hand

    void findCircles(Program &p);
    bool inCircle(size_t from, size_t end) const;
    void performRange(const ProcedureName &first, const ProcedureName &last);
    void goStatement(const GoStatement &s);
    void jump(const ProcedureName &name);
    void alterStatement(const AlterStatement &s);
    void exitStatement(const ExitStatement &s);
    void pause(Expr *seconds);
    bool returnCode(const Expr *value, const std::string &code);
    void exitParagraph();
    void exitSection();

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

    std::string shareMode(const File &f, Word sharing);
    void openStatement(const OpenStatement &s);
    void closeStatement(const CloseStatement &s);
    void readStatement(const FileStatement &s);
    void writeStatement(const FileStatement &s);
    void rewriteStatement(const FileStatement &s);
    void deleteStatement(const FileStatement &s);
    void deleteFile(const FileStatement &s);
    void assignment(const File &f);
    Word undeclaredChannel(const FileStatement &s);
    bool programEndsSort();
    void endSort();
    static bool mayBeGiven(const File &f);
    void openGiven(const File &f, bool probe);
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
    void linageValues(const File &f);
    const Alphabet *codeSet(const File &f);
    void codeSetTable(const File &f, uint32_t room);
    void encodeRecord(const File &f, const std::string &request);
    std::string useTable(Program &p, const File &f);
    void prepare(const File &f);
    int keyNumber(const File &f, const Item &item, bool generic);
    static int splitKeyNumber(const File &f, const Reference &ref);

    void sortStatement(const SortStatement &s);
    std::string sortWeights(const SortStatement &s);
    void sortTable(const SortStatement &s, const std::string &weights);
    std::string sortKeys(const SortStatement &s, const File &file, size_t &count);
    void sortFile(const SortStatement &s, const File &file, const std::string &weights);
    std::string sortFiles(const std::vector<std::pair<Word, Tok>> &list, bool read);
    void releaseStatement(const FileStatement &s);
    void returnStatement(const FileStatement &s);
    bool sortKey(const Item &item, uint32_t offset, bool ascending, bool inTable, std::string &out);

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

    void xmlParse(const XmlParseStatement &s);
    void xmlGenerate(const XmlGenerateStatement &s);
    friend struct XmlWalk;

    void searchStatement(const SearchStatement &s);
    struct SearchPair {
        const Item *key;
        const Expr *operand;
    };
    bool searchKeys(const Expr *e, const Item &table, std::vector<SearchPair> &pairs);
    bool searchByLibrary(const SearchStatement &s, const Item &table);

    // ---- functions.cpp, user_functions.cpp, *_functions.cpp
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
    Program *userFunction(const Expr *e);
    std::string functionEntry(Program &f);
    const Item *resultOf(Program &function);
    bool callFunction(const Expr *e, Loc &result);

    // ---- exceptions.cpp
    bool asksForExceptions() const;
    std::string verbAndPlace();
    void raise(const std::string &failed, const std::string &name);
    void verbBegins(const File &f);
    bool exceptionText(const FunctionCall &f, FunctionText &result);
    void sizePhrases(const ArithmeticStatement &s, const std::string &flag, const std::string &zero);

    Num functionNumber(const Expr *e, int wantScale);
    Text functionText(const Expr *e);
    bool functionIsNumeric(const Expr *e);
    void expandAll(const Expr *e, std::vector<const Expr *> &out);
    bool functionCall(const Expr *e, FunctionCall &f);
    std::string guardOf(const FunctionCall &f, size_t i);
    std::string counter();
    void count(const FunctionCall &f, size_t i, const std::string &counted);

    Num absolute(const FunctionCall &f);
    Num algebraicLimit(const FunctionCall &f);
    Num annuity(const FunctionCall &f);
    Num combinedDatetime(const FunctionCall &f);
    Num dateOfInteger(const FunctionCall &f);
    Num extreme(const FunctionCall &f);
    Num factorial(const FunctionCall &f);
    Num floatConstant(const FunctionCall &f);
    Num floatFunction(const FunctionCall &f);
    Num floatOfText(const FunctionCall &f);
    Num integerPart(const FunctionCall &f);
    Num numberOfText(const FunctionCall &f);
    Num ofFormatted(const FunctionCall &f);
    Num ordinal(const FunctionCall &f);
    Num placeOfExtremeText(const FunctionCall &f);
    Num random(const FunctionCall &f);
    Num remainder(const FunctionCall &f);
    Num secondsPastMidnight(const FunctionCall &f);
    Num sign(const FunctionCall &f);
    Num statistic(const FunctionCall &f);
    Num storedLength(const FunctionCall &f);
    Num sum(const FunctionCall &f);
    Num testDate(const FunctionCall &f);
    Num testFloatOfText(const FunctionCall &f);
    Num textLength(const FunctionCall &f);
    Num windowed(const FunctionCall &f);

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

    Meaning &meaning_;
    Group &group_;
    const EmitOptions options_;
    Alphabet ebcdic_; // of -febcdic
    Program *program_ = nullptr;
    std::map<const Expr *, std::string>
        guards_; // of arguments that ALL made: the condition that there is such an element
    // Of records that others redefine: the bytes of the longest of them.
    std::map<const Item *, uint64_t> rooms_;
    bool groupVisible_ = false;                  // the table of all outermost programs was emitted
    bool usesVisible_ = false;                   // the program in hand has a CALL or CANCEL of an item
    std::map<std::string, std::string> records_; // constantRecord: names by type and value
    std::string globals_;                        // static data before the functions
    std::string code_;                           // the function in hand
    std::string functions_, useReturns_, entryCases_;
    std::string beginsAgain_; // of the program in hand: what its statements keep begins anew after CANCEL
    std::vector<Insertion> insertions_;
    std::vector<size_t> blocks_; // indices into insertions_ of the open blocks
    uint32_t temps_ = 0, labels_ = 0, constants_ = 0, sites_ = 0;
    size_t procedure_ = 0; // index of the procedure in hand
    Flow flow_;            // of the program in hand
    // Where each procedure begins in code_ and in insertions_; one more for the end.
    std::vector<std::pair<size_t, size_t>> starts_;
    std::vector<Range> ranges_; // ranges that are C functions of their own
    std::vector<int> owners_;   // of each procedure: the index of the range it is in, or -1
    std::string zeroFlag_;
    bool reversed_ = false;              // an OPEN REVERSED was emitted
    bool usesXml_ = false;               // a program has XML PARSE or XML GENERATE
    bool exceptions_ = false;            // the source asks for EXCEPTION-STATUS and its like
    std::set<size_t> declaredElsewhere_; // functions of other sources, by their index
    bool utilities_ = false;             // the CALL of a utility was emitted
    bool utilityNames_ = false;          // a CALL of an item was emitted
    int sortReturn_ = -1;                // the source names SORT-RETURN; -1: not looked yet
    bool deleteFile_ = false;            // a DELETE FILE was emitted
    bool openGiven_ = false;             // an OPEN of a file that may be another system's
    std::set<size_t> useTargets_;        // where GO TOs of its USE procedures go
    bool debugs_ = false;                // USE FOR DEBUGGING is in force
    bool anyChange_ = false;             // every reference counts as one that may change the item
    Tok statementAt_ = 0;
    std::map<const Item *, Watch> watchedItems_;
    std::map<const File *, Watch> watchedFiles_;
    std::vector<std::string> pendingDebugs_; // of the statement in hand: debugging sections to run
    std::map<std::string, std::string> *debugTold_ = nullptr;
    const char *performWay_ = "PERFORM LOOP"; // what DEBUG-CONTENTS says of the range performed next
    std::vector<uint32_t> circles_;           // of each procedure; equal numbers: they perform each other
    bool circling_ = false;                   // a PERFORM may meet itself
    uint32_t firstSite_ = 1, counters_ = 0;   // of the program in hand: PERFORM sites, PERFORM n TIMES
    std::vector<std::pair<std::string, std::string>> performLabels_; // inline PERFORM: exit, cycle
    std::string sentenceEnd_;
    bool sentenceEndUsed_ = false, paragraphEndUsed_ = false;
    uint32_t lineFile_ = UINT32_MAX; // of the last #line, and its path as C has it
    std::string linePath_;
    std::map<size_t, std::set<size_t>> alterTargets_;
    std::map<std::pair<uint32_t, uint32_t>, std::string> useTables_; // of program and file
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
};

// A verb's routine in an FCB: the field's name, with the arrow before it.
inline std::string_view slot(std::string_view text) { return text.substr(text.find("->")); }

// What a verb's routine takes first: the file's FCB, and the element of its program.
inline std::string fcbAndElement(const File &f) { return cat("F", f.number, ", p", f.program->number, "_element"); }

// A sequential file that is printed, and so a file of lines.
bool isPrinted(const File &f);

// The class of a zoned item.
inline Of zonedOf(SignForm form)
{
    return static_cast<Of>(static_cast<int>(Of::ZonedUnsigned) + static_cast<int>(form));
}

// The relation that a token stands for.
Do relationOf(uint32_t op);

// Is this an order of characters that needs no ALPHABET clause, and the machine's own?
// (alphabets.cpp)
bool standardOrder(Word name);

// The character that a figurative constant repeats, in the native order.
uint8_t figurativeByte(uint32_t op);

// The index of the last paragraph of a range that ends with this procedure (control.cpp).
size_t lastOf(const Program &p, size_t index);

// The bytes of a file's record area (file_records.cpp).
uint32_t recordRoom(const Program &p, const File &f);

// The item with its record (level 01 or 77).
inline const Item &recordOf(const Item &item)
{
    const Item *record = &item;
    while (record->parent) record = record->parent;
    return *record;
}

} // namespace kvrcob
