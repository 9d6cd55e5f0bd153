// Changes entries of the document information of many documents.
#pragma once

#include "protocol/Metadata.h"
#include "tools/ChangingWork.h"

/// Gives each document the entries of the order. A document that has them already is left as it is. The changes are
/// appended to the bytes of the file where the host can do that, which keeps signatures valid. Where they are to be
/// forgotten, the document is written as a whole, also when it has the entries already, and old values must be gone.
class CMetadataWork final : public CChangingWork {
public:
    explicit CMetadataWork(MetadataChangeOrder order);

    [[nodiscard]] std::string Load(CLogWriter& log) override;

protected:
    [[nodiscard]] Expected<Applied> Apply(CAcrobatDoc& document, ProcessedFile& file) const override;
    [[nodiscard]] bool WritesWhole(const CAcrobatDoc& document) const override;
    void PrepareSave(const CAcrobatDoc& document, ProcessedFile& file) const override;
    [[nodiscard]] std::string SignatureObjection(const CAcrobatDoc& document) const override;

private:
    static constexpr Words kChanging{
        "Changing metadata", "change of metadata", "changes it",
        "Cannot change the document information. Please check document access permissions."};

    MetadataChangeOrder m_order;
};
