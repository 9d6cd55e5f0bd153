// What information entries said before they were changed, and whether a file still says it.
#pragma once

#include <map>
#include <string>
#include <vector>

class QPDF;

namespace openhost {

/// A text that the entry `key` had before, in the information or in the metadata packet.
struct FormerText {
    std::string key, utf8;
};

/// `oldInfo`: the values of changed entries as they were, in the bytes of PDF strings, empty where there was none.
/// The packet of `document` must still be the old one. What an entry still has is not former.
std::vector<FormerText> FormerTextsOf(QPDF& document, const std::map<std::string, std::string>& oldInfo);

/// Takes former keywords out of the packet's list of subjects, where they stand one by one.
void DropFormerSubjects(QPDF& document, const std::vector<FormerText>& former);

/// Where one of these texts still stands in `written`, a file written as a whole of which `changed`, the keys of
/// `oldInfo`, are asked to be new; one clause for people, empty when none does.
///
/// What a document shows is no trace: pages with all they are made of, bookmarks, form fields, tags, layers, attached
/// files and actions. Looked at is everything else: the strings of all other objects, used or not, of the information
/// and the trailer; metadata packets of whatever object, which are unpacked and resolved; the private data that
/// programs leave at pages and documents, unpacked where that is possible. The file must have no earlier revisions.
/// A text counts in PDFDocEncoding, UTF-8 and both orders of UTF-16, alone or among others, but not inside a word and
/// not as part of a text that was asked for. Short texts (below four characters) and those without a letter count
/// where they stand alone, dates under their own name only: other dates may well be the same.
/// Fails: throws what the library throws.
std::string TraceOf(const std::vector<FormerText>& former, const std::map<std::string, std::string>& oldInfo,
                    QPDF& written);

}  // namespace openhost
