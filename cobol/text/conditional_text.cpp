#include "cobol/text/conditional_text.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

#include "cobol/text/line_text.h"

namespace kvrcob {

static constexpr char kLiteral = '"';

std::vector<std::string> ConditionalText::split(std::string_view text)
{
    std::vector<std::string> words;
    size_t i = 0;
    while (i < text.size()) {
        if (text[i] == ' ') {
            i++;
        } else if (text[i] == '"' || text[i] == '\'') {
            size_t end = text.find(text[i], i + 1);
            if (end == std::string::npos) end = text.size();
            words.push_back(kLiteral + std::string(text.substr(i + 1, end - i - 1)));
            i = end + 1;
        } else if (std::strchr("=<>()", text[i])) {
            const bool parenthesis = text[i] == '(' || text[i] == ')';
            const bool two = !parenthesis && i + 1 < text.size() && std::strchr("=>", text[i + 1]);
            words.emplace_back(text.substr(i, two ? 2 : 1));
            i += words.back().size();
        } else {
            size_t end = text.find_first_of(" =<>()\"'", i);
            if (end == std::string::npos) end = text.size();
            words.push_back(upperOf(text.substr(i, end - i)));
            i = end;
        }
    }
    return words;
}

bool ConditionalText::skipping() const
{
    return std::any_of(conditions_.begin(), conditions_.end(), [](const Condition &c) { return !c.active; });
}

void ConditionalText::end() const
{
    for (const Condition &open : conditions_)
        diagnostics().error(open.at,
                            open.subject.empty() ? ">>IF without >>END-IF" : ">>EVALUATE without >>END-EVALUATE");
}

bool ConditionalText::directive(const std::vector<std::string> &words, bool dollar, const Spot &at)
{
    at_ = at;
    const std::string verb = words.empty() ? "" : words[0];
    const auto error = [&](const char *text) {
        diagnostics().error(at, text);
        return true;
    };
    if (verb == "IF") {
        const bool outer = skipping(), active = !outer && evaluate(words);
        conditions_.push_back({at, active, active || outer, ""});
        return true;
    }
    if (verb == "EVALUATE") {
        conditions_.push_back({at, false, skipping(), words.size() > 1 ? words[1] : "TRUE"});
        return true;
    }
    Condition *now = conditions_.empty() ? nullptr : &conditions_.back();
    if (verb == "ELSE") {
        if (!now) return error(">>ELSE without >>IF");
        now->active = !now->taken;
        now->taken = true;
        return true;
    }
    if (verb == "ELIF" || verb == "ELSE-IF") {
        if (!now) return error(">>ELIF without >>IF");
        now->active = !now->taken && evaluate(words);
        now->taken |= now->active;
        return true;
    }
    if (verb == "WHEN") {
        if (!now || now->subject.empty()) return error(">>WHEN without >>EVALUATE");
        when(words);
        return true;
    }
    if (verb == "END-IF" || verb == "END-EVALUATE" || (verb == "END" && dollar)) {
        if (!now) return error(verb == "END-EVALUATE" ? ">>END-EVALUATE without >>EVALUATE" : ">>END-IF without >>IF");
        conditions_.pop_back();
        return true;
    }
    return false;
}

// >>WHEN value, value THRU value, OTHER; after >>EVALUATE TRUE a condition.
void ConditionalText::when(const std::vector<std::string> &words)
{
    Condition &now = conditions_.back();
    std::vector<std::string> test = words;
    if (now.subject != "TRUE" && words.size() > 1) {
        test = {"IF", now.subject, "=", words[1]};
        if (words.size() > 3 && (words[2] == "THRU" || words[2] == "THROUGH"))
            test = {"IF", now.subject, ">=", words[1], "AND", now.subject, "<=", words[3]};
    }
    const bool other = words.size() > 1 && words[1] == "OTHER";
    now.active = !now.taken && (other || evaluate(test));
    now.taken |= now.active;
}

// name [AS] value, OFF, PARAMETER: the value of an environment variable.
void ConditionalText::define(const std::vector<std::string> &words)
{
    if (words.size() < 2) return;
    if (std::find(words.begin(), words.end(), "OFF") != words.end()) {
        options_.defines.erase(words[1]);
        options_.changed.insert(words[1]);
        return;
    }
    size_t value = words.size() > 2 && words[2] == "AS" ? 3 : 2;
    if (value < words.size() && words[value] == "PARAMETER") {
        const char *given = std::getenv(words[1].c_str());
        if (given) options_.defines[words[1]] = given;
        return;
    }
    if (options_.defines.count(words[1])) {
        if (words.back() != "OVERRIDE") return; // -D goes before the source's own value
        options_.changed.insert(words[1]);
    }
    const std::string text = value < words.size() && words[value] != "OVERRIDE" ? words[value] : "1";
    options_.defines[words[1]] = text.substr(text[0] == kLiteral);
}

// ---- Conditions. All of one is read, also where its value is known before its end.

static constexpr int kMostDepth = 100;

bool ConditionalText::evaluate(const std::vector<std::string> &words) const
{
    Reading reading{words, 1, 0};
    return anyOf(reading);
}

bool ConditionalText::anyOf(Reading &reading) const
{
    bool result = allOf(reading);
    while (reading.take("OR")) result |= allOf(reading);
    return result;
}

bool ConditionalText::allOf(Reading &reading) const
{
    bool result = term(reading);
    while (reading.take("AND")) result &= term(reading);
    return result;
}

bool ConditionalText::term(Reading &reading) const
{
    bool negated = false;
    while (reading.take("NOT")) negated = !negated;
    if (!reading.take("(")) return simple(reading) != negated;
    if (++reading.depth > kMostDepth) {
        diagnostics().error(at_, "this condition has too many parentheses");
        reading.next = reading.words.size();
        return false;
    }
    const bool result = anyOf(reading);
    reading.take(")");
    reading.depth--;
    return result != negated;
}

// name [IS] [NOT] DEFINED, name [IS] [NOT] = value, name alone.
bool ConditionalText::simple(Reading &reading) const
{
    const std::vector<std::string> &words = reading.words;
    if (reading.next >= words.size()) return false;
    const std::string name = words[reading.next++];
    reading.take("IS");
    const bool negated = reading.take("NOT");
    if (reading.take("DEFINED") || reading.take("SET")) return (options_.defines.count(name) != 0) != negated;

    static const char *const relations[] = {"=", "EQUAL", "<", ">", "<>", "<=", ">="};
    const std::string relation = reading.next + 1 < words.size() ? words[reading.next] : "";
    if (std::find(std::begin(relations), std::end(relations), relation) == std::end(relations)) {
        const std::string value = valueOf(name);
        return (value != "" && value != "0" && value != "OFF" && value != "FALSE") != negated;
    }
    reading.next++;
    reading.take("TO");
    const std::string left = valueOf(name), right = reading.next < words.size() ? valueOf(words[reading.next]) : "";
    reading.next++;
    auto isNumber = [](const std::string &text) {
        return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    };
    long long a = std::atoll(left.c_str()), b = std::atoll(right.c_str());
    const int order = isNumber(left) && isNumber(right) ? (a > b) - (a < b) : left.compare(right);
    const bool result = relation == "=" || relation == "EQUAL" ? order == 0
                        : relation == "<"                      ? order < 0
                        : relation == ">"                      ? order > 0
                        : relation == "<>"                     ? order != 0
                        : relation == "<="                     ? order <= 0
                                                               : order >= 0;
    return result != negated;
}

// What a name stands for, "" if nothing; a value is itself.
std::string ConditionalText::valueOf(const std::string &word) const
{
    if (word.starts_with(kLiteral)) return word.substr(1);
    auto found = options_.defines.find(word);
    if (found != options_.defines.end()) return found->second;
    return !word.empty() && std::isalpha(static_cast<unsigned char>(word[0])) ? "" : word;
}

} // namespace kvrcob
