#include "tools/MetadataWork.h"

#include <utility>

#include "common/Log.h"
#include "hostcalls/Information.h"
#include "hostcalls/Jobs.h"
#include "pdflib/AcrobatDoc.h"
#include "protocol/Json.h"

CMetadataWork::CMetadataWork(MetadataChangeOrder order)
    : CChangingWork({order.inPlace, order.breakSignatures}, kChanging), m_order(std::move(order))
{
}

std::string CMetadataWork::Load(CLogWriter& log)
{
    if (!m_order.entries.empty() || !m_order.ofDocuments.empty()) return {};
    const std::string problem = "There is no field to change.";
    log.NameValue("The change of metadata is rejected", problem, 1);
    return problem;
}

Expected<CChangingWork::Applied> CMetadataWork::Apply(CAcrobatDoc& document, ProcessedFile& file) const
{
    if (!document.MayModify()) return Failure("Its restrictions forbid changes; open it with the owner password.");
    if (m_order.rewrite && !JobNextSaveForgets(document.Document()))
        return Failure("This program cannot find out whether old values are gone from a file.");
    std::map<std::string, std::string> entries = m_order.entries;
    if (const auto own = m_order.ofDocuments.find(file.path); own != m_order.ofDocuments.end())
        for (const auto& [key, text] : own->second) entries[key] = text;
    std::vector<PropertyChange> changes;
    for (const auto& [key, text] : entries) {
        const std::string before = InfoEntry(document.Document(), key);
        if (before == text) continue;
        SetInfoEntry(document.Document(), key, text);
        changes.push_back({key, before, text});
        Run().log.NameValue("Changed field", key, 1);
    }
    file.findings = LineOf(ChangesJson(changes));
    if (!changes.empty()) return Applied::Changed;
    file.message = "It has these entries already.";
    // Older values may stand in parts of the file that are in use no more.
    return m_order.rewrite ? Applied::Changed : Applied::NothingToDo;
}

/// The bytes of the file stay as they are, and its signatures with them; what is signed is not written in another way
/// unless that was asked for.
void CMetadataWork::PrepareSave(const CAcrobatDoc& document, ProcessedFile& file) const
{
    if (m_order.rewrite) {
        (void)JobNextSaveForgets(document.Document());
        return;
    }
    const bool isSigned = JobDocumentSigned(document.Document()).value_or(false);
    // Nobody has looked yet whether writing it as a whole would cost something.
    const bool only = !WritesWhole(document) || (isSigned && !Rules().breakSignatures);
    if (!JobNextSaveAppends(document.Document(), only)) return;
    const std::string obstacle = JobAppendObstacle(document.Document()).value_or(std::string());
    if (obstacle.empty()) return;
    const std::string whole = "The whole document was written anew, because " + obstacle + '.';
    Run().log.Line(whole);
    if (file.message.empty()) file.message = whole;
}

bool CMetadataWork::WritesWhole(const CAcrobatDoc& document) const
{
    return m_order.rewrite || JobAppendObstacle(document.Document()) != std::string();
}

std::string CMetadataWork::SignatureObjection(const CAcrobatDoc& document) const
{
    const bool mayBeAppended = JobDocumentCertified(document.Document()) == false && !WritesWhole(document);
    return mayBeAppended ? std::string() : CChangingWork::SignatureObjection(document);
}
