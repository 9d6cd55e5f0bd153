#include "common/SettingsFile.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include <nlohmann/json.hpp>

#include "base/Text.h"

// {"ferrule": "settings", "version": 2, "checksum": "...", "values": {key: value, ...}}. A narrow text is a JSON
// string, a number or flag itself, null null; what JSON does not know is an object of one type word: {"wide": text},
// {"atom": name}, {"binary": Base64}, {"double": "inf"}, {"record": {key: value, ...}}. Bytes that are no text stand
// in texts as base/Text.h says. The checksum is that of the values in their shortest form.
namespace {

using Json = nlohmann::ordered_json;
using Value = CSettingsRecord::Value;

constexpr int kVersion = 2;
constexpr std::string_view kStart = R"({"ferrule":"settings")";  // without white space
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

std::string ChecksumOf(const Json& values)
{
    CChecksum checksum;
    checksum.AddLine(values.dump());
    return checksum.Text();
}

// ---- values as JSON

Json JsonOf(const CSettingsRecord& record);

struct ValueAsJson {
    Json operator()(NullValue) const { return nullptr; }
    Json operator()(bool value) const { return value; }
    Json operator()(std::int32_t value) const { return value; }
    Json operator()(double value) const
    {
        if (std::isfinite(value)) return value;
        return {{"double", std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf"}};
    }
    Json operator()(const std::string& value) const { return TextFromBytes(value); }
    Json operator()(const WideText& value) const { return {{"wide", TextFromBytes(value.utf8)}}; }
    Json operator()(const AtomValue& value) const { return {{"atom", TextFromBytes(value.name)}}; }
    Json operator()(const BinaryValue& value) const { return {{"binary", EncodeBase64(value.bytes)}}; }
    Json operator()(const CSettingsRecord::Nested& value) const { return {{"record", JsonOf(*value)}}; }
};

Json JsonOf(const CSettingsRecord& record)
{
    Json values = Json::object();
    for (const auto& entry : record.Entries())
        values[TextFromBytes(entry.key)] = std::visit(ValueAsJson{}, entry.value);
    return values;
}

std::optional<CSettingsRecord> RecordOf(const Json& values, int depth);

std::optional<Value> TypedValueOf(const std::string& type, const Json& value, int depth)
{
    if (type == "record") {
        auto record = RecordOf(value, depth + 1);
        if (!record) return std::nullopt;
        return Value(std::make_shared<const CSettingsRecord>(std::move(*record)));
    }
    if (!value.is_string()) return std::nullopt;
    const auto& text = value.get_ref<const std::string&>();
    if (type == "wide") return Value(WideText{BytesFromText(text)});
    if (type == "atom") return Value(AtomValue{BytesFromText(text)});
    if (type == "binary") return Value(BinaryValue{DecodeBase64(text)});
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    if (type == "double" && text == "nan") return Value(std::numeric_limits<double>::quiet_NaN());
    if (type == "double" && (text == "inf" || text == "-inf")) return Value(text == "inf" ? kInfinity : -kInfinity);
    return std::nullopt;
}

std::optional<Value> ValueOf(const Json& value, int depth)
{
    if (value.is_null()) return Value(NullValue{});
    if (value.is_boolean()) return Value(value.get<bool>());
    if (value.is_number_float()) return Value(value.get<double>());
    if (value.is_string()) return Value(BytesFromText(value.get_ref<const std::string&>()));
    if (value.is_object() && value.size() == 1)
        return TypedValueOf(value.begin().key(), value.begin().value(), depth);
    if (!value.is_number_integer()) return std::nullopt;
    const auto number = value.get<std::int64_t>();
    if (number != static_cast<std::int32_t>(number)) return std::nullopt;
    return Value(static_cast<std::int32_t>(number));
}

/// Nothing when anything in it is not what a writer writes.
std::optional<CSettingsRecord> RecordOf(const Json& values, int depth)
{
    if (!values.is_object() || depth > kMaxSettingsDepth) return std::nullopt;
    CSettingsRecord record;
    for (const auto& [key, value] : values.items()) {
        auto read = ValueOf(value, depth);
        if (!read) return std::nullopt;
        record.PutValue(BytesFromText(key), std::move(*read));
    }
    return record;
}

// ---- the lines that older versions wrote: type, key and value, separated by single blanks; texts are escaped, so a
// line end is always one. "record" opens a nested record and "." closes the innermost. The last line holds a checksum
// over the lines before, counted with LF, so a file that travelled as CR LF text is still good.

constexpr std::string_view kOldSignature = "Ferrule settings ";
constexpr int kOldVersion = 1;

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
std::optional<Value> ParseNumber(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return Value(number);
}

std::optional<Value> ParseValue(std::string_view type, std::string_view text)
{
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

class COldReader {
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

bool DeeperThan(const CSettingsRecord& record, int levels)
{
    for (const auto& entry : record.Entries()) {
        const auto* nested = std::get_if<CSettingsRecord::Nested>(&entry.value);
        if (nested && (levels == 0 || DeeperThan(**nested, levels - 1))) return true;
    }
    return false;
}

// ---- the file

SettingsFileContent Refused(SettingsFileState state, std::string problem) { return {state, {}, std::move(problem)}; }

SettingsFileContent NewerVersion()
{
    return Refused(SettingsFileState::Newer, "The settings file was written by a newer version.");
}

SettingsFileContent ParseOldSettings(std::string_view bytes)
{
    std::string_view rest = bytes;
    const auto firstLine = TakeLine(rest);
    if (ParseDecimal(firstLine.substr(kOldSignature.size())) > kOldVersion) return NewerVersion();
    auto record = COldReader().Read(firstLine, rest);
    if (!record) return Refused(SettingsFileState::Damaged, "The settings file is damaged.");
    return {SettingsFileState::Ok, std::move(*record), {}};
}

/// Null when it is absent. Borrowed: a copy of what is nested without end would not come to an end either.
const Json& FieldOf(const Json& object, const char* key)
{
    static const Json null;
    const auto field = object.find(key);
    return field == object.end() ? null : *field;
}

/// Whether the text begins as one of ours does, as far as it goes.
bool MayBeSettings(std::string_view bytes)
{
    std::string start;
    for (const char c : bytes.substr(0, 100))
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n') start += c;
    return !start.empty() && (start.starts_with(kStart) || kStart.starts_with(start));
}

}  // namespace

std::string FormatSettings(const CSettingsRecord& record)
{
    const Json values = JsonOf(record);
    const Json file = {
        {"ferrule", "settings"}, {"version", kVersion}, {"checksum", ChecksumOf(values)}, {"values", values}};
    return file.dump(1, '\t') + '\n';
}

SettingsFileContent ParseSettings(std::string_view bytes)
{
    if (bytes.size() >= kOldSignature.size() && bytes.starts_with(kOldSignature)) return ParseOldSettings(bytes);
    if (bytes.empty() || kOldSignature.starts_with(bytes))
        return Refused(SettingsFileState::Damaged, "The settings file is cut short.");
    if (!MayBeSettings(bytes)) return Refused(SettingsFileState::Foreign, "The file is not a settings file.");
    const Json file = Json::parse(bytes, nullptr, false);
    if (file.is_discarded()) return Refused(SettingsFileState::Damaged, "The settings file is damaged.");
    const Json &version = FieldOf(file, "version"), &values = FieldOf(file, "values");
    if (version.is_number_integer() && version > kVersion) return NewerVersion();
    auto record = RecordOf(values, 0);
    if (version != kVersion || !record || FieldOf(file, "checksum") != ChecksumOf(values))
        return Refused(SettingsFileState::Damaged, "The settings file is damaged.");
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
