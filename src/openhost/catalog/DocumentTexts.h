// The text of one document as it goes into the index.
#pragma once

#include <string>
#include <vector>

#include "openhost/catalog/IndexFile.h"
#include "openhost/pdf/TextCache.h"

namespace openhost {

struct TextOrder {
    std::string path = {};          ///< absolute
    bool includeEncrypted = false;  ///< else an encrypted document is told from others, and left out
};

struct DocumentTexts {
    DocumentState state = DocumentState::Indexed;
    bool encrypted = false;
    std::vector<std::string> pages = {};  ///< UTF-8, words with one blank between them; empty unless indexed
    int pageCount = 0;
    std::string message = {};  ///< why there is no text, or not all of it
};

/// Reads it in this process. The passwords are tried on a document that needs one; `cache` is borrowed, and null for
/// none. Never fails: the state says what was in the way.
DocumentTexts ReadDocumentTexts(const TextOrder& order, const std::vector<std::string>& passwordsUtf8,
                                CTextCache* cache);

/// Answers orders that come line by line on standard input, until its end: what a reader of texts does, see
/// TextReaders.h. Answers the program's exit code.
int ServeTexts(const std::vector<std::string>& passwordsUtf8, const std::string& cacheFolder);

}  // namespace openhost
