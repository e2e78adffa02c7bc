// XML GENERATE. Faults: a tag, attribute or text that is lost, doubled or in the wrong place when
// items repeat or are absent; a text that is not escaped, or is cut wrongly; an encoding that is
// accepted or named wrongly; a write beyond the receiver; a document that does not read back.
#include <expat.h>
#include <gtest/gtest.h>
#include <random>

#include "support/child.h"
#include "support/guarded.h"
#include "xml/parse_statement.h"

namespace {

struct Generated {
    int32_t code;
    std::string text;
};

// A statement under construction: nodes, names, source and edit area grow together.
struct GenerateStatement {
    std::vector<GenerateNode> nodes;
    std::string names = std::string("\x03PGM"), source, edited;
    std::vector<uint64_t> depending;
    XmlGenerateOptions options{};
    XmlConversionContext context{};
    std::string encoding, uri, prefix;

    GenerateStatement() { context.localeName = "en_US.ISO-8859-1"; }

    GenerateNode &node(uint8_t level, int flags, const std::string &name)
    {
        GenerateNode n{};
        n.level = level;
        n.flags = static_cast<uint8_t>(flags);
        if (!name.empty()) names += static_cast<char>(name.size()) + name;
        nodes.push_back(n);
        return nodes.back();
    }
    void group(uint8_t level, const std::string &name, int flags = 0) { node(level, flags | 0x20, name).length = 0; }
    // The layout of a leaf; its data is put in by data().
    void leaf(uint8_t level, const std::string &name, uint32_t length, int dataClass = ZVK_XML_CLASS_NATIVE,
              int flags = 0)
    {
        node(level, flags | dataClass << 4, name).length = length;
    }
    void text(uint8_t level, const std::string &name, const std::string &data, int dataClass = ZVK_XML_CLASS_NATIVE,
              int flags = 0)
    {
        leaf(level, name, static_cast<uint32_t>(data.size()), dataClass, flags);
        source += data;
    }
    void number(uint8_t level, const std::string &name, const std::string &editedText, uint16_t storage = 4,
                int flags = 0)
    {
        GenerateNode &n = node(level, flags | ZVK_XML_NODE_NUMERIC | 0x20, name);
        n.numeric.editedLength = static_cast<uint16_t>(editedText.size());
        n.numeric.storageLength = storage;
        edited += editedText;
        source += std::string(storage, '?');
    }
    void repeat(uint32_t count) { node(1, ZVK_XML_NODE_CONTROL, "").count = count; }
    void repeatDepending(uint64_t count)
    {
        node(1, ZVK_XML_NODE_DEPENDING, "").count = static_cast<uint32_t>(depending.size());
        depending.push_back(count);
    }

