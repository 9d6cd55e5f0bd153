// Which parameters of steps are passwords, or may be some.
#pragma once

#include <cstdint>
#include <string>

#include "common/SettingsRecord.h"
#include "hostcalls/Cab.h"
#include "sequence/StepDescription.h"

/// What is shown in place of a password.
inline constexpr char kMaskedPassword[] = "********";

/// Tells of each entry of one cab of a step's parameters whether its value must not be shown, by what the step's
/// description says of them.
class CSecretEntries {
public:
    /// The parameters of a step as it is meant, see DescribeMeantStep. The description is borrowed.
    explicit CSecretEntries(const StepDescription& step) : m_place(Place::Parameters), m_step(&step) {}

    /// What holds for the cab under this key.
    [[nodiscard]] CSecretEntries Under(const std::string& key, CCabView cab) const;

    /// Whether the value under this key, which is no cab, is not shown. Flags and null are always shown.
    [[nodiscard]] bool Hides(const std::string& key, const CSettingsRecord::Value& value) const;

private:
    enum class Place : std::uint8_t {
        Parameters,     // those of the step itself
        Inside,         // a cab among them
        PasswordTable,  // file name, password, file name, password ...
        Rectangle,      // of a page
        Hidden          // everything here is hidden
    };

    explicit CSecretEntries(Place place, const StepDescription* step = nullptr) : m_place(place), m_step(step) {}
    static CSecretEntries Table(CCabView cab);
    [[nodiscard]] bool HidesText(const std::string& key) const;
    [[nodiscard]] bool HidesNumber(const std::string& key) const;
    [[nodiscard]] const OpenParameter* Open(const std::string& key) const;

    Place m_place;
    const StepDescription* m_step;
    bool m_wholeTable = false;
};

/// Whether any parameter of the step is a password, or may be one, and is not empty. The description is that of the
/// step as it is meant. Throws CHostException.
[[nodiscard]] bool HoldsPassword(const StepDescription& step, CCabView parameters);
