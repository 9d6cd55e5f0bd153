#include "naming/DocumentName.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Information.h"
#include "hostcalls/PageNames.h"
#include "pdflib/DocumentPages.h"
#include "pdflib/DocumentSearch.h"
#include "platform/NarrowText.h"

/// One document while its name is made.
struct CNameBuilder::Naming {
    const CNameBuilder& builder;
    const CAcrobatDoc& document;
    int index;
    const NameSurroundings& surroundings;
    std::optional<CDocumentText> text = {};
    std::optional<SearchFindings> findings = {};

    /// Made when it is first needed, and the pages of areas stay in it.
    CDocumentText& Text()
    {
        if (text) return *text;
        const bool fonts = builder.m_search && builder.m_search->NeedsFonts();
        text.emplace(document.Document(), fonts ? CHostWordFinder::Fonts::Yes : CHostWordFinder::Fonts::No);
        for (const int page0 : builder.m_areaPages0) text->Keep(page0);
        return *text;
    }
};

namespace {

std::string TwoDigits(int number) { return FormatText("%02d", number); }

using Document = CAcrobatDoc;
using Around = NameSurroundings;

const NameTag kNameTags[] = {
    {"<title>", "Document", [](const Document& of, const Around&) { return InfoEntry(of.Document(), "Title"); }},
    {"<subject>", "Document", [](const Document& of, const Around&) { return InfoEntry(of.Document(), "Subject"); }},
    {"<author>", "Document", [](const Document& of, const Around&) { return InfoEntry(of.Document(), "Author"); }},
    {"<pagecount>", "Document", [](const Document& of, const Around&) { return std::to_string(of.PageCount()); }},
    {"<bates_start>", "Bates numbers", [](const Document&, const Around&) { return std::string("No Bates"); }},
    {"<bates_end>", "Bates numbers", [](const Document&, const Around&) { return std::string("No Bates"); }},
    {"<year>", "Date", [](const Document&, const Around& at) { return std::to_string(at.time.year); }},
    {"<month>", "Date", [](const Document&, const Around& at) { return TwoDigits(at.time.month); }},
    {"<day>", "Date", [](const Document&, const Around& at) { return TwoDigits(at.time.day); }},
    {"<hour>", "Time", [](const Document&, const Around& at) { return TwoDigits(at.time.hour); }},
    {"<minute>", "Time", [](const Document&, const Around& at) { return TwoDigits(at.time.minute); }},
    {"<second>", "Time", [](const Document&, const Around& at) { return TwoDigits(at.time.second); }},
    {"<user>", "Surroundings", [](const Document&, const Around& at) { return at.user; }},
    {"<computer>", "Surroundings", [](const Document&, const Around& at) { return at.computer; }},
};

/// Nothing for a tag that is none.
std::optional<std::string> TagValue(const std::string& tag, const CAcrobatDoc& document,
                                    const NameSurroundings& surroundings)
{
    for (const NameTag& known : kNameTags)
        if (tag == known.tag) return known.value(document, surroundings);
    return std::nullopt;
}

/// The text with each tag replaced where it stands, so that a title with "<author>" in it is a title.
std::string WithTags(const std::string& text, const CAcrobatDoc& document, const NameSurroundings& surroundings)
{
    const auto isPartOfTag = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    std::string expanded;
    for (std::size_t place = 0; place < text.size();) {
        std::size_t end = place + 1;
        if (text[place] == '<')
            while (end < text.size() && isPartOfTag(text[end])) ++end;
        std::optional<std::string> value;
        if (end > place + 1 && end < text.size() && text[end] == '>')
            value = TagValue(ToLowerAscii(text.substr(place, end + 1 - place)), document, surroundings);
        expanded += value ? *value : text.substr(place, end - place);
        place = value ? end + 1 : end;
    }
    return expanded;
}

std::string TextInside(const CFileNamePart& part, CDocumentText& pages)
{
    const SettingsRectangle& area = part.area;
    const PageRect rectangle{std::min(area.left, area.right), std::min(area.bottom, area.top),
                             std::max(area.left, area.right), std::max(area.bottom, area.top)};
    const CPageText inside = pages.Page(part.pageNumber).Inside(rectangle);
    const CSearchedText& found = inside.Text(LineEnds::Blanks);
    return Trim(found.Utf8({.start = 0, .length = found.View().size()}));
}

bool Searches(NamePartKind kind) { return kind == NamePartKind::FoundText || kind == NamePartKind::RuleText; }

}  // namespace

std::span<const NameTag> NameTags() { return kNameTags; }

/// Why the component cannot be used; empty when it can.
std::string CNameBuilder::Prepare(Component& component, Wanted& wanted)
{
    const CFileNamePart& part = component.part;
    if (Searches(part.kind)) {
        TextRule rule = TextRuleOf(part.searchQuery);
        rule.stopOnMatch = true;
        rule.pages = {.firstPage0 = std::max(part.pageNumber, 0),
                      .lastPage0 = -1,
                      .selection = static_cast<int>(PageSelection::FromTo)};
        if (part.kind == NamePartKind::FoundText) rule.format.clear();
        component.rule = wanted.rules.size();
        wanted.rules.push_back(rule);
        return CTextSearch({rule}).Problem();
    }
    if (part.kind == NamePartKind::AreaText) wanted.areaPages0.insert(part.pageNumber);
    if (part.kind == NamePartKind::Lookup && part.replaceBeforeLookup) {
        CRegularExpression& expression = component.beforeLookup.emplace();
        if (!expression.Compile(part.searchBeforeLookup, LetterCase::Matters)) return expression.Error();
    }
    return {};
}

