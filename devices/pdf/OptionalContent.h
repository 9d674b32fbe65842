// Layers as optional content: what a viewer can show and hide, with names, order, and the print and locked state.
#pragma once

#include "devices/pdf/PdfFile.h"
#include "host/drawing/Layer.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vxhost::pdf
{

class OptionalContent
{
  public:
    // Begins a layer within those that are open, and returns the name of the resource by which the page refers to it. The
    // layer must outlive this object.
    std::string Begin(const Layer &layer);
    void End() { open_.pop_back(); }

    bool IsEmpty() const { return layers_.empty(); }
    // At a level of a standard the content has a name, and what is shown does not follow the use that is made of the file.
    void AddTo(PdfFile *file, bool isForLevel, Dictionary *catalog, Dictionary *resources) const;

  private:
    struct Content {
        const Layer *layer;
        std::vector<size_t> children; // by number
    };

    std::string OrderOf(const std::vector<size_t> &layers, const std::vector<Reference> &groups) const;

    std::vector<Content> layers_; // by number
    std::vector<size_t> outermost_;
    std::vector<size_t> open_;
};

} // namespace vxhost::pdf
