// XML PARSE, statement by statement. Faults: a wrong event, text or order; a code of the wrong
// kind, or one that does not end, or does not silence, the parse; encodings taken for another one;
// registers that are not put back; a statement that cannot stand what its procedure does.
#include <gtest/gtest.h>

#include "support/child.h"
#include "support/compiled_program.h"
#include "support/pattern.h"
#include "xml/parse_statement.h"

namespace {

std::string utf16(const std::u16string &text)
{
    return std::string(reinterpret_cast<const char *>(text.data()), text.size() * 2);
}

std::string converted(const std::string &ascii, const char *page)
{
    std::u16string units(ascii.begin(), ascii.end());
    std::string bytes(ascii.size(), '\0');
    uint32_t length = static_cast<uint32_t>(bytes.size());
    _zvkConvFromUnicode(reinterpret_cast<const uint8_t *>(units.data()), static_cast<uint32_t>(2 * units.size()),
                        reinterpret_cast<uint8_t *>(bytes.data()), &length, page, static_cast<int32_t>(strlen(page)));
    return bytes;
}

TEST(XmlParse, EveryEvent)
{
    ParsedDocument run("<?xml version='1.0' encoding=\"UTF-8\" standalone=\"no\" ?>\n"
                       "<!DOCTYPE a [<!-- it's > ] --><!ENTITY b \"]>\">]> <!--c--><?go now ?><?stop?>"
                       "<a b = \"1&amp;&#65;2\" c=''>x&lt;y&#x1F600;<![CDATA[<&]]]]><b/></a >\n");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.status, 0u);
    EXPECT_TRUE(run.idle);
    EXPECT_EQ(run.log(),
              "VERSION-INFORMATION 1.0|ENCODING-DECLARATION UTF-8|STANDALONE-DECLARATION no|"
              "DOCUMENT-TYPE-DECLARATION <!DOCTYPE a [<!-- it's > ] --><!ENTITY b \"]>\">]>|"
              "COMMENT c|PROCESSING-INSTRUCTION-TARGET go|PROCESSING-INSTRUCTION-DATA now |"
              "PROCESSING-INSTRUCTION-TARGET stop|PROCESSING-INSTRUCTION-DATA |"
              "START-OF-ELEMENT a|ATTRIBUTE-NAME b|ATTRIBUTE-CHARACTERS 1|ATTRIBUTE-CHARACTER &|"
              "ATTRIBUTE-NATIONAL-CHARACTER " +
                  utf16(u"A") +
                  "|ATTRIBUTE-CHARACTERS 2|ATTRIBUTE-NAME c|ATTRIBUTE-CHARACTERS |"
                  "CONTENT-CHARACTERS x|CONTENT-CHARACTER <|CONTENT-CHARACTERS y|CONTENT-NATIONAL-CHARACTER " +
                  utf16(u"\U0001F600") +
                  "|START-OF-CDATA-SECTION <![CDATA[|CONTENT-CHARACTERS <&]]|END-OF-CDATA-SECTION ]]>|"
                  "START-OF-ELEMENT b|END-OF-ELEMENT b|END-OF-ELEMENT a|END-OF-DOCUMENT ");
}

