// What people look for in an index: words, phrases, and how they are to come together.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "openhost/catalog/IndexFile.h"

namespace openhost {

/// A parsed query.
///
///     word  "a phrase"  begin*  -without  a b  a AND b  a OR b  NOT a  (a OR b) c
///
/// Words side by side all have to be there. AND binds closer than OR. The three words count as operators in capitals
/// only.
class CIndexQuery {
public:
    /// Fails with a sentence that says what is wrong with the query.
    static Expected<CIndexQuery> Parse(std::string_view utf8);
    CIndexQuery(CIndexQuery&&) noexcept;
    CIndexQuery& operator=(CIndexQuery&&) noexcept;
    ~CIndexQuery();

    /// The pages where one of the texts stands that are looked for, in ascending order. `onOnePage`: the query is to
    /// hold for each page by itself, else for all pages of a document together. Fails: CIndexError.
    std::vector<PageKey> Run(CIndexReader& index, bool onOnePage) const;
    /// The texts that are looked for, as an expression of the library.
    std::string WantedTexts() const;

    struct Node;

private:
    explicit CIndexQuery(std::unique_ptr<Node> root);
    std::unique_ptr<Node> m_root;
};

}  // namespace openhost
