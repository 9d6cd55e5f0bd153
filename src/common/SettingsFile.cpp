#include "common/SettingsFile.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "platform/FileProblem.h"

// One line per entry: type, key, value, separated by single blanks; texts are escaped, so a line end is always one.
// "record" opens a nested record and "." closes the innermost. The last line holds a checksum over the lines before,
// counted with LF, so a file that travelled as CR LF text is still good.
namespace {

constexpr std::string_view kSignature = "Ferrule settings ";
constexpr int kVersion = 1;
constexpr std::string_view kHexDigits = "0123456789abcdef";

class CChecksum {
public:
    void AddLine(std::string_view line)
    {
        for (const char c : line) Add(static_cast<unsigned char>(c));
        Add('\n');
    }
    std::string Text() const { return FormatText("%016llx", static_cast<unsigned long long>(m_hash)); }

private:
    void Add(unsigned char byte) { m_hash = (m_hash ^ byte) * 0x100000001B3u; }

    std::uint64_t m_hash = 0xCBF29CE484222325u;
};

enum class Escape { Text, Key, All };

std::string Escaped(std::string_view bytes, Escape kind)
{
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = byte >= 0x20 && byte != 0x7F && c != '\\' && (c != ' ' || kind == Escape::Text);
        if (plain && kind != Escape::All) {
            text += c;
            continue;
        }
        if (kind != Escape::All) text += '\\';
        text += kHexDigits[byte >> 4];
        text += kHexDigits[byte & 0xF];
    }
    return text;
}

std::optional<char> HexByte(std::string_view text)
{
    if (text.size() < 2) return std::nullopt;
    const auto high = kHexDigits.find(text[0]), low = kHexDigits.find(text[1]);
    if (high == std::string_view::npos || low == std::string_view::npos) return std::nullopt;
    return static_cast<char>(high << 4 | low);
}

std::optional<std::string> Unescaped(std::string_view text, Escape kind)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size();) {
        if (kind != Escape::All) {
            if (text[i] != '\\') {
                bytes += text[i++];
                continue;
            }
            ++i;
        }
        const auto byte = HexByte(text.substr(i));
        if (!byte) return std::nullopt;
        bytes += *byte;
        i += 2;
    }
    return bytes;
}

class CWriter {
public:
    explicit CWriter(const CSettingsRecord& record)
    {
        Line(std::string(kSignature) + std::to_string(kVersion));
        Entries(record);
        m_text += "end " + m_checksum.Text() + "\n";
    }
    std::string Take() { return std::move(m_text); }

private:
    void Line(std::string_view line)
    {
        m_checksum.AddLine(line);
        m_text.append(line).append("\n");
    }

    void Entries(const CSettingsRecord& record)
    {
        for (const auto& entry : record.Entries()) {
            m_key = Escaped(entry.key, Escape::Key);
            std::visit([this](const auto& value) { Write(value); }, entry.value);
        }
    }

    void Entry(std::string_view type, std::string_view value)
    {
        Line(std::string(type).append(" ").append(m_key).append(" ").append(value));
    }

    void Write(const NullValue&) { Entry("null", ""); }
    void Write(bool value) { Entry("bool", value ? "true" : "false"); }
    void Write(std::int32_t value) { Entry("int", std::to_string(value)); }
    void Write(double value)
    {
        char text[64];  // the shortest text that reads back as the same number, whatever the language
        Entry("double", {text, std::to_chars(text, text + sizeof text, value).ptr});
    }
    void Write(const std::string& value) { Entry("text", Escaped(value, Escape::Text)); }
    void Write(const WideText& value) { Entry("wide", Escaped(value.utf8, Escape::Text)); }
    void Write(const BinaryValue& value) { Entry("binary", Escaped(value.bytes, Escape::All)); }
    void Write(const CSettingsRecord::Nested& nested)
    {
        Entry("record", "");
        Entries(*nested);
        Line(".");
    }

    std::string m_text, m_key;
    CChecksum m_checksum;
};