// The same document in all forms gives the same events.
TEST(XmlParse, FormsAgree)
{
    const std::string ascii =
        "<?xml version=\"1.0\"?><!DOCTYPE r [<?p ]?>]><r a='1' a2=\"x&quot;y\"><![CDATA[ & ]]>t&unknown;";
    ParsedDocument expected(ascii, 1208, 0);
    ASSERT_EQ(expected.events.back().name, "UNKNOWN-REFERENCE-IN-CONTENT");
    EXPECT_EQ(expected.code, 120 - 5); // in silence to the end, in content
    for (const char *page : {"TQX-1140", "TQX-1047", "TQX-273", "TQX-1148"}) {
        ParsedDocument run(converted(ascii, page), static_cast<uint32_t>(atoi(page + 4)), 0);
        ASSERT_EQ(run.events.size(), expected.events.size()) << page;
        EXPECT_EQ(run.code, expected.code);
        for (size_t i = 0; i < run.events.size(); i++) {
            EXPECT_EQ(run.events[i].name, expected.events[i].name);
            EXPECT_EQ(run.events[i].text, converted(expected.events[i].text, page));
        }
    }
    for (const char16_t *mark : {u"", u"\uFEFF"}) {
        ParsedDocument run(utf16(mark + std::u16string(ascii.begin(), ascii.end())), 1202, 0);
        ASSERT_EQ(run.events.size(), expected.events.size());
        for (size_t i = 0; i < run.events.size(); i++) {
            const std::string &text = expected.events[i].text;
            EXPECT_EQ(run.events[i].name, expected.events[i].name);
            size_t shown = run.events[i].name == "EXCEPTION" ? text.size() : 2 * text.size(); // units, not doubled
            EXPECT_EQ(run.events[i].text, utf16(std::u16string(text.begin(), text.end())).substr(0, shown));
            EXPECT_EQ(run.events[i].national, !text.empty());
        }
    }
}

struct CodeCase {
    const char *document;
    int32_t code;
    const char *after; // the event that follows the exception and an answer of 0
};

