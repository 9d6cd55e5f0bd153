#include "openhost/pdf/PageBoxes.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>

#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-image.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>

#include "openhost/pdf/PageTree.h"

namespace openhost {
namespace {

constexpr PageBox kPageWithoutBox = {0, 0, 612, 792};
constexpr BoxKind kBoxesInsideCrop[] = {BoxKind::Bleed, BoxKind::Trim, BoxKind::Art};
constexpr double kSameEdge = 0.001;
constexpr int kDecimals = 4;

const char* KeyOf(BoxKind kind)
{
    switch (kind) {
        case BoxKind::Media:
            return "/MediaBox";
        case BoxKind::Crop:
            return "/CropBox";
        case BoxKind::Bleed:
            return "/BleedBox";
        case BoxKind::Trim:
            return "/TrimBox";
        case BoxKind::Art:
            break;
    }
    return "/ArtBox";
}

bool IsInherited(BoxKind kind) { return kind == BoxKind::Media || kind == BoxKind::Crop; }

bool Same(const PageBox& one, const PageBox& other)
{
    const auto same = [](double a, double b) { return std::abs(a - b) < kSameEdge; };
    return same(one.left, other.left) && same(one.bottom, other.bottom) && same(one.right, other.right) &&
           same(one.top, other.top);
}

std::optional<PageBox> BoxIn(QPDFObjectHandle array)
{
    if (!array.isArray() || array.getArrayNItems() != 4) return std::nullopt;
    double corners[4];
    for (int at = 0; at < 4; ++at) {
        QPDFObjectHandle number = array.getArrayItem(at);
        if (!number.isNumber()) return std::nullopt;
        corners[at] = number.getNumericValue();
    }
    const auto [left, right] = std::minmax(corners[0], corners[2]);
    const auto [bottom, top] = std::minmax(corners[1], corners[3]);
    return PageBox{left, bottom, right, top};
}

QPDFObjectHandle ArrayOf(const PageBox& box)
{
    QPDFObjectHandle array = QPDFObjectHandle::newArray();
    for (const double edge : {box.left, box.bottom, box.right, box.top})
        array.appendItem(QPDFObjectHandle::newReal(edge, kDecimals));
    return array;
}

}  // namespace

PageBox PageBox::Within(const PageBox& outer) const
{
    return {std::max(left, outer.left), std::max(bottom, outer.bottom), std::min(right, outer.right),
            std::min(top, outer.top)};
}

PageBox Inset(const PageBox& box, const PageMargins& margins, int rotation)
{
    // The unturned page's left, bottom, right and top edge, under the names that they have on the turned one.
    const double shown[] = {margins.left, margins.bottom, margins.right, margins.top};
    const auto edge = [&](int unturned) { return shown[(unturned + 4 - rotation / 90) % 4]; };
    return {box.left + edge(0), box.bottom + edge(1), box.right - edge(2), box.top - edge(3)};
}

CPageBoxes::CPageBoxes(CPdfDocument& document) : m_pages(ChangeablePagesOf(document.Library())) {}

int CPageBoxes::Rotation(int page0) const
{
    QPDFObjectHandle rotate = InheritedEntry(Page(page0), "/Rotate");
    if (!rotate.isNumber()) return 0;
    const double turned = std::fmod(rotate.getNumericValue(), 360);
    const int degrees = (static_cast<int>(turned) + 360) % 360;
    return degrees % 90 == 0 ? degrees : 0;
}

bool CPageBoxes::Rotate(int page0, int degrees)
{
    if (degrees % 360 == 0) return false;
    Page(page0).replaceKey("/Rotate", QPDFObjectHandle::newInteger((Rotation(page0) + degrees) % 360));
    return true;
}

/// What the page says itself or inherits.
std::optional<PageBox> CPageBoxes::Entry(int page0, BoxKind kind) const
{
    QPDFObjectHandle page = Page(page0);
    return BoxIn(IsInherited(kind) ? InheritedEntry(page, KeyOf(kind)) : page.getKey(KeyOf(kind)));
}

PageBox CPageBoxes::Box(int page0, BoxKind kind) const
{
    const auto entry = Entry(page0, kind);
    if (kind == BoxKind::Media) return entry && !entry->IsEmpty() ? *entry : kPageWithoutBox;
    const PageBox outer = Box(page0, kind == BoxKind::Crop ? BoxKind::Media : BoxKind::Crop);
    const PageBox inner = entry.value_or(outer).Within(outer);
    return inner.IsEmpty() ? outer : inner;
}

bool CPageBoxes::Write(int page0, BoxKind kind, const std::optional<PageBox>& box)
{
    QPDFObjectHandle page = Page(page0);
    const auto before = Entry(page0, kind);
    if (!box && !before) return false;
    if (box && (before ? Same(*box, *before) : Same(*box, Box(page0, kind)))) return false;
    if (box) {
        page.replaceKey(KeyOf(kind), ArrayOf(*box));
        return true;
    }
    page.removeKey(KeyOf(kind));
    // An entry of the tree above would show again, so the page says itself that it has none.
    if (const auto inherited = Entry(page0, kind); inherited && !Same(*inherited, Box(page0, BoxKind::Media)))
        page.replaceKey(KeyOf(kind), ArrayOf(Box(page0, BoxKind::Media)));
    return true;
}

bool CPageBoxes::SetBox(int page0, BoxKind kind, const std::optional<PageBox>& box)
{
    bool changed = Write(page0, kind, box);
    if (kind != BoxKind::Crop || !changed) return changed;
    const PageBox crop = Box(page0, BoxKind::Crop);
    for (const BoxKind inner : kBoxesInsideCrop) {
        const auto entry = Entry(page0, inner);
        if (!entry) continue;
        const PageBox cut = entry->Within(crop);
        Write(page0, inner, cut.IsEmpty() ? std::nullopt : std::optional(cut));
    }
    return true;
}

double CPageBoxes::UnitPoints(int page0) const
{
    QPDFObjectHandle unit = Page(page0).getKey("/UserUnit");
    const double points = unit.isNumber() ? unit.getNumericValue() : 1;
    return points > 0 ? points : 1;
}

/// The crop box as it lies on the screen; only its size is of use.
PageBox CPageBoxes::Shown(int page0) const
{
    const PageBox box = Box(page0, BoxKind::Crop);
    const bool upright = Rotation(page0) % 180 == 0;
    return {0, 0, upright ? box.Width() : box.Height(), upright ? box.Height() : box.Width()};
}

namespace {

constexpr double kUnitsPerInch = 72;
constexpr double kUsualResolution = 144;
constexpr double kMostPixels = 10e6;
constexpr std::uint32_t kPaper = 0xFFFFFFFF;

/// Gathers what the library complains about while it lives; otherwise nobody listens.
class CComplaints {
public:
    CComplaints()
    {
        poppler::set_debug_error_function(
            [](const std::string& complaint, void* data) { *static_cast<std::string*>(data) += complaint; }, &m_all);
    }
    ~CComplaints()
    {
        poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr);
    }
    CComplaints(const CComplaints&) = delete;
    CComplaints& operator=(const CComplaints&) = delete;

