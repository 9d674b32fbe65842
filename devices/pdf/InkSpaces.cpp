#include "devices/pdf/InkSpaces.h"

#include "devices/vector/Numbers.h"

#include <algorithm>
#include <iterator>

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

std::string Separation(const SpotInk &ink)
{
    Dictionary function;
    function.Add("FunctionType", 2).Add("Domain", ArrayValue({0, 1})).Add("C0", ArrayValue({0, 0, 0, 0}));
    function.Add("C1", ArrayValue({ink.alternate[0], ink.alternate[1], ink.alternate[2], ink.alternate[3]}));
    return ArrayValue("/Separation" + NameValue(ink.name) + "/DeviceCMYK" + function.Add("N", 1).Value());
}

} // namespace

// The process inks are shown as themselves, whatever a drawing says of an ink of their names.
const SpotInk *InkSpaces::LookOf(const SpotInk *ink)
{
    if (!hasOneLook_)
        return ink;
    const auto process = std::ranges::find(kProcessInks, ink->name, &SpotInk::name);
    return looks_.emplace(ink->name, process == std::end(kProcessInks) ? ink : process).first->second;
}

Reference InkSpaces::Make(Inks inks)
{
    for (const SpotInk *&ink : inks) {
        ink = LookOf(ink);
        if (ink->name.size() > longest_.size())
            longest_ = ink->name;
    }
    if (inks.size() == 1)
        return file_->Share(Separation(*inks.front()));
    std::string names, domain;
    Dictionary colorants;
    for (const SpotInk *ink : inks) {
        names += NameValue(ink->name);
        domain += "0 1 ";
        if (std::ranges::none_of(kProcessInks, [&](const SpotInk &process) { return &process == ink; }))
            colorants.Add(ink->name, Separation(*ink));
    }
    Dictionary function;
    function.Add("FunctionType", 4).Add("Domain", ArrayValue(domain));
    function.Add("Range", ArrayValue({0, 1, 0, 1, 0, 1, 0, 1}));
    std::string space = "/DeviceN" + ArrayValue(names) + "/DeviceCMYK ";
    space += ValueOf(file_->ShareStream(function, Program(inks)));
    // Readers that have a plate of their own for a spot ink look here for how it looks alone.
    if (!colorants.IsEmpty())
        space += Dictionary().Add("Colorants", colorants.Value()).Value();
    return file_->Share(ArrayValue(space));
}

std::string InkSpaces::NameOf(std::span<const SpotInk *const> inks)
{
    auto found =
        std::ranges::find_if(spaces_, [&](const Inks &known) { return std::ranges::equal(known, inks); });
    if (found == spaces_.end())
        found = spaces_.insert(found, Inks(inks.begin(), inks.end()));
    return ResourceName(static_cast<size_t>(found - spaces_.begin()));
}

void InkSpaces::AddTo(Dictionary *resources)
{
    for (size_t i = 0; i < spaces_.size(); ++i)
        resources->Add(ResourceName(i), Make(spaces_[i]));
}

} // namespace vxhost::pdf
