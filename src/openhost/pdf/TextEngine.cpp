#include "openhost/pdf/TextEngine.h"

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

void LoadPresentState(CTextEngine& engine, CPdfDocument& document)
{
    if (document.FileShowsPresentState()) {
        engine.LoadFile(document.Path(), document.PasswordBytes());
    } else {
        engine.LoadMemory(document.WriteToMemory(), document.Description());
    }
}

}  // namespace openhost
