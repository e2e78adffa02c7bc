// XML PARSE held against another parser and against its own other forms, on random documents.
// Faults: a document accepted that is not well-formed, or refused that is; a lost, doubled or
// misplaced text; an access beyond the document; a form that scans otherwise than the others.
#include <expat.h>
#include <gtest/gtest.h>
#include <memory>

#include "support/guarded.h"
#include "support/share.h"
#include "xml/parse_statement.h"
#include "xml/random_document.h"

namespace {

// What a document says: elements, attributes, texts; adjacent texts as one. In UTF-8.
struct Meaning {
    std::string log;
    bool wellFormed = false;
    char open = 0;

    void add(char kind, const std::string &text)
    {
        if (kind != 't' || open != 't') log += std::string("\n") + kind + ' ';
        log += text;
        open = kind;
    }
};

void addUtf8(std::string &text, uint32_t c)
{
    if (c < 0x80) {
        text += static_cast<char>(c);
        return;
    }
    int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    text += static_cast<char>((more == 1 ? 0xC0u : more == 2 ? 0xE0u : 0xF0u) | c >> 6 * more);
    while (more-- > 0) text += static_cast<char>(0x80 | (c >> 6 * more & 0x3F));
}

// The value of a national character or text.
std::string utf8Of(const std::string &units)
{
    std::string text;
    for (size_t i = 0; i + 1 < units.size(); i += 2) {
        auto unit = [&](size_t at) {
            return static_cast<uint32_t>(static_cast<uint8_t>(units[at]) | static_cast<uint8_t>(units[at + 1]) << 8);
        };
        uint32_t c = unit(i);
        if ((c & 0xFC00) == 0xD800 && i + 3 < units.size()) c = 0x10000 + ((c & 0x3FF) << 10) + (unit(i += 2) & 0x3FF);
        addUtf8(text, c);
    }
    return text;
}

// New lines and, in values, white space as a parser hands them on.
std::string normalised(const std::string &text, bool value)
{
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        char c = text[i];
        if (c == '\r') {
            if (i + 1 < text.size() && text[i + 1] == '\n') i++;
            c = '\n';
        }
        out += value && (c == '\n' || c == '\t') ? ' ' : c;
    }
    return out;
}

Meaning ours(std::string_view document, uint32_t ccsid, const std::function<std::string(const std::string &)> &toUtf8)
{
    ParsedDocument run(document, ccsid);
    Meaning meaning;
    meaning.wellFormed = run.wellFormed();
    std::string target;
    for (const XmlEvent &event : run.events) {
        const std::string &name = event.name;
        bool character = name.find("NATIONAL-CHARACTER") != std::string::npos;
        std::string text = character || event.national ? utf8Of(event.text) : toUtf8(event.text);
        if (name == "START-OF-ELEMENT") meaning.add('<', text);
        if (name == "END-OF-ELEMENT") meaning.add('>', text);
        if (name == "ATTRIBUTE-NAME") meaning.add('@', text + "=");
        if (name == "ATTRIBUTE-CHARACTERS") meaning.log += normalised(text, true);
        if (name == "ATTRIBUTE-CHARACTER" || name == "ATTRIBUTE-NATIONAL-CHARACTER") meaning.log += text;
        if (name == "CONTENT-CHARACTERS" && !text.empty()) meaning.add('t', normalised(text, false));
        if (name == "CONTENT-CHARACTER" || name == "CONTENT-NATIONAL-CHARACTER") meaning.add('t', text);
        if (name == "PROCESSING-INSTRUCTION-TARGET") target = text;
        if (name == "PROCESSING-INSTRUCTION-DATA") meaning.add('?', target + " " + normalised(text, false));
        if (name == "COMMENT") meaning.add('!', normalised(text, false));
    }
    return meaning;
}

Meaning expats(const std::string &document)
{
    Meaning meaning;
    auto parser = XML_ParserCreate("UTF-8");
    XML_SetUserData(parser, &meaning);
    XML_SetElementHandler(
        parser,
        [](void *data, const char *name, const char **attributes) {
            auto &m = *static_cast<Meaning *>(data);
            m.add('<', name);
            for (; *attributes; attributes += 2) m.add('@', std::string(attributes[0]) + "=" + attributes[1]);
        },
        [](void *data, const char *name) { static_cast<Meaning *>(data)->add('>', name); });
    XML_SetCharacterDataHandler(parser, [](void *data, const char *text, int length) {
        static_cast<Meaning *>(data)->add('t', std::string(text, static_cast<size_t>(length)));
    });
    XML_SetProcessingInstructionHandler(parser, [](void *data, const char *target, const char *text) {
        static_cast<Meaning *>(data)->add('?', std::string(target) + " " + text);
    });
    XML_SetCommentHandler(parser, [](void *data, const char *text) { static_cast<Meaning *>(data)->add('!', text); });
    meaning.wellFormed = XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
    XML_ParserFree(parser);
    return meaning;
}

