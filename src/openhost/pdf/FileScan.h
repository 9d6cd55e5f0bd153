#ifndef FERRULE_OPENHOST_PDF_FILE_SCAN_H
#define FERRULE_OPENHOST_PDF_FILE_SCAN_H

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

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

#endif
