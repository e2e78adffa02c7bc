// Catches: a key whose form orders wrong (signs, descending keys, alphabets, byte orders), lengths
// of argument and key that differ, several keys, the wrong one of equal entries; a load beside the
// table, the header or an argument.
//
// The keys are encoded here from plain numbers, and the answer comes from halving those numbers.
#include <algorithm>
#include <functional>

#include "kvr2/search_all.h"
#include "support/share.h"
#include "verbs/guarded_text.h"

namespace {

using Bytes = std::string;

struct Form {
    uint8_t type;
    uint8_t sign;
    bool isSigned;
};

Bytes zonedDigits(int64_t value, size_t count, char zone)
{
    uint64_t rest = static_cast<uint64_t>(std::abs(value));
    Bytes digits(count, zone);
    for (size_t i = count; i-- > 0; rest /= 10) digits[i] = static_cast<char>(zone | static_cast<char>(rest % 10));
    return digits;
}

Bytes encode(const Form &form, int64_t value, size_t length)
{
    bool leading = form.sign & ZVK_SEARCH_SIGN_LEADING, separate = form.sign & ZVK_SEARCH_SIGN_SEPARATE;
    switch (form.type) {
    case ZVK_SEARCH_NUMERIC:
    case ZVK_SEARCH_ZONED:
    case ZVK_SEARCH_ZONED_EBCDIC: {
        bool ebcdic = form.type == ZVK_SEARCH_ZONED_EBCDIC;
        Bytes digits = zonedDigits(value, length - separate, ebcdic ? '\xF0' : '0');
        if (separate) {
            Bytes sign(1, value < 0 ? (ebcdic ? '\x60' : '-') : (ebcdic ? '\x4E' : '+'));
            return leading ? sign + digits : digits + sign;
        }
        char &sign = leading ? digits.front() : digits.back();
        if (value < 0) sign = static_cast<char>(ebcdic ? (sign & 0x0F) | 0xD0 : sign | 0x40);
        return digits;
    }
    case ZVK_SEARCH_PACKED: {
        Bytes digits = zonedDigits(value, 2 * length - 1, 0), item;
        digits += value < 0 ? '\x0D' : '\x0C';
        for (size_t i = 0; i < digits.size(); i += 2) item += static_cast<char>(digits[i] << 4 | digits[i + 1]);
        return item;
    }
    case ZVK_SEARCH_BINARY:
    case ZVK_SEARCH_BINARY_BIG: {
        Bytes item;
        for (size_t i = 0; i < length; i++) item += static_cast<char>(i < 8 ? value >> (8 * i) : value >> 63);
        if (form.type == ZVK_SEARCH_BINARY_BIG) std::reverse(item.begin(), item.end());
        return item;
    }
    case ZVK_SEARCH_FLOAT:
    case ZVK_SEARCH_FLOAT_BIG: {
        float small = static_cast<float>(value);
        double large = static_cast<double>(value);
        long double widest = 0;
        __float128 whole = static_cast<__float128>(value);
        (void)widest;
        Bytes item = length == 4 ? textAt(&small, 4) : length == 8 ? textAt(&large, 8) : textAt(&whole, 16);
        if (form.type == ZVK_SEARCH_FLOAT_BIG) std::reverse(item.begin(), item.end());
        return item;
    }
    case ZVK_SEARCH_NATIONAL_NUMERIC: {
        Bytes digits = zonedDigits(value, length / 2 - separate, '0'), item;
        if (separate) digits.insert(leading ? 0 : digits.size(), 1, value < 0 ? '-' : '+');
        for (char digit : digits) (item += digit) += '\0';
        return item;
    }
    default: { // text of two letters from the number
        Bytes text = {static_cast<char>('A' + (value + 1000) / 26 % 26), static_cast<char>('A' + (value + 1000) % 26)};
        if (form.type == ZVK_SEARCH_NATIONAL) text = {text[0], text[1], text[1], text[0]};
        Bytes blank = form.type == ZVK_SEARCH_NATIONAL       ? Bytes(" \0", 2)
                      : form.type == ZVK_SEARCH_ALPHANUMERIC ? " "
                                                             : "\x40";
        while (text.size() < length) text += blank;
        return text;
    }
    }
}

// What orders the keys: the number, or for texts the text.
int64_t rank(const Form &form, int64_t value)
{
    if (form.type == ZVK_SEARCH_NATIONAL) { // the units' high bytes lead
        Bytes text = encode(form, value, 4);
        return text[1] << 24 | text[0] << 16 | text[3] << 8 | text[2];
    }
    return value;
}

struct Key {
    Form form;
    size_t length, argumentLength;
    bool descending;
};

struct Search {
    std::vector<Key> keys;
    std::vector<std::vector<int64_t>> rows; // values in sense of the table

