// What the builder of an index and its readers of texts tell each other: an order, then a line for each page, then a
// line for the whole document; JSON.
#pragma once

#include <string>

#include "openhost/catalog/DocumentTexts.h"

namespace openhost {

std::string OrderLine(const TextOrder& order);
TextOrder TextOrderFrom(const std::string& line);

std::string PageLine(const std::string& text);
std::string EndLine(const DocumentTexts& texts);
/// Adds what the line says; true when it was the last one. A line that makes no sense ends the document as failed.
bool TakeLine(const std::string& line, DocumentTexts& texts);

}  // namespace openhost
