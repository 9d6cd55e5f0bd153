#include "hostcalls/Application.h"
#include "hostcalls/HostPath.h"
#include "hostcalls/HostSlot.h"
#include "hostcalls/HostText.h"

#include <cstring>
#include <span>

namespace {

/// The filters of a file dialog in the host's form, all of it owned here.
class CDialogFilters {
public:
    explicit CDialogFilters(const std::vector<FileFilter>& filters)
    {
        m_texts.reserve(filters.size());
        m_files.reserve(filters.size());
        m_records.reserve(filters.size());
        for (const FileFilter& filter : filters) Add(filter);
        for (AVFileFilterRec& record : m_records) m_pointers.push_back(&record);
    }

    AVFileFilterRec** Pointers() { return m_pointers.empty() ? nullptr : m_pointers.data(); }
    AVArraySize Count() const { return static_cast<AVArraySize>(m_pointers.size()); }

private:
    void Add(const FileFilter& filter)
    {
        auto& files = m_files.emplace_back();
        for (const std::string& extension : filter.extensions) {
            AVFileDescRec file{};
            std::strncpy(file.extension, extension.c_str(), sizeof file.extension - 1);
            files.push_back(file);
        }
        const CHostText& text = m_texts.emplace_back(CHostText::FromNarrow(filter.description));
        m_records.push_back({text.Get(), files.data(), static_cast<AVArraySize>(files.size())});
    }

    std::vector<CHostText> m_texts;
    std::vector<std::vector<AVFileDescRec>> m_files;
    std::vector<AVFileFilterRec> m_records;
    std::vector<AVFileFilterRec*> m_pointers;
};

/// Releases the paths of a dialog's answer and frees their array.
class CChosenPaths {
public:
    CChosenPaths(ASFileSys fileSystem, ASPathName* paths, AVArraySize count)
        : m_fileSystem(fileSystem), m_array(paths), m_paths(paths, paths ? count : 0)
    {
    }
    ~CChosenPaths()
    {
        for (ASPathName path : m_paths)
            hostcalls::Quietly([&] { HostCall(HOST_SLOT(AcroSupport, ASFileSysReleasePath), m_fileSystem, path); });
        hostcalls::Quietly([this] { HostCall(HOST_SLOT(AcroSupport, ASfree), m_array); });
    }
    CChosenPaths(const CChosenPaths&) = delete;
    CChosenPaths& operator=(const CChosenPaths&) = delete;

    std::vector<std::string> Native() const
    {
        std::vector<std::string> names;
        for (ASPathName path : m_paths) names.push_back(NativeFromPath(m_fileSystem, path));
        return names;
    }

private:
    ASFileSys m_fileSystem;
    ASPathName* m_array;
    std::span<ASPathName> m_paths;
};

}  // namespace

std::optional<std::vector<std::string>> OpenFilesDialog(const std::vector<FileFilter>& filters)
{
    CDialogFilters hostFilters(filters);
    AVOpenSaveDialogParamsRec params{};
    params.size = sizeof params;
    params.flags = kAVOpenSaveAllowMultiple;
    params.fileFilters = hostFilters.Pointers();
    params.numFileFilters = hostFilters.Count();
    ASFileSys fileSystem = nullptr;
    ASPathName* paths = nullptr;
    AVArraySize count = 0;
    AVFilterIndex chosenFilter = 0;
    if (!HostCall(HOST_SLOT(AcroView, AVAppOpenDialog), &params, &fileSystem, &paths, &count, &chosenFilter))
        return std::nullopt;
    return CChosenPaths(fileSystem, paths, count).Native();
}

std::optional<std::string> ChooseFolderDialog()
{
    AVOpenSaveDialogParamsRec params{};
    params.size = sizeof params;
    ASFileSys fileSystem = nullptr;
    ASPathName path = nullptr;
    if (!HostCall(HOST_SLOT(AcroView, AVAppChooseFolderDialog), &params, &fileSystem, &path) || !path)
        return std::nullopt;
    const hostcalls::CAtEnd release(
        [&] { HostCall(HOST_SLOT(AcroSupport, ASFileSysReleasePath), fileSystem, path); });
    return NativeFromPath(fileSystem, path);
}
