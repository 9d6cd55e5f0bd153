#pragma once

#include <string>

#include "openhost/pdf/PdfDocument.h"
#include "platform/Overseer.h"

inline openhost::CPdfDocument TitledDocument(const std::string& path, const std::string& title)
{
    openhost::CPdfDocument document = openhost::CPdfDocument::Open(path);
    document.SetInfo("Title", title);
    return document;
}

inline std::string TitleOf(const std::string& path)
{
    return openhost::CPdfDocument::Open(path).Info("Title").value_or("<none>");
}

/// Lets nothing be done for good.
class CRefusingOverseer final : public platform::COverseer {
public:
    CRefusingOverseer() : m_former(platform::InstallOverseer(this)) {}
    ~CRefusingOverseer() override { platform::InstallOverseer(m_former); }
    Answer Ask(Act, const std::string&, const std::string&) override { return Answer::Refuse; }
    bool Pretends() const override { return false; }
    std::optional<bool> Exists(const std::string&) const override { return std::nullopt; }

private:
    platform::COverseer* m_former;
};
