// ENVIRONMENT DIVISION: CONFIGURATION SECTION with SPECIAL-NAMES. The INPUT-OUTPUT SECTION is in
// file_control.cpp.
#include "cobol/syntax/functions.h"
#include "cobol/syntax/parser.h"

#include <algorithm>
#include <cstdlib>

namespace kvrcob {

bool Parser::atSectionOrDivision() const
{
    return now().kind == TokenKind::Name && ahead().kind == TokenKind::Name &&
           (ahead().word == K_SECTION || ahead().word == K_DIVISION);
}

// Headers may be left out, that of the division and those of its sections.
void Parser::environmentDivision(Program &p)
{
    if (at(K_ENVIRONMENT, K_DIVISION)) {
        step();
        step();
        expectPeriod();
        panic_ = false;
    }
    for (;;) {
        if (at(K_CONFIGURATION, K_SECTION)) {
            step();
            step();
            expectPeriod();
            panic_ = false;
            configurationSection(p);
        } else if (at(K_SOURCE_COMPUTER) || at(K_OBJECT_COMPUTER) || at(K_SPECIAL_NAMES) || at(K_REPOSITORY)) {
            configurationSection(p);
        } else if (at(K_INPUT_OUTPUT, K_SECTION)) {
            step();
            step();
            expectPeriod();
            panic_ = false;
            inputOutputSection(p);
        } else if (at(K_FILE_CONTROL) || at(K_I_O_CONTROL)) {
            inputOutputSection(p);
        } else {
            return;
        }
    }
}

void Parser::sourceComputer(Program &p)
{
    while (!atEnd() && !atMark('.') && !atSectionOrDivision() && !at(K_OBJECT_COMPUTER) && !at(K_SPECIAL_NAMES)) {
        if (at(K_DEBUGGING, K_MODE)) p.debugging = true;
        step();
    }
}

void Parser::objectComputer(Program &p)
{
    while (!atEnd() && !atMark('.') && !atSectionOrDivision() && !at(K_SPECIAL_NAMES)) {
        if (at(K_MEMORY)) warn("obsolete", here(), "MEMORY SIZE is obsolete and has no effect");
        if (take(K_SEQUENCE)) {
            take(K_IS);
            p.collatingAt = here();
            p.collating = now().word;
        } else if (at(K_SEGMENT_LIMIT)) {
            warn("obsolete", here(), "SEGMENT-LIMIT has no effect");
        }
        step();
    }
}

// REPOSITORY: functions that need no FUNCTION in front.
void Parser::repository(Program &p)
{
    while (!atEnd() && !atMark('.') && !atSectionOrDivision()) {
        if (!take(K_FUNCTION)) {
            step();
        } else if (take(K_ALL)) {
            p.allFunctions = true;
            take(K_INTRINSIC);
            size_t count = 0;
            const FunctionRow *rows = functionRows(count);
            for (size_t i = 0; i < count; i++) p.functions.insert(internWord(rows[i].name));
        } else {
            while (now().kind == TokenKind::Name && !at(K_FUNCTION) && !at(K_PROGRAM) && !at(K_CLASS)) {
                if (!at(K_INTRINSIC)) p.functions.insert(now().word);
                step();
            }
        }
    }
}

void Parser::configurationSection(Program &p)
{
    static const struct {
        Word header;
        void (Parser::*paragraph)(Program &);
    } paragraphs[] = {
        {K_SOURCE_COMPUTER, &Parser::sourceComputer},
        {K_OBJECT_COMPUTER, &Parser::objectComputer},
        {K_SPECIAL_NAMES, &Parser::specialNames},
        {K_REPOSITORY, &Parser::repository},
    };
    for (;;) {
        panic_ = false;
        auto found =
            std::find_if(std::begin(paragraphs), std::end(paragraphs), [&](auto &row) { return at(row.header); });
        if (found == std::end(paragraphs)) return;
        step();
        takeMark('.');
        (this->*found->paragraph)(p);
        takeMark('.');
    }
}

// CURRENCY SIGN IS "E" [WITH PICTURE SYMBOL "$"]
void Parser::currencyClause(Program &p)
{
    take(K_SIGN);
    take(K_IS);
    if (!atString() || now().text.empty()) {
        error("expected a literal before " + shown());
        return;
    }
    if (now().text.size() == 1)
        p.currency = now().text[0];
    else
        notBuilt(here(), "a CURRENCY SIGN of more than one character");
    step();
    if (!at(K_WITH) && !at(K_PICTURE) && !at(K_PIC)) return;
    take(K_WITH);
    step();
    // After PICTURE the lexer takes any word for a picture.
    if (now().kind == TokenKind::Picture && internWord(now().text) == K_SYMBOL) step();
    take(K_SYMBOL);
    if (now().kind == TokenKind::Picture && now().text.size() == 3) {
        p.currencySymbol = now().text[1];
        step();
    } else if (atString() && now().text.size() == 1) {
        p.currencySymbol = now().text[0];
        step();
    } else {
        error("expected a literal of one character before " + shown());
    }
}

void Parser::specialNamesClause(Program &p)
{
    if (take(K_ALPHABET)) {
        alphabetClause(p);
    } else if (atOldAlphabet()) {
        warn("obsolete", here(), "an alphabet without the word ALPHABET is of older COBOL");
        alphabetClause(p);
    } else if (take(K_CLASS)) {
        classClause(p);
    } else if (take(K_SYMBOLIC)) {
        take(K_CHARACTERS);
        take(K_CHARACTER);
        symbolicClause(p);
    } else if (take(K_CURRENCY)) {
        currencyClause(p);
    } else if (take(K_DECIMAL_POINT)) {
        take(K_IS);
        expect(K_COMMA);
        p.commaIsPoint = true;
    } else if (at(K_CURSOR) || at(K_CRT)) {
        // Both speak of screens only, and the statements for these are told where they are met.
        step();
        take(K_STATUS);
        take(K_IS);
        if (atName()) identifier();
    } else if (at(K_NUMERIC) && aheadIs(1, K_SIGN)) {
        notBuilt(here(), "NUMERIC SIGN of SPECIAL-NAMES");
    } else if (!mnemonicClause(p)) {
        error("expected a clause of SPECIAL-NAMES before " + shown());
    }
}

void Parser::specialNames(Program &p)
{
    while (!atEnd() && !atSectionOrDivision() && !at(K_SOURCE_COMPUTER) && !at(K_OBJECT_COMPUTER) &&
           !at(K_REPOSITORY) && !at(K_FILE_CONTROL)) {
        panic_ = false;
        if (takeMark('.')) continue;
        specialNamesClause(p);
        if (!panic_) continue;
        while (!atEnd() && !atMark('.') && !at(K_ALPHABET) && !at(K_CLASS) && !at(K_SYMBOLIC) && !at(K_CURRENCY) &&
               !at(K_DECIMAL_POINT) && !atSectionOrDivision())
            step();
    }
}

// COBOL of 1974 names an alphabet as it names a device: TENS IS "9" THRU "0".
bool Parser::atOldAlphabet() const
{
    return atName() && aheadIs(1, K_IS) &&
           (aheadIs(2, K_NATIVE) || aheadIs(2, K_STANDARD_1) || ahead(2).kind == TokenKind::String);
}

void Parser::alphabetClause(Program &p)
{
    Alphabet *alphabet = make<Alphabet>();
    alphabet->at = here();
    if (!atName()) {
        error("expected the alphabet's name before " + shown());
        return;
    }
    alphabet->name = now().word;
    step();
    if (at(K_FOR) && aheadIs(1, K_ALPHANUMERIC)) {
        step();
        step();
    }
    take(K_IS);
    p.alphabets.push_back(alphabet);
    if (at(K_NATIVE) || at(K_STANDARD_1) || at(K_STANDARD_2) || at(K_EBCDIC)) {
        alphabet->kind = now().word;
        step();
        return;
    }
    if (now().kind == TokenKind::Name && wordText(now().word) == "ASCII") {
        alphabet->kind = K_STANDARD_1;
        step();
        return;
    }
    while (atString() || atNumber() || atFigurative()) {
        Alphabet::Part part;
        part.from = literal();
        if (take(K_THRU) || take(K_THROUGH)) part.thru = literal();
        while (take(K_ALSO)) part.also.push_back(literal());
        alphabet->parts.push_back(part);
        if (panic_) return;
    }
    if (alphabet->parts.empty()) error("expected the alphabet's characters before " + shown());
}

void Parser::classClause(Program &p)
{
    UserClass *c = make<UserClass>();
    c->at = here();
    if (!atName()) {
        error("expected the class's name before " + shown());
        return;
    }
    c->name = now().word;
    step();
    take(K_IS);
    while (atString() || atNumber() || atFigurative()) {
        ValueRange range;
        range.from = literal();
        if (take(K_THRU) || take(K_THROUGH)) range.to = literal();
        c->ranges.push_back(range);
        if (panic_) return;
    }
    p.classes.push_back(c);
}

void Parser::symbolicClause(Program &p)
{
    // Another list begins only where numbers follow its names: "CONSOLE IS CRT" is the next clause.
    auto atList = [&] {
        size_t n = 0;
        while (ahead(n).kind == TokenKind::Name && !isReserved(ahead(n).word)) n++;
        if (n == 0) return false;
        if (aheadIs(n, K_IS) || aheadIs(n, K_ARE)) n++;
        return ahead(n).kind == TokenKind::Number;
    };
    for (bool first = true; first ? atName() : atList(); first = false) {
        std::vector<Word> names;
        while (atName()) {
            names.push_back(now().word);
            step();
        }
        take(K_IS);
        take(K_ARE);
        size_t from = p.symbolics.size();
        for (Word name : names) {
            int64_t ordinal = 0;
            if (!parseInteger(ordinal)) return;
            if (ordinal < 1 || ordinal > 256) {
                error("a symbolic character's number is from 1 to 256");
                ordinal = 1;
            }
            p.symbolics.push_back({name, static_cast<int>(ordinal), 0});
        }
        if (take(K_IN)) {
            for (size_t i = from; i < p.symbolics.size(); i++) p.symbolics[i].alphabet = now().word;
            step();
        }
    }
}

// device IS mnemonic; switch IS mnemonic ON STATUS IS ... OFF STATUS IS ...
bool Parser::mnemonicClause(Program &p)
{
    if (now().kind != TokenKind::Name && !atString()) return false;
    Mnemonic m;
    m.at = here();
    m.device = internWord(now().text);
    const std::string &device = wordText(m.device);
    if (device.rfind("UPSI-", 0) == 0 && device.size() == 6)
        m.switchNumber = device[5] - '0';
    else if (device.rfind("SWITCH-", 0) == 0)
        m.switchNumber = std::atoi(device.c_str() + 7) - (device == "SWITCH-0" ? 0 : 1);
    else if (device.rfind("SW", 0) == 0 && device.size() >= 3 &&
             device.find_first_not_of("0123456789", 2) == std::string::npos)
        m.switchNumber = std::atoi(device.c_str() + 2);
    step();
    take(K_IS);
    bool named = false;
    if (atName() && !at(K_ON)) {
        m.name = now().word;
        step();
        named = true;
    }
    while (at(K_ON) || at(K_OFF)) {
        bool on = at(K_ON);
        step();
        take(K_STATUS);
        take(K_IS);
        if (!atName()) {
            error("expected a condition-name before " + shown());
            return true;
        }
        (on ? m.onName : m.offName) = now().word;
        step();
        named = true;
    }
    if (!named) {
        error("expected a mnemonic-name before " + shown());
        return true;
    }
    if ((m.onName || m.offName) && m.switchNumber < 0) {
        // Any other device-name with a status phrase is a switch; the first one is number 0.
        int next = 0;
        for (const Mnemonic &other : p.mnemonics)
            if (other.switchNumber >= next) next = other.switchNumber + 1;
        m.switchNumber = next;
    }
    m.switchNumber = m.switchNumber > 7 ? m.switchNumber % 8 : m.switchNumber;
    p.mnemonics.push_back(m);
    return true;
}

} // namespace kvrcob
