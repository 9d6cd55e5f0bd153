// Changes entries of the document information of many documents.
#pragma once

#include "protocol/Metadata.h"
#include "tools/ChangingWork.h"

/// Gives each document the entries of the order. A document that has them already is left as it is.
class CMetadataWork final : public CChangingWork {
public:
    explicit CMetadataWork(MetadataChangeOrder order);

    [[nodiscard]] std::string Load(CLogWriter& log) override;

protected:
    [[nodiscard]] Expected<Applied> Apply(CAcrobatDoc& document, ProcessedFile& file) const override;

private:
    static constexpr Words kChanging{
        "Changing metadata", "change of metadata", "changes it",
        "Cannot change the document information. Please check document access permissions."};

    MetadataChangeOrder m_order;
};