    int32_t run(void *receiver, uint32_t capacity, uint32_t receiverClass, uint32_t *length, uint32_t buffer = 0)
    {
        options.encodingLength = encoding.size();
        options.encodingName = encoding.data();
        options.namespaceLength = uri.size();
        options.namespaceUri = uri.data();
        options.prefixLength = prefix.size();
        options.prefix = prefix.data();
        std::vector<GenerateNode> list = nodes;
        list.push_back({});
        return _zvkcXGF(0, receiver, capacity, receiverClass, source.data(), &context, edited.data(), depending.data(),
                        0, buffer, list.data(), reinterpret_cast<const uint8_t *>(names.data()), &options, 0, length);
    }
    Generated run(uint32_t receiverClass = ZVK_XML_RECEIVER_NATIVE)
    {
        std::string text(1 << 16, '\xAA');
        uint32_t length = 77;
        int32_t code = run(text.data(), static_cast<uint32_t>(text.size()), receiverClass, &length);
        bool units = receiverClass == ZVK_XML_RECEIVER_NATIONAL;
        text.resize(units ? 2 * length : length);
        return {code, text};
    }
};

std::string utf16(const std::u16string &text)
{
    return std::string(reinterpret_cast<const char *>(text.data()), text.size() * 2);
}

TEST(XmlGenerate, GroupsAttributesAndRepeats)
{
    GenerateStatement s;
    s.encoding = "819";
    s.options.options = ZVK_XML_DECLARATION | ZVK_XML_STANDALONE;
    s.group(1, "ORDER");
    s.number(2, "NO", "  0012", 4, ZVK_XML_NODE_ATTRIBUTE);
    s.text(2, "KIND", "a<b  ", ZVK_XML_CLASS_NATIVE, ZVK_XML_NODE_ATTRIBUTE);
    s.leaf(2, "", 3, ZVK_XML_CLASS_SKIPPED);
    s.source += "xxx";
    s.repeat(2);
    s.group(2, "LINE");
    s.repeat(3);
    s.leaf(5, "ITEM", 4);
    s.leaf(5, "TEXT", 3, ZVK_XML_CLASS_NATIVE, ZVK_XML_NODE_UNTAGGED);
    s.source += "pen ink cap yes"
                "saw axe key  no";
    s.repeatDepending(0);
    s.group(2, "NONE");
    s.leaf(3, "INSIDE", 9);
    s.group(3, "DEEPER");
    s.repeat(4);
    s.leaf(4, "LEAF", 9);
    s.repeatDepending(2);
    s.leaf(2, "1ST", 2);
    s.source += "AB  ";
    Generated result = s.run();
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.text,
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone=\"yes\"?>"
              "<ORDER NO=\"12\" KIND=\"a&lt;b\"><LINE><ITEM>pen</ITEM><ITEM>ink</ITEM><ITEM>cap</ITEM>yes</LINE>"
              "<LINE><ITEM>saw</ITEM><ITEM>axe</ITEM><ITEM>key</ITEM> no</LINE>"
              "<_1ST>AB</_1ST><_1ST></_1ST></ORDER>");
}

TEST(XmlGenerate, SkippedItemsAndUntaggedGroups)
{
    GenerateStatement s;
    s.group(1, "R");
    s.repeat(3);
    s.leaf(2, "", 2, ZVK_XML_CLASS_SKIPPED);
    s.source += "aabbcc";
    s.repeat(2);
    s.group(2, "G", ZVK_XML_NODE_UNTAGGED);
    s.leaf(3, "X", 1);
    s.leaf(3, "", 1, ZVK_XML_CLASS_SKIPPED);
    s.source += "1-2-";
    s.group(2, "EMPTY");
    EXPECT_EQ(s.run().text, "<R><X>1</X><X>2</X><EMPTY></EMPTY></R>");
}

TEST(XmlGenerate, NumbersInRepeatedGroups)
{
    GenerateStatement s;
    s.group(1, "R");
    s.repeat(2);
    s.group(2, "G");
    s.number(3, "N", " 1.0", 2);
    s.leaf(3, "T", 1);
    s.edited += "-2.5";
    s.source = "??a??b";
    EXPECT_EQ(s.run().text, "<R><G><N>1.0</N><T>a</T></G><G><N>-2.5</N><T>b</T></G></R>");
}

TEST(XmlGenerate, NumericTexts)
{
    struct {
        const char *edited, *written, *withComma;
    } cases[] = {
        {" 000", "0", "0"},     {"-0012.50", "-12.50", "-12,50"}, {"000.5", "0.5", "0,5"}, {".5", ".5", ",5"},
        {" 10 ", "10", "10"},   {" INF", "INF", "INF"},           {"-INF", "INF", "INF"},  {"N.N", "NaN", "NaN"},
        {"-N.N", "NaN", "NaN"}, {"000,5", ",5", "0,5"},           {"    ", "", ""},        {"-", "-", "-"}};
    for (auto &c : cases) {
        for (bool comma : {false, true}) {
            GenerateStatement s;
            s.options.options = comma ? ZVK_XML_DECIMAL_COMMA : 0;
            s.number(1, "N", c.edited);
            EXPECT_EQ(s.run().text, std::string("<N>") + (comma ? c.withComma : c.written) + "</N>") << c.edited;
        }
    }
}

