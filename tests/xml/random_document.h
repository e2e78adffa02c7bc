// Random XML documents, well-formed as they are made, out of characters of one byte in Latin-1.
#pragma once

#include <random>
#include <string>

class DocumentMaker {
public:
    explicit DocumentMaker(uint32_t seed) : random_(seed) {}

    std::string document(bool declaration = true)
    {
        std::string text = declaration && pick(2) ? "<?xml version=\"1.0\"?>" : "";
        text += misc() + element(0) + misc();
        return text;
    }
    // One change: a character that matters taken in, taken out, or put in the place of another.
    void mutate(std::string &text, size_t from)
    {
        static const char marks[] = "<>&;'\"=/!?-[]#x1 a:\n\x01\x7F\xE9\xC3\xA9\xEF";
        if (text.size() <= from) return;
        size_t at = from + pick(text.size() - from);
        char mark = marks[pick(sizeof marks)];
        switch (pick(4)) {
        case 0:
            text.insert(at, 1, mark);
            break;
        case 1:
            text.erase(at, 1 + pick(3));
            break;
        case 2:
            text[at] = mark;
            break;
        default:
            text.insert(at, text.substr(from + pick(text.size() - from), pick(12)));
        }
    }
    size_t pick(size_t below) { return random_() % below; }

private:
    std::string name()
    {
        return one({"a", "b", "item", "x-1", "_y.z", "n:s", "\xE9t\xE9", "Longer-Name-of-Many-Letters"});
    }
    std::string one(std::initializer_list<const char *> choices) { return choices.begin()[pick(choices.size())]; }
    std::string chars(const char *except)
    {
        static const char set[] = "abc xyz\n\t0123,.;:=-?!]'\"/>\xE9\xFC The quick brown fox jumps over the lazy dog\r";
        std::string text;
        for (size_t n = pick(pick(8) == 0 ? 90 : 12); n > 0; n--) {
            char c = set[pick(sizeof set - 1)];
            if (!strchr(except, c)) text += c;
        }
        return text;
    }
    std::string reference()
    {
        return one({"&amp;", "&lt;", "&gt;", "&quot;", "&apos;", "&#65;", "&#xE9;", "&#x1F600;", "&#10;", "&#x4e00;"});
    }
    std::string misc()
    {
        std::string text;
        for (size_t n = pick(3); n > 0; n--)
            text += one({" ", "\n", "<!---->", "<!-- a-b < & -->", "<?pi?>", "<?go  a ?b > ?>"});
        return text;
    }
    std::string attributes()
    {
        static const char *names[] = {"a", "b", "c-1", "_d", "e:f", "\xE9", "g", "h"};
        std::string text;
        for (size_t i = 0, n = pick(4); i < n; i++) {
            std::string quote = one({"'", "\""});
            text += one({" ", "\n  "}) + names[2 * i + pick(2)] + one({"=", " = "}) + quote;
            for (size_t k = pick(3); k > 0; k--) text += chars("<&'\"") + (pick(2) ? reference() : "");
            text += quote;
        }
        return text + one({"", "", " "});
    }
    std::string element(int depth)
    {
        std::string tag = name(), text = "<" + tag + attributes();
        if (pick(4) == 0) return text + "/>";
        text += ">";
        for (size_t n = pick(5); n > 0; n--) {
            switch (pick(6)) {
            case 0:
                text += reference();
                break;
            case 1:
                text += "<![CDATA[" + chars(">") + "]]>";
                break;
            case 2:
                text += one({"<!-- c -->", "<?pi data?>"});
                break;
            case 3:
                if (depth < 8) text += element(depth + 1);
                break;
            default:
                text += chars("<&>");
            }
        }
        return text + "</" + tag + one({"", " "}) + ">";
    }

    std::mt19937 random_;
};

inline std::string utf8OfLatin1(const std::string &latin)
{
    std::string text;
    for (unsigned char c : latin) {
        if (c >= 0x80) text += static_cast<char>(0xC0 | c >> 6);
        text += static_cast<char>(c < 0x80 ? c : 0x80 | (c & 0x3F));
    }
    return text;
}
