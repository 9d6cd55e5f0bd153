#include "openhost/pdf/PopplerTextEngine.h"

namespace openhost {

poppler::document* LoadPopplerFile(const std::string& path, const std::string& passwordBytes, std::string&)
{
    return poppler::document::load_from_file(path, passwordBytes, passwordBytes);
}

}  // namespace openhost
