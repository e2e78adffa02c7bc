// XML PARSE and XML GENERATE.
//
// The processing procedure of XML PARSE is entered from the library, as USE procedures are: the
// program's body is called again with a number of the statement, jumps to the first paragraph of
// the range and returns at its end.
//
// XML GENERATE walks through the source item when it is compiled: each item becomes a node of a
// static list, and each number a MOVE into the area of edited texts, in the order of the walk:
//
//     01 A. 02 B PIC S9(4) COMP OCCURS 3.    ->    {1, ...}, {2, control, 3}, {2, numeric, 5, 2}, {0}
//                                                  for (i = 0; i < 3; i++) edit B(i); e += 5;
#include "cobol/emit/emitter.h"
#include "cobol/meaning/picture.h"

#include "kvr2/xml.h"

namespace kvrcob {

void Emitter::xmlParse(const XmlParseStatement &s)
{
    long from = meaning_.procedure(*program_, s.first, procedure_);
    long to = s.last.name ? meaning_.procedure(*program_, s.last, procedure_) : from;
    Loc document = s.document ? locate(*s.document) : Loc{};
    if (from < 0 || to < 0 || !document.good()) return;
    std::string codePage = s.codePage ? integer(s.codePage) : "0";
    size_t end = static_cast<size_t>(to);
    uint32_t site = ++inFile_.sites;
    program_->procedures[end].returns.push_back(site);
    for (size_t i = static_cast<size_t>(from); i <= lastOf(*program_, end); i++) inProgram_.flow.entered[i] = true;
    inProgram_.flow.entered[static_cast<size_t>(from)] = true;
    inProgram_.entryCases += joined("case -", site, ": x[", end, "] = ", site, "; goto p", from, ";\n");
    inProgram_.useReturns += joined("r", site, ": goto leave;\n");
    std::string failed = temp("int");
    put(failed, " = ", emits(Do::XmlParse, Of::Text), "(&p", program_->number, "_xml, p", program_->number, "_body, -",
        site, ", ", document.address, ", ", document.length, ", ", codePage, ");\n");
    phrases(s.exception, failed);
}

// ---- XML GENERATE

// The walk through the source item: what it has made so far.
struct XmlWalk {
    XmlWalk(Emitter &emitter, const XmlGenerateStatement &statement) : e(emitter), s(statement) {}

    Emitter &e;
    const XmlGenerateStatement &s;
    std::map<const Item *, const XmlGenerateStatement::Part *> names, types;
    std::set<const Item *> suppressed;
    std::string nodes, nameStream;
    std::vector<std::string> depending;
    std::string editCursor;   // C name of the pointer into the area of edited texts
    int64_t editedLength = 0; // of one occurrence of the item in hand; at the end of all

