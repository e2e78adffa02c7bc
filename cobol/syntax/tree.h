// The tree of a program, as the parser makes it and `meaning` completes it.
//
// A node names its place by the index of its token. Nodes live as long as the compilation: they are
// made with `make<T>()` and never freed. Fields under "meaning" are empty after parsing;
// meaning/layout.cpp and meaning/names.cpp fill them.
#pragma once

#include <set>
#include <string>
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
    enum Form : uint8_t { To, UpBy, DownBy, Condition, Switch, Address } form = To;
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

// ---- Procedures

struct Sentence {
    Block statements;
    uint32_t number = 0; // meaning: for NEXT SENTENCE
};

struct Procedure {
    Word name = 0; // 0: the text before the first paragraph
    Tok at = 0;
    bool isSection = false;
    int segment = 0;
    int section = -1; // index of its section, or -1
    bool declarative = false;
    std::vector<Sentence> sentences;
    // meaning
    uint32_t number = 0;
    std::vector<uint32_t> returns; // PERFORM sites that end here
    bool altered = false;
    bool referenced = false;
};

// USE in a declarative section.
struct UseStatement {
    size_t procedure = 0; // index of the section
    bool global = false, debugging = false, reporting = false;
    Word mode = 0; // K_INPUT ...; 0 with files
    std::vector<std::pair<Word, Tok>> files;
    bool allProcedures = false;
    std::vector<Reference *> debugged;
    std::set<size_t> allReferences; // indices into `debugged`: ALL REFERENCES OF
    Tok at = 0;
};

// ---- Data

enum class Usage : uint8_t {
    Display,
    Binary,
    Native,
    Packed,
    Float,
    Double,
    Index,
    Pointer,
    ProcedurePointer,
    National,
    CompX
};

// What kind of picture and content an elementary item has.
enum class Category : uint8_t {
    Group,
    Alphabetic,
    Alphanumeric,
    AlphanumericEdited,
    Numeric,
    NumericEdited,
    National,
    Boolean,
    Index,
    Pointer
};

enum class SignForm : uint8_t { None, Trailing, Leading, TrailingSeparate, LeadingSeparate };

// meaning/picture.cpp
struct Picture {
    Category category = Category::Alphanumeric;
    uint32_t positions = 0; // characters of a DISPLAY item, without P, V and S
    int digits = 0;         // digit positions, P not counted
    int scale = 0;          // decimal places; negative with P on the right of the digits
    bool sign = false;
    std::string expanded; // "9(3)V99" as "999V99"; "." and "," as if DECIMAL-POINT IS COMMA were not there
    char currency = 0;
};

struct ValueRange {
    Expr *from = nullptr, *to = nullptr; // to null: a single value
};

struct Item {
    Word name = 0; // 0: FILLER
    Tok at = 0;
    int level = 0;
    Program *program = nullptr;
    File *file = nullptr;
    enum Section : uint8_t { FileSection, WorkingStorage, LocalStorage, Linkage, Special } section = WorkingStorage;

    // clauses
    std::string_view pictureText;
    Tok pictureAt = 0;
    bool hasPicture = false, hasUsage = false, hasSign = false, signLeading = false, signSeparate = false;
    bool justified = false, blankWhenZero = false, synchronized = false, external = false, global = false;
    bool based = false;        // BASED: in storage of ALLOCATE
    bool anyLength = false;    // as long as the argument
    bool nativeBinary = false; // BINARY-CHAR and its like: size in nativeSize
    bool isUnsigned = false;
    uint8_t nativeSize = 0;
    Usage usage = Usage::Display;
    Word redefinesName = 0;
    Tok redefinesAt = 0;
    bool hasValue = false;
    std::vector<ValueRange> values;
    Expr *whenFalse = nullptr; // level 88
    bool occurs = false;
    uint32_t occursMin = 1, occursMax = 1;
    Reference *depending = nullptr;
    Expr *occursMinExpr = nullptr, *occursMaxExpr = nullptr;
    std::vector<SortKey> keys;
    std::vector<Item *> indexes;                              // INDEXED BY: pseudo items of usage Index
    Reference *renamesFrom = nullptr, *renamesThru = nullptr; // level 66
    bool isConstant = false;                                  // level 78 and CONSTANT
    Word externalName = 0;

    // structure
    Item *parent = nullptr;
    std::vector<Item *> children;
    std::vector<Item *> conditions; // level 88

    // meaning
    Category category = Category::Alphanumeric;
    Picture picture;
    SignForm signForm = SignForm::None;
    Item *redefines = nullptr;
    uint32_t offset = 0; // in its record
    uint32_t size = 0;   // bytes of one occurrence
    uint32_t number = 0; // of a record (level 01, 77): names its storage in C. Of an index: likewise
    bool isIndexName = false;
    bool laidOut = false, hasDepending = false; // an OCCURS DEPENDING in it
    Item *dependingItem = nullptr;
    bool referenced = false;
    int parameter = -1; // LINKAGE: place in PROCEDURE DIVISION USING
    // C text of a special register's address, and of its length where that changes
    std::string special, specialLength;
    Word specialKind = 0;
    Item *table = nullptr; // of an index: the table it belongs to
    Expr *constant = nullptr;
    int64_t storageSize() const { return static_cast<int64_t>(size) * (occurs ? occursMax : 1); }
    bool elementary() const { return children.empty(); }
};

// Whether an occurrence of a table, or an item, always has the same size.
inline bool fixedOccurrence(const Item &item)
{
    if (item.anyLength || !item.depending) return !item.hasDepending;
    for (const Item *child : item.children)
        if (child->hasDepending) return false;
    return true;
}

