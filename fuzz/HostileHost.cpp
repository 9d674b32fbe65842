#include "fuzz/HostileHost.h"

#include "fuzz/Require.h"
#include "plugin/entry/VXParser.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace vxfuzz
{

namespace
{

constexpr uint32_t kNowAndThen = 16; // one time in so many

enum BadRead : uint8_t { kNothing = 1, kNegative = 2, kFailure = 4 };
enum Missing : uint8_t {
    kDrawing = 1,
    kReport = 2,
    kProgress = 4,
    kTable = 8,
    kShortTable = 16,
    kWarnings = 32
};

// The compiler may not leave a read out.
volatile uint8_t g_seen;

void Look(const void *bytes, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        g_seen = static_cast<const uint8_t *>(bytes)[i];
}

void Path(void *) {}
void OnePoint(void *, const FixedPoint *at)
{
    Look(at, sizeof *at);
}
void ThreePoints(void *, const FixedPoint *a, const FixedPoint *b, const FixedPoint *c)
{
    OnePoint(nullptr, a);
    OnePoint(nullptr, b);
    OnePoint(nullptr, c);
}
void TwoPoints(void *, const FixedPoint *a, const FixedPoint *b)
{
    OnePoint(nullptr, a);
    OnePoint(nullptr, b);
}
void Concat(void *, const FixedMatrix *matrix, int32_t)
{
    Look(matrix, sizeof *matrix);
}
void Dash(void *, Fixed, int32_t count, const Fixed *values)
{
    Require(count >= 0, "a negative count of dashes");
    Look(values, static_cast<size_t>(count) * sizeof *values);
}
void Show(void *, const ZRKTextRecord *first, int32_t mode)
{
    // Text that asks to be centred and right-aligned at once hands the second request on.
    constexpr int32_t kAlignRight = 1 << 30;
    Require((mode & ~kAlignRight & ~7) == 0, "a mode of text that there is not");
    for (const ZRKTextRecord *record = first; record != nullptr; record = record->next) {
        Require(record->fontName != nullptr, "text without a font name");
        Look(record->fontName, std::strlen(record->fontName));
        if (record->styleName != nullptr)
            Look(record->styleName, std::strlen(record->styleName));
        Require(record->length >= 0, "text of negative length");
        Look(record->text, static_cast<size_t>(record->length));
        if (record->spacing != nullptr)
            Look(record->spacing, 2 * sizeof *record->spacing);
    }
}
void Comment(void *, uint32_t, const char *text, int32_t length)
{
    Require(length >= 0, "a comment of negative length");
    Look(text, static_cast<size_t>(length));
}

template <typename Proc>
void Set(ZRKProcs *procs, int entry, Proc proc)
{
    procs->entry[entry] = reinterpret_cast<ZRKProc>(proc);
}

} // namespace

Input::Input(const uint8_t *data, size_t size) : document(data, size)
{
    if (size < sizeof behaviour)
        return;
    document = {data, size - sizeof behaviour};
    std::memcpy(&behaviour, data + document.size(), sizeof behaviour);
    // A document ends in text, which asks for nothing odd.
    const auto isText = [](uint8_t byte) { return byte >= ' ' || byte == '\n' || byte == '\r'; };
    if (std::all_of(data + document.size(), data + size, isText)) {
        behaviour = {};
        document = {data, size};
    }
}

HostileHost::HostileHost(const Input &input)
    : input_(input), dice_(input.behaviour.seed + 1U), memory_{Allocate, Release, this}, stream_{{Read}, this}
{
    const uint8_t missing = input.behaviour.missing;
    MakeFonts();
    MakeTable();
    record_.reader = &stream_.reader;
    record_.streamLength = static_cast<int32_t>(input.document.size());
    record_.memory = &memory_;
    record_.drawing = (missing & kDrawing) != 0 ? nullptr : this;
    record_.report = (missing & kReport) != 0 ? nullptr : Report;
    record_.progress = (missing & kProgress) != 0 ? nullptr : vxhost::ProgressToHost;
    record_.procs = (missing & kTable) != 0 ? nullptr : &procs_;
    record_.warningsOff = (missing & kWarnings) != 0;
    toolbox_.fonts = fonts_.get();
    toolbox_.widths = fonts_.get();
    toolbox_.onReport = [this](const std::string &title, const std::string &) {
        return (input_.behaviour.stops >> (title.size() % 8) & 1) != 0;
    };
}

uint32_t HostileHost::Roll()
{
    dice_ = dice_ * 1664525U + 1013904223U;
    return dice_ >> 16;
}

void HostileHost::MakeFonts()
{
    const uint8_t odd = input_.behaviour.fonts;
    std::vector<std::string> names = {"Helvetica", "Ryumin-Light-83pv-RKSJ-H", "Times-Roman"};
    for (uint8_t i = 0; i < odd; ++i) {
        const size_t length = Roll() % 256;
        std::string name(length, static_cast<char>('A' + Roll() % 26));
        if (Roll() % 2 == 0)
            name += "-RKSJ-V";
        names.push_back(name.substr(0, 255));
    }
    if (odd % 16 == 15)
        names.clear();
    fonts_ = std::make_unique<vxhost::FixedFontList>(names);
    if (odd != 0) {
        fonts_->widthOf = [](int16_t number, int16_t character) {
            return number % 3 == 0 ? INT32_MIN : INT32_MAX / (character + 1);
        };
    }
    toolbox_.systemScript = odd % 8;
}

void HostileHost::MakeTable()
{
    procs_.version = kZRKProcsVersion;
    procs_.count = (input_.behaviour.missing & kShortTable) != 0 ? kZRKProcCount - 1 : kZRKProcCount;
    for (int entry = 0; entry < kZRKProcCount; ++entry)
        Set<ZRKPathProc>(&procs_, entry, Path);
    Set<ZRKMoveToProc>(&procs_, kZRKMoveTo, OnePoint);
    Set<ZRKLineToProc>(&procs_, kZRKLineTo, OnePoint);
    Set<ZRKCurveToProc>(&procs_, kZRKCurveTo, ThreePoints);
    Set<ZRKCurveToFromCurrentProc>(&procs_, kZRKCurveToFromCurrent, TwoPoints);
    Set<ZRKConcatProc>(&procs_, kZRKConcat, Concat);
    Set<ZRKSetDashProc>(&procs_, kZRKSetDash, Dash);
    Set<ZRKShowProc>(&procs_, kZRKShow, Show);
    Set<ZRKCommentProc>(&procs_, kZRKComment, Comment);
    const auto number = [](void *, Fixed) {};
    Set<ZRKSetFixedProc>(&procs_, kZRKSetLineWidth, number);
    Set<ZRKSetFixedProc>(&procs_, kZRKSetMiterLimit, number);
    Set<ZRKSetFixedProc>(&procs_, kZRKSetGray, number);
    const auto choice = [](void *, int32_t) {};
    Set<ZRKSetIntegerProc>(&procs_, kZRKSetLineCap, choice);
    Set<ZRKSetIntegerProc>(&procs_, kZRKSetLineJoin, choice);
    Set<ZRKSetIntegerProc>(&procs_, kZRKSetOverprint, choice);
    Set<ZRKTranslateProc>(&procs_, kZRKTranslate, [](void *, Fixed, Fixed) {});
    Set<ZRKSetCMYKColorProc>(&procs_, kZRKSetCMYKColor, [](void *, Fixed, Fixed, Fixed, Fixed) {});
}

int16_t HostileHost::Call()
{
    const ZRKProcs before = procs_;
    int16_t result = 0;
    {
        const vxhost::HostScope scope(&toolbox_);
        const int32_t selector = input_.behaviour.selector == 0 ? kVXParse : input_.behaviour.selector % 8;
        VXParserMain(selector, &record_, nullptr, &result);
    }
    Require(blocks_.empty(), "blocks that were never released");
    Require(std::memcmp(&before, &procs_, sizeof before) == 0, "a procedure table that was left changed");
    return result;
}

int32_t HostileHost::Read(StreamReader *reader, int32_t op, void *arg, int32_t *inout)
{
    HostileHost *host = reinterpret_cast<Stream *>(reader)->host;
    if (op == kVXSetPosition)
        host->position_ = std::min(static_cast<size_t>(std::max(*inout, 0)), host->input_.document.size());
    else if (op == kVXReadBytes)
        *inout = host->Deliver(arg, *inout);
    return (host->input_.behaviour.badReads & kFailure) != 0 ? -1 : 0;
}

int32_t HostileHost::Deliver(void *to, int32_t wanted)
{
    Require(wanted >= 0 && wanted <= 65536, "a read of a strange size");
    const Behaviour &how = input_.behaviour;
    if (how.badReads != 0 && Roll() % kNowAndThen == 0) {
        if ((how.badReads & kNegative) != 0)
            return -static_cast<int32_t>(Roll());
        if ((how.badReads & kNothing) != 0)
            return 0;
    }
    size_t count = std::min(static_cast<size_t>(wanted), input_.document.size() - position_);
    if (how.maxRead != 0)
        count = std::min(count, size_t{how.maxRead});
    if (count != 0)
        std::memcpy(to, input_.document.data() + position_, count);
    position_ += count;
    return static_cast<int32_t>(count);
}

void *HostileHost::Allocate(int32_t size, void *refcon)
{
    auto *host = static_cast<HostileHost *>(refcon);
    Require(size >= 0, "a block of negative size");
    if (host->input_.behaviour.failures != 0 && host->Roll() % host->input_.behaviour.failures == 0)
        return nullptr;
    // The block has exactly that size, so that a byte too far is seen, and does not hold zeros.
    auto block = std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(size));
    std::memset(block.get(), 0xA5, static_cast<size_t>(size));
    void *const key = block.get();
    host->blocks_.emplace(key, std::move(block));
    return key;
}

void HostileHost::Release(void *block, void *refcon)
{
    auto *host = static_cast<HostileHost *>(refcon);
    Require(block == nullptr || host->blocks_.erase(block) == 1, "a release of what is no block");
}

uint8_t HostileHost::Report(const uint8_t *title, const uint8_t *message, int32_t titleEmpty)
{
    Look(title, 1U + title[0]);
    Look(message, 1U + message[0]);
    return vxhost::ReportToHost(title, message, titleEmpty);
}

} // namespace vxfuzz
