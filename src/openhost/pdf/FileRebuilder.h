#ifndef FERRULE_OPENHOST_PDF_FILE_REBUILDER_H
#define FERRULE_OPENHOST_PDF_FILE_REBUILDER_H

#include <cstddef>
#include <map>
#include <memory>
#include <qpdf/QPDFObjGen.hh>
#include <string>
#include <utility>

#include "openhost/pdf/FileScan.h"

class InputSource;
class QPDF;

namespace openhost {

/// Makes a file readable whose cross-reference tables lead nowhere: looks for its objects and puts a new table behind
/// them, with the entries of the newest trailer that names a catalogue. The library's own repair takes the oldest
/// trailer, and loses what is in object streams.
class CFileRebuilder {
public:
    /// Takes all bytes of the file.
    explicit CFileRebuilder(std::string bytes);

    /// The file with the new table, for the library.
    std::shared_ptr<InputSource> Source(const std::string& name) const;

    /// Takes in the objects that streams of objects hold; `reading` is the document as read from Source, unlocked.
    /// Answers whether there are any: the document must then be read again.
    bool AddObjectStreams(QPDF& reading);

    /// The objects in the order in which they stand in the file.
    std::map<std::pair<std::size_t, int>, QPDFObjGen> ByPlace() const;

    const FileScan& Scan() const { return m_scan; }

private:
    struct Place {
        bool inStream = false;
        std::size_t offset = 0;  // of the object, or of the stream that holds it
        int generation = 0;
        int stream = 0, index = 0;
    };

    std::string Trailer() const;
    std::string Entry(const char* key) const;

    std::string m_bytes;
    FileScan m_scan;
    std::map<int, Place> m_places;
};

}  // namespace openhost

#endif
