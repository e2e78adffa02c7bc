// How much of a long campaign a build makes.
#pragma once

#include <algorithm>
#include <cstdlib>

// Repeated rounds of one kind: under the sanitizers ctest asks for one in KVR2_TEST_SHARE of them,
// since each takes three to five times as long there. The default build makes them all.
inline int onesShare()
{
    static const char *const said = std::getenv("KVR2_TEST_SHARE");
    static const int share = said ? std::max(1, std::atoi(said)) : 1;
    return share;
}

template <class Number>
Number shareOf(Number rounds)
{
    return rounds / static_cast<Number>(onesShare());
}

// The same for what is gone through one by one, where the share is to be spread.
template <class Number>
bool isInShare(Number number)
{
    return number % static_cast<Number>(onesShare()) == 0;
}
