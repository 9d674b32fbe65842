// Reads what a batch is to do: the documents that are named, and manifests, line by line as they come.
#pragma once

#include "cli/options/ManifestLines.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

struct BatchSource {
    std::string name;        // "-" is standard input, which is a manifest
    bool isManifest = false; // false: it is a document, whatever is in it
};

class ManifestReader
{
  public:
    ManifestReader(const std::vector<BatchSource> &sources, LineEnd end);
    ManifestReader(const ManifestReader &) = delete;
    ManifestReader &operator=(const ManifestReader &) = delete;
    ~ManifestReader() { Close(); }

    // Takes the next entry of what has been read; none: it was the last, or there is more to read.
    std::optional<ManifestEntry> Next();
    bool AtEnd() const { return sources_.empty() && descriptor_ < 0; }

    // Reads on, once Next has returned none. Does not wait where Descriptor is ready or -1.
    void Read();
    int Descriptor() const { return descriptor_; }

    // Returns whether the name leads to one of the manifests, also to one that was read already.
    bool Includes(const std::string &path) const;

  private:
    void OpenNext();
    void Close();
    void Fail(std::string error);

    std::vector<std::string> manifests_; // all of them
    std::deque<BatchSource> sources_;    // still to come
    LineEnd end_;
    std::string name_; // that of the manifest that is being read
    int descriptor_ = -1;
    ManifestLines lines_;
    std::optional<ManifestEntry> found_; // an entry that is no line of a manifest
};

} // namespace vxhost
