// The new file name of an open document.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/RegularExpression.h"
#include "naming/NameText.h"
#include "naming/RenameSettings.h"
#include "pdflib/AcrobatDoc.h"
#include "pdflib/TextSearch.h"
#include "platform/Clock.h"

/// What names can tell of where they are made. UTF-8.
struct NameSurroundings {
    platform::LocalTime time{};
    std::string user, computer;
};

/// What stands in a text of one's own for something of the document or of where the name is made.
struct NameTag {
    const char* tag;    ///< small letters; any will do in a text
    const char* group;  ///< what it belongs to, for people; tags of one group stand together
    std::string (*value)(const CAcrobatDoc& document, const NameSurroundings& surroundings);
};
[[nodiscard]] std::span<const NameTag> NameTags();

/// Settings that are compiled once and then used for any number of documents.
class CNameBuilder {
public:
    /// Fails with a sentence that says which component or rule cannot be used.
    [[nodiscard]] static Expected<CNameBuilder> From(const RenameSettings& settings);

    /// The name without folder, with the extension of the document's file. `index`: the document's place in the list
    /// of all inputs, from 0. Pages are read only for components that need their text, each once. Fails with a
    /// sentence. Throws CHostException.
    [[nodiscard]] Expected<std::string> Build(const CAcrobatDoc& document, int index,
                                              const NameSurroundings& surroundings) const;

private:
    struct Component {
        CFileNamePart part;
        std::optional<std::size_t> rule;  // of m_search
        std::optional<CRegularExpression> beforeLookup;
        std::vector<Component> children;
    };
    struct Naming;

    /// What the components together want to know of the text.
    struct Wanted {
        std::vector<TextRule> rules;
        std::set<int> areaPages0;
    };

    static Expected<std::vector<Component>> Compile(const std::vector<CFileNamePart>& parts, Wanted& wanted);
    static std::string Prepare(Component& component, Wanted& wanted);
    static Expected<std::string> Joined(const std::vector<Component>& components, Naming& naming);
    static Expected<std::string> TextOf(const Component& component, Naming& naming);
    static Expected<std::string> Found(const Component& component, Naming& naming);
    static std::string AreaText(const CFileNamePart& part, Naming& naming);
    static Expected<std::string> LookedUp(const Component& component, Naming& naming);

    RenameSettings m_settings;
    std::vector<Component> m_components;
    std::optional<CTextSearch> m_search;  // for all components, so that each page is read once
    std::set<int> m_areaPages0;
    CNameRules m_rules;
};
