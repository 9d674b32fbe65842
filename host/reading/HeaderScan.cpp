#include "host/reading/HeaderScan.h"

#include "host/reading/Trimmed.h"
#include "host/reading/Utf8.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace vxhost
{

namespace
{

constexpr size_t kMaxHeaderBytes = 256 * 1024;
constexpr size_t kMaxValueLength = 255;
constexpr size_t kMaxValues = 256;
constexpr size_t kMinDocumentBytes = 12;
constexpr std::string_view kBlanks = " \t";

// What a line says of the version. The first line that decides a version decides it for good; a line with
// version 0 only says that the document is one of ours.
struct VersionMark {
    std::string_view text;
    int version;
    bool blanksCount; // false: blanks and tabs are skipped on both sides
};

constexpr VersionMark kVersionMarks[] = {
    {"%%DocumentProcSets:Tavro_Vellumcraft_ProcSet", 0, true},
    {"%%+ procset Tavro_VellumcraftA_VX3", 3, true},
    {"%%+ procset Tavro_Vellumcraft_VX3", 3, true},
    {"%%Creator: Tavro Vellumcraft(TM) for Windows, version 4", 4, true},
    {"%VX5_FileFormat", 5, false},
    {"%%DocumentProcSets: Tavro_Vellumcraft", 0, false},
};

// Comments whose value is kept as one text, and those that are lists, with their "%%+" lines.
struct TextComment {
    std::string_view key;
    std::string HeaderFacts::*to;
};

constexpr TextComment kTexts[] = {
    {"%%Title:", &HeaderFacts::title},
    {"%%Creator:", &HeaderFacts::creator},
    {"%%CreationDate:", &HeaderFacts::creationDate},
};

using ValueList = std::vector<std::string>;
using ListReader = void (*)(std::string_view value, ValueList *to);

void AddNew(std::string text, ValueList *to)
{
    if (!text.empty() && to->size() < kMaxValues && std::ranges::find(*to, text) == to->end())
        to->push_back(std::move(text));
}

void AddValue(std::string_view value, ValueList *to)
{
    AddNew(std::string(value.substr(0, kMaxValueLength)), to);
}

std::string_view SplitWord(std::string_view *text)
{
    *text = Trimmed(*text);
    const std::string_view word = text->substr(0, text->find_first_of(kBlanks));
    text->remove_prefix(word.size());
    return word;
}

bool IsOctal(char character)
{
    return character >= '0' && character <= '7';
}

// Takes what stands behind a backslash from the start of text: up to three octal digits, a letter for a control character, or the
// character itself.
char TakeEscaped(std::string_view *text)
{
    constexpr std::string_view kLetters = "nrtbf", kControls = "\n\r\t\b\f";
    const char first = text->front();
    size_t length = 1;
    char character = first;
    if (const size_t letter = kLetters.find(first); letter != std::string_view::npos)
        character = kControls[letter];
    if (IsOctal(first)) {
        unsigned value = 0; // of a byte: larger ones wrap
        for (length = 0; length < 3 && length < text->size() && IsOctal((*text)[length]); ++length)
            value = value * 8 + static_cast<unsigned>((*text)[length] - '0');
        character = static_cast<char>(value);
    }
    text->remove_prefix(length);
    return character;
}

// "(a \(b\))" as a text; false when no whole string starts here. text is left after it.
bool SplitString(std::string_view *text, std::string *to)
{
    if (text->empty() || text->front() != '(')
        return false;
    to->clear();
    size_t depth = 0;
    for (std::string_view rest = *text; !rest.empty();) {
        const char character = rest.front();
        rest.remove_prefix(1);
        if (character == ')' && --depth == 0) {
            *text = rest;
            return true;
        }
        if (character == '(' && depth++ == 0)
            continue;
        *to += character == '\\' && !rest.empty() ? TakeEscaped(&rest) : character;
    }
    return false;
}

void AddWords(std::string_view value, ValueList *to)
{
    for (std::string_view word = SplitWord(&value); !word.empty(); word = SplitWord(&value)) {
        if (word != "(atend)")
            AddValue(word, to);
    }
}

void AddStrings(std::string_view value, ValueList *to)
{
    std::string name;
    while (true) {
        const size_t open = value.find('(');
        if (open == std::string_view::npos)
            return;
        value.remove_prefix(open);
        if (!SplitString(&value, &name))
            return;
        if (name != "atend")
            AddValue(name, to);
    }
}

// Names of fonts are compared with those that files have.
void AddFontName(std::string_view name, ValueList *to)
{
    AddNew(ToUtf8(name.substr(0, kMaxValueLength)), to);
}

void AddFontNames(std::string_view value, ValueList *to)
{
    for (std::string_view word = SplitWord(&value); !word.empty(); word = SplitWord(&value)) {
        if (word != "(atend)")
            AddFontName(word, to);
    }
}

// "font Helvetica procset Set 1 0": only the names after "font" are fonts.
void AddFontResources(std::string_view value, ValueList *to)
{
    bool isFont = false;
    for (std::string_view word = SplitWord(&value); !word.empty(); word = SplitWord(&value)) {
        if (word == "font")
            isFont = true;
        else if (word == "procset" || word == "file" || word == "encoding" || word == "form" ||
                 word == "pattern")
            isFont = false;
        else if (isFont)
            AddFontName(word, to);
    }
}

struct ListComment {
    std::string_view key;
    ListReader read;
    ValueList HeaderFacts::*to;
};

constexpr ListComment kLists[] = {
    {"%%DocumentProcessColors:", AddWords, &HeaderFacts::processColours},
    {"%%DocumentCustomColors:", AddStrings, &HeaderFacts::customColours},
    {"%%CMYKCustomColor:", AddStrings, &HeaderFacts::customColours},
    {"%%RGBCustomColor:", AddStrings, &HeaderFacts::customColours},
    {"%%DocumentFonts:", AddFontNames, &HeaderFacts::fonts},
    {"%%DocumentNeededFonts:", AddFontNames, &HeaderFacts::fonts},
    {"%%DocumentNeededResources:", AddFontResources, &HeaderFacts::fonts},
};

constexpr std::string_view kBoxKeys[] = {"%%BoundingBox:", "%%HiResBoundingBox:"};

// "(Poster) (second)" is "Poster second"; a text without brackets is taken as it stands.
std::string CommentText(std::string_view value)
{
    value = Trimmed(value);
    const std::string_view whole = value;
    std::string text, part;
    while (SplitString(&value, &part)) {
        text += (text.empty() ? "" : " ") + part;
        value = Trimmed(value);
    }
    if (!value.empty() || text.empty())
        text = whole;
    return text == "atend" || text == "(atend)" ? "" : text.substr(0, kMaxValueLength);
}

bool StartsWithSkippingBlanks(std::string_view line, std::string_view prefix)
{
    size_t at = 0;
    for (const char wanted : prefix) {
        if (kBlanks.find(wanted) != std::string_view::npos)
            continue;
        at = line.find_first_not_of(kBlanks, at);
        if (at == std::string_view::npos || line[at] != wanted)
            return false;
        ++at;
    }
    return true;
}

// "-12", "0.5", ".5", "3."
bool IsNumber(std::string_view word)
{
    if (word.starts_with('-'))
        word.remove_prefix(1);
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    return std::count(word.begin(), word.end(), '.') <= 1 && std::any_of(word.begin(), word.end(), isDigit) &&
           std::all_of(word.begin(), word.end(),
                       [&](char character) { return character == '.' || isDigit(character); });
}

bool IsFourNumbers(std::string_view value)
{
    for (int i = 0; i < 4; ++i) {
        if (!IsNumber(SplitWord(&value)))
            return false;
    }
    return Trimmed(value).empty();
}

std::string LineEnds(std::string_view text)
{
    size_t pairs = 0, returns = 0, feeds = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n') {
            ++feeds;
        } else if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
            ++pairs;
            ++i;
        } else if (text[i] == '\r') {
            ++returns;
        }
    }
    if ((pairs > 0) + (returns > 0) + (feeds > 0) > 1)
        return "mixed";
    return pairs > 0 ? "CR LF" : returns > 0 ? "CR" : feeds > 0 ? "LF" : "";
}

