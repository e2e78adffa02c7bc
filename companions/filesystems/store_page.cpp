// Is a page whole? Asked of pages that LMDB will change, and of those that say that a key is not
// there.
#include "companions/filesystems/store_page.h"

namespace filesystems {

// The pages of a value that is elsewhere, as LMDB uses and frees them.
bool valuePagesAreGood(const StoreSnapshot &in, const MDB_val &value)
{
    const uint8_t *page = static_cast<const uint8_t *>(value.mv_data) - kHeadSize;
    uint64_t first = static_cast<uint64_t>(page - in.base) / in.pageSize, count = load<uint32_t>(page + 12);
    return load<uint64_t>(page) == first && load<uint16_t>(page + 10) == kOverflow &&
           count * in.pageSize >= kHeadSize + value.mv_size && count <= in.pages - first;
}

// Every node of a page: they lie in it side by side, without a gap, and their keys ascend if they
// are to be compared (`order`).
bool pageIsWhole(const StoreSnapshot &in, const PageCursor::Level &level, bool leaf, bool order)
{
    uint16_t sizes[kLargestPage / 2]; // of the node that begins there
    uint32_t upper = load<uint16_t>(level.page + 14);
    if (upper % 2) return false;
    memset(sizes + upper / 2, 0, in.pageSize - upper);
    Node last = {}, node;
    for (uint32_t n = 0; n < level.nodes; ++n) {
        MDB_val value;
        if (!nodeAt(in, level, n, &node) || (leaf && !valueAt(in, level, &node, &value))) return false;
        size_t at = static_cast<size_t>(node.bytes - level.page);
        if (at % 2 || sizes[at / 2]) return false;
        sizes[at / 2] = static_cast<uint16_t>((node.size + 1) & ~size_t(1));
        // The first key of a branch is not used.
        if (order && n > (leaf ? 0u : 1u) && compare(last.key, last.keySize, node.key, node.keySize) >= 0) return false;
        last = node;
    }
    uint32_t found = 0;
    for (uint32_t at = upper; at < in.pageSize; at += sizes[at / 2], ++found)
        if (!sizes[at / 2]) return false;
    return found == level.nodes;
}

} // namespace filesystems
