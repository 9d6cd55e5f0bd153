// The host's jobs table. Without it, or with an older one that lacks a function, everything here does nothing and
// answers as stated. None of the functions throws.
#pragma once

#include <optional>
#include <string>

#include "hostapi/HostTypes.h"

[[nodiscard]] bool JobsTablePresent();

/// `inputs` is -1 when the number is not known yet; `outcome` and `end` are the kJobFile... and kJobRun... values of
/// the jobs table.
void JobRunStarts(int inputs) noexcept;
void JobFileDone(const std::string& path, int outcome, const std::string& message) noexcept;
void JobRunEnds(int end, const std::string& message) noexcept;

/// The JSON text of the job that this start of the host is for; nothing when there is none.
[[nodiscard]] std::optional<std::string> JobText() noexcept;

struct HostJobInput {
    std::string path;  // host encoding
    int number = 0;    // in the whole run, from 1
    int total = 0;     // of the whole run
    bool finalActionOnly = false;
};
/// The next input of the job; nothing when there is none left. May wait.
[[nodiscard]] std::optional<HostJobInput> NextJobInput() noexcept;

/// A kJobAct... value; without the table "allowed", and "refused" when the host cannot be asked.
[[nodiscard]] int JobMayAct(int act, const std::string& file, const std::string& target) noexcept;
/// A kJobPath... value; without the table "as on disk".
[[nodiscard]] int JobPathState(const std::string& path) noexcept;

/// What of a document did not come through its repair, one sentence, empty when nothing is lost; nothing when the
/// host does not tell.
[[nodiscard]] std::optional<std::string> JobDocumentLoss(PDDoc document) noexcept;

/// Whether saving the document anew makes signatures in it worthless; nothing when the host does not tell.
[[nodiscard]] std::optional<bool> JobDocumentSigned(PDDoc document) noexcept;

/// Whether also a change of the document's properties that is appended to its file makes signatures in it worthless;
/// nothing when the host does not tell.
[[nodiscard]] std::optional<bool> JobDocumentCertified(PDDoc document) noexcept;

/// The next save of the document is appended to the bytes of its file, whatever its flags and its target are. `only`:
/// it fails where that is not possible; else the whole document is written then. Answers whether the host knows how.
[[nodiscard]] bool JobNextSaveAppends(PDDoc document, bool only) noexcept;

/// Why a change of the document's properties cannot be appended to its file: a clause like "its file was repaired",
/// UTF-8, empty when nothing stands against it; nothing when the host does not tell.
[[nodiscard]] std::optional<std::string> JobAppendObstacle(PDDoc document) noexcept;

/// Why the document's last save wrote all of it: a clause, UTF-8, empty when it appended; nothing when it was not
/// saved yet, or when the host does not tell.
[[nodiscard]] std::optional<std::string> JobWrittenWhole(PDDoc document) noexcept;

/// The next save of the document writes all of it, and fails where a text that an information entry had before it was
/// changed still stands in the new file outside of its content. Answers whether the host knows how.
[[nodiscard]] bool JobNextSaveForgets(PDDoc document) noexcept;

/// The next save of the document replaces no file. A host that does not offer this may replace one that appears in
/// the moment before it writes.
void JobNextSaveIsNew(PDDoc document) noexcept;

/// What was found in the present input: a JSON array, UTF-8.
void JobFileFound(const std::string& json) noexcept;

/// While it lives, what is put are copies beside the results of the present input.
class CJobCopying {
public:
    CJobCopying() noexcept;
    ~CJobCopying();
    CJobCopying(const CJobCopying&) = delete;
    CJobCopying& operator=(const CJobCopying&) = delete;
};

/// From now on the present input's acts are its final action.
void JobFinalActionBegins() noexcept;
/// One JSON object, UTF-8.
void JobReport(const std::string& json) noexcept;
/// A kJobMark... value. Everything logged before must be written.
void JobLogMark(int mark) noexcept;
