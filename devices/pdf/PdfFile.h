// The file around the page: an object goes to the output when it is added, and only its place is kept, eight bytes.
//
// The same objects give the same bytes: the file's identity is a digest of what stands in it.
#pragma once

#include "devices/pdf/Deflater.h"
#include "devices/pdf/Digest.h"
#include "devices/pdf/Values.h"
#include "host/ByteSink.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vxhost::pdf
{

class PdfFile
{
  public:
    // The level is that of libdeflate; with 0 nothing is compressed. version: of PDF, behind "1.".
    PdfFile(ByteSink sink, int level, int version = kVersion);
    static constexpr int kVersion = 4;
    PdfFile(ByteSink sink, int level, std::string_view head); // begins as another file does

    Reference Add(std::string_view value);
    Reference AddStream(Dictionary dictionary, std::span<const char> bytes);
    // Leaves the bytes as they are, for programs that look for them in the file.
    Reference AddPlainStream(Dictionary dictionary, std::span<const char> bytes);
    // The same once more may be the same object. Of those the most recent few megabytes are known.
    Reference Share(const std::string &value);
    Reference ShareStream(const Dictionary &dictionary, std::string_view bytes);

    // An object whose value is too long to be held: it is what is written in between, and nothing may be added until it ends.
    Reference Begin();
    void Write(std::string_view part);
    void End();

    // An object that others may refer to before it is added.
    Reference Reserve();
    void AddReserved(Reference reserved, std::string_view value);
    // Returns a digest of what was added.
    std::string DigestSoFar();

    // Adds the only page with what leads there. Returns why the bytes could not be written, if they could not; after a
    // failure nothing more is.
    Failure Finish(Dictionary page, Dictionary catalog, Reference information);
    // The same where the catalog leads to pages that were added.
    Failure Finish(const Dictionary &catalog, const std::optional<Reference> &information);

  private:
    template <typename AddObject>
    Reference Remember(std::string key, AddObject add);
    void Send(std::span<const char> bytes);
    void Flush();
    void BeginAt(Reference reference);
    void WriteTable();

    ByteSink sink_;
    std::optional<Deflater> deflater_; // none: nothing is compressed
    Failure failure_;
    std::string gathered_;
    uint64_t written_ = 0;
    Digest digest_;
    std::deque<uint64_t> places_; // of objects, by number from 1
    std::unordered_map<std::string, Reference> shared_;
    size_t sharedBytes_ = 0;
};

} // namespace vxhost::pdf
