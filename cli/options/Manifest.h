// Reads what a batch is to do: the documents that are named, those in folders, and manifests, line by line as they come.
#pragma once

#include "cli/options/FolderWalk.h"
#include "cli/options/ManifestLines.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

enum class SourceKind { Document, Folder, Manifest };

struct BatchSource {
    std::string name;                       // "-" is standard input, which is a manifest
    SourceKind kind = SourceKind::Document; // which it is, whatever is in it
    LineEnd end = LineEnd::Newline;         // of a manifest
};

struct WalkOptions {
    bool takesAll = false; // files of folders that are no drawings count as documents, too
    // Is told of symbolic links in folders, which are not followed; null: nobody is.
    std::function<void(const std::string &path)> onLink;
};

class ManifestReader
{
  public:
    explicit ManifestReader(const std::vector<BatchSource> &sources, WalkOptions walks = {});
    ManifestReader(const ManifestReader &) = delete;
    ManifestReader &operator=(const ManifestReader &) = delete;
    ~ManifestReader() { Close(); }

    // Takes the next entry of what has been read; none: it was the last, or there is more to read.
    std::optional<ManifestEntry> Next();
    bool AtEnd() const { return sources_.empty() && descriptor_ < 0 && !walk_; }

    // Reads on, once Next has returned none. Does not wait where Descriptor is ready or -1.
    void Read();
    int Descriptor() const { return descriptor_; }

    // Returns how many files of folders were no drawings.
    size_t PassedOver() const { return passedOver_ + (walk_ ? walk_->PassedOver() : 0); }

    // Returns whether the name leads to one of the manifests, also to one that was read already.
    bool Includes(const std::string &path) const;

  private:
    void OpenNext();
    std::optional<ManifestEntry> TakeFound();
    void Close();
    void Fail(std::string error);

    std::vector<std::string> manifests_; // all of them
    std::deque<BatchSource> sources_;    // still to come
    WalkOptions walks_;
    std::optional<FolderWalk> walk_; // the folder at hand
    size_t passedOver_ = 0;          // in those before it
    std::string name_;               // that of the manifest that is being read
    int descriptor_ = -1;
    ManifestLines lines_;
    std::optional<ManifestEntry> found_; // an entry that is no line of a manifest
};

} // namespace vxhost
