// The toolkit starts, makes a window that is not shown, and ends.
#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/frame.h>
#include <wx/init.h>
#include <wx/listctrl.h>

TEST(WxWidgets, MakesAListOfThreeRows)
{
    wxApp::SetInstance(new wxApp);
    ASSERT_TRUE(wxInitialize());
    auto* const frame = new wxFrame(nullptr, wxID_ANY, wxString::FromUTF8("Größe"));
    auto* const list = new wxListCtrl(frame, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxLC_REPORT | wxLC_VIRTUAL);
    list->SetItemCount(3);
    EXPECT_EQ(list->GetItemCount(), 3);
    EXPECT_EQ(frame->GetTitle(), wxString::FromUTF8("Größe"));
    delete frame;
    wxUninitialize();
}
