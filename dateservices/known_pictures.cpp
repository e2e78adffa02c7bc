// Pictures that were taken apart already; see known_pictures.h.
#include "dateservices/known_pictures.h"

#include <atomic>
#include <cstring>

#include "base/bytes.h"
#include "dateservices/fixed_layout.h"

namespace dates {
namespace {

constexpr size_t kMostText = 32; // longer pictures are rare, and walked as they are met
constexpr size_t kSlots = 64;

enum State : uint8_t { Empty, Filling, Ready };

struct Slot {
    std::atomic<uint8_t> state;
    Clearing clearing;
    uint8_t givenLength;
    char given[kMostText];
    char text[kMostText];
    PictureElement elements[kMostText];
    FixedLayout layout;
    Picture picture;
};
Slot slots[kSlots];

// Eight bytes at a time; the last eight may count twice.
template <class Step>
inline void eachWord(const char *text, size_t length, Step step)
{
    if (length < 8) {
        uint64_t word = 0;
        for (size_t i = 0; i < length; i++) word = word << 8 | static_cast<uint8_t>(text[i]);
        return step(word);
    }
    for (size_t i = 0; i + 8 < length; i += 8) step(load<uint64_t>(text + i));
    step(load<uint64_t>(text + length - 8));
}

Slot &slotOf(const char *text, size_t length, Clearing clearing)
{
    uint64_t hash = length * 2 + (clearing == Clearing::Yes);
    eachWord(text, length, [&](uint64_t word) { hash = (hash ^ word) * 0x9E3779B97F4A7C15u; });
    return slots[hash >> 58];
}

bool sameText(const char *a, const char *b, size_t length)
{
    if (length < 8) return memcmp(a, b, length) == 0;
    for (size_t i = 0; i + 8 < length; i += 8)
        if (load<uint64_t>(a + i) != load<uint64_t>(b + i)) return false;
    return load<uint64_t>(a + length - 8) == load<uint64_t>(b + length - 8);
}

void fill(Slot &slot, const char *text, size_t length, Clearing clearing)
{
    slot.clearing = clearing;
    slot.givenLength = static_cast<uint8_t>(length);
    memcpy(slot.given, text, length);
    char *end = slot.text + length;
    if (clearing == Clearing::Yes)
        end = normalise(text, length, slot.text);
    else
        memcpy(slot.text, text, length);

    slot.picture = pictureOf(slot.text, end);
    PictureElement *element = slot.elements;
    for (const char *at = slot.text; at < end; at += element++->length) *element = nextElement(at, end);
    slot.picture.elements = slot.elements;
    slot.layout = layoutOf(slot.picture);
    if (slot.layout.count) slot.picture.layout = &slot.layout;
}

} // namespace

const Picture *knownPicture(const char *text, size_t length, Clearing clearing)
{
    if (length == 0 || length > kMostText) return nullptr;
    Slot &slot = slotOf(text, length, clearing);
    uint8_t state = slot.state.load(std::memory_order_acquire);
    if (state == Empty && slot.state.compare_exchange_strong(state, Filling, std::memory_order_acq_rel)) {
        fill(slot, text, length, clearing);
        slot.state.store(Ready, std::memory_order_release);
        state = Ready;
    }
    if (state != Ready || slot.givenLength != length || slot.clearing != clearing ||
        !sameText(slot.given, text, length))
        return nullptr;
    return &slot.picture;
}

} // namespace dates
