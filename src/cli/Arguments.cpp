#include "cli/Arguments.h"

#include <charconv>
#include <cmath>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "base/LikelyName.h"
#include "base/Text.h"
#include "protocol/FinalAction.h"

namespace cli {

namespace {

std::string Joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

std::string FinalActionNames()
{
    std::vector<std::string> names;
    for (const FinalActionFacts& facts : FinalActions()) names.emplace_back(facts.word);
    return Joined(names);
}

std::optional<long long> ParseNumber(std::string_view text)
{
    long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string NumberProblem(const OptionRow& row, const std::string& value)
{
    const auto number = ParseNumber(value);
    if (number && *number >= row.lowest && *number <= row.highest) return {};
    return "it takes a whole number from " + std::to_string(row.lowest) + " to " + std::to_string(row.highest);
}

std::string ChoiceProblem(const std::vector<std::string>& choices, const std::string& value)
{
    for (const std::string& choice : choices)
        if (choice == value) return {};
    return "it takes one of " + Joined(choices);
}

/// What is wrong with a value; empty when nothing is.
std::string ValueProblem(const OptionRow& row, const std::string& value)
{
    switch (row.kind) {
        case ValueKind::Number:
            return NumberProblem(row, value);
        case ValueKind::Size:
            return ParseSize(value) ? "" : "it takes a number of bytes such as 512M or 2G";
        case ValueKind::Choice:
            return ChoiceProblem(row.choices, value);
        case ValueKind::FinalAction:
            return FindFinalAction(value) ? "" : "it takes one of " + FinalActionNames() + ", or a code from 0 to 8";
        case ValueKind::File:
        case ValueKind::Folder:
        case ValueKind::Path:
            return value.empty() ? "it takes a path, not an empty text" : "";
        case ValueKind::None:
        case ValueKind::Text:
            break;
    }
    return {};
}

std::string OperandProblem(const OperandRow& row, const std::string& value)
{
    if (row.kind == ValueKind::Choice) return ChoiceProblem(row.choices, value);
    if (!value.empty()) return {};
    return std::string("it takes a ") + (row.kind == ValueKind::Text ? "word or more" : "path") +
           ", not an empty text";
}

constexpr int kManyOperands = 1 << 28;
/// The parser takes "[a,b]" for a list, which file names are not: a mark in front hides the bracket from it.
constexpr char kMark = '\1';

std::string Marked(const std::string& word)
{
    return word.starts_with('[') || word.starts_with(kMark) ? kMark + word : word;
}

std::string Unmarked(const std::string& word) { return word.starts_with(kMark) ? word.substr(1) : word; }

[[noreturn]] void Refuse(const std::string& name, const std::string& value, const std::string& problem)
{
    throw CLI::ValidationError(name, "\"" + value + "\": " + problem);
}

}  // namespace

/// Builds the parser from the rows of one command and reads its results.
class CArgumentParser {
public:
    explicit CArgumentParser(const CommandRow& command) : m_command(command), m_app("", "ferrule " + command.name)
    {
        m_app.set_help_flag();
        m_app.add_flag("-h,--help", m_help);
        for (const OptionRow& row : command.options) AddOption(row);
        for (const OperandRow& row : command.operands) AddOperand(row);
    }

    ParsedArguments Parse(std::vector<std::string> words)
    {
        if (AsksForHelp(words)) return {.arguments = std::nullopt, .helpWanted = true, .problem = ""};
        std::transform(words.begin(), words.end(), words.begin(), Marked);
        std::reverse(words.begin(), words.end());  // as the library wants them
        try {
            m_app.parse(words);
            return {.arguments = Read(), .helpWanted = false, .problem = ""};
        } catch (const CLI::ParseError& error) {
            return {.arguments = std::nullopt, .helpWanted = false, .problem = Problem(error)};
        }
    }

private:
    /// Also beside mistakes: whoever asks for help gets it.
    static bool AsksForHelp(const std::vector<std::string>& words)
    {
        for (const std::string& word : words) {
            if (word == "--") return false;
            if (word == "-h" || word == "--help") return true;
        }
        return false;
    }

