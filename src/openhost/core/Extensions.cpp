#include "openhost/core/Extensions.h"

#include <algorithm>

namespace openhost {

ASExtension CExtensions::Add(std::string fileName)
{
    auto extension = std::make_unique<CExtension>();
    extension->fileName = std::move(fileName);
    extension->order = m_next++;
    return m_extensions.Add(std::move(extension));
}

bool CExtensions::NameTaken(ASAtom name) const
{
    bool taken = false;
    m_extensions.ForEach([&](const CExtension& extension) {
        taken = taken || (extension.living && name != kNullAtom && extension.registeredName == name);
    });
    return taken;
}

std::vector<ASExtension> CExtensions::InOrder() const
{
    std::vector<ASExtension> all;
    m_extensions.ForEach([&](const CExtension& extension) { all.push_back(m_extensions.HandleOf(extension)); });
    std::sort(all.begin(), all.end(), [&](ASExtension a, ASExtension b) { return At(a).order < At(b).order; });
    return all;
}

}  // namespace openhost
