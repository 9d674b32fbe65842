// A page drawn by the PDF device, and the file that came of it, read back.
#pragma once

#include "devices/pdf/PdfDevice.h"
#include "tests/unit/host/BlendSteps.h"

// qpdf's own pointers are standard ones; it asks its users to say that they know.
#define POINTERHOLDER_TRANSITION 4
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include <functional>
#include <memory>
#include <string>

namespace vxtest
{

vxhost::Path Rectangle(double left, double bottom, double width, double height);

class DrawnPage
{
  public:
    // A page of 100 by 50 points, not compressed.
    explicit DrawnPage(const std::function<void(vxhost::Device &)> &draw, vxhost::PdfOptions options = {},
                       vxhost::Page page = {});

    std::string error; // what the device said, if it failed
    std::string bytes;
    std::string Program(); // the page's, line by line as it was written
    QPDFObjectHandle Page();
    // "Font", "F1", ... : from the page's resources down.
    QPDFObjectHandle Resource(const std::string &kind, const std::string &name);
    QPDF &File() { return *file_; }

  private:
    std::unique_ptr<QPDF> file_;
};

std::string StreamText(QPDFObjectHandle stream);

} // namespace vxtest