// Fatal codes stay whatever the answer; recoverable ones give at most one event more.
TEST(XmlParse, CodesOfTheDocument)
{
    const CodeCase cases[] = {
        {"<a/>x<", 1, "CONTENT-CHARACTERS x"},
        {"\n<1a/>", 2, "CONTENT-CHARACTERS <1a/>"},
        {"<a b='' b=''/>", 3, ""},
        {"<a b='x<y'/>", 4, "ATTRIBUTE-CHARACTERS <"},
        {"<a></b>", 5, "END-OF-ELEMENT b"},
        {"<a>\x01</a>", 6, ""},
        {"<a>\xEF\xBF\xBF</a>", 6, ""},
        {"<a><![CDATA[\x02]]></a>", 6, ""},
        {"<a>< </a>", 7, ""},
        {"<a>]]></a>", 8, "CONTENT-CHARACTERS ]]>"},
        {"<!--\x01--><a/>", 9, ""},
        {"<!-- -- --><a/>", 10, ""},
        {"<a><!-----></a>", 10, ""},
        {"<?p \x01?><a/>", 11, ""},
        {"<a><?XmL x?></a>", 12, ""},
        {"<a>&#x1G;</a>", 13, "CONTENT-CHARACTERS G"},
        {"<a b='&#1a;'/>", 14, "ATTRIBUTE-CHARACTERS a"},
        {"<a>&#xD800;</a>", 16, "CONTENT-NATIONAL-CHARACTER \x00\xD8"},
        {"<a>&#0;</a>", 16, "CONTENT-NATIONAL-CHARACTER"},
        {"<a>&#;</a>", 16, "CONTENT-NATIONAL-CHARACTER"},
        {"<a>&#99999999999999999999;</a>", 16, "CONTENT-NATIONAL-CHARACTER \xFF\xDB\xFF\xDF"},
        {"<a b='&c;'/>", 17, "UNKNOWN-REFERENCE-IN-ATTRIBUTE c"},
        {"<a>&amp</a>", 17, "UNKNOWN-REFERENCE-IN-CONTENT amp"},
        {"<a b='\x1F'/>", 18, ""},
        {"<?xml version='1.0' encoding='8'?><a/>", 15, ""},
        {"<!DOCTYP a><a/>", 122, ""},
        {"<!DOCTYPE a><!DOCTYPE a><a/>", 123, ""},
        {"<a 1=''/>", 125, ""},
        {"<a =''/>", 126, ""},
        {"<a b/>", 127, ""},
        {"<a b=c/>", 128, ""},
        {"<a b='' 1=''/>", 130, ""},
        {"<a b=''c=''/>", 130, ""},
        {"<a b='' ?>", 131, ""},
        {"<a/ >", 132, ""},
        {"<a></ a>", 133, ""},
        {"<a></a/>", 134, ""},
        {"<a><1/></a>", 135, ""},
        {"<a><![CDATB[</a>", 136, ""},
        {"<a><!-x</a>", 137, ""},
        {"<!-x--><a/>", 137, ""},
        {"<? p?><a/>", 138, ""},
        {"<?p/?><a/>", 139, ""},
        {"<?p?<a/>", 140, ""},
        {"<a>& </a>", 141, ""},
        {"<?xml encoding='UTF-8'?><a/>", 142, ""},
        {"<?xml version '1.0'?><a/>", 143, ""},
        {"<?xml version=1.0?><a/>", 144, ""},
        {"<?xml version='1.0\"?><a/>", 145, ""},
        {"<?xml version='1.0'encoding='UTF-8'?><a/>", 146, ""},
        {"<?xml version='1.0' ecoding='UTF-8'?><a/>", 147, ""},
        {"<?xml version='1.0' encoding'UTF-8'?><a/>", 148, ""},
        {"<?xml version='1.0' encoding=UTF-8?><a/>", 149, ""},
        {"<?xml version='1.0' encoding='UTF-8\"?><a/>", 150, ""},
        {"<?xml version='1.0' encoding='UTF-8'/><a/>", 151, ""},
        {"<?xml version='1.0' encoding='UTF-8' version='1.0'?><a/>", 152, ""},
        {"<?xml version='1.0' standalone 'yes'?><a/>", 153, ""},
        {"<?xml version='1.0' standalone=yes?><a/>", 154, ""},
        {"<?xml version='1.0' standalone='maybe'?><a/>", 155, ""},
        {"<?xml version='1.0' standalone='yes\"?><a/>", 156, ""},
        {"<?xml version='1.0' standalone='yes'/?><a/>", 157, ""},
        {"<?xml version='1.0' standalone='yes' x?><a/>", 158, ""},
        {"<a/><!DOCTYPE a>", 159, ""},
        {"<a/><b/>", 160, ""},
        {"<a>\xC3(</a>", 161, ""},
        {"<a>\xED\xA0\x80</a>", 161, ""},
        {"<a>\xF0\x9F\x98\x80</a>", 162, ""},
        {"<?xml", 100, ""},
        {"<?xml version='1.0'", 101, ""},
        {"<?xml version='1.0' encoding='UTF-8'  ", 101, ""},
        {"    ", 102, ""},
        {"<!-- -", 102, ""},
        {"<?xml ver", 103, ""},
        {"<?xml version = ", 104, ""},
        {"<?xml version='1.0' encoding='UTF", 106, ""},
        {"<?xml version='1.0' standalone='ye", 108, ""},
        {"<a b=''", 109, ""},
        {"<a b", 109, ""},
        {"<a b='", 110, ""},
        {"<a b='&am", 111, ""},
        {"<ab/", 112, ""},
        {"<abc", 113, ""},
        {"<a><b", 114, ""},
        {"<a>bc", 115, ""},
        {"<a>\xC3", 115, ""},
        {"<a>]]", 115, ""},
        {"<a><?p x?", 116, ""},
        {"<a><!", 117, ""},
        {"<a><!-- ", 118, ""},
        {"<a><![CD", 119, ""},
        {"<a>&#12", 120, ""},
        {"<a/><!--", 121, ""},
        {"<a/>\n<", 121, ""},
    };
    for (const CodeCase &c : cases) {
        bool fatal = c.code >= 100;
        ParsedDocument untouched(c.document);
        EXPECT_EQ(untouched.exception(), c.code) << c.document;
        EXPECT_EQ(untouched.code, c.code) << c.document;
        EXPECT_EQ(untouched.status, 2u);
        EXPECT_EQ(untouched.events.back().name, "EXCEPTION");

        ParsedDocument zero(c.document, 1208, 0);
        if (fatal) {
            EXPECT_EQ(zero.code, c.code) << c.document;
        }
        std::string last = zero.events.back().name == "EXCEPTION" ? "" : zero.events.back().name;
        std::string wanted = c.after;
        EXPECT_EQ(last, wanted.substr(0, wanted.find(' '))) << c.document;
        if (size_t blank = wanted.find(' '); blank != std::string::npos && wanted.substr(0, 15) != "CONTENT-NATIONA") {
            EXPECT_EQ(zero.events.back().text, wanted.substr(blank + 1));
        }
        EXPECT_TRUE(zero.idle && untouched.idle) << c.document;
        EXPECT_EQ(ParsedDocument(c.document, 1208, 4711).code, 4711);
    }
    EXPECT_EQ(ParsedDocument("<a>&#1114112;</a>", 1208, 0).events.back().text, utf16(u"\U0010FFFF"));
    EXPECT_EQ(ParsedDocument("<a></b>", 1208, 0).code, 0);
    EXPECT_EQ(ParsedDocument("<a>\x01</b", 1208, 0).code, 114); // a second fault, in silence
}

