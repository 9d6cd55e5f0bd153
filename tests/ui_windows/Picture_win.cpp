#include <wx/bitmap.h>
#include <wx/dcmemory.h>
#include <wx/dcscreen.h>
#include <wx/image.h>

#include "Picture.h"
#include "ui/wx/Text.h"

bool TakePicture(const wxRect& place, const std::string& path)
{
    wxBitmap bitmap(place.GetSize());
    {
        wxScreenDC screen;
        wxMemoryDC picture(bitmap);
        picture.Blit(wxPoint(0, 0), place.GetSize(), &screen, place.GetPosition());
    }
    return bitmap.ConvertToImage().SaveFile(Shown(path + ".bmp"), wxBITMAP_TYPE_BMP);
}
