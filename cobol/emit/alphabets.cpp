// ALPHABET and CLASS of SPECIAL-NAMES: a table of 256 bytes each.
//
// An alphabet's table gives each character its weight; ALSO gives several characters one weight,
// and characters that the clause does not name come after the others. A class's table has 0 for its
// members.
#include <algorithm>
#include <iconv.h>
#include <numeric>

#include "cobol/emit/alphabets.h"
#include "cobol/emit/join.h"
#include "cobol/emit/values.h"

namespace kvrcob {
namespace {

struct AlphabetTables {
    Meaning &meaning;
    Program &program;
    uint32_t &lastNumber;
    std::string &globals;

    void alphabet(Alphabet &a);
    void userClass(UserClass &c);
    void collatingSequence();

private:
    void error(Tok at, const std::string &text) { meaning.error(at, text); }
    std::string characters(const Expr *e);
    bool ends(const Expr *from, const Expr *to, int &first, int &last);
    void clauseWeights(const Alphabet &a, std::vector<int> &weight, int &next);
    void byteTable(const char *prefix, uint32_t number, const std::vector<int> &bytes);
};

// The characters that a literal of an ALPHABET or CLASS clause stands for; a number is an ordinal
// of the native character set.
std::string AlphabetTables::characters(const Expr *e)
{
    switch (e->kind) {
    case ExprKind::String:
        return std::string(e->text);
    case ExprKind::Number: {
        int ordinal = std::atoi(std::string(e->text).c_str());
        if (ordinal >= 1 && ordinal <= 256) return std::string(1, static_cast<char>(ordinal - 1));
        error(e->at, "a character's number is from 1 to 256");
        return "";
    }
    case ExprKind::Figurative:
        return std::string(1, static_cast<char>(figurativeByte(e->op)));
    case ExprKind::Reference: {
        int byte = e->ref->names.size() == 1 ? meaning.symbolic(program, e->ref->names[0]) : -1;
        if (byte >= 0) return std::string(1, static_cast<char>(byte));
        const Expr *value = meaning.constant(program, e);
        if (value != e) return characters(value);
        break;
    }
    default:
        break;
    }
    error(e->at, "a literal is needed here");
    return "";
}

// The weights of EBCDIC, code page 1047: a character's weight is its EBCDIC code.
bool ebcdicWeights(std::vector<int> &weight)
{
    iconv_t converter = iconv_open("IBM1047", "ISO-8859-1");
    if (converter == reinterpret_cast<iconv_t>(-1)) return false;
    bool good = true;
    for (int c = 0; c < 256; c++) {
        char in = static_cast<char>(c), out = 0, *from = &in, *to = &out;
        size_t left = 1, room = 1;
        if (iconv(converter, &from, &left, &to, &room) == static_cast<size_t>(-1) || room) good = false;
        weight[static_cast<size_t>(c)] = static_cast<unsigned char>(out);
    }
    iconv_close(converter);
    return good;
}

// The two ends of THRU; false, and told, if they are no single characters.
bool AlphabetTables::ends(const Expr *from, const Expr *to, int &first, int &last)
{
    const std::string low = characters(from);
    if (low.empty()) return false; // told already
    const std::string high = characters(to);
    if (low.size() != 1 || high.size() != 1) {
        error(from->at, "THRU goes between single characters");
        return false;
    }
    first = static_cast<unsigned char>(low[0]);
    last = static_cast<unsigned char>(high[0]);
    return true;
}

// The weight of each character, in the order in which the clause names them; `next`: the weight
// after the last. THRU may go down.
void AlphabetTables::clauseWeights(const Alphabet &a, std::vector<int> &weight, int &next)
{
    auto give = [&](int c, int w, const Expr *e) {
        int &now = weight[static_cast<size_t>(c)];
        if (now >= 0) return error(e->at, "this character is in the alphabet already");
        now = w;
    };
    for (const Alphabet::Part &part : a.parts) {
        if (part.thru) {
            int first = 0, last = 0;
            if (!ends(part.from, part.thru, first, last)) continue;
            const int step = first <= last ? 1 : -1;
            for (int c = first; c != last + step; c += step) give(c, next++, part.from);
            continue;
        }
        const std::string named = characters(part.from);
        if (named.empty()) continue;
        if (part.also.empty()) {
            for (unsigned char c : named) give(c, next++, part.from);
            continue;
        }
        give(static_cast<unsigned char>(named[0]), next, part.from);
        for (const Expr *e : part.also)
            for (unsigned char c : characters(e)) give(c, next, e);
        next++;
    }
}

// A table of 256 bytes in C.
void AlphabetTables::byteTable(const char *prefix, uint32_t number, const std::vector<int> &bytes)
{
    globals += joined("static const uint8_t ", prefix, number, "[256] __attribute__((unused)) = {");
    for (size_t c = 0; c < 256; c++) globals += joined(c ? "," : "", bytes[c]);
    globals += "};\n";
}

void AlphabetTables::alphabet(Alphabet &a)
{
    a.number = ++lastNumber;
    std::vector<int> weight(256, -1);
    int next = 0;
    if (a.kind == K_EBCDIC) {
        if (!ebcdicWeights(weight)) return error(a.at, "this system has no table of EBCDIC (the iconv module IBM1047)");
    } else if (a.parts.empty()) {
        std::iota(weight.begin(), weight.end(), 0);
    }
    clauseWeights(a, weight, next);

    // What was not named comes after, in native order.
    for (int &w : weight)
        if (w < 0) w = std::min(next++, 255);
    a.weights.assign(weight.begin(), weight.end());
    byteTable("alphabet", a.number, weight);
}

void AlphabetTables::userClass(UserClass &c)
{
    c.number = ++lastNumber;
    std::vector<int> outside(256, 1);
    for (const ValueRange &range : c.ranges) {
        int first = 0, last = 0;
        if (!range.to) {
            for (unsigned char k : characters(range.from)) outside[k] = 0;
        } else if (ends(range.from, range.to, first, last)) {
            for (int k = std::min(first, last); k <= std::max(first, last); k++) outside[static_cast<size_t>(k)] = 0;
        }
    }
    byteTable("class", c.number, outside);
}

// The program's collating sequence: 0 for a native one.
void AlphabetTables::collatingSequence()
{
    if (!program.collating) return;
    const Alphabet *a = meaning.alphabet(program, program.collating);
    if (a ? a->kind && a->kind != K_EBCDIC : standardOrder(program.collating)) {
        program.collating = 0;
    } else if (!a) {
        error(program.collatingAt, "there is no alphabet " + wordText(program.collating));
        program.collating = 0;
    }
}

} // namespace

bool standardOrder(Word name)
{
    return name == K_NATIVE || name == K_STANDARD_1 || name == K_STANDARD_2 || name == internWord("ASCII");
}

void emitAlphabets(Meaning &meaning, Program &p, Alphabet *ebcdic, uint32_t &number, std::string &globals)
{
    if (ebcdic && !p.collating) {
        ebcdic->name = internWord("-febcdic");
        ebcdic->kind = K_EBCDIC;
        p.alphabets.push_back(ebcdic);
        p.collating = ebcdic->name;
    }
    AlphabetTables tables{meaning, p, number, globals};
    for (Alphabet *a : p.alphabets)
        if (a->weights.empty()) tables.alphabet(*a);
    tables.collatingSequence();
    for (UserClass *c : p.classes)
        if (!c->number) tables.userClass(*c);
}

} // namespace kvrcob
