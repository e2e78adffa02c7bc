// Not built yet.
#include "cobol/emit/emitter.h"

namespace kvrcob {

void Emitter::sortStatement(const SortStatement &s) { notBuilt(s.at, "the statement " + wordText(s.verb)); }
void Emitter::releaseStatement(const FileStatement &s) { notBuilt(s.at, "the statement " + wordText(s.verb)); }
void Emitter::returnStatement(const FileStatement &s) { notBuilt(s.at, "the statement " + wordText(s.verb)); }

} // namespace kvrcob
