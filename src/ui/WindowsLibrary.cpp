#include "ui/WindowsLibrary.h"

#include <exception>
#include <utility>

#include "platform/Libraries.h"
#include "ui/GuardedForm.h"
#include "ui/WindowsFactory.h"

namespace {

/// The library's windows, with what must not cross the border to it held back on this side.
class CGuardedWindows final : public CWindows {
public:
    explicit CGuardedWindows(std::unique_ptr<CWindows> windows) : m_windows(std::move(windows)) {}

    bool Show(DialogForm& form) override
    {
        std::exception_ptr caught;
        DialogForm guarded = GuardedForm(form, caught);
        const bool confirmed = m_windows->Show(guarded);
        if (caught) std::rethrow_exception(caught);
        return confirmed;
    }
    bool Message(MessageKind kind, const std::string& text) override { return m_windows->Message(kind, text); }
    std::vector<std::string> OpenFiles(const FileChoice& choice) override { return m_windows->OpenFiles(choice); }
    std::optional<std::string> OpenFile(const FileChoice& choice) override { return m_windows->OpenFile(choice); }
    std::optional<std::string> SaveFile(const FileChoice& choice) override { return m_windows->SaveFile(choice); }
    std::optional<std::string> ChooseFolder(const std::string& title, const std::string& initial) override
    {
        return m_windows->ChooseFolder(title, initial);
    }
    std::unique_ptr<CProgressWindow> MakeProgress() override { return m_windows->MakeProgress(); }

private:
    std::unique_ptr<CWindows> m_windows;
};

void* OwnerOf(void* context)
{
    try {
        const auto& owner = *static_cast<std::function<void*()>*>(context);
        return owner ? owner() : nullptr;
    } catch (...) {
        return nullptr;  // a host that cannot say it gets windows without an owner
    }
}

std::string LibraryBeside(const std::string& plugIn)
{
    return plugIn.substr(0, plugIn.find_last_of("/\\") + 1) + "Ferrule/FerruleWindows" + platform::kLibrarySuffix;
}

}  // namespace

CWindowsLibrary::CWindowsLibrary(const std::string& plugIn, std::function<void*()> owner)
    : m_file(LibraryBeside(plugIn)), m_owner(std::move(owner))
{
}

CWindowsLibrary::~CWindowsLibrary() = default;

Expected<CWindows*> CWindowsLibrary::Windows()
{
    if (m_windows) return m_windows.get();
    std::string problem;
    const auto make = reinterpret_cast<MakeWindowsProc>(platform::FunctionOfLibrary(m_file, kMakeWindows, problem));
    if (!make) return Failure("There are no windows: \"" + m_file + "\" cannot be loaded: " + problem);
    const std::string version = WindowsVersion();
    WindowsRequest request = {version.c_str(), &OwnerOf, &m_owner, {}};
    std::unique_ptr<CWindows> windows(make(&request));
    if (!windows) return Failure(std::string("There are no windows: ") + request.problem);
    m_windows = std::make_unique<CGuardedWindows>(std::move(windows));
    return m_windows.get();
}
