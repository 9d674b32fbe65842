// Each colour goes through the whole profile by itself and is remembered: a table made in advance would cost more than
// the few colours of most documents. Samples are converted before they are averaged, since a mixture of
// inks is lighter than a mixture of colours and would show as a fringe between black outlines and coloured
// areas.
#include "devices/colour/ScreenColours.h"

#include "devices/colour/ColourContext.h"
#include "devices/colour/Fogra39Colours.h"
#include "devices/colour/ProfileFile.h"
#include "host/MemoryWatch.h"

#include <lcms2.h>

#include <utility>

namespace vxhost
{

namespace
{

struct Inks {
    uint8_t bytes[4]; // cyan, magenta, yellow, black
    explicit Inks(InkWord ink)
        : bytes{static_cast<uint8_t>(ink), static_cast<uint8_t>(ink >> 8), static_cast<uint8_t>(ink >> 16),
                static_cast<uint8_t>(ink >> 24)}
    {
    }
};

class PlainColours final : public ScreenColours
{
  public:
    std::string Describe() const override { return "none, plain arithmetic"; }

  protected:
    Rgb Compute(InkWord ink) override
    {
        const Inks inks(ink);
        const auto level = [&](int i) {
            return static_cast<uint8_t>(((255 - inks.bytes[i]) * (255 - inks.bytes[3]) + 127) / 255);
        };
        return {level(0), level(1), level(2)};
    }
};

// Closes what Little CMS opened.
struct ProfileCloser {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
struct TransformCloser {
    void operator()(void *transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, ProfileCloser>;
using Transform = std::unique_ptr<void, TransformCloser>;

class ProfileColours final : public ScreenColours
{
  public:
    static std::unique_ptr<ScreenColours> Make(const ScreenOptions &options, std::string *error)
    {
        auto made = std::make_unique<ProfileColours>();
        const cmsContext context = made->context_.Get();
        const Profile press = OpenPress(context, options, error);
        made->context_.Check(); // or it would seem to be the profile that is wrong
        if (press == nullptr)
            return nullptr;
        const Profile screen(cmsCreate_sRGBProfileTHR(context));
        const cmsUInt32Number intent =
            options.intent == Intent::Perceptual ? INTENT_PERCEPTUAL : INTENT_RELATIVE_COLORIMETRIC;
        if (screen != nullptr)
            made->transform_.reset(cmsCreateTransformTHR(
                context, press.get(), TYPE_CMYK_8, screen.get(), TYPE_RGB_8, intent,
                cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE));
        made->context_.Check();
        if (made->transform_ == nullptr) {
            *error = "profile \"" + options.profile + "\" has no usable conversion to colour";
            return nullptr;
        }
        const auto lastSlash = options.profile.rfind('/');
        made->name_ = options.profile.substr(lastSlash == std::string::npos ? 0 : lastSlash + 1);
        made->name_ += options.intent == Intent::Perceptual ? ", perceptual" : ", relative colorimetric";
        made->name_ += ", black point compensation";
        return made;
    }
    std::string Describe() const override { return name_; }

  protected:
    Rgb Compute(InkWord ink) override
    {
        const Inks inks(ink);
        uint8_t rgb[3];
        cmsDoTransform(transform_.get(), inks.bytes, rgb, 1);
        return {rgb[0], rgb[1], rgb[2]};
    }

  private:
    static Profile OpenPress(cmsContext context, const ScreenOptions &options, std::string *error)
    {
        const std::string &name = options.profile;
        Profile profile;
        const auto open = [&](const auto &bytes) {
            profile.reset(
                cmsOpenProfileFromMemTHR(context, bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
        };
        HeldBytes file;
        if (options.profileBytes != nullptr)
            open(*options.profileBytes);
        else if (Watched([&] { return ReadProfileFile(name, &file); }))
            open(file.Get());
        if (profile == nullptr) {
            *error = "profile \"" + name + "\" cannot be read as an ICC profile";
            return nullptr;
        }
        if (cmsGetColorSpace(profile.get()) != cmsSigCmykData) {
            *error = "profile \"" + name + "\" is not for CMYK";
            return nullptr;
        }
        return profile;
    }

    std::string name_;
    ColourContext context_; // released last
    Transform transform_;
};

} // namespace

// Makes room where a document turns out to have many colours, as gradients have.
Rgb ScreenColours::Learn(InkWord ink)
{
    constexpr int kMostBits = 14, kStep = 2;
    if (++learnt_ > cache_.size() && bits_ < kMostBits) {
        bits_ += kStep;
        const std::vector<Known> before = std::exchange(cache_, std::vector<Known>(size_t{1} << bits_));
        for (const Known &known : before)
            cache_[PlaceOf(known.ink)] = known;
    }
    return (cache_[PlaceOf(ink)] = {ink, Compute(ink)}).rgb;
}

std::unique_ptr<ScreenColours> ScreenColours::Make(const ScreenOptions &options, std::string *error)
{
    if (options.profile == "none" && options.profileBytes == nullptr)
        return std::make_unique<PlainColours>();
    if (options.profile == "fogra39" && options.profileBytes == nullptr)
        return MakeFogra39Colours(options.intent);
    return ProfileColours::Make(options, error);
}

} // namespace vxhost
