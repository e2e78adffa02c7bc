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

namespace {

// Fills the words of a block one after the other.
struct Words {
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
};

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
            block.address(t.address);
            block.length(t.length);
        } else {
            block.number(0);
            block.number(0);
        }
        block.number(group.sources.size());
        for (const Expr *source : group.sources) {
            Text t = text(source, true);
            if (!t.good) return;
            block.address(t.address);
            block.length(t.length);
        }
    }

    if (s.pointer) put("if (!(", inRange, ")) ", overflow, " = 2;\nelse {\n");
    put(block.code);
    put(emits(Do::String, Of::Text), "((StringBlock *)", block.name, ", 0, &", overflow, ");\n");
    if (s.pointer) {
        storeInteger(s.pointer, cat(block.name, "[3]"));
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

void Emitter::unstringStatement(const UnstringStatement &s)
{
    Text source = text(s.source, true);
    if (!source.good) return;
    int64_t longest = source.fixed >= 0 ? source.fixed : source.item ? source.item->storageSize() : 4096;
    Words block{temp("uint64_t", cat("[", 6 + 3 * std::max<size_t>(1, s.delimiters.size()), "]"))};
    Words targets{temp("uint64_t", cat("[", 8 * s.targets.size(), "]"))};
    std::string overflow = temp("uint32_t"), pointer, inRange = "1";
    put(overflow, " = 1;\n");

    // The block: source, POINTER, TALLYING, delimiters.
    uint64_t flags =
        (s.pointer ? uint64_t{ZVK_UNSTRING_POINTER} : 0) | (s.tallying ? uint64_t{ZVK_UNSTRING_TALLYING} : 0);
    block.number(flags * kThirdByte);
    block.address(source.address);
    block.length(source.length);
    if (s.pointer) inRange = pointerIn(s.pointer, source.length, pointer);
    block.put(s.pointer ? cat("(uint64_t)", pointer) : "1");
    std::string tally = "0";
    if (s.tallying) {
        tally = temp("int64_t");
        put(tally, " = ", integer(expressionOf(s.tallying)), ";\n");
    }
    block.put("(uint32_t)", tally);
    block.put(s.delimiters.size(), "u | (uint64_t)", s.targets.size(), "u << 32");
    for (const UnstringStatement::Delimiter &d : s.delimiters) {
        Text t = text(d.value, true);
        if (!t.good) return;
        block.address(t.address);
        block.length(t.length);
        block.number(d.all || t.kind == Text::All ? ZVK_UNSTRING_ALL : 0u);
    }

    // The receiving items. A count that stays all ones is of an item that the source did not reach.
    std::vector<std::pair<size_t, Loc>> moved; // those that get their field by a MOVE, from a buffer
    std::vector<std::string> buffers(s.targets.size());
    for (size_t i = 0; i < s.targets.size(); i++) {
        const UnstringStatement::Into &into = s.targets[i];
        Loc target = locate(*into.target, true);
        if (!target.good()) return;
        bool right = false;
        // A number gets its digits by a MOVE: a field at the end of the source may have blanks
        // after them.
        if (target.refmod || takesField(*target.item)) {
            right = !target.refmod && target.item->justified;
            targets.address(target.address);
            targets.length(target.length);
        } else {
            // Without delimiters a field has the length of its item, without a separate sign.
            const Item &item = *target.item;
            int64_t width = std::max<int64_t>(1, longest);
            if (s.delimiters.empty()) width = isNumericItem(item) ? std::max(1, item.picture.digits) : target.fixed;
            buffers[i] = tempBytes(width);
            targets.address(buffers[i]);
            targets.number(static_cast<uint64_t>(width));
            moved.emplace_back(i, target);
        }
        targets.number(0);
        targets.number(right ? ZVK_UNSTRING_JUST_RIGHT * kThirdByte : 0);
        if (into.delimiter) {
            Loc delimiter = locate(*into.delimiter, true);
            if (!delimiter.good()) return;
            targets.address(delimiter.address);
            targets.length(delimiter.length);
            targets.number(!delimiter.refmod && delimiter.item->justified ? ZVK_UNSTRING_JUST_RIGHT * kThirdByte : 0);
        } else {
            for (int word = 0; word < 3; word++) targets.number(0);
        }
        targets.put("~(uint64_t)0");
    }

    if (s.pointer) put("if (!(", inRange, ")) ", overflow, " = 2;\nelse {\n");
    put(block.code);
    put(targets.code);
    put(emits(Do::Unstring, Of::Text), "((UnstringBlock *)", block.name, ", (UnstringTarget *)", targets.name, ", 0, &",
        overflow, ");\n");
    auto reached = [&](size_t i) { return cat("if (~", targets.name, "[", 8 * i + 7, "]) {\n"); };
    for (auto &[i, target] : moved) {
        put(reached(i));
        Text field;
        field.address = buffers[i];
        field.length = cat("(int64_t)", targets.name, "[", 8 * i + 7, "]");
        moveCharacters(field, target);
        put("}\n");
    }
    for (size_t i = 0; i < s.targets.size(); i++) {
        if (!s.targets[i].count) continue;
        put(reached(i));
        storeInteger(s.targets[i].count, cat(targets.name, "[", 8 * i + 7, "]"));
        put("}\n");
    }
    if (s.pointer) storeInteger(s.pointer, cat(block.name, "[3]"));
    if (s.tallying) storeInteger(s.tallying, cat("(uint32_t)", block.name, "[4]"));
    if (s.pointer) put("}\n");
    raise(cat(overflow, " != 1"), "\"EC-OVERFLOW-UNSTRING\"");
    phrases(s.overflow, cat(overflow, " != 1"));
}

// ---- INSPECT

// An operand of a phrase as three words: flags, length, address.
bool Emitter::inspectOperand(const Expr *e, uint32_t kind, std::string (&words)[3], int64_t *fixed, bool *figurative)
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
    *figurative = t.kind != Text::Bytes;
    if (*figurative) flags |= ZVK_INSPECT_FIGURATIVE;
    *fixed = flags & ZVK_INSPECT_SIGN_SEPARATE && t.fixed > 0 ? t.fixed - 1 : t.fixed;
    words[0] = cat(flags, "u");
    words[1] = cat("(uint64_t)(", t.length, ")");
    words[2] = cat("(uint64_t)(uintptr_t)(", t.address, ")");
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
        if (!phrase.counter) continue;
        Loc loc = locate(*phrase.counter, true);
        if (!loc.good()) return;
        if (!isNumericItem(*loc.item)) return error(phrase.counter->at, "a numeric item is needed here");
        store(add(itemNumber(loc), integerNumber(count, 18), false), loc, false, "");
    }
}

