// Intrinsic functions.
#include "cobol/emit/emitter.h"

namespace kvrcob {

bool Emitter::functionIsNumeric(const Expr *) { return true; }

Num Emitter::functionNumber(const Expr *e, int)
{
    notBuilt(e->at, "FUNCTION " + wordText(e->op));
    return Num{};
}

Text Emitter::functionText(const Expr *e)
{
    notBuilt(e->at, "FUNCTION " + wordText(e->op));
    Text t;
    t.good = false;
    return t;
}

} // namespace kvrcob
