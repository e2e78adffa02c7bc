// Joins texts and numbers: all C text is made with this.
//
// `cat` gives a text, `joined` a view of it that is good until the next call of either, for they
// put all texts together in the same room.
#pragma once

#include <algorithm>
#include <charconv>
#include <concepts>
#include <string>
#include <string_view>
#include <vector>

namespace kvrcob {

inline std::vector<char> joinRoom(4096);

inline size_t roomFor(std::string_view text) { return text.size(); }
template <size_t N>
constexpr size_t roomFor(const char (&)[N]) // a literal
{
    return N - 1;
}
template <std::integral T>
size_t roomFor(T)
{
    return 20;
}
inline char *written(char *out, std::string_view text) { return std::copy(text.begin(), text.end(), out); }
template <size_t N>
char *written(char *out, const char (&literal)[N])
{
    return std::copy_n(literal, N - 1, out);
}
inline char *written(char *out, char c)
{
    *out = c;
    return out + 1;
}
template <std::integral T>
char *written(char *out, T number)
{
    return std::to_chars(out, out + roomFor(number), number).ptr;
}

template <class... Parts>
std::string_view joined(const Parts &...parts)
{
    const size_t room = (roomFor(parts) + ...);
    if (room > joinRoom.size()) joinRoom.resize(2 * room);
    char *end = joinRoom.data();
    ((end = written(end, parts)), ...);
    return {joinRoom.data(), end};
}
template <class... Parts>
std::string cat(const Parts &...parts)
{
    return std::string(joined(parts...));
}

// "..." as C has it. (operands.cpp)
std::string bytesLiteral(std::string_view bytes);
// The same as the address of static bytes.
std::string constantBytes(std::string_view bytes);

} // namespace kvrcob
