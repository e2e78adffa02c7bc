// Which ranges of procedures become C functions of their own.
//
// A program's procedures are labels of one C function, for PERFORM ranges may overlap, be fallen
// into and be left by GO TO (control.cpp). The C compiler's time grows with the square of that
// function's length. Most ranges do nothing of that kind: all that comes into them is a PERFORM of
// just this range. Such a range is a function, and its PERFORM a call:
//
//     MAIN-LINE.                          p1_body:    if (p1_2_ONE(x, s, n)) goto leave;
//         PERFORM ONE THRU ONE-EXIT.                  switch (p1_4_TWO(x, s, n)) {
//         PERFORM TWO.                                case 0: break; case 7: goto p5; default: goto leave; }
//         STOP RUN.
//     ONE.                                p1_2_ONE:   if (...) goto p3;
//         IF ... GO TO ONE-EXIT.                      ...
//     ONE-EXIT. EXIT.                                 p3: return 0; leave: return 1;
//     TWO.                                p1_4_TWO:   if (...) goto p5;
//         IF ... GO TO GIVE-UP.                       return 0; leave: return 1; p5: return 7;
//     GIVE-UP.                            (p1_body)   p5: ...
//
// A function returns 0 at its end, 1 where the program ends, and the number of a procedure and 2
// where GO TO leaves it. Whoever performed it goes there, or returns the same if that is outside of
// it, too. The procedure is in a function that is on its way: nothing but PERFORM comes into one.
// The PERFORMs that a GO TO leaves are not active any more, for no other way leads to their ends.
//
// Whether a range may be one depends on others: it must not perform what is no function, and the
// one before it must not fall into it. So all are taken for functions first. Those that break a
// rule are taken out, and with each one those that rely on it; each is looked at once. PERFORMs
// inside a range, of parts of it, work there as they do in the program's function; the cells are
// the same.
#include "cobol/emit/ranges.h"

#include <algorithm>
#include <map>
#include <set>

#include "cobol/emit/emitter.h"

namespace kvrcob {

namespace {

constexpr size_t kMostWork = 5000000; // procedures in all ranges together
constexpr size_t kMostExits = 200000; // of all ranges together

class Ranges {
public:
    // `mayLeave`: GO TO may go out of a function.
    Ranges(const Program &p, const Flow &flow, bool mayLeave);
    std::vector<Range> find();
    bool findExits(std::vector<Range> &ranges) const;

private:
    struct Candidate : Range {
        bool good = true;
    };
    bool isFunction(const Candidate &r) const;
    bool performsFit(const Candidate &r, size_t i) const;
    bool isCandidate(size_t from, size_t end) const;
    bool goesOn(size_t procedure) const;
    void drop(size_t candidate);
    void dropInner();
    void fallThrough(size_t procedure);
    void reach(size_t procedure);
    void settle();

