// Sets the mode word for the length of a block.
#pragma once

#include "decimal/mode.h"

class ModeGuard {
public:
    explicit ModeGuard(uint32_t mode) : before_(zvkBcdMode) { zvkBcdMode = mode; }
    ~ModeGuard() { zvkBcdMode = before_; }

private:
    uint32_t before_;
};
