#ifndef FERRULE_OPENHOST_PDF_XREF_CHECK_H
#define FERRULE_OPENHOST_PDF_XREF_CHECK_H

#include <qpdf/QPDFObjGen.hh>
#include <vector>

class InputSource;
class QPDF;

namespace openhost {

/// The objects that do not begin where the cross-reference table of `document` says. Looks at a few bytes of each
/// object in `source`, the file that the document was read from, and parses nothing.
/// Fails: throws what the source throws.
std::vector<QPDFObjGen> MisplacedObjects(QPDF& document, InputSource& source);

/// The objects that the table has and that come out as nothing, although the file does not say so. Reads all objects.
std::vector<QPDFObjGen> UnreadableObjects(QPDF& document, InputSource& source);

}  // namespace openhost

#endif
