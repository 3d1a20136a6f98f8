// Lists the settings that an application is to show, and the folder for the user's own:
//     list_settings [APPLICATION]
#include <iostream>
#include <optional>
#include <pdfsettings/Component.h>
#include <pdfsettings/Error.h>
#include <pdfsettings/SettingsList.h>

using namespace pdfsettings;

int main(int argc, char** argv) {
    try {
        Component const component;
        auto const application =
            argc > 1 ? std::optional<std::string>(argv[1]) : std::optional<std::string>();
        for (ListedSettings const& listed : SettingsList::Read(component, application)) {
            bool const isHidden = application && listed.IsHiddenFrom(*application);
            if (!isHidden) {
                std::cout << listed.name << (listed.isReadOnly ? " (read-only)" : "") << "\n";
            }
        }
        std::cout << "folder: " << SettingsList::UserFolder(component) << "\n";
    } catch (Error const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