    const Program &p_;
    Flow flow_;
    const bool mayLeave_;
    std::vector<Candidate> candidates_;                  // by their first procedure
    std::map<std::pair<size_t, size_t>, size_t> byEnds_; // from and end: an index into candidates_
    // Of each procedure: what jumps to and from it, and the PERFORMs in it, of it, and that end
    // with it.
    std::vector<std::vector<size_t>> jumpsFrom_, jumpsTo_, performsIn_, performsFrom_, performsTo_;
    std::vector<std::vector<std::pair<size_t, size_t>>> exitsAfter_; // EXIT SECTION, by the section's last paragraph
    // The candidates that begin and end with it, and all that it is in.
    std::vector<std::vector<size_t>> beginnings_, endings_, holders_;
    std::vector<uint8_t> reached_; // control may come to it
    std::vector<size_t> lasts_;    // of the performs: the last procedure of the range
    // What has yet to be followed: procedures that control may come to, candidates that were
    // dropped.
    std::vector<size_t> coming_, dropped_;
};

Ranges::Ranges(const Program &p, const Flow &flow, bool mayLeave)
    : p_(p), flow_(flow), mayLeave_(mayLeave), jumpsFrom_(p.procedures.size()), jumpsTo_(p.procedures.size()),
      performsIn_(p.procedures.size()), performsFrom_(p.procedures.size()), performsTo_(p.procedures.size()),
      exitsAfter_(p.procedures.size()), beginnings_(p.procedures.size() + 1), endings_(p.procedures.size()),
      holders_(p.procedures.size()), reached_(p.procedures.size())
{
    std::vector<size_t> lasts(p.procedures.size(), SIZE_MAX);
    auto lastOfRange = [&](size_t end) {
        if (lasts[end] == SIZE_MAX) lasts[end] = lastOf(p, end);
        return lasts[end];
    };
    for (auto [in, to] : flow_.jumps) {
        jumpsFrom_[in].push_back(to);
        jumpsTo_[to].push_back(in);
    }
    for (auto exit : flow_.sectionExits) {
        size_t last = lastOfRange(exit.second);
        exitsAfter_[last].push_back(exit);
        flow_.endsAway[last] = false;
    }
    size_t work = 0;
    for (size_t i = 0; i < flow_.performs.size(); i++) {
        const Flow::Perform &perform = flow_.performs[i];
        size_t last = lastOfRange(perform.end);
        lasts_.push_back(last);
        performsIn_[perform.in].push_back(i);
        performsFrom_[perform.from].push_back(i);
        performsTo_[last].push_back(i);
        if (perform.from <= last && byEnds_.try_emplace({perform.from, perform.end}, 0).second)
            work += last + 1 - perform.from;
    }
    if (work > kMostWork) byEnds_.clear();
    for (auto &[ends, index] : byEnds_) {
        index = candidates_.size();
        Candidate r;
        r.first = ends.first, r.end = ends.second, r.last = lastOfRange(ends.second);
        candidates_.push_back(r);
        beginnings_[r.first].push_back(index);
        endings_[r.last].push_back(index);
        for (size_t i = r.first; i <= r.last; i++) holders_[i].push_back(index);
    }
    for (const Flow::Perform &perform : flow_.performs)
        if (perform.circle && isCandidate(perform.from, perform.end)) drop(byEnds_[{perform.from, perform.end}]);
}

bool Ranges::isCandidate(size_t from, size_t end) const
{
    auto found = byEnds_.find({from, end});
    return found != byEnds_.end() && candidates_[found->second].good;
}

// Whether control may go on after this procedure, into the next one.
bool Ranges::goesOn(size_t procedure) const
{
    if (!reached_[procedure] || flow_.endsAway[procedure]) return false;
    const std::vector<size_t> &list = endings_[procedure];
    return std::none_of(list.begin(), list.end(), [&](size_t r) { return candidates_[r].good; });
}

void Ranges::drop(size_t candidate)
{
    if (!candidates_[candidate].good) return;
    candidates_[candidate].good = false;
    dropped_.push_back(candidate);
}

void Ranges::fallThrough(size_t procedure)
{
    if (!goesOn(procedure)) return;
    coming_.push_back(procedure + 1);
    for (size_t candidate : beginnings_[procedure + 1]) drop(candidate);
}

void Ranges::reach(size_t procedure)
{
    if (procedure >= reached_.size() || reached_[procedure]) return;
    reached_[procedure] = true;
    fallThrough(procedure);
    coming_.insert(coming_.end(), jumpsFrom_[procedure].begin(), jumpsFrom_[procedure].end());
    for (size_t index : performsIn_[procedure]) coming_.push_back(flow_.performs[index].from);
}

// All that follows from what was reached and dropped.
void Ranges::settle()
{
    while (!coming_.empty() || !dropped_.empty()) {
        if (!coming_.empty()) {
            size_t procedure = coming_.back();
            coming_.pop_back();
            reach(procedure);
            continue;
        }
        const Candidate &r = candidates_[dropped_.back()];
        dropped_.pop_back();
        // A function performs only functions, apart from its own parts.
        for (size_t index : performsFrom_[r.first]) {
            const Flow::Perform &perform = flow_.performs[index];
            if (perform.end != r.end) continue;
            for (size_t holder : holders_[perform.in])
                if (!candidates_[holder].holds(r.first)) drop(holder);
        }
        fallThrough(r.last);
    }
}

// PERFORMs that have to do with a procedure of the range: those from outside are of the whole
// range, those inside are of parts of it or of other functions.
bool Ranges::performsFit(const Candidate &r, size_t i) const
{
    auto whole = [&](const Flow::Perform &perform) { return perform.from == r.first && perform.end == r.end; };
    for (const auto *list : {&performsFrom_[i], &performsTo_[i]})
        for (size_t index : *list) {
            const Flow::Perform &perform = flow_.performs[index];
            if (!r.holds(perform.in) && !whole(perform)) return false;
        }
    for (size_t index : performsIn_[i]) {
        const Flow::Perform &perform = flow_.performs[index];
        size_t last = lasts_[index];
        bool inside = r.holds(perform.from) && r.holds(last) && perform.end != r.end;
        bool outside = !r.holds(perform.from) && !r.holds(last) && isCandidate(perform.from, perform.end);
        if (!inside && !outside) return false;
    }
    return true;
}

bool Ranges::isFunction(const Candidate &r) const
{
    if (r.first < p_.firstProcedure) return false;
    for (size_t i = r.first; i <= r.last; i++) {
        if (flow_.entered[i] || !performsFit(r, i)) return false;
        for (size_t to : jumpsFrom_[i])
            if (!mayLeave_ && !r.holds(to)) return false;
        for (size_t in : jumpsTo_[i])
            if (!r.holds(in)) return false;
        // EXIT SECTION comes after the return of the section's last paragraph.
        for (auto [in, section] : exitsAfter_[i])
            if (!r.holds(in) || !r.holds(section) || (i == r.last && section != r.end)) return false;
    }
    return true;
}

// Of ranges inside each other that end in the same place, one can be a function: the longest.
void Ranges::dropInner()
{
    for (const std::vector<size_t> &list : endings_) {
        bool longest = true; // those of one procedure are in order: it begins first
        for (size_t candidate : list) {
            if (!candidates_[candidate].good) continue;
            if (!longest) drop(candidate);
            longest = false;
        }
    }
    settle();
}

std::vector<Range> Ranges::find()
{
    for (size_t i = 0; i < reached_.size(); i++)
        if (flow_.entered[i] || !exitsAfter_[i].empty()) coming_.push_back(i);
    settle();
    for (size_t i = 0; i < candidates_.size(); i++)
        if (candidates_[i].good && !isFunction(candidates_[i])) drop(i);
    settle();
    dropInner();
    std::vector<Range> found;
    for (const Candidate &r : candidates_)
        if (r.good) found.push_back(r);
    return found;
}

// Where control may go on after each of these functions: by its own GO TOs, and by those of the
// functions that it performs. False: that is too much.
bool Ranges::findExits(std::vector<Range> &ranges) const
{
    const std::vector<int> owners = ownersOf(p_, ranges);
    const auto within = [](int r) { return static_cast<size_t>(r); };
    std::vector<std::set<size_t>> callers(ranges.size());
    for (const Flow::Perform &perform : flow_.performs) {
        const int callee = owners[perform.from], caller = owners[perform.in];
        if (callee >= 0 && caller >= 0 && callee != caller) callers[within(callee)].insert(within(caller));
    }

    std::vector<std::set<size_t>> exits(ranges.size());
    std::vector<std::pair<size_t, size_t>> coming; // a function, and where it may go on
    size_t count = 0;
    for (auto [in, to] : flow_.jumps)
        if (owners[in] >= 0) coming.emplace_back(within(owners[in]), to);
    while (!coming.empty()) {
        const auto [r, to] = coming.back();
        coming.pop_back();
        if (ranges[r].holds(to) || !exits[r].insert(to).second) continue;
        if (++count > kMostExits) return false;
        for (size_t caller : callers[r]) coming.emplace_back(caller, to);
    }
    for (size_t r = 0; r < ranges.size(); r++) ranges[r].exits.assign(exits[r].begin(), exits[r].end());
    return true;
}

} // namespace

std::vector<Range> rangesAsFunctions(const Program &p, const Flow &flow)
{
    Ranges leaving(p, flow, true);
    std::vector<Range> ranges = leaving.find();
    return leaving.findExits(ranges) ? ranges : Ranges(p, flow, false).find();
}

std::vector<int> ownersOf(const Program &p, const std::vector<Range> &ranges)
{
    std::vector<int> owners(p.procedures.size(), -1);
    for (size_t r = 0; r < ranges.size(); r++)
        for (size_t i = ranges[r].first; i <= ranges[r].last; i++) owners[i] = static_cast<int>(r);
    return owners;
}

} // namespace kvrcob
