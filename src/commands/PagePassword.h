// A password that stands in the document itself.
#pragma once

#include <string>

#include "base/Expected.h"
#include "hostapi/HostTypes.h"

struct SecuritySettings;

/// Whether the settings take the open password from the text of pages.
[[nodiscard]] bool WantsPagePassword(const SecuritySettings& settings);

/// The password in the narrow code page, on one line and trimmed, never empty: the first match of the expression in
/// page order, else the text in the area. Fails with a sentence that does not tell what was found when there is none.
/// Throws CHostException, also for a document that forbids taking text out.
[[nodiscard]] Expected<std::string> PagePassword(PDDoc document, const SecuritySettings& settings);

/// Why the expression cannot be used; empty when it can.
[[nodiscard]] std::string PagePasswordProblem(const SecuritySettings& settings);
