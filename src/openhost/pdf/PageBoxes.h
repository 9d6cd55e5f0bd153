#pragma once

#include <optional>
#include <vector>

#include <qpdf/QPDFObjectHandle.hh>

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

/// A rectangle of a page in units of its user space, as it is before the page is turned.
struct PageBox {
    double left = 0, bottom = 0, right = 0, top = 0;

    double Width() const { return right - left; }
    double Height() const { return top - bottom; }
    bool IsEmpty() const { return !(Width() > 0 && Height() > 0); }
    PageBox Within(const PageBox& outer) const;
};

/// Distances from the edges of a box as people see them, on the turned page; in units of user space.
struct PageMargins {
    double left = 0, top = 0, right = 0, bottom = 0;
};

enum class BoxKind { Media, Crop, Bleed, Trim, Art };

/// The box without its margins on a page that is shown turned by `rotation` degrees.
PageBox Inset(const PageBox& box, const PageMargins& margins, int rotation);

/// The pages of a document with their boxes and rotation, inherited ones included. Pages count from 0.
///
/// Borrows the document; valid until its next save or change of pages. Changing members answer whether something
/// changed; they leave marking the document as modified to the caller. Fails: CPdfError and what the library throws.
class CPageBoxes {
public:
    explicit CPageBoxes(CPdfDocument& document);

    /// How the page is turned when it is shown, clockwise: 0, 90, 180 or 270.
    int Rotation(int page0) const;
    /// Turns it further, clockwise by a multiple of 90.
    bool Rotate(int page0, int degrees);

    /// The box that counts: its own or inherited entry, else the one that stands for it; inside the media box, and
    /// all but the media and crop box inside the crop box.
    PageBox Box(int page0, BoxKind kind) const;
    /// Writes a box, or takes it away; `kind` is none of the media box. A crop box takes the other boxes with it:
    /// they are cut to it, and those outside go.
    bool SetBox(int page0, BoxKind kind, const std::optional<PageBox>& box);

    /// Points in one unit of the page's user space.
    double UnitPoints(int page0) const;
    /// Whether the page as it is shown is wider than high (or the other way round).
    bool IsLandscape(int page0) const { return Shown(page0).Width() > Shown(page0).Height(); }
    bool IsPortrait(int page0) const { return Shown(page0).Width() < Shown(page0).Height(); }

private:
    QPDFObjectHandle Page(int page0) const { return m_pages.at(static_cast<std::size_t>(page0)); }
    std::optional<PageBox> Entry(int page0, BoxKind kind) const;
    bool Write(int page0, BoxKind kind, const std::optional<PageBox>& box);
    PageBox Shown(int page0) const;

    std::vector<QPDFObjectHandle> m_pages;
};

/// How far the content of each of these pages (from 0) lies from the edges of its crop box; nothing for a page that
/// shows nothing. Found by drawing the page on white paper: exact to half a point.
/// Fails: UnsupportedInput when the library cannot draw, or not all of what is on a page.
std::vector<std::optional<PageMargins>> ContentMargins(CPdfDocument& document, const std::vector<int>& pages0);

}  // namespace openhost
