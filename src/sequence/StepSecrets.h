// Which parameters of steps are passwords, or may be some.
#pragma once

#include "hostcalls/Cab.h"

#include <cstdint>
#include <string>
#include <vector>

/// What is shown in place of a password.
inline constexpr char kMaskedPassword[] = "********";

/// Tells of each entry of one cab of a step's parameters whether its value must not be shown. Of our own steps only
/// what they know to be harmless is shown: a password under a misspelled name is a password still.
class CSecretEntries {
public:
    /// The parameters of a step of this handler, which need not be available.
    explicit CSecretEntries(const std::string& handler);

    /// What holds for the cab under this key.
    [[nodiscard]] CSecretEntries Under(const std::string& key, CCabView cab) const;

    /// Whether a text, string, atom or binary under this key is not shown.
    [[nodiscard]] bool HidesText(const std::string& key) const;
    /// The same for numbers. Flags and null are always shown.
    [[nodiscard]] bool HidesNumber(const std::string& key) const;

private:
    enum class Place : std::uint8_t {
        OwnStep,           // the parameters of a step of ours
        SecurityStep,      // those of the host's own security step
        SecuritySettings,  // what its security handler keeps there
        PasswordTable,     // file name, password, file name, password ...
        Rectangle,         // of a page
        Elsewhere,         // a step of another maker, as deep as it may be
        Hidden             // everything here is hidden
    };

    explicit CSecretEntries(Place place) : m_place(place) {}
    static CSecretEntries Table(CCabView cab);

    Place m_place;
    const char* const* m_harmless = nullptr;  // names, ended by null; of our own steps
    bool m_wholeTable = false;
};

/// Whether any parameter of the step is a password, or may be one, and is not empty. Throws CHostException.
[[nodiscard]] bool HoldsPassword(const std::string& handler, CCabView parameters);

/// Whether the handler is one of our own steps, or is meant to be one.
[[nodiscard]] bool MeansOwnStep(const std::string& handler);
