// Not built yet.
#include "cobol/emit/emitter.h"

namespace kvrcob {

void Emitter::stringStatement(const StringStatement &s) { notBuilt(s.at, "the statement " + wordText(s.verb)); }
void Emitter::unstringStatement(const UnstringStatement &s) { notBuilt(s.at, "the statement " + wordText(s.verb)); }
void Emitter::inspectStatement(const InspectStatement &s) { notBuilt(s.at, "the statement " + wordText(s.verb)); }

} // namespace kvrcob
