#include "plugin/body/HostTable.h"

namespace vx
{

bool CheckZRKProcs(const ZRKProcs *table)
{
    if (table == nullptr || table->version != kZRKProcsVersion || table->count < kZRKProcCount)
        return false;
    for (int entry = 0; entry < kZRKProcCount; ++entry)
        if (table->entry[entry] == nullptr)
            return false;
    return true;
}

} // namespace vx
