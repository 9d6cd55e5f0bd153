// Keeps a final action from an input that has changed since it was processed.
#pragma once

#include "base/Overseer.h"
#include "platform/Files.h"

#include <optional>
#include <string>

/// While it lives, no act of the file services is done once the input is another file than the stamp says: it looks
/// before the overseer that was installed is asked and, since that may take a while, again when that lets the act
/// happen.
class CInputGuard final : public COverseer {
public:
    /// Without a stamp everything may happen.
    CInputGuard(std::string inputPath, std::optional<platform::FileStamp> stamp);
    CInputGuard(const CInputGuard&) = delete;
    CInputGuard& operator=(const CInputGuard&) = delete;
    ~CInputGuard() override;

    /// Whether the input has changed, by now or when an act was refused for it.
    bool FindsChange() { return IsChanged(); }

    Answer Ask(Act act, const std::string& file, const std::string& target) override;
    bool Pretends() const override;
    std::optional<bool> Exists(const std::string& path) const override;

private:
    bool IsChanged();

    std::string m_inputPath;
    std::optional<platform::FileStamp> m_stamp;
    COverseer* m_former;
    bool m_foundChange = false;
};
