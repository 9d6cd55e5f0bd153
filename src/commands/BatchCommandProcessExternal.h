// The step "Start External Application".
#pragma once

#include "commands/BatchCommand.h"

/// Starts a program or batch file for each document and does not wait for it. A missing program is skipped silently;
/// a start is logged, whether it succeeded or not; the sequence goes on in every case.
class CBatchCommandProcessExternal final : public CBatchCommand {
public:
    /// The log is borrowed and must outlive the object.
    explicit CBatchCommandProcessExternal(CLogWriter& log);

private:
    void SetDefaultParameters(CCabEditor parameters) override;
    std::vector<std::string> DescribeParameters(CCabView parameters) const override;
    DialogOutcome ShowSettingsDialog(CCabEditor parameters, const DialogServices& dialogs) override;
    bool ProcessDocument(const CommandTarget& target, CCabView parameters) override;

    CLogWriter& m_log;
};
