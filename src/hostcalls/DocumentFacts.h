#pragma once

#include "hostapi/HostTypes.h"

// What a document is and holds, as numbers. Everything throws CHostException when the host raises.

struct PdfVersion {
    int major = 0, minor = 0;
};
[[nodiscard]] PdfVersion PdfVersionOf(PDDoc document);

/// The files attached to the document as a whole, not to a place on a page.
[[nodiscard]] int AttachmentCount(PDDoc document);
/// The fields of its form that have no fields below them; 0 also for a host without forms.
[[nodiscard]] int FormFieldCount(PDDoc document);
/// Whether somebody has given it rights that the free reader has not by itself.
[[nodiscard]] bool HasReaderRights(PDDoc document);
