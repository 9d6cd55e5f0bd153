#include <gtest/gtest.h>

#include "common/ErrorReport.h"
#include "common/Progress.h"
#include "support/TemporaryFolder.h"

namespace {

class CFakeWindow final : public CProgressWindow {
public:
    explicit CFakeWindow(std::string& calls) : m_calls(calls) {}
    void Show() override { m_visible = true, m_calls += "show "; }
    void Hide() override { m_visible = false, m_calls += "hide "; }
    bool IsVisible() const override { return m_visible; }
    void SetText(const std::string& text) override { m_calls += "text:" + text + " "; }
    void SetStatus(const std::string& text) override { m_calls += "status:" + text + " "; }
    void SetRange(int last) override { m_calls += "range:" + std::to_string(last) + " "; }
    void SetPosition(int position) override { m_calls += "at:" + std::to_string(position) + " "; }
    void PumpMessages(int atMost) override
    {
        m_calls += "pump:" + std::to_string(atMost) + " ";
        if (cancelWhilePumping) Hide();
    }
    bool cancelWhilePumping = false;

private:
    std::string& m_calls;
    bool m_visible = false;
};

void UseAll(CProgressMonitorWrapper& monitor)
{
    monitor.BeginOperation();
    monitor.SetOperationText("a");
    monitor.SetStatusText("b");
    monitor.SetDuration(3);
    monitor.SetCurrentValue(2);
}

}  // namespace

TEST(Progress, WithoutAWindowNothingHappensAndNothingIsCancelled)
{
    CCustomMonitor monitor;
    EXPECT_FALSE(monitor.Start([] { return nullptr; }));
    EXPECT_FALSE(monitor.Start({}));
    UseAll(monitor);
    monitor.EndOperation();
    EXPECT_FALSE(monitor.IsCancelled());
}

TEST(Progress, EveryChangePumpsMessagesAndHidingCancels)
{
    std::string calls;
    CFakeWindow* window = nullptr;
    CCustomMonitor monitor;
    ASSERT_TRUE(monitor.Start([&] {
        auto made = std::make_unique<CFakeWindow>(calls);
        window = made.get();
        return made;
    }));
    UseAll(monitor);
    EXPECT_EQ(calls, "show text:a pump:101 status:b pump:101 range:3 pump:101 at:2 pump:101 ");
    EXPECT_FALSE(monitor.IsCancelled());
    window->cancelWhilePumping = true;
    EXPECT_TRUE(monitor.IsCancelled()) << "the button is seen by the very test that pumps its message";
}

TEST(ErrorReport, IsSavedWithMarkAndWindowsLineEnds)
{
    const CTemporaryFolder folder;
    CErrorReport report;
    report.Add({"Cannot open \xC3\xA4", true, "/in/a.pdf", 1});
    report.Add({"No text", false, "b.pdf", 12});
    const auto path = folder.Write("Report.txt", std::string(5000, 'x'));
    ASSERT_TRUE(report.Save(path));
    EXPECT_EQ(FileBytes(path),
              "\xEF\xBB\xBFThe following errors and warnings have been encountered during the processing.\r\n"
              "Error\tCannot open \xC3\xA4\t/in/a.pdf\t1\r\n"
              "Warning\tNo text\tb.pdf\t12\r\n");
    EXPECT_FALSE(report.Save(folder / "missing/Report.txt"));
    EXPECT_FALSE(report.Save("/dev/full"));
}
