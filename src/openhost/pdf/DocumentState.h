#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <qpdf/InputSource.hh>
#include <qpdf/QPDF.hh>

#include "openhost/pdf/Encryption.h"
#include "openhost/pdf/PdfDocument.h"
#include "platform/Files.h"

namespace openhost {

/// What the next save does to the encryption.
enum class SecurityChange { Keep, Remove, Apply };

struct CPdfDocument::State {
    std::string path;         // empty: never saved
    std::string description;  // names the document in messages
    bool repair = true;
    std::shared_ptr<InputSource> source;
    std::optional<platform::FileStamp> stamp;  // of the file at `path` when it was opened
    std::unique_ptr<QPDF> library;
    std::vector<std::string> warnings;

    bool locked = false;
    std::optional<EncryptionRecord> encryption;
    OpenedWith openedWith = OpenedWith::None;
    bool emptyPasswordOpens = false;
    std::string passwordBytes;
    std::string fileKey;

    SecurityChange change = SecurityChange::Keep;
    bool changeIsSaved = false;
    EncryptionPlan plan;               // of Apply
    std::optional<CPdfError> refusal;  // of the last security request: every save fails with it

    bool modified = false;
    bool maySave = false;         // for what was changed, whatever other changes need
    bool contentChanged = false;  // the file does not show the present state
    bool moreThanInfo = false;    // something else than information entries has changed, too
    bool reload = false;          // saved since: the next use reads the new file
    bool repaired = false;
    std::optional<std::string> loss;  // what of the file cannot be had, for people; nothing until somebody asks
    std::optional<int> pageCount;
    std::set<std::string> changedInfo;
    std::map<std::string, std::string> oldInfo;  // of changed entries, as in the file; empty: there was none
    std::optional<std::map<std::string, std::string>> packetTexts;  // what the metadata packet of the file says
    std::string lateObstacle;                                       // why appending failed when it was tried
    std::optional<std::string> writtenWhole;  // why the last save wrote the whole document; empty: it appended

    /// The library's document, of the file as last saved.
    QPDF& Current();
    bool HasOwnerRights() const { return !locked && (!encryption || openedWith == OpenedWith::Owner); }
    void Reload();
    /// Why a save of the present state cannot be appended to the file: a clause; empty when nothing is known.
    std::string AppendObstacle();
    /// Takes over what the library complained about since the last time.
    void TakeWarnings();
};

/// Reads a file into `state` as far as the empty password leads; locked when a password is needed.
void LoadDocument(CPdfDocument::State& state, std::shared_ptr<InputSource> source);
std::shared_ptr<InputSource> OpenSource(const std::string& path);

}  // namespace openhost
