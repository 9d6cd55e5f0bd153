#include "Shots.h"
#include "ui/GridRows.h"

namespace {

FormAnswer Ok() { return FormAnswer::Confirm; }
FormAnswer Leave() { return FormAnswer::Cancel; }
FormAnswer Stay() { return FormAnswer::StayOpen; }

std::vector<FormControl> OkAndCancel()
{
    return {{.what = Button{"&Help", Stay}},
            {.what = Button{"OK", Ok, ButtonRole::Default}},
            {.what = Button{"Cancel", Leave, ButtonRole::Cancel}}};
}

constexpr char kLongText[] =
    "A text that is longer than a line is wrapped, and the dialog becomes no wider by it: R&D stays R&D, and what "
    "stands below moves down.";

void ShowFields(CWindows& windows)
{
    bool open = true, print = false;
    std::string user = "Leinen los! Größe 文", owner, note = "First line\nSecond line", pages = "12";
    int method = 1, form = 0;
    DialogForm dialog{.title = "Fields", .buttons = OkAndCancel(), .focus = "user"};
    dialog.controls = {
        {.what = StaticText{.text = "A heading", .bold = true}},
        {.what = StaticText{.text = kLongText}},
        {.what =
             Group{
                 "Passwords",
                 {{.what = CheckBox{"Password &required to open", &open}},
                  {.what = TextField{.label = "&User password:", .value = &user, .secret = true},
                   .id = "user",
                   .enabled = [&open] { return open; }},
                  {.what = TextField{.label = "&Master password of the document:", .value = &owner, .secret = true}},
                  {.what = Choice{"&Encryption:", {"RC4, 128 bit", "AES, 128 bit", "AES, 256 bit"}, &method}}}}},
        {.what = Row{{{.what = TextField{.label = "&Pages:", .value = &pages, .width = 6}},
                      {.what = StaticText{.text = "of the document"}},
                      {.what = Button{"&Browse...", Stay}}}}},
        {.what = Choice{"&Form of the file:", {"Batch file", "Shell script"}, &form, true}},
        {.what = CheckBox{"A box that cannot be &checked at present", &print}, .enabled = [] { return false; }},
        {.what = TextField{.label = "&Note:", .value = &note, .lines = 4}, .grows = true},
    };
    (void)windows.Show(dialog);
}

void ShowLists(CWindows& windows)
{
    std::vector<std::size_t> selected = {1, 3};
    constexpr std::size_t kRows = 100'000;
    int leaf = 1;
    DialogForm dialog{.title = "Lists", .buttons = OkAndCancel()};
    ListView list{.name = "Chosen files",
                  .columns = {{" Description"}, {" File Name", 24}, {" File Number", 10}},
                  .count = [] { return kRows; },
                  .text =
                      [](std::size_t row, std::size_t column) {
                          return column == 0   ? "The file cannot be opened with this password"
                                 : column == 1 ? "Büro " + std::to_string(row) + ".pdf"
                                               : std::to_string(row + 1);
                      },
                  .selected = &selected,
                  .several = true,
                  .icon = [](std::size_t row) { return row % 3 == 0 ? ListIcon::Error : ListIcon::Warning; },
                  .activates = "&Remove"};
    TreeView tree{.name = "Elements",
                  .nodes = {{"Characters", {"Any letter", "Any digit"}}, {"Repetition", {"Once", "Many times"}}},
                  .selected = &leaf,
                  .lines = 6};
    dialog.controls = {
        {.what = StaticText{.text = "Errors and warnings:", .bold = true}},
        {.what = Row{{{.what = list, .grows = true},
                      {.what = Group{"",
                                     {{.what = Button{"&Add Files...", Stay}},
                                      {.what = Button{"Add F&older...", Stay}},
                                      {.what = Button{"&Remove", Stay}},
                                      {.what = Button{"Move &Up", Stay}, .enabled = [] { return false; }}}}}}},
         .grows = true},
        {.what = tree},
    };
    (void)windows.Show(dialog);
}

void ShowGrid(CWindows& windows)
{
    CGridModel model({{"File", false, 30}, {"Title", true, 40}, {"Pages", false, 8}});
    for (int row = 0; row < 10'000; ++row)
        model.AddRow(
            {"Büro " + std::to_string(row) + ".pdf", row % 3 == 0 ? "" : "A title", std::to_string(row % 17)});
    CGridRows rows(model);
    (void)rows.Edit(1, 1, "Another title");
    (void)rows.Edit(2, 1, "Two\nlines");
    rows.SortBy(0, SortOrder::Ascending);
    rows.Select({{2, 1, 4, 2}});
    DialogForm dialog{.title = "Grid", .buttons = OkAndCancel(), .focus = "grid"};
    dialog.controls = {{.what = GridView{.name = "Documents", .rows = &rows}, .id = "grid", .grows = true}};
    (void)windows.Show(dialog);
}

void ShowProgress(CWindows& windows)
{
    const auto progress = windows.MakeProgress();
    if (!progress) return;
    progress->SetRange(10);
    progress->Show();
    for (int position = 0; progress->IsVisible(); ++position) {
        progress->SetText("Processing file 4 of 10");
        progress->SetStatus(
            "C:/Documents/a folder with a long name/and another one in it/Büro 2026, January to March.pdf");
        progress->SetPosition(4);
        progress->PumpMessages(101);
    }
}

}  // namespace

std::vector<Shot> ControlShots()
{
    return {{"controls-fields", ShowFields},
            {"controls-lists", ShowLists},
            {"controls-grid", ShowGrid},
            {"controls-progress", ShowProgress}};
}
