#include <gtk/gtk.h>
#include <wx/app.h>
#include <wx/apptrait.h>
#include <wx/evtloop.h>

#include "ui/wx/System.h"
#include "ui/wx/Text.h"

namespace {

/// The part of a control that has the focus: what scrolls is around it.
GtkWidget* FocusWidget(const wxWindow& window)
{
    GtkWidget* const widget = static_cast<GtkWidget*>(window.GetHandle());
    if (!GTK_IS_SCROLLED_WINDOW(widget)) return widget;
    GtkWidget* const inside = gtk_bin_get_child(GTK_BIN(widget));
    return inside ? inside : widget;
}

GtkWidget* LabelWidget(GtkWidget* widget)
{
    if (GTK_IS_LABEL(widget) || !GTK_IS_BIN(widget)) return widget;
    GtkWidget* const inside = gtk_bin_get_child(GTK_BIN(widget));
    return inside ? LabelWidget(inside) : widget;
}

}  // namespace

std::string TypedPath(const wxString& path) { return std::string(path.fn_str()); }

wxString ShownPath(const std::string& path) { return wxString(path.c_str(), *wxConvFileName); }

void PrepareStart() { gtk_disable_setlocale(); }  // numbers in documents are written by code that asks the locale

void NameForReaders(wxWindow& control, const std::string& name, wxWindow* label)
{
    GtkWidget* const widget = FocusWidget(control);
    if (!name.empty()) atk_object_set_name(gtk_widget_get_accessible(widget), SanitizeUtf8(name).c_str());
    for (wxWindow* const part : control.GetChildren()) NameForReaders(*part, name, nullptr);
    if (!label) return;
    GtkWidget* const text = LabelWidget(static_cast<GtkWidget*>(label->GetHandle()));
    if (GTK_IS_LABEL(text)) gtk_label_set_mnemonic_widget(GTK_LABEL(text), widget);
}

std::string ReadersName(wxWindow& control)
{
    const char* const name = atk_object_get_name(gtk_widget_get_accessible(FocusWidget(control)));
    return name ? name : "";
}

void TakeEvents(int atMost)
{
    for (int taken = 0; taken < atMost && gtk_events_pending(); ++taken) gtk_main_iteration_do(FALSE);
    if (wxTheApp) wxTheApp->ProcessPendingEvents();
}

void PassOnQuit() {}

COwner::COwner(void*)
{
    // A host with windows uses the same toolkit in the same process, so its window is one that the toolkit knows.
    if (wxTheApp) m_window = wxTheApp->GetTopWindow();
}

COwner::~COwner() = default;

CLook::CLook() { (void)m_cookie; }

CLook::~CLook() = default;