TEST(XmlGenerate, EscapesAndHexadecimal)
{
    GenerateStatement s;
    s.encoding = "819";
    s.options.options = ZVK_XML_TELL_HEX;
    s.group(1, "R");
    s.text(2, "A", "<>&'\" \xE9  ");
    s.text(2, "B", std::string("a\x01\xFF ", 4));
    s.text(2, "C", utf16(u"a\u0001 "), ZVK_XML_CLASS_NATIONAL);
    s.text(2, "D", utf16(u"<\U0001F600\u4E00\u00E9"), ZVK_XML_CLASS_NATIONAL);
    s.text(2, "E", utf16(std::u16string(1, char16_t(0xDC00))), ZVK_XML_CLASS_NATIONAL);
    s.text(2, "F", "\x81\x4C\x40\x40", ZVK_XML_CLASS_EBCDIC);
    Generated result = s.run();
    EXPECT_EQ(result.code, 417);
    EXPECT_EQ(result.text, "<R><A>&lt;&gt;&amp;&apos;&quot; \xE9</A><hex.B>6101FF</hex.B><hex.C>00610001</hex.C>"
                           "<D>&lt;&#x1F600;&#x4E00;\xE9</D><hex.E>DC00</hex.E><F>a&lt;</F></R>");
    s.options.options = ZVK_XML_TELL_BARE_HEX;
    EXPECT_EQ(s.run().code, 0);
    s.text(2, "G", std::string(1, '\0'), ZVK_XML_CLASS_NATIVE, ZVK_XML_NODE_UNTAGGED);
    EXPECT_EQ(s.run().code, 418);
    EXPECT_EQ(s.run().text.substr(result.text.size() - 4), "00</R>");
}

TEST(XmlGenerate, HexadecimalAttribute)
{
    GenerateStatement s;
    s.group(1, "R");
    s.text(2, "A", std::string("\x02\x03"), ZVK_XML_CLASS_NATIVE, ZVK_XML_NODE_ATTRIBUTE);
    EXPECT_EQ(s.run().text, "<R hex.A=\"0203\"></R>");
}

TEST(XmlGenerate, NamespaceAndInterface)
{
    GenerateStatement s;
    s.uri = "urn:a&b";
    s.group(1, "R");
    s.text(2, "A", "x");
    EXPECT_EQ(s.run().text, "<R xmlns=\"urn:a&amp;b\"><A>x</A></R>");
    s.prefix = utf16(u"pre");
    s.options.prefixClass = ZVK_XML_TEXT_NATIONAL;
    s.options.options = ZVK_XML_INTERFACE;
    std::string text = s.run().text;
    size_t inner = text.find("<pre:R");
    ASSERT_NE(inner, std::string::npos);
    EXPECT_EQ(text.substr(inner), "<pre:R xmlns:pre=\"urn:a&amp;b\"><pre:A>x</pre:A></pre:R></cbl:PGM>");
    EXPECT_EQ(text.substr(0, 20), "<cbl:PGM xmlns:cbl=\"");
    EXPECT_NE(text.find("Interface\">"), std::string::npos);
}

