#include "openhost/catalog/TextMessages.h"

#include "protocol/Json.h"

namespace openhost {

std::string OrderLine(const TextOrder& order)
{
    return LineOf({{"path", TextsOf({order.path})}, {"encrypted", order.includeEncrypted}});
}

TextOrder TextOrderFrom(const std::string& line)
{
    const Json object = ParseObject(line).value_or(Json::object());
    const auto paths = BytesListAt(object, "path");
    return {.path = paths.empty() ? std::string() : paths.front(), .includeEncrypted = FlagAt(object, "encrypted")};
}

std::string PageLine(const std::string& text) { return LineOf({{"text", text}}); }

std::string EndLine(const DocumentTexts& texts)
{
    return LineOf({{"state", static_cast<int>(texts.state)},
                   {"encrypted", texts.encrypted},
                   {"pages", texts.pageCount},
                   {"message", texts.message}});
}

bool TakeLine(const std::string& line, DocumentTexts& texts)
{
    const auto object = ParseObject(line);
    if (object && object->contains("text")) {
        texts.pages.push_back(TextAt(*object, "text"));
        return false;
    }
    if (!object || !object->contains("state")) {
        texts = {.state = DocumentState::Failed, .message = "The reader's answer cannot be understood."};
        return true;
    }
    texts.state = static_cast<DocumentState>(CountAt(*object, "state"));
    texts.encrypted = FlagAt(*object, "encrypted");
    texts.pageCount = CountAt(*object, "pages");
    texts.message = TextAt(*object, "message");
    return true;
}

}  // namespace openhost
