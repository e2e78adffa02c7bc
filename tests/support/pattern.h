// What tests look for in a text, with extended regular expressions of the C library. A file that
// includes <regex> or <gmock/gmock.h> takes two to five seconds longer to compile.
#pragma once

#include <gtest/gtest.h>
#include <optional>
#include <string>

// `text` with each match of `pattern` replaced by `by`, which has no references.
std::string replaceAll(const std::string &text, const char *pattern, const char *by);

// White space in runs, line ends among it, as one blank each.
inline std::string oneLine(const std::string &text) { return replaceAll(text, "[[:space:]]+", " "); }

// Whether `part` is in `text`; a test that fails shows the text.
testing::AssertionResult holds(const std::string &text, const char *part);

// What the first group has caught where `pattern` matches the whole of `text`.
std::optional<std::string> groupOf(const std::string &text, const char *pattern);

// The length of the longest beginning of `text` that `pattern` matches; npos without any.
size_t longestBeginning(const std::string &text, const char *pattern);
