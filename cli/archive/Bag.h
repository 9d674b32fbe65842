// Makes a folder of outputs a bag, as archives exchange them: BagIt 1.0 with a manifest of SHA-256 digests. The outputs lie in
// "data" of the folder, what describes them beside it.
//
// Lines of the manifest are written as outputs are added; the bag is one once it is closed.
#pragma once

#include "cli/options/Digest.h"
#include "jobs/OutputFile.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vxhost
{

class Bag
{
  public:
    // Makes the folder where there is none. Throws EarlyEnd when nothing can be written there.
    explicit Bag(const std::string &folder);

    static std::string DataFolderOf(const std::string &folder);

    // The file lies in the folder of data. It is added once. Throws EarlyEnd when the manifest cannot be written.
    void Add(const std::string &path, const FileDigest &digest);

    // Returns how many files of the data are not in the manifest. Throws EarlyEnd when the rest cannot be written.
    uint64_t Close();

  private:
    std::unique_ptr<OutputFile> Create(const std::string &name) const;
    FileDigest WriteTagFile(const std::string &name, const std::string &text) const;
    void Flush();
    [[noreturn]] void Fail(const std::string &name, int error) const;

    std::string folder_, place_; // as given, and without links
    std::unique_ptr<OutputFile> manifest_;
    std::string lines_; // of the manifest that are not yet written
    uint64_t files_ = 0, bytes_ = 0;
};

} // namespace vxhost