// ---- Files

struct File {
    Word name = 0;
    Tok at = 0;
    Program *program = nullptr;
    bool selected = false, optional = false, sortFile = false, described = false;
    Expr *assign = nullptr;          // literal
    Reference *assignItem = nullptr; // data item or plain word
    Word assignWord = 0;
    Word device = 0; // PRINTER, DISK ...
    bool assignDynamic = false, assignExternal = false;
    Word organization = K_SEQUENTIAL; // K_SEQUENTIAL, K_LINE, K_RELATIVE, K_INDEXED
    bool hasOrganization = false;
    Word access = K_SEQUENTIAL; // K_SEQUENTIAL, K_RANDOM, K_DYNAMIC
    Reference *relativeKey = nullptr, *recordKey = nullptr, *status = nullptr, *status2 = nullptr;
    struct AlternateKey {
        Reference *item;
        bool duplicates;
        std::vector<Reference *> parts; // of a split key, whose name is no data item
    };
    std::vector<Reference *> recordKeyParts;
    std::vector<AlternateKey> alternateKeys;
    Word lockMode = 0; // K_MANUAL, K_AUTOMATIC, K_EXCLUSIVE
    bool lockMultiple = false;
    Word sharing = 0; // K_ALL, K_READ, K_NO
    // FD
    bool external = false, global = false;
    uint32_t recordMin = 0, recordMax = 0; // RECORD CONTAINS
    bool recordVarying = false, hasRecordClause = false;
    Reference *recordDepending = nullptr;
    Expr *linage = nullptr, *footing = nullptr, *top = nullptr, *bottom = nullptr;
    Word codeSet = 0;
    std::string recordingMode;
    Expr *valueOfFileId = nullptr;
    std::vector<Item *> records;
    // meaning
    uint32_t number = 0;
    uint32_t index = 0; // in its program, from 1
    uint32_t minRecord = 0, maxRecord = 0;
    bool advancing = false, readable = false; // WRITE ADVANCING is used; OPEN INPUT or I-O is used
    Item *linageCounter = nullptr;
    size_t sameArea = 0; // number of a SAME RECORD AREA group, 0 none
    File *areaOwner = nullptr;
};

// ---- Environment

struct Alphabet {
    Word name = 0;
    Tok at = 0;
    Word kind = 0; // K_NATIVE, K_STANDARD_1, K_STANDARD_2, K_EBCDIC; 0: literals
    struct Part {
        Expr *from = nullptr, *thru = nullptr;
        std::vector<Expr *> also;
    };
    std::vector<Part> parts;
    uint32_t number = 0; // meaning
    std::vector<uint8_t> weights;
};

struct UserClass {
    Word name = 0;
    Tok at = 0;
    std::vector<ValueRange> ranges;
    uint32_t number = 0;
};

struct SymbolicCharacter {
    Word name = 0;
    int ordinal = 0;
    Word alphabet = 0;
};

struct Mnemonic {
    Word name = 0;   // the user's name, 0 without one
    Word device = 0; // SYSOUT, CONSOLE, C01, UPSI-0, SWITCH-1 ...
    Tok at = 0;
    Word onName = 0, offName = 0; // condition-names of a switch
    int switchNumber = -1;
};

// ---- Programs

struct Program {
    Word name = 0;
    std::string_view nameText;
    Tok at = 0;
    Program *parent = nullptr;
    std::vector<Program *> nested;
    bool common = false, initial = false, recursive = false, isFunction = false;
    bool debugging = false;
    bool hasAlter = false;
    bool openShares = false; // an OPEN says SHARING or LOCK itself
    bool usesXml = false;

    // environment
    std::vector<Alphabet *> alphabets;
    std::vector<UserClass *> classes;
    std::vector<SymbolicCharacter> symbolics;
    std::vector<Mnemonic> mnemonics;
    char currency = '$';
    char currencySymbol = 0; // in pictures; 0: the sign itself
    bool commaIsPoint = false;
    Word collating = 0;
    Tok collatingAt = 0;
    bool allFunctions = false; // REPOSITORY FUNCTION ALL INTRINSIC
    std::set<Word> functions;  // that may be named without FUNCTION

    // data
    std::vector<File *> files;
    std::vector<Item *> records; // level 01 and 77 of all sections but FILE
    std::vector<Item *> constants;

    // procedures
    bool hasProcedures = false;
    Tok procedureAt = 0, endAt = 0;
    std::vector<CallStatement::Argument> parameters; // PROCEDURE DIVISION USING
    Reference *returning = nullptr;
    std::vector<Procedure> procedures;
    std::vector<UseStatement> uses;
    std::vector<EntryStatement *> entryPoints; // ENTRY
    std::vector<Word> advancedRecords;         // written with ADVANCING
    std::vector<Word> readFiles;               // opened INPUT or I-O, or used by SORT
    size_t firstProcedure = 0;                 // first one after the declaratives

    Reference *functionResult = nullptr; // FUNCTION-ID: RETURNING, the last parameter as well

    // meaning
    uint32_t number = 0;
    std::string cName;
    std::vector<Item *> indexNames;
    struct Names *names = nullptr; // meaning/names.h
};

// A compilation group: the outermost programs of one source.
struct Group {
    std::vector<Token> tokens;
    std::vector<Program *> programs;
    bool embedded = false; // there are EXEC blocks: names may be missing for them
    const Spot &spot(Tok at) const { return tokens[at].spot; }
};

} // namespace kvrcob
