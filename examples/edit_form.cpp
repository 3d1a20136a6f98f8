// A form with a field for each setting, in text: each line of input is "KEY VALUE" as a user types
// it, and is checked as soon as it is typed. An empty line saves what is valid:
//     edit_form FILE
#include <iostream>
#include <pdfsettings/Settings.h>
#include <sstream>

using pdfsettings::Rule;
using pdfsettings::Settings;
using pdfsettings::Value;

namespace {

void ShowFields(Settings const& settings) {
    for (Rule const& rule : settings.Rules().Rules()) {
        Value const* const value = settings.Values().Find(rule.Path());
        std::cout << rule.Path() << ": "
                  << (value != nullptr ? value->Text() : "(" + rule.ExpectedText() + ")") << "\n";
    }
}

// What a user sees beside a field while he types.
void Type(Settings::Edit& edit, Settings const& settings, std::string const& line) {
    std::size_t const blank = std::min(line.find(' '), line.size());
    std::string const key = line.substr(0, blank);
    try {
        Value const value = Value::Parse(line.substr(blank));
        auto const findings = settings.Check(key, value);
        for (auto const& finding : findings) {
            std::cout << "! " << finding.Path() << ": " << finding.Message() << "\n";
        }
        if (findings.empty()) {
            edit.Set(key, value);
            std::cout << key << ": " << value.Text() << "\n";
        }
    } catch (pdfsettings::Error const& error) {
        std::cout << "! " << key << ": " << error.Message() << "\n";
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        Settings settings = Settings::Open(argc > 1 ? argv[1] : "office.joboptions");
        ShowFields(settings);
        auto edit = settings.Change();
        for (std::string line; std::getline(std::cin, line) && !line.empty();) {
            Type(edit, settings, line);
        }
        if (!edit.Commit().empty()) {
            std::cout << "these settings do not go together\n";
            return 1;
        }
        std::cout << (settings.IsModified() ? "saved\n" : "nothing changed\n");
        settings.Save();
    } catch (pdfsettings::Error const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
