#include "devices/pdf/SpotSpaces.h"

#include <algorithm>

namespace vxhost::pdf
{

namespace
{

std::string ResourceName(size_t number)
{
    return "Spot" + std::to_string(number + 1);
}

} // namespace

QPDFObjectHandle SpotSpace(const SpotInk &ink)
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

std::string SpotSpaces::NameOf(const SpotInk &ink)
{
    const auto found = std::ranges::find(inks_, &ink);
    if (found == inks_.end())
        inks_.push_back(&ink);
    return ResourceName(static_cast<size_t>(std::ranges::find(inks_, &ink) - inks_.begin()));
}

void SpotSpaces::AddTo(PdfFile *file, QPDFObjectHandle *resources) const
{
    for (size_t i = 0; i < inks_.size(); ++i)
        resources->replaceKey(KeyOf(ResourceName(i)), file->Add(SpotSpace(*inks_[i])));
}

} // namespace vxhost::pdf
