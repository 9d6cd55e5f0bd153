#include "tools/DlgAddFiles.h"

#include "platform/NarrowText.h"

CDlgAddFiles::CDlgAddFiles(DialogServices services, std::string title, std::string prompt)
    : m_services(std::move(services)), m_title(std::move(title)), m_prompt(std::move(prompt))
{
}

bool CDlgAddFiles::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

DialogForm CDlgAddFiles::Describe()
{
    const auto button = [this](const char* label, void (CDlgAddFiles::*act)(), std::function<bool()> enabled = {}) {
        return FormControl{.what = Button{label,
                                          [this, act] {
                                              (this->*act)();
                                              return FormAnswer::StayOpen;
                                          }},
                           .enabled = std::move(enabled)};
    };
    ListView list{.name = "Input files",
                  .columns = {{"File"}},
                  .count = [this] { return m_list.Size(); },
                  .text = [this](std::size_t row, std::size_t) { return platform::Utf8FromNarrow(m_list.Line(row)); },
                  .selected = &m_selected,
                  .several = true,
                  .lines = 14,
                  .width = 90};
    Row buttons{{button("&Add Files...", &CDlgAddFiles::AddFiles), button("Add &Folder...", &CDlgAddFiles::AddFolder),
                 button("&Remove", &CDlgAddFiles::Remove, [this] { return !m_selected.empty(); }),
                 button("&Clear List", &CDlgAddFiles::Clear, [this] { return m_list.Size() > 0; })}};
    return {.title = m_title,
            .controls = {{.what = StaticText{m_prompt}, .id = "prompt"},
                         {.what = std::move(list), .id = "files", .grows = true},
                         {.what = StaticText{.text = "", .current = [this] { return m_list.CountLabel(); }},
                          .id = "count"},
                         {.what = std::move(buttons)}},
            .buttons = {{.what = Button{"&Help...",
                                        [this] {
                                            m_services.showHelp("AddFiles.htm");
                                            return FormAnswer::StayOpen;
                                        }}},
                        {.what = Button{"OK", [] { return FormAnswer::Confirm; }, ButtonRole::Default}},
                        {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
            .focus = "files"};
}

void CDlgAddFiles::AddFiles()
{
    for (const std::string& path : m_services.windows.OpenFiles({.title = "Select PDF Files",
                                   .filter = "PDF Files (*.pdf)|*.pdf|All Files (*.*)|*.*||",
                                   .defaultExtension = "pdf"}))
        (void)m_list.AddFile(path);
}

void CDlgAddFiles::AddFolder()
{
    if (const auto folder = m_services.windows.ChooseFolder("Select input folder", "")) m_list.AddFolder(*folder);
}

void CDlgAddFiles::Remove()
{
    m_list.Remove(m_selected);
    m_selected.clear();
}

void CDlgAddFiles::Clear()
{
    if (!m_services.windows.Message(MessageKind::Question, "Do you want to clear input file list?")) return;
    m_list.Clear();
    m_selected.clear();
}
