#include "sequence/XmlAudit.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <set>
#include <utility>

#include <tinyxml.h>

#include "base/Text.h"
#include "sequence/GuardedXml.h"
#include "sequence/Values.h"

namespace {

using Severity = SequenceFinding::Severity;

std::string Quoted(const std::string& name) { return '"' + name + '"'; }

/// Whether the text is a number and nothing else.
template <class Number>
bool IsNumber(const std::string& text)
{
    const std::string trimmed = Trim(text);
    const char* const start = trimmed.data() + (trimmed.starts_with('+') ? 1 : 0);
    Number number{};
    const auto [end, error] = std::from_chars(start, trimmed.data() + trimmed.size(), number);
    return error == std::errc() && end == trimmed.data() + trimmed.size();
}

bool IsItemType(const std::string& type)
{
    for (const char* known : {"boolean", "text", "integer", "double", "string", "atom", "null", "binary"})
        if (type == known) return true;
    return false;
}

class CWorkflowAuditor {
public:
    /// False when there is nothing more to look for.
    bool Look(const VisitedElement& at)
    {
        m_start = at.start;
        if (at.depth == 1) return Root(at.element);
        if (at.depth == 2) {
            EndGroup();
            Part(at.element);
        } else if (m_part == "Sources") {
            Source(at.element);
        } else if (m_part == "Group") {
            InGroup(at.element);
        }
        return true;
    }

    WorkflowAudit Finish()
    {
        EndGroup();
        if (m_audit.isWorkflow && m_audit.steps.empty())
            NoWorkflow("no-commands", "The workflow has no group with a command.", m_root);
        return std::move(m_audit);
    }

private:
    TextPlace Place(const TiXmlElement& element) const { return PlaceFrom(m_start, element.Row(), element.Column()); }

    void Add(Severity severity, const char* code, std::string text, const TiXmlElement& element)
    {
        AddAt(severity, code, std::move(text), Place(element));
    }

    void AddAt(Severity severity, const char* code, std::string text, TextPlace place)
    {
        m_audit.remarks.push_back({severity, code, std::move(text), m_step, place});
    }

    void Unknown(const TiXmlElement& element)
    {
        Add(Severity::Warning, "unknown-element", "The element " + Quoted(element.ValueStr()) + " is passed over.",
            element);
    }

    void NoWorkflow(const char* code, std::string text, TextPlace place)
    {
        m_audit = {false, {{Severity::Error, code, std::move(text), 0, place}}, {}};
    }

    bool Root(const TiXmlElement& root)
    {
        m_root = Place(root);
        if (IsNamed(root, "Workflow")) return true;
        NoWorkflow("wrong-root", "The root element is not \"Workflow\" but " + Quoted(root.ValueStr()) + ".", m_root);
        return false;
    }

    /// A child of the root element.
    void Part(const TiXmlElement& element)
    {
        m_part = element.ValueStr();
        if (m_part == "Group") {
            m_group = {Place(element), AttributeText(element, "label"), false};
        } else if (m_part != "Sources") {
            Unknown(element);
        } else if (element.Attribute("defaultCommand")) {
            Add(Severity::Note, "source-dialog", "Which dialog asks for the input has no effect here.", element);
        }
    }

    void Source(const TiXmlElement& element)
    {
        if (AttributeText(element, "path").empty()) {
            Add(Severity::Warning, "source-without-path", "A source without a path is passed over.", element);
        } else if (!IsNamed(element, "Folder") && !IsNamed(element, "File")) {
            Add(Severity::Warning, "unknown-element",
                "The source " + Quoted(element.ValueStr()) + " is neither a \"File\" nor a \"Folder\".", element);
        }
    }

    void InGroup(const TiXmlElement& element)
    {
        if (IsNamed(element, "Command")) {
            m_group.anyCommand = true;
            Command(element);
        } else if (IsNamed(element, "Instruction")) {
            Add(Severity::Note, "instruction", "The instruction is for people; nobody sees it in a run.", element);
        } else if (IsNamed(element, "Separator")) {
            Add(Severity::Note, "separator", "The separator has no effect.", element);
        } else {
            Unknown(element);
        }
    }

