#include "ui/wx/FileQuestions.h"

#include <wx/dirdlg.h>
#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/msgdlg.h>

#include "base/Names.h"
#include "base/Text.h"
#include "platform/Files.h"
#include "ui/wx/Text.h"

namespace {

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts(1);
    for (const char letter : text)
        if (letter == separator)
            parts.emplace_back();
        else
            parts.back() += letter;
    return parts;
}

std::string Patterns(const std::string& patterns)
{
#ifdef _WIN32
    return patterns;  // the system finds names however they are written
#else
    std::string all;
    for (const std::string& part : Split(patterns, ';')) {
        const std::size_t first = part.find_first_not_of(' ');
        if (first == std::string::npos) continue;
        const std::string pattern = part.substr(first) == "*.*" ? "*" : part.substr(first);
        const std::string capitals = UpperCasedName(pattern);
        for (const std::string& one : {pattern, capitals})
            if ((";" + all + ";").find(";" + one + ";") == std::string::npos) all += (all.empty() ? "" : ";") + one;
    }
    return all;
#endif
}

wxString TitleOf(const FileChoice& choice, const char* usual)
{
    return choice.title.empty() ? wxString(usual) : Shown(choice.title);
}

}  // namespace

std::string ToolkitFilter(const std::string& filter)
{
    std::vector<std::string> parts = Split(filter, '|');
    while (!parts.empty() && parts.back().empty()) parts.pop_back();
    std::string answer;
    for (std::size_t place = 0; place + 1 < parts.size(); place += 2)
        answer += (answer.empty() ? "" : "|") + parts[place] + "|" + Patterns(parts[place + 1]);
    return answer;
}

std::string WithExtension(const std::string& path, const std::string& extension)
{
    const std::string name = path.substr(path.find_last_of("/\\") + 1);
    const bool has = name.find('.', 1) != std::string::npos && !name.ends_with('.');
    return has || extension.empty() ? path : path + (name.ends_with('.') ? "" : ".") + extension;
}

namespace {

/// The extension that the names of the chosen kind of file have; that of the question when the kind has no single
/// one.
std::string ExtensionOfKind(const FileChoice& choice, int kind)
{
    const std::vector<std::string> parts = Split(choice.filter, '|');
    const auto patterns = static_cast<std::size_t>(kind) * 2 + 1;
    if (kind < 0 || patterns >= parts.size()) return choice.defaultExtension;
    const std::string first = Split(parts[patterns], ';').front();
    const bool names = first.starts_with("*.") && first.size() > 2 && first.find('*', 2) == std::string::npos;
    return names ? first.substr(2) : choice.defaultExtension;
}

}  // namespace

std::vector<std::string> AskFiles(wxWindow* parent, const FileChoice& choice, bool several)
{
    const wxFileName initial(ShownPath(choice.initial));
    wxFileDialog dialog(parent, TitleOf(choice, wxFileSelectorPromptStr), initial.GetPath(), initial.GetFullName(),
                        Shown(ToolkitFilter(choice.filter)),
                        wxFD_OPEN | wxFD_FILE_MUST_EXIST | (several ? wxFD_MULTIPLE : 0));
    if (dialog.ShowModal() != wxID_OK) return {};
    wxArrayString paths;
    if (several)
        dialog.GetPaths(paths);
    else
        paths.Add(dialog.GetPath());
    std::vector<std::string> files;
    for (const wxString& path : paths) files.push_back(TypedPath(path));
    return files;
}

std::optional<std::string> AskTarget(wxWindow* parent, const FileChoice& choice)
{
    const wxFileName initial(ShownPath(choice.initial));
    for (;;) {
        wxFileDialog dialog(parent, TitleOf(choice, wxFileSelectorPromptStr), initial.GetPath(),
                            initial.GetFullName(), Shown(ToolkitFilter(choice.filter)),
                            wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
        if (dialog.ShowModal() != wxID_OK) return std::nullopt;
        const std::string typed = TypedPath(dialog.GetPath());
        const std::string path = WithExtension(typed, ExtensionOfKind(choice, dialog.GetFilterIndex()));
        // The system has asked about the name as it was typed.
        if (path == typed || !wxFileName::FileExists(ShownPath(path))) return path;
        wxMessageDialog question(parent, ShownPath(path) + " already exists. Do you want to replace it?", "Ferrule",
                                 wxYES_NO | wxNO_DEFAULT | wxICON_WARNING);
        if (question.ShowModal() == wxID_YES) return path;
    }
}

std::optional<std::string> AskFolder(wxWindow* parent, const std::string& title, const std::string& initial)
{
    wxDirDialog dialog(parent, title.empty() ? wxString(wxDirSelectorPromptStr) : Shown(title), ShownPath(initial),
                       wxDD_DEFAULT_STYLE);
    if (dialog.ShowModal() != wxID_OK) return std::nullopt;
    return TypedPath(dialog.GetPath());
}
