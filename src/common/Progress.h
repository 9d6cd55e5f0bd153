#pragma once

#include <functional>
#include <memory>
#include <string>

/// The progress of a long operation as engine and tools report it.
class CProgressMonitorWrapper {
public:
    virtual ~CProgressMonitorWrapper() = default;
    virtual void BeginOperation() = 0;
    virtual void EndOperation() = 0;
    virtual void SetOperationText(const std::string& text) = 0;
    virtual void SetStatusText(const std::string& text) = 0;
    virtual void SetDuration(int duration) = 0;
    virtual void SetCurrentValue(int value) = 0;
    /// Also keeps the progress window alive, so ask often.
    virtual bool IsCancelled() = 0;
};

/// For a run that nobody watches: every call does nothing and nothing is ever cancelled.
class CSilentProgress final : public CProgressMonitorWrapper {
public:
    void BeginOperation() override {}
    void EndOperation() override {}
    void SetOperationText(const std::string&) override {}
    void SetStatusText(const std::string&) override {}
    void SetDuration(int) override {}
    void SetCurrentValue(int) override {}
    bool IsCancelled() override { return false; }
};
