// Makes settings of plain values, and reads values out of settings.
#include <iostream>
#include <pdfsettings/Component.h>
#include <pdfsettings/Error.h>
#include <pdfsettings/Path.h>
#include <pdfsettings/Settings.h>

using pdfsettings::Array;
using pdfsettings::Component;
using pdfsettings::Dictionary;
using pdfsettings::Error;
using pdfsettings::Find;
using pdfsettings::Settings;
using pdfsettings::Word;

int main() {
    try {
        Dictionary jpeg;
        jpeg.Set("QFactor", 0.4);
        jpeg.Set("HSamples", Array::Of({1.0, 1.0, 1.0, 1.0}));
        Dictionary values;
        values.Set("CompatibilityLevel", 1.7);
        values.Set("Optimize", Word{"true"});
        values.Set("ColorImageDict", jpeg);

        Component const component;
        std::string const text = Settings::FromValues(component, values).Text();
        std::cout << text;

        Dictionary const again = Settings::FromText(component, text).Values();
        double const* const factor = Find(again, "ColorImageDict/QFactor")->If<double>();
        std::cout << "QFactor is " << *factor << "\n";
    } catch (Error const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
