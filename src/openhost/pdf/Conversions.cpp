#include "openhost/pdf/Conversions.h"

#include <algorithm>
#include <cstdint>

#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QUtil.hh>

#include "openhost/pdf/DocumentFiles.h"
#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/PdfError.h"
#include "openhost/pdf/TextEngine.h"

namespace openhost {
namespace {

/// Numbers at places in a byte string; a place outside makes the whole reading bad instead of failing.
class CBytes {
public:
    explicit CBytes(std::string_view bytes) : m_bytes(bytes) {}
    void SetLittleEndian(bool little) { m_little = little; }
    bool Good() const { return m_good; }
    unsigned Byte(std::size_t at)
    {
        if (at < m_bytes.size()) return static_cast<unsigned char>(m_bytes[at]);
        m_good = false;
        return 0;
    }
    unsigned Short(std::size_t at)
    {
        const unsigned first = Byte(at), second = Byte(at + 1);
        return m_little ? first | second << 8 : first << 8 | second;
    }
    std::uint32_t Long(std::size_t at)
    {
        const std::uint32_t first = Short(at), second = Short(at + 2);
        return m_little ? first | second << 16 : first << 16 | second;
    }

private:
    std::string_view m_bytes;
    bool m_little = false;
    bool m_good = true;
};

void ReadJfif(std::string_view data, JpegHeader& header)
{
    CBytes bytes(data);
    const unsigned unit = bytes.Byte(7);
    const double x = bytes.Short(8), y = bytes.Short(10);
    if (!bytes.Good() || unit < 1 || unit > 2 || x <= 0 || y <= 0) return;
    const double factor = unit == 2 ? 2.54 : 1;
    header.dpiX = x * factor;
    header.dpiY = y * factor;
}

double Rational(CBytes& bytes, std::size_t at)
{
    const double numerator = bytes.Long(at), denominator = bytes.Long(at + 4);
    return denominator > 0 ? numerator / denominator : 0;
}

int TurnOf(unsigned orientation)
{
    return orientation == 3 ? 180 : orientation == 6 ? 90 : orientation == 8 ? 270 : 0;
}

/// The first directory of the camera's data; `segment` begins with its byte order mark.
void ReadExif(std::string_view segment, JpegHeader& header)
{
    CBytes bytes(segment);
    bytes.SetLittleEndian(segment.starts_with("II"));
    const std::size_t directory = bytes.Long(4);
    const unsigned entries = bytes.Short(directory);
    double x = 0, y = 0;
    unsigned unit = 2, orientation = 1;
    for (unsigned i = 0; i < entries && bytes.Good(); ++i) {
        const std::size_t entry = directory + 2 + std::size_t{12} * i;
        const std::size_t value = entry + 8;
        switch (bytes.Short(entry)) {
            case 0x0112:
                orientation = bytes.Short(value);
                break;
            case 0x011A:
                x = Rational(bytes, bytes.Long(value));
                break;
            case 0x011B:
                y = Rational(bytes, bytes.Long(value));
                break;
            case 0x0128:
                unit = bytes.Short(value);
                break;
            default:
                break;
        }
    }
    if (!bytes.Good()) return;
    header.turn = TurnOf(orientation);
    if (header.dpiX > 0 || unit < 2 || unit > 3 || x <= 0 || y <= 0) return;
    const double factor = unit == 3 ? 2.54 : 1;
    header.dpiX = x * factor;
    header.dpiY = y * factor;
}

bool IsFrame(unsigned marker)
{
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// Answers why the frame cannot be embedded; empty when it can.
std::string ReadFrame(std::string_view segment, unsigned marker, JpegHeader& header)
{
    if (marker > 0xC2) return "its kind of coding cannot be embedded";
    CBytes bytes(segment);
    const unsigned bits = bytes.Byte(2);
    header.height = static_cast<int>(bytes.Short(3));
    header.width = static_cast<int>(bytes.Short(5));
    header.components = static_cast<int>(bytes.Byte(7));
    if (!bytes.Good()) return "is cut off";
    if (bits != 8) return "has " + std::to_string(bits) + " bits for each colour";
    if (header.width == 0 || header.height == 0) return "states no size";
    const int n = header.components;
    return n == 1 || n == 3 || n == 4 ? std::string() : "has " + std::to_string(n) + " colours";
}

void ReadApplicationData(std::string_view segment, unsigned marker, JpegHeader& header)
{
    using namespace std::string_view_literals;
    const std::string_view data = segment.substr(2);
    if (marker == 0xE0 && data.starts_with("JFIF\0"sv)) ReadJfif(data, header);
    if (marker == 0xE1 && data.starts_with("Exif\0\0"sv)) ReadExif(data.substr(6), header);
    if (marker == 0xEE && data.starts_with("Adobe"sv)) header.adobeMarker = true;
}

}  // namespace

std::optional<JpegHeader> ReadJpegHeader(std::string_view bytes, std::string& reason)
{
    reason = "is not a JPEG picture";
    CBytes view(bytes);
    if (view.Short(0) != 0xFFD8) return std::nullopt;

    JpegHeader header;
    reason = "is cut off";
    for (std::size_t at = 2; view.Good();) {
        if (view.Byte(at) != 0xFF) break;
        const unsigned marker = view.Byte(at + 1);
        if (marker == 0xFF || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {
            at += marker == 0xFF ? 1 : 2;
            continue;
        }
        const std::size_t length = view.Short(at + 2);
        if (!view.Good() || length < 2 || at + 2 + length > bytes.size()) break;
        // A segment here begins with its two bytes of length.
        const std::string_view segment = bytes.substr(at + 2, length);
        if (marker == 0xDA) {
            if (header.components > 0) return header;
            break;
        }
        if (IsFrame(marker)) {
            if (std::string problem = ReadFrame(segment, marker, header); !problem.empty()) {
                reason = problem;
                return std::nullopt;
            }
        }
        ReadApplicationData(segment, marker, header);
        at += 2 + length;
    }
    return std::nullopt;
}

namespace {

constexpr std::uint64_t kLargestPicture = 1ULL << 31;
constexpr double kPointsPerInch = 72;
constexpr double kLongestSide = 14400;  // points; readers accept no larger page

struct PageSize {
    std::string width, height;  // points
};

PageSize PageSizeOf(const JpegHeader& header)
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
    const PageSize size = PageSizeOf(header);
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

namespace {

std::string TrimmedEnd(std::string text)
{
    text.erase(text.find_last_not_of("\f\n") + 1);
    if (!text.empty()) text += '\n';
    return text;
}

}  // namespace

void PdfToText(CPdfDocument& document, const TextOutput& output)
{
    if (!document.Allows(PdfRight::Copy)) {
        throw CPdfError(PdfProblem::NotPermitted, document.Description(), "copying text is not permitted");
    }
    Guarded(output.path, PdfProblem::Internal, [&] {
        const auto existing = output.mustNotExist ? platform::Existing::Fail : platform::Existing::Replace;
        COutputFile file(output.path, existing, output.source.empty() ? document.Path() : output.source);
        const auto engine = NewTextEngine();
        LoadPresentState(*engine, document);
        // A damaged document may claim pages that nobody can read.
        const int pages = std::min(engine->PageCount(), document.PageCount());
        for (int page = 0; page < pages; ++page) {
            if (output.cancelled && output.cancelled()) {
                throw CPdfError(PdfProblem::Cancelled, output.path, "the conversion was cancelled");
            }
            const std::string text = (page > 0 ? "\f" : "") + TrimmedEnd(engine->PageText(page));
            file.Write(text.data(), text.size());
            file.Check();
        }
        file.Commit();
    });
}

}  // namespace openhost
