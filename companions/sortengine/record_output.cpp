// The result of a sort; see record_io.h.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "file_io.h"
#include "record_io.h"

namespace {

constexpr uint64_t kBufferBytes = 1u << 20;

void writeBuffer(Job *job)
{
    auto *buffer = reinterpret_cast<OutputBuffer *>(job);
    if (!writeWholeAt(buffer->fd, buffer->bytes, buffer->used, buffer->offset)) job->error = ZVK_SORT_EWRITE;
}

// Hands the current buffer to the worker and turns to the other one, which must have been written.
bool turnBuffer(Sort *sort, Output *output)
{
    OutputBuffer &full = output->buffers[output->current];
    submit(&sort->worker, &full.job);
    output->current ^= 1;
    OutputBuffer &next = output->buffers[output->current];
    if (uint32_t error = waitFor(&sort->worker, &next.job)) return fail(sort, error);
    next.offset = full.offset + full.used;
    next.used = 0;
    return true;
}

bool openPath(Sort *sort, Output *output)
{
    sort->outputFd = open(output->to->path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (sort->outputFd < 0) return fail(sort, ZVK_SORT_EOPENOUT);
    output->madeFile = true;
    uint64_t size = std::max<uint64_t>(kBufferBytes, uint64_t{sort->layout.recordLength} + kLengthWord);
    for (OutputBuffer &buffer : output->buffers) {
        buffer.job.run = writeBuffer;
        buffer.fd = sort->outputFd;
        buffer.bytes = static_cast<uint8_t *>(take(sort, size));
        if (!buffer.bytes) return false;
    }
    return true;
}

} // namespace

bool openOutput(Sort *sort, Output *output, const SortIoRecord *to)
{
    *output = {};
    output->to = to;
    if (to->count == 0) return to->path ? openPath(sort, output) : true;
    for (uint32_t i = 0; i < to->count; i++) {
        if (!openFile(sort, to->files[i], ZVK_OPEN_OUTPUT, ZVK_SORT_EOPENOUT)) return false;
        output->openFiles++;
    }
    return true;
}

bool putRecord(Sort *sort, Output *output, const uint8_t *record, uint32_t bytes)
{
    const SortIoRecord *to = output->to;
    if (to->count) {
        output->records++;
        uint32_t head = sort->layout.variable ? kLengthWord : 0;
        for (uint32_t i = 0; i < to->count; i++)
            if (!writeFile(sort, to->files[i], record + head, bytes - head, output->records)) return false;
        return true;
    }
    if (!to->path) {
        if (output->bytes + bytes > to->bytes) return fail(sort, ZVK_SORT_EREQUEST);
        memcpy(to->memory + output->bytes, record, bytes);
        output->bytes += bytes;
        return true;
    }
    if (output->buffers[output->current].used + bytes > kBufferBytes && output->buffers[output->current].used &&
        !turnBuffer(sort, output))
        return false;
    OutputBuffer &buffer = output->buffers[output->current];
    memcpy(buffer.bytes + buffer.used, record, bytes);
    buffer.used += bytes;
    return true;
}

bool closeOutput(Sort *sort, Output *output)
{
    while (output->openFiles) {
        output->openFiles--;
        if (!closeFile(sort, output->to->files[output->openFiles], ZVK_SORT_EWRITE)) return false;
    }
    if (output->to->count || !output->to->path) return true;
    OutputBuffer &last = output->buffers[output->current];
    bool written = waitFor(&sort->worker, &output->buffers[output->current ^ 1].job) == 0 &&
                   writeWholeAt(last.fd, last.bytes, last.used, last.offset);
    int closed = close(sort->outputFd);
    sort->outputFd = -1;
    return (written && closed == 0) || fail(sort, ZVK_SORT_EWRITE);
}

void discardOutput(Sort *sort, Output *output)
{
    if (!output->to || sort->error == ZVK_SORT_EABANDONED) return;
    // Closing is all that can be done for the files: SORT-RETURN says that they are not the result.
    while (output->openFiles) {
        output->openFiles--;
        closeFile(sort, output->to->files[output->openFiles], ZVK_SORT_EWRITE);
    }
    if (!output->madeFile) return;
    // The worker may still be at it; it must not outlive the name.
    for (OutputBuffer &buffer : output->buffers) waitFor(&sort->worker, &buffer.job);
    unlink(output->to->path);
}
