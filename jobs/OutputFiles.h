// Holds the outputs of one document: all come into their places, or none.
#pragma once

#include "jobs/OutputFile.h"
#include "library/Result.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

struct OutputPlace {
    std::string path; // "-" is standard output
    // Is given the descriptor of the whole output, which then gets no name; null: it comes to its path.
    std::function<void(int descriptor)> take = nullptr;
};

class OutputFiles
{
  public:
    // Opens them. What is wrong is told in the result.
    bool Open(std::vector<OutputPlace> places, const OutputRules &rules, Result *result);

    std::vector<int> Descriptors() const;
    int Descriptor(size_t file) const { return files_[file]->Descriptor(); }
    const std::string &Path(size_t file) const { return places_[file].path; }
    size_t Size() const { return files_.size(); }

    // Forgets what was written so far.
    void Empty();

    // Unless the result has a fault: puts them into their places. Ends with none.
    void Finish(Result *result);

  private:
    std::vector<OutputPlace> places_;
    std::vector<std::unique_ptr<OutputFile>> files_;
};

} // namespace vxhost
