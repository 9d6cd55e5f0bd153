#ifndef FERRULE_OPENHOST_VALUES_ENCODING_H
#define FERRULE_OPENHOST_VALUES_ENCODING_H

#include <string>
#include <string_view>

#include "hostapi/HostTypes.h"

namespace openhost {

/// The one encoding of 8-bit texts that this host uses for all of its "host encoding" calls: that of narrow text,
/// which is UTF-8 but in a process on Windows without our manifest. The number is the one that plug-ins see; the
/// others that they may pass are read and written in the same way.
inline constexpr ASHostEncoding kHostEncoding = 0;

/// Host-encoded bytes, file names above all, survive the way there and back: a byte that is not UTF-8 travels as the
/// lone surrogate U+DC80..U+DCFF.
std::u16string Utf16FromHost(std::string_view bytes);
std::string HostFromUtf16(std::u16string_view text);

/// The text form of PDF strings: UTF-16BE behind FE FF (or UTF-8 behind EF BB BF), else PDFDocEncoding. Bytes without
/// a meaning become U+FFFD.
std::u16string Utf16FromPdText(std::string_view bytes);
/// PDFDocEncoding where it can hold the whole text, else UTF-16BE with its mark.
std::string PdTextFromUtf16(std::u16string_view text);

}  // namespace openhost

#endif