TEST(XmlGenerate, Encodings)
{
    struct {
        const char *phrase;
        uint32_t receiver;
        int32_t code;
        const char *declared;
    } cases[] = {
        {"1208", 2, 0, "UTF-8"},     {" 0001208 ", 2, 0, "UTF-8"},
        {"UTF-8", 3, 0, "UTF-8"},    {"TQX-912", 2, 0, "ISO-8859-2"},
        {"819", 2, 0, "ISO-8859-1"}, {"923", 2, 0, "ISO-8859-15"},
        {"1140", 3, 0, "tqx-1140"},  {"1140", 2, 0, "tqx-1140"},
        {"", 3, 0, "tqx-1140"},      {"", 4, 0, "UTF-16"},
        {"1202", 4, 0, "UTF-16"},    {"1200", 4, 0, "UTF-16"},
        {"1208", 4, 415, ""},        {"819", 4, 415, ""},
        {"no-such", 2, 410, ""},     {"999999999999", 2, 410, ""},
        {"943", 2, 412, ""},         {"1399", 3, 411, ""},
        {"   ", 2, 410, ""},         {"ISO-8859_14-1998", 2, 414, ""},
    };
    for (auto &c : cases) {
        GenerateStatement s;
        s.encoding = c.phrase;
        s.options.options = ZVK_XML_DECLARATION;
        s.text(1, "A", "b\xE9");
        Generated result = s.run(c.receiver);
        EXPECT_EQ(result.code, c.code) << c.phrase;
        if (c.code) {
            EXPECT_EQ(result.text, "");
            continue;
        }
        // PARSE reads it back, by the declared name.
        uint32_t ccsid = c.receiver == 4                         ? 1202
                         : std::string(c.declared) == "UTF-8"    ? 1208
                         : std::string(c.declared) == "tqx-1140" ? 1140
                         : std::string(c.phrase).find_first_of('-') == std::string::npos
                             ? static_cast<uint32_t>(atoi(c.phrase))
                             : 912;
        ParsedDocument run(result.text, ccsid);
        EXPECT_EQ(run.code, 0) << c.phrase << " " << result.text;
        std::string shown;
        uint32_t room = 64;
        for (const XmlEvent &event : run.events)
            if (event.name == "ENCODING-DECLARATION") shown = event.text;
        if (ccsid == 1140) {
            std::string ascii(64, '\0');
            _zvkUniEtoA(reinterpret_cast<const uint8_t *>(shown.data()), static_cast<uint32_t>(shown.size()),
                        reinterpret_cast<uint8_t *>(ascii.data()), &room);
            shown = ascii.substr(0, 64 - room);
        }
        std::string declared = c.declared;
        EXPECT_EQ(shown, ccsid == 1202 ? utf16(std::u16string(declared.begin(), declared.end())) : declared);
    }

    GenerateStatement s;
    s.text(1, "A", "b");
    s.encoding = std::string(321, 'x');
    EXPECT_EQ(s.run().code, 608);
    s.encoding = std::string(400, ' ') + "UTF-8";
    EXPECT_EQ(s.run().code, 0);
    s.options.options = ZVK_XML_ONLY_UTF8;
    EXPECT_EQ(s.run().code, 0);
    s.encoding = "819";
    EXPECT_EQ(s.run().code, 420);
    s.options = {};
    s.options.encodingClass = ZVK_XML_TEXT_NATIONAL;
    s.encoding = utf16(u" 1208 ");
    EXPECT_EQ(s.run().code, 0);
    s.encoding = utf16(std::u16string(1, char16_t(0xDC00)));
    EXPECT_EQ(s.run().code, 610);
    s.encoding = utf16(u"8") + "1";
    EXPECT_EQ(s.run().code, 611);
    s.options.version = 7;
    EXPECT_EQ(s.run().code, 606);
}

// What a page lacks is written as a reference; what a name cannot be is refused.
TEST(XmlGenerate, ConversionBetweenPages)
{
    GenerateStatement s;
    s.context.localeName = "en_US.UTF-8";
    s.text(1, "\xC3\xA9T", "\xE2\x82\xAC\xC3\xA9\xF0\x9F\x98\x80");
    s.encoding = "819";
    EXPECT_EQ(s.run().text, "<\xE9T>&#x20AC;\xE9&#x1F600;</\xE9T>");
    s.encoding = "UTF-8";
    EXPECT_EQ(s.run().text, "<\xC3\xA9T>\xE2\x82\xAC\xC3\xA9&#x1F600;</\xC3\xA9T>");
    s.encoding = "";
    EXPECT_EQ(s.run(ZVK_XML_RECEIVER_NATIONAL).text, utf16(u"<\u00E9T>\u20AC\u00E9&#x1F600;</\u00E9T>"));

    GenerateStatement broken;
    broken.context.localeName = "en_US.UTF-8";
    broken.encoding = "UTF-8";
    broken.text(1, "A", "\xE2\x82");
    EXPECT_EQ(broken.run().text, "<hex.A>E282</hex.A>");
    broken.text(1, "\x80", "x");
    EXPECT_EQ(broken.run().code, 419);

    GenerateStatement mixed; // double-byte data in a mixed native page
    mixed.context.localeName = "ja_JP.TQX-943";
    mixed.encoding = "UTF-8";
    mixed.text(1, "A", "\x88\xEA<a ");
    mixed.text(1, "B", "\x88");
    EXPECT_EQ(mixed.run().text, "<A>\xE4\xB8\x80&lt;a</A><hex.B>88</hex.B>");
}

