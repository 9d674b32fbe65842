#include "devices/pdf/InkSpaces.h"

#include "devices/vector/Numbers.h"

#include <algorithm>

namespace vxhost::pdf
{

namespace
{

std::string ResourceName(size_t number)
{
    std::string name = "Spot";
    return name.append(std::to_string(number + 1));
}

// Adds up, ink by ink, what stands for the amounts that lie on the stack: a copy of each is fetched over what was pushed since.
std::string Program(const Inks &inks)
{
    std::string program = "{ ";
    const auto add = [&](const std::string &words) { program.append(words).append(" "); };
    for (size_t process = 0; process < kInkCount; ++process) {
        add("0");
        for (size_t i = 0; i < inks.size(); ++i) {
            const double part = inks[i]->alternate[process];
            if (part == 0)
                continue;
            add(std::to_string(inks.size() - i + process));
            add("index");
            if (part != 1) {
                add(NumberText(part));
                add("mul");
            }
            add("add");
        }
    }
    add(std::to_string(inks.size() + kInkCount));
    add(std::to_string(kInkCount));
    add("roll");
    for (size_t i = 0; i < inks.size(); ++i)
        add("pop");
    return program + "}";
}

QPDFObjectHandle Separation(const SpotInk &ink)
{
    QPDFObjectHandle function = QPDFObjectHandle::newDictionary();
    function.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(2));
    function.replaceKey("/Domain", MakeNumbers({0, 1}));
    function.replaceKey("/C0", MakeNumbers({0, 0, 0, 0}));
    function.replaceKey(
        "/C1", MakeNumbers({ink.alternate[0], ink.alternate[1], ink.alternate[2], ink.alternate[3]}));
    function.replaceKey("/N", QPDFObjectHandle::newInteger(1));
    return QPDFObjectHandle::newArray(
        {MakeName("Separation"), MakeName(ink.name), MakeName("DeviceCMYK"), function});
}

} // namespace

QPDFObjectHandle InkSpace(PdfFile *file, const Inks &inks)
{
    if (inks.size() == 1)
        return Separation(*inks.front());
    QPDFObjectHandle names = QPDFObjectHandle::newArray(), domain = QPDFObjectHandle::newArray();
    for (const SpotInk *ink : inks) {
        names.appendItem(MakeName(ink->name));
        domain.appendItem(QPDFObjectHandle::newInteger(0));
        domain.appendItem(QPDFObjectHandle::newInteger(1));
    }
    QPDFObjectHandle function = QPDFObjectHandle::newDictionary();
    function.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(4));
    function.replaceKey("/Domain", domain);
    function.replaceKey("/Range", MakeNumbers({0, 1, 0, 1, 0, 1, 0, 1}));
    QPDFObjectHandle space = QPDFObjectHandle::newArray(
        {MakeName("DeviceN"), names, MakeName("DeviceCMYK"), file->AddStream(function, Program(inks))});
    QPDFObjectHandle colorants = QPDFObjectHandle::newDictionary();
    for (const SpotInk *ink : inks) {
        if (std::ranges::none_of(kProcessInks, [&](const SpotInk &process) { return &process == ink; }))
            colorants.replaceKey(KeyOf(ink->name), Separation(*ink));
    }
    // Readers that have a plate of their own for a spot ink look here for how it looks alone.
    if (!colorants.getKeys().empty()) {
        QPDFObjectHandle attributes = QPDFObjectHandle::newDictionary();
        attributes.replaceKey("/Colorants", colorants);
        space.appendItem(attributes);
    }
    return space;
}

std::string InkSpaces::NameOf(std::span<const SpotInk *const> inks)
{
    auto found =
        std::ranges::find_if(spaces_, [&](const Inks &known) { return std::ranges::equal(known, inks); });
    if (found == spaces_.end())
        found = spaces_.insert(found, Inks(inks.begin(), inks.end()));
    return ResourceName(static_cast<size_t>(found - spaces_.begin()));
}

void InkSpaces::AddTo(PdfFile *file, QPDFObjectHandle *resources) const
{
    for (size_t i = 0; i < spaces_.size(); ++i)
        resources->replaceKey(KeyOf(ResourceName(i)), file->Add(InkSpace(file, spaces_[i])));
}

} // namespace vxhost::pdf
