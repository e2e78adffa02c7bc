// The parser: tokens to trees, by recursive descent. One file a division or group of statements:
//
//   parser.cpp                the tools: looking at words, expecting them, recovering from errors
//   identification.cpp        programs, nesting, IDENTIFICATION DIVISION
//   environment_division.cpp  SPECIAL-NAMES; file_control.cpp, select_entry.cpp the files
//   data_division.cpp         its sections, and records as trees; file_description.cpp FD and SD
//   data_description.cpp      an item's entry; data_clauses.cpp, usages.cpp its longer clauses
//   procedure_division.cpp    sections, paragraphs, sentences, the table of verbs
//   operands.cpp              literals and identifiers
//   expressions.cpp           arithmetic; conditions.cpp relations, AND, OR, NOT
//   arithmetic.cpp moves.cpp control.cpp console.cpp calls.cpp files.cpp sorting.cpp strings.cpp
//   searching.cpp xml.cpp     statements
//
// After an error the parser is in panic: it says no more until the next verb, period or header.
#pragma once

#include <set>

#include "cobol/syntax/tree.h"

namespace kvrcob {

class Parser {
public:
    explicit Parser(Group &group) : group_(group), tokens_(group.tokens) {}
    void parse();

private:
    // ---- parser.cpp
    const Token &now() const { return tokens_[position_]; }
    const Token &ahead(size_t n = 1) const
    {
        return tokens_[position_ + n < tokens_.size() ? position_ + n : tokens_.size() - 1];
    }
    Tok here() const { return static_cast<Tok>(position_); }
    bool at(Word word) const { return now().kind == TokenKind::Name && now().word == word; }
    bool at(Word a, Word b) const { return at(a) && ahead().kind == TokenKind::Name && ahead().word == b; }
    bool atMark(uint32_t mark) const { return now().kind == TokenKind::Punct && now().word == mark; }
    bool atEnd() const { return now().kind == TokenKind::End; }
    bool atName() const; // a user-defined word
    bool atNumber() const { return now().kind == TokenKind::Number; }
    bool atString() const { return now().kind == TokenKind::String; }
    bool aheadIs(size_t n, Word word) const { return ahead(n).kind == TokenKind::Name && ahead(n).word == word; }
    void step()
    {
        if (position_ + 1 < tokens_.size()) position_++;
    }
    bool take(Word word);
    bool takeMark(uint32_t mark);
    bool expect(Word word);
    void expectPeriod();
    void error(const std::string &text);
    void errorAt(Tok at, const std::string &text);
    void warn(const char *name, Tok at, const std::string &text);
    void notBuilt(Tok at, const std::string &phrase);
    std::string shown() const; // the present token, for messages
    void skipToPeriod();
    void endOfEntry(); // takes its period; after an error all up to it
    void skipToDataEntry();
    void skipToVerb();
    void recover();
    void lostWord();
    bool deep(); // nesting is too deep; reports
    struct Depth {
        Parser &parser;
        explicit Depth(Parser &p) : parser(p) { p.depth_++; }
        ~Depth() { parser.depth_--; }
    };

    // ---- identification.cpp
    Program *program(Program *parent);
    bool atProgramStart() const;
    std::string headerLike() const;
    bool atProgramId() const { return (at(K_PROGRAM_ID) || at(K_FUNCTION_ID)) && ahead().kind == TokenKind::Punct; }
    bool atProgramEnd() const { return at(K_END, K_PROGRAM) || at(K_END, K_FUNCTION); }
    void programHeader(Program &program);
    bool programName(Program &program);
    void checkSymbol();
    void programAttributes(Program &program);
    void divisions(Program &program);
    void functionHeader(Program &program);
    void containedPrograms(Program &program);
    bool endsLater(const Program &program) const;
    void endProgram(Program &program);

    // ---- environment_division.cpp
    void environmentDivision(Program &program);
    void configurationSection(Program &program);
    void sourceComputer(Program &program);
    void objectComputer(Program &program);
    void repository(Program &program);
    void specialNames(Program &program);
    void specialNamesClause(Program &program);
    void currencyClause(Program &program);
    void alphabetClause(Program &program);
    bool atOldAlphabet() const;
    void classClause(Program &program);
    void symbolicClause(Program &program);
    bool mnemonicClause(Program &program);
    void inputOutputSection(Program &program);
    void ioControl(Program &program);
    File *findFile(Program &program, Word name);
    bool atSectionOrDivision() const;