TEST(XmlParse, OnlyTenAttributesAreCompared)
{
    std::string tag = "<a";
    for (char c = 'a'; c < 'k'; c++) tag += std::string(" ") + c + "=''";
    EXPECT_EQ(ParsedDocument(tag + " k='' k=''/>").code, 0);
    EXPECT_EQ(ParsedDocument(tag + " a=''/>").code, 0); // the eleventh, as it ever was
    EXPECT_EQ(ParsedDocument(tag.substr(0, tag.size() - 5) + " a=''/>").code, 3);
}

TEST(XmlParse, TextOfAnException)
{
    EXPECT_EQ(ParsedDocument("<a>\xC3\xA9]]></a>").events.back().text, "<a>\xC3\xA9]");
    EXPECT_EQ(ParsedDocument("<a b=c/>").events.back().text, "<a b=");
    EXPECT_EQ(ParsedDocument("<a>bc").events.back().text, "<a>bc");
    EXPECT_EQ(ParsedDocument("\xEF\xBB\xBF<a>b").events[0].text, "<a>b");
}

struct EncodingCase {
    const char *what;
    std::string document;
    uint32_t ccsid;
    int32_t question;      // 0: none
    const char *scannedAs; // XML-TEXT of the content, after an answer of 0; null: the parse is over
};