std::string asItIs(const std::string &text) { return text; }

// Where the two differ by rule: characters above U+FFFF in UTF-8, U+0085 as white space, document
// type declarations, and beginnings that are recognised as no document.
bool comparable(const std::string &document)
{
    return document.size() >= 4 && document.find('\xF0') == std::string::npos &&
           document.find("\xC2\x85") == std::string::npos && document.find("<!D") == std::string::npos &&
           ParsedDocument(document, 1208).exception() != 317;
}

TEST(XmlParseOracle, GeneratedAndMutatedDocuments)
{
    DocumentMaker maker(1);
    int wellFormed = 0, malformed = 0;
    for (int i = 0; i < 12000; i++) {
        std::string document = utf8OfLatin1(maker.document());
        size_t declaration = document.compare(0, 5, "<?xml") == 0 ? document.find("?>") + 2 : 0;
        for (size_t n = maker.pick(4); n > 0; n--) maker.mutate(document, declaration);
        if (!comparable(document)) continue;
        Meaning we = ours(document, 1208, asItIs), they = expats(document);
        ASSERT_EQ(we.wellFormed, they.wellFormed) << document << "\ncode " << ParsedDocument(document).code;
        ASSERT_TRUE(!we.wellFormed || we.log == they.log) << document << "\n" << we.log << "\n" << they.log;
        (we.wellFormed ? wellFormed : malformed)++;
    }
    EXPECT_GT(wellFormed, 3000);
    EXPECT_GT(malformed, 3000);
}

TEST(XmlParseOracle, NamesOfTheFirstPlane)
{
    for (uint32_t c = 0x80; c < 0x10000; c++) {
        if (c == 0x85 || (c >= 0xD800 && c < 0xE000) || !isInShare(c)) continue;
        std::string character;
        addUtf8(character, c);
        for (std::string document :
             {"<a " + character + "=''/>", "<a b" + character + "=''/>", "<a>" + character + "</a>"})
            ASSERT_EQ(ParsedDocument(document).code == 0, expats(document).wellFormed) << std::hex << c << document;
    }
}

// The document in each form says the same, and is called well-formed or not by all.
TEST(XmlParseOracle, FormsAgree)
{
    DocumentMaker maker(2);
    auto convert = [](const std::string &text, bool toUtf16, const char *page) {
        std::string out(2 * text.size() + 2, '\0');
        uint32_t length = static_cast<uint32_t>(out.size());
        (toUtf16 ? _zvkConvToUnicode : _zvkConvFromUnicode)(
            reinterpret_cast<const uint8_t *>(text.data()), static_cast<uint32_t>(text.size()),
            reinterpret_cast<uint8_t *>(out.data()), &length, page, static_cast<int32_t>(strlen(page)));
        out.resize(length);
        return out;
    };
    for (int i = 0; i < 3000; i++) {
        std::string latin = maker.document(false);
        // Of three neighbours in UTF-8 two would be one character: the mutated ones stay below
        // 0x80.
        for (size_t n = maker.pick(3); n > 0; n--) maker.mutate(latin, 1);
        for (char &c : latin)
            if (c == '\xC3' || c == '\xA9' || c == '\xEF') c = '~';
        if (latin.size() < 4 || latin[0] != '<' || (latin[1] & 0x80)) continue;
        Meaning first = ours(utf8OfLatin1(latin), 1208, asItIs);
        std::string units = convert(latin, true, "ISO-8859-1");
        Meaning forms[] = {ours(latin, 819, utf8OfLatin1), ours(units, 1202, asItIs),
                           ours(convert(units, false, "TQX-1047"), 1047,
                                [&](const std::string &text) { return utf8Of(convert(text, true, "TQX-1047")); })};
        if (ParsedDocument(utf8OfLatin1(latin)).exception() == 317) continue;
        for (const Meaning &form : forms) {
            ASSERT_EQ(form.wellFormed, first.wellFormed) << latin;
            ASSERT_TRUE(!first.wellFormed || form.log == first.log) << latin << form.log << first.log;
        }
    }
}

