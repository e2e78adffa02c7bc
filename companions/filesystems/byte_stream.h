// Buffered input and output on a descriptor, which never leaves half a record behind.
//
// stdio flushes where its buffer happens to be full, so a killed program leaves a file that ends
// anywhere. Here the writer hands in whole records and the buffer goes out between two of them, in
// one write(2). If the system takes only a part (disk full, file-size limit), the file is cut back
// to the last whole record. Offsets are kept here and given to pread and pwrite; devices that
// cannot seek are read and written as they come.
//
// A kill can stop the system between two pages of a block. Where the format cannot tell half a
// record from a whole one, a stream that announces its blocks says in an extended attribute of the
// file how far each one reaches before it goes out: a file that ends before that place was cut off.
// With it go the block's first bytes and checksums of its first page: another content that some
// program has put into the same file since is not taken for that block.
//
//     uint8_t *room = stream.reserve(104);   // null: the disk is full
//     memcpy(room, record, 104);
//     stream.commit(104);
#pragma once

#include <cstddef>
#include <cstdint>

namespace filesystems {

// Writes all bytes at an offset; returns 0 or an errno. The signal of the file-size limit is held
// off: it would end the run unit.
int writeAll(int descriptor, bool seekable, const void *data, size_t size, uint64_t offset);

// Reads `size` bytes at an offset, or as many as the file has; returns 0 or an errno. `got` are
// good in both cases.
int readAll(int descriptor, void *data, size_t size, uint64_t offset, size_t *got);

struct WholeRecords;

struct ByteStream {
    int descriptor;
    bool seekable;
    bool atEnd;      // input: the system has no more
    bool announces;  // output: blocks are announced
    bool announced;  // one has been
    bool standard;   // output: one of the process's own streams, to which DISPLAY writes too
    int error;       // errno of the last failure
    uint8_t *buffer; // of `capacity` bytes, owned by the FCB
    size_t capacity;
    size_t at;           // next byte in the buffer
    size_t filled;       // input: bytes in the buffer
    uint64_t base;       // offset in the file of buffer[0]
    WholeRecords *whole; // input: records may be changed in place; null: never

    uint64_t offset() const { return base + at; }
    size_t available() const { return filled - at; }

    // Input: sees to it that `wanted` bytes (at most the capacity) are in the buffer; false at the
    // end or on an error.
    bool need(size_t wanted) { return available() >= wanted || refill(wanted); }
    bool refill(size_t wanted);
    void seek(uint64_t offset);

    // Output: room for one record of `size` bytes, at most the capacity.
    uint8_t *reserve(size_t size) { return size <= capacity - at || flush() ? buffer + at : nullptr; }
    void commit(size_t size) { at += size; }
    bool flush();
    void withdraw(); // no block is under way any more
};

// Whether a file of that size ends within a block that was announced; returns 0 or an errno.
int findCutOff(int descriptor, uint64_t size, bool *cutOff);

} // namespace filesystems
