#include "protocol/Acts.h"

#include "base/Text.h"
#include "protocol/Json.h"
#include "protocol/Words.h"

namespace {

constexpr WordTable<4> kActs = {"put", "move", "delete", "start"};
constexpr char kFinalAction[] = "final-action";
constexpr WordTable<3> kAnswers = {"go", "refuse", "pretend"};

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
                   {"purpose", intended.finalAction ? kFinalAction : "output"},
                   {"act", ActWord(intended.act)},
                   {"file", TextFromBytes(intended.file)},
                   {"target", TextFromBytes(intended.target)},
                   {"sha256", intended.sha256}};
    if (intended.replaces) object["replaces"] = true;
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
                       .replaces = FlagAt(object, "replaces")};
}
