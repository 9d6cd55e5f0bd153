#ifndef FERRULE_OPENHOST_VALUES_TEXT_FORMATS_H
#define FERRULE_OPENHOST_VALUES_TEXT_FORMATS_H

#include <optional>
#include <string>
#include <string_view>

#include "hostapi/HostTypes.h"

namespace openhost {

/// Texts as plug-ins pass them: a pointer, a format, and a length in bytes or a zero of the format's width at the
/// end. Raises genErrBadParm for a null pointer, an unknown format or a negative length.
std::u16string Utf16FromFormat(const ASUTF16Val* text, ASUnicodeFormat format,
                               std::optional<ASTArraySize> bytes = std::nullopt);
/// The bytes of a text in a format, with a zero of the format's width at the end.
std::string BytesInFormat(std::u16string_view text, ASUnicodeFormat format);

/// PD text that ends with a zero of its own width.
std::string_view PdTextUpToZero(const char* text);

/// LF, CR and CR LF become the line end of this system.
std::u16string WithSystemLineEnds(std::u16string_view text);
std::u16string WithoutLineEnds(std::u16string_view text);
/// "&Open" becomes "Open"; a doubled one becomes a single one.
std::u16string WithoutAmpersands(std::u16string_view text);
std::u16string WithNarrowAscii(std::u16string_view text);
std::u16string Mapped(std::u16string_view text, char32_t (*map)(char32_t));
std::u16string Replaced(std::u16string_view text, std::u16string_view what, std::u16string_view by);

/// Below 0, 0, above 0. In the order of their characters' numbers.
ASInt32 CompareCharacters(std::u16string_view one, std::u16string_view other);
/// As people sort: without regard to case first.
ASInt32 CompareForPeople(std::u16string_view one, std::u16string_view other);

}  // namespace openhost

#endif
