#include "tools/rename/NamePartKinds.h"

#include <algorithm>

#include "tools/rename/DlgEnterCustomText.h"
#include "tools/rename/DlgFileNamePart.h"
#include "tools/rename/DlgReplaceWithLookupTable.h"

namespace {

template <class Dialog>
bool EditWith(const DialogServices& services, CFileNamePart& part, int)
{
    Dialog dialog(services, part);
    if (!dialog.Show()) return false;
    part = dialog.Part();
    return true;
}

bool EditLookup(const DialogServices& services, CFileNamePart& part, int depth)
{
    CDlgReplaceWithLookupTable dialog(services, part, depth);
    if (!dialog.Show()) return false;
    part = dialog.Part();
    return true;
}

constexpr NamePartKindRow kKinds[] = {
    {NamePartKind::Number, "Incrementing Number", "A number that grows from document to document",
     EditWith<CDlgFileNamePart>},
    {NamePartKind::Letter, "Auto-incrementing Letter", "A to Z, then AA, BB and so on", EditWith<CDlgFileNamePart>},
    {NamePartKind::PageRange, "Page Range", "The numbers of the first and the last page", EditWith<CDlgFileNamePart>},
    {NamePartKind::PageLabel, "Page Label", "The label of the first page", EditWith<CDlgFileNamePart>},
    {NamePartKind::AreaText, "Text from a Page Area", "What stands inside a rectangle on a page",
     EditWith<CDlgFileNamePart>},
    {NamePartKind::FoundText, "Text Found by a Search", "The first match of a search, as it stands in the document",
     EditWith<CDlgFileNamePart>},
    {NamePartKind::CustomText, "Custom Text", "Your own text, with tags for title, author, date and more",
     EditWith<CDlgEnterCustomText>},
    {NamePartKind::OriginalName, "Original Filename", "The name that the file has now, without its extension",
     EditWith<CDlgFileNamePart>},
    {NamePartKind::RuleText, "Text Matched by a Rule", "The first match of a search rule, in the format of the rule",
     EditWith<CDlgFileNamePart>},
    {NamePartKind::Lookup, "Replacement from a Lookup Table", "What a table holds for the text of other components",
     EditLookup},
};

}  // namespace

std::span<const NamePartKindRow> NamePartKinds() { return kKinds; }

const NamePartKindRow* FindNamePartKind(NamePartKind kind)
{
    const auto row = std::ranges::find(kKinds, kind, &NamePartKindRow::kind);
    return row == std::end(kKinds) ? nullptr : &*row;
}

FormControl NamePartOptions(CFileNamePart& part)
{
    return {
        .what = Group{
            .title = "",
            .controls = {
                {.what = CheckBox{"Put a &space in front of this component", &part.addSpaceInFront}, .id = "space"},
                {.what = CheckBox{"When there is nothing, use this text &instead:", &part.replaceMissingValues},
                 .id = "replace-missing"},
                {.what =
                     TextField{.label = "", .value = &part.missingValueText, .name = "Text when there is nothing"},
                 .id = "missing",
                 .enabled = [&part] { return part.replaceMissingValues; }}}}};
}
