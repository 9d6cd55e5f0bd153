#include "sequence/StepDescription.h"

#include <algorithm>
#include <set>

#include "base/Text.h"
#include "hostcalls/Commands.h"
#include "sequence/HostSteps.h"

namespace {

constexpr std::string_view kOwnPrefix = "QLNX_Ferrule";

constexpr StepDescription kUnknownOwnStep{};
constexpr StepDescription kForeignStep{.maker = StepMaker::Other, .secrecy = Secrecy::WhatSoundsLikePasswords};

std::vector<const StepDescription*>& InstalledSteps()
{
    static std::vector<const StepDescription*> steps;
    return steps;
}

const StepDescription* OwnStep(std::string_view handler)
{
    for (const StepDescription* step : OwnSteps())
        if (step->handler == handler) return step;
    return nullptr;
}

bool SoundsLikeOwnStep(std::string_view handler)
{
    const std::string name = ToLowerAscii(handler);
    return name.starts_with("qlnx") || name.find("ferrule") != std::string::npos;
}

}  // namespace

void SetOwnSteps(std::vector<const StepDescription*> steps) { InstalledSteps() = std::move(steps); }

const std::vector<const StepDescription*>& OwnSteps() { return InstalledSteps(); }

const StepDescription& DescribeStep(std::string_view handler)
{
    if (const StepDescription* own = OwnStep(handler)) return *own;
    if (handler.starts_with(kOwnPrefix)) return kUnknownOwnStep;
    const StepDescription* host = HostStep(handler);
    return host ? *host : kForeignStep;
}

const StepDescription& DescribeMeantStep(std::string_view handler)
{
    if (const StepDescription* own = OwnStep(handler)) return *own;
    if (SoundsLikeOwnStep(handler)) return kUnknownOwnStep;
    const StepDescription* host = MeantHostStep(handler);
    return host ? *host : kForeignStep;
}

bool MayBeTried(const StepDescription& step)
{
    return step.maker != StepMaker::Other && step.shared != SharedWork::Index;
}

std::optional<std::string> AvailableHandler(const std::string& name)
{
    if (FindCommandHandler(name)) return name;
    const auto alternative = AlternativeHandler(name);
    return alternative && FindCommandHandler(*alternative) ? alternative : std::nullopt;
}

namespace {

constexpr char kTable[] = "FileMapping";  // under this name other makers keep passwords, too
constexpr char kTableCount[] = "NumItems";

/// Names of any maker's parameters, slips of the pen included. A password's field in a table of data is none.
bool SoundsLikePassword(const std::string& key)
{
    const std::string name = ToLowerAscii(key);
    if (name.ends_with("field")) return false;
    for (const char* word : {"passw", "pasw", "passphrase", "passcode", "paswd", "pwd", "kennwort", "secret"})
        if (name.find(word) != std::string::npos) return true;
    return name.ends_with("pw");
}

bool IsOneOf(const std::string& key, std::initializer_list<const char*> names)
{
    return std::any_of(names.begin(), names.end(), [&](const char* name) { return key == name; });
}

/// In a flat list each file name is followed by its password.
bool IsFirstOfPair(const std::string& key)
{
    return !key.empty() && key.find_first_not_of("0123456789") == std::string::npos && (key.back() - '0') % 2 == 0;
}

/// Whether the list has as many entries as it says, all there, in pairs. In another one nobody knows what is what.
bool IsWholeTable(CCabView cab)
{
    const auto keys = cab.Keys();
    const std::set<std::string> names(keys.begin(), keys.end());
    const int count = cab.Int(kTableCount, -1);
    if (count < 0 || count % 2 != 0 || names.size() != static_cast<std::size_t>(count) + 1) return false;
    for (int number = 0; number < count; ++number)
        if (!names.contains(std::to_string(number))) return false;
    return true;
}

bool AnySecret(const CSecretEntries& secrets, CCabView cab)
{
    const auto keys = cab.Keys();
    return std::any_of(keys.begin(), keys.end(), [&](const std::string& key) {
        if (const CCabView nested = cab.Cab(key.c_str())) return AnySecret(secrets.Under(key, nested), nested);
        const auto value = ValueFromCab(cab, key.c_str());
        return value && secrets.Hides(key, *value);
    });
}

}  // namespace

CSecretEntries CSecretEntries::Table(CCabView cab)
{
    CSecretEntries table(Place::PasswordTable);
    table.m_wholeTable = IsWholeTable(cab);
    return table;
}

/// Null for a parameter that is not among the open ones; nothing inside of a parameter is.
const OpenParameter* CSecretEntries::Open(const std::string& key) const
{
    if (m_place != Place::Parameters) return nullptr;
    for (const OpenParameter& parameter : m_step->open)
        if (parameter.name == key) return &parameter;
    return nullptr;
}

CSecretEntries CSecretEntries::Under(const std::string& key, CCabView cab) const
{
    if (m_place != Place::Parameters && m_place != Place::Inside) return CSecretEntries(Place::Hidden);
    const OpenParameter* const open = Open(key);
    if (open && open->kind == OpenParameter::Kind::PasswordTable) return Table(cab);
    if (open && open->kind == OpenParameter::Kind::Rectangle) return CSecretEntries(Place::Rectangle);
    switch (m_step->secrecy) {
        case Secrecy::TextsButOpen:
            return CSecretEntries(Place::Inside, m_step);
        case Secrecy::WhatSoundsLikePasswords:
            if (key == kTable) return Table(cab);
            return SoundsLikePassword(key) ? CSecretEntries(Place::Hidden) : CSecretEntries(Place::Inside, m_step);
        case Secrecy::AllButOpen:
            break;
    }
    return CSecretEntries(Place::Hidden);
}

/// An empty text hides nothing.
bool CSecretEntries::Hides(const std::string& key, const CSettingsRecord::Value& value) const
{
    if (std::holds_alternative<std::int32_t>(value) || std::holds_alternative<double>(value)) return HidesNumber(key);
    const auto* binary = std::get_if<BinaryValue>(&value);
    const std::string* const text = binary ? &binary->bytes : TextIn(value);
    return text && !text->empty() && HidesText(key);
}

bool CSecretEntries::HidesText(const std::string& key) const
{
    if (m_place == Place::PasswordTable) return !m_wholeTable || !IsFirstOfPair(key);
    if (m_place != Place::Parameters && m_place != Place::Inside) return true;
    if (m_step->secrecy == Secrecy::WhatSoundsLikePasswords) return SoundsLikePassword(key);
    const OpenParameter* const open = Open(key);
    return !open || open->kind != OpenParameter::Kind::Value;
}

bool CSecretEntries::HidesNumber(const std::string& key) const
{
    if (m_place == Place::Rectangle) return !IsOneOf(key, {"Left", "Right", "Top", "Bottom"});
    if (m_place == Place::PasswordTable) return key != kTableCount && HidesText(key);
    if (m_place == Place::Hidden || m_step->secrecy != Secrecy::TextsButOpen) return HidesText(key);
    return SoundsLikePassword(key);
}

bool HoldsPassword(const StepDescription& step, CCabView parameters)
{
    return AnySecret(CSecretEntries(step), parameters);
}
