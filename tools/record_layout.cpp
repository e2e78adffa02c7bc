#include "tools/record_layout.h"

#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace file_tool {

namespace {

constexpr size_t kMostFields = 100000;

// A line of the map, "  05    BALANCE    26    5  PACKED-DECIMAL", and the clauses of its entry.
struct Item {
    unsigned level = 0;
    std::string name, usage, picture;
    uint32_t offset = 0, length = 0, occurs = 1;
    bool redefines = false, signApart = false, depends = false;
};

std::string upper(std::string text)
{
    for (char &c : text) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    return text;
}

// The output of kvrcob with these options; false: it could not read the copybook, and has said so.
bool runCompiler(const char *options, const std::string &program, std::string *output)
{
    std::string command = std::string("kvrcob ") + options + " '" + program + "'";
    FILE *from = popen(command.c_str(), "r"); // `program` is a name of our own making
    if (!from) return false;
    char part[4096];
    output->clear();
    for (size_t got; (got = fread(part, 1, sizeof part, from)) > 0;) output->append(part, got);
    return pclose(from) == 0;
}

// A copybook may begin with its record, or leave the level 01 to the program: its first number that
// is no line's says so.
bool beginsWithRecord(const char *copybook)
{
    FILE *from = fopen(copybook, "r");
    char line[512];
    unsigned long level = 1;
    for (bool found = false; from && !found && fgets(line, sizeof line, from);) {
        if (strlen(line) > 6 && (line[6] == '*' || line[6] == '/')) continue;
        for (char *at = line; *at && !found;) {
            char *end = at;
            while (isspace(static_cast<unsigned char>(*at))) ++at;
            level = strtoul(at, &end, 10);
            if (end == at) {
                level = 1; // a comment, or no entry
                break;
            }
            found = end - at < 6;
            at = end;
        }
    }
    if (from) fclose(from);
    return level <= 1;
}

// The copybook goes by a short name beside the program: its own may be too long for a line.
bool writeProgram(const std::string &name, const char *copybook, bool needsRecord)
{
    FILE *to = fopen(name.c_str(), "w");
    if (!to) return false;
    fprintf(to, "       IDENTIFICATION DIVISION.\n       PROGRAM-ID. LAYOUT.\n       DATA DIVISION.\n"
                "       WORKING-STORAGE SECTION.\n");
    if (needsRecord) fprintf(to, "       01  LAYOUT-RECORD.\n");
    fprintf(to, "       COPY \"%s\".\n       PROCEDURE DIVISION.\n           STOP RUN.\n", copybook);
    return fclose(to) == 0;
}

std::vector<Item> itemsOfMap(const std::string &listing)
{
    std::vector<Item> items;
    std::istringstream lines(listing);
    std::string line, word;
    bool inMap = false;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        if (!inMap) {
            inMap = words >> word && word == "Level";
            continue;
        }
        Item item;
        if (!(words >> item.level >> item.name >> item.offset >> item.length >> item.usage)) break;
        while (words >> word) {
            if (word == "OCCURS") words >> item.occurs;
            item.redefines |= word == "REDEFINES";
        }
        items.push_back(item);
    }
    return items;
}

// The next word of a source, a literal with the blanks in it. False: there is none.
bool nextWord(const std::string &source, size_t *at, std::string *word)
{
    while (*at < source.size() && isspace(static_cast<unsigned char>(source[*at]))) ++*at;
    size_t begin = *at;
    char quote = 0;
    for (; *at < source.size() && (quote || !isspace(static_cast<unsigned char>(source[*at]))); ++*at) {
        char c = source[*at];
        if (quote ? c == quote || c == '\n' : c == '"' || c == '\'') quote = quote ? '\0' : c;
    }
    *word = upper(source.substr(begin, *at - begin));
    return *at > begin;
}

