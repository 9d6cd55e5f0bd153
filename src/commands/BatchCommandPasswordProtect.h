// The step "Password Protect Documents".
#pragma once

#include "commands/BatchCommand.h"

/// Secures each document with the host's standard handler. Saving the document is the sequence engine's business.
class CBatchCommandPasswordProtect final : public CBatchCommand {
public:
    CBatchCommandPasswordProtect();

private:
    void SetDefaultParameters(CCabEditor parameters) override;
    std::vector<std::string> DescribeParameters(CCabView parameters) const override;
    DialogOutcome ShowSettingsDialog(CCabEditor parameters, const DialogServices& dialogs) override;
    bool ProcessDocument(const CommandTarget& target, CCabView parameters) override;
};
