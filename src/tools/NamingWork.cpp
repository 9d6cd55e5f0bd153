#include "tools/NamingWork.h"

#include "base/Names.h"
#include "common/Log.h"
#include "engine/InputOpening.h"
#include "hostcalls/HostFrame.h"
#include "platform/Files.h"
#include "platform/ThisProcess.h"
#include "protocol/Json.h"

namespace {

RenameSettings SettingsOf(const NamingOrder& order)
{
    RenameSettings settings;
    CFileNamePart text;
    text.kind = NamePartKind::CustomText;
    text.customText = order.name;
    settings.components.push_back(std::move(text));
    for (const NamingOrder::Rule& rule : order.rules)
        settings.rules.push_back(CFileRenameRule::Predefined(
            rule.isExpression ? kReplaceExpressionRule : kReplaceCharactersRule, rule.search, rule.replace));
    settings.useReplaceRules = !settings.rules.empty();
    settings.textCase = static_cast<NameCase>(order.textCase);
    settings.maxFilename = order.longest;
    return settings;
}

}  // namespace

std::string CNamingWork::Load(CLogWriter& log)
{
    std::string problem;
    auto settings = m_settingsFile.empty() ? SettingsOf(m_order) : ReadRenameSettings(m_settingsFile);
    if (!settings) {
        problem = settings.Error();
    } else if (auto builder = CNameBuilder::From(*settings); !builder) {
        problem = builder.Error();
    } else {
        m_settings = std::move(*settings);
        m_builder.emplace(std::move(*builder));
    }
    if (!problem.empty()) log.NameValue("Naming is rejected", problem, 1);
    m_surroundings.user = platform::UserName();
    m_surroundings.computer = platform::ComputerName();
    return problem;
}

WorkFacts CNamingWork::Facts(const PlanRequest&) const
{
    WorkFacts facts{.noun = "naming",
                    .noInputs = "Naming has no input files of its own.",
                    .inputsMayBeGone = true,
                    .usesOutputFolder = false};
    return facts;
}

ProcessedFile CNamingWork::Process(const std::string& path, int number)
{
    Run().log.NameValue("Opening input document", path, 1);
    ProcessedFile file{.path = path, .input = platform::StampOf(path)};
    std::string problem;
    if (const auto error = CatchHostError([&] { problem = NameDocument(path, number, file); })) problem = error->text;
    if (problem.empty()) return file;
    Run().log.NameValue("Cannot rename file", problem, 1);
    file.outcome = FileOutcome::Failed;
    file.message = "Cannot rename file: " + problem;
    return file;
}

/// Answers why it has no name.
std::string CNamingWork::NameDocument(const std::string& path, int number, ProcessedFile& file) const
{
    CAcrobatDoc document;
    if (std::string reason = OpenInput(document, path, Run().log); !reason.empty()) return reason;
    NameSurroundings surroundings = m_surroundings;
    if (const auto now = platform::LocalTimeNow()) surroundings.time = *now;
    const auto name = m_builder->Build(document, number - 1, surroundings);
    if (!name) return name.Error();
    const bool moves = m_settings.moveOnSuccess && !m_settings.outputFolder.empty();
    file.findings =
        LineOf(NewNameJson({.name = moves ? WithTrailingSeparator(m_settings.outputFolder) + *name : *name,
                            .overwrite = m_settings.overwriteExisting}));
    return {};
}
