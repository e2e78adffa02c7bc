// Decimal floating point for clang-tidy, which reads our sources with a compiler that has none: the
// operations that they use, declared and nowhere defined. The build's compiler never sees this.
#pragma once

#include "kvr2/floats.h"

#define STAND_IN(Name, Bytes)                                                                                          \
    struct Name {                                                                                                      \
        unsigned char bytes[Bytes];                                                                                    \
        Name() = default;                                                                                              \
        template <class Number>                                                                                        \
        constexpr Name(Number) : bytes{}                                                                               \
        {                                                                                                              \
        }                                                                                                              \
        template <class Number>                                                                                        \
        explicit operator Number() const;                                                                              \
        Name operator-() const;                                                                                        \
        Name &operator+=(Name);                                                                                        \
        Name &operator*=(Name);                                                                                        \
        friend Name operator+(Name, Name);                                                                             \
        friend Name operator-(Name, Name);                                                                             \
        friend Name operator*(Name, Name);                                                                             \
        friend Name operator/(Name, Name);                                                                             \
        friend bool operator==(Name, Name);                                                                            \
        friend bool operator<(Name, Name);                                                                             \
        friend bool operator>(Name, Name);                                                                             \
        friend bool operator<=(Name, Name);                                                                            \
        friend bool operator>=(Name, Name);                                                                            \
    }

STAND_IN(ZvkDecimal32, 4);
STAND_IN(ZvkDecimal64, 8);
STAND_IN(ZvkDecimal128, 16);

#undef STAND_IN
