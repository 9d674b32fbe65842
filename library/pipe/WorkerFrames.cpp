#include "library/pipe/WorkerFrames.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vxhost
{

std::string AnswerFrameHead(uint64_t length)
{
    std::string head(1, kAnswerFrame);
    return head.append(reinterpret_cast<const char *>(&length), sizeof length);
}

WorkerFrames::WorkerFrames(size_t mostAnswer, std::function<void(int)> onProgress)
    : mostAnswer_(mostAnswer), onProgress_(std::move(onProgress))
{
}

bool WorkerFrames::Add(std::string_view bytes)
{
    bytes_ += bytes;
    std::string_view rest = bytes_;
    bool isWhole = true; // what stands at the start of the rest, as far as is known
    while (isWhole && !rest.empty()) {
        uint64_t length = 0;
        size_t size = 1;
        switch (rest[0]) {
        case kMemoryFrame:
            isOutOfMemory_ = true;
            break;
        case kProgressFrame:
            size = 2;
            if (rest.size() >= size && onProgress_)
                onProgress_(std::clamp<int>(rest[1], 0, 100));
            break;
        case kAnswerFrame:
            size += sizeof length;
            if (rest.size() < size)
                break;
            std::memcpy(&length, rest.data() + 1, sizeof length);
            if (length > mostAnswer_)
                return false;
            size += length;
            if (rest.size() >= size)
                answer_ = rest.substr(size - length, length);
            break;
        default:
            return false;
        }
        isWhole = rest.size() >= size;
        rest.remove_prefix(isWhole ? size : 0);
    }
    bytes_.erase(0, bytes_.size() - rest.size());
    return true;
}

} // namespace vxhost
