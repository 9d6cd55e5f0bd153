#include "hostcalls/Application.h"

#include <cstdint>
#include <cstring>
#include <span>

#include "hostcalls/Cab.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "hostcalls/HostTables.h"
#include "hostcalls/Menus.h"

namespace {

constexpr double kQuitYieldSeconds = 2.0;

}  // namespace

HostVersion GetHostVersion()
{
    AVTVersionNumPart major = 0;
    AVTVersionNumPart minor = 0;
    HostCall(HOST_SLOT(AcroView, AVAppGetVersion), &major, &minor);
    return {major, static_cast<std::uint16_t>(minor) >> 8};
}

std::string HostName() { return AtomText(HostCall(HOST_SLOT(AcroView, AVAppGetName))); }

std::string HostLanguage()
{
    char code[16] = {};  // four bytes are due; the rest is a margin
    HostCall(HOST_SLOT(AcroView, AVAppGetLanguage), code);
    code[sizeof code - 1] = '\0';
    return code;
}

std::optional<std::string> Product()
{
    const void* answer = HostCall(HOST_SLOT(Core, ASGetConfiguration), Atom("Product"));
    const auto unknown = reinterpret_cast<const void*>(~std::uintptr_t{0});
    if (!answer || answer == unknown) return std::nullopt;
    return std::string(static_cast<const char*>(answer));
}

void AlertNote(const std::string& text) { HostCall(HOST_SLOT(AcroView, AVAlertNote), text.c_str()); }

bool AlertConfirm(const std::string& text)
{
    return HostCall(HOST_SLOT(AcroView, AVAlertConfirm), text.c_str()) != 0;
}

bool ExecuteQuit()
{
    auto quit = FindMenuItem("Quit");
    if (!quit) return false;
    HostCall(HOST_SLOT(AcroView, AVAppYieldToOtherApps), kQuitYieldSeconds);
    quit->Execute();
    return true;
}

void RegisterIdle(AVIdleProc procedure, unsigned periodTicks)
{
    HostCall(HOST_SLOT(AcroView, AVAppRegisterIdleProc), Callback(procedure), nullptr, periodTicks);
}

void RegisterNotification(NSelector selector, void* procedure)
{
    HostCall(HOST_SLOT(AcroView, AVAppRegisterNotification), selector, HostTables().Extension(),
             WrapCallback(procedure), nullptr);
}

void SetWaitCursor()
{
    AVCursor cursor = HostCall(HOST_SLOT(AcroView, AVSysGetStandardCursor), WAIT_CURSOR);
    HostCall(HOST_SLOT(AcroView, AVSysSetCursor), cursor);
}

bool ModalWindowIsOpen() { return HostCall(HOST_SLOT(AcroView, AVAppModalWindowIsOpen)) != 0; }

void* ModalParent() { return HostCall(HOST_SLOT(Win, WinAppGetModalParent), nullptr); }

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

bool CatalogPresent() { return HostTables().Has(HostTable::Catalog); }

// The host takes a writable text; it gets one of its own.
IndexStatus BuildCatalogIndex(const std::string& indexPath)
{
    std::string path = indexPath;
    return HostCall(HOST_SLOT(Catalog, CatalogBuildIndex), path.data());
}

IndexStatus PurgeCatalogIndex(const std::string& indexPath)
{
    std::string path = indexPath;
    return HostCall(HOST_SLOT(Catalog, CatalogPurgeIndex), path.data());
}
