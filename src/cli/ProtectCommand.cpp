#include "cli/ProtectCommand.h"

#include <string>
#include <utility>
#include <vector>

#include "cli/RunArguments.h"
#include "cli/RunCommands.h"
#include "platform/Files.h"
#include "platform/Paths.h"
#include "protocol/Json.h"
#include "protocol/ProtectOrder.h"

namespace cli {

namespace {

struct SecretOption {
    const char *option, *file;
};
constexpr SecretOption kSecrets[] = {{"--owner-password-file", kOwnerPasswordFile},
                                     {"--open-password-file", kOpenPasswordFile},
                                     {"--passwords-from", kPasswordTable}};

ProtectOrder OrderOf(const CArguments& arguments)
{
    RequirePlace(arguments, "protected documents");
    const bool anyPassword = arguments.Has("--owner-password-file") || arguments.Has("--open-password-file") ||
                             arguments.Has("--passwords-from");
    if (!anyPassword)
        FailUsage(
            "give passwords: --owner-password-file, --open-password-file, --passwords-from, or several of them");
    auto allowed = ParseDocumentRights(arguments.Text("--allow"));
    if (!allowed) FailUsage("--allow: " + allowed.Error());
    if (*allowed != AllDocumentRights() && !arguments.Has("--owner-password-file"))
        FailUsage(
            "--allow restricts only with --owner-password-file: without an owner password whoever can open a "
            "document could lift the restrictions");
    return {.method = *FindProtectMethod(arguments.Text("--method")),
            .allowed = std::move(*allowed),
            .inPlace = arguments.Has("--in-place"),
            .breakSignatures = arguments.Has("--break-signatures")};
}

/// Each worker reads the file, and a later start of the run does so again.
std::string SecretPath(const std::string& typed, const char* option)
{
    if (typed == "-")
        FailUsage(std::string(option) + " takes a file, which is read more than once; - has no meaning");
    const std::string path = ExistingPath(typed);
    if (const auto readable = platform::CheckReadable(path); !readable)
        FailStart(path + ": " + platform::ErrorText(readable.errorNumber) + "; " + option +
                  " takes a regular file, which is read more than once");
    return path;
}

WorkDescription WorkOf(const CArguments& arguments, const Screen& screen)
{
    WorkDescription work{.kind = kProtectWork, .files = {}, .settings = LineOf(ProtectOrderJson(OrderOf(arguments)))};
    for (const auto& [option, file] : kSecrets) {
        if (!arguments.Has(option)) continue;
        const std::string path = SecretPath(arguments.Text(option), option);
        work.files.push_back({file, path});
        if (platform::OthersMayRead(path))
            *screen.messages << "ferrule: warning: " << Printable(path)
                             << ": others may read this file with passwords; \"" << platform::HowToKeepFromOthers()
                             << "\" keeps it to you\n";
    }
    return work;
}

}  // namespace

int ProtectCommand(const CArguments& arguments, const Screen& screen)
{
    WorkDescription work = WorkOf(arguments, screen);
    RunDescription request = ReadPlaces(arguments, std::move(work), ReadInputs(arguments, "protect"));
    request.extensions = "pdf";
    return RunAndReport(ReadRun(arguments, std::move(request)), arguments, screen);
}

}  // namespace cli
