// The pieces that reports in HTML are made of. Texts are UTF-8 and may hold anything.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A text in an element: everything but ASCII letters, digits and a few marks is written by its number. Characters
/// that no document may hold are left out.
[[nodiscard]] std::string HtmlText(std::string_view utf8);
/// A text in the target of a link: everything else by its bytes in hexadecimal, so that it holds for any program.
[[nodiscard]] std::string LinkTarget(std::string_view utf8);

/// Up to the list of facts about the report.
[[nodiscard]] std::string HtmlHead(std::string_view title,
                                   const std::vector<std::pair<std::string, std::string>>& facts);
[[nodiscard]] std::string HtmlTail();

/// The start of a table; its class is that of the styles: "gridtable", "nolines" for one without borders, or none.
[[nodiscard]] std::string HtmlTable(std::string_view tableClass = {});
[[nodiscard]] std::string HtmlTableEnd();
/// A row of headings, each with the class, unless that is empty.
[[nodiscard]] std::string HtmlHeadings(const std::vector<std::string>& names, std::string_view cellClass = {});
[[nodiscard]] std::string HtmlRow(const std::vector<std::string>& cells);

[[nodiscard]] std::string HtmlRule();
[[nodiscard]] std::string HtmlError(std::string_view text);
[[nodiscard]] std::string HtmlMessage(std::string_view text);
[[nodiscard]] std::string HtmlParagraph(std::string_view text);
[[nodiscard]] std::string HtmlSection(std::string_view text);
enum class LinkWindow { Same, New };
[[nodiscard]] std::string HtmlLink(std::string_view target, std::string_view text, LinkWindow window);
enum class ListKind { Numbered, Bulleted };
[[nodiscard]] std::string HtmlList(ListKind kind, const std::vector<std::string>& items);
/// "name : value"
[[nodiscard]] std::string HtmlFact(std::string_view name, std::string_view value);
