#include "devices/pdf/PdfFile.h"

#include <array>
#include <cstdio>
#include <utility>

namespace vxhost::pdf
{

namespace
{

constexpr size_t kGatherBytes = size_t{64} << 10;
constexpr size_t kMaxSharedBytes = size_t{4} << 20;
constexpr size_t kSharedOverhead = 100;                       // of each, about
constexpr uint64_t kLastPlace = 9'999'999'999;                // that its table can say
constexpr std::string_view kBinary = "\n%\xBF\xF7\xA2\xFE\n"; // the bytes say that the file is binary

} // namespace

PdfFile::PdfFile(ByteSink sink, int level, int version)
    : PdfFile(std::move(sink), level, std::string("%PDF-1.").append(std::to_string(version)).append(kBinary))
{
}

PdfFile::PdfFile(ByteSink sink, int level, std::string_view head) : sink_(std::move(sink))
{
    if (level > 0)
        deflater_.emplace(level);
    gathered_.reserve(kGatherBytes);
    Write(head);
}

void PdfFile::Send(std::span<const char> bytes)
{
    written_ += bytes.size();
    digest_.Add(bytes);
    if (!bytes.empty() && !failure_)
        failure_ = sink_(std::as_bytes(bytes));
}

void PdfFile::Flush()
{
    Send(gathered_);
    gathered_.clear();
}

void PdfFile::Write(std::string_view part)
{
    if (gathered_.size() + part.size() > kGatherBytes)
        Flush();
    if (part.size() < kGatherBytes)
        gathered_ += part;
    else
        Send(part);
}

Reference PdfFile::Reserve()
{
    places_.push_back(0);
    return {static_cast<uint32_t>(places_.size())};
}

void PdfFile::BeginAt(Reference reference)
{
    places_[reference.number - 1] = written_ + gathered_.size();
    Write(std::to_string(reference.number).append(" 0 obj\n"));
}

void PdfFile::AddReserved(Reference reserved, std::string_view value)
{
    BeginAt(reserved);
    Write(value);
    End();
}

Reference PdfFile::Begin()
{
    const Reference reference = Reserve();
    BeginAt(reference);
    return reference;
}

void PdfFile::End()
{
    Write("\nendobj\n");
}

Reference PdfFile::Add(std::string_view value)
{
    const Reference reference = Begin();
    Write(value);
    End();
    return reference;
}

Reference PdfFile::AddStream(Dictionary dictionary, std::span<const char> bytes)
{
    if (deflater_) {
        bytes = deflater_->Compress(bytes);
        dictionary.Add("Filter", "/FlateDecode");
    }
    return AddPlainStream(std::move(dictionary), bytes);
}

Reference PdfFile::AddPlainStream(Dictionary dictionary, std::span<const char> bytes)
{
    const Reference reference = Begin();
    Write(dictionary.Add("Length", static_cast<double>(bytes.size())).Value());
    Write("\nstream\n");
    Write({bytes.data(), bytes.size()});
    Write("\nendstream");
    End();
    return reference;
}

template <typename AddObject>
Reference PdfFile::Remember(std::string key, AddObject add)
{
    const auto found = shared_.find(key);
    if (found != shared_.end())
        return found->second;
    sharedBytes_ += key.size() + kSharedOverhead;
    if (sharedBytes_ > kMaxSharedBytes) {
        shared_.clear();
        sharedBytes_ = key.size() + kSharedOverhead;
    }
    return shared_.emplace(std::move(key), add()).first->second;
}

Reference PdfFile::Share(const std::string &value)
{
    return Remember(value, [&] { return Add(value); });
}

Reference PdfFile::ShareStream(const Dictionary &dictionary, std::string_view bytes)
{
    return Remember(dictionary.Value().append(bytes), [&] { return AddStream(dictionary, bytes); });
}

std::string PdfFile::DigestSoFar()
{
    Flush();
    return digest_.Hex();
}

// A row is of 20 bytes, and gives the byte at which an object begins.
void PdfFile::WriteTable()
{
    Write("xref\n0 " + std::to_string(places_.size() + 1) + "\n0000000000 65535 f \n");
    for (const uint64_t place : places_) {
        std::array<char, 24> row;
        const int length = std::snprintf(row.data(), row.size(), "%010llu 00000 n \n",
                                         static_cast<unsigned long long>(place));
        Write({row.data(), static_cast<size_t>(length)});
    }
}

Failure PdfFile::Finish(Dictionary page, Dictionary catalog, Reference information)
{
    const Reference tree = {static_cast<uint32_t>(places_.size()) + 2}; // comes after the page
    const Reference only = Add(page.Add("Type", "/Page").Add("Parent", tree).Value());
    Add(Dictionary()
            .Add("Type", "/Pages")
            .Add("Kids", ArrayValue(std::span(&only, 1)))
            .Add("Count", 1)
            .Value());
    return Finish(catalog.Add("Type", "/Catalog").Add("Pages", tree), information);
}

Failure PdfFile::Finish(const Dictionary &catalog, const std::optional<Reference> &information)
{
    const Reference root = Add(catalog.Value());
    const uint64_t table = written_ + gathered_.size();
    if (table > kLastPlace && !failure_)
        failure_ = {FailureKind::BadInput,
                    "a PDF can be of 10 GB at most, and this one is longer: draw a part of it with --box"};
    WriteTable();
    Flush();
    std::string identity = "<";
    identity.append(digest_.Hex()).append(">");
    Dictionary trailer;
    trailer.Add("Size", static_cast<double>(places_.size() + 1)).Add("Root", root);
    if (information)
        trailer.Add("Info", *information);
    Write("trailer\n" + trailer.Add("ID", ArrayValue(identity + identity)).Value());
    Write("\nstartxref\n" + std::to_string(table) + "\n%%EOF\n");
    Flush();
    return failure_;
}

} // namespace vxhost::pdf
