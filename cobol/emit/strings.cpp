// STRING, UNSTRING, INSPECT.
//
// Each statement is one call of the library with a block of words that lists its operands. The
// block is an array of 64-bit words, filled here word by word as kvr2/string_unstring.h and
// kvr2/inspect.h lay it out; a word that holds narrower fields is put together with its shifts:
//
//     STRING A DELIMITED BY "," INTO B    ->    t1[0] = flags << 24; t1[1] = (uint64_t)B; ...
//                                               _zvkcString((StringBlock *)t1, 0, &overflow);
//
// A receiving item that the library does not know (packed, binary, edited) gets its text in a
// buffer first and is then moved to.
#include "cobol/emit/emitter.h"

#include "kvr2/inspect.h"
#include "kvr2/string_unstring.h"

namespace kvrcob {

// Fills the words of a block one after the other.
struct Emitter::Words {
    explicit Words(std::string array) : name(std::move(array)) {}
    std::string name;
    size_t next = 0;
    std::string code;

    template <class... Parts>
    void put(const Parts &...value)
    {
        code += joined(name, "[", next++, "] = ", value..., ";\n");
    }
    void number(uint64_t value) { put(value, "u"); }
    void address(const std::string &value) { put("(uint64_t)(uintptr_t)(", value, ")"); }
    void length(const std::string &value) { put("(uint64_t)(", value, ")"); }
    void text(const Text &t)
    {
        address(t.address);
        length(t.length);
    }
};

namespace {

// Where things are in the blocks, and how long their parts are, in words.
constexpr size_t kWord = sizeof(uint64_t);
constexpr size_t kPointerWord = offsetof(UnstringBlock, pointer) / kWord;
constexpr size_t kTallyWord = offsetof(UnstringBlock, tally) / kWord;
constexpr size_t kDelimitersWord = offsetof(UnstringBlock, delimiters) / kWord;
constexpr size_t kDelimiterWords = sizeof(UnstringDelimiter) / kWord;
constexpr size_t kTargetWords = sizeof(UnstringTarget) / kWord;
constexpr size_t kCountWord = offsetof(UnstringTarget, count) / kWord;
constexpr size_t kPhrasesWord = offsetof(InspectBlock, phrases) / kWord;
constexpr size_t kPhraseWords = sizeof(InspectPhrase) / kWord;
static_assert(offsetof(StringBlock, pointer) == offsetof(UnstringBlock, pointer));

Expr *expressionOf(Reference *ref)
{
    Expr *e = make<Expr>();
    e->kind = ExprKind::Reference;
    e->ref = ref;
    e->at = ref->at;
    return e;
}

constexpr uint64_t kThirdByte = 1u << 24; // a flag byte at offset 3 of its word

// How the library knows a signed numeric DISPLAY item in INSPECT.
uint32_t signFlags(const Loc &loc)
{
    if (!loc.item || loc.refmod || loc.item->category != Category::Numeric || loc.item->usage != Usage::Display)
        return 0;
    switch (loc.item->signForm) {
    case SignForm::Trailing:
        return ZVK_INSPECT_DISPLAY_SIGNED;
    case SignForm::Leading:
        return ZVK_INSPECT_DISPLAY_SIGNED | ZVK_INSPECT_SIGN_LEADING;
    case SignForm::TrailingSeparate:
        return ZVK_INSPECT_DISPLAY_SIGNED | ZVK_INSPECT_SIGN_SEPARATE;
    case SignForm::LeadingSeparate:
        return ZVK_INSPECT_DISPLAY_SIGNED | ZVK_INSPECT_SIGN_SEPARATE | ZVK_INSPECT_SIGN_LEADING;
    default:
        return 0;
    }
}

bool isDisplay(const Item &item)
{
    return !item.elementary() || item.category != Category::Numeric || item.usage == Usage::Display;
}

} // namespace

// A C condition: the POINTER item is a place in a string of so many bytes.
std::string Emitter::pointerIn(Reference *pointer, const std::string &length, std::string &value)
{
    value = temp("int64_t");
    put(value, " = ", integer(expressionOf(pointer)), ";\n");
    return cat(value, " >= 1 && ", value, " <= (int64_t)(", length, ")");
}

void Emitter::storeInteger(Reference *target, const std::string &c)
{
    Loc loc = locate(*target, true);
    if (!loc.good()) return;
    if (!loc.refmod && !isNumericItem(*loc.item)) return error(target->at, "a numeric item is needed here");
    store(integerNumber(cat("(int64_t)", c), 18), loc, false, "");
}

// ---- STRING

void Emitter::stringStatement(const StringStatement &s)
{
    if (!s.target) return;
    Loc target = locate(*s.target, true);
    if (!target.good()) return;
    size_t size = 5;
    for (const StringStatement::Group &group : s.groups) size += 3 + 2 * group.sources.size();
    Words block{temp("uint64_t", cat("[", size, "]"))};
    std::string overflow = temp("uint32_t"), pointer, inRange = "1";
    put(overflow, " = 1;\n");

    block.number(s.pointer ? ZVK_STRING_POINTER * kThirdByte : 0);
    block.address(target.address);
    block.length(target.length);
    if (s.pointer) inRange = pointerIn(s.pointer, target.length, pointer);
    block.put(s.pointer ? cat("(uint64_t)", pointer) : "1");
    block.number(s.groups.size());
    for (const StringStatement::Group &group : s.groups) {
        if (group.delimiter) {
            Text t = text(group.delimiter, true);
            if (!t.good) return;
            block.text(t);
        } else {
            block.number(0);
            block.number(0);
        }
        block.number(group.sources.size());
        for (const Expr *source : group.sources) {
            Text t = text(source, true);
            if (!t.good) return;
            block.text(t);
        }
    }

    if (s.pointer) put("if (!(", inRange, ")) ", overflow, " = 2;\nelse {\n");
    put(block.code);
    put(emits(Do::String, Of::Text), "((StringBlock *)", block.name, ", 0, &", overflow, ");\n");
    if (s.pointer) {
        storeInteger(s.pointer, cat(block.name, "[", kPointerWord, "]"));
        put("}\n");
    }
    raise(cat(overflow, " != 1"), "\"EC-OVERFLOW-STRING\"");
    phrases(s.overflow, cat(overflow, " != 1"));
}

// ---- UNSTRING

// Whether the library can put a field into an item of this kind itself.
static bool takesField(const Item &item)
{
    return !item.elementary() || item.category == Category::Alphanumeric || item.category == Category::Alphabetic;
}

// The block: source, POINTER, TALLYING, delimiters. `inRange`: the C condition that POINTER is a
// place in the source.
bool Emitter::unstringBlock(const UnstringStatement &s, const Text &source, Words &block, std::string &inRange)
{
    uint64_t flags =
        (s.pointer ? uint64_t{ZVK_UNSTRING_POINTER} : 0) | (s.tallying ? uint64_t{ZVK_UNSTRING_TALLYING} : 0);
    block.number(flags * kThirdByte);
    block.text(source);
    std::string pointer, tally = "0";
    if (s.pointer) inRange = pointerIn(s.pointer, source.length, pointer);
    block.put(s.pointer ? cat("(uint64_t)", pointer) : "1");
    if (s.tallying) {
        tally = temp("int64_t");
        put(tally, " = ", integer(expressionOf(s.tallying)), ";\n");
    }
    block.put("(uint32_t)", tally);
    block.put(s.delimiters.size(), "u | (uint64_t)", s.targets.size(), "u << 32");
    for (const UnstringStatement::Delimiter &d : s.delimiters) {
        Text t = text(d.value, true);
        if (!t.good) return false;
        block.text(t);
        block.number(d.all || t.kind == Text::All ? ZVK_UNSTRING_ALL : 0u);
    }
    return true;
}

// A receiving item. A number gets its digits by a MOVE, from a buffer: a field at the end of the
// source may have blanks after them. `longest`: no field is longer.
bool Emitter::unstringTarget(const UnstringStatement &s, const UnstringStatement::Into &into, int64_t longest,
                             Words &targets, UnstringField &field)
{
    field.target = locate(*into.target, true);
    if (!field.target.good()) return false;
    const Item &item = *field.target.item;
    const uint64_t justified = ZVK_UNSTRING_JUST_RIGHT * kThirdByte;
    bool right = false;
    if (field.target.refmod || takesField(item)) {
        right = !field.target.refmod && item.justified;
        targets.address(field.target.address);
        targets.length(field.target.length);
    } else {
        // Without delimiters a field has the length of its item, without a separate sign.
        int64_t width = std::max<int64_t>(1, longest);
        if (s.delimiters.empty()) width = isNumericItem(item) ? std::max(1, item.picture.digits) : field.target.fixed;
        field.buffer = tempBytes(width);
        targets.address(field.buffer);
        targets.number(static_cast<uint64_t>(width));
    }
    targets.number(0);
    targets.number(right ? justified : 0);
    if (into.delimiter) {
        Loc delimiter = locate(*into.delimiter, true);
        if (!delimiter.good()) return false;
        targets.address(delimiter.address);
        targets.length(delimiter.length);
        targets.number(!delimiter.refmod && delimiter.item->justified ? justified : 0);
    } else {
        for (int word = 0; word < 3; word++) targets.number(0);
    }
    targets.put("~(uint64_t)0"); // a count that stays so is of an item that the source did not reach
    return true;
}

void Emitter::unstringStatement(const UnstringStatement &s)
{
    Text source = text(s.source, true);
    if (!source.good) return;
    int64_t longest = source.fixed >= 0 ? source.fixed : source.item ? source.item->storageSize() : 4096;
    Words block{
        temp("uint64_t", cat("[", kDelimitersWord + kDelimiterWords * std::max<size_t>(1, s.delimiters.size()), "]"))};
    Words targets{temp("uint64_t", cat("[", kTargetWords * s.targets.size(), "]"))};
    std::string overflow = temp("uint32_t"), inRange = "1";
    put(overflow, " = 1;\n");
    if (!unstringBlock(s, source, block, inRange)) return;
    std::vector<UnstringField> fields(s.targets.size());
    for (size_t i = 0; i < s.targets.size(); i++)
        if (!unstringTarget(s, s.targets[i], longest, targets, fields[i])) return;

    if (s.pointer) put("if (!(", inRange, ")) ", overflow, " = 2;\nelse {\n");
    put(block.code);
    put(targets.code);
    put(emits(Do::Unstring, Of::Text), "((UnstringBlock *)", block.name, ", (UnstringTarget *)", targets.name, ", 0, &",
        overflow, ");\n");

    // What the library has left: the moves from buffers, COUNT, POINTER, TALLYING.
    auto count = [&](size_t i) { return cat(targets.name, "[", kTargetWords * i + kCountWord, "]"); };
    for (size_t i = 0; i < fields.size(); i++) {
        if (fields[i].buffer.empty()) continue;
        put("if (~", count(i), ") {\n");
        Text field;
        field.address = fields[i].buffer;
        field.length = cat("(int64_t)", count(i));
        moveCharacters(field, fields[i].target);
        put("}\n");
    }
    for (size_t i = 0; i < s.targets.size(); i++) {
        if (!s.targets[i].count) continue;
        put("if (~", count(i), ") {\n");
        storeInteger(s.targets[i].count, count(i));
        put("}\n");
    }
    if (s.pointer) storeInteger(s.pointer, cat(block.name, "[", kPointerWord, "]"));
    if (s.tallying) storeInteger(s.tallying, cat("(uint32_t)", block.name, "[", kTallyWord, "]"));
    if (s.pointer) put("}\n");
    raise(cat(overflow, " != 1"), "\"EC-OVERFLOW-UNSTRING\"");
    phrases(s.overflow, cat(overflow, " != 1"));
}

// ---- INSPECT

// Adds what was counted to an item; EXAMINE counts from zero.
void Emitter::tally(const Reference &counter, const std::string &count, bool fromZero)
{
    Loc loc = locate(counter, true);
    if (!loc.good()) return;
    if (!isNumericItem(*loc.item)) return error(counter.at, "a numeric item is needed here");
    Num counted = integerNumber(count, 18);
    store(fromZero ? counted : add(itemNumber(loc), counted, false), loc, false, "");
}

// An operand of a phrase; `kind`: flags of the phrase, which its first operand carries.
bool Emitter::inspectOperand(const Expr *e, uint32_t kind, PhraseOperand &out)
{
    Text t;
    uint32_t flags = kind;
    const Expr *plain = constant(e);
    Item *item = plain->kind == ExprKind::Reference ? meaning_.resolve(*program_, *plain->ref, true) : nullptr;
    if (item && item->level != 88 && isDisplay(*item)) {
        Loc loc = locate(*plain->ref);
        if (!loc.good()) return false;
        flags |= signFlags(loc);
        t = textOf(loc);
    } else {
        t = text(e, true);
    }
    if (!t.good) return false;
    out.figurative = t.kind != Text::Bytes;
    if (out.figurative) flags |= ZVK_INSPECT_FIGURATIVE;
    out.fixed = flags & ZVK_INSPECT_SIGN_SEPARATE && t.fixed > 0 ? t.fixed - 1 : t.fixed;
    out.words = {cat(flags, "u"), cat("(uint64_t)(", t.length, ")"), cat("(uint64_t)(uintptr_t)(", t.address, ")")};
    return true;
}

// TRAILING phrases, which the library does not know. They are alone in a statement.
void Emitter::inspectTrailing(const InspectStatement &s, const Loc &target)
{
    if (signFlags(target)) return notBuilt(s.at, "INSPECT ... TRAILING of a signed number");
    for (const InspectStatement::Phrase &phrase : s.phrases) {
        if (phrase.mode != K_TRAILING) return notBuilt(s.at, "INSPECT with TRAILING and another phrase");
        Text compared = text(phrase.compared, true), result;
        if (phrase.result) result = text(phrase.result, true);
        if (!compared.good || !result.good) return;
        if (result.kind != Text::Bytes && compared.fixed > 1) return notBuilt(s.at, "this replacement of TRAILING");
        if (phrase.result && compared.fixed >= 0 && result.fixed >= 0 && compared.fixed != result.fixed)
            return error(phrase.result->at, "the two operands must have the same length");
        std::string places[2];
        const Expr *bounds[2] = {phrase.before, phrase.after};
        for (int i = 0; i < 2; i++) {
            Text bound;
            if (bounds[i]) bound = text(bounds[i], true);
            if (!bound.good) return;
            places[i] = bounds[i] ? cat(bound.address, ", ", bound.length) : "0, 0";
        }
        std::string count = temp("int64_t");
        put(count, " = ", emits(Do::InspectTrailing, Of::Text), "(", target.address, ", ", target.length, ", ",
            compared.address, ", ", compared.length, ", ", places[0], ", ", places[1], ", ",
            phrase.result ? result.address : "0", ");\n");
        if (phrase.counter) tally(*phrase.counter, count, false);
    }
}

// What is inspected: an item, or a function's result, which can only be counted in.
bool Emitter::inspected(const InspectStatement &s, Loc &target)
{
    if (!s.target && !s.function) return false;
    if (s.function) {
        Text t = text(s.function);
        if (!t.good) return false;
        target.address = t.address;
        target.length = t.length;
        for (const InspectStatement::Phrase &phrase : s.phrases)
            if (phrase.kind != K_TALLYING) {
                error(s.at, "a function's result can be inspected only for TALLYING");
                return false;
            }
        return true;
    }
    target = locate(*s.target, true);
    if (!target.good()) return false;
    if (target.refmod || isDisplay(*target.item)) return true;
    error(s.target->at, "INSPECT needs an item of USAGE DISPLAY");
    return false;
}

// A phrase as the library has it, an InspectPhrase. TALLYING counts in a temporary; phrases that
// follow each other and have the same item share one.
bool Emitter::inspectPhrase(const InspectStatement::Phrase &phrase, Counters &counters, Words &block)
{
    uint32_t kind = phrase.kind == K_TALLYING    ? ZVK_INSPECT_TALLYING
                    : phrase.kind == K_REPLACING ? ZVK_INSPECT_REPLACING
                                                 : ZVK_INSPECT_CONVERTING;
    if (phrase.mode == K_CHARACTERS) kind |= ZVK_INSPECT_CHARACTERS;
    if (phrase.mode == K_LEADING) kind |= ZVK_INSPECT_LEADING;
    if (phrase.mode == K_FIRST) kind |= ZVK_INSPECT_FIRST;
    if (phrase.before) kind |= ZVK_INSPECT_BEFORE;
    if (phrase.after) kind |= ZVK_INSPECT_AFTER;

    PhraseOperand result, compared, before, after;
    if (phrase.result && !inspectOperand(phrase.result, kind, result)) return false;
    if (phrase.compared && !inspectOperand(phrase.compared, 0, compared)) return false;
    if (phrase.before && !inspectOperand(phrase.before, 0, before)) return false;
    if (phrase.after && !inspectOperand(phrase.after, 0, after)) return false;

    if (phrase.kind == K_TALLYING) {
        if (counters.empty() || counters.back().first != phrase.counter) {
            counters.emplace_back(phrase.counter, temp("uint64_t"));
            put(counters.back().second, " = 0;\n");
        }
        result.words = {cat(kind, "u"), "8", cat("(uint64_t)(uintptr_t)&", counters.back().second)};
    } else if (!result.figurative && (phrase.mode == K_CHARACTERS ? result.fixed > 1
                                                                  : result.fixed >= 0 && compared.fixed >= 0 &&
                                                                        result.fixed != compared.fixed)) {
        error(phrase.result->at, "the two operands must have the same length");
        return false;
    }
    for (const PhraseOperand *operand : {&result, &compared, &before, &after})
        for (const std::string &word : operand->words) block.put(word);
    return true;
}

void Emitter::inspectStatement(const InspectStatement &s)
{
    Loc target;
    if (!inspected(s, target)) return;
    for (const InspectStatement::Phrase &phrase : s.phrases)
        if (phrase.mode == K_TRAILING) return inspectTrailing(s, target);
    Words block{temp("uint64_t", cat("[", kPhrasesWord + kPhraseWords * s.phrases.size(), "]"))};
    block.number(s.phrases.size());
    block.number(signFlags(target));
    block.length(target.length);
    block.address(target.address);

    Counters counters;
    for (const InspectStatement::Phrase &phrase : s.phrases)
        if (!inspectPhrase(phrase, counters, block)) return;
    put(block.code);
    put(emits(Do::Inspect, Of::Text), "((InspectBlock *)", block.name, ");\n");
    for (auto &[counter, sum] : counters) tally(*counter, cat("(int64_t)", sum), s.examine);
}

} // namespace kvrcob