Expected<std::vector<CNameBuilder::Component>> CNameBuilder::Compile(const std::vector<CFileNamePart>& parts,
                                                                     Wanted& wanted)
{
    std::vector<Component> components;
    for (const CFileNamePart& part : parts) {
        Component component{.part = part, .rule = {}, .beforeLookup = {}, .children = {}};
        if (const std::string problem = Prepare(component, wanted); !problem.empty())
            return Failure("The filename component \"" + part.Description() + "\" cannot be used. " + problem);
        if (part.kind == NamePartKind::Lookup) {
            auto children = Compile(part.children, wanted);
            if (!children) return children;
            component.children = std::move(*children);
        }
        components.push_back(std::move(component));
    }
    return components;
}

Expected<CNameBuilder> CNameBuilder::From(const RenameSettings& settings)
{
    CNameBuilder builder;
    builder.m_settings = settings;
    Wanted wanted;
    auto components = Compile(settings.components, wanted);
    if (!components) return Failure(components.Error());
    builder.m_components = std::move(*components);
    builder.m_areaPages0 = std::move(wanted.areaPages0);
    if (!wanted.rules.empty()) builder.m_search.emplace(wanted.rules);
    if (!settings.useReplaceRules) return builder;
    auto rules = CNameRules::From(settings.rules);
    if (!rules) return Failure(rules.Error());
    builder.m_rules = std::move(*rules);
    return builder;
}

/// The first component that searches does so for all of them.
Expected<std::string> CNameBuilder::Found(const Component& component, Naming& naming)
{
    if (component.part.pageNumber >= naming.document.PageCount()) return std::string();
    if (!naming.findings) {
        const CDocumentPages pages(naming.document.Document());
        naming.findings =
            naming.builder.m_search->Search([&]() -> CDocumentText& { return naming.Text(); }, pages, {});
    }
    const RuleFindings& own = naming.findings->rules[*component.rule];
    if (!own.problem.empty()) return Failure(own.problem);
    return own.found.empty() ? std::string() : own.found.front().text;
}

/// Text that cannot be had is the document's number.
std::string CNameBuilder::AreaText(const CFileNamePart& part, Naming& naming)
{
    if (part.pageNumber < 0 || part.pageNumber >= naming.document.PageCount()) return {};
    std::string text;
    const auto error = CatchHostError([&] { text = TextInside(part, naming.Text()); });
    return error ? std::to_string(naming.index + 1) : text;
}

Expected<std::string> CNameBuilder::LookedUp(const Component& component, Naming& naming)
{
    auto key = Joined(component.children, naming);
    if (key && component.beforeLookup)
        key =
            component.beforeLookup->ReplaceAll(CSearchedText::FromUtf8(*key), component.part.replacementBeforeLookup);
    if (!key) return key;
    const auto entry = component.part.lookupTable.find(*key);
    return entry == component.part.lookupTable.end() ? std::string() : entry->second;
}

Expected<std::string> CNameBuilder::TextOf(const Component& component, Naming& naming)
{
    const CFileNamePart& part = component.part;
    switch (part.kind) {
        case NamePartKind::Number:
            return NumberText(part, naming.index);
        case NamePartKind::Letter:
            return LetterText(naming.index);
        case NamePartKind::PageRange:
            return PageRangeText(naming.document.PageCount());
        case NamePartKind::PageLabel:
            return LabelOfPage(naming.document.Document(), 0);
        case NamePartKind::AreaText:
            return AreaText(part, naming);
        case NamePartKind::FoundText:
        case NamePartKind::RuleText:
            return Found(component, naming);
        case NamePartKind::CustomText:
            return WithTags(part.customText, naming.document, naming.surroundings);
        case NamePartKind::OriginalName:
            return platform::Utf8FromNarrow(SplitPath(naming.document.FullPath()).base);
        case NamePartKind::Lookup:
            return LookedUp(component, naming);
    }
    return std::string();
}

Expected<std::string> CNameBuilder::Joined(const std::vector<Component>& components, Naming& naming)
{
    std::string joined;
    for (const Component& component : components) {
        const auto text = TextOf(component, naming);
        if (!text) return text;
        const CFileNamePart& part = component.part;
        if (part.addSpaceInFront) joined += ' ';
        joined += text->empty() && part.replaceMissingValues ? part.missingValueText : *text;
    }
    return joined;
}

Expected<std::string> CNameBuilder::Build(const CAcrobatDoc& document, int index,
                                          const NameSurroundings& surroundings) const
{
    Naming naming{.builder = *this, .document = document, .index = index, .surroundings = surroundings};
    auto text = Joined(m_components, naming);
    if (text) text = m_rules.Apply(std::move(*text));
    if (!text) return text;
    const std::string extension = platform::Utf8FromNarrow(SplitPath(document.FullPath()).extension);
    const auto most = static_cast<std::size_t>(std::max(m_settings.maxFilename, 0));
    std::string name = ValidFileName(InCase(*text, m_settings.textCase), extension, most);
    if (name.empty()) return Failure("Filename is empty. Please verify settings and input document content.");
    return name;
}
