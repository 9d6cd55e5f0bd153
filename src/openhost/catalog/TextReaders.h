// Processes that read the texts of documents, so that a document that crashes, hangs or eats memory costs itself
// only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "openhost/catalog/DocumentTexts.h"

namespace openhost {

/// How texts are read.
struct ReaderSettings {
    /// What starts a reader; empty: texts are read in this process, where nothing can be stopped.
    std::string program = {};
    std::vector<std::string> arguments = {};
    bool hasPasswords = false;
    /// For documents that are read in this process.
    std::vector<std::string> passwordsUtf8 = {};
    int jobs = 1;                                        ///< readers at the same time, at most
    int timeoutSeconds = 120;                            ///< for each document; 0: no limit
    std::uint64_t memoryBytes = std::uint64_t{2} << 30;  ///< for each reader; 0: no limit
};

/// Reads them all. `take` gets each result with the number of its order, in any sequence. What `take` throws ends the
/// reading.
void ReadAllTexts(const ReaderSettings& settings, const std::vector<TextOrder>& orders,
                  const std::function<void(std::size_t number, DocumentTexts texts)>& take);

}  // namespace openhost
