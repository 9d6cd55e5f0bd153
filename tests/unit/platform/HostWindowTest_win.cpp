#include <vector>

#include <gtest/gtest.h>

#include "platform/HostWindow.h"
#include "platform/Windows_win.h"

namespace {

constexpr char kClass[] = "FerruleTestWIndow";
constexpr UINT kOurs = WM_APP + 1;

std::vector<UINT> received;

LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM word, LPARAM both)
{
    if (message == kOurs || message == WM_CLOSE) {
        received.push_back(message);
        return 0;
    }
    return DefWindowProcA(window, message, word, both);
}

class CWindow {
public:
    CWindow()
    {
        WNDCLASSA facts{};
        facts.lpfnWndProc = Receive;
        facts.hInstance = GetModuleHandleA(nullptr);
        facts.lpszClassName = kClass;
        RegisterClassA(&facts);
        m_window = CreateWindowExA(0, kClass, "test", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 60, 400, 300, nullptr,
                                   nullptr, facts.hInstance, nullptr);
        received.clear();
    }
    ~CWindow() { Destroy(); }
    void Destroy() { DestroyWindow(m_window); }
    HWND Get() const { return m_window; }
    RECT Place() const
    {
        RECT place{};
        GetWindowRect(m_window, &place);
        return place;
    }

private:
    HWND m_window;
};

}  // namespace

TEST(HostWindow, IsFoundByItsClassAndMovedAwayWithItsSize)
{
    EXPECT_EQ(platform::FindHostWindow(kClass), nullptr);
    CWindow window;
    if (!window.Get()) GTEST_SKIP() << "nothing to show windows on";
    EXPECT_EQ(platform::FindHostWindow("ferruletestwindow"), window.Get()) << "letter case does not count";
    platform::HideAndMoveOffScreen(platform::FindHostWindow(kClass));
    EXPECT_FALSE(IsWindowVisible(window.Get()));
    const RECT away = window.Place();
    EXPECT_EQ(away.left, 10000);
    EXPECT_EQ(away.top, 10000);
    EXPECT_EQ(away.right - away.left, 400);
    EXPECT_EQ(away.bottom - away.top, 300);
    SetWindowPos(window.Get(), nullptr, 0, 0, 500, 200, SWP_SHOWWINDOW | SWP_NOACTIVATE);
    platform::MoveOffScreen(window.Get());
    EXPECT_FALSE(IsWindowVisible(window.Get()));
    EXPECT_EQ(window.Place().left, 10000);
    EXPECT_EQ(window.Place().right - window.Place().left, 500);
    window.Destroy();
    EXPECT_FALSE(platform::IsWindow(window.Get()));
    EXPECT_FALSE(platform::PostClose(window.Get()));
    platform::MoveOffScreen(window.Get());
}

TEST(HostWindow, MessagesAreDispatchedUpToTheBound)
{
    CWindow window;
    if (!window.Get()) GTEST_SKIP() << "nothing to show windows on";
    while (platform::PumpMessages(1000) > 0) {
    }
    received.clear();
    for (int i = 0; i < 5; ++i) PostMessageA(window.Get(), kOurs, 0, 0);
    EXPECT_TRUE(platform::PostClose(window.Get()));
    EXPECT_EQ(platform::PumpMessages(3), 3);
    EXPECT_EQ(received.size(), 3u);
    EXPECT_GE(platform::PumpMessages(1000), 3);
    EXPECT_EQ(received, (std::vector<UINT>{kOurs, kOurs, kOurs, kOurs, kOurs, WM_CLOSE}));
    PostThreadMessageA(GetCurrentThreadId(), kOurs, 0, 0);
    PostQuitMessage(7);
    EXPECT_EQ(platform::PumpMessages(1000), 0) << "a message without a window is for nobody";
    MSG message{};
    ASSERT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, UINT{WM_QUIT}) << "the host's loop still learns of it";
    EXPECT_EQ(message.wParam, 7u);
}
