#pragma once

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

/// Takes all comments out of the document: markup annotations, with their replies and pop-up windows. Links, form
/// fields, media and everything else on the pages stays. Answers how many annotations went; the caller marks the
/// document as modified. Fails: what the library throws.
int RemoveComments(CPdfDocument& document);

}  // namespace openhost
