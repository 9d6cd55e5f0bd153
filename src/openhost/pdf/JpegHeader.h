#ifndef FERRULE_OPENHOST_PDF_JPEG_HEADER_H
#define FERRULE_OPENHOST_PDF_JPEG_HEADER_H

#include <optional>
#include <string>
#include <string_view>

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

}  // namespace openhost

#endif
