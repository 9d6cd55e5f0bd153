#include <algorithm>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QUtil.hh>

#include "openhost/pdf/Conversions.h"
#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/JpegHeader.h"
#include "openhost/pdf/PdfGuard.h"
#include "openhost/pdf/SourceFile.h"

namespace openhost {
namespace {

constexpr std::uint64_t kLargestPicture = 1ULL << 31;
constexpr double kPointsPerInch = 72;
constexpr double kLongestSide = 14400;  // points; readers accept no larger page

struct PageSize {
    std::string width, height;  // points
};

PageSize SizeOf(const JpegHeader& header)
{
    double width = header.width, height = header.height;
    if (header.dpiX > 0 && header.dpiY > 0) {
        width *= kPointsPerInch / header.dpiX;
        height *= kPointsPerInch / header.dpiY;
    }
    const double shrink = std::max({1.0, width / kLongestSide, height / kLongestSide});
    return {QUtil::double_to_string(width / shrink, 3), QUtil::double_to_string(height / shrink, 3)};
}

QPDFObjectHandle ImageStream(QPDF& library, const JpegHeader& header, const std::string& bytes)
{
    const char* colours = header.components == 1   ? "/DeviceGray"
                          : header.components == 3 ? "/DeviceRGB"
                                                   : "/DeviceCMYK";
    QPDFObjectHandle image = QPDFObjectHandle::newStream(&library, bytes);
    image.replaceDict(QPDFObjectHandle::parse("<</Type/XObject/Subtype/Image/Filter/DCTDecode/BitsPerComponent 8>>"));
    QPDFObjectHandle entries = image.getDict();
    entries.replaceKey("/Width", QPDFObjectHandle::newInteger(header.width));
    entries.replaceKey("/Height", QPDFObjectHandle::newInteger(header.height));
    entries.replaceKey("/ColorSpace", QPDFObjectHandle::newName(colours));
    if (header.components == 4 && header.adobeMarker) {
        entries.replaceKey("/Decode", QPDFObjectHandle::parse("[1 0 1 0 1 0 1 0]"));
    }
    return image;
}

void AddPage(QPDF& library, const JpegHeader& header, const std::string& bytes)
{
    const PageSize size = SizeOf(header);
    QPDFObjectHandle page = library.makeIndirectObject(QPDFObjectHandle::parse(
        "<</Type/Page/Resources<</XObject<<>>>>/MediaBox[0 0 " + size.width + ' ' + size.height + "]>>"));
    page.getKey("/Resources").getKey("/XObject").replaceKey("/Im0", ImageStream(library, header, bytes));
    page.replaceKey("/Contents", QPDFObjectHandle::newStream(
                                     &library, "q " + size.width + " 0 0 " + size.height + " 0 0 cm /Im0 Do Q\n"));
    if (header.turn != 0) page.replaceKey("/Rotate", QPDFObjectHandle::newInteger(header.turn));
    QPDFPageDocumentHelper(library).addPage(QPDFPageObjectHelper(page), false);
}

}  // namespace

CPdfDocument JpegToPdf(const std::string& path)
{
    return Guarded(path, PdfProblem::UnsupportedInput, [&] {
        const std::string bytes = ReadAll(path, kLargestPicture);
        std::string reason;
        const auto header = ReadJpegHeader(bytes, reason);
        if (!header) throw CPdfError(PdfProblem::UnsupportedInput, path, reason);

        auto state = std::make_unique<CPdfDocument::State>();
        state->description = path;
        state->library = NewLibraryDocument(true);
        state->library->emptyPDF();
        AddPage(*state->library, *header, bytes);
        state->modified = state->contentChanged = true;
        return CPdfDocument(std::move(state));
    });
}

}  // namespace openhost