class Scanner
{
  public:
    explicit Scanner(HeaderFacts *facts) : facts_(facts) {}

    void ReadLine(std::string_view line)
    {
        ReadVersion(line);
        if (std::any_of(std::begin(kBoxKeys), std::end(kBoxKeys), [&](std::string_view key) {
                return line.starts_with(key) && IsFourNumbers(line.substr(key.size()));
            }))
            facts_->hasBox = true;
        for (const TextComment &comment : kTexts) {
            std::string &to = facts_->*comment.to;
            if (to.empty() && line.starts_with(comment.key))
                to = CommentText(line.substr(comment.key.size()));
        }
        ReadLists(line);
    }

  private:
    void ReadVersion(std::string_view line)
    {
        if (isVersionDecided_)
            return;
        for (const VersionMark &mark : kVersionMarks) {
            const bool matches =
                mark.blanksCount ? line.starts_with(mark.text) : StartsWithSkippingBlanks(line, mark.text);
            if (!matches)
                continue;
            facts_->recognised = true;
            isVersionDecided_ = mark.version > 0;
            facts_->version = std::max(facts_->version, mark.version);
            return;
        }
    }

    void ReadLists(std::string_view line)
    {
        if (line.starts_with("%%+")) {
            if (list_ != nullptr)
                list_->read(line.substr(3), &(facts_->*list_->to));
            return;
        }
        list_ = nullptr;
        for (const ListComment &comment : kLists) {
            if (!line.starts_with(comment.key))
                continue;
            list_ = &comment;
            comment.read(line.substr(comment.key.size()), &(facts_->*comment.to));
        }
    }

