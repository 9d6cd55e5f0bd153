#include <gtk/gtk.h>
#include <wx/uiaction.h>

#include <stdexcept>

#include "Keys.h"

bool CanPressKeys() { return true; }

void PressKey(wxTopLevelWindow& window, int key, int modifiers)
{
    // There is nobody who manages windows and gives them the keyboard.
    if (!window.IsActive())
        gdk_window_focus(gtk_widget_get_window(static_cast<GtkWidget*>(window.GetHandle())), GDK_CURRENT_TIME);
    wxUIActionSimulator keyboard;
    if (key != 0 && !keyboard.Char(key, modifiers)) throw std::runtime_error("no keys can be pressed");
    gdk_display_flush(gdk_display_get_default());
}

bool HasKeyboard(const wxWindow& control)
{
    auto* const widget = static_cast<GtkWidget*>(control.GetHandle());
    GtkWidget* const focus = gtk_window_get_focus(GTK_WINDOW(gtk_widget_get_toplevel(widget)));
    return focus && (focus == widget || gtk_widget_is_ancestor(focus, widget));
}
