// The tree of a program, as the parser makes it and `meaning` completes it; its statements are in
// statements.h.
//
// A node names its place by the index of its token. Nodes live as long as the compilation: they are
// made with `make<T>()` and never freed. Fields under "meaning" are empty after parsing;
// meaning/layout.cpp and meaning/programs.cpp fill them.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cobol/syntax/statements.h"

namespace kvrcob {

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
};

// A PERFORM of procedures, by the index of the procedure that it is in.
struct Performed {
    size_t in = 0;
    ProcedureName first, last;
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
    CompX,
    Comp6
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
    bool based = false;     // BASED: in storage of ALLOCATE
    bool anyLength = false; // as long as the argument
    bool broken = false;    // its description has an error, which was told
    bool isTypedef = false; // TYPEDEF: no storage, copied by TYPE
    bool sameAs = false;
    Reference *describedBy = nullptr; // TYPE, SAME AS
    bool nativeBinary = false;        // BINARY-CHAR and its like: size in nativeSize
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
    std::vector<Item *> types; // meaning: TYPEDEFs

    // procedures
    bool hasProcedures = false;
    Tok procedureAt = 0, endAt = 0;
    std::vector<CallStatement::Argument> parameters; // PROCEDURE DIVISION USING
    Reference *returning = nullptr;
    std::vector<Procedure> procedures;
    std::vector<Performed> performed;
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
    std::vector<Program *> elsewhere;                        // functions (FUNCTION-ID) of the command's other sources
    std::map<std::string, std::string, std::less<>> defines; // -D, >>DEFINE: those with one value
    bool embedded = false;                                   // there are EXEC blocks: names may be missing for them
    const Spot &spot(Tok at) const { return tokens[at].spot; }
};

} // namespace kvrcob
