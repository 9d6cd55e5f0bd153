#include "sequence/XmlForm.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include <tinyxml.h>

#include "base/Text.h"
#include "base/Unicode.h"
#include "base/Xml.h"
#include "platform/Files.h"
#include "sequence/GuardedXml.h"

namespace {

/// Calls `visit` for each child element, in document order.
template <class Visit>
void ForEachChild(const TiXmlElement& parent, Visit visit)
{
    for (const TiXmlElement* child = parent.FirstChildElement(); child; child = child->NextSiblingElement())
        visit(*child);
}

/// A later entry of the same name replaces the earlier one in its place.
void ReadItems(const TiXmlElement& element, CSettingsRecord& items)
{
    ForEachChild(element, [&](const TiXmlElement& child) {
        const std::string name = AttributeText(child, "name");
        if (name.empty()) return;
        if (IsNamed(child, "Items")) {
            CSettingsRecord nested;
            ReadItems(child, nested);
            items.PutRecord(name, std::move(nested));
        } else if (IsNamed(child, "Item")) {
            auto value = ItemValue(AttributeText(child, "type"), AttributeText(child, "value"));
            if (value) items.PutValue(name, std::move(*value));
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

namespace {

constexpr char kNamespace[] = "http://ns.adobe.com/acrobat/workflow/2012";

/// How a value reads; `problem` says why it cannot be written.
struct ItemText {
    std::string value = {};
    bool hasValue = true;
    const char* problem = nullptr;
};

ItemText SizedItem(const std::string& text, const char* problem = nullptr)
{
    return {text, true, text.size() > kMaxItemValueBytes ? "is longer than readers take" : problem};
}

ItemText TextItem(const std::string& text)
{
    return SizedItem(text, IsXmlText(text) ? nullptr : "is no text that XML can hold");
}

/// Six decimals when they say it all, else as many as it takes.
std::string DoubleText(double value)
{
    char text[400];
    const auto fixed = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6);
    std::string six(text, fixed.ec == std::errc() ? fixed.ptr : text);
    if (LeadingDouble(six) == value) return six;
    const auto exact = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
    return exact.ec == std::errc() ? std::string(text, exact.ptr) : six;
}

struct TextOfValue {
    ItemText operator()(NullValue) const { return {{}, false}; }
    ItemText operator()(bool value) const { return {value ? "true" : "false"}; }
    ItemText operator()(std::int32_t value) const { return {std::to_string(value)}; }
    ItemText operator()(double value) const
    {
        if (!std::isfinite(value)) return {{}, true, "is no number"};
        return {DoubleText(value)};
    }
    ItemText operator()(const WideText& value) const { return TextItem(value.utf8); }
    ItemText operator()(const std::string& value) const { return TextItem(value); }
    ItemText operator()(const AtomValue& value) const { return TextItem(value.name); }
    ItemText operator()(const BinaryValue& value) const { return SizedItem(EncodeBase64(value.bytes)); }
    ItemText operator()(const CSettingsRecord::Nested&) const { return {}; }
};

class CWorkflowWriter {
public:
    void Write(const Workflow& workflow)
    {
        m_xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        Open(0, "Workflow");
        Attribute("xmlns", kNamespace);
        Attribute("title", workflow.title);
        Attribute("description", workflow.description);
        Attribute("majorVersion", "1");
        Attribute("minorVersion", "0");
        m_xml += ">\n";
        Sources(workflow.sources);
        for (const WorkflowGroup& group : workflow.groups) Group(group);
        m_xml += "</Workflow>\n";
    }

    const std::string& Xml() const { return m_xml; }
    const std::string& Problem() const { return m_problem; }

private:
    void Open(int level, const char* element)
    {
        m_xml.append(static_cast<std::size_t>(level), '\t') += '<' + std::string(element);
    }
    void Close(int level, const char* element)
    {
        m_xml.append(static_cast<std::size_t>(level), '\t') += "</" + std::string(element) + ">\n";
    }

    void Attribute(const char* name, const std::string& value)
    {
        if (!IsXmlText(value)) Fail(std::string("the attribute \"") + name + "\" is no text that XML can hold");
        m_xml += ' ' + std::string(name) + "=\"";
        m_xml += XmlAttributeValue(value);
        m_xml += '"';
    }

    void Fail(const std::string& what)
    {
        if (!m_problem.empty()) return;
        m_problem =
            m_step == 0 ? "In the sequence " + what + "." : "In step " + std::to_string(m_step) + ' ' + what + ".";
    }

    void Sources(const std::vector<WorkflowSource>& sources)
    {
        if (sources.empty()) return;
        m_xml += "\t<Sources>\n";
        for (const WorkflowSource& source : sources) {
            Open(2, source.isFolder ? "Folder" : "File");
            Attribute("path", source.path);
            m_xml += "/>\n";
        }
        m_xml += "\t</Sources>\n";
    }

    void Group(const WorkflowGroup& group)
    {
        Open(1, "Group");
        Attribute("label", group.label);
        m_xml += ">\n";
        for (const WorkflowCommand& command : group.commands) Command(command);
        Close(1, "Group");
    }

    void Command(const WorkflowCommand& command)
    {
        ++m_step;
        Open(2, "Command");
        Attribute("name", command.handlerName);
        Attribute("pauseBefore", command.pauseBefore.empty() ? "false" : command.pauseBefore);
        Attribute("promptUser", command.promptUser.empty() ? "false" : command.promptUser);
        if (command.parameters.Empty()) {
            m_xml += "/>\n";
            return;
        }
        m_xml += ">\n\t\t\t<Items>\n";
        Items(command.parameters, 4);
        m_xml += "\t\t\t</Items>\n";
        Close(2, "Command");
    }

    void Items(const CSettingsRecord& items, int level)
    {
        std::vector<const CSettingsRecord::Entry*> ordered;
        for (const auto& entry : items.Entries()) ordered.push_back(&entry);
        std::sort(ordered.begin(), ordered.end(),
                  [](const auto* a, const auto* b) { return ComesFirstInCab(a->key, b->key); });
        for (const auto* entry : ordered) {
            const auto* nested = std::get_if<CSettingsRecord::Nested>(&entry->value);
            nested ? NestedItems(entry->key, **nested, level) : Item(entry->key, entry->value, level);
        }
    }

    void NestedItems(const std::string& name, const CSettingsRecord& items, int level)
    {
        Open(level, "Items");
        Attribute("name", name);
        if (items.Empty()) {
            m_xml += "/>\n";
            return;
        }
        m_xml += ">\n";
        Items(items, level + 1);
        Close(level, "Items");
    }

    void Item(const std::string& name, const CSettingsRecord::Value& value, int level)
    {
        const ItemText item = std::visit(TextOfValue{}, value);
        if (item.problem) Fail("the item \"" + SanitizeUtf8(name) + "\" " + item.problem);
        Open(level, "Item");
        Attribute("name", name);
        Attribute("type", TypeWord(value));
        if (item.hasValue) Attribute("value", item.problem ? std::string() : item.value);
        m_xml += "/>\n";
    }

    std::string m_xml, m_problem;
    int m_step = 0;
};

}  // namespace

Expected<std::string> WriteWorkflow(const Workflow& workflow)
{
    CWorkflowWriter writer;
    writer.Write(workflow);
    if (!writer.Problem().empty()) return Failure(writer.Problem());
    return writer.Xml();
}
