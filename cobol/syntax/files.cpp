// OPEN, CLOSE, READ, WRITE, REWRITE, DELETE, START, UNLOCK.
#include "cobol/syntax/parser.h"

namespace kvrcob {

// SHARING WITH ALL OTHER, NO OTHER, READ ONLY.
void Parser::sharingPhrase(Word &sharing)
{
    if (!take(K_SHARING)) return;
    take(K_WITH);
    if (take(K_ALL))
        sharing = K_ALL;
    else if (take(K_NO))
        sharing = K_NO;
    else if (take(K_READ))
        sharing = K_READ;
    take(K_OTHER);
    take(K_ONLY);
}

Statement *Parser::openStatement()
{
    auto *s = begin<OpenStatement>();
    bool any = false;
    while (at(K_INPUT) || at(K_OUTPUT) || at(K_I_O) || at(K_EXTEND)) {
        Word mode = now().word;
        step();
        Word sharing = 0;
        sharingPhrase(sharing);
        while (atName() && !at(K_SHARING) && !panic_) {
            OpenStatement::Part part;
            part.mode = mode;
            part.file = now().word;
            part.at = here();
            part.sharing = sharing;
            if (program_ && mode != K_OUTPUT && mode != K_EXTEND) program_->readFiles.push_back(part.file);
            step();
            if (take(K_REVERSED)) part.reversed = true;
            if (at(K_WITH) && (aheadIs(1, K_NO) || aheadIs(1, K_LOCK))) step();
            if (take(K_NO)) {
                take(K_REWIND);
                part.noRewind = true;
            }
            if (take(K_LOCK)) part.sharing = K_NO;
            sharingPhrase(part.sharing); // some compilers have it after the file
            if (program_ && part.sharing) program_->openShares = true;
            s->parts.push_back(part);
            any = true;
        }
    }
    if (!any) error("expected INPUT, OUTPUT, I-O or EXTEND and a file before " + shown());
    return s;
}

Statement *Parser::closeStatement()
{
    auto *s = begin<CloseStatement>();
    do {
        CloseStatement::Part part;
        part.file = now().word;
        part.at = here();
        if (!atName()) {
            error("expected a file before " + shown());
            return s;
        }
        step();
        if (take(K_REEL) || take(K_UNIT)) {
            part.reel = true;
            if (at(K_FOR) && aheadIs(1, K_REMOVAL)) step();
            if (take(K_REMOVAL)) part.removal = true;
        }
        if (at(K_WITH) && (aheadIs(1, K_LOCK) || aheadIs(1, K_NO))) step();
        if (take(K_LOCK)) part.lock = true;
        if (at(K_NO) && aheadIs(1, K_REWIND)) {
            step();
            step();
            part.noRewind = true;
        }
        s->parts.push_back(part);
    } while (atName() && !panic_);
    return s;
}

// RETRY n TIMES, RETRY FOR n SECONDS, RETRY FOREVER: how long a locked record is asked for again.
void Parser::retryPhrase(FileStatement &s)
{
    if (!at(K_RETRY)) return;
    step();
    if (take(K_FOREVER)) {
        s.retry = K_FOREVER;
        return;
    }
    take(K_FOR);
    s.retries = operand();
    if (take(K_TIMES))
        s.retry = K_TIMES;
    else if (take(K_SECONDS))
        s.retry = K_SECONDS;
    else
        error("expected TIMES or SECONDS before " + shown());
}

// The file of a statement; false, and told, if there is none.
bool Parser::fileName(FileStatement &s)
{
    s.fileAt = here();
    if (!atName()) {
        error("expected a file before " + shown());
        return false;
    }
    s.file = now().word;
    step();
    return true;
}

// INVALID KEY and NOT INVALID KEY; KEY may be left out. True if there was one.
bool Parser::invalidPhrases(FileStatement &s)
{
    bool any = false;
    while ((at(K_INVALID) || (at(K_NOT) && aheadIs(1, K_INVALID))) && !panic_) {
        const bool negated = at(K_NOT);
        bool &has = negated ? s.invalid.hasNot : s.invalid.has;
        if (has) break;
        if (negated) step();
        step();
        take(K_KEY);
        has = any = true;
        block(negated ? s.invalid.onNot : s.invalid.on);
    }
    return any;
}

// WITH [KEPT] LOCK, WITH NO LOCK, WITH WAIT, WITH IGNORE LOCK, IGNORING LOCK, ADVANCING ON LOCK:
// false if it is none of these.
bool Parser::lockPhrase(FileStatement &s)
{
    if (at(K_WITH) &&
        (aheadIs(1, K_LOCK) || aheadIs(1, K_KEPT) || aheadIs(1, K_NO) || aheadIs(1, K_WAIT) || aheadIs(1, K_IGNORE))) {
        step();
        take(K_KEPT); // a lock that stays beside others, as LOCK ON MULTIPLE RECORDS of the SELECT says
        if (take(K_NO)) {
            s.lock = K_NO;
        } else if (take(K_IGNORE)) {
            s.lock = K_IGNORING;
        } else {
            step();
            s.lock = K_LOCK;
            return true;
        }
    } else if (at(K_ADVANCING) && aheadIs(1, K_ON)) {
        step();
        step();
        s.lock = K_ADVANCING;
    } else if (at(K_IGNORING)) {
        step();
        s.lock = K_IGNORING;
    } else {
        return false;
    }
    take(K_LOCK);
    return true;
}

Statement *Parser::readStatement()
{
    auto *s = begin<FileStatement>();
    if (!fileName(*s)) return s;
    if (take(K_NEXT))
        s->next = true;
    else if (take(K_PREVIOUS))
        s->previous = true;
    take(K_RECORD);
    if (take(K_INTO)) s->into = identifier();
    for (;;) {
        if (panic_) return s;
        if (lockPhrase(*s)) continue;
        if (at(K_RETRY)) {
            retryPhrase(*s);
        } else if (at(K_KEY)) {
            step();
            take(K_IS);
            s->key = identifier();
        } else if (at(K_INTO)) {
            step();
            s->into = identifier();
        } else {
            break;
        }
    }
    for (;;) {
        bool any = phrases(s->end, K_AT, K_END, 0);
        any |= invalidPhrases(*s);
        if (!any || panic_) break;
    }
    take(K_END_READ);
    return s;
}

// What WRITE and REWRITE name: a record, or FILE and a file, whose record then comes FROM an item.
void Parser::recordOrFile(FileStatement &s)
{
    if (!take(K_FILE)) {
        s.record = identifier();
        return;
    }
    s.wholeFile = true;
    s.fileAt = here();
    s.file = now().word;
    if (!atName()) error("expected a file before " + shown());
    step();
    if (!at(K_FROM)) error("expected FROM before " + shown());
}

Statement *Parser::writeStatement()
{
    auto *s = begin<FileStatement>();
    recordOrFile(*s);
    if (take(K_FROM)) s->from = operand();
    if (at(K_BEFORE) || at(K_AFTER)) {
        (at(K_BEFORE) ? s->before : s->after) = true;
        if (program_ && s->record) program_->advancedRecords.push_back(s->record->names[0]);
        step();
        // POSITIONING is an older word: 0 lines are a new page there.
        bool positioning = at(K_POSITIONING) && (ahead().kind == TokenKind::Number || ahead().kind == TokenKind::Name);
        if (positioning) step();
        take(K_ADVANCING);
        if (take(K_PAGE)) {
            s->page = true;
        } else if (positioning && atNumber() && now().text == "0") {
            s->page = true;
            step();
        } else if (positioning && !atNumber()) {
            s->positioning = true;
            s->advancing = operand();
        } else if (atName() && program_) {
            for (const Mnemonic &m : program_->mnemonics)
                if (m.name == now().word) s->mnemonic = m.device;
            if (s->mnemonic)
                step();
            else
                s->advancing = operand();
        } else {
            s->advancing = operand();
        }
        take(K_LINE);
        take(K_LINES);
    }
    for (;;) {
        if (panic_) return s;
        bool negated = at(K_NOT);
        size_t i = negated ? 1 : 0;
        if (aheadIs(i, K_AT)) i++;
        if (!(aheadIs(i, K_END_OF_PAGE) || aheadIs(i, K_EOP))) break;
        if (negated ? s->eop.hasNot : s->eop.has) break;
        if (negated) step();
        take(K_AT);
        step();
        (negated ? s->eop.hasNot : s->eop.has) = true;
        block(negated ? s->eop.onNot : s->eop.on);
    }
    invalidPhrases(*s);
    take(K_END_WRITE);
    return s;
}

Statement *Parser::rewriteStatement()
{
    auto *s = begin<FileStatement>();
    recordOrFile(*s);
    if (take(K_FROM)) s->from = operand();
    retryPhrase(*s);
    if (at(K_WITH) && (aheadIs(1, K_LOCK) || (aheadIs(1, K_NO) && aheadIs(2, K_LOCK)))) {
        step();
        take(K_NO);
        step();
    }
    invalidPhrases(*s);
    take(K_END_REWRITE);
    return s;
}

Statement *Parser::deleteStatement()
{
    auto *s = begin<FileStatement>();
    if (take(K_FILE)) s->wholeFile = true;
    if (!fileName(*s)) return s;
    if (s->wholeFile) {
        while (atName() && !panic_) { // several files: a statement for each
            s->moreFiles.push_back({now().word, here()});
            step();
        }
        take(K_END_DELETE);
        return s;
    }
    take(K_RECORD);
    retryPhrase(*s);
    invalidPhrases(*s);
    take(K_END_DELETE);
    return s;
}

Statement *Parser::startStatement()
{
    auto *s = begin<FileStatement>();
    if (!fileName(*s)) return s;
    if (at(K_FIRST) || at(K_LAST)) {
        s->relation = now().word;
        step();
    } else if (take(K_KEY)) {
        take(K_IS);
        bool negated = take(K_NOT);
        if (!atRelationalOperator()) {
            error("expected a relation before " + shown());
            return s;
        }
        uint32_t op = relationalOperator();
        if (negated) op = op == '=' ? kNotEqual : op == '<' ? kGreaterEqual : op == '>' ? kLessEqual : op;
        s->relation = op;
        s->key = identifier();
        if ((at(K_WITH) && (aheadIs(1, K_SIZE) || aheadIs(1, K_LENGTH))) || at(K_SIZE) || at(K_LENGTH)) {
            take(K_WITH);
            step();
            s->advancing = expression(); // how many characters of the key count
        }
    }
    invalidPhrases(*s);
    take(K_END_START);
    return s;
}

Statement *Parser::unlockStatement()
{
    auto *s = begin<FileStatement>();
    if (!fileName(*s)) return s;
    take(K_RECORD);
    take(K_RECORDS);
    return s;
}

} // namespace kvrcob
