// See words.h.
#include "cobol/text/words.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <vector>

namespace kvrcob {
namespace {

struct Table {
    std::deque<std::string> texts; // addresses stay, so that the map's keys do
    std::unordered_map<std::string_view, Word> numbers;

    Word add(const std::string &text)
    {
        texts.push_back(text);
        Word word = static_cast<Word>(texts.size()) - 1;
        numbers.emplace(texts.back(), word);
        return word;
    }

    Table()
    {
        add("");
        auto known = [this](const char *name) {
            std::string text = name;
            for (char &c : text)
                if (c == '_') c = '-';
            add(text);
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
    auto found = table().numbers.find(upper);
    return found != table().numbers.end() ? found->second : table().add(upper);
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
