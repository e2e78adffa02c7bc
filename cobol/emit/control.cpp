// IF, EVALUATE, PERFORM, GO TO, ALTER, EXIT, CONTINUE, NEXT SENTENCE, STOP, GOBACK.
//
// The procedures of a program are labels of C functions (procedures.cpp); PERFORM, GO TO and what
// ends a paragraph are jumps.
#include "cobol/emit/emitter.h"

namespace kvrcob {

void Emitter::ifStatement(const IfStatement &s)
{
    std::string c = debugCondition(condition(s.condition));
    put("if (", c, ") {\n");
    block(s.then);
    put("}\n");
    if (s.hasElse) {
        put("else {\n");
        block(s.otherwise);
        put("}\n");
    }
}

// ---- EVALUATE

std::string Emitter::evaluateObject(const Expr *subject, const EvaluateStatement::Object &object)
{
    const Expr *value = object.value;
    std::string test;
    if (value->kind == ExprKind::Any) {
        test = "1";
    } else if (value->kind == ExprKind::Range) {
        test = cat("(", relation(subject, kGreaterEqual, value->left), " && ",
                   relation(subject, kLessEqual, value->right), ")");
    } else if (subject->kind == ExprKind::Truth) {
        std::string c = value->kind == ExprKind::Truth ? (value->op == K_TRUE ? "1" : "0") : condition(value);
        test = subject->op == K_TRUE ? c : cat("!", c);
    } else if (isCondition(subject)) {
        std::string c = condition(subject);
        if (value->kind == ExprKind::Truth)
            test = value->op == K_TRUE ? c : cat("!", c);
        else
            test = cat("(!", c, " == !", condition(value), ")");
    } else if (value->kind == ExprKind::Truth) {
        error(value->at, "TRUE and FALSE need a condition as their subject");
        test = "0";
    } else if (value->kind == ExprKind::Relation && !value->left) {
        test = relation(subject, value->op, value->right); // WHEN > 5
    } else if ((value->kind == ExprKind::ClassTest || value->kind == ExprKind::SignTest) && !value->left) {
        Expr whole = *value; // WHEN NUMERIC
        whole.left = const_cast<Expr *>(subject);
        test = condition(&whole);
    } else if (isCondition(value) && !isConditionName(value)) {
        error(value->at, "a condition as the object needs TRUE, FALSE or a condition as its subject");
        test = "0";
    } else {
        test = relation(subject, '=', value);
    }
    return object.negated ? cat("!", test) : test;
}

Expr *Emitter::keptNumber(const Expr *e, bool isSubscript)
{
    Expr *out = make<Expr>();
    out->kind = ExprKind::Kept;
    out->at = e->at;
    out->left = const_cast<Expr *>(e);
    inFile_.kept[out].num = isSubscript ? keep(integerNumber(integer(e), 18), true) : keep(number(e), true);
    return out;
}

// A subject as the tests use it: what takes computing, or could change meanwhile, is computed here.
const Expr *Emitter::keptSubject(const Expr *e)
{
    e = constant(e);
    if (isCondition(e)) {
        if (e->kind == ExprKind::Truth) return e;
        Expr *out = make<Expr>();
        out->kind = ExprKind::Kept;
        out->at = e->at;
        out->left = const_cast<Expr *>(e);
        std::string t = temp("int");
        put(t, " = ", condition(e), ";\n");
        inFile_.kept[out].condition = t;
        return out;
    }
    switch (e->kind) {
    case ExprKind::Arithmetic:
    case ExprKind::Negate:
        return decimalOf(e, *make<Decimal>()) ? e : keptNumber(e, false);
    case ExprKind::Function: {
        if (functionIsNumeric(e)) return keptNumber(e, false);
        Expr *out = make<Expr>();
        out->kind = ExprKind::Kept;
        out->at = e->at;
        out->left = const_cast<Expr *>(e);
        inFile_.kept[out].text = functionText(e); // its address and length are in temporaries
        return out;
    }
    case ExprKind::Reference: {
        auto varies = [&](const Expr *part) {
            Decimal d;
            return part && part->kind != ExprKind::AllSubscript && !meaning_.constantNumber(*program_, part, d);
        };
        bool any = varies(e->ref->from) || varies(e->ref->length);
        for (const Expr *part : e->ref->subscripts) any |= varies(part);
        if (!any) return e;
        Expr *out = make<Expr>();
        *out = *e;
        out->ref = make<Reference>();
        *out->ref = *e->ref;
        for (Expr *&part : out->ref->subscripts)
            if (varies(part)) part = keptNumber(part, true);
        if (varies(out->ref->from)) out->ref->from = keptNumber(out->ref->from, true);
        if (varies(out->ref->length)) out->ref->length = keptNumber(out->ref->length, true);
        return out;
    }
    default:
        return e;
    }
}

void Emitter::evaluateStatement(const EvaluateStatement &s)
{
    // A chain of if and else; each test's temporaries are computed where it is. Subjects that
    // several tests use are computed once, before them.
    std::string done = label();
    std::map<std::string, std::string> told;
    Within toldOnce(inStatement_.toldOnce, &told);
    size_t tests = 0;
    for (const EvaluateStatement::When &when : s.whens) tests += when.rows.size();
    std::vector<const Expr *> subjects(s.subjects.begin(), s.subjects.end());
    if (tests > 1)
        for (const Expr *&subject : subjects) subject = keptSubject(subject);
    for (const EvaluateStatement::When &when : s.whens) {
        std::string test;
        if (when.other) {
            test = "1";
        } else {
            for (const auto &row : when.rows) {
                std::string all;
                for (size_t i = 0; i < row.size() && i < subjects.size(); i++) {
                    if (!row[i].value) continue;
                    all += joined(all.empty() ? "" : " && ", evaluateObject(subjects[i], row[i]));
                }
                test += joined(test.empty() ? "" : " || ", "(", all.empty() ? "0" : all, ")");
            }
        }
        put("if (", test.empty() ? "0" : debugCondition(test), ") {\n");
        block(when.block);
        put("goto ", done, ";\n}\n");
    }
    put(done, ": ;\n");
}

// ---- PERFORM

size_t lastOf(const Program &p, size_t index)
{
    if (!p.procedures[index].isSection) return index;
    size_t last = index;
    while (last + 1 < p.procedures.size() && !p.procedures[last + 1].isSection &&
           p.procedures[last + 1].section == static_cast<int>(index))
        last++;
    return last;
}

void Emitter::performRange(const ProcedureName &first, const ProcedureName &last, const char *way)
{
    long from = meaning_.procedure(*program_, first, procedure_);
    long to = last.name ? meaning_.procedure(*program_, last, procedure_) : from;
    if (from < 0 || to < 0) return;
    size_t end = static_cast<size_t>(to);
    // A PERFORM that may meet itself keeps the cell on a stack, others at the site's place in the
    // array of saved cells.
    bool circle = inProgram_.circles.mayMeet(procedure_, static_cast<size_t>(from), lastOf(*program_, end));
    debugWay(way, first.at);
    int fromSegment = program_->procedures[static_cast<size_t>(from)].segment;
    int now = procedure_ < program_->procedures.size() ? program_->procedures[procedure_].segment : 0;
    if (fromSegment >= 50 && fromSegment != now) put("kvr_segment_", program_->number, "(", fromSegment, ");\n");
    code_.mark(Mark::Perform, inProgram_.flow.performs.size());
    inProgram_.flow.performs.push_back({++inFile_.sites, procedure_, static_cast<size_t>(from), end, circle});
}

// What is performed, once. EXIT PERFORM CYCLE goes to its end.
void Emitter::performOnce(const PerformStatement &s)
{
    if (!s.isInline) {
        performRange(s.first, s.last);
        return;
    }
    block(s.body);
    put(inProcedure_.performs.back().cycle, ": __attribute__((unused));\n");
}

void Emitter::performTimes(const PerformStatement &s)
{
    std::string counter = cat("n[", inProgram_.counters++, "]");
    put(counter, " = ", integer(s.times), ";\n");
    debugNow();
    put("for (; ", counter, " > 0; ", counter, "--) {\n");
    performOnce(s);
    put("}\n");
}

void Emitter::breakIf(const Expr *until)
{
    std::string c = until ? debugCondition(condition(until)) : "1";
    put("if (", c, ") break;\n");
}

void Emitter::performUntil(const PerformStatement &s)
{
    inStatement_.anyChange = true;
    put("for (;;) {\n");
    if (!s.testAfter) breakIf(s.until);
    performOnce(s);
    if (s.testAfter) breakIf(s.until);
    put("}\n");
}

// FROM
void Emitter::setVarying(const Varying &v)
{
    Loc loc = locate(*v.item, true);
    if (!loc.good()) return;
    if (!isNumericItem(*loc.item)) {
        error(v.item->at, wordText(v.item->names[0]) + " is no numeric item");
        return;
    }
    if (!v.from) return; // an error was told there
    store(number(v.from), loc, false, "");
    debugNow();
}

// BY
void Emitter::stepVarying(const Varying &v)
{
    if (stepCounter(v)) return;
    Loc loc = locate(*v.item, true);
    if (!loc.good() || !isNumericItem(*loc.item)) return;
    Num by = v.by ? number(v.by) : integerNumber("1LL", 1);
    store(add(itemNumber(loc), std::move(by), false), loc, false, "");
    debugNow();
}

// VARYING a ... AFTER b ...: loops inside each other, the last one runs fastest. An outer item is
// stepped before the inner ones begin again.
void Emitter::performVarying(const PerformStatement &s)
{
    const size_t n = s.varying.size(), outerCounters = loopCounters_.size();
    inStatement_.anyChange = true;
    for (const auto &v : s.varying) setVarying(v);
    for (size_t i = 0; i < n && s.isInline; i++)
        countWith(s.varying[i], i + 1 < n ? &s.varying[i + 1] : nullptr, !s.testAfter);
    for (const auto &v : s.varying) {
        beginCounting(v);
        put("for (;;) {\n");
        if (!s.testAfter) breakIf(v.until);
    }

    performOnce(s);

    for (size_t i = n; i-- > 0;) {
        if (s.testAfter) breakIf(s.varying[i].until);
        stepVarying(s.varying[i]);
        // Tested before, those further in have been set when their own loops ended.
        const size_t end = s.testAfter ? n : std::min(i + 2, n);
        for (size_t j = i + 1; j < end; j++) setVarying(s.varying[j]);
        for (size_t c = outerCounters; c < loopCounters_.size(); c++) readStaleCounter(loopCounters_[c]);
        put("}\n");
        endCounting(s.varying[i]);
    }
    loopCounters_.erase(loopCounters_.begin() + static_cast<ptrdiff_t>(outerCounters), loopCounters_.end());
}

void Emitter::performStatement(const PerformStatement &s)
{
    std::string exit;
    if (s.isInline) {
        exit = label();
        inProcedure_.performs.push_back({exit, label()});
    }
    if (s.forever) {
        put("for (;;) {\n");
        performOnce(s);
        put("}\n");
    } else if (s.times) {
        performTimes(s);
    } else if (!s.varying.empty()) {
        performVarying(s);
    } else if (s.until) {
        performUntil(s);
    } else {
        performOnce(s);
    }
    if (!s.isInline) return;
    put(exit, ": __attribute__((unused));\n");
    inProcedure_.performs.pop_back();
}

// ---- GO TO, ALTER

void Emitter::jump(const ProcedureName &name)
{
    long to = meaning_.procedure(*program_, name, procedure_);
    if (to < 0) return;
    const Procedure &target = program_->procedures[static_cast<size_t>(to)];
    int now = procedure_ < program_->procedures.size() ? program_->procedures[procedure_].segment : 0;
    if (target.segment >= 50 && target.segment != now)
        put("kvr_segment_", program_->number, "(", target.segment, ");\n");
    leaveUse(static_cast<size_t>(to));
    debugWay("", name.at);
    inProgram_.flow.jumps.emplace_back(procedure_, static_cast<size_t>(to));
    put("goto p", to, ";\n");
}

void Emitter::goStatement(const GoStatement &s)
{
    if (s.depending) {
        Loc loc = locate(*s.depending);
        if (!loc.good()) return;
        Expr e;
        e.kind = ExprKind::Reference;
        e.at = s.depending->at;
        e.ref = const_cast<Reference *>(s.depending);
        inStatement_.anyChange = true;
        std::string number = integer(&e);
        debugNow();
        put("switch (", number, ") {\n");
        for (size_t i = 0; i < s.targets.size(); i++) {
            put("case ", i + 1, ": ");
            jump(s.targets[i]);
        }
        put("}\n");
        return;
    }
    // A paragraph that consists of this GO TO only can be altered.
    Procedure &here = program_->procedures[procedure_];
    if (here.altered) {
        put("switch ((intptr_t)a", program_->number, "_", procedure_, ") {\n");
        code_.mark(Mark::Altered, procedure_);
        put("}\n");
    }
    if (s.targets.empty()) {
        if (!here.altered)
            meaning_.warning("alter", s.at, "GO TO without a paragraph, and no ALTER sets it: it ends the run");
        put(emits(Do::Unaltered), "();\n");
        return;
    }
    jump(s.targets[0]);
}

void Emitter::alterStatement(const AlterStatement &s)
{
    for (const AlterStatement::Pair &pair : s.pairs) {
        long paragraph = meaning_.procedure(*program_, pair.paragraph, procedure_);
        long target = meaning_.procedure(*program_, pair.target, procedure_);
        if (paragraph < 0 || target < 0) continue;
        if (!program_->procedures[static_cast<size_t>(paragraph)].altered) {
            error(pair.paragraph.at, wordText(pair.paragraph.name) + " does not consist of a GO TO");
            continue;
        }
        put("a", program_->number, "_", paragraph, " = (void *)(intptr_t)", target + 1, ";\n");
        inProgram_.alterTargets[static_cast<size_t>(paragraph)].insert(static_cast<size_t>(target));
        inProgram_.flow.jumps.emplace_back(static_cast<size_t>(paragraph), static_cast<size_t>(target));
        debugAlter(paragraph, target, pair.paragraph.at);
    }
}

// ---- EXIT and its like

// CONTINUE AFTER n SECONDS
void Emitter::pause(Expr *seconds)
{
    inFile_.utilities = true;
    Expr nanoseconds, billion;
    billion.text = "1000000000";
    nanoseconds.kind = ExprKind::Arithmetic;
    nanoseconds.at = seconds->at;
    nanoseconds.op = '*';
    nanoseconds.left = seconds;
    nanoseconds.right = &billion;
    std::string t = temp("int64_t");
    put(t, " = ", integer(&nanoseconds), ";\n", emits(Do::Pause), "(", t, " / 1000000000, ", t, " % 1000000000);\n");
}

// STOP RUN n, GOBACK GIVING n and their like. False: it is no number.
bool Emitter::returnCode(const Expr *value, const std::string &code)
{
    const Expr *e = constant(value);
    if (e->kind == ExprKind::Reference) {
        Loc loc = locate(*e->ref);
        if (loc.good() && loc.item->category == Category::Pointer) {
            error(e->at, "a number is needed here");
            return false;
        }
    }
    put(code, " = (int32_t)", integer(value), ";\n");
    return true;
}

void Emitter::exitParagraph()
{
    inProcedure_.paragraphEndUsed = true;
    put("goto e", procedure_, ";\n");
}

// Without sections a paragraph is all that there is to leave.
void Emitter::exitSection()
{
    const Procedure &here = program_->procedures[procedure_];
    if (!here.isSection && here.section < 0) return exitParagraph();
    size_t section = here.isSection ? procedure_ : static_cast<size_t>(here.section);
    inProgram_.flow.sectionExits.emplace_back(procedure_, section);
    put("goto z", section, ";\n");
}

void Emitter::exitStatement(const ExitStatement &s)
{
    const std::string code = cat("p", program_->number, "_returnCode");
    if (s.value && s.form == ExitStatement::Continue) return pause(s.value);
    if (s.value && s.form != ExitStatement::StopLiteral && !returnCode(s.value, code)) return;
    switch (s.form) {
    case ExitStatement::Plain:
    case ExitStatement::Continue:
        put(";\n");
        break;
    case ExitStatement::Program:
        put("if (p", program_->number, "_called) goto leave;\n");
        break;
    case ExitStatement::Goback:
    case ExitStatement::Function:
        put("goto leave;\n");
        break;
    case ExitStatement::StopRun:
        put(emits(Do::StopRun), "(", code, " & 255);\n");
        break;
    case ExitStatement::StopLiteral: {
        Shown literal;
        if (displayed(constant(s.value), literal))
            put(emits(Do::StopLiteral, Of::Text), "(", literal.size, ", (const uint8_t *)", literal.address, ");\n");
        break;
    }
    case ExitStatement::Perform:
    case ExitStatement::PerformCycle:
        if (inProcedure_.performs.empty()) {
            error(s.at, "EXIT PERFORM without an inline PERFORM");
            break;
        }
        countersAtExit();
        put("goto ",
            s.form == ExitStatement::Perform ? inProcedure_.performs.back().exit : inProcedure_.performs.back().cycle,
            ";\n");
        break;
    case ExitStatement::Paragraph:
        exitParagraph();
        break;
    case ExitStatement::Section:
        exitSection();
        break;
    case ExitStatement::NextSentence:
        inProcedure_.sentenceEndUsed = true;
        put("goto ", inProcedure_.sentenceEnd, ";\n");
        break;
    }
}

} // namespace kvrcob
