#include "support/guarded.h"

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

static size_t pageSize() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

GuardedItem::GuardedItem(size_t size, Place where)
{
    size_t page = pageSize();
    span_ = (size + page - 1) / page * page;
    if (span_ == 0) span_ = page;
    void *area = mmap(nullptr, span_ + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED) abort();
    base_ = static_cast<uint8_t *>(area);
    if (mprotect(base_ + page, span_, PROT_READ | PROT_WRITE) != 0) abort();
    place(size, where);
}

GuardedItem::~GuardedItem() { munmap(base_, span_ + 2 * pageSize()); }

uint8_t *GuardedItem::place(size_t size, Place where)
{
    if (size > span_) abort();
    size_ = size;
    data_ = base_ + pageSize() + (where == AtEnd ? span_ - size : 0);
    return data_;
}
