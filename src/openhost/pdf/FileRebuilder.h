#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qpdf/QPDFObjGen.hh>

namespace openhost {

/// Higher numbers are no object numbers of a real file.
constexpr int kHighestNumber = 10'000'000;

/// "7 0 obj" and where it stands.
struct ScannedObject {
    int number = 0;
    int generation = 0;
    std::size_t offset = 0;
};

/// What a look at all bytes of a file finds, whatever its cross-reference tables say.
struct FileScan {
    std::vector<ScannedObject> objects;  ///< in file order; of equal numbers the last one counts
    /// The dictionaries of trailers and of cross-reference streams, as PDF source, in file order; broken ones
    /// included.
    std::vector<std::string> trailers;
    std::set<int> claimed;              ///< numbers that a readable table of the file says are in use
    std::optional<int> securityObject;  ///< the last object that looks like an encryption dictionary
    /// Behind the last object comes nothing that ends a file: the rest of it is missing.
    bool endsEarly = false;
};

/// Fails: never; what is not found is not there.
FileScan ScanFile(std::string_view bytes);

/// Of a trailer's dictionary, as PDF source; empty when it has no such entry. `key` begins with a slash.
std::string TrailerEntry(const std::string& dictionary, const std::string& key);

}  // namespace openhost

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
