// XML PARSE, XML GENERATE.
#include "cobol/syntax/parser.h"

namespace kvrcob {

Statement *Parser::xmlStatement()
{
    if (program_) program_->usesXml = true;
    return aheadIs(1, K_PARSE) ? xmlParse() : xmlGenerate();
}

// XML PARSE document [WITH ENCODING code-page] PROCESSING PROCEDURE IS name [THRU name]
Statement *Parser::xmlParse()
{
    auto *s = begin<XmlParseStatement>();
    s->verb = K_PARSE;
    step();
    s->document = identifier();
    if (at(K_WITH) && aheadIs(1, K_ENCODING)) step();
    if (take(K_ENCODING)) s->codePage = operand();
    if (at(K_RETURNING, K_NATIONAL)) notBuilt(here(), "XML PARSE ... RETURNING NATIONAL");
    if (at(K_VALIDATING)) notBuilt(here(), "XML PARSE ... VALIDATING");
    expect(K_PROCESSING);
    expect(K_PROCEDURE);
    if (panic_) return s;
    take(K_IS);
    s->first = procedureName();
    if (take(K_THRU) || take(K_THROUGH)) s->last = procedureName();
    phrases(s->exception, K_ON, K_EXCEPTION, 0);
    take(K_END_XML);
    return s;
}

// XML GENERATE receiver FROM item [COUNT IN item] [WITH ...] [NAMESPACE IS ...] [NAME OF ...]
// [TYPE OF ...] [SUPPRESS ...]
Statement *Parser::xmlGenerate()
{
    auto *s = begin<XmlGenerateStatement>();
    step();
    s->receiver = identifier();
    expect(K_FROM);
    if (panic_) return s;
    s->source = identifier();
    if (take(K_COUNT)) {
        take(K_IN);
        s->count = identifier();
    }
    while (!panic_) {
        if (at(K_WITH)) step();
        if (take(K_ENCODING))
            s->encoding = operand();
        else if (take(K_XML_DECLARATION))
            s->declaration = true;
        else if (take(K_ATTRIBUTES))
            s->attributes = true;
        else
            break;
    }
    if (take(K_NAMESPACE)) {
        take(K_IS);
        s->nameSpace = operand();
        if (take(K_NAMESPACE_PREFIX)) {
            take(K_IS);
            s->prefix = operand();
        }
    }
    // NAME and TYPE go on without their word for further items.
    Word phrase = 0;
    auto begins = [&](Word word) {
        if (!at(word) || aheadIs(1, K_IS)) return false;
        phrase = word;
        step();
        take(K_OF);
        return true;
    };
    while ((atName() || at(K_TYPE) || at(K_SUPPRESS)) && !panic_) {
        if (!begins(K_NAME) && !begins(K_TYPE) && take(K_SUPPRESS)) phrase = K_SUPPRESS;
        if (at(K_EVERY)) notBuilt(here(), "XML GENERATE ... SUPPRESS EVERY");
        if (!phrase) break;
        XmlGenerateStatement::Part part;
        part.phrase = phrase;
        part.item = identifier();
        if (panic_) break;
        if (phrase == K_SUPPRESS && at(K_WHEN)) notBuilt(here(), "XML GENERATE ... SUPPRESS ... WHEN");
        if (phrase == K_NAME) {
            take(K_IS);
            part.name = literal();
        } else if (phrase == K_TYPE) {
            take(K_IS);
            part.type = now().word;
            if (!take(K_ATTRIBUTE) && !take(K_ELEMENT) && !take(K_CONTENT))
                error("expected ATTRIBUTE, ELEMENT or CONTENT before " + shown());
        }
        s->parts.push_back(part);
    }
    phrases(s->exception, K_ON, K_EXCEPTION, 0);
    take(K_END_XML);
    return s;
}

} // namespace kvrcob