// The pictures, from the entries of the source in the order of the map. An entry begins with its
// level after a period, wherever that is in its line.
void takePictures(const std::string &source, std::vector<Item> *items)
{
    size_t at = 0, item = 0;
    Item *now = nullptr;
    std::string word;
    for (bool first = true, picture = false; nextWord(source, &at, &word);) {
        unsigned long level = first ? strtoul(word.c_str(), nullptr, 10) : 0;
        first = word.back() == '.';
        if (level) now = (level <= 49 || level == 77) && item < items->size() ? &(*items)[item++] : nullptr;
        if (!now || level) continue;
        if (first && word.size() > 1) word.pop_back();
        if (picture && word != "IS") now->picture = word, picture = false;
        picture |= word == "PIC" || word == "PICTURE";
        now->signApart |= word == "SEPARATE" || word == "LEADING";
        now->depends |= word == "DEPENDING";
    }
}

// S9(7)V99: nothing but digits, sign and point? Gives the places after the point.
bool isNumber(const std::string &picture, bool *isSigned, uint32_t *scale)
{
    bool point = false, digits = false;
    *isSigned = false;
    *scale = 0;
    for (size_t i = 0; i < picture.size(); ++i) {
        unsigned long times = 1;
        if (picture[i] == 'S') {
            *isSigned = true;
        } else if (picture[i] == 'V') {
            point = true;
        } else if (picture[i] == '9') {
            if (i + 1 < picture.size() && picture[i + 1] == '(') {
                times = strtoul(picture.c_str() + i + 2, nullptr, 10);
                i = picture.find(')', i);
                if (i == std::string::npos) return false;
            }
            digits = true;
            if (point) *scale += static_cast<uint32_t>(times);
        } else {
            return false;
        }
    }
    return digits;
}

Field fieldOf(const Item &item)
{
    Field field;
    bool number = isNumber(item.picture, &field.isSigned, &field.scale);
    field.length = item.length;
    const bool scaled = item.picture.find('P') != item.picture.npos; // digits that are not there
    if (scaled && item.usage != "DISPLAY")
        field.form = Field::bytes;
    else if (item.usage == "DISPLAY")
        field.form = number && !item.signApart ? Field::zoned : Field::text;
    else if (item.usage == "PACKED-DECIMAL")
        field.form = Field::packed;
    else if (item.usage == "BINARY" && item.length <= 8)
        field.form = Field::binary;
    else if (item.usage == "COMP-5" && item.length <= 8)
        field.form = Field::native;
    else if (item.usage == "COMP-1" || item.usage == "COMP-2")
        field.form = Field::floating;
    else
        field.form = Field::bytes;
    if (field.form == Field::text || field.form == Field::bytes) field.isSigned = false, field.scale = 0;
    return field;
}

// The first item of the first record that lies after a table of no fixed size; null: none does.
const Item *itemAfterTable(const std::vector<Item> &items)
{
    uint32_t end = 0;
    for (size_t at = 1; at < items.size() && items[at].level > 1 && items[at].level != 77; ++at) {
        const Item &item = items[at];
        if (end && item.offset >= end && !item.redefines) return &item;
        if (item.depends) end = item.offset + item.length * item.occurs;
    }
    return nullptr;
}

struct Unfolding {
    const std::vector<Item> &items;
    std::vector<Field> *fields;

    // The item at `at`, moved by `shift`; returns the first item after it.
    size_t add(size_t at, uint32_t shift, const std::string &numbers)
    {
        const Item &item = items[at];
        size_t end = at + 1;
        while (end < items.size() && items[end].level > item.level && items[end].level != 77) ++end;
        for (uint32_t n = 0; n < item.occurs && !item.redefines && fields->size() < kMostFields; ++n) {
            std::string inside = numbers;
            if (item.occurs > 1) inside += (inside.empty() ? "" : ",") + std::to_string(n + 1);
            uint32_t moved = shift + n * item.length;
            if (end == at + 1)
                addField(item, moved, inside);
            else
                for (size_t child = at + 1; child < end;) child = add(child, moved, inside);
        }
        return end;
    }

