#include "openhost/catalog/Description.h"

#include <algorithm>
#include <array>

#include "base/Text.h"
#include "openhost/files/FilePaths.h"
#include "platform/Files.h"
#include "protocol/Json.h"

namespace openhost {

namespace {

constexpr int kDescriptionVersion = 1;
constexpr std::uint64_t kLargestDescription = 1 << 20;
constexpr std::array kKeys = {"ferrule", "version", "folders", "extensions", "includeEncrypted"};

bool IsListOfTexts(const Json& value)
{
    return value.is_array() && !value.empty() && std::all_of(value.begin(), value.end(), [](const Json& entry) {
               return entry.is_string() && !entry.get<std::string>().empty();
           });
}

/// What is wrong; empty when nothing is.
std::string ProblemOfDescription(const Json& object)
{
    if (TextAt(object, "ferrule") != "index") return "it describes no index";
    if (const int version = CountAt(object, "version"); version != kDescriptionVersion)
        return "it has version " + std::to_string(version) + ", and this program knows version " +
               std::to_string(kDescriptionVersion) + " only";
    for (const auto& [key, value] : object.items())
        if (std::find(kKeys.begin(), kKeys.end(), key) == kKeys.end())
            return "nobody knows its entry \"" + key + "\"";
    if (!object.contains("folders") || !IsListOfTexts(object["folders"]))
        return "\"folders\" has to be a list of paths";
    if (object.contains("extensions") && !IsListOfTexts(object["extensions"]))
        return "\"extensions\" has to be a list of texts such as \"pdf\"";
    if (object.contains("includeEncrypted") && !object["includeEncrypted"].is_boolean())
        return "\"includeEncrypted\" has to be true or false";
    return {};
}

}  // namespace

Expected<IndexDescription> ReadIndexDescription(const std::string& path)
{
    platform::FileResult result;
    const auto text = platform::ReadWholeFile(path, kLargestDescription, &result);
    if (!text && platform::ProblemOf(result) != platform::FileProblem::TooLarge)
        return Failure(path + " cannot be read: " + platform::ErrorText(result.errorNumber));
    const auto object = text ? ParseObject(*text) : std::nullopt;
    if (!object)
        return Failure(path +
                       " is no index description of Ferrule; one that another program made cannot be used. Make one "
                       "with \"ferrule index create\"");
    if (const std::string problem = ProblemOfDescription(*object); !problem.empty())
        return Failure(path + " cannot be used: " + problem);
    IndexDescription description;
    description.folders = BytesListAt(*object, "folders");
    if (object->contains("extensions")) description.extensions = TextsAt(*object, "extensions");
    description.includeEncrypted = FlagAt(*object, "includeEncrypted");
    return description;
}

std::string WriteIndexDescription(const std::string& path, const IndexDescription& description)
{
    const Json object = {{"ferrule", "index"},
                         {"version", kDescriptionVersion},
                         {"folders", TextsOf(description.folders)},
                         {"extensions", description.extensions},
                         {"includeEncrypted", description.includeEncrypted}};
    const auto result =
        platform::WriteFileAtomically(path, object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n",
                                      platform::Readers::AsUsual, platform::Existing::Fail);
    if (result) return {};
    if (platform::ProblemOf(result) == platform::FileProblem::Exists)
        return path + " exists already; remove it, or choose another name";
    return path + " cannot be written: " + platform::ErrorText(result.errorNumber);
}

IndexPlace PlaceOfIndex(const std::string& descriptionPath)
{
    constexpr std::string_view kExtension = ".pdx";
    IndexPlace place;
    place.description = AbsoluteNative(descriptionPath);
    place.base = FolderOfNative(place.description);
    std::string name = NameOfNative(place.description);
    if (name.size() > kExtension.size() &&
        EqualsIgnoreCaseAscii(std::string_view(name).substr(name.size() - kExtension.size()), kExtension))
        name.resize(name.size() - kExtension.size());
    place.folder = JoinNative(place.base, name + ".index");
    place.index = JoinNative(place.folder, "texts.sqlite");
    place.newIndex = JoinNative(place.folder, "texts.new");
    place.lock = JoinNative(place.folder, "texts.lock");
    return place;
}

}  // namespace openhost
