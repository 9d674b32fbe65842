// Reads what a batch is to do: documents that are named, and manifests, whose lines are read as they come.
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
    bool isManifest = false; // else a document, whatever is in it
};

class ManifestReader
{
  public:
    ManifestReader(const std::vector<BatchSource> &sources, LineEnd end);
    ManifestReader(const ManifestReader &) = delete;
    ManifestReader &operator=(const ManifestReader &) = delete;
    ~ManifestReader() { Close(); }

    // The next of what has been read; none: it was the end, or there is more to read.
    std::optional<ManifestEntry> Next();
    bool AtEnd() const { return sources_.empty() && descriptor_ < 0; }

    // Reads on, after Next has given none. Waits unless Descriptor is ready, or -1.
    void Read();
    int Descriptor() const { return descriptor_; }

    // Whether the name leads to one of the manifests, those that are read already among them.
    bool Includes(const std::string &path) const;

  private:
    void OpenNext();
    void Close();
    void Fail(std::string error);

    std::vector<std::string> manifests_; // all of them
    std::deque<BatchSource> sources_;    // still to come
    LineEnd end_;
    std::string name_; // of the manifest being read
    int descriptor_ = -1;
    ManifestLines lines_;
    std::optional<ManifestEntry> found_; // that is no line
};

} // namespace vxhost
