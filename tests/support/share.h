// How much of a long campaign a build makes.
#pragma once

#include <algorithm>
#include <cstdlib>

// Repeated rounds of one kind: under the sanitizers ctest asks for one in KVR2_TEST_SHARE of them,
// since each takes three to five times as long there. The default build makes them all.
template <class Number>
Number shareOf(Number rounds)
{
    const char *said = std::getenv("KVR2_TEST_SHARE");
    return said ? rounds / static_cast<Number>(std::max(1, std::atoi(said))) : rounds;
}
