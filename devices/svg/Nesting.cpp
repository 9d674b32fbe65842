#include "devices/svg/Nesting.h"

#include "devices/svg/PaintAttributes.h"
#include "devices/svg/PathData.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vxhost::svg
{

namespace
{

// The most careful readers stop at 256 elements.
constexpr size_t kMaxDepth = 200;
constexpr size_t kMostHeld = size_t{4} << 20; // bytes, but for one element
constexpr std::string_view kGroup = "<g>\n";

void WriteLayer(const Layer &layer, XmlWriter *xml)
{
    xml->Markup("<g inkscape:groupmode=\"layer\"");
    xml->Attribute("inkscape:label", layer.name);
    if (!layer.isEnabled)
        xml->Markup(" sodipodi:insensitive=\"true\"");
    // One that does not print is there because somebody asked for it, and shows when it is switched on.
    if (!layer.isPrinting)
        xml->Markup(" style=\"display:none\" data-printing=\"false\"");
    if (!layer.isVisible)
        xml->Markup(" data-visible=\"false\"");
    if (!layer.isPreviewed)
        xml->Markup(" data-preview=\"false\"");
    if (layer.isDimmed)
        xml->Markup(" data-dimmed=\"true\"");
    xml->Markup(" inkscape:highlight-color=\"");
    WriteColour({layer.rgb[0], layer.rgb[1], layer.rgb[2]}, xml);
    xml->Markup("\">\n");
}

} // namespace

void Nesting::Open(size_t index)
{
    Entry &entry = entries_[index];
    entry.isOpen = true;
    if (entry.kind == Kind::Layer)
        return WriteLayer(*layers_[index], xml_);
    if (entry.kind == Kind::Group)
        return xml_->Markup(kGroup);
    xml_->Markup("<g clip-path=\"url(#c");
    xml_->Number(static_cast<double>(entry.value));
    xml_->Markup(")\">\n");
}

// Closes the elements of all but so many entries, which stay what they are.
void Nesting::CloseDownTo(size_t count)
{
    for (size_t i = entries_.size(); i-- > count;) {
        if (std::exchange(entries_[i].isOpen, false)) {
            xml_->Markup("</g>\n");
            hasClosed_ = true;
        }
    }
}

void Nesting::Forget(const Entry &group)
{
    if (group.value == 0)
        --unmarked_;
    else if (!group.isOpen)
        --held_;
}

void Nesting::RemoveFrom(size_t index)
{
    // Before they are closed: an open group is not held any more.
    for (size_t i = entries_.size(); i-- > index;) {
        if (entries_[i].kind != Kind::Group)
            continue;
        Forget(entries_[i]);
        *std::find(groups_.rbegin(), groups_.rend(), false) =
            true; // the innermost of those that have not ended
    }
    const bool hadClosed = hasClosed_;
    CloseDownTo(index);
    hasClosed_ = hadClosed;
    entries_.resize(index);
    ReleaseText();
}

// Lets go of the text that was held back, once no group is left that might begin before it.
void Nesting::ReleaseText()
{
    if (held_ == 0)
        xml_->Release();
}

// Notes this as the place where groups without an element begin, if they are ever written.
void Nesting::MarkGroups()
{
    for (size_t i = entries_.size(); unmarked_ > 0; --unmarked_) {
        do
            --i;
        while (entries_[i].kind != Kind::Group);
        entries_[i].value = xml_->Hold();
        ++held_;
    }
    // Clips without end are no reason to fill the memory.
    if (xml_->HeldBytes() > kMostHeld)
        WriteGroups(0);
}

// Writes those groups that have so many elements, and not only the one that was held back.
void Nesting::WriteGroups(uint32_t least)
{
    size_t written = 0;
    for (Entry &entry : entries_) {
        if (entry.kind != Kind::Group || entry.isOpen)
            continue;
        entry.value += written;
        if (entry.elements < least)
            continue;
        xml_->Insert(static_cast<size_t>(entry.value), kGroup);
        written += kGroup.size();
        entry.isOpen = true;
        --held_;
    }
    ReleaseText();
}

void Nesting::OpenEntries()
{
    MarkGroups();
    for (size_t i = 0; hasClosed_ && i < entries_.size(); ++i) {
        const bool isReplaced = i + 1 < entries_.size() && entries_[i + 1].replaces;
        if (entries_[i].kind != Kind::Group && !entries_[i].isOpen && !isReplaced)
            Open(i);
    }
    hasClosed_ = false;
    bool isComplete = false;
    for (size_t i = 0; held_ > 0 && i < entries_.size(); ++i) {
        Entry &entry = entries_[i];
        if (entry.kind == Kind::Group && !entry.isOpen)
            isComplete = ++entry.elements == 2 || isComplete;
    }
    if (isComplete)
        WriteGroups(2);
}

void Nesting::Intersect(const Path &path)
{
    if (path.IsEmpty())
        isEmpty_ = true;
    else
        IntersectWith([&] { WritePathData(path, toPicture_, xml_); });
}

void Nesting::IntersectWith(const std::function<void()> &writeData)
{
    if (isEmpty_)
        return;
    MarkGroups();
    Entry entry;
    entry.value = ++lastClip_;
    entry.replaces = entries_.size() >= kMaxDepth && !entries_.empty() && entries_.back().kind == Kind::Clip;
    xml_->Markup("<clipPath id=\"c");
    xml_->Number(static_cast<double>(entry.value));
    if (entry.replaces) {
        xml_->Markup("\" clip-path=\"url(#c");
        xml_->Number(static_cast<double>(entries_.back().value));
        xml_->Markup(")");
    }
    xml_->Markup("\"><path d=\"");
    writeData();
    xml_->Markup("\"/></clipPath>\n");
    if (entry.replaces && std::exchange(entries_.back().isOpen, false))
        xml_->Markup("</g>\n");
    entries_.push_back(entry);
    if (!hasClosed_)
        Open(entries_.size() - 1);
}

void Nesting::Restore()
{
    if (levels_.empty())
        return;
    const Level outer = levels_.back();
    levels_.pop_back();
    isEmpty_ = outer.isEmpty;
    // A group that began before the level may have ended in it.
    if (entries_.size() <= outer.entries)
        return;
    const bool isReplacing = entries_[outer.entries].replaces;
    RemoveFrom(outer.entries);
    hasClosed_ = hasClosed_ || isReplacing;
}

// Levels count entries, and what comes or goes beneath them changes their counts.
void Nesting::ShiftLevels(size_t index, int by)
{
    for (Level &level : levels_) {
        if (level.entries > index || (by > 0 && level.entries == index))
            level.entries = static_cast<size_t>(static_cast<ptrdiff_t>(level.entries) + by);
    }
}

void Nesting::BeginLayer(const Layer &layer)
{
    const size_t index = layers_.size();
    CloseDownTo(index);
    Entry entry;
    entry.kind = Kind::Layer;
    entries_.insert(entries_.begin() + static_cast<ptrdiff_t>(index), entry);
    layers_.push_back(&layer);
    Open(index);
    ShiftLevels(index, 1);
}

void Nesting::EndLayer()
{
    if (layers_.empty())
        return;
    const size_t index = layers_.size() - 1;
    CloseDownTo(index);
    layers_.pop_back();
    entries_.erase(entries_.begin() + static_cast<ptrdiff_t>(index));
    ShiftLevels(index, -1);
}

void Nesting::BeginGroup()
{
    groups_.push_back(entries_.size() >= kMaxDepth);
    if (groups_.back())
        return;
    Entry entry;
    entry.kind = Kind::Group;
    entries_.push_back(entry);
    ++unmarked_;
}

void Nesting::EndGroup()
{
    if (groups_.empty())
        return;
    const bool hasEnded = groups_.back();
    groups_.pop_back();
    if (hasEnded)
        return;
    size_t index = entries_.size() - 1;
    while (entries_[index].kind != Kind::Group)
        --index;
    // Clips that began in the group go on: they are closed with it, and opened again.
    Forget(entries_[index]);
    if (entries_[index].isOpen)
        CloseDownTo(index);
    entries_.erase(entries_.begin() + static_cast<ptrdiff_t>(index));
    ShiftLevels(index, -1);
    ReleaseText();
}

void Nesting::End()
{
    levels_.clear();
    layers_.clear();
    CloseDownTo(0);
    entries_.clear();
    groups_.clear();
    held_ = unmarked_ = 0;
    xml_->Release();
}

} // namespace vxhost::svg