void Emitter::inspectStatement(const InspectStatement &s)
{
    if (!s.target && !s.function) return;
    Loc target;
    if (s.function) {
        Text t = text(s.function);
        if (!t.good) return;
        target.address = t.address;
        target.length = t.length;
        for (const InspectStatement::Phrase &phrase : s.phrases)
            if (phrase.kind != K_TALLYING) return error(s.at, "a function's result can be inspected only for TALLYING");
    } else {
        target = locate(*s.target, true);
        if (!target.good()) return;
        if (!target.refmod && !isDisplay(*target.item))
            return error(s.target->at, "INSPECT needs an item of USAGE DISPLAY");
    }
    for (const InspectStatement::Phrase &phrase : s.phrases)
        if (phrase.mode == K_TRAILING) return inspectTrailing(s, target);
    Words block{temp("uint64_t", cat("[", 4 + 12 * s.phrases.size(), "]"))};
    block.number(s.phrases.size());
    block.number(signFlags(target));
    block.length(target.length);
    block.address(target.address);

    std::vector<std::pair<Reference *, std::string>> counters;
    for (const InspectStatement::Phrase &phrase : s.phrases) {
        uint32_t kind = phrase.kind == K_TALLYING    ? ZVK_INSPECT_TALLYING
                        : phrase.kind == K_REPLACING ? ZVK_INSPECT_REPLACING
                                                     : ZVK_INSPECT_CONVERTING;
        if (phrase.mode == K_CHARACTERS) kind |= ZVK_INSPECT_CHARACTERS;
        if (phrase.mode == K_LEADING) kind |= ZVK_INSPECT_LEADING;
        if (phrase.mode == K_FIRST) kind |= ZVK_INSPECT_FIRST;
        if (phrase.before) kind |= ZVK_INSPECT_BEFORE;
        if (phrase.after) kind |= ZVK_INSPECT_AFTER;

        std::string words[4][3];
        int64_t sizes[4] = {-1, -1, -1, -1};
        bool figurative[4] = {};
        const Expr *operands[4] = {phrase.result, phrase.compared, phrase.before, phrase.after};
        for (int i = 0; i < 4; i++)
            if (operands[i] && !inspectOperand(operands[i], i ? 0 : kind, words[i], &sizes[i], &figurative[i])) return;
        if (phrase.kind == K_TALLYING) {
            if (counters.empty() || counters.back().first != phrase.counter) {
                counters.emplace_back(phrase.counter, temp("uint64_t"));
                put(counters.back().second, " = 0;\n");
            }
            words[0][0] = cat(kind, "u");
            words[0][1] = "8";
            words[0][2] = cat("(uint64_t)(uintptr_t)&", counters.back().second);
        } else if (phrase.mode == K_CHARACTERS
                       ? sizes[0] > 1 && !figurative[0]
                       : sizes[0] >= 0 && sizes[1] >= 0 && sizes[0] != sizes[1] && !figurative[0]) {
            return error(phrase.result->at, "the two operands must have the same length");
        }
        for (auto &operand : words)
            for (std::string &word : operand) block.put(word.empty() ? "0" : word);
    }
    put(block.code);
    put(emits(Do::Inspect, Of::Text), "((InspectBlock *)", block.name, ");\n");
    for (auto &[counter, sum] : counters) {
        Loc loc = locate(*counter, true);
        if (!loc.good()) return;
        if (!isNumericItem(*loc.item)) return error(counter->at, "a numeric item is needed here");
        Num counted = integerNumber(cat("(int64_t)", sum), 18);
        store(s.examine ? counted : add(itemNumber(loc), counted, false), loc, false, "");
    }
}

} // namespace kvrcob
