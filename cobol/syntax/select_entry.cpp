// SELECT: the clauses of a file's entry in FILE-CONTROL.
#include "cobol/syntax/parser.h"

#include <algorithm>
#include <iterator>

namespace kvrcob {

// Clauses of 1968 and of other systems: limits of a file, the order in which it is processed, keys
// that the program does not need to be told of.
static bool isOldClause(const Token &token)
{
    static const char *const leads[] = {"FILE-LIMIT", "FILE-LIMITS", "PROCESSING", "ACTUAL", "NOMINAL", "PASSWORD"};
    return token.kind == TokenKind::Name && std::any_of(std::begin(leads), std::end(leads),
                                                        [&](const char *lead) { return wordText(token.word) == lead; });
}

void Parser::selectEntry(Program &p)
{
    step();
    File *f = make<File>();
    f->program = &p;
    f->selected = true;
    if (take(K_OPTIONAL)) f->optional = true;
    if (take(K_NOT)) take(K_OPTIONAL);
    f->at = here();
    if (!atName()) {
        error("expected the file's name before " + shown());
        skipToPeriod();
        return;
    }
    f->name = now().word;
    if (f->name < K_count) declared_.insert(f->name);
    step();
    for (const File *other : p.files)
        if (other->name == f->name) {
            errorAt(f->at, "the file " + wordText(f->name) + " has a SELECT already");
            panic_ = false;
        }
    p.files.push_back(f);
    while (!atMark('.') && !atEnd() && !at(K_SELECT) && !panic_ && !atSectionOrDivision()) selectClause(*f);
    endOfEntry();
}

void Parser::selectClause(File &f)
{
    Tok clause = here();
    if (take(K_ASSIGN)) {
        assignClause(f);
    } else if (take(K_RESERVE)) {
        if (atNumber() || at(K_NO)) step();
        take(K_ALTERNATE);
        take(K_AREA);
        take(K_AREAS);
    } else if (at(K_ORGANIZATION) || at(K_SEQUENTIAL) || at(K_RELATIVE) || at(K_INDEXED) || at(K_LINE) ||
               ((at(K_RECORD) || at(K_BINARY)) && aheadIs(1, K_SEQUENTIAL))) {
        organizationClause(f);
    } else if (isOldClause(now())) {
        warn("obsolete", here(), wordText(now().word) + " has no effect");
        step();
        while (!atEnd() && !atMark('.') && !at(K_ASSIGN) && !at(K_RESERVE) && !at(K_ORGANIZATION) && !at(K_ACCESS) &&
               !at(K_RECORD) && !at(K_ALTERNATE) && !at(K_FILE) && !at(K_STATUS))
            step();
    } else if (take(K_PADDING)) {
        take(K_CHARACTER);
        take(K_IS);
        if (atString() || atFigurative())
            literal();
        else
            identifier();
    } else if (at(K_RECORD) && aheadIs(1, K_DELIMITER)) {
        step();
        step();
        take(K_IS);
        if (!take(K_STANDARD_1)) step();
    } else if (take(K_ACCESS)) {
        accessClause(f);
    } else if (take(K_RECORD)) {
        recordKeyClause(f);
    } else if (take(K_ALTERNATE)) {
        take(K_RECORD);
        take(K_KEY);
        take(K_IS);
        File::AlternateKey key{identifier(), false, {}};
        key.parts = keyParts();
        if (at(K_WITH) && (aheadIs(1, K_DUPLICATES) || (aheadIs(1, K_NO) && aheadIs(2, K_DUPLICATES)))) step();
        bool none = take(K_NO);
        if (take(K_DUPLICATES)) key.duplicates = !none;
        f.alternateKeys.push_back(key);
    } else if (at(K_STATUS) || (at(K_FILE) && (aheadIs(1, K_STATUS) || aheadIs(2, K_STATUS)))) {
        take(K_FILE);
        take(K_STATUS);
        take(K_IS);
        f.status = identifier();
        if (atName() && !at(K_SHARING) && !at(K_LOCK)) f.status2 = identifier();
    } else if (take(K_LOCK)) {
        lockModeClause(f);
    } else if (take(K_SHARING)) {
        sharingClause(f);
    } else {
        errorAt(clause, "expected a clause of SELECT before " + shown());
    }
}

// Where the file is: devices, a literal, an item, or the name under which the environment has it.
void Parser::assignClause(File &f)
{
    take(K_TO);
    bool any = false;
    while (assignmentWord(f, any)) {
    }
    while (atString() || (atName() && !at(K_FILE) && !at(K_SHARING) && !at(K_INDEXED) && !isOldClause(now()))) {
        if (atString()) {
            Expr *e = literal();
            if (!f.assign) f.assign = e;
        } else {
            Reference *ref = identifier();
            if (!f.assign && !f.assignItem) f.assignItem = ref;
        }
        any = true;
    }
    if (!any && atNumber()) {
        f.assign = literal();
        f.assign->kind = ExprKind::String;
        any = true;
    }
    if (!any) error("expected a file's assignment before " + shown());
    if (at(K_FOR) && aheadIs(1, K_MULTIPLE)) {
        step();
        step();
        if (at(K_REEL) || at(K_UNIT)) step();
    }
}

// A word of ASSIGN before the name; `any`: a device was named.
bool Parser::assignmentWord(File &f, bool &any)
{
    if (take(K_DYNAMIC) || take(K_VARYING) || take(K_USING) || (any && take(K_FROM))) {
        f.assignDynamic = true;
    } else if (take(K_EXTERNAL)) {
        f.assignExternal = true;
    } else if (at(K_DISK) || at(K_PRINTER) || at(K_KEYBOARD) || at(K_DISPLAY) || at(K_TAPE) || at(K_DISC)) {
        f.device = now().word;
        step();
        any = true;
    } else if (at(K_SORT) || at(K_MERGE) || at(K_RANDOM) || at(K_INPUT) || at(K_OUTPUT) ||
               (at(K_FILE) && (ahead().kind == TokenKind::String || ahead().kind == TokenKind::Name) &&
                !aheadIs(1, K_STATUS))) {
        step(); // a device as some systems have it; the file's own name then says which
        any = true;
    } else if (at(K_LINE) && aheadIs(1, K_ADVANCING)) {
        step();
        step();
        take(K_FILE);
        f.device = K_PRINTER;
    } else {
        return false;
    }
    return true;
}

void Parser::organizationClause(File &f)
{
    if (take(K_ORGANIZATION)) take(K_IS);
    // RELATIVE KEY IS name, of which two words may be left out.
    bool named = aheadIs(1, K_IS) || (ahead().kind == TokenKind::Name && !isReserved(ahead().word) &&
                                      !aheadIs(1, K_SHARING) && !isOldClause(ahead()));
    if (at(K_RELATIVE) && (aheadIs(1, K_KEY) || named ||
                           (!aheadIs(1, K_ORGANIZATION) && f.hasOrganization && f.organization == K_RELATIVE))) {
        relativeKeyClause(f);
        return;
    }
    f.hasOrganization = true;
    if (take(K_LINE)) {
        take(K_SEQUENTIAL);
        f.organization = K_LINE;
    } else if (take(K_RECORD) || take(K_BINARY)) {
        take(K_SEQUENTIAL);
        f.organization = K_SEQUENTIAL;
    } else if (at(K_SEQUENTIAL) || at(K_RELATIVE) || at(K_INDEXED)) {
        f.organization = now().word;
        step();
    } else {
        error("expected an organization before " + shown());
    }
}

void Parser::relativeKeyClause(File &f)
{
    step();
    take(K_KEY);
    take(K_IS);
    f.relativeKey = identifier();
}

void Parser::accessClause(File &f)
{
    take(K_MODE);
    take(K_IS);
    if (at(K_SEQUENTIAL) || at(K_RANDOM) || at(K_DYNAMIC)) {
        f.access = now().word;
        step();
    } else {
        error("expected SEQUENTIAL, RANDOM or DYNAMIC before " + shown());
    }
    if (at(K_RELATIVE)) relativeKeyClause(f); // ACCESS MODE IS SEQUENTIAL, RELATIVE name
}

void Parser::recordKeyClause(File &f)
{
    take(K_KEY);
    take(K_IS);
    f.recordKey = identifier();
    f.recordKeyParts = keyParts();
    if (at(K_WITH) && aheadIs(1, K_DUPLICATES)) notBuilt(here(), "WITH DUPLICATES of a primary key");
    if (at(K_WITH) && aheadIs(1, K_NO) && aheadIs(2, K_DUPLICATES)) step();
    if (at(K_NO) && aheadIs(1, K_DUPLICATES)) {
        step();
        step();
    }
}

// RECORD KEY IS name = part part ..., or name SOURCE IS part part ...: a split key.
std::vector<Reference *> Parser::keyParts()
{
    std::vector<Reference *> parts;
    if (take(K_SOURCE))
        take(K_IS);
    else if (!takeMark('='))
        return parts;
    do parts.push_back(identifier());
    while (!panic_ && atName() && !at(K_LOCK) && !at(K_SHARING) && !at(K_STATUS) && !at(K_ACCESS) &&
           !at(K_ORGANIZATION) && !at(K_RESERVE) && !at(K_PADDING));
    return parts;
}

void Parser::lockModeClause(File &f)
{
    take(K_MODE);
    take(K_IS);
    if (at(K_MANUAL) || at(K_AUTOMATIC) || at(K_EXCLUSIVE)) {
        f.lockMode = now().word;
        step();
    } else {
        error("expected MANUAL, AUTOMATIC or EXCLUSIVE before " + shown());
    }
    if (at(K_WITH)) step();
    if (take(K_LOCK)) {
        take(K_ON);
        if (take(K_MULTIPLE)) f.lockMultiple = true;
        take(K_RECORD);
        take(K_RECORDS);
    }
}

void Parser::sharingClause(File &f)
{
    take(K_WITH);
    if (take(K_ALL)) {
        take(K_OTHER);
        f.sharing = K_ALL;
    } else if (take(K_NO)) {
        take(K_OTHER);
        f.sharing = K_NO;
    } else if (take(K_READ)) {
        take(K_ONLY);
        f.sharing = K_READ;
    } else {
        error("expected ALL, NO or READ before " + shown());
    }
}

} // namespace kvrcob
