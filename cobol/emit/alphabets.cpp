// ALPHABET and CLASS of SPECIAL-NAMES: a table of 256 bytes each.
//
// An alphabet's table gives each character its weight; ALSO gives several characters one weight,
// and characters that the clause does not name come after the others. A class's table has 0 for its
// members.
#include "cobol/emit/emitter.h"

#include <algorithm>
#include <iconv.h>

namespace kvrcob {

// The characters that a literal of an ALPHABET or CLASS clause stands for; a number is an ordinal
// of the native character set.
std::string Emitter::alphabetCharacters(const Expr *e)
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
        int byte = e->ref->names.size() == 1 ? meaning_.symbolic(*program_, e->ref->names[0]) : -1;
        if (byte >= 0) return std::string(1, static_cast<char>(byte));
        const Expr *value = constant(e);
        if (value != e) return alphabetCharacters(value);
        break;
    }
    default:
        break;
    }
    error(e->at, "a literal is needed here");
    return "";
}

// The weights of EBCDIC, code page 1047: a character's weight is its EBCDIC code.
static bool ebcdicWeights(std::vector<int> &weight)
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

// Orders that need no ALPHABET clause, and are the machine's.
bool standardOrder(Word name)
{
    return name == K_NATIVE || name == K_STANDARD_1 || name == K_STANDARD_2 || name == internWord("ASCII");
}

void Emitter::alphabets(Program &p)
{
    if (options_.ebcdic && !p.collating) {
        ebcdic_.name = internWord("-febcdic");
        ebcdic_.kind = K_EBCDIC;
        p.alphabets.push_back(&ebcdic_);
        p.collating = ebcdic_.name;
    }
    program_ = &p;
    for (Alphabet *a : p.alphabets) {
        if (!a->weights.empty()) continue;
        a->number = ++constants_;
        std::vector<int> weight(256, -1);
        if (a->kind == K_EBCDIC && !ebcdicWeights(weight)) {
            error(a->at, "this system has no table of EBCDIC (the iconv module IBM1047)");
            continue;
        }
        int next = 0;
        if (a->parts.empty() && a->kind != K_EBCDIC) {
            for (int i = 0; i < 256; i++) weight[static_cast<size_t>(i)] = i;
        }
        auto give = [&](unsigned char c, int w, const Expr *e) {
            if (weight[c] >= 0)
                error(e->at, "this character is in the alphabet already");
            else
                weight[c] = w;
        };
        for (const Alphabet::Part &part : a->parts) {
            std::string from = alphabetCharacters(part.from);
            if (from.empty()) continue;
            if (part.thru) {
                std::string to = alphabetCharacters(part.thru);
                if (from.size() != 1 || to.size() != 1) {
                    error(part.from->at, "THRU goes between single characters");
                    continue;
                }
                int x = static_cast<unsigned char>(from[0]), y = static_cast<unsigned char>(to[0]);
                for (int c = x;; c += x <= y ? 1 : -1) {
                    give(static_cast<unsigned char>(c), next++, part.from);
                    if (c == y) break;
                }
                continue;
            }
            if (!part.also.empty()) {
                give(static_cast<unsigned char>(from[0]), next, part.from);
                for (const Expr *e : part.also)
                    for (char c : alphabetCharacters(e)) give(static_cast<unsigned char>(c), next, e);
                next++;
                continue;
            }
            for (char c : from) give(static_cast<unsigned char>(c), next++, part.from);
        }
        // What was not named comes after, in native order.
        for (int c = 0; c < 256; c++)
            if (weight[static_cast<size_t>(c)] < 0) weight[static_cast<size_t>(c)] = std::min(next++, 255);
        a->weights.resize(256);
        globals_ += joined("static const uint8_t alphabet", a->number, "[256] __attribute__((unused)) = {");
        for (int c = 0; c < 256; c++) {
            a->weights[static_cast<size_t>(c)] = static_cast<uint8_t>(weight[static_cast<size_t>(c)]);
            globals_ += joined(c ? "," : "", weight[static_cast<size_t>(c)]);
        }
        globals_ += "};\n";
    }
    if (p.collating) {
        const Alphabet *a = meaning_.alphabet(p, p.collating);
        if (!a && standardOrder(p.collating)) {
            p.collating = 0;
        } else if (!a) {
            error(p.collatingAt, "there is no alphabet " + wordText(p.collating));
            p.collating = 0;
        } else if (a->kind && a->kind != K_EBCDIC) {
            p.collating = 0; // native
        }
    }
    for (UserClass *c : p.classes) {
        if (c->number) continue;
        c->number = ++constants_;
        std::vector<int> in(256, 1);
        for (const ValueRange &range : c->ranges) {
            std::string from = alphabetCharacters(range.from);
            if (range.to) {
                std::string to = alphabetCharacters(range.to);
                if (from.size() != 1 || to.size() != 1) {
                    error(range.from->at, "THRU goes between single characters");
                    continue;
                }
                int x = static_cast<unsigned char>(from[0]), y = static_cast<unsigned char>(to[0]);
                if (x > y) std::swap(x, y);
                for (int k = x; k <= y; k++) in[static_cast<size_t>(k)] = 0;
            } else {
                for (char k : from) in[static_cast<unsigned char>(k)] = 0;
            }
        }
        globals_ += joined("static const uint8_t class", c->number, "[256] __attribute__((unused)) = {");
        for (int k = 0; k < 256; k++) globals_ += joined(k ? "," : "", in[static_cast<size_t>(k)]);
        globals_ += "};\n";
    }
}

} // namespace kvrcob
