// What all work has in common that changes chosen documents and writes each of them once.
#pragma once

#include <string>
#include <vector>

#include "tools/ChosenFilesWork.h"

class CAcrobatDoc;

/// What may be done to the files.
struct ChangeRules {
    bool inPlace = false;          ///< results replace their inputs; else they go into the output folder
    bool breakSignatures = false;  ///< signed documents are changed, too
};

/// Changes each document and saves it in place, or into the output folder. Whatever fails leaves the input as it is,
/// and nothing is written for it.
class CChangingWork : public CChosenFilesWork {
public:
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;

    /// Whether the file failed before anything was to be done to it.
    [[nodiscard]] static bool WasNotOpened(const ProcessedFile& file);

protected:
    /// What people call the work: as it is done ("Protecting"), as a noun ("protection"), and what is done to a
    /// signed document all the same ("protects it").
    struct Words {
        const char *gerund, *noun, *doesAllTheSame;
        const char* cannotApply;  ///< the sentence in front of a reason
    };

    CChangingWork(ChangeRules rules, Words words) : m_rules(rules), m_words(words) {}

    enum class Applied { Changed, NothingToDo };
    /// Changes the open document. Fails with a reason; may throw CHostException.
    [[nodiscard]] virtual Expected<Applied> Apply(CAcrobatDoc& document, ProcessedFile& file) const = 0;
    /// Why a signed document must not be changed; empty when it may.
    [[nodiscard]] virtual std::string SignatureObjection(const CAcrobatDoc& document) const;
    /// Whether the document is going to be written as a whole, so that what it lost to damage would be lost for good.
    /// Asked once more after a save that failed: with another answer than before, saving is tried again.
    [[nodiscard]] virtual bool WritesWhole(const CAcrobatDoc&) const { return true; }
    /// Tells the host how the changed document is to be saved.
    virtual void PrepareSave(const CAcrobatDoc&, ProcessedFile&) const {}
    /// The flags of a save in place besides the document's own.
    [[nodiscard]] virtual int SaveFlags() const { return 0; }
    /// What planning tells besides.
    [[nodiscard]] virtual std::vector<std::string> Warnings() const { return {}; }
    [[nodiscard]] const ChangeRules& Rules() const { return m_rules; }

private:
    [[nodiscard]] std::string Open(CAcrobatDoc& document, const std::string& path) const;
    void ChangeOpen(CAcrobatDoc& document, ProcessedFile& file) const;
    [[nodiscard]] bool MayBeChanged(CAcrobatDoc& document, ProcessedFile& file, bool asWhole) const;
    [[nodiscard]] std::string Objection(const CAcrobatDoc& document, const ProcessedFile& file) const;
    [[nodiscard]] std::string Save(CAcrobatDoc& document, ProcessedFile& file) const;
    [[nodiscard]] std::string SaveInPlace(CAcrobatDoc& document, const ProcessedFile& file) const;
    void Fail(ProcessedFile& file, const char* failure, const std::string& reason) const;

    ChangeRules m_rules;
    Words m_words;
};
