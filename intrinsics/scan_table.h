// Scanners driven by tables: byte classes, states, actions.
//
// A scanner sorts each byte into a class; class and state give the next state and what to do with
// the byte. The table is written as it is read, a row a state, a column a class:
//
//     constexpr auto table = scanTable<3, 3>({
//         // blank  digit  other
//         "0      1D     -",   // 0: start
//         "2      1D     -",   // 1: in the number
//         "2      -      -",   // 2: after it
//     });
//     for (uint8_t byte : text) {
//         ScanStep step = table[state][classOf[byte]];
//         if (step.action == 'D') number = number * 10 + digitOf(byte);
//         state = step.next;
//     }
//
// A cell is the next state and, if there is something to do, a letter; "-" is an error: action "-"
// and the state kScanError, which is no row. The scanner must stay there.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

inline constexpr uint8_t kScanError = 99;

struct ScanStep {
    uint8_t next;
    char action; // ' ': nothing
};

template <size_t States, size_t Classes>
using ScanTable = std::array<std::array<ScanStep, Classes>, States>;

// Reached while a table is computed only, where it stops the compilation.
inline void scanTableIsWrong() {}

template <size_t States, size_t Classes>
consteval ScanTable<States, Classes> scanTable(const char *const (&rows)[States])
{
    ScanTable<States, Classes> table{};
    for (size_t state = 0; state < States; state++) {
        const char *at = rows[state];
        for (size_t column = 0; column < Classes; column++) {
            while (*at == ' ') at++;
            ScanStep &step = table[state][column];
            if (*at == '-') {
                step = {kScanError, '-'};
                at++;
            } else {
                if (*at < '0' || *at > '9') scanTableIsWrong();
                unsigned next = 0;
                for (; *at >= '0' && *at <= '9'; at++) next = next * 10 + static_cast<unsigned>(*at - '0');
                if (next >= States) scanTableIsWrong();
                step = {static_cast<uint8_t>(next), *at && *at != ' ' ? *at++ : ' '};
            }
            if (*at && *at != ' ') scanTableIsWrong();
        }
        while (*at == ' ') at++;
        if (*at) scanTableIsWrong();
    }
    return table;
}