    bool phrases();
    void node(int level, unsigned flags, const std::string &rest);
    void skip(int level, int64_t length);
    void name(const Item &item, std::string_view byDefault);
    void item(const Item &i, int level, const std::string &displacement, bool mayBeAttribute, bool *wroteElement);
    void members(const Item &group, int level, const std::string &displacement, bool mayHaveAttributes);
    void number(const Item &i, int level, unsigned flags, const std::string &displacement);
};

namespace {

constexpr unsigned kText = ZVK_XML_CLASS(ZVK_XML_CLASS_NATIVE);

// An item that the walk edits numbers into: a floating minus, all digits, the point.
const Item *editedItem(int integers, int decimals, bool commaIsPoint)
{
    static std::map<std::tuple<int, int, bool>, Item *> made;
    Item *&item = made[{integers, decimals, commaIsPoint}];
    if (item) return item;
    item = make<Item>();
    item->category = Category::NumericEdited;
    std::string_view picture =
        keepText(cat("-(", integers, ")9", decimals ? cat(commaIsPoint ? ",9(" : ".9(", decimals, ")") : ""));
    readPicture(picture, '$', commaIsPoint, item->picture);
    item->size = item->picture.positions;
    item->laidOut = true;
    return item;
}

} // namespace

// NAME OF, TYPE OF and SUPPRESS, by item.
bool XmlWalk::phrases()
{
    for (const XmlGenerateStatement::Part &part : s.parts) {
        const Item *item = e.meaning_.resolve(*e.program_, *part.item);
        if (!item) return false;
        if (part.phrase == K_SUPPRESS)
            suppressed.insert(item);
        else
            (part.phrase == K_NAME ? names : types)[item] = &part;
    }
    return true;
}

void XmlWalk::node(int level, unsigned flags, const std::string &rest)
{
    nodes += joined("{", level, ", ", flags, ", {", rest, "}}, ");
}

// Bytes that write nothing.
void XmlWalk::skip(int level, int64_t length)
{
    if (length > 0) node(level, ZVK_XML_CLASS(ZVK_XML_CLASS_SKIPPED), cat(".length = ", length));
}

void XmlWalk::name(const Item &item, std::string_view byDefault)
{
    auto given = names.find(&item);
    std::string_view text = given != names.end() ? given->second->name->text : byDefault;
    text = text.substr(0, 255);
    nameStream += joined(static_cast<char>(text.size()), text);
}

void XmlWalk::number(const Item &i, int level, unsigned flags, const std::string &displacement)
{
    Num n = e.itemNumber(e.locateItem(i, displacement));
    if (n.kind == Num::Float) return e.notBuilt(s.source->at, "a floating-point item in XML GENERATE");
    const Item *edited = editedItem(std::max(n.digits - n.scale, 1), std::max(n.scale, 0), e.program_->commaIsPoint);
    node(level, ZVK_XML_NODE_NUMERIC | kText | flags, cat(".numeric = {", edited->size, ", ", i.size, "}"));
    Loc target;
    target.item = edited;
    target.category = Category::NumericEdited;
    target.address = editCursor;
    target.fixed = edited->size;
    target.length = cat(edited->size);
    e.store(n, target, false, "");
    e.put(editCursor, " += ", edited->size, ";\n");
    editedLength += edited->size;
}

void XmlWalk::item(const Item &i, int level, const std::string &displacement, bool mayBeAttribute, bool *wroteElement)
{
    bool skipped = suppressed.count(&i) || (!i.name && i.elementary()) ||
                   (i.elementary() && (i.category == Category::Index || i.category == Category::Pointer));
    if (skipped && i.hasDepending)
        return e.notBuilt(s.source->at, "XML GENERATE ... SUPPRESS of a table of varying size");
    if (skipped) return skip(level, i.storageSize());

    auto type = types.find(&i);
    Word wanted = type == types.end() ? 0 : type->second->type;
    unsigned flags = 0;
    if (wanted == K_ATTRIBUTE || (!wanted && s.attributes && mayBeAttribute && i.elementary() && !i.occurs)) {
        if (!mayBeAttribute || !i.elementary() || i.occurs)
            return e.error(type->second->item->at,
                           cat(wordText(i.name), " cannot be an attribute: only an elementary item that is no table "
                                                 "and comes before all elements of its group can"));
        flags = ZVK_XML_NODE_ATTRIBUTE;
    } else if (wanted == K_CONTENT || !i.name) {
        flags = ZVK_XML_NODE_UNTAGGED;
    }
    if (!(flags & ZVK_XML_NODE_ATTRIBUTE) && wroteElement) *wroteElement = true;

    // Occurrences: a record before the item, and a loop around what edits its numbers.
    int64_t edited = editedLength;
    std::string place = displacement;
    if (i.occurs) {
        std::string index = e.temp("int64_t"), count = cat(i.occursMax);
        if (i.dependingItem) {
            count = e.temp("int64_t");
            e.put(count, " = ", e.currentCount(i), ";\n");
            node(level, ZVK_XML_NODE_DEPENDING, cat(".count = ", depending.size()));
            depending.push_back(count);
        } else {
            node(level, ZVK_XML_NODE_CONTROL, cat(".count = ", i.occursMax));
        }
        e.put("for (", index, " = 0; ", index, " < ", count, "; ", index, "++) {\n");
        place += joined(" + ", index, " * ", i.size);
        editedLength = 0;
    }
    name(i, i.name ? e.group_.tokens[i.at].text : "FILLER");
    if (!i.elementary()) {
        node(level, flags | kText, ".length = 0");
        members(i, level + 1, place, !(flags & ZVK_XML_NODE_UNTAGGED));
    } else if (i.category == Category::Numeric) {
        number(i, level, flags, place);
    } else {
        node(level, flags | kText, cat(".length = ", i.size));
    }
    if (i.occurs) {
        e.put("}\n");
        editedLength = edited + editedLength * i.occursMax;
    }
}

void XmlWalk::members(const Item &group, int level, const std::string &displacement, bool mayHaveAttributes)
{
    uint64_t at = group.offset;
    bool wroteElement = false;
    for (const Item *child : group.children) {
        if (child->redefines || child->level == 66 || child->level == 88) continue;
        skip(level, static_cast<int64_t>(child->offset) - static_cast<int64_t>(at));
        item(*child, level, displacement, mayHaveAttributes && !wroteElement, &wroteElement);
        at = child->offset + static_cast<uint64_t>(child->storageSize());
    }
    if (!group.hasDepending) skip(level, static_cast<int64_t>(group.offset) + group.size - static_cast<int64_t>(at));
}

void Emitter::xmlGenerate(const XmlGenerateStatement &s)
{
    if (!s.source) return;
    Loc receiver = locate(*s.receiver, true), source = locate(*s.source);
    if (!receiver.good() || !source.good()) return;
    if (!receiver.refmod && isNumericItem(*receiver.item))
        return error(s.receiver->at, "XML GENERATE needs an alphanumeric receiver");
    if (source.refmod) return error(s.source->at, "XML GENERATE needs a data item without reference modification");

    // A subscripted source is one occurrence, at the place that `locate` found.
    XmlWalk walk(*this, s);
    if (!walk.phrases()) return;
    std::string base = temp("uint8_t *");
    put(base, " = ", source.address, ";\n");
    walk.editCursor = temp("uint8_t *");
    std::string prefix = cat("Y", ++inFile_.constants);
    put(walk.editCursor, " = ", prefix, "edited;\n");
    Item whole = *source.item;
    whole.occurs = false;
    std::string displacement = cat(" + (", base, " - ", locateItem(whole).address, ")");
    walk.nameStream = cat(static_cast<char>(std::min<size_t>(wordText(program_->name).size(), 255)),
                          wordText(program_->name).substr(0, 255));
    if (walk.names.count(source.item)) walk.names[&whole] = walk.names[source.item];
    walk.item(whole, 1, displacement, false, nullptr);
    globals_ += joined("static const GenerateNode ", prefix, "nodes[] = {", walk.nodes, "{0}};\nstatic uint8_t ",
                       prefix, "edited[", std::max<int64_t>(walk.editedLength, 1), "];\n");

    std::string depending = "0", options = "0", count = temp("uint32_t"), failed = temp("int");
    if (!walk.depending.empty()) {
        depending = temp("uint64_t", cat("[", walk.depending.size(), "]"));
        for (size_t i = 0; i < walk.depending.size(); i++)
            put(depending, "[", i, "] = (uint64_t)", walk.depending[i], ";\n");
    }
    unsigned bits = 0;
    if (s.declaration) bits |= ZVK_XML_DECLARATION;
    if (program_->commaIsPoint) bits |= ZVK_XML_DECIMAL_COMMA;
    if (bits || s.encoding || s.nameSpace) {
        std::string record = temp("XmlGenerateOptions");
        options = cat("&", record);
        put("memset(&", record, ", 0, sizeof ", record, ");\n", record, ".options = ", bits, ";\n");
        auto text = [&](const Expr *e, const char *length, const char *address) {
            if (!e) return;
            Text t = this->text(e, true);
            put(record, ".", length, " = (uint64_t)(", t.length, ");\n", record, ".", address, " = ", t.address, ";\n");
        };
        text(s.encoding, "encodingLength", "encodingName");
        text(s.nameSpace, "namespaceLength", "namespaceUri");
        text(s.prefix, "prefixLength", "prefix");
    }
    put(failed, " = ", emits(Do::XmlGenerate, Of::Text), "(&p", program_->number, "_xml, ", receiver.address, ", ",
        receiver.length, ", ", base, ", ", prefix, "edited, ", depending, ", ", prefix, "nodes, ",
        constantBytes(walk.nameStream), ", ", options, ", &", count, ");\n");
    if (s.count) storeInteger(s.count, count);
    phrases(s.exception, failed);
}

} // namespace kvrcob
