#include "jobs/SequenceWriting.h"

#include "common/Encoding.h"
#include "common/FileNames.h"
#include "platform/Files.h"

#include <cerrno>

namespace {

constexpr unsigned kOwnerOnly = 0600, kAsOthersDo = 0666;  // less what the user's mask takes away

}  // namespace

std::string TitleFromPath(const std::string& path) { return SanitizeUtf8(SplitPath(FileName(path)).base); }

std::string PutSequenceFile(const SequenceTarget& target, const std::string& bytes)
{
    if (target.path.empty()) return "No file was named to write the sequence to.";
    const auto existing = target.overwrite ? platform::Existing::Replace : platform::Existing::Fail;
    const auto written =
        platform::WriteFileAtomically(target.path, bytes, target.holdsPasswords ? kOwnerOnly : kAsOthersDo, existing);
    if (written) return {};
    if (written.errorNumber == EEXIST)
        return "The file " + target.path + " exists already; choose another name or allow it to be overwritten.";
    return "The sequence cannot be written to " + target.path + ": " + platform::ErrorText(written.errorNumber) + ".";
}
