// What is known of the handler of a step by its name, and the names that it has.
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// A step of this plug-in.
[[nodiscard]] bool IsOwnStep(std::string_view handlerName);
/// A step that is part of the host, under any name that it had in any version.
[[nodiscard]] bool IsHostStep(std::string_view handlerName);
/// A step of another maker: nobody here knows what it does.
[[nodiscard]] bool IsForeignStep(std::string_view handlerName);

/// A step that works on an index which lies outside of the documents.
[[nodiscard]] bool IsCatalogStep(std::string_view handlerName);
/// A step that writes one report on all documents.
[[nodiscard]] bool IsReportingStep(std::string_view handlerName);
/// A step that saves the document.
[[nodiscard]] bool IsSaveStep(std::string_view handlerName);
/// A step that runs a script on the document.
[[nodiscard]] bool IsScriptStep(std::string_view handlerName);

/// A step that gives documents their protection: a document that it did not come through must not be saved.
[[nodiscard]] bool IsProtectingStep(std::string_view handlerName);

/// Whether a trial run may let the step work: all that it writes goes where the trial run notices it.
[[nodiscard]] bool MayBeTried(std::string_view handlerName);

/// The newer name under which a command may be registered when the one in the sequence is not. One way only.
[[nodiscard]] std::optional<std::string> AlternativeHandler(std::string_view handlerName);

/// The name under which the host has the handler, which may be a newer one; nothing when it has none. Throws
/// CHostException.
[[nodiscard]] std::optional<std::string> AvailableHandler(const std::string& name);
