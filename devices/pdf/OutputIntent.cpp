#include "devices/pdf/OutputIntent.h"

#include "devices/colour/ColourContext.h"
#include "devices/colour/Fogra39.h"
#include "devices/colour/ProfileFile.h"
#include "host/MemoryWatch.h"

#include <lcms2.h>

#include <array>
#include <span>
#include <vector>

namespace vxhost::pdf
{

namespace
{

constexpr int kInks = 4;

// Places in the head of a profile.
constexpr size_t kHeadBytes = 128, kVersionAt = 8, kClassAt = 12, kSpaceAt = 16, kSignatureAt = 36;

std::string TextOf(std::span<const std::byte> bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

// Empty when there is none that can be read.
std::string ReadProfile(const PdfOptions &options)
{
    if (options.profileBytes != nullptr)
        return TextOf(*options.profileBytes);
    HeldBytes file;
    return ReadProfileFile(options.profile, &file) ? TextOf(file.Get()) : "";
}

int VersionOf(const std::string &bytes)
{
    return static_cast<uint8_t>(bytes[kVersionAt]);
}

std::string WhyUnfit(const std::string &bytes, const Demands &demands)
{
    const auto at = [&](size_t place) { return bytes.substr(place, 4); };
    if (bytes.size() < kHeadBytes || at(kSignatureAt) != "acsp")
        return "is no ICC profile that can be read";
    if (at(kClassAt) != "prtr" || at(kSpaceAt) != "CMYK")
        return "is not of a CMYK press";
    if (VersionOf(bytes) > demands.lastProfile) {
        std::string why = "is of ICC version " + std::to_string(VersionOf(bytes)) + ", ";
        why.append(demands.profileTaker).append(" takes version ");
        return why + std::to_string(demands.lastProfile);
    }
    return {};
}

// Empty when the profile does not say.
std::string DescriptionOf(const std::string &bytes)
{
    const ColourContext context;
    const auto close = [](void *profile) { cmsCloseProfile(profile); };
    const std::unique_ptr<void, decltype(close)> profile(
        cmsOpenProfileFromMemTHR(context.Get(), bytes.data(), static_cast<cmsUInt32Number>(bytes.size())),
        close);
    std::array<char, 256> text = {};
    if (profile != nullptr)
        cmsGetProfileInfoASCII(profile.get(), cmsInfoDescription, "en", "US", text.data(), text.size());
    context.Check();
    text.back() = '\0';
    return text.data();
}

} // namespace

std::optional<PressProfile> ReadPressProfile(const PdfOptions &options, std::string *error)
{
    PressProfile press;
    if ((options.profile.empty() || options.profile == "fogra39") && options.profileBytes == nullptr) {
        press.bytes = TextOf(Fogra39Profile());
        press.condition = "FOGRA39";
        press.description = "Offset printing on coated paper, ISO 12647-2:2004, FOGRA39";
        press.isRegistered = true;
        return press;
    }
    press.bytes = Watched([&] { return ReadProfile(options); });
    if (const std::string why = WhyUnfit(press.bytes, DemandsOf(options)); !why.empty()) {
        *error = "profile \"" + options.profile + "\" " + why + ": name one of the press, or fogra39";
        return std::nullopt;
    }
    press.version = VersionOf(press.bytes);
    press.condition = "Custom";
    press.description = DescriptionOf(press.bytes);
    if (press.description.empty())
        press.description = "As the profile says";
    return press;
}

void AddOutputIntents(const PressProfile &profile, std::span<const std::string_view> kinds, PdfFile *file,
                      Dictionary *catalog)
{
    Dictionary stream;
    stream.Add("N", kInks).Add("Alternate", "/DeviceCMYK");
    const Reference bytes = file->AddStream(stream, profile.bytes);
    std::vector<Reference> intents;
    for (const std::string_view kind : kinds) {
        Dictionary intent;
        intent.Add("Type", "/OutputIntent").Add("S", NameValue(kind));
        intent.Add("OutputConditionIdentifier", TextValue(profile.condition));
        intent.Add("Info", TextValue(profile.description));
        if (profile.isRegistered)
            intent.Add("RegistryName", TextValue("http://www.color.org"));
        intents.push_back(file->Add(intent.Add("DestOutputProfile", bytes).Value()));
    }
    catalog->Add("OutputIntents", ArrayValue(intents));
}

} // namespace vxhost::pdf
