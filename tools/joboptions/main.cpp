// The command line tool for settings files: parses options, runs one command, returns an exit
// status.
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Files.h"
#include "tools/joboptions/text/Utf8.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <fmt/format.h>
#include <memory>
#include <new>
#include <string>
#include <string_view>
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
                       "  joboptions set office.joboptions ColorImageResolution=150\n"
                       "  joboptions check *.joboptions\n"
                       "\n"
                       "Exit status: 0 success or yes, 1 no (errors, differences, missing keys),\n"
                       "2 wrong command line, 3 input unreadable or refused, 4 schema invalid,\n"
                       "5 change refused, 6 output not written.");
        for (auto* const make : {
                 kMakeShowCommand,   kMakeGetCommand,      kMakeExplainCommand,
                 kMakeNewCommand,    kMakeSetCommand,      kMakeUnsetCommand,
                 kMakeCheckCommand,  kMakeDiffCommand,     kMakeCompareCommand,
                 kMakeMergeCommand,  kMakeFmtCommand,      kMakeExportCommand,
                 kMakeImportCommand, kMakeListCommand,     kMakeFolderCommand,
                 kMakeWatchCommand,  kMakeDescribeCommand, kMakeCompletionCommand,
                 kMakeManualCommand, kMakeCompleteCommand,
             }) {
            fCommands.push_back(make(fParser, fOptions));
        }
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
    // REQUIRES: a command was parsed.
    Status RunCommand() {
        try {
            LookAtOutput(fOptions);
            auto const chosen = std::ranges::find_if(
                fCommands, [](auto const& command) { return command->IsChosen(); });
            return (*chosen)->Run();
        } catch (Failure const& failure) {
            return Report(failure.what(), failure.ExitStatus());
        } catch (std::bad_alloc const&) {
            return Report("out of memory", Status::kBadInput);
        } catch (std::exception const& error) {
            return Report(error.what(), Status::kBadInput);
        }
    }

    Status Report(std::string_view messages, Status status) const {
        WriteErrors(messages, fOptions.quiet);
        return status;
    }

    // Requests for help and version are reported as parse errors too.
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

    // The message for a wrong call. For an unknown command, the parser's message does not name the
    // word.
    std::string CallError(CLI::ParseError const& error) const {
        if (!fParser.get_subcommands().empty()) {
            // An option that help does not list has no name in the message.
            std::string const message = error.what();
            return message.starts_with(": ") ? message.substr(2) : message;
        }
        std::vector<std::string> const words = fParser.remaining();
        return words.empty() ? "no command is given" : "no such command: " + words.front();
    }

    Options fOptions;
    CLI::App fParser{"Read, check and change settings for the conversion to PDF.", "joboptions"};
    std::vector<std::unique_ptr<Command>> fCommands;
};

} // namespace

} // namespace joboptions

int main(int argc, char** argv) {
    // Without this, output beyond the file size limit would end the process; now the write fails.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return static_cast<int>(joboptions::Program().Run(argc, argv));
    } catch (std::exception const& error) {
        joboptions::WriteError(error.what());
        return static_cast<int>(joboptions::Status::kBadInput);
    }
}
