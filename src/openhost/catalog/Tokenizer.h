// How texts are divided into words for the index.
#pragma once

#include <sqlite3.h>

namespace openhost {

inline constexpr char kWordTokenizer[] = "ferrule";

/// Makes the tokenizer known to a database: words without letter case, accents and forms of letters. Scripts that put
/// no spaces between words are indexed character by character, so that any run of characters is found as a phrase.
/// False: this library has no full-text search.
bool RegisterWordTokenizer(sqlite3* database);

}  // namespace openhost
