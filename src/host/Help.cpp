#include "host/Help.h"

#include <cctype>

#include "base/Names.h"
#include "base/Text.h"
#include "host/AppSettings.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "platform/Programs.h"

namespace {

constexpr char kFirstPage[] = "index.htm";

/// RFC 8089; whatever a path may hold besides letters and digits is escaped.
std::string FileAddress(const std::string& path)
{
    std::string address = path.starts_with('/') ? "file://" : "file:///";
    for (const char letter : platform::Utf8FromNarrow(ReplaceAll(path, "\\", "/"))) {
        const auto byte = static_cast<unsigned char>(letter);
        const bool plain =
            byte < 0x80 && (std::isalnum(byte) || std::string_view("/:._-~").find(letter) != std::string_view::npos);
        address += plain ? std::string(1, letter) : FormatText("%%%02X", byte);
    }
    return address;
}

}  // namespace

std::string HelpPlace(const AppPaths& paths, const std::string& topic)
{
    // Where the plug-in's own file is called otherwise than usual, its path is what stands there.
    if (EqualsIgnoreCaseAscii(Extension(paths.helpFile), "chm") && platform::FileExists(paths.helpFile))
        return paths.helpFile;
    const std::size_t mark = topic.find('#');
    const std::string page = paths.helpFolder + (topic.empty() ? kFirstPage : topic.substr(0, mark));
    if (!platform::FileExists(page)) return {};
    return FileAddress(page) + (mark == std::string::npos ? "" : topic.substr(mark));
}

std::string ShowHelp(const AppPaths& paths, const std::string& topic)
{
    const std::string place = HelpPlace(paths, topic);
    if (place.empty())
        return "The help is missing: there is neither the file " + platform::Utf8FromNarrow(paths.helpFile) +
               " nor the folder " + platform::Utf8FromNarrow(paths.helpFolder) + ".";
    if (platform::OpenDocument(place)) return {};
    return "No program could be started to show the help, " + place + ".";
}
