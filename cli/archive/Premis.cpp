#include "cli/archive/Premis.h"

#include "cli/archive/EventDetail.h"
#include "cli/report/Times.h"
#include "devices/svg/XmlWriter.h"
#include "host/FileReading.h"
#include "jobs/OutputFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <string_view>

namespace vxhost
{

namespace
{

constexpr std::string_view kDigestType = "SHA-256";
constexpr std::string_view kAgentType = "local", kAgent = "vx " VX_VERSION;
constexpr std::string_view kEventType = "local";
constexpr size_t kEventDigits = 32;

// Writes elements, one a line, with those that they hold between their tags.
class Elements
{
  public:
    explicit Elements(svg::XmlWriter *xml) : xml_(xml) {}

    void Begin(std::string_view name, std::string_view attributes = "")
    {
        Indent();
        xml_->Markup(fmt::format("<{}{}>\n", name, attributes));
        ++depth_;
    }
    void End(std::string_view name)
    {
        --depth_;
        Indent();
        xml_->Markup(fmt::format("</{}>\n", name));
    }
    void Text(std::string_view name, std::string_view text)
    {
        Indent();
        xml_->Markup(fmt::format("<{}>", name));
        xml_->Escaped(text);
        xml_->Markup(fmt::format("</{}>\n", name));
    }
    // Writes <nameIdentifier> with the type and the value, and the role if there is one.
    void Identifier(std::string_view name, std::string_view type, std::string_view value,
                    std::string_view role = "")
    {
        Begin(fmt::format("{}Identifier", name));
        Text(fmt::format("{}IdentifierType", name), type);
        Text(fmt::format("{}IdentifierValue", name), value);
        if (!role.empty())
            Text(fmt::format("{}Role", name), role);
        End(fmt::format("{}Identifier", name));
    }

  private:
    void Indent() { xml_->Markup(std::string(2 * depth_, ' ')); }

    svg::XmlWriter *xml_;
    size_t depth_ = 0;
};

// An event has the same name wherever the same is made of the same at one time.
std::string EventOf(const PremisRecord &record)
{
    return DigestOf(fmt::format("{} {} {} {}", record.sourceDigest.digest, record.outputDigest.digest,
                                VX_VERSION, record.at))
        .substr(0, kEventDigits);
}

void WriteObject(const PremisRecord &record, Elements *to)
{
    to->Begin("object", R"( xsi:type="file")");
    to->Identifier("object", kDigestType, record.outputDigest.digest);
    to->Begin("objectCharacteristics");
    to->Begin("fixity");
    to->Text("messageDigestAlgorithm", kDigestType);
    to->Text("messageDigest", record.outputDigest.digest);
    to->End("fixity");
    to->Text("size", std::to_string(record.outputDigest.bytes));
    to->Begin("format");
    to->Begin("formatDesignation");
    to->Text("formatName", record.format->mime);
    to->End("formatDesignation");
    to->End("format");
    to->Begin("creatingApplication");
    to->Text("creatingApplicationName", "vx");
    to->Text("creatingApplicationVersion", VX_VERSION);
    to->Text("dateCreatedByApplication", TimeText(record.at));
    to->End("creatingApplication");
    to->End("objectCharacteristics");
    to->Text("originalName", std::filesystem::path(record.output).filename().string());
    to->Begin("relationship");
    to->Text("relationshipType", "derivation");
    to->Text("relationshipSubType", "has source");
    to->Identifier("relatedObject", kDigestType, record.sourceDigest.digest);
    to->Identifier("relatedEvent", kEventType, EventOf(record));
    to->End("relationship");
    to->End("object");
}

void WriteEvent(const PremisRecord &record, Elements *to)
{
    // The format is told of the object.
    std::string options = record.options.substr(std::min(record.options.find('\n'), record.options.size()));
    std::ranges::replace(options, '\n', ' ');
    options.erase(0, 1);
    to->Begin("event");
    to->Identifier("event", kEventType, EventOf(record));
    to->Text("eventType", "normalization");
    to->Text("eventDateTime", TimeText(record.at));
    to->Begin("eventDetailInformation");
    to->Text("eventDetail",
             fmt::format(R"({}; source="{}"; options="{}")", EventDetail(), record.source, options));
    to->End("eventDetailInformation");
    to->Begin("eventOutcomeInformation");
    to->Text("eventOutcome", record.warnings.empty() ? "success" : "warning");
    for (const std::string &warning : record.warnings) {
        to->Begin("eventOutcomeDetail");
        to->Text("eventOutcomeDetailNote", warning);
        to->End("eventOutcomeDetail");
    }
    to->End("eventOutcomeInformation");
    to->Identifier("linkingAgent", kAgentType, kAgent, "executing program");
    to->Identifier("linkingObject", kDigestType, record.sourceDigest.digest, "source");
    to->Identifier("linkingObject", kDigestType, record.outputDigest.digest, "outcome");
    to->End("event");
}

void WriteAgent(Elements *to)
{
    to->Begin("agent");
    to->Identifier("agent", kAgentType, kAgent);
    to->Text("agentName", "vx");
    to->Text("agentType", "software");
    to->Text("agentVersion", VX_VERSION);
    to->End("agent");
}

} // namespace

std::string PremisNameOf(const std::string &output)
{
    return output + ".premis.xml";
}

std::string PremisXml(const PremisRecord &record)
{
    std::string text;
    const auto xml = std::make_unique<svg::XmlWriter>([&text](std::span<const std::byte> bytes) {
        text.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        return Failure();
    });
    Elements elements(xml.get());
    xml->Markup("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    elements.Begin(
        "premis",
        R"( xmlns="http://www.loc.gov/premis/v3" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance")"
        R"( version="3.0")");
    WriteObject(record, &elements);
    WriteEvent(record, &elements);
    WriteAgent(&elements);
    elements.End("premis");
    (void)xml->Finish(); // memory takes all
    return text;
}

std::string WhyNoPremis(const PremisRecord &record)
{
    const FileDigest *unread = !record.sourceDigest.error.empty()   ? &record.sourceDigest
                               : !record.outputDigest.error.empty() ? &record.outputDigest
                                                                    : nullptr;
    return unread == nullptr ? ""
                             : fmt::format("{}: is not written, a file of which it tells {}",
                                           PremisNameOf(record.output), unread->error);
}

std::string WritePremis(const PremisRecord &record)
{
    if (std::string problem = WhyNoPremis(record); !problem.empty())
        return problem;
    const std::string name = PremisNameOf(record.output);
    Fault fault;
    const std::unique_ptr<OutputFile> file = OutputFile::Create(name, {FileKinds::Regular}, &fault);
    if (file != nullptr)
        fault = WriteAll(file->Descriptor(), PremisXml(record)) ? file->Commit()
                                                                : Fault{FaultKind::CannotWrite, "", errno};
    return fault ? fmt::format("{}: cannot be written{}: see to its folder", name,
                               fault.error == 0 ? "" : ", " + SystemText(fault.error))
                 : "";
}

} // namespace vxhost
