// Records back to back: fixed ones with nothing between them; variable ones each after a word with
// its length.
//
//     fixed, 4 bytes:  "ABCDEFGH"                          two records
//     variable:        03 00 00 00 "ABC" 01 00 00 00 "D"   two records; the word is
//                      little-endian and does not count itself
//
// A record that the file's end cuts off is not delivered, and EXTEND writes over it. A length word
// that no record of the file can have is damage, not a torn record: READ gives status 30, EXTEND
// 39, and the file stays as it is.
#pragma once

#include "companions/filesystems/sequential_file.h"

namespace filesystems {

struct FixedRecords {
    static constexpr bool devices = true;
    static constexpr bool deletes = false;

    static void open(FCB *fcb, const FIB *, SequentialFile *file)
    {
        if (file->format.longest == 0) fail(fcb, 39, fs2RecordLength);
    }

    static uint64_t wholeSize(FCB *, SequentialFile *file, uint64_t size, bool)
    {
        uint64_t each = uint64_t(file->format.longest) + file->sumSize;
        return size < file->dataStart ? file->dataStart : size - (size - file->dataStart) % each;
    }

    static Found read(SequentialFile *file, uint8_t *record, uint32_t *length)
    {
        ByteStream &stream = file->stream;
        uint32_t size = file->format.longest;
        if (!stream.need(size + file->sumSize)) return stream.error ? Found::failed : Found::end;
        if (file->sumSize && !hasSum(stream.offset(), stream.buffer + stream.at, size)) return Found::damaged;
        memcpy(record, stream.buffer + stream.at, size);
        file->lastPlace = stream.offset();
        file->lastLength = *length = size;
        stream.at += size + file->sumSize;
        return Found::record;
    }

    static bool write(FCB *fcb, SequentialFile *file, const uint8_t *record, uint32_t length, FileRequest *)
    {
        uint8_t *room = file->stream.reserve(length + file->sumSize);
        if (!room) return failWithErrno(fcb, file->stream.error);
        memcpy(room, record, length);
        if (file->sumSize) putSum(file->stream.offset(), room, length);
        file->stream.commit(length + file->sumSize);
        return true;
    }

    static const uint8_t *image(FCB *fcb, SequentialFile *file, const uint8_t *record, uint32_t length)
    {
        if (length == file->lastLength) return record;
        fail(fcb, 44, fs2RecordLength);
        return nullptr;
    }

    static void finish(FCB *, SequentialFile *) {}
};

struct BackToBack {
    static constexpr bool devices = true;
    static constexpr bool deletes = false;
    static constexpr uint32_t kWord = 4;

    static void open(FCB *fcb, const FIB *, SequentialFile *file)
    {
        if (!file->format.variable) FixedRecords::open(fcb, nullptr, file);
    }

    // Only the end of the file can be torn, but it is found only by walking the length words:
    // EXTEND does, others meet it as they read.
    static uint64_t wholeSize(FCB *fcb, SequentialFile *file, uint64_t size, bool exact)
    {
        if (!file->format.variable) return FixedRecords::wholeSize(fcb, file, size, exact);
        if (!exact) return size;
        ByteStream &stream = file->stream;
        while (stream.need(kWord)) {
            uint32_t length = lengthWord(stream);
            if (length > file->format.longest) {
                fail(fcb, 39, fs2Header);
                break;
            }
            if (!stream.need(kWord + length + file->sumSize)) break;
            stream.at += kWord + length + file->sumSize;
            ++file->records;
        }
        if (stream.error) failWithErrno(fcb, stream.error);
        return stream.offset();
    }

    static Found read(SequentialFile *file, uint8_t *record, uint32_t *length)
    {
        if (!file->format.variable) return FixedRecords::read(file, record, length);
        ByteStream &stream = file->stream;
        if (!stream.need(kWord)) return stream.error ? Found::failed : Found::end;
        uint32_t size = lengthWord(stream);
        if (size > file->format.longest) return file->sumSize ? Found::damaged : longer(file, record, length, size);
        if (!stream.need(kWord + size + file->sumSize)) return stream.error ? Found::failed : Found::end;
        if (file->sumSize && !hasSum(stream.offset() + kWord, stream.buffer + stream.at + kWord, size))
            return Found::damaged;
        memcpy(record, stream.buffer + stream.at + kWord, size);
        file->lastPlace = stream.offset() + kWord;
        file->lastLength = *length = size;
        stream.at += kWord + size + file->sumSize;
        return Found::record;
    }

    static bool write(FCB *fcb, SequentialFile *file, const uint8_t *record, uint32_t length, FileRequest *request)
    {
        if (!file->format.variable) return FixedRecords::write(fcb, file, record, length, request);
        uint8_t *room = file->stream.reserve(kWord + length + file->sumSize);
        if (!room) return failWithErrno(fcb, file->stream.error);
        memcpy(room, &length, kWord);
        memcpy(room + kWord, record, length);
        if (file->sumSize) putSum(file->stream.offset() + kWord, room + kWord, length);
        file->stream.commit(kWord + length + file->sumSize);
        return true;
    }

    static constexpr auto image = FixedRecords::image;

    static void finish(FCB *, SequentialFile *) {}

private:
    static uint32_t lengthWord(const ByteStream &stream)
    {
        uint32_t length;
        memcpy(&length, stream.buffer + stream.at, kWord);
        return length;
    }

    // A record longer than the program's: cut if the file really holds it, damage if not.
    static Found longer(SequentialFile *file, uint8_t *record, uint32_t *length, uint32_t size)
    {
        ByteStream &stream = file->stream;
        uint64_t next = stream.offset() + kWord + size;
        if (!stream.seekable || next > file->whole) return Found::damaged;
        *length = file->format.longest;
        if (!stream.need(kWord + *length)) return stream.error ? Found::failed : Found::damaged;
        memcpy(record, stream.buffer + stream.at + kWord, *length);
        file->lastPlace = stream.offset() + kWord;
        file->lastLength = size;
        stream.seek(next);
        return Found::cut;
    }
};

} // namespace filesystems
