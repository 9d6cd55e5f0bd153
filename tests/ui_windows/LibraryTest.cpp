// The library of windows as the plug-in loads it.

#ifndef _WIN32
#include <gtk/gtk.h>
#endif

#include <clocale>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/Files.h"
#include "platform/Libraries.h"
#include "ui/WindowsFactory.h"
#include "ui/WindowsLibrary.h"

namespace {

using testing::HasSubstr;

#ifdef _WIN32
void CloseSoon(int&) {}
constexpr bool kCloses = false;
#else
constexpr bool kCloses = true;

gboolean CloseDialogs(gpointer closed)
{
    GList* const windows = gtk_window_list_toplevels();
    for (GList* place = windows; place; place = place->next)
        if (gtk_widget_get_visible(GTK_WIDGET(place->data))) {
            gtk_window_close(GTK_WINDOW(place->data));
            ++*static_cast<int*>(closed);
        }
    g_list_free(windows);
    return *static_cast<int*>(closed) == 0;
}

void CloseSoon(int& closed) { g_timeout_add(200, &CloseDialogs, &closed); }
#endif

TEST(WindowsLibrary, IsLoadedByTheFirstWindowAndLeavesTheProcessAsItWas)
{
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    CWindowsLibrary library(PLUG_IN, [] { return nullptr; });
    const auto windows = library.Windows();
    ASSERT_TRUE(windows) << windows.Error();
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), locale);
    EXPECT_EQ(*library.Windows(), *windows);

    const auto progress = (*windows)->MakeProgress();
    ASSERT_TRUE(progress);
    EXPECT_FALSE(progress->IsVisible());
    progress->Show();
    progress->PumpMessages(101);
    EXPECT_TRUE(progress->IsVisible());
    progress->Hide();
    EXPECT_FALSE(progress->IsVisible());

    if (!kCloses) return;
    int closed = 0;
    CloseSoon(closed);
    DialogForm form{.title = "Fails"};
    form.buttons = {{.what = Button{"Cancel", []() -> FormAnswer { throw std::runtime_error("in the plug-in"); },
                                    ButtonRole::Cancel}}};
    EXPECT_THROW((*windows)->Show(form), std::runtime_error) << "the plug-in's own exceptions come back to it";
    EXPECT_EQ(closed, 1);
}

TEST(WindowsLibrary, SaysWhyThereAreNoWindows)
{
    CWindowsLibrary missing("/nowhere/Ferrule.api", {});
    EXPECT_THAT(missing.Windows().Error(), HasSubstr("/nowhere/Ferrule/FerruleWindows"));
    CWindowsLibrary relative("Ferrule.api", {});
    EXPECT_FALSE(relative.Windows()) << "nothing is looked for";

    std::string problem;
    const auto make = reinterpret_cast<MakeWindowsProc>(platform::FunctionOfLibrary(LIBRARY, kMakeWindows, problem));
    ASSERT_TRUE(make) << problem;
    WindowsRequest request = {"0.0.1 built by hand", nullptr, nullptr, {}};
    EXPECT_EQ(make(&request), nullptr);
    EXPECT_THAT(request.problem, HasSubstr("another version"));
}

}  // namespace