    HeaderFacts *facts_;
    bool isVersionDecided_ = false;
    const ListComment *list_ = nullptr; // the comment that a "%%+" line continues
};

} // namespace

std::string_view DrawingSection(std::string_view file, bool *isWrapped)
{
    *isWrapped = file.size() >= kMinDocumentBytes && file.starts_with(kEpsSignature);
    if (!*isWrapped)
        return file;
    const auto word = [&](size_t at) {
        uint32_t value = 0;
        for (size_t i = 4; i-- > 0;)
            value = value << 8 | static_cast<uint8_t>(file[at + i]);
        return value;
    };
    return file.substr(std::min<size_t>(word(4), file.size()), word(8));
}

HeaderFacts ScanHeader(std::span<const std::byte> file)
{
    HeaderFacts facts;
    std::string_view rest =
        DrawingSection({reinterpret_cast<const char *>(file.data()), file.size()}, &facts.epsWrapper)
            .substr(0, kMaxHeaderBytes);
    facts.hasPrefix = rest.starts_with(kDocumentPrefix);
    facts.firstLine = rest.substr(0, std::min(rest.find_first_of("\r\n"), kMaxValueLength));
    facts.lineEnds = LineEnds(rest);
    if (!facts.hasPrefix)
        return facts;

    Scanner scanner(&facts);
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find_first_of("\r\n"));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        if (Trimmed(line).empty())
            continue;
        const std::string_view bare = Trimmed(line);
        if (line[0] != '%' || bare == "%%EOF" || bare == "%%EndComments")
            break;
        scanner.ReadLine(line);
    }
    return facts;
}

std::string DecodeText(std::string_view bytes, TextEncoding encoding)
{
    const bool isAscii =
        std::ranges::all_of(bytes, [](char byte) { return static_cast<signed char>(byte) >= 0; });
    if (isAscii || IsUtf8(bytes))
        return std::string(bytes);
    std::string text;
    std::span<const uint8_t> rest(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    while (!rest.empty()) {
        const DecodedCharacter decoded = DecodeCharacter(encoding, rest);
        char written[4];
        text.append(written, WriteUtf8(decoded.character == 0 && rest[0] != 0 ? U'\uFFFD' : decoded.character,
                                       written));
        rest = rest.subspan(std::min(decoded.bytes, rest.size()));
    }
    return text;
}

void DecodeTexts(TextEncoding encoding, HeaderFacts *facts)
{
    for (std::string *text : {&facts->title, &facts->creator, &facts->creationDate})
        *text = DecodeText(*text, encoding);
    for (std::vector<std::string> *names : {&facts->processColours, &facts->customColours}) {
        for (std::string &name : *names)
            name = DecodeText(name, encoding);
    }
}

std::string WhyRefused(const HeaderFacts &facts, size_t fileSize, bool mayQuote)
{
    if (fileSize == 0)
        return "not a VX document, the file is empty: drawings start with \"%!PS-Tavro-\"";
    if (!facts.refusal.empty())
        return facts.refusal;
    if (facts.epsWrapper && facts.firstLine.empty())
        return "not a VX document, its EPS wrapper has no drawing inside: the file may be cut short";
    if (!facts.hasPrefix && !mayQuote)
        return "not a VX document: drawings start with \"" + std::string(kDocumentPrefix) + "\"";
    if (!facts.hasPrefix)
        return "not a VX document, first line is \"" + Printable(facts.firstLine, 40) +
               "\": drawings start with \"" + std::string(kDocumentPrefix) + "\"";
    if (!facts.recognised)
        return "not a VX document, header names no version: drawings have \"%VX5_FileFormat\" or a "
               "Tavro_Vellumcraft procedure set in theirs";
    if (!facts.hasBox)
        return "header has no \"%%BoundingBox:\" of four numbers: add one";
    return "header is malformed: its comments must end in \"%%EndComments\", each box in four numbers";
}

} // namespace vxhost
