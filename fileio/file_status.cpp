// The feedback field of a verb that made no sense in the file's state.
#include "fileio/file_status.h"

void zvkResetFeedback(const FIB *fib)
{
    constexpr uint8_t ebcdicBlank = 0x40, ebcdicZero = 0xF0;
    uint8_t *field = zvkFeedbackField(fib);
    if (!field) return;
    bool ebcdic = fib->shareMode & ZVK_FILE_FEEDBACK_EBCDIC;
    memset(field, ebcdic ? ebcdicBlank : ' ', fib->feedbackLength);
    if (fib->feedbackLength > 5) memset(field, ebcdic ? ebcdicZero : '0', 6);
}
