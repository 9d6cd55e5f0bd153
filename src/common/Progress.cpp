#include "common/Progress.h"

bool CCustomMonitor::Start(const WindowFactory& makeWindow)
{
    m_window = makeWindow ? makeWindow() : nullptr;
    return m_window != nullptr;
}

void CCustomMonitor::Pump()
{
    constexpr int kMessagesAtOnce = 101;
    m_window->PumpMessages(kMessagesAtOnce);
}

void CCustomMonitor::BeginOperation()
{
    if (m_window) m_window->Show();
}

void CCustomMonitor::EndOperation()
{
    if (m_window) m_window->Hide();
}

void CCustomMonitor::SetOperationText(const std::string& text)
{
    if (!m_window) return;
    m_window->SetText(text);
    Pump();
}

void CCustomMonitor::SetStatusText(const std::string& text)
{
    if (!m_window) return;
    m_window->SetStatus(text);
    Pump();
}

void CCustomMonitor::SetDuration(int duration)
{
    if (!m_window) return;
    m_window->SetRange(duration);
    Pump();
}

void CCustomMonitor::SetCurrentValue(int value)
{
    if (!m_window) return;
    m_window->SetPosition(value);
    Pump();
}

bool CCustomMonitor::IsCancelled()
{
    if (!m_window) return false;
    Pump();
    return !m_window->IsVisible();
}
