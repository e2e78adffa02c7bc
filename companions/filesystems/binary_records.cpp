// Fixed binary records, "wbr" and "raw": nothing but the records' bytes. A program whose records
// vary writes and reads its longest.
#include "companions/filesystems/back_to_back.h"

namespace filesystems {

struct BinaryRecords : FixedRecords {
    static void open(FCB *fcb, const FIB *fib, SequentialFile *file)
    {
        file->format.shortest = file->format.longest;
        file->format.variable = false;
        FixedRecords::open(fcb, fib, file);
    }
};

} // namespace filesystems

extern "C" {
ZVK_EXPORT void _IO_Init(FCB *fcb, IPCB *element);
ZVK_EXPORT void **vfs(void);

void _IO_Init(FCB *fcb, IPCB *element) { filesystems::initSequential<filesystems::BinaryRecords>(fcb, element); }
void **vfs(void) { return filesystems::operationTable(); }
}
