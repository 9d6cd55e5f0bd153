#pragma once

#include <string>
#include <vector>

#include <qpdf/QPDFObjGen.hh>
#include <qpdf/Types.h>

#include "openhost/pdf/FileRebuilder.h"

class InputSource;
class QPDF;

namespace openhost {

/// How many bytes stand in front of the file's header. The offsets in a file count from the header, as all readers
/// have it; 0 when no header begins within the first 1024 bytes.
qpdf_offset_t HeaderOffset(InputSource& source);

/// The objects that do not begin where the cross-reference table of `document` says. Looks at a few bytes of each
/// object in `source`, the file that the document was read from, and parses nothing.
/// Fails: throws what the source throws.
std::vector<QPDFObjGen> MisplacedObjects(QPDF& document, InputSource& source);

/// The objects that the table has and that come out as nothing, although the file does not say so. Reads all objects.
std::vector<QPDFObjGen> UnreadableObjects(QPDF& document, InputSource& source);

}  // namespace openhost

class InputSource;
class QPDF;

namespace openhost {

/// How a document was made readable.
struct RepairFacts {
    const FileScan* scan = nullptr;  ///< of the whole file, when its cross-reference table had to be made anew
    bool catalogueSearched = false;  ///< it was chosen among several
    bool pagesSearched = false;      ///< its page tree led to no page
};

/// Whether the document uses one of these objects. Reads every object that it does use.
bool UsesAnyOf(QPDF& document, const std::vector<QPDFObjGen>& objects);

/// What of a document's file is not in the document: pages or objects that cannot be read, the missing rest of a
/// file. `document` is unlocked and was read from `source`. One sentence; empty when nothing is known to be lost.
/// Reads every object, which a save would do anyway.
std::string LossOf(QPDF& document, InputSource& source, const RepairFacts& facts);

}  // namespace openhost
