// vx batch: renders the documents that are named and those of manifests, and prints a line of JSON for each.
#pragma once

#include "cli/batch/Planner.h"
#include "cli/options/CommonOptions.h"
#include "cli/options/Manifest.h"
#include "cli/options/OutputOptions.h"
#include "cli/report/Messages.h"
#include "cli/report/Status.h"

#include <optional>
#include <string>
#include <vector>

namespace vxhost
{

class BatchCommand
{
  public:
    explicit BatchCommand(CLI::App *command);
    Status Run(Messages *messages) const;

  private:
    std::vector<BatchSource> ReadSources(const std::vector<std::string> &inputs) const;
    Shard ReadShard() const;
    void CheckPack() const;
    Status Merge(const CommonOptions &common, Messages *messages) const;
    void ReadJournal(const CommonOptions &common, BatchOptions *options) const;

    CommonOptionReader common_;
    std::vector<std::string> manifests_;
    std::vector<std::string> nulLists_;
    bool endInNul_ = false;
    bool takesAll_ = false;
    bool noMkdir_ = false;
    std::string output_;
    bool allowOutside_ = false;
    std::string jobs_;
    bool isUnordered_ = false;
    std::optional<std::string> report_;
    std::optional<std::string> journal_;
    std::string resume_; // "true" for the option without a word
    std::string retry_;
    std::string summary_ = "text";
    std::string shard_;
    bool writesPremis_ = false;
    std::optional<std::string> bag_, pack_;
    bool merges_ = false;
    OutputOptions outputOptions_;
};

} // namespace vxhost
