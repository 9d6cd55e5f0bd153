#pragma once

#include <memory>
#include <string>

#include "openhost/app/HostWindow.h"

namespace openhost {

/// The host as its window shows it. Puts "Open..." and "Close" into the "File" menu. One object, made when the host's
/// menus are there.
class CHostContent final : public CWindowContent {
public:
    CHostContent();
    CHostContent(const CHostContent&) = delete;
    CHostContent& operator=(const CHostContent&) = delete;

    std::string Title() const override;
    std::vector<WindowMenu> Menus() const override;
    std::vector<WindowDocument> Documents() const override;
    void Closed() override;

    /// Opens a view of a document; the user is told when that fails.
    static void Open(const std::string& path);
};

/// Loads the library beside the program. Null: `problem` is a sentence that says why there is no window. The content
/// is borrowed.
std::unique_ptr<CHostWindow> MakeHostWindow(CWindowContent& content, std::string& problem);

}  // namespace openhost
