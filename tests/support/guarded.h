// Storage between two protected pages: any access before or after an item faults at once.
//
//     GuardedItem item(5, GuardedItem::AtEnd);     // byte 5 is out of bounds and faults
//     memcpy(item.data(), "12345", 5);
#pragma once

#include <cstddef>
#include <cstdint>

class GuardedItem {
public:
    enum Place { AtStart, AtEnd }; // which end of the item touches a protected page

    explicit GuardedItem(size_t size, Place place = AtEnd);
    ~GuardedItem();
    GuardedItem(const GuardedItem &) = delete;
    GuardedItem &operator=(const GuardedItem &) = delete;

    uint8_t *data() const { return data_; }
    size_t size() const { return size_; }

    // An item of another size and place in the same pages; it must not be larger than the first.
    uint8_t *place(size_t size, Place place);

private:
    uint8_t *base_; // the protected page before
    size_t span_;   // bytes between the protected pages
    uint8_t *data_;
    size_t size_;
};
