#include "openhost/pdf/TextEngine.h"

#include <climits>

#include "openhost/pdf/DocumentFiles.h"
#include "openhost/pdf/OutputProfiles.h"

#ifdef FERRULE_MUPDF_IS_DEFAULT
#include "openhost/pdf/MuPdfTextEngine.h"
#else
#include "openhost/pdf/PopplerTextEngine.h"
#endif

namespace openhost {

#ifdef FERRULE_MUPDF_IS_DEFAULT
std::unique_ptr<CTextEngine> NewTextEngine() { return NewMuPdfTextEngine(); }

std::string TextEngineVersion() { return MuPdfTextEngineVersion(); }
#else
std::unique_ptr<CTextEngine> NewTextEngine() { return NewPopplerTextEngine(); }

std::string TextEngineVersion() { return PopplerTextEngineVersion(); }
#endif

std::string WithoutSubsetMark(const std::string& name)
{
    constexpr std::size_t kMark = 6;
    return name.size() > kMark && name[kMark] == '+' ? name.substr(kMark + 1) : name;
}

void LoadWithoutProfiles(CTextEngine& engine, const std::string& path, const std::string& passwordBytes,
                         const std::vector<std::uint64_t>& profiles)
{
    if (profiles.empty()) {
        engine.LoadFile(path, passwordBytes);
        return;
    }
    std::string bytes = ReadAll(path, INT_MAX);
    SpoilOutputProfiles(bytes, profiles);
    engine.LoadMemory(std::move(bytes), path, passwordBytes);
}

void LoadPresentState(CTextEngine& engine, CPdfDocument& document)
{
    if (document.FileShowsPresentState()) {
        LoadWithoutProfiles(engine, document.Path(), document.PasswordBytes(), OutputProfilesIn(document));
    } else {
        engine.LoadMemory(document.WriteToMemory(), document.Description(), "");
    }
}

}  // namespace openhost
