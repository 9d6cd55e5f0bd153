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

/// A modeless window that shows progress. Its cancel button hides it.
class CProgressWindow {
public:
    virtual ~CProgressWindow() = default;
    virtual void Show() = 0;
    virtual void Hide() = 0;
    virtual bool IsVisible() const = 0;
    virtual void SetText(const std::string& text) = 0;
    virtual void SetStatus(const std::string& text) = 0;
    virtual void SetRange(int last) = 0;
    virtual void SetPosition(int position) = 0;
    /// Dispatches at most so many pending messages of the thread.
    virtual void PumpMessages(int atMost) = 0;
};

/// Passes progress on to a window. Without a window every operation does nothing and nothing is ever cancelled.
class CCustomMonitor final : public CProgressMonitorWrapper {
public:
    using WindowFactory = std::function<std::unique_ptr<CProgressWindow>()>;

    /// Creates the window, hidden. False when there is none to be had: the monitor then stays silent.
    bool Start(const WindowFactory& makeWindow);

    void BeginOperation() override;
    void EndOperation() override;
    void SetOperationText(const std::string& text) override;
    void SetStatusText(const std::string& text) override;
    void SetDuration(int duration) override;
    void SetCurrentValue(int value) override;
    bool IsCancelled() override;

private:
    void Pump();

    std::unique_ptr<CProgressWindow> m_window;
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
