#include <gtk/gtk.h>

#include "Picture.h"

bool TakePicture(const wxRect& place, const std::string& path)
{
    GdkPixbuf* const picture =
        gdk_pixbuf_get_from_window(gdk_get_default_root_window(), place.x, place.y, place.width, place.height);
    if (!picture) return false;
    const bool saved = gdk_pixbuf_save(picture, (path + ".png").c_str(), "png", nullptr, nullptr);
    g_object_unref(picture);
    return saved;
}
