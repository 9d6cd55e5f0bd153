#pragma once

#include <optional>
#include <string>

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

// How a document shows itself when it is opened. Each function answers whether something changed and leaves marking
// the document as modified to the caller. Fails: what the library throws.

/// The size at which a page is shown: "Fit", "FitH" (width), "FitV" (height), "FitBH" (visible width), or "XYZ" with
/// a zoom, 1 for the actual size, nothing for the reader's own.
struct OpenView {
    std::string fit = "XYZ";
    std::optional<double> zoom = {};
};

/// A name of the format without its slash; nothing leaves it to the reader.
bool SetPageLayout(CPdfDocument& document, const std::optional<std::string>& layout);
/// Empty when the document has none.
std::string PageLayoutOf(CPdfDocument& document);
bool SetPageMode(CPdfDocument& document, const std::optional<std::string>& mode);
/// Empty when the document has none.
std::string PageModeOf(CPdfDocument& document);

/// A viewer preference; false and empty ones are left out, as they are the defaults.
bool SetViewerFlag(CPdfDocument& document, const std::string& key, bool value);
bool SetViewerName(CPdfDocument& document, const std::string& key, const std::string& name);
/// Empty when the document has none.
std::string ViewerName(CPdfDocument& document, const std::string& key);

/// The size at which it opens; nothing when it does not say. Fits to what is visible come as "FitBH".
std::optional<OpenView> OpenViewOf(CPdfDocument& document);
/// Where the document opens. What is not given stays as the present destination has it, else the first page and the
/// reader's own size. An action of another kind, such as a script, is carried out after going there.
bool SetOpenDestination(CPdfDocument& document, const std::optional<int>& page0, const std::optional<OpenView>& view);

}  // namespace openhost
