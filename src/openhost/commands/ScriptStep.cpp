// The step that runs a script in each document.

#include "base/Unicode.h"
#include "openhost/commands/Step.h"
#include "openhost/script/Scripts.h"

namespace openhost {

namespace {

StepResult ExecuteScript(CStepRun& run)
{
    CScriptRun script(run.Handle());
    try {
        if (!script.Execute(Utf8ToUtf16(run.Text("ScriptCode"))).rc)
            run.Fail("failed: the script set event.rc to false");
    } catch (const CScriptError& error) {
        run.Fail(error.what());
    }
    return script.Apply() ? StepResult::Changed : StepResult::Unchanged;
}

}  // namespace

const StepDescription& JavaScriptStep()
{
    static const StepDescription step{
        .names = {"JavaScript"},
        .group = "Document",
        .title = "Run JavaScript",
        .parameters = {{{.key = "ScriptCode", .kind = ParameterKind::Text, .fallback = std::string()},
                        {.key = "ScriptName"}}},
        .work = &ExecuteScript};
    return step;
}

}  // namespace openhost
