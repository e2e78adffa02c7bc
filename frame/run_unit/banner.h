// What the library says of itself, where it is run as a program and under trace.
#pragma once

inline constexpr const char kBanner[] = "COBOL run-time library libkvr2_64r.so for x86-64 Linux";

inline constexpr const char *const kVersionStrings[] = {"KVR2_5.1.0", "KVR2_6.1.0", "KVR2_Next"};
