#include "protocol/ProtectOrder.h"

#include "base/Text.h"
#include "protocol/Json.h"
#include "protocol/Words.h"

namespace {

constexpr int kOrderVersion = 1;
constexpr WordTable<9> kRightWords = {"print",      "print-high", "copy",      "edit",   "annotate",
                                      "fill-forms", "assemble",   "templates", "extract"};
constexpr WordTable<3> kMethodWords = {"rc4", "aes128", "aes256"};

/// Other words for some rights.
std::string_view UsualWord(std::string_view word)
{
    if (word == "print-low") return "print";
    return word == "comment" ? "annotate" : word;
}

}  // namespace

DocumentRights AllDocumentRights()
{
    DocumentRights rights;
    for (std::size_t place = 0; place < kRightWords.size(); ++place) rights.insert(static_cast<DocumentRight>(place));
    return rights;
}

Expected<DocumentRights> DocumentRightsFrom(const std::vector<std::string>& words)
{
    DocumentRights rights;
    for (const std::string& word : words) {
        const auto right = FromWord<DocumentRight>(kRightWords, UsualWord(word));
        if (!right)
            return Failure("There is no right \"" + word +
                           "\" to allow; the rights are print (or print-low), print-high, copy, edit, annotate (or "
                           "comment), fill-forms, assemble, templates and extract.");
        rights.insert(*right);
    }
    if (rights.contains(DocumentRight::PrintHigh)) rights.insert(DocumentRight::Print);
    return rights;
}

Expected<DocumentRights> ParseDocumentRights(std::string_view list)
{
    std::vector<std::string> words;
    for (const std::string& piece : Split(list, ",")) words.push_back(Trim(piece));
    if (words.size() == 1 && words.front() == "all") return AllDocumentRights();
    if (words.size() == 1 && words.front() == "none") return DocumentRights();
    for (const std::string& word : words)
        if (word == "all" || word == "none") return Failure("\"" + word + "\" stands alone, without other rights.");
    if (words.empty()) return Failure("Name what stays allowed, or \"none\".");
    return DocumentRightsFrom(words);
}

std::optional<ProtectMethod> FindProtectMethod(std::string_view word)
{
    return FromWord<ProtectMethod>(kMethodWords, word);
}

Json ProtectOrderJson(const ProtectOrder& order)
{
    Json object = {
        {"version", kOrderVersion}, {"method", WordOf(kMethodWords, order.method)}, {"allow", Json::array()}};
    for (const DocumentRight right : order.allowed) object["allow"].push_back(WordOf(kRightWords, right));
    if (order.inPlace) object["inPlace"] = true;
    if (order.breakSignatures) object["breakSignatures"] = true;
    return object;
}

Expected<ProtectOrder> ProtectOrderFrom(const Json& object)
{
    if (const int version = CountAt(object, "version"); version != kOrderVersion)
        return Failure("The order to protect documents is written in version " + std::to_string(version) +
                       ", and only version " + std::to_string(kOrderVersion) + " is known here.");
    const auto method = FindProtectMethod(TextAt(object, "method"));
    if (!method) return Failure("The order to protect documents names no encryption method.");
    auto allowed = DocumentRightsFrom(TextsAt(object, "allow"));
    if (!allowed) return Failure(allowed.Error());
    return ProtectOrder{.method = *method,
                        .allowed = std::move(*allowed),
                        .inPlace = FlagAt(object, "inPlace"),
                        .breakSignatures = FlagAt(object, "breakSignatures")};
}
