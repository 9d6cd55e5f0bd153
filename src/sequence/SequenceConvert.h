// A sequence in its other form.
#pragma once

#include <string>
#include <vector>

#include "base/Expected.h"
#include "sequence/Findings.h"
#include "sequence/SequenceFile.h"

struct ConversionRequest {
    SequenceForm to = SequenceForm::Xml;
    std::string target;              // the file in whose folder the host may write
    std::string title, description;  // of XML that is made of the host's form; an empty title: the source's name
};

/// The bytes of the other form and what it has no place for: an error is what a run would do otherwise than before.
struct ConvertedSequence {
    std::string bytes;
    std::vector<SequenceFinding> losses;
};

/// Fails with the part of a sentence that follows "cannot be converted: ". Throws CHostException.
[[nodiscard]] Expected<ConvertedSequence> ConvertSequence(const SequenceSource& source,
                                                          const ConversionRequest& request);
