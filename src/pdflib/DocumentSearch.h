// A search by rules in one document: what is found, and what the rules want done then.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "hostapi/HostTypes.h"
#include "pdflib/TextSearch.h"
#include "search/SearchReport.h"
#include "search/SearchRules.h"

/// Gets what went wrong: what it concerns, and why.
using TellTrouble = std::function<void(const std::string& what, const std::string& why)>;

/// What the reports get of a document.
struct SearchedDocument {
    std::string path;  ///< of its file
    SearchFindings found;
    ReportEntry entry;
};

/// What a rule as it is kept looks for.
[[nodiscard]] TextRule TextRuleOf(const SearchRule& rule);

/// Rules that are compiled once and then used for any number of documents.
class CDocumentSearch {
public:
    explicit CDocumentSearch(SearchSettings settings);

    const SearchSettings& Settings() const { return m_settings; }
    /// The sentence for each rule that cannot be used; empty when all can.
    const std::string& Problem() const { return m_search.Problem(); }

    /// Searches, and for each rule that has found something runs its script and makes its copy. What goes wrong with
    /// one rule is told and does not keep the others. Fails: CHostException.
    [[nodiscard]] SearchedDocument Search(PDDoc document, const TellTrouble& tell) const;
    /// The line by which what was found gets to whoever writes the reports; empty when no report is wanted.
    [[nodiscard]] std::string ReportEventOf(const SearchedDocument& searched) const;

private:
    SearchSettings m_settings;
    CTextSearch m_search;
};

/// What the reports of this host say of it.
[[nodiscard]] HostFacts FactsOfThisHost();

/// Copies a document's file into a folder, under its own name between two texts, with a number when that is taken.
/// The copy is an act of the run. Answers why there is none; empty when there is one.
[[nodiscard]] std::string CopyFound(const std::string& file, const std::string& folder,
                                    const std::string& before = {}, const std::string& after = {});
