// A build without files keeps the pieces of a page in memory.
#include "devices/pdf/PieceSpool.h"

#include "devices/pdf/MemorySpool.h"

namespace vxhost::pdf
{

std::unique_ptr<PieceSpool> MakePieceSpool(const PdfOptions &options)
{
    return std::make_unique<MemorySpool>(options.memoryLimit);
}

} // namespace vxhost::pdf
