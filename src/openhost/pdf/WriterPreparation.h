#pragma once

class InputSource;
class QPDF;

namespace openhost {

struct PreparedDocument {
    bool mayLinearise = true;  ///< false: the library's linearisation is known to go wrong for such a document
};

/// Changes what the library's writer would not write faithfully into what it writes as it was meant. `source` is the
/// file that the document was read from, null for one that was made here. Known of the library up to 11.3:
/// - Number signs in names lose their escape: "/G#2341" would become "/G#41", which is "/GA".
/// - The writer takes crypt filters out of a stream's list of filters while it writes. When it writes twice, as it
/// does
///   to linearise, it reads the stream as if it had not been encrypted the second time.
/// - A trailer without a size is written without one.
/// - An identifier that is empty has another length in the first pass of a linearisation than in the second, and all
///   offsets behind it are wrong. Encryption of revisions 2 to 4 depends on the identifier, which then must stay.
PreparedDocument PrepareForWriter(QPDF& document, InputSource* source);

}  // namespace openhost
