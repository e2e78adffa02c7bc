// A file whose operations are the test's own: records in a vector.
#pragma once

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "kvr2/fileio.h"

struct TestFile {
    FCB fcb{};
    FIB fib{};
    std::vector<std::string> records;
    int opens = 0, closes = 0;
    uint16_t openStatus = 0, readStatus = 0, writeStatus = 0;
    size_t next = 0;
    uint8_t area[512]{};
    inline static std::function<void()> onCall; // in every routine of every file

    TestFile()
    {
        fcb.fib = &fib;
        fcb.record = area;
        fcb.reserved16 = reinterpret_cast<uint64_t>(this);
        fcb.open = [](FCB *f, IPCB *) { of(f)->open(); };
        fcb.close = [](FCB *f, IPCB *) { of(f)->close(); };
        fcb.read = [](FCB *f, IPCB *, FileRequest *request) { of(f)->read(request); };
        fcb.write = [](FCB *f, IPCB *, FileRequest *request) { of(f)->write(request); };
    }
    TestFile(const TestFile &) = delete;

private:
    static TestFile *of(FCB *f) { return reinterpret_cast<TestFile *>(f->reserved16); }
    void called()
    {
        if (onCall) onCall();
    }
    void open()
    {
        called();
        fcb.status = fcb.mode ? 41 : openStatus;
        if (fcb.status) return;
        opens++;
        fcb.mode = fcb.requestedMode;
        next = 0;
        if (fcb.mode == ZVK_OPEN_OUTPUT) records.clear();
    }
    void close()
    {
        called();
        fcb.status = fcb.mode ? 0 : 42;
        closes += fcb.mode != 0;
        fcb.mode = 0;
    }
    void read(FileRequest *request)
    {
        called();
        fcb.status = readStatus ? readStatus : next < records.size() ? 0 : 10;
        if (fcb.status) return;
        const std::string &record = records[next++];
        memcpy(area, record.data(), record.size());
        request->recordLength = static_cast<uint32_t>(record.size());
    }
    void write(FileRequest *request)
    {
        called();
        fcb.status = writeStatus;
        if (!fcb.status) records.emplace_back(reinterpret_cast<char *>(area), request->recordLength);
    }
};
