// Turns security settings into a request for the host's standard security handler and applies it.
#pragma once

#include "commands/SecuritySettings.h"
#include "hostcalls/DocumentSecurity.h"

#include <cstddef>
#include <string>

class CAcrobatDoc;

/// The longest password that is handed to the host, in bytes of the narrow code page.
inline constexpr std::size_t kLongestPassword = 255;

/// What to ask of the host for one document: passwords trimmed and cut, permission word, key length and method.
/// `fileName` is without its folder; the lookup table overrides the open password for listed files only.
[[nodiscard]] StandardSecurityRequest MakeSecurityRequest(const SecuritySettings& settings,
                                                          const std::string& fileName, int hostMajorVersion);

/// Prepares the document's new security; it takes effect when the document is saved. With nothing to do the document
/// is left as it is. Answers why a password cannot be had; then, too, the document is as it was. Empty when all is
/// well. `fileName` as above. Throws CHostException when the host refuses.
[[nodiscard]] std::string ApplySecurity(CAcrobatDoc& document, const SecuritySettings& settings,
                                        const std::string& fileName, int hostMajorVersion);
