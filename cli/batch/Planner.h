// Says what is to be done for an entry of a batch: which outputs of it are made, where, and with which options.
#pragma once

#include "cli/options/Manifest.h"
#include "cli/options/OutputOptions.h"
#include "jobs/Rendering.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace vxhost
{

enum class Resuming {
    Nothing,
    BySize, // what is done is passed over if its outputs have their size
    ByDigest
};

enum class SummaryForm { None, Text, Json };

// A part of a batch, which several runs share out by the names of the documents.
struct Shard {
    uint64_t number = 1; // from 1
    uint64_t count = 1;

    // The name is as it was written.
    bool Has(const ManifestEntry &entry) const;
};

struct BatchOptions {
    std::vector<BatchSource> sources;
    bool takesAll = false; // files of folders that are no drawings are told of, too
    std::string output;    // pattern for entries that have none; empty: there is none
    Shard shard;
    bool allowOutside = false;   // outputs may lie anywhere
    bool makesFolders = true;    // for outputs
    OutputOptions outputOptions; // for all entries
    Settings settings;           // what they mean
    size_t jobs = 1;
    bool isUnordered = false; // results come as documents are done, not as they were named

    std::string journal; // empty: none is kept
    Resuming resuming = Resuming::Nothing;
    bool retriesFailed = false; // what failed is not done
    // Says what else decides over the outputs: versions, and options about reading.
    nlohmann::ordered_json circumstances;
    SummaryForm summary = SummaryForm::Text;
    bool writesPremis = false; // a record beside each output
    std::string bag;           // a folder that becomes one; empty: none
    std::string pack;          // a tar that outputs are members of; empty: they are files
    std::string report;        // folder of a catalogue; empty: none is made
};

class Planner
{
  public:
    // The options must outlive this object.
    explicit Planner(const BatchOptions &options) : options_(options) {}

    // All of these throw OptionError when the entry asks for what cannot be done.

    // Returns whether the digest of the document is needed to name its outputs.
    bool NeedsDigest(const ManifestEntry &entry) const;
    // The document's number in the batch, and its digest, empty where it is not needed.
    std::vector<RenderTask::Output> OutputsOf(const ManifestEntry &entry, size_t number,
                                              const std::string &digest) const;
    // Returns one text for all spellings of an output's name.
    std::string PlaceOfOutput(const std::string &path) const;
    // Returns in one text all that the options say of the outputs.
    std::string OptionsTextOf(const ManifestEntry &entry) const;
    RenderTask TaskFor(const ManifestEntry &entry, size_t number, const std::string &digest) const;

  private:
    std::string OutputName(const std::string &path) const;
    const std::string &PatternOf(const ManifestEntry &entry) const;
    OutputOptions SaidOf(const ManifestEntry &entry) const;

    const BatchOptions &options_;
};

} // namespace vxhost
