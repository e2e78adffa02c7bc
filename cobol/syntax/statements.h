// The statements of a program in its tree, and the operands and expressions in them; see tree.h.
#pragma once

#include <string_view>
#include <vector>

#include "cobol/text/token.h"

namespace kvrcob {

using Tok = uint32_t;

template <class T>
T *make()
{
    return new T();
}

struct Expr;
struct Item;
struct File;
struct Program;
struct Procedure;

// ---- Operands and expressions

// data-name OF group ... (subscripts) (from : length)
struct Reference {
    Tok at = 0;
    std::vector<Word> names; // the name, then its qualifiers from the inside out
    std::vector<Expr *> subscripts;
    bool refmod = false;
    Expr *from = nullptr, *length = nullptr; // length may be null
};

enum class ExprKind : uint8_t {
    Reference,
    Number,     // text: as written, without sign
    String,     // text; form
    Figurative, // op: K_ZERO, K_SPACE, K_HIGH_VALUE, K_LOW_VALUE, K_QUOTE, K_NULL
    All,        // ALL literal: text; or a figurative constant in op
    Function,   // op: the function's name; args; refmod in ref
    LengthOf,   // left or ref
    AddressOf,  // ref
    EntryOf,    // left: the program's name
    Negate,
    Arithmetic, // op: '+', '-', '*', '/', kPower
    Relation,   // op: '=', '<', '>', kLessEqual, kGreaterEqual, kNotEqual; left null where abbreviated
    ClassTest,  // op: the class; left
    SignTest,   // op: K_POSITIVE, K_NEGATIVE, K_ZERO; left
    And,
    Or,
    Not,
    Truth, // op: K_TRUE, K_FALSE
    Count, // args: n, m, k of ON n AND EVERY m UNTIL k
    Any,   // ANY of EVALUATE
    Range, // left THRU right, of EVALUATE
    AllSubscript,
    Kept, // of the emitter: `left`, whose value was computed before
    Omitted
};

struct Expr {
    ExprKind kind = ExprKind::Number;
    StringForm form = StringForm::Plain;
    bool negated = false; // ClassTest, SignTest: IS NOT
    Tok at = 0;
    uint32_t op = 0;
    std::string_view text;
    Reference *ref = nullptr;
    Expr *left = nullptr, *right = nullptr;
    std::vector<Expr *> args;
};

// ---- Statements

struct Statement {
    Word verb = 0;
    Tok at = 0;
};
using Block = std::vector<Statement *>;

// A pair of phrases: ON SIZE ERROR and NOT ON SIZE ERROR, AT END and NOT AT END and so on.
struct Phrases {
    bool has = false, hasNot = false;
    Block on, onNot;
};

// How a result loses its last digits: ROUNDED MODE IS ... As in kvr_round_mode of the emitted C.
enum Rounding : uint8_t {
    Truncation,
    NearestAwayFromZero, // ROUNDED alone
    NearestEven,
    NearestTowardZero,
    AwayFromZero,
    TowardGreater,
    TowardLesser,
    RoundingProhibited
};

// A receiving item of arithmetic.
struct Target {
    Reference *ref = nullptr;
    Rounding rounded = Truncation;
};

// A paragraph or section that a statement names.
struct ProcedureName {
    Tok at = 0;
    Word name = 0, section = 0;
};

// syntax/arithmetic.cpp
struct ArithmeticStatement : Statement {                      // ADD, SUBTRACT, MULTIPLY, DIVIDE, COMPUTE
    bool corresponding = false, giving = false, into = false; // into: DIVIDE a INTO b
    std::vector<Expr *> operands; // ADD a b, SUBTRACT a b, MULTIPLY a, DIVIDE a; COMPUTE: the expression
    Expr *second = nullptr;       // FROM, BY, INTO of the GIVING form; TO of ADD ... TO ... GIVING is an operand
    std::vector<Target> targets;
    Target remainder;
    Phrases sizeError;
};

// syntax/moves.cpp
struct MoveStatement : Statement {
    bool corresponding = false;
    Expr *source = nullptr;
    std::vector<Reference *> targets;
};

struct InitializeStatement : Statement {
    std::vector<Reference *> targets;
    struct Replacing {
        Word category;
        Expr *value;
    };
    std::vector<Replacing> replacing;
    bool withFiller = false, allToValue = false, thenToDefault = false;
    std::vector<Word> toValue; // categories
};

struct AllocateStatement : Statement { // ALLOCATE, FREE
    Expr *characters = nullptr;
    Reference *item = nullptr, *returning = nullptr;
    bool initialized = false;
    std::vector<Expr *> freed;
};

struct SetStatement : Statement {
    enum Form : uint8_t { To, UpBy, DownBy, Condition, Switch, Address, LastException } form = To;
    struct Part {
        std::vector<Expr *> targets;
        Expr *value = nullptr; // Condition: Truth; Switch: op K_ON or K_OFF
    };
    std::vector<Part> parts;
};

// syntax/control.cpp
struct IfStatement : Statement {
    Expr *condition = nullptr;
    Block then, otherwise;
    bool hasElse = false;
};

struct EvaluateStatement : Statement {
    std::vector<Expr *> subjects;
    struct Object {
        Expr *value = nullptr;
        bool negated = false; // NOT
    };
    struct When {
        std::vector<std::vector<Object>> rows; // several WHENs for one block
        bool other = false;
        Block block;
    };
    std::vector<When> whens;
};

struct Varying {
    Reference *item = nullptr;
    Expr *from = nullptr, *by = nullptr, *until = nullptr;
};

struct PerformStatement : Statement {
    bool isInline = false, testAfter = false, forever = false;
    ProcedureName first, last; // last.name 0 without THRU
    Expr *times = nullptr, *until = nullptr;
    std::vector<Varying> varying;
    Block body;
    // meaning
    uint32_t site = 0; // number of the return point
};

struct GoStatement : Statement {
    std::vector<ProcedureName> targets; // none: GO TO that is to be altered
    Reference *depending = nullptr;
};

struct AlterStatement : Statement {
    struct Pair {
        ProcedureName paragraph, target;
    };
    std::vector<Pair> pairs;
};

struct ExitStatement : Statement { // EXIT, CONTINUE, NEXT SENTENCE, GOBACK, STOP
    enum Form : uint8_t {
        Plain,
        Program,
        Perform,
        PerformCycle,
        Paragraph,
        Section,
        Continue,
        NextSentence,
        Goback,
        StopRun,
        StopLiteral,
        Function
    } form = Plain;
    Expr *value = nullptr;
};

// syntax/console.cpp
struct DisplayStatement : Statement {
    std::vector<Expr *> items;
    Word upon = 0;
    Tok uponAt = 0;
    bool noAdvancing = false;
    // EXHIBIT CHANGED: of each operand in turn, how many items (its blank, its name, itself) it
    // has.
    std::vector<size_t> exhibited;
    Phrases exception;
};

struct AcceptStatement : Statement {
    Reference *target = nullptr;
    Word from = 0; // 0: the terminal
    bool longYear = false;
    Expr *name = nullptr; // FROM ENVIRONMENT name
    Phrases exception;
};

// syntax/calls.cpp
struct CallStatement : Statement {
    Expr *program = nullptr;
    enum Mode : uint8_t { Reference_, Content, Value };
    struct Argument {
        Mode mode = Reference_;
        Expr *value = nullptr; // Omitted
    };
    std::vector<Argument> arguments;
    Reference *returning = nullptr;
    Phrases exception;
};

struct CancelStatement : Statement {
    std::vector<Expr *> programs;
};

struct EntryStatement : Statement {
    Word name = 0;
    std::vector<CallStatement::Argument> parameters;
    uint32_t number = 0; // of its program, from 1
};

// syntax/files.cpp
struct OpenStatement : Statement {
    struct Part {
        Word mode; // K_INPUT, K_OUTPUT, K_I_O, K_EXTEND
        Word file;
        Tok at;
        bool reversed = false, noRewind = false;
        Word sharing = 0;
    };
    std::vector<Part> parts;
};

struct CloseStatement : Statement {
    struct Part {
        Word file;
        Tok at;
        bool reel = false, lock = false, noRewind = false, removal = false;
    };
    std::vector<Part> parts;
};

// READ, WRITE, REWRITE, DELETE, START, UNLOCK; also RETURN and RELEASE
struct FileStatement : Statement {
    Word file = 0; // READ, DELETE, START, UNLOCK, RETURN: the file
    Tok fileAt = 0;
    Reference *record = nullptr; // WRITE, REWRITE, RELEASE
    bool next = false, previous = false;
    Expr *from = nullptr;      // FROM
    Reference *into = nullptr; // INTO
    Reference *key = nullptr;
    uint32_t relation = '='; // START
    Word lock = 0;           // K_LOCK, K_NO, K_IGNORING
    Word retry = 0;          // K_TIMES, K_SECONDS, K_FOREVER
    Expr *retries = nullptr;
    bool wholeFile = false; // DELETE FILE
    std::vector<std::pair<Word, Tok>> moreFiles;
    bool before = false, after = false, page = false;
    bool positioning = false; // POSITIONING: 0 lines are a page, a character says what to do
    Expr *advancing = nullptr;
    Word mnemonic = 0;
    Phrases end;     // AT END
    Phrases invalid; // INVALID KEY
    Phrases eop;     // AT END-OF-PAGE
};

// syntax/sorting.cpp
struct SortKey {
    bool ascending = true;
    Reference *item = nullptr;
};

struct SortStatement : Statement { // SORT, MERGE
    Reference *file = nullptr;     // or a table
    std::vector<SortKey> keys;
    bool duplicates = false;
    Word collating = 0;
    std::vector<std::pair<Word, Tok>> usingFiles, givingFiles;
    bool hasInput = false, hasOutput = false;
    ProcedureName inputFirst, inputLast, outputFirst, outputLast;
    uint32_t inputSite = 0, outputSite = 0; // meaning
};

// syntax/strings.cpp
struct StringStatement : Statement {
    struct Group {
        std::vector<Expr *> sources;
        Expr *delimiter = nullptr; // null: BY SIZE
    };
    std::vector<Group> groups;
    Reference *target = nullptr, *pointer = nullptr;
    Phrases overflow;
};

struct UnstringStatement : Statement {
    Expr *source = nullptr;
    struct Delimiter {
        bool all = false;
        Expr *value = nullptr;
    };
    std::vector<Delimiter> delimiters;
    struct Into {
        Reference *target = nullptr, *delimiter = nullptr, *count = nullptr;
    };
    std::vector<Into> targets;
    Reference *pointer = nullptr, *tallying = nullptr;
    Phrases overflow;
};

struct InspectStatement : Statement {
    Reference *target = nullptr;
    Expr *function = nullptr; // instead of the target, for TALLYING
    bool examine = false;     // counts from zero
    struct Phrase {
        Word kind = 0; // K_TALLYING, K_REPLACING, K_CONVERTING
        Word mode = 0; // K_CHARACTERS, K_ALL, K_LEADING, K_FIRST, K_TRAILING
        Reference *counter = nullptr;
        Expr *compared = nullptr, *result = nullptr, *before = nullptr, *after = nullptr;
    };
    std::vector<Phrase> phrases;
};

// syntax/xml.cpp
struct XmlParseStatement : Statement {
    Reference *document = nullptr;
    Expr *codePage = nullptr;
    ProcedureName first, last;
    Phrases exception;
};

struct XmlGenerateStatement : Statement {
    Reference *receiver = nullptr, *source = nullptr, *count = nullptr;
    Expr *encoding = nullptr, *nameSpace = nullptr, *prefix = nullptr;
    bool declaration = false, attributes = false;
    struct Part {
        Word phrase = 0; // K_NAME, K_TYPE, K_SUPPRESS
        Reference *item = nullptr;
        Expr *name = nullptr;
        Word type = 0; // K_ATTRIBUTE, K_ELEMENT, K_CONTENT
    };
    std::vector<Part> parts;
    Phrases exception;
};

// syntax/searching.cpp
struct SearchStatement : Statement {
    bool all = false;
    Reference *table = nullptr, *varying = nullptr;
    bool hasEnd = false;
    Block atEnd;
    struct When {
        Expr *condition = nullptr;
        Block block;
        bool nextSentence = false;
    };
    std::vector<When> whens;
};

} // namespace kvrcob
