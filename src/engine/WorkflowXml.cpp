#include "engine/WorkflowXml.h"

#include "common/Text.h"
#include "engine/GuardedXml.h"
#include "engine/ItemValues.h"
#include "engine/XmlGuard.h"
#include "platform/Files.h"

#include <tinyxml.h>
#include <cstring>
#include <map>

namespace {

bool IsNamed(const TiXmlElement& element, const char* name) { return std::strcmp(element.Value(), name) == 0; }

std::string AttributeText(const TiXmlElement& element, const char* name)
{
    const std::string* value = element.Attribute(std::string(name));
    return value ? *value : std::string();
}

/// Calls `visit` for each child element, in document order.
template <class Visit>
void ForEachChild(const TiXmlElement& parent, Visit visit)
{
    for (const TiXmlElement* child = parent.FirstChildElement(); child; child = child->NextSiblingElement())
        visit(*child);
}

/// Collects the entries of one level; a later entry of the same name replaces the earlier one in its place.
class CItemsBuilder {
public:
    explicit CItemsBuilder(WorkflowItems& items) : m_items(items)
    {
        for (std::size_t i = 0; i < items.entries.size(); ++i) m_places.emplace(items.entries[i].first, i);
    }

    void Put(const std::string& name, WorkflowValue value)
    {
        const auto [place, isNew] = m_places.emplace(name, m_items.entries.size());
        if (isNew) {
            m_items.entries.emplace_back(name, std::move(value));
        } else {
            m_items.entries[place->second].second = std::move(value);
        }
    }

private:
    WorkflowItems& m_items;
    std::map<std::string, std::size_t> m_places;
};

void ReadItems(const TiXmlElement& element, WorkflowItems& items)
{
    CItemsBuilder builder(items);
    ForEachChild(element, [&](const TiXmlElement& child) {
        const std::string name = AttributeText(child, "name");
        if (name.empty()) return;
        if (IsNamed(child, "Items")) {
            WorkflowItems nested;
            ReadItems(child, nested);
            builder.Put(name, std::move(nested));
        } else if (IsNamed(child, "Item")) {
            auto value = ItemValue(AttributeText(child, "type"), AttributeText(child, "value"));
            if (value) builder.Put(name, std::move(*value));
        }
    });
}

WorkflowCommand ReadCommand(const TiXmlElement& element, const std::string& label)
{
    WorkflowCommand command;
    command.handlerName = AttributeText(element, "name");
    command.handlerName.erase(command.handlerName.find_last_not_of(" \t\n\v\f\r") + 1);
    command.label = label;
    command.pauseBefore = AttributeText(element, "pauseBefore");
    command.promptUser = AttributeText(element, "promptUser");
    ForEachChild(element, [&](const TiXmlElement& child) {
        if (IsNamed(child, "Items")) ReadItems(child, command.parameters);
    });
    return command;
}

void ReadSources(const TiXmlElement& element, Workflow& workflow)
{
    ForEachChild(element, [&](const TiXmlElement& child) {
        WorkflowSource source{AttributeText(child, "path"), IsNamed(child, "Folder")};
        if (source.path.empty()) return;
        // An element of another name keeps the kind of the source in front of it.
        if (!source.isFolder && !IsNamed(child, "File"))
            source.isFolder = !workflow.sources.empty() && workflow.sources.back().isFolder;
        workflow.sources.push_back(std::move(source));
    });
}

void ReadGroup(const TiXmlElement& element, Workflow& workflow)
{
    WorkflowGroup group;
    group.label = element.Attribute("label") ? AttributeText(element, "label") : "Untitled";
    ForEachChild(element, [&](const TiXmlElement& child) {
        if (IsNamed(child, "Command")) group.commands.push_back(ReadCommand(child, group.label));
    });
    if (!group.commands.empty()) workflow.groups.push_back(std::move(group));
}

}  // namespace

Expected<Workflow> ParseWorkflow(std::string_view bytes)
{
    TiXmlDocument document;
    if (const auto fault = ParseGuardedXml(bytes, document)) return Failure(FaultSentence(*fault));
    const TiXmlElement* root = document.RootElement();
    if (!root || !IsNamed(*root, "Workflow")) return Failure("The root element is not \"Workflow\".");

    Workflow workflow;
    workflow.title = AttributeText(*root, "title");
    workflow.description = AttributeText(*root, "description");
    ForEachChild(*root, [&](const TiXmlElement& child) {
        if (IsNamed(child, "Sources")) ReadSources(child, workflow);
        if (IsNamed(child, "Group")) ReadGroup(child, workflow);
    });
    if (workflow.groups.empty()) return Failure("The workflow has no group with a command.");
    return workflow;
}

Expected<Workflow> ReadWorkflowFile(const std::string& path)
{
    platform::FileResult result = platform::CheckReadable(path);
    if (!result) return Failure(platform::ErrorText(result.errorNumber));
    const auto bytes = platform::ReadWholeFile(path, XmlLimits{}.bytes, &result);
    if (!bytes) return Failure(platform::ErrorText(result.errorNumber));
    return ParseWorkflow(*bytes);
}
