// What the fuzz targets share: taking an input apart, a place for files, a process of its own.
//
// A target is a file with LLVMFuzzerTestOneInput. It must not care what an input makes the library
// say; crashes, sanitizer reports, hangs and its own abort() are what it is there to find.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

namespace fuzz {

// The input from its beginning; what is not there reads as zeros.
class Input {
public:
    Input(const uint8_t *data, size_t size) : at_(data), left_(size) {}

    template <class T>
    T take()
    {
        T value{};
        size_t size = left_ < sizeof value ? left_ : sizeof value;
        memcpy(&value, at_, size);
        skip(size);
        return value;
    }
    // 0 to most.
    uint32_t below(uint32_t most) { return take<uint16_t>() % (most + 1); }
    // Exactly so many bytes.
    std::string bytes(size_t count)
    {
        std::string text(reinterpret_cast<const char *>(at_), left_ < count ? left_ : count);
        skip(text.size());
        text.resize(count);
        return text;
    }
    std::string rest() { return bytes(left_); }
    size_t left() const { return left_; }

private:
    void skip(size_t size)
    {
        at_ += size;
        left_ -= size;
    }
    const uint8_t *at_;
    size_t left_;
};

// A directory of this process's own, which is the working directory; it goes when the process ends.
const std::string &scratch();
void emptyScratch();
void putFile(const std::string &path, const void *bytes, size_t size);

// Runs a piece in a child process, for what leaves traces behind; aborts if the child crashed or
// hangs.
void inChild(const std::function<void()> &body);

} // namespace fuzz
