// See words.h.
#include "cobol/text/words.h"

#include <algorithm>
#include <deque>
#include <vector>

namespace kvrcob {
namespace {

// Words by their numbers, and a hash table of the numbers: open addressing, at most half full.
struct Table {
    std::deque<std::string> texts; // references to them stay good
    std::vector<uint32_t> hashes;
    std::vector<Word> slots = std::vector<Word>(4096); // 0: none

    static uint32_t hashOf(std::string_view text)
    {
        uint32_t hash = 2166136261u;
        for (unsigned char c : text) hash = (hash ^ c) * 16777619u;
        return hash ^ hash >> 15;
    }

    // The slot of this word, or the empty one in which it belongs.
    Word &slot(std::string_view text, uint32_t hash)
    {
        size_t at = hash & (slots.size() - 1);
        while (slots[at] && (hashes[slots[at]] != hash || texts[slots[at]] != text)) at = (at + 1) & (slots.size() - 1);
        return slots[at];
    }

    Word find(std::string_view text)
    {
        if (text.empty()) return 0;
        uint32_t hash = hashOf(text);
        Word &word = slot(text, hash);
        return word ? word : add(text, hash, word);
    }

    Word add(std::string_view text, uint32_t hash, Word &place)
    {
        Word word = place = static_cast<Word>(texts.size());
        texts.emplace_back(text);
        hashes.push_back(hash);
        if (2 * texts.size() > slots.size()) {
            std::vector<Word>(2 * slots.size()).swap(slots);
            for (Word w = 1; w < texts.size(); w++) slot(texts[w], hashes[w]) = w;
        }
        return word;
    }

    Table()
    {
        texts.emplace_back();
        hashes.push_back(0);
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

Word internWord(std::string_view text)
{
    static std::string upper; // keeps its room: most words are known already
    upper.assign(text);
    for (char &c : upper)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    return table().find(upper);
}

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

} // namespace kvrcob
