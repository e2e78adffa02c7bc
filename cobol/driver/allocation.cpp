// The command's own operator new.
//
// A translation makes millions of short texts and small nodes, one after the other, in one thread,
// and ends with the process. So small blocks come out of large pieces of memory, and what is freed
// waits in a list of its size until a block of that size is wanted: a few instructions each way,
// and nothing is ever given back. Larger blocks are malloc's. The eight bytes before a block say
// which it is:
//
//     piece  | 3 | 56 bytes ...... | 1 | 24 bytes | 1 | 24 bytes | ...
//
// Sanitizers bring their own, which knows more.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

constexpr size_t kHead = 8, kAlign = 16;
constexpr size_t kClasses = 64; // class n has n * 16 + 8 bytes
constexpr size_t kPiece = 1 << 20;
constexpr uint64_t kLarge = UINT64_MAX;

struct Free {
    Free *next;
};

Free *freed[kClasses];
char *piece, *pieceEnd;

[[noreturn]] void noMemory()
{
    std::fputs("kvrcob: there is no memory left\n", stderr);
    std::_Exit(1);
}

uint64_t &headOf(void *block) { return static_cast<uint64_t *>(block)[-1]; }

void *largeBlock(size_t size)
{
    char *room = static_cast<char *>(size < SIZE_MAX - kAlign ? std::malloc(size + kAlign) : nullptr);
    if (!room) noMemory();
    headOf(room + kAlign) = kLarge;
    return room + kAlign;
}

// Out of the piece in hand, or of a new one; what is left of the old one is lost.
void *newBlock(size_t n)
{
    const size_t size = kHead + n * kAlign + kHead;
    if (static_cast<size_t>(pieceEnd - piece) < size) {
        piece = static_cast<char *>(std::malloc(kPiece));
        if (!piece) noMemory();
        pieceEnd = piece + kPiece;
        piece += kHead; // a block begins at a multiple of 16, after its head
    }
    void *block = piece + kHead;
    piece += size;
    headOf(block) = n;
    return block;
}

} // namespace

void *operator new(size_t size)
{
    const size_t n = (size + kAlign - kHead - 1) / kAlign;
    if (n >= kClasses) return largeBlock(size);
    Free *block = freed[n];
    if (!block) return newBlock(n);
    freed[n] = block->next;
    return block;
}

void operator delete(void *block) noexcept
{
    if (!block) return;
    const uint64_t n = headOf(block);
    if (n == kLarge) {
        std::free(static_cast<char *>(block) - kAlign);
        return;
    }
    auto *now = static_cast<Free *>(block);
    now->next = freed[n];
    freed[n] = now;
}

void *operator new[](size_t size) { return operator new(size); }
void operator delete[](void *block) noexcept { operator delete(block); }
void operator delete(void *block, size_t) noexcept { operator delete(block); }
void operator delete[](void *block, size_t) noexcept { operator delete(block); }

#endif
