// Record formats: fixed or variable, and which lengths a file's records may have.
//
// The compiler gives the lengths; a file whose shortest and longest record differ has variable
// records. A file that leaves its minimum 0 has variable records of at least no bytes, as RECORD
// VARYING has it.
#pragma once

#include "kvr2/file_module.h"

namespace filesystems {

struct RecordFormat {
    uint32_t longest;
    uint32_t shortest;
    bool variable;

    // A file of one length takes that length whatever a statement says: its record area is that
    // long.
    bool allows(uint32_t length) const { return length >= shortest && length <= longest; }
};

inline RecordFormat recordFormatOf(const FIB *fib)
{
    return {fib->maxRecord, fib->minRecord, fib->minRecord != fib->maxRecord};
}

// Bytes of the record that a WRITE or REWRITE hands in: those of the statement; 0 stands for the
// whole record of a fixed file.
inline uint32_t lengthOfRequest(const RecordFormat &format, const FileRequest *request)
{
    return request->recordLength || format.variable ? request->recordLength : format.longest;
}

inline uint8_t *recordOf(FCB *fcb, FileRequest *request) { return request->into ? request->into : fcb->record; }

} // namespace filesystems
