#include "tests/unit/pdf/DrawnPage.h"

#include <qpdf/Buffer.hh>

#include <span>

namespace vxtest
{

using namespace vxhost;

Path Rectangle(double left, double bottom, double width, double height)
{
    return {
        {Verb::Move, Verb::Line, Verb::Line, Verb::Line, Verb::Close},
        {{left, bottom}, {left + width, bottom}, {left + width, bottom + height}, {left, bottom + height}}};
}

DrawnPage::DrawnPage(const std::function<void(Device &)> &draw, PdfOptions options, vxhost::Page page)
{
    options.compression = Compression::None;
    if (page.box.Width() == 0)
        page.box = {0, 0, 100, 50};
    const ByteSink sink = [this](std::span<const std::byte> part) {
        bytes.append(reinterpret_cast<const char *>(part.data()), part.size());
        return Failure{};
    };
    const std::unique_ptr<Device> device = MakePdfDevice(options, sink, &error);
    if (device == nullptr)
        return;
    device->BeginPage(page);
    draw(*device);
    const Failure failure = device->EndPage();
    error = failure.text;
    if (failure)
        return;
    file_ = std::make_unique<QPDF>();
    file_->setSuppressWarnings(true);
    file_->processMemoryFile("drawn", bytes.data(), bytes.size());
}

QPDFObjectHandle DrawnPage::Page()
{
    return file_->getAllPages().at(0);
}

std::string DrawnPage::Program()
{
    std::string program;
    for (const QPDFObjectHandle &piece : Page().getKey("/Contents").getArrayAsVector())
        program += StreamText(piece);
    return program;
}

QPDFObjectHandle DrawnPage::Resource(const std::string &kind, const std::string &name)
{
    return Page().getKey("/Resources").getKey("/" + kind).getKey("/" + name);
}

std::string StreamText(QPDFObjectHandle stream)
{
    const std::shared_ptr<Buffer> data = stream.getStreamData(qpdf_dl_generalized);
    return {reinterpret_cast<const char *>(data->getBuffer()), data->getSize()};
}

} // namespace vxtest
