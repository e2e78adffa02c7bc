#include "support/pattern.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <regex.h>

namespace {

// Each pattern is compiled once, and kept to the end. Only a test's main thread asks.
const regex_t &compiled(const std::string &pattern)
{
    static auto &all = *new std::map<std::string, regex_t>;
    auto [at, isNew] = all.try_emplace(pattern);
    if (isNew && regcomp(&at->second, pattern.c_str(), REG_EXTENDED) != 0) {
        fprintf(stderr, "no pattern: %s\n", pattern.c_str());
        abort();
    }
    return at->second;
}

} // namespace

std::string replaceAll(const std::string &text, const char *pattern, const char *by)
{
    std::string result;
    const char *at = text.c_str();
    regmatch_t match;
    while (regexec(&compiled(pattern), at, 1, &match, at == text.c_str() ? 0 : REG_NOTBOL) == 0 && match.rm_eo > 0) {
        result.append(at, static_cast<size_t>(match.rm_so)).append(by);
        at += match.rm_eo;
    }
    return result + at;
}

testing::AssertionResult holds(const std::string &text, const char *part)
{
    if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "\"" << part << "\" is not in:\n" << text;
}

std::optional<std::string> groupOf(const std::string &text, const char *pattern)
{
    regmatch_t matches[2];
    if (regexec(&compiled(std::string("^") + pattern + "$"), text.c_str(), 2, matches, 0) != 0) return std::nullopt;
    return text.substr(static_cast<size_t>(matches[1].rm_so), static_cast<size_t>(matches[1].rm_eo - matches[1].rm_so));
}

size_t longestBeginning(const std::string &text, const char *pattern)
{
    // The C library's matches are the longest, whatever the order of alternatives.
    regmatch_t match;
    if (regexec(&compiled(std::string("^(") + pattern + ")"), text.c_str(), 1, &match, 0) != 0)
        return std::string::npos;
    return static_cast<size_t>(match.rm_eo);
}
