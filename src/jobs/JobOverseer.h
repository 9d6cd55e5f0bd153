// Asks the host before anything is done for good.
#pragma once

#include "protocol/Acts.h"

/// Installed as long as it lives, when the host has the jobs table; the one before comes back then.
class CJobOverseer final : public COverseer {
public:
    /// `pretends`: the job is a trial run.
    explicit CJobOverseer(bool pretends);
    CJobOverseer(const CJobOverseer&) = delete;
    CJobOverseer& operator=(const CJobOverseer&) = delete;
    ~CJobOverseer() override;

    Answer Ask(Act act, const std::string& file, const std::string& target) override;
    bool Pretends() const override { return m_pretends; }
    std::optional<bool> Exists(const std::string& path) const override;

private:
    bool m_pretends;
    bool m_installed;
    COverseer* m_before = nullptr;
};
