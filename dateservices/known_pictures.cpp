// Pictures that were taken apart already; see known_pictures.h.
#include "dateservices/known_pictures.h"

#include <atomic>
#include <cstring>

#include "base/bytes.h"
#include "dateservices/date_parts.h"

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
    Picture picture;
};
Slot slots[kSlots];

Slot &slotOf(const char *text, size_t length, Clearing clearing)
{
    uint64_t hash = length * 2 + (clearing == Clearing::Yes);
    for (size_t i = 0; i + 8 <= length; i += 8) hash = (hash ^ load<uint64_t>(text + i)) * 0x9E3779B97F4A7C15u;
    for (size_t i = length & ~size_t{7}; i < length; i++)
        hash = (hash ^ static_cast<uint8_t>(text[i])) * 0x9E3779B97F4A7C15u;
    return slots[hash >> 58];
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
}

} // namespace

bool knownPicture(const char *text, size_t length, Clearing clearing, Picture *picture)
{
    if (length == 0 || length > kMostText) return false;
    Slot &slot = slotOf(text, length, clearing);
    uint8_t state = slot.state.load(std::memory_order_acquire);
    if (state == Empty && slot.state.compare_exchange_strong(state, Filling, std::memory_order_acq_rel)) {
        fill(slot, text, length, clearing);
        slot.state.store(Ready, std::memory_order_release);
        state = Ready;
    }
    if (state != Ready || slot.givenLength != length || slot.clearing != clearing ||
        memcmp(slot.given, text, length) != 0)
        return false;
    *picture = slot.picture;
    return true;
}

} // namespace dates