std::string_view TakeLine(std::string_view& rest)
{
    const auto end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

std::string_view TakeWord(std::string_view& line)
{
    const auto end = line.find(' ');
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
    return word;
}

template <class Number>
std::optional<CSettingsRecord::Value> ParseNumber(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return CSettingsRecord::Value(number);
}

std::optional<CSettingsRecord::Value> ParseValue(std::string_view type, std::string_view text)
{
    using Value = CSettingsRecord::Value;
    if (type == "null") return Value(NullValue{});
    if (type == "bool" && (text == "true" || text == "false")) return Value(text == "true");
    if (type == "int") return ParseNumber<std::int32_t>(text);
    if (type == "double") return ParseNumber<double>(text);
    const auto bytes = Unescaped(text, type == "binary" ? Escape::All : Escape::Text);
    if (!bytes) return std::nullopt;
    if (type == "text") return Value(*bytes);
    if (type == "wide") return Value(WideText{*bytes});
    if (type == "binary") return Value(BinaryValue{*bytes});
    return std::nullopt;
}

class CReader {
public:
    /// The lines behind the signature line; nothing when they are not exactly what a writer writes.
    std::optional<CSettingsRecord> Read(std::string_view firstLine, std::string_view rest)
    {
        m_checksum.AddLine(firstLine);
        m_open.push_back({});
        while (!rest.empty()) {
            std::string_view line = TakeLine(rest);
            if (line.starts_with("end ")) {
                const bool good = rest.empty() && m_open.size() == 1 && line.substr(4) == m_checksum.Text();
                return good ? std::optional(std::move(m_open.front().record)) : std::nullopt;
            }
            m_checksum.AddLine(line);
            if (!TakeEntry(line)) return std::nullopt;
        }
        return std::nullopt;
    }

private:
    struct Level {
        std::string key;
        CSettingsRecord record;
    };

    bool TakeEntry(std::string_view line)
    {
        if (line == ".") return CloseRecord();
        const auto type = TakeWord(line);
        const auto key = Unescaped(TakeWord(line), Escape::Key);
        if (!key || m_open.back().record.Known(*key)) return false;
        if (type == "record") {
            if (m_open.size() > kMaxSettingsDepth) return false;
            m_open.push_back({*key, {}});
            return true;
        }
        auto value = ParseValue(type, line);
        if (value) m_open.back().record.PutValue(*key, std::move(*value));
        return value.has_value();
    }

    bool CloseRecord()
    {
        if (m_open.size() < 2) return false;
        Level closed = std::move(m_open.back());
        m_open.pop_back();
        if (m_open.back().record.Known(closed.key)) return false;
        m_open.back().record.PutRecord(closed.key, std::move(closed.record));
        return true;
    }

    std::vector<Level> m_open;
    CChecksum m_checksum;
};

SettingsFileContent Refused(SettingsFileState state, std::string problem) { return {state, {}, std::move(problem)}; }

bool DeeperThan(const CSettingsRecord& record, int levels)
{
    for (const auto& entry : record.Entries()) {
        const auto* nested = std::get_if<CSettingsRecord::Nested>(&entry.value);
        if (nested && (levels == 0 || DeeperThan(**nested, levels - 1))) return true;
    }
    return false;
}

}  // namespace

std::string FormatSettings(const CSettingsRecord& record) { return CWriter(record).Take(); }

SettingsFileContent ParseSettings(std::string_view bytes)
{
    if (bytes.size() < kSignature.size() && kSignature.starts_with(bytes)) {
        return Refused(SettingsFileState::Damaged, "The settings file is cut short.");
    }
    if (!bytes.starts_with(kSignature)) {
        return Refused(SettingsFileState::Foreign, "The file is not a settings file.");
    }
    std::string_view rest = bytes;
    const auto firstLine = TakeLine(rest);
    if (ParseDecimal(firstLine.substr(kSignature.size())) > kVersion) {
        return Refused(SettingsFileState::Newer, "The settings file was written by a newer version.");
    }
    auto record = CReader().Read(firstLine, rest);
    if (!record) return Refused(SettingsFileState::Damaged, "The settings file is damaged.");
    return {SettingsFileState::Ok, std::move(*record), {}};
}

SettingsFileContent ReadSettingsFile(const std::string& path)
{
    platform::FileResult result;
    const auto bytes = platform::ReadWholeFile(path, kMaxSettingsBytes, &result);
    if (bytes) return ParseSettings(*bytes);
    const bool missing = platform::ProblemOf(result) == platform::FileProblem::Missing;
    return Refused(missing ? SettingsFileState::Missing : SettingsFileState::Unreadable,
                   platform::ErrorText(result.errorNumber));
}

platform::FileResult WriteSettingsFile(const std::string& path, const CSettingsRecord& record)
{
    if (DeeperThan(record, kMaxSettingsDepth)) return platform::Failure(platform::FileProblem::NotARegularFile);
    const std::string bytes = FormatSettings(record);
    if (bytes.size() > kMaxSettingsBytes) return platform::Failure(platform::FileProblem::TooLarge);
    return platform::WriteFileAtomically(path, bytes, platform::Readers::Owner);
}
