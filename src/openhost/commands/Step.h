#pragma once

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "hostapi/HostRecords.h"
#include "openhost/documents/Documents.h"
#include "openhost/values/Cabinet.h"

namespace openhost {

// The frame for the host's own steps. A step is one file that fills a StepDescription, and one line in OwnSteps.cpp.
// The frame finds the document, checks the rights, reads parameters and pages, and marks the document as modified.

enum class ParameterKind {
    Boolean,
    Integer,
    Number,
    Text,
    Ignored,  ///< stands in sequence files and means nothing to the work
};

/// The value of a parameter; none for one that is absent and has no default. Texts are UTF-8.
using ParameterValue = std::variant<std::monostate, bool, int, double, std::string>;

struct StepParameter {
    const char* key;  ///< "Crop:Left" stands in the cab "Crop"
    ParameterKind kind = ParameterKind::Ignored;
    ParameterValue fallback = {};  ///< of the kind; none: the parameter stays absent
    double least = std::numeric_limits<double>::lowest();
    double most = std::numeric_limits<double>::max();
    std::vector<int> oneOf = {};  ///< when not empty, the only integers allowed
};

/// Values of the parameter "Group".
enum class PageGroup { All, Selected, FromTo };

/// The common page items: "Group", "EvenOdd", "From" and "To".
struct StepPages {
    PageGroup group = PageGroup::All;  ///< when the sequence says nothing
    bool evenOdd = true;               ///< false: the step takes whole ranges only
};

enum class StepResult { Unchanged, Changed, Cancelled };

class CStepRun;

struct StepDescription {
    std::vector<const char*> names;  ///< of the handler; all mean the same step
    const char* group;
    const char* title;
    /// Rights of which the document must grant one; none: the work checks what it needs itself.
    std::vector<PdfRight> rights = {};
    std::optional<StepPages> pages = {};
    /// Nothing: the work reads its parameters itself.
    std::optional<std::vector<StepParameter>> parameters = {};
    /// Does the step on one document. Changed marks it as modified. What fails throws and leaves the document as it
    /// was: everything is worked out before the first change.
    StepResult (*work)(CStepRun& run) = nullptr;
};

/// One run of a step on one document.
class CStepRun {
public:
    /// Reads the parameters. Raises or throws CPdfError for what the step cannot take.
    CStepRun(const StepDescription& step, std::string name, PDDoc document, const CCabinet* params,
             const CCabinet* inputs);

    PDDoc Handle() const { return m_document; }
    CHostDocument& Held() const { return DocumentAt(m_document); }
    CPdfDocument& Pdf() const { return Held().pdf; }
    const CCabinet* Params() const { return m_params; }  ///< null when there are none
    const CCabinet* Inputs() const { return m_inputs; }  ///< null when there are none

    // Declared parameters: the value given, or the default. Asking for one without either throws.
    bool Has(std::string_view key) const;
    bool Flag(std::string_view key) const { return std::get<bool>(Value(key)); }
    int Integer(std::string_view key) const { return std::get<int>(Value(key)); }
    double Number(std::string_view key) const { return std::get<double>(Value(key)); }
    const std::string& Text(std::string_view key) const { return std::get<std::string>(Value(key)); }
    /// The number of a page, counted from 1, in a text parameter.
    int PageNumber(std::string_view key) const;

    /// The pages meant, from 0, in order. Throws when there are no such pages.
    std::vector<int> Pages0() const;

    /// For the person who reads the diagnostics; names step and document.
    void Remark(const std::string& text) const;
    /// Fails the step: "PATH: the step NAME ...", where `reason` goes on behind the name.
    [[noreturn]] void Fail(const std::string& reason, PdfProblem problem = PdfProblem::BadParameter) const;

private:
    const ParameterValue& Value(std::string_view key) const;
    void CheckRights() const;
    void ReadParameters(const std::vector<StepParameter>& declared);
    void RemarkUnknown(const CCabinet& cab, const std::string& prefix) const;
    bool Declares(const std::string& key, bool asCab) const;
    ParameterValue Read(const StepParameter& parameter) const;

    const StepDescription& m_step;
    std::string m_name;
    PDDoc m_document;
    const CCabinet* m_params;
    const CCabinet* m_inputs;
    std::vector<StepParameter> m_declared;
    std::map<std::string, ParameterValue, std::less<>> m_values;
};

/// Does one run and answers how the command ended.
AVCommandStatus RunStep(const StepDescription& step, const std::string& name, PDDoc document, const CCabinet* params,
                        const CCabinet* inputs);

}  // namespace openhost
