#include "devices/svg/Clips.h"

#include "devices/svg/PathData.h"

namespace vxhost::svg
{

namespace
{

// The most careful readers stop at 256 elements.
constexpr uint32_t kMaxDepth = 200;

} // namespace

void Clips::OpenGroup(uint64_t clip)
{
    xml_->Markup("<g clip-path=\"url(#c");
    xml_->Number(static_cast<double>(clip));
    xml_->Markup(")\">\n");
}

void Clips::Intersect(const Path &path)
{
    if (path.IsEmpty())
        current_.isEmpty = true;
    else
        IntersectWith([&] { WritePathData(path, toPicture_, xml_); });
}

void Clips::IntersectWith(const std::function<void()> &writeData)
{
    if (current_.isEmpty)
        return;
    const bool isTooDeep = current_.depth == kMaxDepth;
    xml_->Markup("<clipPath id=\"c");
    xml_->Number(static_cast<double>(++lastClip_));
    if (isTooDeep) {
        xml_->Markup("\" clip-path=\"url(#c");
        xml_->Number(static_cast<double>(current_.clip));
        xml_->Markup(")");
    }
    xml_->Markup("\"><path d=\"");
    writeData();
    xml_->Markup("\"/></clipPath>\n");
    if (isTooDeep)
        CloseGroup();
    else
        ++current_.depth;
    current_.clip = lastClip_;
    OpenGroup(current_.clip);
}

void Clips::Restore()
{
    if (levels_.empty())
        return;
    const Level outer = levels_.back();
    levels_.pop_back();
    const bool isReplaced = current_.depth == outer.depth && current_.clip != outer.clip;
    for (; current_.depth > outer.depth; --current_.depth)
        CloseGroup();
    if (isReplaced) {
        CloseGroup();
        OpenGroup(outer.clip);
    }
    current_ = outer;
}

void Clips::End()
{
    levels_.clear();
    for (; current_.depth > 0; --current_.depth)
        CloseGroup();
}

} // namespace vxhost::svg
