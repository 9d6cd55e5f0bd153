#include "tools/DlgReviewNames.h"

#include "base/Text.h"

namespace {

enum NameColumn : std::size_t { kInputFile, kOutputName };

constexpr char kCloseReview[] =
    "You have changed %d name(s). Do you want to close the list without renaming any file?";

}  // namespace

CDlgReviewNames::CDlgReviewNames(DialogServices services, const std::vector<std::string>& paths,
                                 const std::vector<std::string>& names)
    : m_services(std::move(services)),
      m_model({{"Input File", false, 44}, {"Output Filename (double-click on the cell to edit)", true, 46}}),
      m_rows(m_model)
{
    for (std::size_t place = 0; place < paths.size(); ++place)
        m_model.AddRow({paths[place], place < names.size() ? names[place] : std::string()});
    m_rows.Refresh();
    m_rows.MoveTo({0, kOutputName});
}

bool CDlgReviewNames::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

std::vector<std::string> CDlgReviewNames::Names() const
{
    std::vector<std::string> names;
    for (std::size_t row = 0; row < m_model.Rows(); ++row) names.push_back(m_model.Cell({row, kOutputName}));
    return names;
}

FormAnswer CDlgReviewNames::Close()
{
    const int changed = static_cast<int>(m_model.ChangedCells());
    if (changed == 0 || m_services.windows.Message(MessageKind::Question, FormatText(kCloseReview, changed)))
        return FormAnswer::Cancel;
    return FormAnswer::StayOpen;
}

DialogForm CDlgReviewNames::Describe()
{
    const auto undo = [this](bool (CGridRows::*act)()) {
        return [this, act] {
            (void)(m_rows.*act)();
            return FormAnswer::StayOpen;
        };
    };
    return {.title = "Review and Confirm New Filenames",
            .controls = {{.what = StaticText{"Files without a new name are left as they are."}},
                         {.what = GridView{.name = "New filenames", .rows = &m_rows}, .id = "names", .grows = true}},
            .buttons = {{.what = Button{"&Undo", undo(&CGridRows::Undo)},
                         .enabled = [this] { return m_model.CanUndo(); }},
                        {.what = Button{"Re&do", undo(&CGridRows::Redo)},
                         .enabled = [this] { return m_model.CanRedo(); }},
                        {.what = Button{"&Rename", [] { return FormAnswer::Confirm; }}, .id = "rename"},
                        {.what = Button{"Cancel", [this] { return Close(); }, ButtonRole::Cancel}}},
            .focus = "names"};
}
