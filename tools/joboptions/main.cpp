// The command line tool for settings files: options in, one command, an exit status out.
#include "tools/joboptions/GetCommand.h"
#include "tools/joboptions/Output.h"
#include "tools/joboptions/ShowCommand.h"
#include "tools/joboptions/Utf8.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <string>
#include <vector>

namespace joboptions {

namespace {

// The program's commands and options.
class Program {
public:
    Program() {
        fParser.require_subcommand(1);
        fParser.set_version_flag("--version", std::string("joboptions ") + JOBOPTIONS_VERSION);
        fParser.footer("Examples:\n"
                       "  joboptions show office.joboptions\n"
                       "  joboptions get office.joboptions ColorImageDict/QFactor\n"
                       "\n"
                       "Exit status: 0 done, 1 no such key, 2 wrong call, 3 input unreadable or\n"
                       "refused, 6 output not written.");
    }

    Status Run(int argc, char** argv) {
        try {
            fParser.parse(argc, argv);
        } catch (CLI::ParseError const& error) {
            return AnswerParser(error);
        }
        return RunCommand();
    }

private:
    Status RunCommand() const {
        try {
            return fShow.IsChosen() ? fShow.Run() : fGet.Run();
        } catch (Failure const& failure) {
            return Report(failure.what(), failure.ExitStatus());
        } catch (std::exception const& error) {
            return Report(error.what(), Status::kBadInput);
        }
    }

    Status Report(char const* message, Status status) const {
        if (!fOptions.quiet) {
            WriteError(message);
        }
        return status;
    }

    // A request for help or the version arrives as an error too.
    Status AnswerParser(CLI::ParseError const& error) const {
        bool const isVersion = error.get_name() == "CallForVersion";
        if (error.get_exit_code() != 0) {
            WriteError(VisibleText(CallError(error)) + "\nTry joboptions --help.");
            return Status::kWrongCall;
        }
        try {
            WriteOutput(isVersion ? fmt::format("{}\n", error.what()) : fParser.help());
            return Status::kDone;
        } catch (Failure const& failure) {
            return Report(failure.what(), failure.ExitStatus());
        }
    }

    // What is wrong with the call. The parser's own words for a call without a known command do not
    // name the word that was taken for one.
    std::string CallError(CLI::ParseError const& error) const {
        if (!fParser.get_subcommands().empty()) {
            return error.what();
        }
        std::vector<std::string> const words = fParser.remaining();
        return words.empty() ? "no command is given" : "no such command: " + words.front();
    }

    Options fOptions;
    CLI::App fParser{"Read settings for the conversion to PDF.", "joboptions"};
    ShowCommand fShow{fParser, fOptions};
    GetCommand fGet{fParser, fOptions};
};

} // namespace

} // namespace joboptions

int main(int argc, char** argv) {
    try {
        return static_cast<int>(joboptions::Program().Run(argc, argv));
    } catch (std::exception const& error) {
        joboptions::WriteError(error.what());
        return static_cast<int>(joboptions::Status::kBadInput);
    }
}
