// Lists the settings that an application is to show, and the folder for the user's own:
//     list_settings [APPLICATION]
#include <iostream>
#include <optional>
#include <pdfsettings/Component.h>
#include <pdfsettings/Error.h>
#include <pdfsettings/SettingsList.h>

using pdfsettings::Component;
using pdfsettings::Error;
using pdfsettings::ListedSettings;
using pdfsettings::SettingsList;

namespace {

void List(Component const& component, std::optional<std::string> const& application) {
    for (ListedSettings const& listed : SettingsList::Read(component, application)) {
        bool const isHidden = application && listed.IsHiddenFrom(*application);
        if (!isHidden) {
            std::cout << listed.name << (listed.isReadOnly ? " (read-only)" : "") << "\n";
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        Component const component;
        List(component, argc > 1 ? std::optional<std::string>(argv[1]) : std::nullopt);
        std::cout << "folder: " << SettingsList::UserFolder(component) << "\n";
    } catch (Error const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
