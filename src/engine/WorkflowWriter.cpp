#include "engine/WorkflowWriter.h"

#include "base/Unicode.h"
#include "engine/ItemValues.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace {

constexpr char kNamespace[] = "http://ns.adobe.com/acrobat/workflow/2012";

/// What a value is called and how it reads; `problem` says why it cannot be written.
struct ItemText {
    const char* type;
    std::string value;
    bool hasValue = true;
    const char* problem = nullptr;
};

bool IsXmlText(std::string_view text)
{
    const auto isControl = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
    };
    return IsValidUtf8(text) && std::none_of(text.begin(), text.end(), isControl);
}

ItemText SizedItem(const char* type, const std::string& text, const char* problem = nullptr)
{
    return {type, text, true, text.size() > kMaxItemValueBytes ? "is longer than readers take" : problem};
}

ItemText TextItem(const char* type, const std::string& text)
{
    return SizedItem(type, text, IsXmlText(text) ? nullptr : "is no text that XML can hold");
}

/// Six decimals when they say it all, else as many as it takes.
std::string DoubleText(double value)
{
    char text[400];
    const auto fixed = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6);
    const std::string six(text, fixed.ec == std::errc() ? fixed.ptr : text);
    if (LeadingDouble(six) == value) return six;
    const auto exact = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
    return exact.ec == std::errc() ? std::string(text, exact.ptr) : six;
}

struct TextOfValue {
    ItemText operator()(WorkflowNull) const { return {"null", {}, false}; }
    ItemText operator()(bool value) const { return {"boolean", value ? "true" : "false"}; }
    ItemText operator()(std::int32_t value) const { return {"integer", std::to_string(value)}; }
    ItemText operator()(double value) const
    {
        if (!std::isfinite(value)) return {"double", {}, true, "is no number"};
        return {"double", DoubleText(value)};
    }
    ItemText operator()(const WorkflowText& value) const { return TextItem("text", value.utf8); }
    ItemText operator()(const WorkflowString& value) const { return TextItem("string", value.bytes); }
    ItemText operator()(const WorkflowAtom& value) const { return TextItem("atom", value.name); }
    ItemText operator()(const WorkflowBinary& value) const { return SizedItem("binary", EncodeBase64(value.bytes)); }
    ItemText operator()(const WorkflowItems&) const { return {"", {}}; }
};

void AppendEscaped(std::string& xml, std::string_view text)
{
    for (const char c : text) {
        switch (c) {
            case '&':
                xml += "&amp;";
                break;
            case '<':
                xml += "&lt;";
                break;
            case '>':
                xml += "&gt;";
                break;
            case '"':
                xml += "&quot;";
                break;
            case '\'':
                xml += "&apos;";
                break;
            case '\t':
                xml += "&#x9;";
                break;
            case '\n':
                xml += "&#xA;";
                break;
            case '\r':
                xml += "&#xD;";
                break;
            default:
                xml += c;
        }
    }
}

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
        AppendEscaped(m_xml, value);
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
        if (command.parameters.entries.empty()) {
            m_xml += "/>\n";
            return;
        }
        m_xml += ">\n\t\t\t<Items>\n";
        Items(command.parameters, 4);
        m_xml += "\t\t\t</Items>\n";
        Close(2, "Command");
    }

    void Items(const WorkflowItems& items, int level)
    {
        std::vector<const std::pair<std::string, WorkflowValue>*> ordered;
        for (const auto& entry : items.entries) ordered.push_back(&entry);
        std::sort(ordered.begin(), ordered.end(),
                  [](const auto* a, const auto* b) { return ComesFirstInCab(a->first, b->first); });
        for (const auto* entry : ordered) {
            const auto* nested = std::get_if<WorkflowItems>(&entry->second);
            nested ? NestedItems(entry->first, *nested, level) : Item(entry->first, entry->second, level);
        }
    }

    void NestedItems(const std::string& name, const WorkflowItems& items, int level)
    {
        Open(level, "Items");
        Attribute("name", name);
        if (items.entries.empty()) {
            m_xml += "/>\n";
            return;
        }
        m_xml += ">\n";
        Items(items, level + 1);
        Close(level, "Items");
    }

    void Item(const std::string& name, const WorkflowValue& value, int level)
    {
        const ItemText item = std::visit(TextOfValue{}, value);
        if (item.problem) Fail("the item \"" + SanitizeUtf8(name) + "\" " + item.problem);
        Open(level, "Item");
        Attribute("name", name);
        Attribute("type", item.type);
        if (item.hasValue) Attribute("value", item.problem ? std::string() : item.value);
        m_xml += "/>\n";
    }

    std::string m_xml, m_problem;
    int m_step = 0;
};

bool IsNumber(const std::string& key)
{
    return !key.empty() && std::all_of(key.begin(), key.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string_view WithoutLeadingZeros(std::string_view digits)
{
    const auto first = digits.find_first_not_of('0');
    return first == std::string_view::npos ? std::string_view("0") : digits.substr(first);
}

}  // namespace

Expected<std::string> WriteWorkflow(const Workflow& workflow)
{
    CWorkflowWriter writer;
    writer.Write(workflow);
    if (!writer.Problem().empty()) return Failure(writer.Problem());
    return writer.Xml();
}

std::string EncodeBase64(const std::string& bytes)
{
    constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i)
            group = group << 8 | (i < count ? static_cast<unsigned char>(bytes[at + i]) : 0u);
        for (std::size_t i = 0; i < 4; ++i) text += i <= count ? kAlphabet[group >> (18 - 6 * i) & 0x3F] : '=';
    }
    return text;
}

bool ComesFirstInCab(const std::string& key, const std::string& other)
{
    const bool number = IsNumber(key), otherNumber = IsNumber(other);
    if (number != otherNumber) return number;
    if (!number) return key < other;
    const std::string_view digits = WithoutLeadingZeros(key), otherDigits = WithoutLeadingZeros(other);
    if (digits.size() != otherDigits.size()) return digits.size() < otherDigits.size();
    return digits != otherDigits ? digits < otherDigits : key < other;
}
