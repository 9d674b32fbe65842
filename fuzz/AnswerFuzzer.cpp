// Fuzzes what a worker sends to the process that started it: frames, which come in pieces, and the answers in them.
//
// The input is what comes through the pipe. If it is taken for an answer, writing that answer gives the same bytes.
#include "fuzz/Require.h"
#include "library/pipe/Answer.h"
#include "library/pipe/WorkerFrames.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using vxfuzz::Require;
using vxhost::Answer;
using vxhost::FontAnswer;
using vxhost::WorkerFrames;

// All that frames say.
struct Heard {
    bool isRead = true;
    bool isOutOfMemory = false;
    std::vector<int> progress;
    std::optional<std::string> answer;

    bool operator==(const Heard &) const = default;
};

Heard Hear(std::string_view bytes, size_t piece)
{
    Heard heard;
    WorkerFrames frames(vxhost::kMaxAnswer, [&heard](int percent) { heard.progress.push_back(percent); });
    for (size_t at = 0; at < bytes.size() && heard.isRead; at += piece)
        heard.isRead = frames.Add(bytes.substr(at, piece));
    heard.isOutOfMemory = frames.IsOutOfMemory();
    heard.answer = frames.TakeAnswer();
    return heard;
}

void CheckAnswer(std::string_view bytes)
{
    const std::optional<Answer> answer = vxhost::ReadAnswer(bytes);
    if (!answer)
        return;
    Require(bytes.size() <= vxhost::kMaxAnswer, "an answer that is too long");
    Require(vxhost::WriteAnswer(*answer) == bytes, "an answer that is another when it is written again");
}

void CheckFonts(std::string_view bytes)
{
    const std::optional<FontAnswer> answer = vxhost::ReadFonts(bytes);
    if (!answer)
        return;
    const auto count = static_cast<size_t>(answer->fonts->Count());
    Require(count > 0 && count <= vxhost::kMaxFonts, "a list of no font, or of too many");
    if (answer->omitted == 0)
        Require(vxhost::WriteFonts(*answer->fonts, answer->confinement) == bytes,
                "fonts that are others when they are written again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    const Heard heard = Hear(bytes, size + 1);
    Require(Hear(bytes, 1 + size % 7) == heard, "its pieces make a difference");
    for (const int percent : heard.progress)
        Require(percent >= 0 && percent <= 100, "progress that is none");
    // Most of what the fuzzer tries is no frame; the answer itself is looked at too.
    const std::string framed = heard.answer.value_or("");
    for (const std::string_view answer : {std::string_view(framed), bytes}) {
        CheckAnswer(answer);
        CheckFonts(answer);
    }
    return 0;
}
