// FD and SD: the clauses of a file description, and the records after it.
#include "cobol/syntax/parser.h"

namespace kvrcob {

// The file that FD or SD names; one of its own if no SELECT does.
File *Parser::describedFile(Program &p)
{
    File *f = atName() ? findFile(p, now().word) : nullptr;
    if (!f) {
        if (atName())
            error("the file " + wordText(now().word) + " has no SELECT");
        else
            error("expected the file's name before " + shown());
        panic_ = false;
        f = make<File>();
        f->program = &p;
        f->name = now().word;
        p.files.push_back(f);
    }
    if (f->described) {
        error("the file " + wordText(f->name) + " has a description already");
        panic_ = false;
    }
    f->described = true;
    f->at = here();
    step();
    return f;
}

void Parser::fileDescription(Program &p)
{
    bool sort = at(K_SD);
    step();
    File *f = describedFile(p);
    f->sortFile = sort;
    while (!atMark('.') && !atEnd() && !panic_) {
        take(K_IS);
        fileClause(*f);
    }
    endOfEntry();
    records(p, Item::FileSection, f);
}

void Parser::fileClause(File &f)
{
    // DATA RECORD IS may lack its first word.
    bool dataRecord = at(K_DATA) || (at(K_RECORD) && (aheadIs(1, K_IS) || aheadIs(1, K_ARE)) && !aheadIs(2, K_VARYING));
    if (take(K_EXTERNAL)) {
        f.external = true;
    } else if (take(K_GLOBAL)) {
        f.global = true;
    } else if (take(K_BLOCK)) {
        take(K_CONTAINS);
        int64_t n;
        parseInteger(n);
        if (take(K_TO)) parseInteger(n);
        take(K_RECORDS);
        take(K_CHARACTERS);
    } else if (dataRecord) {
        take(K_DATA);
        take(K_RECORD);
        take(K_RECORDS);
        take(K_IS);
        take(K_ARE);
        passNames();
    } else if (take(K_RECORD)) {
        recordClause(f);
    } else if (at(K_LABEL)) {
        warn("obsolete", here(), "LABEL RECORDS is obsolete");
        step();
        take(K_RECORDS);
        take(K_RECORD);
        take(K_IS);
        take(K_ARE);
        if (!take(K_STANDARD) && !take(K_OMITTED)) passNames();
    } else if (take(K_VALUE)) {
        valueOfClause(f);
    } else if (take(K_LINAGE)) {
        linageClause(f);
    } else if (take(K_CODE_SET)) {
        take(K_IS);
        if (atName()) {
            f.codeSet = now().word;
            step();
        } else {
            error("expected the alphabet's name before " + shown());
        }
    } else if (take(K_RECORDING)) {
        take(K_MODE);
        take(K_IS);
        f.recordingMode = std::string(now().text);
        if (!atMark('.')) step();
    } else if (at(K_REPORT) || at(K_REPORTS)) {
        notBuilt(here(), "REPORT IS (the report writer)");
    } else {
        error("expected a clause of the file description before " + shown());
    }
}

// The words of a file description that name something and count no further: DATA RECORD IS name.
void Parser::passNames()
{
    while (atName() && !at(K_RECORDING)) step();
}

// RECORD CONTAINS 80, RECORD CONTAINS 10 TO 80, RECORD VARYING FROM 10 TO 80 DEPENDING ON x.
void Parser::recordClause(File &f)
{
    take(K_IS);
    f.hasRecordClause = true;
    bool varying = take(K_VARYING);
    if (varying) {
        take(K_IN);
        take(K_SIZE);
        take(K_FROM);
    } else {
        take(K_CONTAINS);
    }
    int64_t low = 0, high = 0;
    bool sized = varying ? atNumber() && parseInteger(low) : parseInteger(low);
    if (sized) f.recordMin = static_cast<uint32_t>(low);
    if (sized && !varying) f.recordMax = f.recordMin;
    if ((sized || varying) && take(K_TO)) {
        parseInteger(high);
        f.recordMax = static_cast<uint32_t>(high);
        varying = true;
    }
    if (varying) f.recordVarying = true;
    if (!sized && !varying) return;
    take(K_CHARACTERS);
    if (take(K_DEPENDING)) {
        take(K_ON);
        f.recordDepending = identifier();
    }
}

// VALUE OF name IS value: only the name of the file counts.
void Parser::valueOfClause(File &f)
{
    take(K_OF);
    while (now().kind == TokenKind::Name && !atMark('.') && !at(K_RECORD) && !at(K_DATA) && !at(K_LABEL) &&
           !at(K_BLOCK) && !at(K_LINAGE) && !at(K_CODE_SET) && !at(K_REPORT) && !at(K_REPORTS) && !at(K_RECORDING) &&
           !at(K_IS) && !at(K_EXTERNAL) && !at(K_GLOBAL)) {
        std::string name = wordText(now().word);
        bool fileId = name == "FILE-ID" || name == "ID" || name == "IDENTIFICATION";
        step();
        take(K_IS);
        Expr *value = nullptr;
        if (atString() || atNumber() || atFigurative()) {
            value = literal();
        } else if (atName()) {
            value = node(ExprKind::Reference, here());
            value->ref = identifier();
        }
        if (!fileId) continue;
        f.valueOfFileId = value;
        if (value && value->kind == ExprKind::Reference && !f.assign && !f.assignItem) f.assignItem = value->ref;
    }
}

void Parser::linageClause(File &f)
{
    take(K_IS);
    f.linage = operand();
    take(K_LINES);
    for (;;) {
        if (at(K_WITH) && aheadIs(1, K_FOOTING)) step();
        if (take(K_FOOTING)) {
            take(K_AT);
            f.footing = operand();
            continue;
        }
        if (at(K_LINES) && (aheadIs(1, K_AT) || aheadIs(1, K_TOP) || aheadIs(1, K_BOTTOM))) step();
        if (at(K_AT) && (aheadIs(1, K_TOP) || aheadIs(1, K_BOTTOM))) step();
        if (!at(K_TOP) && !at(K_BOTTOM)) return;
        Expr *&margin = at(K_TOP) ? f.top : f.bottom;
        step();
        margin = operand();
        take(K_LINES);
    }
}

} // namespace kvrcob
