#include "engine/WorkflowXml.h"

#include "base/Text.h"
#include "engine/GuardedXml.h"
#include "engine/ItemValues.h"
#include "engine/XmlGuard.h"
#include "platform/Files.h"

#include <tinyxml.h>
#include <cstring>
#include <map>
#include <optional>
#include <utility>

namespace {

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

void ReadSource(const TiXmlElement& element, Workflow& workflow)
{
    WorkflowSource source{AttributeText(element, "path"), IsNamed(element, "Folder")};
    if (source.path.empty()) return;
    // An element of another name keeps the kind of the source in front of it.
    if (!source.isFolder && !IsNamed(element, "File"))
        source.isFolder = !workflow.sources.empty() && workflow.sources.back().isFolder;
    workflow.sources.push_back(std::move(source));
}

/// Takes a workflow in, element by element.
class CWorkflowReader {
public:
    /// False when the root element is of another kind.
    bool Take(const TiXmlElement& element, int depth)
    {
        if (depth == 1) return TakeRoot(element);
        if (depth == 2) {
            m_parent = IsNamed(element, "Sources") ? Parent::Sources
                       : IsNamed(element, "Group") ? Parent::Group
                                                   : Parent::Other;
            if (m_parent == Parent::Group) BeginGroup(element);
        } else if (m_parent == Parent::Sources) {
            ReadSource(element, m_workflow);
        } else if (m_parent == Parent::Group && IsNamed(element, "Command")) {
            m_group.commands.push_back(ReadCommand(element, m_group.label));
        }
        return true;
    }

    /// Nothing when the root element was of another kind.
    std::optional<Workflow> Finish()
    {
        EndGroup();
        if (!m_isWorkflow) return std::nullopt;
        return std::move(m_workflow);
    }

private:
    enum class Parent { Other, Sources, Group };

    bool TakeRoot(const TiXmlElement& root)
    {
        m_workflow.title = AttributeText(root, "title");
        m_workflow.description = AttributeText(root, "description");
        return m_isWorkflow = IsNamed(root, "Workflow");
    }

    void BeginGroup(const TiXmlElement& element)
    {
        EndGroup();
        m_group.label = element.Attribute("label") ? AttributeText(element, "label") : "Untitled";
    }

    void EndGroup()
    {
        if (!m_group.commands.empty()) m_workflow.groups.push_back(std::move(m_group));
        m_group = {};
    }

    Workflow m_workflow;
    WorkflowGroup m_group;
    Parent m_parent = Parent::Other;
    bool m_isWorkflow = false;
};

}  // namespace

Expected<Workflow> ParseWorkflow(std::string_view bytes)
{
    CWorkflowReader reader;
    const auto fault =
        WalkGuardedXml(bytes, [&](const VisitedElement& at) { return reader.Take(at.element, at.depth); });
    if (fault) return Failure(FaultSentence(*fault));
    std::optional<Workflow> workflow = reader.Finish();
    if (!workflow) return Failure("The root element is not \"Workflow\".");
    if (workflow->groups.empty()) return Failure("The workflow has no group with a command.");
    return std::move(*workflow);
}

Expected<Workflow> ReadWorkflowFile(const std::string& path)
{
    platform::FileResult result = platform::CheckReadable(path);
    if (!result) return Failure(platform::ErrorText(result.errorNumber));
    const auto bytes = platform::ReadWholeFile(path, XmlLimits{}.bytes, &result);
    if (!bytes) return Failure(platform::ErrorText(result.errorNumber));
    return ParseWorkflow(*bytes);
}
