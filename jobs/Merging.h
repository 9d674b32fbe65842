// Takes several documents to one PDF, a page each.
//
// Each is drawn by a rendering of its own, in a worker of its own, and one that fails costs its page alone. What they write is kept in
// a file without a name, and at the end one more worker joins it, which reads nothing else.
#pragma once

#include "jobs/OutputFile.h"
#include "jobs/Rendering.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vxhost
{

struct MergeTask {
    std::string output; // "-" is standard output
    Settings settings;
    OutputRules rules = {};
};

class Merging
{
  public:
    // Opens the output. The engine must outlive this object.
    Merging(MergeTask task, Engine *engine);
    Merging(const Merging &) = delete;
    Merging &operator=(const Merging &) = delete;

    const Result &Opened() const { return result_; } // a fault: nothing may be added

    // Draws the document as the next page, unless it fails. name: that of its bookmark where it has no title.
    Result AddPage(const std::string &input, const std::string &name);
    size_t PageCount() const { return pages_.size(); }

    // Joins the pages, of which there is one at least, and puts the output into its place.
    Result Finish();

  private:
    struct Page {
        uint64_t from, size; // in the file of pages
        std::string title;
    };

    Fault Append(int descriptor);
    Failure Join() const;

    MergeTask task_;
    Engine *engine_;
    Result result_;
    std::unique_ptr<OutputFile> output_, kept_;
    std::vector<Page> pages_;
    uint64_t keptBytes_ = 0;
};

} // namespace vxhost
