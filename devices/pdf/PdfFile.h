// The file around the page: objects, streams, and the writing of all of it.
//
// The same objects give the same bytes: the file's identity is computed from what it holds.
#pragma once

#include "devices/pdf/Deflater.h"
#include "devices/pdf/PieceSpool.h"
#include "host/ByteSink.h"

// qpdf's own pointers are standard ones; it asks its users to say that they know.
#define POINTERHOLDER_TRANSITION 4
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include <initializer_list>
#include <string>
#include <string_view>

namespace vxhost::pdf
{

// Procedures of qpdf, and so those of this class, may throw std::exception.
class PdfFile
{
  public:
    // Without a deflater nothing is compressed. It must outlive the file.
    explicit PdfFile(Deflater *deflater);

    QPDFObjectHandle Add(const QPDFObjectHandle &object) { return file_.makeIndirectObject(object); }
    QPDFObjectHandle AddStream(const QPDFObjectHandle &dictionary, std::string_view bytes);
    // An array of streams, one for each piece. The pieces are compressed already if other streams are. The spool must
    // outlive the file.
    QPDFObjectHandle AddPieces(PieceSpool *spool);
    void AddPage(const QPDFObjectHandle &page) { file_.addPage(page, false); }
    QPDFObjectHandle Catalog() { return file_.getRoot(); }
    QPDFObjectHandle Trailer() { return file_.getTrailer(); }

    // Says which version of PDF a reader of the file must know at least.
    void NeedVersion(const char *version) { version_ = version; }

    // Returns why the bytes could not be written, if they could not.
    Failure Write(const ByteSink &sink);

  private:
    QPDF file_;
    Deflater *deflater_;
    std::string version_ = "1.4";
};

std::string KeyOf(std::string_view name);         // "/name"
QPDFObjectHandle MakeName(std::string_view name); // without "/"
QPDFObjectHandle MakeNumber(double value);
QPDFObjectHandle MakeNumbers(std::initializer_list<double> values);

} // namespace vxhost::pdf
