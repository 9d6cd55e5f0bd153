#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "openhost/pdf/Encryption.h"
#include "openhost/pdf/FormerTexts.h"
#include "openhost/pdf/IncrementalUpdate.h"

class QPDF;

namespace openhost {

/// How a written file is encrypted, when it came out as it should.
struct WrittenEncryption {
    EncryptionRecord record;
    std::string fileKey;
    std::string userPasswordBytes;
    /// Set for new protection: the file is then opened by both passwords, too, once for each distinct request.
    std::optional<std::string> ownerPasswordBytes = {};
};

/// Opens a file that was just written, without any repair, and compares it with the document that it was written
/// from: every object stands where the cross-reference table says, the encryption has the entries that were computed,
/// there are the same pages with the same content streams, and nothing is complained about that was not wrong before.
///
/// `original` is the document as it was given to the writer, `complaints` what the library said about it. Without
/// `encryption` the file must not be encrypted.
/// Answers what is wrong in a few words; empty when all is well. Does not throw what the library throws.
std::string ReadBackProblem(const std::string& path, QPDF& original, const std::vector<std::string>& complaints,
                            const std::optional<WrittenEncryption>& encryption);

/// Where a text of `former` still stands in a file that was written as a whole, see TraceOf. Nor does it throw.
std::string FormerTextProblem(const std::string& path, const std::vector<FormerText>& former,
                              const std::map<std::string, std::string>& oldInfo,
                              const std::optional<WrittenEncryption>& encryption);

/// The same as ReadBackProblem for a file that `update` was appended to: it begins with all bytes of `source`, the
/// appended part parses, every object that is not in that part is defined as before, catalogue and encryption are the
/// same, and information and metadata packet are as they are in `original`, the document with its changes.
std::string AppendedProblem(const std::string& path, QPDF& original, InputSource& source,
                            const IncrementalUpdate& update, const std::vector<std::string>& complaints,
                            const std::optional<WrittenEncryption>& encryption);

}  // namespace openhost
