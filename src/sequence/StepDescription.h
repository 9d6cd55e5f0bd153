// What is to be known of a step besides what it does, and which of its parameters are passwords, or may be some. A
// step of the plug-in describes itself in its own file; the host's steps, of which only names are known, stand in
// HostSteps. Nobody else knows a step by its name.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "common/SettingsRecord.h"
#include "hostcalls/Cab.h"
#include "protocol/JsonType.h"
#include "sequence/XmlForm.h"

class CSequenceFindings;
struct SequenceStep;

/// Of other makers' steps nobody here knows what they do.
enum class StepMaker { Plugin, Host, Other };

/// What a step writes that is no document and that all documents have in common.
enum class SharedWork { None, Index, Report };

/// Which parameters of a step are not shown because they are passwords, or may be some.
enum class Secrecy {
    AllButOpen,              ///< all but the open ones: a password under a misspelled name is a password still
    TextsButOpen,            ///< the same for texts; of numbers those whose names sound like a password
    WhatSoundsLikePasswords  ///< those whose names do, as deep as they may be
};

/// A parameter that may be shown.
struct OpenParameter {
    enum class Kind {
        Value,
        Rectangle,     ///< a cab of four numbers
        PasswordTable  ///< a cab of file name, password, file name, password ...
    };
    std::string name;
    Kind kind = Kind::Value;
};

/// A parameter with a text that hosts write in the language of their windows.
struct LocalisedParameter {
    std::string_view name;
    const char* onlyWith = nullptr;  ///< it matters only when this flag beside it is set; null: always
};

/// Where a step copies the file of a document to, under a name made of the document's.
struct CopyPlace {
    std::string folder, before, after;
};

/// A step that `sequence new` makes from words.
struct StepTemplate {
    const char* name = nullptr;  ///< null: there is none
    /// `words`: the object under the template's name in the job. A failure says which word is wrong, and tells no
    /// values.
    Expected<WorkflowCommand> (*make)(const Json& words) = nullptr;
};

/// Lives as long as the program. What a new step leaves out is the careful choice.
struct StepDescription {
    std::string_view handler = {};
    StepMaker maker = StepMaker::Plugin;
    bool protects = false;  ///< a document that it did not come through must not be saved
    bool saves = false;     ///< saves each document, as its parameters tell
    bool startsPrograms = false;
    SharedWork shared = SharedWork::None;
    const char* script = nullptr;  ///< the parameter that holds the script it runs
    /// May be null. Throws CHostException.
    std::vector<CopyPlace> (*copies)(CCabView parameters) = nullptr;
    Secrecy secrecy = Secrecy::AllButOpen;
    std::span<const OpenParameter> open = {};
    std::span<const LocalisedParameter> localised = {};  ///< as deep as they may be
    /// Adds what is to be said about one such step, which need not be available. May be null. Throws CHostException.
    void (*check)(const SequenceStep& step, CSequenceFindings& findings) = nullptr;
    StepTemplate fromWords = {};
};

/// From now on these are the plug-in's own steps. The descriptions are borrowed.
void SetOwnSteps(std::vector<const StepDescription*> steps);
[[nodiscard]] const std::vector<const StepDescription*>& OwnSteps();

/// Of every handler; of one that nobody knows what holds for its maker.
[[nodiscard]] const StepDescription& DescribeStep(std::string_view handler);

/// The same for what the name was probably meant to be: letter case does not count, and what sounds like a step of
/// the plug-in is taken for one.
[[nodiscard]] const StepDescription& DescribeMeantStep(std::string_view handler);

/// Whether a trial run may let the step work: all that it writes goes where the trial run notices it.
[[nodiscard]] bool MayBeTried(const StepDescription& step);

/// The name under which the host has the handler, which may be a newer one; nothing when it has none. Throws
/// CHostException.
[[nodiscard]] std::optional<std::string> AvailableHandler(const std::string& name);

// Which parameters of steps are passwords, or may be some.

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
