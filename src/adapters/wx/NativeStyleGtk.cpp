#include <gtk/gtk.h>

#include "adapters/wx/NativeStyle.h"

namespace nomira::wx {
namespace {

constexpr double kUsualResolution = 96;

constexpr const char* kCompactClass = "nomira-compact";

constexpr const char* kCompact = R"(
.nomira-compact button, .nomira-compact entry, .nomira-compact combobox {
    min-height: 0;
    min-width: 0;
    padding: 0 3px;
}
.nomira-compact button.image-button { padding: 0; }
.nomira-compact combobox { padding: 0; }
.nomira-compact checkbutton, .nomira-compact radiobutton { padding: 0; }
.nomira-compact check, .nomira-compact radio {
    min-width: 12px;
    min-height: 12px;
    margin: 0 4px 0 0;
    border: 1px solid #707070;
}
.nomira-compact scrollbar slider { min-width: 8px; min-height: 8px; }
)";

GtkWidget* WidgetOf(wxWindow& window) {
    return static_cast<GtkWidget*>(window.GetHandle());
}

void AddStyles() {
    GtkCssProvider* provider = gtk_css_provider_new();
    gtk_css_provider_load_from_data(provider, kCompact, -1, nullptr);
    gtk_style_context_add_provider_for_screen(gdk_screen_get_default(),
                                              GTK_STYLE_PROVIDER(provider),
                                              GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(provider);
    // What is chosen is seen at once, also on the slow PCs of controllers.
    g_object_set(gtk_settings_get_default(), "gtk-enable-animations", FALSE, nullptr);
}

}  // namespace

void MakeCompact(wxTopLevelWindow& window) {
    static const bool bOnce = (AddStyles(), true);
    static_cast<void>(bOnce);
    gtk_style_context_add_class(gtk_widget_get_style_context(WidgetOf(window)), kCompactClass);
}

double ScreenScale() {
    const double nResolution = gdk_screen_get_resolution(gdk_screen_get_default());
    return nResolution > 0 ? nResolution / kUsualResolution : 1;
}

void SetAccessibleName(wxWindow& window, const wxString& sName) {
    if (AtkObject* object = gtk_widget_get_accessible(WidgetOf(window)))
        atk_object_set_name(object, sName.utf8_str());
}

wxString AccessibleName(wxWindow& window) {
    AtkObject* object = gtk_widget_get_accessible(WidgetOf(window));
    const char* pName = object ? atk_object_get_name(object) : nullptr;
    return pName ? wxString::FromUTF8(pName) : wxString();
}

}  // namespace nomira::wx
