// Views (windows) of documents. A view owns its document: closing the view closes the document too.
#pragma once

#include "hostapi/HostTypes.h"

#include <string>

/// Makes a view of an open document, under a title of its own unless that is empty. From now on close the view, not
/// the document. Null when the host makes none; throws CHostException.
[[nodiscard]] AVDoc OpenView(PDDoc document, const std::string& title);

/// The view of a document, null when it has none. Borrowed.
[[nodiscard]] AVDoc ViewOf(PDDoc document);

/// Closes a view and its document; false when the host kept it open. Without `noSave` the host may ask the user.
[[nodiscard]] bool CloseView(AVDoc view, bool noSave);