    /// Whether a kind of image came up that this build of the library cannot draw.
    bool MissesAFilter() const { return m_all.find("Unknown filter") != m_all.npos; }
    /// Whether text is left out because the system has no font for it.
    bool MissesAFont() const { return m_all.find("a font for") != m_all.npos; }

private:
    std::string m_all;
};

/// Pixels that are not paper: the first and the last in each direction.
std::optional<PageMargins> MarginsOf(const poppler::image& drawn, double unitsPerPixel)
{
    int left = drawn.width(), top = drawn.height(), right = -1, bottom = -1;
    for (int y = 0; y < drawn.height(); ++y) {
        const char* const row = drawn.const_data() + static_cast<std::ptrdiff_t>(y) * drawn.bytes_per_row();
        for (int x = 0; x < drawn.width(); ++x) {
            std::uint32_t pixel;
            std::memcpy(&pixel, row + static_cast<std::ptrdiff_t>(x) * 4, sizeof pixel);
            if (pixel == kPaper) continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    if (right < 0) return std::nullopt;
    return PageMargins{left * unitsPerPixel, top * unitsPerPixel, (drawn.width() - 1 - right) * unitsPerPixel,
                       (drawn.height() - 1 - bottom) * unitsPerPixel};
}

double ResolutionFor(const poppler::page& page)
{
    const auto size = page.page_rect(poppler::crop_box);
    const double squareInches = size.width() / kUnitsPerInch * (size.height() / kUnitsPerInch);
    return std::min(kUsualResolution, std::sqrt(kMostPixels / std::max(squareInches, 1e-6)));
}

std::optional<PageMargins> MarginsOf(const poppler::document& document, int page0, const std::string& name)
{
    const auto refuse = [&](const std::string& why) {
        throw CPdfError(PdfProblem::UnsupportedInput, name,
                        "the host cannot find the content of page " + std::to_string(page0 + 1) + ": " + why);
    };
    const CComplaints complaints;
    const std::unique_ptr<poppler::page> page(document.create_page(page0));
    if (!page) refuse("it cannot be read");
    poppler::page_renderer renderer;
    renderer.set_image_format(poppler::image::format_argb32);
    renderer.set_paper_color(kPaper);
    const double resolution = ResolutionFor(*page);
    const poppler::image drawn = renderer.render_page(page.get(), resolution, resolution);
    if (!drawn.is_valid()) refuse("it cannot be drawn");
    if (complaints.MissesAFilter()) refuse("it holds an image of a kind that cannot be drawn");
    if (complaints.MissesAFont()) refuse("it has text in a font that this system does not have");
    return MarginsOf(drawn, kUnitsPerInch / resolution);
}

}  // namespace

std::vector<std::optional<PageMargins>> ContentMargins(CPdfDocument& document, const std::vector<int>& pages0)
{
    const std::string name = document.Description();
    if (!poppler::page_renderer::can_render())
        throw CPdfError(PdfProblem::UnsupportedInput, name,
                        "the host cannot find the content of pages: it draws none");
    const std::string bytes = document.WriteToMemory();
    if (bytes.size() > INT_MAX)
        throw CPdfError(PdfProblem::UnsupportedInput, name,
                        "the host cannot find the content of its pages: too large");
    const std::unique_ptr<poppler::document> drawn(
        poppler::document::load_from_raw_data(bytes.data(), static_cast<int>(bytes.size())));
    if (!drawn) throw CPdfError(PdfProblem::UnsupportedInput, name, "the host cannot find the content of its pages");
    std::vector<std::optional<PageMargins>> margins;
    for (const int page0 : pages0) margins.push_back(MarginsOf(*drawn, page0, name));
    return margins;
}

}  // namespace openhost