TEST(XmlParse, ChoiceOfEncoding)
{
    auto e = [](const std::string &text) { return converted(text, "TQX-1140"); };
    const std::string latin = "<a>\xE9</a>", body = "<a>\x7F\xC3\xA9</a>";
    auto declared = [](const char *name) { return std::string("<?xml version='1.0' encoding='") + name + "'?>"; };
    const EncodingCase cases[] = {
        {"Latin-1", latin, 819, 0, "\xE9"},
        {"Latin-1 in a UTF-8 program", latin, 1208, 161, nullptr},
        {"Latin-1, declared, in a UTF-8 program", declared("ISO-8859-1") + latin, 1208, 200819, nullptr},
        {"UTF-8 in a Latin-1 program", body, 819, 0, "\x7F\xC3\xA9"},
        {"ASCII that says UTF-8", declared("UTF-8") + "<a>x</a>", 819, 201208, "x"},
        {"the same page by another name", declared("latin1") + latin, 819, 0, "\xE9"},
        {"unknown name", declared("no-such") + latin, 819, 80, "\xE9"},
        {"another family", declared("TQX-1140") + latin, 819, 85, "\xE9"},
        {"unusable program, no declaration", latin, 4, 89, "\xE9"},
        {"unusable program, unknown name", declared("no-such") + latin, 4, 89, "\xE9"},
        {"unusable program", declared("ISO-8859-1") + latin, 4, 81, "\xE9"},
        {"a name too long to be one", declared(std::string(60, 'x').c_str()) + latin, 819, 0, "\xE9"},
        {"EBCDIC", e("<a>x</a>"), 1140, 0, "\xA7"},
        {"EBCDIC, declared", e(declared("TQX-1140") + "<a>x</a>"), 1140, 0, "\xA7"},
        {"EBCDIC, declared otherwise", e(declared("TQX-273") + "<a>x</a>"), 37, 100273, "\xA7"},
        {"EBCDIC, unknown name", e(declared("no-such") + "<a>x</a>"), 37, 70, "\xA7"},
        {"EBCDIC, foreign name", e(declared("UTF-8") + "<a>x</a>"), 37, 70, "\xA7"},
        {"EBCDIC, unusable program", e(declared("TQX-37") + "<a>x</a>"), 4, 71, "\xA7"},
        {"EBCDIC, nothing", e("<a>x</a>"), 4, 72, "\xA7"},
        {"EBCDIC, nothing usable", e(declared("no-such") + "<a>x</a>"), 4, 73, "\xA7"},
        {"UTF-16 in a program of bytes", utf16(u"<a>x</a>"), 819, 92, "x"}, // lengths are units
        {"UTF-16, big-endian", std::string("\xFE\xFF\0<\0a\0/\0>", 10), 1202, 315, nullptr},
        {"UTF-16, big-endian, no mark", std::string("\0<\0a\0/\0>", 8), 1202, 315, nullptr},
        {"UCS-4", std::string("<\0\0\0a\0\0\0", 8), 1202, 316, nullptr},
        {"UCS-4 with a mark", std::string("\xFF\xFE\0\0<\0\0\0", 8), 1202, 316, nullptr},
        {"nothing", "", 819, 317, nullptr},
        {"three bytes", "<a>", 819, 317, nullptr},
        {"no document", "Dear Sir", 819, 317, nullptr},
        {"EBCDIC in a UTF-16 program", e("<a>x</a>"), 1202, 320, nullptr},
        {"ASCII in a UTF-16 program", "<a>x</a>", 1202, 321, nullptr},
        {"EBCDIC in a Latin-1 program", e("<a>x</a>"), 819, 322, nullptr},
        {"ASCII in an EBCDIC program", "<a>x</a>", 37, 323, nullptr},
        {"UTF-8 in a UTF-16 program", body, 1202, 324, nullptr},
        {"UTF-8 in an EBCDIC program", body, 37, 325, nullptr},
    };
    for (const EncodingCase &c : cases) {
        SCOPED_TRACE(c.what);
        ParsedDocument untouched(c.document, c.ccsid), zero(c.document, c.ccsid, 0);
        EXPECT_EQ(untouched.exception(), c.question);
        EXPECT_EQ(untouched.code, c.question);
        if (!c.scannedAs) {
            // A conflict that is answered for the program is one more fault, of another kind.
            EXPECT_EQ(zero.code, c.question == 200819 ? 161 : c.question);
            continue;
        }
        EXPECT_EQ(zero.code, 0);
        EXPECT_EQ(zero.events.back().name, "END-OF-DOCUMENT");
        std::string content;
        for (const XmlEvent &event : zero.events)
            if (event.name == "CONTENT-CHARACTERS") content += event.text;
        EXPECT_EQ(content, c.scannedAs);
    }
    // The declared page, for the answer that is its number.
    EXPECT_EQ(ParsedDocument(declared("ISO-8859-1") + latin, 1208, 819).code, 0);
    EXPECT_EQ(ParsedDocument(e(declared("TQX-273") + "<a>x</a>"), 37, 273).code, 0);
    EXPECT_EQ(ParsedDocument(e(declared("TQX-273") + "<a>x</a>"), 37, 5).code, 5);
}

TEST(XmlParse, Utf16Characters)
{
    EXPECT_EQ(ParsedDocument(utf16(u"<a>\U0001F600\u4E00</a>"), 1202).code, 0);
    EXPECT_EQ(ParsedDocument(utf16(u"<\u4E00 \u00E9='x'/>"), 1202).code, 0);
    EXPECT_EQ(ParsedDocument(utf16(std::u16string(u"<a>") + char16_t(0xD83D) + u"x</a>"), 1202).code, 6);
    EXPECT_EQ(ParsedDocument(utf16(std::u16string(u"<a>01234567") + char16_t(0xFFFE) + u"</a>"), 1202).code, 6);
    EXPECT_EQ(ParsedDocument(utf16(u"<a b='0123456789<'/>"), 1202).code, 4);
    EXPECT_EQ(ParsedDocument(utf16(u"<a/>") + "x", 1202).code, 0); // half a unit is none
}