    // ---- select_entry.cpp
    void selectEntry(Program &program);
    void selectClause(File &file);
    void assignClause(File &file);
    bool assignmentWord(File &file, bool &any);
    void organizationClause(File &file);
    void relativeKeyClause(File &file);
    void accessClause(File &file);
    void recordKeyClause(File &file);
    std::vector<Reference *> keyParts();
    void lockModeClause(File &file);
    void sharingClause(File &file);

    // ---- data_division.cpp
    void dataDivision(Program &program);
    void fileSection(Program &program);
    void records(Program &program, Item::Section section, File *file);
    struct OpenRecord;
    void placeCondition(Item *item, OpenRecord &open);
    void placeRenames(Item *item, OpenRecord &open);
    void placeItem(Item *item, OpenRecord &open);

    // ---- file_description.cpp
    void fileDescription(Program &program);
    File *describedFile(Program &program);
    void fileClause(File &file);
    void passNames();
    void recordClause(File &file);
    void valueOfClause(File &file);
    void linageClause(File &file);

    // ---- data_description.cpp
    Item *dataDescription(Program &program, Item::Section section);
    bool nameOfItem(Item &item);
    void constantEntry(Item &item);
    Expr *definedNumber();
    void conditionEntry(Item &item);
    bool dataClause(Program &program, Item &item);
    // data_clauses.cpp
    bool pictureClause(Item &item);
    void signClause(Item &item);
    void occursClause(Program &program, Item &item);
    void occursPhrases(Program &program, Item &item);
    void valueClause(Item &item);
    // usages.cpp
    void usageClause(Item &item);
    bool atUsage() const;
    bool atUsageAlone(int level) const;

    // ---- procedure_division.cpp
    void procedureDivision(Program &program);
    void paragraphs(Program &program, bool declaratives);
    void procedureHeader(Program &program, bool declaratives, int &section);
    bool lateDivision();
    void noStatement();
    void useStatement(Program &program, size_t procedure);
    bool atLabelProcedure() const;
    void sentences(Procedure &procedure);
    bool atVerb() const;
    bool atProcedureHeader() const;
    bool atBareHeader() const;
    bool atLostHeader() const;
    void seeNames();
    Statement *statement();
    void block(Block &out);
    template <class T>
    T *begin()
    {
        T *node = make<T>();
        node->verb = now().word;
        node->at = here();
        step();
        return node;
    }
    // ON x / NOT ON x: `lead` are the words that may come before (AT, ON), `words` those that make
    // it.
    bool phrases(Phrases &out, Word lead, Word first, Word second);
    bool atPhrase(Word lead, Word first, Word second, size_t from = 0) const;
    ProcedureName procedureName();
    bool atProcedureName() const;
    friend struct VerbRow;

    // ---- operands.cpp, expressions.cpp, conditions.cpp
    Expr *expression(); // arithmetic
    Expr *condition();  // or any of the rest
    Expr *operand();    // identifier, literal, figurative constant, function
    Expr *literal();    // with sign
    const Expr *joinedConstant() const;
    bool atWholeFloat() const;
    Expr *unsignedNumber();
    Reference *identifier();
    Reference *fileOrName(); // without subscripts
    bool atOperand() const;
    bool atFunctionName() const;
    bool atFigurative() const;
    Expr *orCondition();
    Expr *andCondition();
    Expr *notCondition();
    Expr *relation();
    Expr *testNode(ExprKind kind, Word test, Expr *left, bool negated);
    Expr *wordTest(Expr *left, bool is, bool negated);
    Expr *joined(ExprKind kind, Expr *left, Expr *(Parser::*right)());
    Expr *additive();
    Expr *multiplicative();
    Expr *power();
    Expr *unary();
    Expr *primary();
    Expr *functionCall();
    bool beginsRefmod(size_t open) const;
    void subscriptsAndRefmod(Reference &ref);
    uint32_t relationalOperator(); // 0: none; takes its words
    bool atRelationalOperator() const;
    bool atRelationAlone() const;
    Expr *node(ExprKind kind, Tok at);
    Expr *number(std::string_view text, Tok at);
    bool parseInteger(int64_t &value);

