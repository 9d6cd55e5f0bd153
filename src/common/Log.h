#pragma once

#include <string>
#include <string_view>

/// Takes log entries; each becomes one whole line. False when the log is not open, and then nothing is written.
class CLogWriter {
public:
    virtual ~CLogWriter() = default;

    /// Writes one line as it stands, apart from line breaks, which implementations pass through OneLogLine.
    virtual bool Line(std::string_view text) = 0;

    /// Tabs, then "name : value"; line breaks inside become blanks, so a value cannot forge a line of its own.
    bool NameValue(std::string_view name, std::string_view value, int indentTabs);
    bool NameNumber(std::string_view name, long long number, int indentTabs);
    /// The current local time as the value, padded.
    bool NameTime(std::string_view name, int indentTabs);
};

/// The text with blanks in place of carriage returns, line feeds and NUL bytes.
std::string OneLogLine(std::string_view text);