KVR2_PIECE(double_byte)
{
    GenerateStatement s;
    s.encoding = "UTF-8";
    s.text(1, "A", "\x45\x41\x40\x40", ZVK_XML_CLASS_DBCS);
    Generated result = s.run();
    printf("%d %s", result.code, result.text.c_str());
}

TEST(XmlGenerate, DoubleByteData)
{
    EXPECT_EQ(runPiece("double_byte", {.env = {{"EBCDIC_CODEPAGE", "TQX-1399"}, {"LC_ALL", "ja_JP"}}}).out,
              "0 <A>\xE4\xB8\x80</A>");
}

// A receiver of every size holds the beginning of the document, and nothing is written beyond it.
TEST(XmlGenerate, ReceiverOfEverySize)
{
    for (uint32_t receiverClass : {ZVK_XML_RECEIVER_NATIVE, ZVK_XML_RECEIVER_EBCDIC, ZVK_XML_RECEIVER_NATIONAL}) {
        GenerateStatement s;
        s.options.options = ZVK_XML_DECLARATION;
        s.group(1, "ROOT");
        s.text(2, "A", "x<y&&\xE9z", ZVK_XML_CLASS_NATIVE, ZVK_XML_NODE_ATTRIBUTE);
        s.text(2, "B", "\x01\x02");
        s.number(2, "C", "-0001");
        s.text(2, "D", utf16(u"ab\U0001F600"), ZVK_XML_CLASS_NATIONAL);
        Generated whole = s.run(receiverClass);
        ASSERT_EQ(whole.code, 0);
        uint32_t unit = receiverClass == ZVK_XML_RECEIVER_NATIONAL ? 2 : 1;
        GuardedItem item(whole.text.size() + 2);
        for (uint32_t size = 0; size <= whole.text.size() + 1; size++) {
            uint8_t *place = item.place(size, size % 3 ? GuardedItem::AtEnd : GuardedItem::AtStart);
            uint32_t length = 77;
            int32_t code = s.run(place, size, receiverClass, &length);
            ASSERT_EQ(code, size / unit * unit < whole.text.size() ? 400 : 0) << size;
            ASSERT_LE(length * unit, size);
            ASSERT_EQ(whole.text.compare(0, length * unit, reinterpret_cast<char *>(place), length * unit), 0);
            ASSERT_TRUE(size != whole.text.size() - unit || length == size / unit);
        }
    }
}

TEST(XmlGenerate, WorkBuffers)
{
    GenerateStatement s;
    s.context.localeName = "ja_JP.TQX-943";
    s.encoding = "UTF-8";
    std::string data, expected;
    for (int i = 0; i < 20000; i++) {
        data += "\x88\xEA";
        expected += "\xE4\xB8\x80";
    }
    s.text(1, "A", data);
    std::string receiver(100000, '\0');
    uint32_t length = 0;
    for (uint32_t buffer : {0u, 1u, 5000u, 1000000u}) {
        EXPECT_EQ(s.run(receiver.data(), 100000, 2, &length, buffer), 0);
        EXPECT_EQ(receiver.substr(0, length), "<A>" + expected + "</A>");
    }
}

