// Values for documents out of a table that has a column "Filename".
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/SeparatedText.h"

enum class FileMatch {
    FullPath,  ///< a name that holds a folder has to be the whole path
    Name       ///< folders do not count, unless the whole path is the same
};

struct MetadataImportRules {
    /// The fields that are taken, by their names in the first line; at least one of them has to be there.
    std::vector<std::string> fields = {};
    bool clearEmpty = false;  ///< an empty field empties the value; else it says nothing
    FileMatch match = FileMatch::FullPath;
    std::string notAValue = {};  ///< what a table says of a document that could not be read
};

struct ImportedValue {
    std::size_t document = 0, field = 0;  ///< places in what was given
    std::string text;                     ///< UTF-8
};

struct MetadataImport {
    std::vector<ImportedValue> values;
    std::size_t records = 0;           ///< in the table
    std::size_t unmatched = 0;         ///< of them, those that name no document
    std::vector<std::string> refused;  ///< why a record was not taken, a sentence for each
};

/// Finds the document for each record of the table and what it says of it. `paths`, UTF-8, are those of the
/// documents.
///
/// The exact path counts first, then one that differs in letter case; a "Filename" without folder is compared with
/// the names of the documents. A record that fits several documents is refused and nothing of it taken. Of several
/// records for one document the last one counts. Fails with a sentence for people when the table has not the form for
/// it.
[[nodiscard]] Expected<MetadataImport> ImportMetadata(const std::vector<SeparatedRecord>& table,
                                                      const std::vector<std::string>& paths,
                                                      const MetadataImportRules& rules);