    int compare(const std::vector<int64_t> &left, const std::vector<int64_t> &right) const
    {
        for (size_t i = 0; i < keys.size(); i++) {
            int64_t a = rank(keys[i].form, left[i]), b = rank(keys[i].form, right[i]);
            if (a != b) return (a < b) != keys[i].descending ? -1 : 1;
        }
        return 0;
    }

    int64_t expected(const std::vector<int64_t> &wanted, uint64_t stride) const
    {
        int64_t low = 0, high = static_cast<int64_t>(rows.size()) - 1;
        while (low <= high) {
            int64_t mid = low + (high - low) / 2;
            int order = compare(rows[static_cast<size_t>(mid)], wanted);
            if (order == 0) return mid * static_cast<int64_t>(stride);
            (order > 0 ? high : low) = order > 0 ? mid - 1 : mid + 1;
        }
        return -1;
    }
};

int64_t searchAll(GuardedTexts &texts, const std::vector<Key> &keys, const std::vector<Bytes> &rows,
                  const std::vector<Bytes> &arguments, uint16_t base = 0, const AlphabetRecord *alphabet = nullptr)
{
    SearchHeader head{};
    head.baseOffset = base;
    head.keyCount = static_cast<int16_t>(keys.size());
    head.argumentCount = static_cast<int16_t>(arguments.size());
    Bytes header = textAt(&head, offsetof(SearchHeader, keys)), table(base, '#');
    uint64_t offset = 0;
    for (const Key &key : keys) {
        SearchKey record{};
        record.type = static_cast<uint8_t>(key.form.type | (key.descending ? ZVK_SEARCH_DESCENDING : 0));
        record.length = static_cast<uint32_t>(key.length);
        record.offset = offset;
        offset += key.length;
        header += textAt(&record, sizeof record);
    }
    std::vector<SearchArgument> values;
    for (const Bytes &argument : arguments) {
        uint64_t length = argument.size();
        header += textAt(&length, 8);
        values.push_back({texts.put(argument), nullptr});
    }
    for (size_t i = 0; i < arguments.size(); i++) header += static_cast<char>(keys[i].form.sign);
    for (const Bytes &row : rows) table += row;
    return _zvkcSrchAll(reinterpret_cast<SearchHeader *>(texts.put(header)), texts.put(table),
                        static_cast<int64_t>(rows.size()), offset, values.data(), nullptr, alphabet);
}

constexpr uint8_t kSeparate = ZVK_SEARCH_SIGN_SEPARATE, kLeading = ZVK_SEARCH_SIGN_LEADING;
constexpr Form kForms[] = {
    {ZVK_SEARCH_ALPHANUMERIC, 0, false},
    {ZVK_SEARCH_ALPHANUMERIC_EBCDIC, 0, false},
    {ZVK_SEARCH_NATIONAL, 0, false},
    {ZVK_SEARCH_NUMERIC, 0, true},
    {ZVK_SEARCH_NUMERIC, kLeading, true},
    {ZVK_SEARCH_NUMERIC, kSeparate, true},
    {ZVK_SEARCH_ZONED, kSeparate | kLeading, true},
    {ZVK_SEARCH_ZONED_EBCDIC, 0, true},
    {ZVK_SEARCH_ZONED_EBCDIC, kLeading, true},
    {ZVK_SEARCH_ZONED_EBCDIC, kSeparate, true},
    {ZVK_SEARCH_NATIONAL_NUMERIC, 0, false},
    {ZVK_SEARCH_NATIONAL_NUMERIC, kSeparate | kLeading, true},
    {ZVK_SEARCH_NATIONAL_NUMERIC, kSeparate, true},
    {ZVK_SEARCH_PACKED, 0, true},
    {ZVK_SEARCH_BINARY, 0, true},
    {ZVK_SEARCH_BINARY_BIG, 0, true},
    {ZVK_SEARCH_FLOAT, 0, true},
    {ZVK_SEARCH_FLOAT_BIG, 0, true},
};

// A length that holds any value of three digits; now and then a long one.
size_t randomLength(std::mt19937 &random, const Form &form)
{
    if (form.type == ZVK_SEARCH_FLOAT || form.type == ZVK_SEARCH_FLOAT_BIG) return size_t{4} << random() % 3;
    if (form.type == ZVK_SEARCH_NATIONAL || form.type == ZVK_SEARCH_NATIONAL_NUMERIC)
        return 2 * (4 + random() % (random() % 4 ? 3 : 100));
    if (form.type == ZVK_SEARCH_BINARY || form.type == ZVK_SEARCH_BINARY_BIG)
        return 2 + random() % (random() % 4 ? 7 : 30);
    return 4 + random() % (random() % 4 ? 6 : 200);
}

TEST(SearchAll, EveryFormAsHalvingThePlainNumbers)
{
    GuardedTexts texts(1 << 16);
    int found = 0;
    for (unsigned i = 0; i < shareOf(20000u); i++) {
        std::mt19937 random(i);
        texts.next(random);
        Search search;
        for (unsigned n = 1 + (random() % 3 ? 0 : random() % 6); n > 0; n--) {
            Key key = {kForms[random() % std::size(kForms)], 0, 0, random() % 2 == 0};
            key.length = randomLength(random, key.form);
            bool isFloat = key.form.type >= ZVK_SEARCH_FLOAT;
            key.argumentLength = isFloat || random() % 2 ? key.length : randomLength(random, key.form);
            search.keys.push_back(key);
        }
        auto value = [&](const Key &key) {
            int64_t number = random() % (search.keys.size() > 1 ? 4 : 300);
            return key.form.isSigned && random() % 2 ? -number : number;
        };
        auto values = [&] {
            std::vector<int64_t> row;
            for (const Key &key : search.keys) row.push_back(value(key));
            return row;
        };
        for (unsigned n = random() % 40; n > 0; n--) search.rows.push_back(values());
        std::stable_sort(search.rows.begin(), search.rows.end(),
                         [&](auto &a, auto &b) { return search.compare(a, b) < 0; });
        std::vector<int64_t> wanted =
            random() % 2 && !search.rows.empty() ? search.rows[random() % search.rows.size()] : values();

        std::vector<Bytes> rows, arguments;
        size_t stride = 0;
        for (const Key &key : search.keys) stride += key.length;
        for (auto &row : search.rows) {
            rows.emplace_back();
            for (size_t k = 0; k < search.keys.size(); k++)
                rows.back() += encode(search.keys[k].form, row[k], search.keys[k].length);
        }
        for (size_t k = 0; k < search.keys.size(); k++)
            arguments.push_back(encode(search.keys[k].form, wanted[k], search.keys[k].argumentLength));
        int64_t answer = searchAll(texts, search.keys, rows, arguments, static_cast<uint16_t>(random() % 50));
        found += answer >= 0;
        ASSERT_EQ(answer, search.expected(wanted, stride))
            << i << ": type " << int{search.keys[0].form.type} << ", " << search.keys.size() << " keys";
    }
    EXPECT_GT(found, shareOf(5000));
}

TEST(SearchAll, ArgumentsThatNoEntryCanHave)
{
    GuardedTexts texts;
    auto lone = [&](const Form &form, const Bytes &row, const Bytes &argument) {
        return searchAll(texts, {{form, row.size(), 0, false}}, {row}, {argument});
    };
    EXPECT_EQ(lone({0, 0, false}, "AB", "ABC"), -1);
    EXPECT_EQ(lone({0, 0, false}, "AB", "AB  "), 0);
    EXPECT_EQ(lone({1, 0, false}, "AB", "AB@@"), 0);
    EXPECT_EQ(lone({0, 0, false}, "", "  "), 0);
    EXPECT_EQ(lone({ZVK_SEARCH_ZONED, 0, true}, "12", "112"), -1);
    EXPECT_EQ(lone({ZVK_SEARCH_ZONED, kLeading, true}, "12", "112"), -1);
    EXPECT_EQ(lone({ZVK_SEARCH_ZONED, kLeading, true}, "r2", "p22"),
              0); // -22, the sign moves to the first digit that is left
    EXPECT_EQ(lone({ZVK_SEARCH_ZONED, kLeading, true}, "p22", "r2"), 0);
    EXPECT_EQ(lone({ZVK_SEARCH_PACKED, 0, true}, "\x12\x3C", "\x01\x12\x3C"), -1);
    EXPECT_EQ(lone({ZVK_SEARCH_BINARY, 0, true}, Bytes("\x80\xFF", 2), Bytes("\x80\xFF\xFF\xFF", 4)), 0);
    EXPECT_EQ(lone({ZVK_SEARCH_BINARY, 0, true}, Bytes("\x80\xFF", 2), Bytes("\x80\xFF\x00\x00", 4)),
              -1); // 65408 is not -128
    EXPECT_EQ(lone({ZVK_SEARCH_FLOAT, 0, true}, Bytes(4, '\0'), Bytes(8, '\0')), -1);
    // A negative zero is zero.
    EXPECT_EQ(lone({ZVK_SEARCH_PACKED, 0, true}, Bytes("\x00\x0D", 2), Bytes("\x00\x0C", 2)), 0);
    EXPECT_EQ(lone({ZVK_SEARCH_ZONED, 0, true}, "0p", "00"), 0);
    EXPECT_EQ(lone({ZVK_SEARCH_FLOAT, 0, true}, Bytes("\0\0\0\x80", 4), Bytes(4, '\0')), 0);
}

TEST(SearchAll, AlphabetsKeysWithoutArgumentsAndEmptyTables)
{
    GuardedTexts texts;
    uint8_t weights[256];
    for (int i = 0; i < 256; i++) weights[i] = static_cast<uint8_t>(i >= 'a' && i <= 'z' ? i - 0x20 : 255 - i);
    weights['.'] = weights[' '];
    AlphabetRecord alphabet{}, native{};
    alphabet.collatingWeights = weights;
    std::vector<Key> key = {{{0, 0, false}, 10, 0, false}};
    std::vector<Bytes> rows = {"aaaaaaaaaa", "bbbbbbbbbb", "cccccccccc", "Z         ", "A         "};
    EXPECT_EQ(searchAll(texts, key, rows, {"Z...."}, 0, &alphabet), 30);
    EXPECT_EQ(searchAll(texts, key, rows, {"Z         ..."}, 0, &alphabet), 30);
    EXPECT_EQ(searchAll(texts, key, rows, {"Z         ..x"}, 0, &alphabet), -1);
    EXPECT_EQ(searchAll(texts, key, rows, {"cccccccccc"}, 0, &native), 20);

    EXPECT_EQ(searchAll(texts, key, {}, {"x"}), -1);
    EXPECT_EQ(_zvkcSrchAll(nullptr, nullptr, 0, 0, nullptr, nullptr, nullptr), -1);
    SearchHeader none{};
    uint8_t table[7] = {};
    EXPECT_EQ(_zvkcSrchAll(&none, table, 7, 1, nullptr, nullptr, nullptr), 3);
    // Only the first key has an argument.
    std::vector<Key> two = {{{0, 0, false}, 1, 0, false}, {{0, 0, false}, 1, 0, false}};
    EXPECT_EQ(searchAll(texts, two, {"Ax", "By", "Cz"}, {"C"}), 4);
}

} // namespace
