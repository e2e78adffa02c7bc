// PERFORMs that may meet themselves.
//
// A PERFORM saves the cell of its last paragraph's exit in a place of its own, so one that is
// reached again before it has ended would lose what it saved. Most can not: they are in a paragraph
// that no paragraph of their range performs, directly or through others. Those that can are found
// here; they keep their cells on a stack (kvr_perform). A paragraph and those that it performs are
// a graph; in its strongly connected parts, and there only, a PERFORM may meet itself.
#include <algorithm>

#include "cobol/emit/circles.h"
#include "cobol/emit/ranges.h"

namespace kvrcob {

// Tarjan's way to the strongly connected parts, without recursion.
Circles::Circles(Meaning &meaning, Program &p)
{
    std::vector<std::vector<uint32_t>> next(p.procedures.size());
    size_t edges = 0;
    for (const Performed &performed : p.performed) {
        long from = meaning.procedure(p, performed.first, performed.in, true);
        long to = performed.last.name ? meaning.procedure(p, performed.last, performed.in, true) : from;
        if (from < 0 || to < from || performed.in >= next.size()) continue;
        size_t end = lastOf(p, static_cast<size_t>(to));
        edges += end + 1 - static_cast<size_t>(from);
        if (edges > 5000000) return; // none is looked at
        for (size_t i = static_cast<size_t>(from); i <= end; i++)
            next[performed.in].push_back(static_cast<uint32_t>(i));
    }
    if (edges == 0) return;

    const uint32_t none = UINT32_MAX;
    std::vector<uint32_t> order(next.size(), none), low(next.size()), waiting;
    std::vector<std::pair<uint32_t, size_t>> path; // a procedure, and how many of its edges were taken
    of_.assign(next.size(), none);
    uint32_t count = 0;
    for (uint32_t root = 0; root < next.size(); root++) {
        if (order[root] == none) path.emplace_back(root, 0);
        while (!path.empty()) {
            auto [node, taken] = path.back();
            if (taken == 0) {
                order[node] = low[node] = count++;
                waiting.push_back(node);
            }
            if (taken < next[node].size()) {
                path.back().second++;
                uint32_t other = next[node][taken];
                if (order[other] == none)
                    path.emplace_back(other, 0);
                else if (of_[other] == none)
                    low[node] = std::min(low[node], order[other]);
                continue;
            }
            path.pop_back();
            if (!path.empty()) low[path.back().first] = std::min(low[path.back().first], low[node]);
            if (low[node] != order[node]) continue;
            for (uint32_t member = none; member != node; waiting.pop_back()) {
                member = waiting.back();
                of_[member] = node;
            }
        }
    }
}

bool Circles::mayMeet(size_t in, size_t from, size_t end) const
{
    if (in >= of_.size()) return false;
    for (size_t i = from; i <= end && i < of_.size(); i++)
        if (of_[i] == of_[in]) return true;
    return false;
}

} // namespace kvrcob
