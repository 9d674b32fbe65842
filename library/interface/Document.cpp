// The calls of vx.h about a document, but for those that draw it.
#include "host/Document.h"

#include "host/reading/Utf8.h"
#include "library/FactsJson.h"
#include "library/Objects.h"
#include "library/Words.h"
#include "library/interface/Calls.h"
#include "library/interface/DocumentCall.h"
#include "library/interface/DocumentOptions.h"
#include "library/interface/Pass.h"
#include "library/interface/System.h"
#include "library/interface/Telling.h"

#include <cmath>

using namespace vxhost;

namespace
{

// Its bytes are there: what are they?
void ReadHeader(vx_document *document)
{
    const Outcome info = RunPass(document, nullptr, [&](Reading &reading, const Watch &) {
        document->header = reading.Header();
        return reading.ReadInfo();
    });
    document->box = info.box;
    document->isMonochrome = info.monochrome;
}

std::unique_ptr<vx_document> MakeDocument(vx_library *library)
{
    auto document = std::make_unique<vx_document>();
    document->installation = &library->Installed();
    document->choices = library->GetChoices();
    document->settings = ReadSettings(document->options, document->choices);
    return document;
}

} // namespace

extern "C" {

vx_status vx_document_open_file(vx_library *library, const char *path, vx_document **document,
                                vx_error *error)
{
    return Call(error, [&] {
        CheckThere(document, "document");
        *document = nullptr;
        CheckThere(library, "library");
        const std::string name(CheckText(path, "path"));
        auto opened = MakeDocument(library);
        std::string problem;
        opened->bytes = OpenDocument(name, &problem);
        if (opened->bytes == nullptr)
            throw CallError(VX_CANNOT_READ, Printable(name).append(": ").append(problem));
        ReadHeader(opened.get());
        *document = opened.release();
    });
}

vx_status vx_document_open_bytes(vx_library *library, const void *bytes, size_t size, int32_t how,
                                 vx_document **document, vx_error *error)
{
    return Call(error, [&] {
        CheckThere(document, "document");
        *document = nullptr;
        CheckThere(library, "library");
        if (size > 0)
            CheckThere(bytes, "bytes");
        if (how != VX_COPY && how != VX_BORROW)
            throw CallError(VX_WRONG_ARGUMENT, "how is neither VX_COPY nor VX_BORROW: give one of them");
        auto opened = MakeDocument(library);
        std::span<const std::byte> given(static_cast<const std::byte *>(bytes), size);
        std::string problem;
        opened->bytes = vxhost::Document::FromMemory(given, &problem); // refuses what is too long to copy
        if (opened->bytes != nullptr && how == VX_COPY) {
            opened->copy.assign(given.begin(), given.end());
            opened->bytes = vxhost::Document::FromMemory(opened->copy, &problem);
        }
        if (opened->bytes == nullptr)
            throw CallError(VX_WRONG_ARGUMENT, problem);
        ReadHeader(opened.get());
        *document = opened.release();
    });
}

void vx_document_free(vx_document *document)
{
    delete document;
}

vx_status vx_document_set(vx_document *document, const char *name, const char *value, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        OptionTexts options = document->options;
        SetOption(name, value, &options);
        document->settings = ReadSettings(options, document->choices);
        document->options = std::move(options);
    });
}

vx_status vx_document_facts(vx_document *document, vx_facts *facts, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(facts, "facts");
        CheckSize(facts->size, sizeof *facts, "vx_facts");
        const HeaderFacts &header = document->header;
        const Box &box = document->box;
        *facts = {sizeof *facts,
                  header.version,
                  document->isMonochrome ? 1 : 0,
                  box.left,
                  box.bottom,
                  box.right,
                  box.top,
                  header.title.c_str(),
                  header.creator.c_str(),
                  header.creationDate.c_str()};
    });
}

vx_status vx_document_json(vx_document *document, const char **json, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(json, "json");
        *json = nullptr;
        HeaderFacts header; // as the options of now have it
        const Outcome outcome = RunPass(document, nullptr, [&](Reading &reading, const Watch &) {
            header = reading.Header();
            return reading.Look();
        });
        nlohmann::ordered_json facts;
        AddFacts(header, outcome, &facts);
        document->json = JsonLine(facts);
        *json = document->json.c_str();
    });
}

vx_status vx_document_texts(vx_document *document, vx_text found, void *context, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(reinterpret_cast<const void *>(found), "found");
        const auto tell = [&](const FoundText &text) {
            std::string lines = TextLines(text, "");
            std::erase(lines, '\0'); // it would end them
            nlohmann::ordered_json json;
            AddText(text, &json);
            if (found(context, lines.c_str(), JsonLine(json).c_str()) != 0)
                throw CallError(VX_STOPPED, "stopped by its text procedure");
        };
        (void)RunPass(
            document, nullptr, [&](Reading &reading, const Watch &) { return ReadWords(reading, tell); },
            true);
    });
}

vx_status vx_document_object_at(vx_document *document, double x, double y, double within, const char **json,
                                vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(json, "json");
        *json = nullptr;
        if (!std::isfinite(x) || !std::isfinite(y) || !(within > 0) || !std::isfinite(within))
            throw CallError(VX_WRONG_ARGUMENT,
                            "there is no such point: give x, y and within in points, within above 0");
        nlohmann::ordered_json object;
        (void)RunPass(document, nullptr, [&](Reading &reading, const Watch &) {
            return FindObject(reading, {x, y}, within, &object);
        });
        if (object.is_null())
            return;
        document->object = JsonLine(object);
        *json = document->object.c_str();
    });
}

vx_status vx_document_set_progress(vx_document *document, vx_progress procedure, void *context,
                                   vx_error *error)
{
    return DocumentCall(document, error, [&] {
        document->progress = procedure;
        document->progressContext = context;
    });
}

vx_status vx_document_size(vx_document *document, int32_t *width, int32_t *height, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(width, "width");
        CheckThere(height, "height");
        const PictureSize size = FindPictureSize(LayOutPage(document).box, document->settings.png);
        CheckFailure(size.failure);
        *width = size.width;
        *height = size.height;
    });
}

size_t vx_document_warning_count(vx_document *document)
{
    size_t count = 0;
    (void)DocumentCall(document, nullptr, [&] { count = document->warnings.size(); });
    return count;
}

const char *vx_document_warning_at(vx_document *document, size_t index)
{
    const char *warning = nullptr;
    (void)DocumentCall(document, nullptr, [&] {
        if (index < document->warnings.size())
            warning = document->warnings[index].c_str();
    });
    return warning;
}

size_t vx_document_font_count(vx_document *document)
{
    size_t count = 0;
    (void)DocumentCall(document, nullptr, [&] { count = document->fonts.size(); });
    return count;
}

vx_status vx_document_font_at(vx_document *document, size_t index, vx_font_use *use, vx_error *error)
{
    return DocumentCall(document, error, [&] {
        CheckThere(use, "use");
        CheckSize(use->size, sizeof *use, "vx_font_use");
        CheckIndex(index, document->fonts.size());
        *use = document->fonts[index].use;
    });
}
}
