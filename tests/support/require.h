// Checks inside a child process: a failed one says so on stderr and ends the child with status 1.
#pragma once

#include <cstdio>
#include <cstdlib>

#define REQUIRE(condition)                                                                                             \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                                            \
            exit(1);                                                                                                   \
        }                                                                                                              \
    } while (0)

#define EXPECT_GOOD(run) EXPECT_EQ((run).status, 0) << (run).err << "signal " << (run).signal