// Any bytes as a document, cut anywhere, with protected pages at both ends; in silence to the end,
// too. The result is a code, and every text lies in the document.
TEST(XmlParseOracle, AnyBytes)
{
    DocumentMaker maker(3);
    constexpr uint32_t pages[] = {1208, 819, 1202, 1047, 943, 0xFFFF};
    GuardedItem item(4096);
    for (int i = 0; i < 20000; i++) {
        std::string document = maker.document();
        for (size_t n = maker.pick(6); n > 0; n--) maker.mutate(document, 0);
        uint32_t page = pages[maker.pick(std::size(pages))];
        if (page == 1202) {
            std::string units;
            for (char c : document) units += {c, static_cast<char>(maker.pick(50) ? 0 : 0xD8 + maker.pick(8))};
            document = units;
        }
        if (maker.pick(10) == 0)
            for (char &c : document) c = static_cast<char>(maker.pick(256));
        document.resize(std::min<size_t>(document.size(), maker.pick(2) ? 4096 : 1 + maker.pick(300)));
        uint8_t *place = item.place(document.size(), maker.pick(2) ? GuardedItem::AtEnd : GuardedItem::AtStart);
        memcpy(place, document.data(), document.size());
        ParseStatement statement(place, document.size(), page);
        int32_t answer = maker.pick(2) ? 0 : 1;
        statement.seen = [&](ParseStatement &s) {
            bool own = s.name().find("-CHARACTER") != std::string::npos && s.name().back() != 'S';
            auto *text = reinterpret_cast<const uint8_t *>(s.base);
            if (!own && s.name() != "END-OF-DOCUMENT") {
                ASSERT_GE(text, place);
                ASSERT_LE(text + s.text().size(), place + document.size());
            }
            if (s.code != 0) s.code = s.code > 100000 && answer == 0 ? s.code % 100000 : answer;
        };
        statement.run();
        ASSERT_TRUE(statement.isIdle());
        ASSERT_EQ(statement.status, statement.code ? 2u : 0u);
    }
}

double secondsOf(const std::string &document, uint32_t ccsid, int32_t &code)
{
    timespec begin, end;
    ParseStatement statement(document.data(), document.size(), ccsid);
    statement.seen = [](ParseStatement &s) { s.code = 0; };
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &begin);
    code = statement.run();
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
    return static_cast<double>(end.tv_sec - begin.tv_sec) + static_cast<double>(end.tv_nsec - begin.tv_nsec) / 1e9;
}

// Ten times the document may take ten times as long, and no more than some seconds in all.
TEST(XmlParseOracle, LinearTime)
{
    auto times = [](size_t n, const char *text) {
        std::string all;
        while (all.size() < n) all += text;
        return all;
    };
    struct {
        const char *before, *repeated, *after;
    } cases[] = {
        {"", "<", ""},           {"<a>", "<", ""},        {"<a>", "&", ""},          {"<a>", "&a;", ""},
        {"<a>&#", "1", ";</a>"}, {"<a>&#", "x", ";</a>"}, {"<a b='", "x", "'/>"},    {"<a b='", "<", "'/>"},
        {"<a", "a", "/>"},       {"<a>", "]", "</a>"},    {"<a>", "]]>", "</a>"},    {"<!--", "-", "--><a/>"},
        {"<a><?p ", "?", ""},    {"<a>", "\x01", "</a>"}, {"<a ", "a='' ", "/>"},    {"<!DOCTYPE a [", "<!--", ""},
        {"<a>", "<b>", ""},      {"<?xml ", " ", ""},     {"<a/>", "<!DOCTYPE", ""}, {"<!DOCTYPE a ", "[", ""}};
    for (auto &c : cases) {
        std::string document = c.before + times(shareOf(size_t{10'000'000}), c.repeated) + c.after;
        int32_t code = 0;
        EXPECT_LT(secondsOf(document, 1208, code), 8) << c.before << c.repeated;
    }
}

TEST(XmlParseOracle, DepthIsBoundedByStorageOnly)
{
    constexpr size_t depth = 100000;
    std::string document;
    for (size_t i = 0; i < depth; i++) document += i % 2 ? "<b>" : "<aa>";
    for (size_t i = depth; i-- > 0;) document += i % 2 ? "</b>" : "</aa>";
    EXPECT_EQ(ParsedDocument(document).code, 0);
    document.replace(document.size() - 5, 5, "</ab>");
    EXPECT_EQ(ParsedDocument(document).code, 5);
}

} // namespace
