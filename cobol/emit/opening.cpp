// OPEN, CLOSE, DELETE FILE: what goes with a file as a whole.
#include "cobol/emit/emitter.h"

namespace kvrcob {

// A file that several programs share has one FCB. Before a statement it takes what is the
// program's own: the index of its attributes, its USE procedures.
void Emitter::prepare(const File &f)
{
    verbBegins(f);
    if (f.external) put("F", f.number, "->index = ", f.index, ";\n");
    if (f.external || (f.global && (program_ != f.program || !f.program->nested.empty())))
        put("F", f.number, "->useTable = ", fileRecords_.useTable(*program_, f), ";\n");
}

void Emitter::linageValues(const File &f)
{
    if (!f.linage) return;
    const Expr *values[4] = {f.linage, f.footing, f.top, f.bottom};
    for (int i = 0; i < 4; i++) {
        if (!values[i]) continue;
        put("I", f.number, ".linage[", i, "].value = (uint32_t)", integer(values[i]), ";\n");
    }
}

std::string shareMode(const File &f, Word sharing)
{
    const char *others = sharing == K_ALL                                             ? "ZVK_FILE_SHARE_ALL"
                         : sharing == K_READ                                          ? "ZVK_FILE_SHARE_READ"
                         : sharing == K_NO || (!sharing && f.lockMode == K_EXCLUSIVE) ? "ZVK_FILE_SHARE_NONE"
                                                                                      : "0";
    return cat(others, f.lockMultiple ? " | ZVK_FILE_LOCK_COUNT" : "");
}

// The name of the file that an item holds at this moment.
void Emitter::assignment(const File &f)
{
    if (!f.assignItem || f.assignExternal) return;
    Item *item = meaning_.resolve(*f.program, *f.assignItem, true);
    if (!item || item->isConstant || item->level == 88) return;
    Loc loc = locate(*f.assignItem);
    if (loc.good())
        put("I", f.number, ".fib.assignmentLength = ", emits(Do::Assignment, Of::Text), "(N", f.number, ", ",
            loc.address, ", ", loc.length, ");\n");
}

bool mayBeGiven(const File &f)
{
    return f.organization == K_SEQUENTIAL && !isPrinted(f) && f.minRecord == f.maxRecord && !f.external &&
           f.device == 0;
}

void Emitter::openGiven(const File &f, bool probe)
{
    inFile_.openGiven = true;
    put(emits(Do::OpenGiven), "(", fcbAndElement(f), ", &I", f.number, ".fib, ", probe ? 1 : 0, ");\n");
}

void Emitter::openStatement(const OpenStatement &s)
{
    for (const OpenStatement::Part &part : s.parts) {
        File *f = meaning_.file(*program_, part.file, part.at);
        if (!f) continue;
        if (f->sortFile) {
            error(part.at, "a sort file is not opened");
            continue;
        }
        if (part.reversed && (part.mode != K_INPUT || f->organization == K_RELATIVE || f->organization == K_INDEXED))
            error(part.at, "REVERSED goes with OPEN INPUT of a sequential file");
        linageValues(*f);
        assignment(*f);
        prepare(*f);
        if (f->program->openShares || program_->openShares) // each OPEN anew: what another one said is over
            put("I", f->number, ".fib.sharing = ", part.sharing || f->sharing || f->lockMode ? 1 : 0, "; I", f->number,
                ".fib.shareMode = ", shareMode(*f, part.sharing ? part.sharing : f->sharing), ";\n");
        const char *mode = part.mode == K_INPUT    ? "ZVK_OPEN_INPUT"
                           : part.mode == K_OUTPUT ? "ZVK_OPEN_OUTPUT"
                           : part.mode == K_I_O    ? "ZVK_OPEN_IO"
                                                   : "ZVK_OPEN_EXTEND";
        put("F", f->number, "->requestedMode = ", mode, part.noRewind ? " | ZVK_OPEN_STATUS_07" : "", "; F", f->number,
            "->statement = 0;\n");
        if ((part.mode != K_OUTPUT || f->readable) && mayBeGiven(*f))
            openGiven(*f, false);
        else
            put("F", f->number, slot(emits(Do::Open)), "(", fcbAndElement(*f), ");\n");
        if (part.reversed) {
            inFile_.reversed = true;
            put(emits(Do::OpenReversed), "(", fcbAndElement(*f), ");\n");
        }
        debugFile(*f, nullptr);
    }
}

void Emitter::closeStatement(const CloseStatement &s)
{
    for (const CloseStatement::Part &part : s.parts) {
        File *f = meaning_.file(*program_, part.file, part.at);
        if (!f) continue;
        if (f->sortFile) {
            error(part.at, "a sort file is not closed");
            continue;
        }
        prepare(*f);
        if (part.reel) {
            // There are no reels: the statement is successful, with status 07, and the file stays
            // open.
            put(emits(Do::CloseReel), "(", fcbAndElement(*f), ");\n");
            debugFile(*f, nullptr);
            continue;
        }
        // A CLOSE of a file that is not open leaves the lock of an earlier CLOSE as it is.
        put("F", f->number, "->closeOptions = F", f->number, "->mode ? ", part.lock ? "ZVK_CLOSE_LOCK" : "0",
            part.noRewind ? " | ZVK_CLOSE_NO_REWIND" : "", " : F", f->number, "->lastCloseOptions & ZVK_CLOSE_LOCK; F",
            f->number, "->statement = 0;\n");
        put("F", f->number, slot(emits(Do::Close)), "(", fcbAndElement(*f), ");\n");
        debugFile(*f, nullptr);
    }
}

void Emitter::deleteFile(const FileStatement &s)
{
    std::vector<std::pair<Word, Tok>> files = s.moreFiles;
    files.insert(files.begin(), {s.file, s.fileAt});
    for (const auto &[name, at] : files) {
        File *f = meaning_.file(*program_, name, at);
        if (!f) continue;
        if (f->sortFile) {
            error(at, "a sort file is not deleted");
            continue;
        }
        assignment(*f);
        prepare(*f);
        inFile_.deleteFile = true;
        put(emits(Do::DeleteFile), "(", fcbAndElement(*f), ", &I", f->number, ".fib);\n");
    }
}

} // namespace kvrcob
