// The part that is appended to a file when nothing but a document's properties has changed.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include <qpdf/InputSource.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjGen.hh>

namespace openhost {

/// Where an appended part goes, or why none can be made.
struct UpdatePlace {
    std::string obstacle;        ///< one clause for people; empty when the file can take an appended part
    qpdf_offset_t size = 0;      ///< of the file, in bytes
    qpdf_offset_t header = 0;    ///< bytes in front of "%PDF-"; offsets in the file count from behind them
    qpdf_offset_t previous = 0;  ///< offset of the newest cross-reference section
    bool isStream = false;       ///< that section is a stream
    bool endsWithNewLine = true;
};

/// Looks at the end of the file and at its newest cross-reference section. `document` was read from `source`.
UpdatePlace FindUpdatePlace(QPDF& document, InputSource& source);

struct IncrementalUpdate {
    std::string obstacle;                        ///< as in UpdatePlace; the rest is then empty
    std::string bytes;                           ///< to follow the last byte of the file
    std::map<QPDFObjGen, qpdf_offset_t> places;  ///< objects in it, by their offsets in the whole file
    std::optional<std::string> packet;           ///< the metadata packet, when that changes
};

/// Composes the part: the information dictionary as it is in `document`, the metadata packet with the entries
/// `changedInfo` brought in step, a cross-reference section of the kind that the file has, and a trailer. A catalogue
/// is never written: a document without a packet gets none. The bytes are encrypted like the document. Fails: throws
/// what the library throws.
IncrementalUpdate MakeIncrementalUpdate(QPDF& document, InputSource& source,
                                        const std::set<std::string>& changedInfo);

}  // namespace openhost
