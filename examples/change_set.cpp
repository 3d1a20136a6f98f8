// Changes three settings of a file if the schema allows it, and keeps its comments: change_set FILE
#include <iostream>
#include <pdfsettings/Settings.h>

int main(int argc, char** argv) {
    try {
        auto settings = pdfsettings::Settings::Open(argc > 1 ? argv[1] : "office.joboptions");
        auto edit = settings.Change();
        edit.Set("ColorImageResolution", 150);
        edit.Set("EmbedAllFonts", true);
        edit.Set("ColorImageDict/QFactor", 0.76);
        auto const findings = edit.Commit();
        for (auto const& finding : findings) {
            std::cerr << finding.Path() << ": " << finding.Message() << "\n";
        }
        if (!findings.empty()) {
            return 1;
        }
        settings.Save();
    } catch (pdfsettings::Error const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
