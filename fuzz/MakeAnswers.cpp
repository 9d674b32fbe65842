// MakeAnswers FOLDER DOCUMENT...: what workers tell of these documents, and of lists of fonts, as a corpus of what comes through
// their pipes.
#include "host/fonts/ListedFonts.h"
#include "host/reading/Reading.h"
#include "library/pipe/Answer.h"
#include "library/pipe/WorkerFrames.h"
#include "plugin/entry/VXParser.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using namespace vxhost;

void Write(const std::filesystem::path &path, std::string_view answer)
{
    constexpr char kDone[] = {kProgressFrame, 0, kProgressFrame, 100};
    std::ofstream(path, std::ios::binary)
        << std::string_view(kDone, sizeof kDone) << AnswerFrameHead(answer.size()) << answer;
}

std::string AnswerOf(const Installation &installation, const Document &document)
{
    Reading reading(installation, document, {});
    Answer answer;
    answer.header = reading.Header();
    answer.outcome = reading.Look();
    answer.needsFonts = reading.AsksForFonts();
    answer.passes = 1;
    answer.confinement = {true, true, 0, 0};
    return WriteAnswer(std::move(answer));
}

std::string Fonts()
{
    std::vector<FontList::Entry> entries(2);
    entries[0].postScriptName = "NimbusSans-Bold";
    entries[0].familyName = "Nimbus Sans";
    entries[0].file = "/usr/share/fonts/NimbusSans-Bold.otf";
    entries[1] = entries[0];
    entries[1].postScriptName = "Helvetica-Bold";
    entries[1].servedBy = entries[0].postScriptName;
    return WriteFonts(ListedFonts(std::move(entries)), {false, true, 38, 0});
}

} // namespace

int main(int count, char **words)
{
    if (count < 2)
        return 2;
    const std::filesystem::path folder = words[1];
    std::filesystem::create_directories(folder);
    const Installation installation = {Plugin::FromEntry(VXParserMain), MakeBoxFonts()};
    for (int i = 2; i < count; ++i) {
        std::string error;
        const std::filesystem::path path = words[i];
        const auto document = Document::Open(path.string(), &error);
        const std::string answer = document == nullptr ? "" : AnswerOf(installation, *document);
        if (!ReadAnswer(answer))
            return 1;
        Write(folder / path.stem(), answer);
    }
    Write(folder / "fonts", Fonts());
    Write(folder / "no-fonts", WriteFonts(*MakeBoxFonts(), {}));
    return 0;
}
