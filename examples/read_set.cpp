// Reads twenty settings with the defaults of the schema or the program's own: read_set FILE
#include <iostream>
#include <pdfsettings/Settings.h>

using pdfsettings::Name;

int main(int argc, char** argv) {
    try {
        auto const set = pdfsettings::Settings::Open(argc > 1 ? argv[1] : "office.joboptions");
        for (std::string const image : {"Color", "Gray", "Mono"}) {
            std::cout << image << ": " << set.Get<bool>("Downsample" + image + "Images") << " "
                      << set.Get<int>(image + "ImageResolution") << " dpi, "
                      << set.Get<int>(image + "ImageDepth") << " bits, "
                      << set.Get<Name>(image + "ImageFilter").text << ", above "
                      << set.Get<double>(image + "ImageDownsampleThreshold") << "\n";
        }
        std::cout << "PDF " << set.Get<double>("CompatibilityLevel") << ", pages "
                  << set.Get<int>("StartPage") << " to " << set.Get<int>("EndPage") << "\n"
                  << "never embedded: " << set.Get<std::vector<Name>>("NeverEmbed", {}).size()
                  << " fonts\n"
                  << "gray profile: "
                  << set.Get<pdfsettings::String>("CalGrayProfile", {"none"}).text << "\n";
    } catch (pdfsettings::Error const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
