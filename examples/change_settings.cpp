// Opens a settings file, changes it where the schema allows that, and saves it:
//     change_settings FILE
#include <iostream>
#include <pdfsettings/Component.h>
#include <pdfsettings/Schema.h>
#include <pdfsettings/Settings.h>

using pdfsettings::Component;
using pdfsettings::Dictionary;
using pdfsettings::Error;
using pdfsettings::Finding;
using pdfsettings::Schema;
using pdfsettings::Settings;

namespace {

// Says what came of it.
void Change(Settings& settings, std::string const& key, double number) {
    Dictionary changes;
    changes.Set(key, number);
    std::vector<Finding> const faults = settings.Set(changes);
    std::cout << key << " " << number << ": " << (faults.empty() ? "changed" : "refused") << "\n";
    for (Finding const& fault : faults) {
        std::cout << "  " << fault.key << ": " << fault.message << "\n";
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: change_settings FILE\n";
        return 2;
    }
    try {
        Component const component;
        std::string const schema(Schema::StandardText());
        Settings settings = Settings::FromFile(component, argv[1], schema);

        Change(settings, "ColorImageResolution", 150);
        Change(settings, "ColorImageDepth", 3);

        if (settings.Validate().empty()) {
            settings.Save();
            std::cout << "saved\n";
        }
    } catch (Error const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
