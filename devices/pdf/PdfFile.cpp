#include "devices/pdf/PdfFile.h"

#include "devices/vector/Numbers.h"

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFWriter.hh>

#include <memory>
#include <new>

namespace vxhost::pdf
{

namespace
{

// Hands what qpdf writes to the sink. After a failure, which is kept, nothing more is handed on: qpdf also writes from
// destructors, where nothing may be thrown.
class SinkPipeline final : public Pipeline
{
  public:
    explicit SinkPipeline(const ByteSink &sink) : Pipeline("output", nullptr), sink_(sink)
    {
        gathered_.reserve(kGatherBytes);
    }

    void write(const unsigned char *data, size_t length) override
    {
        if (gathered_.size() + length > kGatherBytes)
            finish();
        const std::string_view bytes(reinterpret_cast<const char *>(data), length);
        if (length < kGatherBytes)
            gathered_ += bytes;
        else
            Send(bytes);
    }
    void finish() override
    {
        Send(gathered_);
        gathered_.clear();
    }

    const Failure &FirstFailure() const { return failure_; }

  private:
    static constexpr size_t kGatherBytes = 64 * 1024; // qpdf writes in small pieces

    void Send(std::string_view bytes)
    {
        if (!bytes.empty() && !failure_)
            failure_ = sink_(std::as_bytes(std::span(bytes)));
    }

    const ByteSink &sink_;
    Failure failure_;
    std::string gathered_;
};

class PieceProvider final : public QPDFObjectHandle::StreamDataProvider
{
  public:
    PieceProvider(PieceSpool *spool, size_t piece) : spool_(spool), piece_(piece) {}

    void provideStreamData(const QPDFObjGen &, Pipeline *to) override
    {
        spool_->Take(piece_, [to](std::span<const char> part) { to->write(part.data(), part.size()); });
        to->finish();
    }

  private:
    PieceSpool *spool_;
    size_t piece_;
};

} // namespace

PdfFile::PdfFile(Deflater *deflater) : deflater_(deflater)
{
    file_.setSuppressWarnings(true); // warnings would be printed
    // qpdf reads an empty file from a text of its own: only lack of memory can make it find that damaged.
    try {
        file_.emptyPDF();
        (void)file_.getObjectCount();
    } catch (const QPDFExc &) {
        throw std::bad_alloc();
    }
    if (file_.anyWarnings())
        throw std::bad_alloc();
}

QPDFObjectHandle PdfFile::AddStream(const QPDFObjectHandle &dictionary, std::string_view bytes)
{
    QPDFObjectHandle stream = QPDFObjectHandle::newStream(&file_);
    stream.replaceDict(dictionary);
    if (deflater_ == nullptr) {
        stream.replaceStreamData(std::string(bytes), QPDFObjectHandle::newNull(),
                                 QPDFObjectHandle::newNull());
        return stream;
    }
    const std::span<const char> packed = deflater_->Compress(bytes);
    stream.replaceStreamData(std::string(packed.begin(), packed.end()), MakeName("FlateDecode"),
                             QPDFObjectHandle::newNull());
    return stream;
}

QPDFObjectHandle PdfFile::AddPieces(PieceSpool *spool)
{
    QPDFObjectHandle array = QPDFObjectHandle::newArray();
    for (size_t piece = 0; piece < spool->Count(); ++piece) {
        QPDFObjectHandle stream = QPDFObjectHandle::newStream(&file_);
        stream.replaceStreamData(std::make_shared<PieceProvider>(spool, piece),
                                 deflater_ == nullptr ? QPDFObjectHandle::newNull() : MakeName("FlateDecode"),
                                 QPDFObjectHandle::newNull());
        array.appendItem(stream);
    }
    return array;
}

Failure PdfFile::Write(const ByteSink &sink)
{
    SinkPipeline output(sink);
    QPDFWriter writer(file_);
    writer.setOutputPipeline(&output);
    writer.setMinimumPDFVersion(version_);
    writer.setObjectStreamMode(qpdf_o_disable);
    writer.setCompressStreams(false); // streams are compressed already where they should be
    writer.setDecodeLevel(qpdf_dl_none);
    writer.setDeterministicID(true);
    writer.write();
    output.finish();
    return output.FirstFailure();
}

std::string KeyOf(std::string_view name)
{
    std::string key(1, '/');
    key += name;
    return key;
}

QPDFObjectHandle MakeName(std::string_view name)
{
    return QPDFObjectHandle::newName(KeyOf(name));
}

QPDFObjectHandle MakeNumber(double value)
{
    return QPDFObjectHandle::newReal(FactorText(value));
}

QPDFObjectHandle MakeNumbers(std::initializer_list<double> values)
{
    QPDFObjectHandle array = QPDFObjectHandle::newArray();
    for (const double value : values)
        array.appendItem(MakeNumber(value));
    return array;
}

} // namespace vxhost::pdf
