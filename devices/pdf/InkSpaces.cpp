#include "devices/pdf/InkSpaces.h"

#include <algorithm>
#include <string>

namespace vxhost::pdf
{

namespace
{

// The function from an amount of one ink, 0 to 1, to amounts of all four.
QPDFObjectHandle ToAllInks(int ink)
{
    QPDFObjectHandle full = QPDFObjectHandle::newArray();
    for (int i = 0; i < kInkCount; ++i)
        full.appendItem(QPDFObjectHandle::newInteger(i == ink ? 1 : 0));
    QPDFObjectHandle function = QPDFObjectHandle::newDictionary();
    function.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(2));
    function.replaceKey("/Domain", MakeNumbers({0, 1}));
    function.replaceKey("/C0", MakeNumbers({0, 0, 0, 0}));
    function.replaceKey("/C1", full);
    function.replaceKey("/N", QPDFObjectHandle::newInteger(1));
    return function;
}

QPDFObjectHandle Separation(int ink)
{
    return QPDFObjectHandle::newArray(
        {MakeName("Separation"), MakeName(kInkNames[ink]), MakeName("DeviceCMYK"), ToAllInks(ink)});
}

// Puts a 0 in the place of each ink that is not there. The operands lie on the stack in order, so each 0 is rolled
// below those that come after it.
std::string Program(const std::vector<int> &inks)
{
    std::string program = "{";
    size_t after = inks.size();
    for (int ink = 0; ink < kInkCount; ++ink) {
        if (std::ranges::find(inks, ink) != inks.end())
            --after;
        else
            program += " 0 " + std::to_string(after + 1) + " 1 roll";
    }
    return program + " }";
}

} // namespace

QPDFObjectHandle BlackInkSpace()
{
    return Separation(kInkCount - 1);
}

QPDFObjectHandle InkSpace(PdfFile *file, const std::vector<int> &inks)
{
    if (inks.size() == 1)
        return Separation(inks.front());
    QPDFObjectHandle names = QPDFObjectHandle::newArray(), domain = QPDFObjectHandle::newArray();
    for (const int ink : inks) {
        names.appendItem(MakeName(kInkNames[ink]));
        domain.appendItem(QPDFObjectHandle::newInteger(0));
        domain.appendItem(QPDFObjectHandle::newInteger(1));
    }
    QPDFObjectHandle function = QPDFObjectHandle::newDictionary();
    function.replaceKey("/FunctionType", QPDFObjectHandle::newInteger(4));
    function.replaceKey("/Domain", domain);
    function.replaceKey("/Range", MakeNumbers({0, 1, 0, 1, 0, 1, 0, 1}));
    return QPDFObjectHandle::newArray(
        {MakeName("DeviceN"), names, MakeName("DeviceCMYK"), file->AddStream(function, Program(inks))});
}

} // namespace vxhost::pdf
