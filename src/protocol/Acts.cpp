#include "protocol/Acts.h"

#include "base/Text.h"
#include "protocol/Json.h"
#include "protocol/Words.h"

namespace {

constexpr WordTable<4> kActs = {"put", "move", "delete", "start"};
constexpr char kFinalAction[] = "final-action", kCopy[] = "copy", kOutput[] = "output";
constexpr WordTable<3> kAnswers = {"go", "refuse", "pretend"};

Json TraitsJson(const FileTraits& traits)
{
    Json object = {{"mode", traits.mode},
                   {"owner", traits.owner},
                   {"group", traits.group},
                   {"modified", std::to_string(traits.modifiedNanoseconds)},
                   {"accessed", std::to_string(traits.accessedNanoseconds)}};
    for (const auto& [name, value] : traits.attributes)
        object["attributes"][TextFromBytes(name)] = TextFromBytes(value);
    return object;
}

std::optional<FileTraits> TraitsFrom(const Json& holder)
{
    const Json& object = ObjectAt(holder, "traits");
    if (object.empty()) return std::nullopt;
    FileTraits traits{.mode = static_cast<std::uint32_t>(UnsignedAt(object, "mode")),
                      .owner = static_cast<std::uint32_t>(UnsignedAt(object, "owner")),
                      .group = static_cast<std::uint32_t>(UnsignedAt(object, "group")),
                      .modifiedNanoseconds = DecimalAt(object, "modified"),
                      .accessedNanoseconds = DecimalAt(object, "accessed")};
    for (const auto& [name, value] : ObjectAt(object, "attributes").items())
        if (value.is_string())
            traits.attributes.emplace_back(BytesFromText(name), BytesFromText(value.get<std::string>()));
    return traits;
}

Json FormerJson(const FormerFile& former)
{
    Json object = {{"sha256", former.sha256}, {"traits", TraitsJson(former.traits)}};
    if (!former.link.empty()) object["link"] = TextFromBytes(former.link);
    if (!former.kept.empty()) object["kept"] = TextFromBytes(former.kept);
    return object;
}

std::optional<FormerFile> FormerFrom(const Json& holder)
{
    const Json& object = ObjectAt(holder, "former");
    if (object.empty()) return std::nullopt;
    return FormerFile{.sha256 = TextAt(object, "sha256"),
                      .link = BytesAt(object, "link"),
                      .traits = TraitsFrom(object).value_or(FileTraits()),
                      .kept = BytesAt(object, "kept")};
}

}  // namespace

std::string_view ActWord(Act act) { return WordOf(kActs, act); }

std::optional<Act> ActFromWord(std::string_view word) { return FromWord<Act>(kActs, word); }

std::string_view ActAnswerWord(ActAnswer answer) { return WordOf(kAnswers, answer); }

ActAnswer ActAnswerFromWord(std::string_view word)
{
    return FromWord<ActAnswer>(kAnswers, word).value_or(ActAnswer::Refuse);
}

Json IntendedActJson(const IntendedAct& intended)
{
    Json object = {{"number", intended.number},
                   {"purpose", intended.finalAction ? kFinalAction
                               : intended.copy      ? kCopy
                                                    : kOutput},
                   {"act", ActWord(intended.act)},
                   {"file", TextFromBytes(intended.file)},
                   {"target", TextFromBytes(intended.target)},
                   {"sha256", intended.sha256}};
    if (intended.replaces) object["replaces"] = true;
    if (intended.former) object["former"] = FormerJson(*intended.former);
    if (intended.traits) object["traits"] = TraitsJson(*intended.traits);
    if (!intended.objection.empty()) object["objection"] = intended.objection;
    if (intended.order != 0) object["order"] = intended.order;
    if (intended.size) object["size"] = *intended.size;
    if (intended.protection.Known()) object["protection"] = ProtectionChangeJson(intended.protection);
    return object;
}

std::optional<IntendedAct> IntendedActFrom(const Json& object)
{
    const auto act = ActFromWord(TextAt(object, "act"));
    if (!act) return std::nullopt;
    return IntendedAct{.number = CountAt(object, "number"),
                       .finalAction = TextAt(object, "purpose") == kFinalAction,
                       .act = *act,
                       .file = BytesAt(object, "file"),
                       .target = BytesAt(object, "target"),
                       .sha256 = TextAt(object, "sha256"),
                       .replaces = FlagAt(object, "replaces"),
                       .former = FormerFrom(object),
                       .traits = TraitsFrom(object),
                       .objection = TextAt(object, "objection"),
                       .order = UnsignedAt(object, "order"),
                       .copy = TextAt(object, "purpose") == kCopy,
                       .size = MaybeUnsignedAt(object, "size"),
                       .protection = ProtectionChangeFrom(ObjectAt(object, "protection"))};
}
