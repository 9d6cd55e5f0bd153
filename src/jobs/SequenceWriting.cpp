#include "jobs/SequenceWriting.h"

#include "base/Overseer.h"
#include "base/PathNames.h"
#include "base/Unicode.h"
#include "engine/XmlGuard.h"
#include "hostcalls/CabFile.h"
#include "jobs/SequenceForms.h"
#include "platform/FileProblem.h"
#include "platform/Files.h"
#include "platform/TemporaryNames.h"

namespace {

/// A file for a moment, nobody's document.
class CScratchFile {
public:
    explicit CScratchFile(const std::string& folder)
    {
        for (int number = 1; number <= kAttempts; ++number) {
            m_path = folder + platform::TemporaryPrefix("") + "cab-" + std::to_string(number);
            m_result = platform::WriteFileAtomically(m_path, "", platform::Readers::Owner, platform::Existing::Fail);
            if (platform::ProblemOf(m_result) != platform::FileProblem::Exists) return;
        }
    }
    CScratchFile(const CScratchFile&) = delete;
    CScratchFile& operator=(const CScratchFile&) = delete;
    ~CScratchFile()
    {
        if (!m_result) return;
        COverseer* const overseer = InstallOverseer(nullptr);
        (void)platform::DeleteFile(m_path);
        InstallOverseer(overseer);
    }

    const std::string& Path() const { return m_path; }
    platform::FileResult Result() const { return m_result; }

private:
    static constexpr int kAttempts = 1000;  // names of a dead process may be in the way
    std::string m_path;
    platform::FileResult m_result;
};

std::string TakenProblem(const std::string& path)
{
    if (platform::FolderExists(path)) return "The sequence cannot be written to " + path + ": it is a folder.";
    return "The file " + path + " exists already; choose another name or allow it to be overwritten.";
}

std::string WriteProblem(const std::string& path, platform::FileResult result)
{
    return "The sequence cannot be written to " + path + ": " + platform::ErrorText(result.errorNumber) + ".";
}

}  // namespace

std::string TitleFromPath(const std::string& path) { return SanitizeUtf8(SplitPath(FileName(path)).base); }

std::string TargetProblem(const SequenceTarget& target)
{
    if (target.path.empty()) return "No file was named to write the sequence to.";
    const bool taken = platform::NameExists(target.path);
    if (platform::FolderExists(target.path) || (taken && !target.overwrite)) return TakenProblem(target.path);
    const CScratchFile file(FolderOf(target.path));
    return file.Result() ? std::string() : WriteProblem(target.path, file.Result());
}

std::string PutSequenceFile(const SequenceTarget& target, const std::string& bytes)
{
    if (target.path.empty()) return "No file was named to write the sequence to.";
    const auto existing = target.overwrite ? platform::Existing::Replace : platform::Existing::Fail;
    const auto readers = target.holdsPasswords ? platform::Readers::Owner : platform::Readers::AsUsual;
    const auto written = platform::WriteFileAtomically(target.path, bytes, readers, existing);
    if (written) return {};
    if (platform::ProblemOf(written) == platform::FileProblem::Exists) return TakenProblem(target.path);
    return WriteProblem(target.path, written);
}

Expected<std::string> HostFormOf(CCabView cab, const std::string& beside)
{
    const CScratchFile file(FolderOf(beside));
    if (!file.Result())
        return Failure("no file can be made beside " + beside + ": " +
                       platform::ErrorText(file.Result().errorNumber) + ".");
    if (!WriteCabFile(file.Path(), cab)) return Failure("the host cannot write it.");
    const auto again = ReadCabFile(file.Path());
    if (!again) return Failure("the host cannot read what it has written: " + again.Error());
    if (!CabDifferences(cab, again->View()).empty()) return Failure("the host does not keep all its values.");
    platform::FileResult read{.errorNumber = 0};
    auto bytes = platform::ReadWholeFile(file.Path(), XmlLimits{}.bytes, &read);
    if (!bytes)
        return Failure("what the host has written cannot be read: " + platform::ErrorText(read.errorNumber) + ".");
    return std::move(*bytes);
}