    void EndGroup()
    {
        if (m_part != "Group" || m_group.anyCommand) return;
        AddAt(Severity::Note, "group-without-commands",
              "The group " + Quoted(m_group.label) + " has no commands and is passed over.", m_group.place);
    }

    void Command(const TiXmlElement& element)
    {
        m_audit.steps.push_back(Place(element));
        m_step = static_cast<int>(m_audit.steps.size());
        std::set<std::string> names;  // several sets of items count as one
        for (const TiXmlElement* child = element.FirstChildElement(); child; child = child->NextSiblingElement()) {
            if (IsNamed(*child, "Items")) {
                Items(*child, names);
            } else {
                Unknown(*child);
            }
        }
        m_step = 0;
    }

    void Items(const TiXmlElement& element, std::set<std::string>& names)
    {
        for (const TiXmlElement* child = element.FirstChildElement(); child; child = child->NextSiblingElement()) {
            const bool nested = IsNamed(*child, "Items");
            if (!nested && !IsNamed(*child, "Item")) {
                Unknown(*child);
                continue;
            }
            const std::string name = AttributeText(*child, "name");
            if (name.empty()) {
                Add(Severity::Warning, "item-ignored", "A parameter without a name is passed over.", *child);
            } else if (!names.insert(name).second) {
                Add(Severity::Warning, "item-repeated",
                    "The parameter " + Quoted(name) + " is there twice; the last one counts.", *child);
            }
            if (name.find(':') != std::string::npos)
                Add(Severity::Warning, "item-nested",
                    "The colons in the parameter " + Quoted(name) + " make it one inside of others.", *child);
            if (nested) {
                std::set<std::string> inner;
                Items(*child, inner);
            } else if (!name.empty()) {
                Item(*child, name);
            }
        }
    }

    void Item(const TiXmlElement& element, const std::string& name)
    {
        const std::string type = AttributeText(element, "type"), value = AttributeText(element, "value");
        const std::string which = "The parameter " + Quoted(name);
        // What stands there is not told: it may be the value, when somebody has mixed them up.
        if (!IsItemType(type))
            return Add(Severity::Warning, "item-ignored",
                       which +
                           " is passed over: its type must be \"boolean\", \"integer\", \"double\", \"string\", "
                           "\"text\", \"atom\", \"null\" or \"binary\".",
                       element);
        if (value.size() > kMaxItemValueBytes)
            return Add(Severity::Error, "value-cut", which + " is too long: only its start counts.", element);
        if (type == "boolean" && value != "true" && value != "false")
            Add(Severity::Warning, "value-misread",
                which + " is neither \"true\" nor \"false\"; it counts as \"false\".", element);
        if (type == "integer" || type == "double") Number(element, which, type, value);
    }

    void Number(const TiXmlElement& element, const std::string& which, const std::string& type,
                const std::string& value)
    {
        if (value.empty()) {
            Add(Severity::Warning, "item-ignored", which + " is passed over: it has no value.", element);
        } else if (type == "integer" ? !IsNumber<std::int32_t>(value) : !IsNumber<double>(value)) {
            Add(Severity::Warning, "value-misread", which + " is no number that fits; it counts as another one.",
                element);
        }
    }

    struct Group {
        TextPlace place;
        std::string label;
        bool anyCommand = false;
    };

    TextPlace m_start, m_root;
    std::string m_part;  // the name of the child of the root element that is looked at
    Group m_group;
    WorkflowAudit m_audit;
    int m_step = 0;
};

}  // namespace

WorkflowAudit AuditWorkflow(std::string_view bytes)
{
    CWorkflowAuditor auditor;
    if (const auto fault = WalkGuardedXml(bytes, [&](const VisitedElement& at) { return auditor.Look(at); }))
        return {false, {{Severity::Error, "not-xml", fault->sentence, 0, fault->place}}, {}};
    return auditor.Finish();
}
