#include "host/DocumentReader.h"

#include "host/toolbox/HostContext.h"

namespace vxhost
{

int32_t DocumentReader::Read(StreamReader *stream, int32_t op, void *arg, int32_t *inout)
{
    DocumentReader *self = reinterpret_cast<Link *>(stream)->reader;
    if (op == kVXReadBytes)
        *inout = self->Deliver(arg, *inout);
    else if (op == kVXSetPosition)
        self->left_ = self->position_ =
            std::min(static_cast<size_t>(std::max(*inout, 0)), self->bytes_.size());
    return 0;
}

int32_t DocumentReader::Deliver(void *to, int32_t wanted)
{
    if (wanted <= 0 || HasCallFailed())
        return 0;
    const size_t count = std::min(static_cast<size_t>(wanted), bytes_.size() - position_);
    if (count == 0)
        return 0;
    std::memcpy(to, bytes_.data() + position_, count);
    for (StreamCompanion *companion : companions_) {
        if (companion != nullptr)
            RunCallback([&] { companion->Deliver({static_cast<std::byte *>(to), count}, position_); });
    }
    position_ += count;
    furthest_ = std::max(furthest_, position_);
    if (position_ - left_ >= Document::kReadAtOnce) {
        document_.Leave(left_, position_);
        left_ = position_;
    }
    return static_cast<int32_t>(count);
}

} // namespace vxhost