    // Names are columns: one that is there already, as FILLER is, gets a number.
    void addField(const Item &item, uint32_t shift, const std::string &numbers)
    {
        Field field = fieldOf(item);
        field.position = item.offset + shift;
        std::string name = item.name + (numbers.empty() ? "" : "(" + numbers + ")");
        field.name = name;
        auto known = [&] {
            for (const Field &other : *fields)
                if (other.name == field.name) return true;
            return false;
        };
        for (int n = 2; known(); ++n) field.name = name + "-" + std::to_string(n);
        fields->push_back(field);
    }
};

} // namespace

bool readLayout(const char *copybook, std::vector<Field> *fields)
{
    char path[PATH_MAX], folder[] = "/tmp/kvr2-file-XXXXXX";
    if (!realpath(copybook, path)) return say("--layout: %s: %s", copybook, strerror(errno)), false;
    if (strchr(path, '"')) return say("--layout: %s: a copybook's name has no quotation mark", copybook), false;
    if (system("command -v kvrcob >/dev/null 2>&1") != 0)
        return say("--layout: kvrcob, which reads copybooks, is not installed; --fields says what a record is made of"),
               false;
    if (!mkdtemp(folder)) return say("--layout: %s: %s", folder, strerror(errno)), false;
    const std::string program = std::string(folder) + "/layout.cbl", link = std::string(folder) + "/it";
    std::string listing, source, folders = path;
    folders.erase(folders.rfind('/') + 1); // what it copies itself lies beside it
    if (const char *more = getenv("COBCPY")) folders += std::string(":") + more;
    setenv("COBCPY", folders.c_str(), 1);
    bool good = symlink(path, link.c_str()) == 0 && writeProgram(program, link.c_str(), !beginsWithRecord(path)) &&
                runCompiler("check --list", program, &listing) && runCompiler("-E", program, &source);
    unlink(link.c_str());
    unlink(program.c_str());
    rmdir(folder);
    std::vector<Item> items = itemsOfMap(listing);
    if (!good || items.empty()) return say("--layout: %s is no copybook that kvrcob can read", copybook), false;
    takePictures(source, &items);
    if (const Item *moved = itemAfterTable(items))
        return say("--layout: %s: %s comes after a table that OCCURS DEPENDING ON an item: its place is not always the "
                   "same",
                   copybook, moved->name.c_str()),
               false;
    Unfolding{items, fields}.add(0, 0, "");
    return fields->size() < kMostFields || (say("--layout: %s has too many items", copybook), false);
}

bool parseFields(const char *text, std::vector<Field> *fields)
{
    uint32_t position = 0;
    std::string all = text;
    for (size_t at = 0; at <= all.size();) {
        size_t comma = all.find(',', at);
        std::string one = all.substr(at, comma == std::string::npos ? comma : comma - at);
        Field field;
        char name[64], form[16] = "x";
        unsigned length = 0;
        int parts = sscanf(one.c_str(), "%63[^:]:%u:%15s", name, &length, form);
        const char *letter = form;
        if (*letter == 's') field.isSigned = true, ++letter;
        field.form = *letter == '9'   ? Field::zoned
                     : *letter == 'p' ? Field::packed
                     : *letter == 'b' ? Field::binary
                                      : Field::text;
        if (field.form == Field::packed) field.isSigned = true;
        char *end;
        field.scale = static_cast<uint32_t>(strtoul(letter + 1, &end, 10));
        bool known = *letter && strchr("x9pb", *letter) && !*end && field.scale <= 18;
        bool fits = length > 0 && length <= 65535 && !(field.form == Field::binary && length > 8) &&
                    !(field.form == Field::packed && length > 20);
        if (parts < 2 || !known || !fits)
            return say("--fields: '%s' is no NAME:LENGTH:FORM with a form of x, 9, s9, p, b or sb", one.c_str()), false;
        field.name = name;
        field.position = position;
        field.length = length;
        position += length;
        fields->push_back(field);
        if (comma == std::string::npos) break;
        at = comma + 1;
    }
    return true;
}

} // namespace file_tool
