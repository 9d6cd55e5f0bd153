#pragma once

#include <memory>
#include <string>

#include <poppler-document.h>

#include "openhost/pdf/TextEngine.h"

namespace openhost {

std::unique_ptr<CTextEngine> NewPopplerTextEngine();
std::string PopplerTextEngineVersion();

/// Opens a file as it is on disk; null when the library cannot. `bytes` is what it may need for as long as it lives.
/// Fails: CPdfError for a file that cannot be read.
poppler::document* LoadPopplerFile(const std::string& path, const std::string& passwordBytes, std::string& bytes);

}  // namespace openhost
