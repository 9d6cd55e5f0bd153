#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-image.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>

#include "openhost/pdf/PageBoxes.h"

namespace openhost {
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
