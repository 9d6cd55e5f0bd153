#pragma once

#include "platform/Overseer.h"

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
