#include "tools/json_object.h"

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace file_tool {

namespace {

// Reads on from a place in the text, which ends with a NUL.
struct Json {
    const char *at;
    bool blank()
    {
        while (*at && isspace(static_cast<unsigned char>(*at))) ++at;
        return true;
    }
    bool take(char c) { return blank() && *at == c && ++at; }

    static void addUtf8(uint32_t code, std::string *text)
    {
        if (code < 0x80) {
            *text += static_cast<char>(code);
            return;
        }
        int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        *text += static_cast<char>((0xF80 >> more & 0xFF) | code >> 6 * more);
        while (more--) *text += static_cast<char>(0x80 | (code >> 6 * more & 0x3F));
    }
    bool unit(uint32_t *code)
    {
        char digits[5] = {};
        for (int i = 0; i < 4; ++i)
            if (!isxdigit(static_cast<unsigned char>(digits[i] = *at)) || !++at) return false;
        *code = static_cast<uint32_t>(strtoul(digits, nullptr, 16));
        return true;
    }
    bool string(std::string *text)
    {
        text->clear();
        if (!take('"')) return false;
        for (; *at && *at != '"';) {
            if (*at != '\\') {
                *text += *at++;
                continue;
            }
            static const char from[] = "\"\\/bfnrt", to[] = "\"\\/\b\f\n\r\t";
            char letter = *++at;
            if (!letter) return false;
            ++at;
            if (const char *known = strchr(from, letter)) {
                *text += to[known - from];
                continue;
            }
            uint32_t code, low;
            if (letter != 'u' || !unit(&code)) return false;
            if (code >= 0xD800 && code < 0xDC00) {
                if (*at++ != '\\' || *at++ != 'u' || !unit(&low) || low < 0xDC00 || low > 0xDFFF) return false;
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            }
            addUtf8(code, text);
        }
        return *at == '"' && ++at;
    }
    bool value(std::string *text)
    {
        blank();
        if (*at == '"') return string(text);
        text->clear();
        if (strncmp(at, "null", 4) == 0) return at += 4, true;
        while (*at && strchr("+-.0123456789eE", *at)) *text += *at++;
        return !text->empty();
    }
    bool object(std::vector<std::string> *names, std::vector<std::string> *values)
    {
        names->clear();
        values->clear();
        if (!take('{')) return false;
        if (!take('}')) {
            do {
                std::string name, said;
                if (!(blank() && string(&name)) || !take(':') || !value(&said)) return false;
                names->push_back(name);
                values->push_back(said);
            } while (take(','));
            if (!take('}')) return false;
        }
        return blank() && !*at;
    }
};

} // namespace

bool readJsonObject(const std::string &line, std::vector<std::string> *names, std::vector<std::string> *values)
{
    Json json = {line.c_str()};
    return strlen(line.c_str()) == line.size() && json.object(names, values);
}

} // namespace file_tool
