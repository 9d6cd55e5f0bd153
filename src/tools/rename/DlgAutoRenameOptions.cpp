#include "tools/rename/DlgAutoRenameOptions.h"

#include <charconv>
#include <iterator>
#include <limits>

#include "base/Text.h"

namespace {

constexpr const char* kCases[] = {"Original Case", "Lowercase", "Uppercase"};

/// The number in a field; one too great for any is the greatest.
Expected<long long> LengthIn(const std::string& text)
{
    const std::string trimmed = Trim(text);
    const char* const end = trimmed.data() + trimmed.size();
    long long number = 0;
    const auto read = std::from_chars(trimmed.data(), end, number);
    if (trimmed.empty() || read.ptr != end || read.ec == std::errc::invalid_argument)
        return Failure("Please enter the maximum length as a number of characters.");
    if (read.ec == std::errc()) return number;
    return trimmed.front() == '-' ? std::numeric_limits<long long>::min() : std::numeric_limits<long long>::max();
}

}  // namespace

const char* NameCaseText(NameCase textCase)
{
    const auto row = static_cast<std::size_t>(textCase);
    return kCases[row < std::size(kCases) ? row : 0];
}

CDlgAutoRenameOptions::CDlgAutoRenameOptions(DialogServices services, NameCase textCase, std::int32_t maxFilename)
    : m_services(std::move(services)),
      m_case(static_cast<int>(textCase)),
      m_maxFilename(maxFilename),
      m_length(std::to_string(maxFilename))
{
    if (m_case < 0 || m_case >= static_cast<int>(std::size(kCases))) m_case = 0;
}

bool CDlgAutoRenameOptions::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

DialogForm CDlgAutoRenameOptions::Describe()
{
    return {
        .title = "File Naming Options",
        .controls = {{.what = Choice{"Text &case:", {std::begin(kCases), std::end(kCases)}, &m_case}, .id = "case"},
                     {.what =
                          TextField{
                              .label = "&Maximum file name length (characters):", .value = &m_length, .width = 10},
                      .id = "length"}},
        .buttons = {{.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "case"};
}

FormAnswer CDlgAutoRenameOptions::Confirm()
{
    const auto length = LengthIn(m_length);
    std::string problem;
    if (!length)
        problem = length.Error();
    else if (*length < kShortestMaxFilename)
        problem = "Maximum allowed file name length is too small.";
    else if (*length > kLongestMaxFilename)
        problem = "Maximum allowed file name length is too big.";
    if (!problem.empty()) {
        m_services.windows.Message(MessageKind::Warning, problem);
        return FormAnswer::StayOpen;
    }
    m_maxFilename = static_cast<std::int32_t>(*length);
    return FormAnswer::Confirm;
}
