// The fields of a document's form.
#pragma once

#include <functional>

#include <qpdf/QPDFObjectHandle.hh>

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

/// Whether the document has a form with at least one field. Fails: CPdfError.
bool HasFormFields(CPdfDocument& document);

/// The fields of the form, each before those below it, until `visit` answers false; with `terminals` only those that
/// have no fields below them. A field's widgets, which may be merged with it or stand below it, are no fields. A
/// field that was entered already is passed over. Fails: CPdfError.
void ForEachFormField(CPdfDocument& document, bool terminals, const std::function<bool(QPDFObjectHandle)>& visit);

}  // namespace openhost
