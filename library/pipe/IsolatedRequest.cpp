#include "library/pipe/IsolatedRequest.h"

#include "devices/colour/ProfileFile.h"
#include "library/pipe/FlatBytes.h"

namespace vxhost
{

namespace
{

constexpr size_t kMaxText = 4096; // of a path or a value
constexpr size_t kTextsSize = size_t{1} << 20;
constexpr size_t kMapSize = kMaxMapRows * (kMaxMapLine + 2 * sizeof(uint32_t));
constexpr size_t kProfilesSize = kMaxProfileBytes + kMaxText + 2 * sizeof(uint32_t);
static_assert(4 * kMaxText + 2 * kTextsSize + kMapSize + kProfilesSize < kMaxRequest);

template <typename Flat, typename Pairs>
void DescribePairs(Flat &flat, Pairs &pairs, size_t mostBytes, size_t mostValue)
{
    uint32_t omitted = 0;
    flat.AddList(pairs, {mostBytes}, &omitted, [mostValue](auto &to, auto &pair) {
        to.AddText(pair.first, kMaxText);
        to.AddText(pair.second, mostValue);
    });
}

template <typename Flat>
void Describe(Flat &flat, IsolatedRequest &request)
{
    flat.AddText(request.version, kMaxText);
    flat.Add(request.caller);
    flat.Add(request.mustBeConfined);
    flat.AddText(request.format, kMaxText);
    DescribePairs(flat, request.options, kTextsSize, kMaxText);
    flat.AddText(request.temporaryFolder, kMaxText);
    flat.Add(request.useSystemFonts);
    uint32_t omitted = 0;
    flat.AddList(request.fontFolders, {kTextsSize}, &omitted,
                 [](auto &to, std::string &folder) { to.AddText(folder, kMaxText); });
    DescribePairs(flat, request.served, kMapSize, kMaxText);
    DescribePairs(flat, request.profiles, kProfilesSize, kMaxProfileBytes);
}

} // namespace

std::optional<std::string> WriteRequest(const IsolatedRequest &request)
{
    FlatWriter flat;
    IsolatedRequest described = request;
    Describe(flat, described);
    std::string bytes = flat.Take();
    // A text that is too long was cut, so that another request is read.
    return ReadRequest(bytes) == request ? std::optional(std::move(bytes)) : std::nullopt;
}

std::optional<IsolatedRequest> ReadRequest(std::string_view bytes)
{
    FlatReader flat(bytes);
    IsolatedRequest request;
    Describe(flat, request);
    return flat.IsWhole() ? std::optional(std::move(request)) : std::nullopt;
}

} // namespace vxhost
