// Holds the outputs of one document: all come into their places, or none.
#pragma once

#include "host/FileReading.h"
#include "jobs/OutputFile.h"
#include "library/Result.h"

#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

class OutputFiles
{
  public:
    // Opens them. What is wrong is told in the result. kinds is what may be there already.
    bool Open(const std::vector<std::string> &paths, FileKinds kinds, Result *result);

    std::vector<int> Descriptors() const;
    int Descriptor(size_t file) const { return files_[file]->Descriptor(); }
    const std::string &Path(size_t file) const { return paths_[file]; }
    size_t Size() const { return files_.size(); }

    // Forgets what was written so far.
    void Empty();

    // Unless the result has a fault: puts them into their places. Ends with none.
    void Finish(Result *result);

  private:
    std::vector<std::string> paths_;
    std::vector<std::unique_ptr<OutputFile>> files_;
};

} // namespace vxhost