    /// A misspelled option is behind many a problem, such as one that is required and seems to be missing.
    std::string Problem(const CLI::ParseError& error) const
    {
        const std::string unknown = FirstOption(m_app.remaining());
        if (unknown.empty()) return error.what();
        std::vector<std::string> names = {"--help"};
        for (const OptionRow& row : m_command.options)
            if (!row.hidden) names.push_back(row.name);
        return NoSuchOption(unknown, names);
    }

    void AddOption(const OptionRow& row)
    {
        const std::string names = row.shortName.empty() ? row.name : row.shortName + "," + row.name;
        if (row.kind == ValueKind::None) {
            m_app.add_flag(names);
            return;
        }
        auto* const option = m_app.add_option(names, m_texts[row.name]);
        option->expected(1)->allow_extra_args(false)->required(row.required);
        option->multi_option_policy(row.repeatable ? CLI::MultiOptionPolicy::TakeAll
                                                   : CLI::MultiOptionPolicy::TakeLast);
    }

    void AddOperand(const OperandRow& row)
    {
        auto* const option = m_app.add_option(row.name, m_texts[row.name]);
        option->required(!row.optional);
        option->expected(1, row.repeatable ? kManyOperands : 1)->allow_extra_args(row.repeatable);
    }

    CArguments Read()
    {
        CArguments arguments(m_command);
        for (const OptionRow& row : m_command.options) {
            const CLI::Option* const option = m_app.get_option(row.name);
            if (option->count() == 0) continue;
            auto& values = arguments.m_values[row.name];
            if (row.kind == ValueKind::None) continue;
            for (const std::string& text : m_texts[row.name]) {
                values.push_back(Unmarked(text));
                if (const std::string problem = ValueProblem(row, values.back()); !problem.empty())
                    Refuse(row.name, values.back(), problem);
            }
        }
        for (const OperandRow& row : m_command.operands) {
            for (const std::string& text : m_texts[row.name]) {
                const std::string& value = arguments.m_operands.emplace_back(Unmarked(text));
                if (const std::string problem = OperandProblem(row, value); !problem.empty())
                    Refuse(row.name, value, problem);
            }
        }
        return arguments;
    }

    const CommandRow& m_command;
    CLI::App m_app;
    bool m_help = false;
    std::map<std::string, std::vector<std::string>> m_texts;
};

ParsedArguments ParseArguments(const CommandRow& command, const std::vector<std::string>& words)
{
    return CArgumentParser(command).Parse(words);
}

const OptionRow& CArguments::Row(std::string_view option) const
{
    const OptionRow* const row = FindOption(*m_command, option);
    if (!row) throw std::logic_error("ferrule " + m_command->name + " has no option " + std::string(option));
    return *row;
}

bool CArguments::Has(std::string_view option) const { return m_values.contains(Row(option).name); }

std::string CArguments::Text(std::string_view option) const
{
    const OptionRow& row = Row(option);
    const auto found = m_values.find(option);
    return found == m_values.end() || found->second.empty() ? row.fallback : found->second.back();
}

std::vector<std::string> CArguments::All(std::string_view option) const
{
    const auto found = m_values.find(Row(option).name);
    return found == m_values.end() ? std::vector<std::string>() : found->second;
}

long long CArguments::Number(std::string_view option) const { return ParseNumber(Text(option)).value_or(0); }

std::uint64_t CArguments::Size(std::string_view option) const { return ParseSize(Text(option)).value_or(0); }

std::optional<std::uint64_t> ParseSize(std::string_view text)
{
    double number = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || !std::isfinite(number) || number < 0) return std::nullopt;
    const std::string unit = ToLowerAscii(text.substr(static_cast<std::size_t>(rest - text.data())));
    const struct {
        const char* name;
        double bytes;
    } units[] = {{"", 1}, {"k", 1024.0}, {"m", 1048576.0}, {"g", 1073741824.0}};
    for (const auto& [name, bytes] : units) {
        const std::string letter = name;
        const bool fits = unit == letter || (!letter.empty() && (unit == letter + "b" || unit == letter + "ib"));
        if (fits && number * bytes < 1e18) return static_cast<std::uint64_t>(number * bytes);
    }
    return std::nullopt;
}

}  // namespace cli
