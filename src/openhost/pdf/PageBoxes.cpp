#include "openhost/pdf/PageBoxes.h"

#include <algorithm>
#include <cmath>

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

}  // namespace openhost
