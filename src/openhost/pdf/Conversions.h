#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

/// What a document needs to know of a JPEG picture that it embeds as it is.
struct JpegHeader {
    int width = 0;  ///< pixels
    int height = 0;
    int components = 0;        ///< 1 grey, 3 colour, 4 four inks
    bool adobeMarker = false;  ///< four inks are then stored inverted
    double dpiX = 0;           ///< 0: not stated
    double dpiY = 0;
    int turn = 0;  ///< degrees clockwise by which a viewer turns it: 0, 90, 180, 270
};

/// Reads the header of a baseline or progressive picture of 8 bits; otherwise nothing, and why in `reason`.
std::optional<JpegHeader> ReadJpegHeader(std::string_view bytes, std::string& reason);

/// Wraps a JPEG file as a document of one page, image data unchanged; the page has the size that the picture's own
/// resolution gives (72 dpi when it states none). The document lives in memory and counts as modified.
/// Fails: UnsupportedInput for what is no JPEG or cannot be embedded, NotFound, NoAccess and their like.
CPdfDocument JpegToPdf(const std::string& path);

struct TextOutput {
    std::string path = {};
    std::string source = {};  ///< the file the document comes from, whose access rights bound those of the text
    bool mustNotExist = false;
    std::function<bool()> cancelled = {};  ///< asked before each page
};

/// Writes the text of the document's present state: UTF-8, a form feed between pages. The file appears complete
/// or not at all.
/// Fails: NotPermitted without the right to copy; see also CPdfDocument::Save.
void PdfToText(CPdfDocument& document, const TextOutput& output);

}  // namespace openhost