// Random items against what a reader finds in the document: another parser, and PARSE.
struct Reader {
    std::string log;
    static void start(void *data, const char *name, const char **attributes)
    {
        auto &r = *static_cast<Reader *>(data);
        r.log += std::string("<") + name;
        for (; *attributes; attributes += 2) r.log += std::string("@") + attributes[0] + "=" + attributes[1];
        r.log += ">";
    }
    static void end(void *data, const char *name)
    {
        static_cast<Reader *>(data)->log += std::string("</") + name + ">";
    }
    static void characters(void *data, const char *text, int length)
    {
        static_cast<Reader *>(data)->log.append(text, static_cast<size_t>(length));
    }
};

TEST(XmlGenerate, ReadsBack)
{
    std::mt19937 random(5);
    auto pick = [&](size_t below) { return random() % below; };
    for (int round = 0; round < 3000; round++) {
        GenerateStatement s;
        s.encoding = "UTF-8";
        std::string expected, letters = "ab<>&'\"z ]";
        auto data = [&](size_t length) {
            std::string text;
            for (size_t i = 0; i < length; i++) text += letters[pick(letters.size())];
            return text;
        };
        auto trimmed = [](std::string text) {
            text.erase(text.find_last_not_of(' ') + 1);
            return text;
        };
        s.group(1, "R");
        expected = "<R";
        for (size_t n = pick(3); n > 0; n--) {
            std::string text = data(1 + pick(9)), name = "A" + std::to_string(n);
            s.text(2, name, text, ZVK_XML_CLASS_NATIVE, ZVK_XML_NODE_ATTRIBUTE);
            expected += "@" + name + "=" + trimmed(text);
        }
        expected += ">";
        for (size_t n = pick(4); n > 0; n--) {
            std::string name = "G" + std::to_string(n);
            size_t groups = pick(4), leafs = pick(4), length = 1 + pick(20);
            if (pick(2) || groups != 1) s.repeat(static_cast<uint32_t>(groups));
            s.group(static_cast<uint8_t>(2 + n), name); // never below the one before: not inside it
            s.repeatDepending(leafs);
            s.leaf(7, "L", static_cast<uint32_t>(length));
            s.number(7, "N", "", 1);
            s.source.pop_back();
            s.nodes.back().numeric.editedLength = 3;
            for (size_t g = 0; g < groups; g++) {
                expected += "<" + name + ">";
                for (size_t l = 0; l < leafs; l++) {
                    std::string text = data(length);
                    s.source += text;
                    expected += "<L>" + trimmed(text) + "</L>";
                }
                std::string number = std::to_string(100 + pick(900));
                s.source += "?";
                s.edited += number;
                expected += "<N>" + number + "</N></" + name + ">";
            }
        }
        expected += "</R>";

        Generated result = s.run();
        ASSERT_EQ(result.code, 0);
        Reader reader;
        auto parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &reader);
        XML_SetElementHandler(parser, Reader::start, Reader::end);
        XML_SetCharacterDataHandler(parser, Reader::characters);
        EXPECT_EQ(XML_Parse(parser, result.text.data(), static_cast<int>(result.text.size()), 1), XML_STATUS_OK);
        XML_ParserFree(parser);
        ASSERT_EQ(reader.log, expected) << result.text;

        std::string ours;
        bool tag = false;
        for (const XmlEvent &event : ParsedDocument(result.text).events) {
            bool attribute = event.name.compare(0, 9, "ATTRIBUTE") == 0;
            if (tag && !attribute) ours += ">";
            tag = attribute || event.name == "START-OF-ELEMENT";
            if (event.name == "START-OF-ELEMENT")
                ours += "<" + event.text;
            else if (event.name == "ATTRIBUTE-NAME")
                ours += "@" + event.text + "=";
            else if (event.name == "END-OF-ELEMENT")
                ours += "</" + event.text + ">";
            else if (event.name != "START-OF-DOCUMENT")
                ours += event.text;
        }
        ASSERT_EQ(ours, expected) << result.text;
    }
}

} // namespace
