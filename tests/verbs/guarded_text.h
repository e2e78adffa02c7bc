// Operands of a verb, each between protected pages of its own, for many statements in turn.
//
//     GuardedTexts texts;
//     for (...) { texts.next(random); uint8_t *item = texts.put("ABC"); ... }
#pragma once

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/guarded.h"

class GuardedTexts {
public:
    explicit GuardedTexts(size_t most = 4096) : most_(most) {}

    // Begins a statement; its operands lie at the end or at the start of their pages.
    void next(std::mt19937 &random)
    {
        used_ = 0;
        where_ = random() % 2 ? GuardedItem::AtEnd : GuardedItem::AtStart;
    }

    uint8_t *put(const std::string &text)
    {
        if (used_ == items_.size()) items_.push_back(std::make_unique<GuardedItem>(most_));
        uint8_t *place = items_[used_++]->place(text.size(), where_);
        if (!text.empty()) memcpy(place, text.data(), text.size());
        return place;
    }

private:
    size_t most_, used_ = 0;
    GuardedItem::Place where_ = GuardedItem::AtEnd;
    std::vector<std::unique_ptr<GuardedItem>> items_;
};

inline std::string textAt(const void *place, size_t length) { return {static_cast<const char *>(place), length}; }

// A text of characters out of `set`, which has `unit` bytes for each.
inline std::string randomText(std::mt19937 &random, const std::string &set, size_t unit, size_t characters)
{
    std::string text;
    while (characters-- > 0) text += set.substr(random() % (set.size() / unit) * unit, unit);
    return text;
}
