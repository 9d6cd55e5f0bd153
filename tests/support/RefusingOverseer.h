#pragma once

#include "base/Overseer.h"

/// Lets nothing be done for good.
class CRefusingOverseer : public COverseer {
public:
    CRefusingOverseer() : m_former(InstallOverseer(this)) {}
    ~CRefusingOverseer() override { InstallOverseer(m_former); }
    Answer Ask(Act, const std::string&, const std::string&) override { return Answer::Refuse; }
    bool Pretends() const override { return false; }
    std::optional<bool> Exists(const std::string&) const override { return std::nullopt; }

private:
    COverseer* m_former;
};
