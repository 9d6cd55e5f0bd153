#pragma once

#include <optional>
#include <string>

#include "hostapi/HostTypes.h"

// Pages of a document by what people call them.
//
// Names are narrow text, pages are counted from 0. Everything throws CHostException when the host raises; nothing
// comes back when the document has no such name, or it leads to no page of this document.

/// By the title of the first bookmark that has it, top down.
[[nodiscard]] std::optional<int> PageOfBookmark(PDDoc document, const std::string& title);

/// By a named destination.
[[nodiscard]] std::optional<int> PageOfDestination(PDDoc document, const std::string& name);

/// By the label of the first page that has it; a page without label has its number.
[[nodiscard]] std::optional<int> PageOfLabel(PDDoc document, const std::string& label);

/// The label of a page, UTF-8; its number from 1 where it has none.
[[nodiscard]] std::string LabelOfPage(PDDoc document, int page0);