    // ---- statements
    Statement *addStatement();
    Statement *subtractStatement();
    Statement *multiplyStatement();
    Statement *divideStatement();
    Statement *computeStatement();
    Rounding roundedPhrase();
    void arithmeticTargets(std::vector<Target> &targets);
    void correspondingGroups(ArithmeticStatement &s, Word preposition);
    void operandsOfSum(ArithmeticStatement &s);
    void operandOfGiving(ArithmeticStatement &s);
    void sizeError(Phrases &out);

    Statement *moveStatement();
    Statement *initializeStatement();
    Statement *setStatement();
    Statement *allocateStatement();
    Statement *freeStatement();

    Statement *ifStatement();
    Statement *onStatement();
    Statement *evaluateStatement();
    Expr *evaluateOperand(bool object);
    Statement *performStatement();
    bool atPerformedName();
    void performPhrases(PerformStatement &s);
    void varyingPhrases(PerformStatement &s);
    void inlineBody(PerformStatement &s);
    Statement *goStatement();
    Statement *alterStatement();
    Statement *exitStatement();
    Statement *continueStatement();
    Statement *nextSentence();
    Statement *stopStatement();
    Statement *gobackStatement();

    Statement *displayStatement();
    Statement *acceptStatement();
    Statement *exhibitStatement();

    Statement *callStatement();
    Statement *cancelStatement();
    Statement *entryStatement();
    void usingPhrase(std::vector<CallStatement::Argument> &arguments);

    Statement *openStatement();
    Statement *closeStatement();
    Statement *readStatement();
    void retryPhrase(FileStatement &s);
    bool fileName(FileStatement &s);
    bool invalidPhrases(FileStatement &s);
    bool lockPhrase(FileStatement &s);
    void recordOrFile(FileStatement &s);
    void sharingPhrase(Word &sharing);
    Statement *writeStatement();
    Statement *rewriteStatement();
    Statement *deleteStatement();
    Statement *startStatement();
    Statement *unlockStatement();

    Statement *sortStatement();
    Statement *releaseStatement();
    Statement *returnStatement();
    bool sortKeys(std::vector<SortKey> &keys);

    Statement *stringStatement();
    Statement *unstringStatement();
    Statement *inspectStatement();
    Statement *examineStatement();
    Statement *transformStatement();
    void beforeAfter(InspectStatement::Phrase &phrase);
    bool atCounter();
    bool atTallyingMode() const;
    bool atReplacingMode() const;
    void tallyingPhrases(InspectStatement &s);
    void replacingPhrases(InspectStatement &s);
    void convertingPhrase(InspectStatement &s);

    Statement *searchStatement();

    Statement *xmlStatement();
    Statement *xmlParse();
    Statement *xmlGenerate();

    Statement *notBuiltStatement();
    void execBlock(Tok start);
    Statement *enterStatement();
    Statement *noteStatement();
    Statement *traceStatement();
    Statement *serviceStatement();

    Group &group_;
    std::vector<Token> &tokens_;
    size_t position_ = 0;
    bool panic_ = false;
    bool lost_ = false; // an error was told in this sentence: what ends its statements may be left over
    bool tooDeep_ = false;
    bool firstSentence_ = false; // of a procedure
    int depth_ = 0;
    bool inProcedures_ = false;
    std::set<Word> declared_;   // words of kvrcob that are names of items and files
    std::set<Word> tableNames_; // names of items that need subscripts
    std::set<Word> dataNames_;  // names of all items
    std::vector<bool> seen_;    // words that the source has before the present PROCEDURE DIVISION
    size_t seenTo_ = 0;
    // Where "A -1" are two operands: among those of DISPLAY and ADD, and in a function's, where
    // "A (B)" may be two as well.
    enum Listing : uint8_t { NoList, OperandList, FunctionList } inArguments_ = NoList;
    Program *program_ = nullptr;
};

} // namespace kvrcob
