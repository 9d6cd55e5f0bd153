#pragma once

#include <vector>

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

/// Takes these pages (from 0) out of the document; the caller marks it as modified.
///
/// The pages that stay keep what they inherited and their labels. The page objects themselves go with all that only
/// they lead to: bookmarks, links and named destinations that led to them stay and lead nowhere. Form fields that were
/// shown on them alone go, too. The structure stays as it is.
/// Fails: LastPage when no page would be left, and what the library throws; the document is as it was then.
void RemovePages(CPdfDocument& document, const std::vector<int>& pages0);

}  // namespace openhost
