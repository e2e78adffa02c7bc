// See words.h.
#include "cobol/text/words.h"

#include <algorithm>
#include <deque>
#include <vector>

namespace kvrcob {
namespace {

char upperCase(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

// Words by their numbers, and a hash table of the numbers: open addressing, at most half full.
struct Table {
    struct Slot {
        uint32_t hash;
        Word word; // 0: none
        const std::string *text;
    };
    std::deque<std::string> texts; // references to them stay good
    std::vector<Slot> slots = std::vector<Slot>(4096);

    // Whether a text in any case is this word.
    static bool same(const std::string &word, std::string_view text)
    {
        if (word.size() != text.size()) return false;
        for (size_t i = 0; i < text.size(); i++)
            if (word[i] != upperCase(text[i])) return false;
        return true;
    }

    // The slot of this word, or the empty one in which it belongs.
    Slot &slot(std::string_view text, uint32_t hash)
    {
        size_t at = hash & (slots.size() - 1);
        while (slots[at].word && (slots[at].hash != hash || !same(*slots[at].text, text)))
            at = (at + 1) & (slots.size() - 1);
        return slots[at];
    }

    Word find(std::string_view text)
    {
        if (text.empty()) return 0;
        uint32_t hash = 2166136261u;
        for (char c : text) hash = (hash ^ static_cast<unsigned char>(upperCase(c))) * 16777619u;
        hash ^= hash >> 15;
        Slot &place = slot(text, hash);
        return place.word ? place.word : add(text, hash, place);
    }

    Word add(std::string_view text, uint32_t hash, Slot &place)
    {
        Word word = static_cast<Word>(texts.size());
        std::string &upper = texts.emplace_back(text);
        for (char &c : upper) c = upperCase(c);
        place = {hash, word, &upper};
        if (2 * texts.size() > slots.size()) {
            std::vector<Slot> old(2 * slots.size());
            old.swap(slots);
            for (const Slot &s : old)
                if (s.word) slot(*s.text, s.hash) = s;
        }
        return word;
    }

    Table()
    {
        texts.emplace_back();
        auto known = [this](const char *name) {
            std::string text = name;
            for (char &c : text)
                if (c == '_') c = '-';
            find(text);
        };
#define KVRCOB_ADD(name) known(#name);
        KVRCOB_WORDS(KVRCOB_ADD, KVRCOB_ADD)
#undef KVRCOB_ADD
    }
};

Table &table()
{
    static Table all;
    return all;
}

#define KVRCOB_YES(name) true,
#define KVRCOB_NO(name) false,
const bool kReserved[] = {false, KVRCOB_WORDS(KVRCOB_YES, KVRCOB_NO)};

} // namespace

Word internWord(std::string_view text) { return table().find(text); }

const std::string &wordText(Word word) { return table().texts[word]; }

bool isReserved(Word word) { return word < K_count && kReserved[word]; }

size_t wordCount() { return table().texts.size(); }

size_t spellingDistance(const std::string &a, const std::string &b)
{
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); j++) row[j] = j;
    for (size_t i = 1; i <= a.size(); i++) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); j++) {
            size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

Word reservedLike(const std::string &text, bool (*wanted)(Word))
{
    Word best = 0;
    size_t below = text.size() < 4 ? 2 : 3;
    for (Word word = 1; text.size() <= 20 && word < K_count; word++) {
        const std::string &other = wordText(word);
        const bool farApart = other.size() + 2 < text.size() || text.size() + 2 < other.size();
        if (farApart || !isReserved(word) || !wanted(word)) continue;
        const size_t distance = spellingDistance(text, other);
        if (distance >= below) continue;
        below = distance;
        best = word;
    }
    return best;
}

} // namespace kvrcob
