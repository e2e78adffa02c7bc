// Not built yet.
#include "cobol/emit/emitter.h"

namespace kvrcob {

void Emitter::searchStatement(const SearchStatement &s) { notBuilt(s.at, "the statement " + wordText(s.verb)); }

} // namespace kvrcob
