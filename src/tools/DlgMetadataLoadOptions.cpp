#include "tools/DlgMetadataLoadOptions.h"

#include <string_view>

namespace {

constexpr std::string_view kSeparatorsOfFiles = ",\t;";
constexpr CharacterSet kSets[] = {CharacterSet::Detect, CharacterSet::Utf8, CharacterSet::Utf16LittleEndian,
                                  CharacterSet::Utf16BigEndian, CharacterSet::CodePage};

}  // namespace

CDlgMetadataLoadOptions::CDlgMetadataLoadOptions(DialogServices services, char separator)
    : m_services(std::move(services)), m_separator(static_cast<int>(kSeparatorsOfFiles.find(separator)))
{
}

bool CDlgMetadataLoadOptions::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

CharacterSet CDlgMetadataLoadOptions::Set() const { return kSets[m_set]; }

char CDlgMetadataLoadOptions::Separator() const { return kSeparatorsOfFiles[static_cast<std::size_t>(m_separator)]; }

MetadataImportRules CDlgMetadataLoadOptions::Rules() const
{
    return {.clearEmpty = m_empty == 1, .match = m_match == 0 ? FileMatch::FullPath : FileMatch::Name};
}

DialogForm CDlgMetadataLoadOptions::Describe()
{
    return {
        .title = "Metadata Load Options",
        .controls = {{.what = Choice{"&Encoding:",
                                     {"As the file itself tells", "UTF-8", "UTF-16, little-endian",
                                      "UTF-16, big-endian", "Code page of this computer"},
                                     &m_set},
                      .id = "encoding"},
                     {.what = Choice{"&Separator:", {"Comma", "Tab", "Semicolon"}, &m_separator}, .id = "separator"},
                     {.what = Choice{"Empty &fields:",
                                     {"Leave the values of the document alone", "Clear the values of the document"},
                                     &m_empty},
                      .id = "empty"},
                     {.what = Choice{"&Find documents by:",
                                     {"Full path, or name where there is no folder", "Name, whatever the folder is"},
                                     &m_match},
                      .id = "match"}},
        .buttons = {{.what = Button{"OK", [] { return FormAnswer::Confirm; }, ButtonRole::Default}},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "encoding"};
}
