// Lists the settings that an application shows in a dialog: list_sets [APPLICATION]
#include <iostream>
#include <pdfsettings/Error.h>
#include <pdfsettings/SettingsList.h>

int main(int argc, char** argv) {
    try {
        for (auto const& set : pdfsettings::List({argc > 1 ? argv[1] : ""})) {
            std::cout << set.Name() << (set.IsReadOnly() ? " (read-only)" : "") << "\n";
        }
    } catch (pdfsettings::Error const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
