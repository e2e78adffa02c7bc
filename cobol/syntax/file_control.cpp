// INPUT-OUTPUT SECTION: FILE-CONTROL and I-O-CONTROL.
#include "cobol/syntax/parser.h"

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
