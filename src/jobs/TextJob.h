#pragma once

#include <functional>
#include <string>

#include "protocol/JsonType.h"

class CLogWriter;

/// Reports the text of each page that the job wants: {"page": from 1, "text": UTF-8, lines ended by line feeds}.
/// Answers a sentence that says why that is not possible; empty when all went well. Throws CHostException.
[[nodiscard]] std::string ReportPageText(const Json& job, CLogWriter& log,
                                         const std::function<void(const std::string&)>& report);