TEST(XmlParse, NamesOfEventsInEbcdic)
{
    ParseStatement statement("<a/>", 4, 819);
    statement.block.eventEncoding = -1;
    std::vector<std::string> names;
    statement.seen = [&](ParseStatement &s) { names.push_back(std::string(s.event, ZVK_XML_EVENT_LENGTH)); };
    EXPECT_EQ(statement.run(), 0);
    ASSERT_EQ(names.size(), 4u);
    EXPECT_EQ(names[1], converted("START-OF-ELEMENT              ", "TQX-1140"));
}

// What a processing procedure may do: end the parse at any event, parse another document, end the
// run unit; and what it must not.
TEST(XmlParse, ProcedureEndsTheParse)
{
    for (size_t stop = 0; stop < 6; stop++) {
        ParseStatement statement("<a b='c'>d</a>", 14, 819);
        size_t count = 0;
        statement.seen = [&](ParseStatement &s) {
            if (count++ == stop) s.code = -1;
        };
        EXPECT_EQ(statement.run(), -1);
        EXPECT_EQ(count, stop + 1);
        EXPECT_TRUE(statement.isIdle());
        EXPECT_EQ(statement.status, 2u);
    }
}

TEST(XmlParse, NestedStatements)
{
    ParseStatement outer("<a><b/><b/></a>", 15, 819);
    std::string names;
    outer.seen = [&](ParseStatement &s) {
        names += s.name() + " ";
        if (s.name() != "START-OF-ELEMENT") return;
        ParsedDocument inner("<x><y>", 819);
        EXPECT_EQ(inner.code, 115);
    };
    EXPECT_EQ(outer.run(), 0);
    EXPECT_EQ(names, "START-OF-DOCUMENT START-OF-ELEMENT START-OF-ELEMENT END-OF-ELEMENT START-OF-ELEMENT "
                     "END-OF-ELEMENT END-OF-ELEMENT END-OF-DOCUMENT ");
}

KVR2_PIECE(stop_run_inside)
{
    CompiledProgram program("MAINPGM");
    int status = compiledMain(program, [] {
        static ParseStatement statement("<a><b/></a>", 11, 819); // the jump leaves nothing behind
        statement.seen = [](ParseStatement &s) {
            if (s.text() == "b") _zvkRunUnitTerm(7);
        };
        statement.run();
    });
    exit(status);
}

KVR2_PIECE(same_block_inside)
{
    ParseStatement statement("<a/>", 4, 819);
    statement.seen = [](ParseStatement &s) { s.run(); };
    statement.run();
}

KVR2_PIECE(text_left)
{
    ParseStatement statement("<a/>", 4, 819);
    statement.procedure.entry = [](void *) {};
    statement.run();
}

TEST(XmlParse, ProcedureAndRunUnit)
{
    EXPECT_EQ(runPiece("stop_run_inside").status, 7);
    EXPECT_TRUE(holds(runPiece("same_block_inside").err, "ZVK242S"));
    EXPECT_TRUE(holds(runPiece("text_left").err, "ZVK243S"));
}

KVR2_PIECE(locale_pages)
{
    ParseStatement native("<a>\xC3\xA9</a>", 9, 0), ebcdic("\x4C\x81\x61\x6E", 4, 1140);
    int32_t codes[] = {native.run(), ebcdic.run()};
    printf("%d %u %d %u\n", codes[0], native.block.ccsid, codes[1], ebcdic.block.ccsid);
}

TEST(XmlParse, PagesOfTheRunUnit)
{
    EXPECT_EQ(runPiece("locale_pages", {.env = {{"LC_ALL", "C.UTF-8"}, {"EBCDIC_CODEPAGE", "TQX-1148"}}}).out,
              "0 1208 0 1148\n");
    EXPECT_EQ(runPiece("locale_pages", {.env = {{"LC_ALL", "C"}}}).out, "0 819 0 1140\n");
}

} // namespace
