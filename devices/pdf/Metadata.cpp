#include "devices/pdf/Metadata.h"

#include "devices/pdf/Dates.h"

#include <ctime>

namespace vxhost::pdf
{

std::string DateOf(const PdfOptions &options, const Page &page)
{
    switch (FindDateOrigin(options, page)) {
    case DateOrigin::User:
        return PdfDate(*options.date);
    case DateOrigin::Drawing:
        return PdfDate(*page.date);
    case DateOrigin::File:
        return PdfDate(*page.fileDate);
    case DateOrigin::Clock:
        return PdfDate(std::time(nullptr));
    default:
        return "";
    }
}

// The standards for print ask for both dates, a title, and whether the page was trapped: it was not.
Reference AddMetadata(const PdfOptions &options, const Page &page, PdfFile *file)
{
    Dictionary info;
    const auto add = [&](const char *key, const std::string &text) {
        if (!text.empty())
            info.Add(key, TextValue(text));
    };
    const bool isForPrint = options.standard != PdfX::None;
    const std::string date = DateOf(options, page);
    add("Title", page.title.empty() && isForPrint ? "Untitled" : page.title);
    add("Creator", page.creator);
    add("Producer", "vx");
    add("CreationDate", date);
    if (date.empty())
        add("DocumentDate", page.created);
    if (isForPrint) {
        add("ModDate", date);
        add("GTS_PDFXVersion", options.standard == PdfX::X1a ? "PDF/X-1a:2003" : "PDF/X-3:2003");
        info.Add("Trapped", "/False");
    }
    return file->Add(info.Value());
}

} // namespace vxhost::pdf
