#include <climits>

#include "openhost/pdf/DocumentFiles.h"
#include "openhost/pdf/PopplerTextEngine.h"

namespace openhost {

// The library opens no long path, and would keep the file open, so that nothing could be saved over it.
poppler::document* LoadPopplerFile(const std::string& path, const std::string& passwordBytes, std::string& bytes)
{
    bytes = ReadAll(path, INT_MAX);
    return poppler::document::load_from_raw_data(bytes.data(), static_cast<int>(bytes.size()), passwordBytes,
                                                 passwordBytes);
}

}  // namespace openhost
