// INPUT-OUTPUT SECTION: SELECT entries, I-O-CONTROL.
#include "cobol/syntax/parser.h"

#include <algorithm>

namespace kvrcob {

void Parser::inputOutputSection(Program &p)
{
    for (;;) {
        panic_ = false;
        if (take(K_FILE_CONTROL)) {
            takeMark('.');
            for (;;) {
                panic_ = false;
                if (takeMark('.')) continue;
                if (!at(K_SELECT)) break;
                selectEntry(p);
            }
        } else if (take(K_I_O_CONTROL)) {
            takeMark('.');
            ioControl(p);
        } else {
            return;
        }
    }
}

// FILE-LIMIT IS, PROCESSING MODE IS, ACTUAL KEY IS, NOMINAL KEY IS, PASSWORD IS of a SELECT.
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
    step();
    for (const File *other : p.files)
        if (other->name == f->name) {
            errorAt(f->at, "the file " + wordText(f->name) + " has a SELECT already");
            panic_ = false;
        }
    p.files.push_back(f);
    while (!atMark('.') && !atEnd() && !at(K_SELECT) && !panic_ && !atSectionOrDivision()) {
        Tok clause = here();
        if (take(K_ASSIGN)) {
            take(K_TO);
            bool any = false;
            for (;;) {
                if (take(K_DYNAMIC) || take(K_VARYING) || (any && take(K_FROM))) {
                    f->assignDynamic = true;
                } else if (at(K_EXTERNAL)) {
                    step();
                    f->assignExternal = true;
                } else if (at(K_DISK) || at(K_PRINTER) || at(K_KEYBOARD) || at(K_DISPLAY) || at(K_TAPE) || at(K_DISC)) {
                    f->device = now().word;
                    step();
                    any = true;
                } else if (at(K_SORT) || at(K_MERGE) || at(K_RANDOM) || at(K_INPUT) || at(K_OUTPUT) ||
                           (at(K_FILE) && (ahead().kind == TokenKind::String || ahead().kind == TokenKind::Name) &&
                            !aheadIs(1, K_STATUS))) {
                    step(); // a device as some systems have it; the file's own name then says which
                    any = true;
                } else if (at(K_USING)) {
                    step();
                    f->assignDynamic = true;
                } else if (at(K_LINE) && aheadIs(1, K_ADVANCING)) {
                    step();
                    step();
                    take(K_FILE);
                    f->device = K_PRINTER;
                } else {
                    break;
                }
            }
            while (atString() || (atName() && !at(K_FILE) && !at(K_SHARING) && !at(K_INDEXED) && !isOldClause(now()))) {
                if (atString()) {
                    Expr *e = literal();
                    if (!f->assign) f->assign = e;
                } else {
                    Reference *ref = identifier();
                    if (!f->assign && !f->assignItem) f->assignItem = ref;
                }
                any = true;
            }
            if (!any && atNumber()) {
                f->assign = literal();
                f->assign->kind = ExprKind::String;
                any = true;
            }
            if (!any) error("expected a file's assignment before " + shown());
            if (at(K_FOR) && aheadIs(1, K_MULTIPLE)) {
                step();
                step();
                if (at(K_REEL) || at(K_UNIT)) step();
            }
        } else if (take(K_RESERVE)) {
            if (atNumber() || at(K_NO)) step();
            take(K_ALTERNATE);
            take(K_AREA);
            take(K_AREAS);
        } else if (at(K_ORGANIZATION) || at(K_SEQUENTIAL) || at(K_RELATIVE) || at(K_INDEXED) || at(K_LINE) ||
                   (at(K_RECORD) && aheadIs(1, K_SEQUENTIAL)) || (at(K_BINARY) && aheadIs(1, K_SEQUENTIAL))) {
            if (take(K_ORGANIZATION)) take(K_IS);
            // RELATIVE KEY IS name, of which two words may be left out.
            bool named = aheadIs(1, K_IS) || (ahead().kind == TokenKind::Name && !isReserved(ahead().word) &&
                                              !aheadIs(1, K_SHARING) && !isOldClause(ahead()));
            if (at(K_RELATIVE) &&
                (aheadIs(1, K_KEY) || named ||
                 (!aheadIs(1, K_ORGANIZATION) && f->hasOrganization && f->organization == K_RELATIVE))) {
                step();
                take(K_KEY);
                take(K_IS);
                f->relativeKey = identifier();
                continue;
            }
            f->hasOrganization = true;
            if (take(K_LINE)) {
                take(K_SEQUENTIAL);
                f->organization = K_LINE;
            } else if (take(K_RECORD) || take(K_BINARY)) {
                take(K_SEQUENTIAL);
                f->organization = K_SEQUENTIAL;
            } else if (at(K_SEQUENTIAL) || at(K_RELATIVE) || at(K_INDEXED)) {
                f->organization = now().word;
                step();
            } else {
                error("expected an organization before " + shown());
            }
        } else if (isOldClause(now())) {
            // Clauses of 1968 and of other systems: limits of a file, the order in which it is
            // processed, keys that the program does not need to be told of.
            warn("obsolete", here(), wordText(now().word) + " has no effect");
            step();
            while (!atEnd() && !atMark('.') && !at(K_ASSIGN) && !at(K_RESERVE) && !at(K_ORGANIZATION) &&
                   !at(K_ACCESS) && !at(K_RECORD) && !at(K_ALTERNATE) && !at(K_FILE) && !at(K_STATUS))
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
            take(K_MODE);
            take(K_IS);
            if (at(K_SEQUENTIAL) || at(K_RANDOM) || at(K_DYNAMIC)) {
                f->access = now().word;
                step();
            } else {
                error("expected SEQUENTIAL, RANDOM or DYNAMIC before " + shown());
            }
            // ACCESS MODE IS SEQUENTIAL, RELATIVE KEY IS ... may follow without KEY.
            if (at(K_RELATIVE)) {
                step();
                take(K_KEY);
                take(K_IS);
                f->relativeKey = identifier();
            }
        } else if (take(K_RECORD)) {
            take(K_KEY);
            take(K_IS);
            f->recordKey = identifier();
            f->recordKeyParts = keyParts();
            if (at(K_WITH) && aheadIs(1, K_DUPLICATES)) notBuilt(here(), "WITH DUPLICATES of a primary key");
            if (at(K_WITH) && aheadIs(1, K_NO) && aheadIs(2, K_DUPLICATES)) step();
            if (at(K_NO) && aheadIs(1, K_DUPLICATES)) {
                step();
                step();
            }
        } else if (take(K_ALTERNATE)) {
            take(K_RECORD);
            take(K_KEY);
            take(K_IS);
            File::AlternateKey key{identifier(), false, {}};
            key.parts = keyParts();
            if (at(K_WITH) && (aheadIs(1, K_DUPLICATES) || (aheadIs(1, K_NO) && aheadIs(2, K_DUPLICATES)))) step();
            bool none = take(K_NO);
            if (take(K_DUPLICATES)) key.duplicates = !none;
            f->alternateKeys.push_back(key);
        } else if ((at(K_FILE) && aheadIs(1, K_STATUS)) || at(K_STATUS) || (at(K_FILE) && aheadIs(2, K_STATUS))) {
            take(K_FILE);
            take(K_STATUS);
            take(K_IS);
            f->status = identifier();
            if (atName() && !at(K_SHARING) && !(at(K_LOCK))) f->status2 = identifier();
        } else if (take(K_LOCK)) {
            take(K_MODE);
            take(K_IS);
            if (at(K_MANUAL) || at(K_AUTOMATIC) || at(K_EXCLUSIVE)) {
                f->lockMode = now().word;
                step();
            } else {
                error("expected MANUAL, AUTOMATIC or EXCLUSIVE before " + shown());
            }
            if (at(K_WITH)) step();
            if (take(K_LOCK)) {
                take(K_ON);
                if (take(K_MULTIPLE)) f->lockMultiple = true;
                take(K_RECORD);
                take(K_RECORDS);
            }
        } else if (take(K_SHARING)) {
            take(K_WITH);
            if (take(K_ALL)) {
                take(K_OTHER);
                f->sharing = K_ALL;
            } else if (take(K_NO)) {
                take(K_OTHER);
                f->sharing = K_NO;
            } else if (take(K_READ)) {
                take(K_ONLY);
                f->sharing = K_READ;
            } else {
                error("expected ALL, NO or READ before " + shown());
            }
        } else {
            errorAt(clause, "expected a clause of SELECT before " + shown());
        }
    }
    if (panic_)
        skipToPeriod();
    else
        expectPeriod();
    panic_ = false;
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

// I-O-CONTROL: SAME RECORD AREA counts; the other clauses have no effect.
void Parser::ioControl(Program &p)
{
    static size_t areas = 0;
    while (!atEnd() && !atSectionOrDivision() && !at(K_FILE_CONTROL) && !atMark('.')) {
        if (take(K_SAME)) {
            bool record = take(K_RECORD);
            if (take(K_SORT) || take(K_SORT_MERGE)) record = false;
            take(K_AREA);
            take(K_FOR);
            areas++;
            while (atName() && wordText(now().word) != "APPLY") {
                File *f = findFile(p, now().word);
                if (!f)
                    error("there is no file " + wordText(now().word));
                else if (record)
                    f->sameArea = areas;
                step();
            }
        } else {
            if (at(K_RERUN) || at(K_MULTIPLE)) warn("obsolete", here(), wordText(now().word) + " has no effect");
            step();
        }
        if (atMark('.') && (ahead().kind == TokenKind::Name &&
                            (ahead().word == K_SAME || ahead().word == K_RERUN || ahead().word == K_MULTIPLE)))
            step();
    }
    takeMark('.');
    panic_ = false;
}

File *Parser::findFile(Program &p, Word name)
{
    for (File *f : p.files)
        if (f->name == name) return f;
    return nullptr;
}

} // namespace kvrcob
