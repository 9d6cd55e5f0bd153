#include "engine/InputFiles.h"

#include "common/Log.h"
#include "platform/Files.h"

namespace {

/// The folders that a run writes to, as far as they are known before it.
std::vector<std::string> WrittenFolders(const ExecutorSettings& settings, const CWork& work)
{
    std::vector<std::string> folders = settings.furtherOutputPaths;
    if (!settings.alternativeOutputPath.empty()) {
        folders.push_back(settings.alternativeOutputPath);
        return folders;
    }
    for (std::string& folder : work.OwnOutputFolders()) folders.push_back(std::move(folder));
    return folders;
}

}  // namespace

Expected<CInputCollector> CollectInputFiles(const ExecutorSettings& settings, const CWork& work,
                                            std::vector<std::string> extensions, CLogWriter& log)
{
    const auto places = work.InputPlaces(settings, extensions, Asking::Allowed, log);
    if (!places) return Failure(places.Error());
    CInputCollector collector({.extensions = std::move(extensions),
                               .subfolders = !settings.noSubfolders,
                               .leftOut = WrittenFolders(settings, work)});
    for (const std::string& place : *places) collector.AddPath(place);
    for (const UnreadableFolder& folder : collector.Unreadable())
        log.NameValue("Folder cannot be read", folder.path + " (" + platform::ErrorText(folder.errorNumber) + ")", 1);
    for (const std::string& folder : collector.LeftOut())
        log.NameValue("Folder is left out of the input because results go there", folder, 1);
    return collector;
}

std::vector<std::string> InputExtensions(const ExecutorSettings& settings, const CWork& work, CLogWriter& log)
{
    return settings.allowedExtensions ? *settings.allowedExtensions : work.Extensions(log);
}

std::optional<RunInput> CCollectedInputs::Next()
{
    if (m_next == m_collector.Paths().Size()) return std::nullopt;
    RunInput input{.path = m_collector.Paths().Path(m_next)};
    input.number = static_cast<int>(++m_next);
    return input;
}
