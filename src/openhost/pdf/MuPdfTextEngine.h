#pragma once

#include <memory>
#include <string>

#include "openhost/pdf/TextEngine.h"

namespace openhost {

/// Reads text with MuPDF, which takes pages in the order in which their content is drawn. Names of fonts end after 31
/// bytes.
std::unique_ptr<CTextEngine> NewMuPdfTextEngine();
std::string MuPdfTextEngineVersion();

}  // namespace openhost
