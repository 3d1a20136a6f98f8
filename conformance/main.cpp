// bib-conformance: checks a runtime, each group in a process of its own.
#include "conformance/Group.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <iostream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using conformance::Check;
using conformance::Group;
using conformance::Result;

constexpr unsigned kSecondsOfACheck = 300;
constexpr char kEndOfField = '\x1F';

struct Arguments {
    std::string fRuntime;
    std::string fSymbol = "BIBRuntimeLookup";
    std::string fComponent;
    std::string fOnly;
    bool fIsList = false;
    bool fIsSweep = false;
    bool fIsStrict = false;
    bool fIsTap = false;
    bool fIsVerbose = false;
};

BIBConformanceOptions OptionsOf(Arguments const& arguments) {
    return {
        arguments.fOnly.c_str(),
        arguments.fComponent.c_str(),
        arguments.fIsStrict ? 1 : 0,
        arguments.fIsSweep ? 1 : 0,
        nullptr,
        nullptr};
}

// Throws std::runtime_error.
BIBLookupProc LoadLookup(Arguments const& arguments) {
    void* const module = ::dlopen(arguments.fRuntime.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const lookup = module ? ::dlsym(module, arguments.fSymbol.c_str()) : nullptr;
    if (!lookup) {
        throw std::runtime_error(::dlerror());
    }
    return reinterpret_cast<BIBLookupProc>(lookup);
}

// In a child: runs the checks of group from first on, and writes each result to the descriptor.
void RunChecks(Arguments const& arguments, Group const& group, std::size_t first, int descriptor) {
    conformance::Runtime const runtime(LoadLookup(arguments), arguments.fComponent);
    for (Check const& check : group.fChecks.subspan(first)) {
        ::alarm(kSecondsOfACheck);
        Result const result = RunCheck(check, runtime);
        std::string const record = std::to_string(result.fOutcome) + kEndOfField +
                                   result.fExpected + kEndOfField + result.fFound + kEndOfField;
        if (::write(descriptor, record.data(), record.size()) < 0) {
            return;
        }
    }
}

// The results of the checks of group from first on, up to one that ends the process.
std::vector<Result>
RunInProcess(Arguments const& arguments, Group const& group, std::size_t first, int& status) {
    int ends[2] = {};
    if (::pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    std::cout.flush();
    pid_t const child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        if (!arguments.fIsVerbose && std::freopen("/dev/null", "w", stderr) == nullptr) {
            ::close(STDERR_FILENO);
        }
        RunChecks(arguments, group, first, ends[1]);
        ::_exit(0);
    }
    ::close(ends[1]);
    std::string all;
    char part[4096];
    for (ssize_t size = 0; (size = ::read(ends[0], part, sizeof part)) > 0;) {
        all.append(part, static_cast<std::size_t>(size));
    }
    ::close(ends[0]);
    ::waitpid(child, &status, 0);
    std::vector<std::string> fields;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = all.find(kEndOfField, begin)) != std::string::npos;) {
        fields.push_back(all.substr(begin, end - begin));
        begin = end + 1;
    }
    std::vector<Result> results;
    for (std::size_t i = 0; i + 2 < fields.size(); i += 3) {
        results.push_back(
            {static_cast<BIBConformanceOutcome>(std::stoi(fields[i])),
             fields[i + 1],
             fields[i + 2]});
    }
    return results;
}

std::string HowItEnded(int status) {
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM
               ? "no end within " + std::to_string(kSecondsOfACheck) + " seconds"
           : WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                 : "exit status " + std::to_string(WEXITSTATUS(status));
}

// All results of a group: what ends its process fails, and the checks behind it run in another one.
std::vector<Result> RunGroup(Arguments const& arguments, Group const& group) {
    std::vector<Result> results;
    while (results.size() < group.fChecks.size()) {
        int status = 0;
        for (Result const& result : RunInProcess(arguments, group, results.size(), status)) {
            results.push_back(result);
        }
        Result const ended = {kBIBConformanceFailed, "the process goes on", HowItEnded(status)};
        if (results.size() < group.fChecks.size()) {
            results.push_back(ended);
        } else if (status != 0) {
            results.back() = ended; // a sanitizer has found something
        }
    }
    return results;
}

class Report {
public:
    Report(bool isTap, std::size_t checks) : fIsTap(isTap) {
        if (isTap) {
            std::cout << "TAP version 13\n1.." << checks << "\n";
        }
    }

    void Begin(Group const& group) const {
        std::cout << (fIsTap ? "# " : "") << group.fName << "\n";
    }

    void Add(Check const& check, Result const& result) {
        ++fCounts[result.fOutcome];
        ++fNumber;
        fIsTap ? WriteTap(check, result) : WriteText(check, result);
    }

    // The exit status.
    int End() const {
        std::cout << (fIsTap ? "# " : "") << fNumber
                  << " checks: " << fCounts[kBIBConformancePassed] << " passed, "
                  << fCounts[kBIBConformanceFailed] << " failed, "
                  << fCounts[kBIBConformanceSkipped] << " skipped\n";
        return fCounts[kBIBConformanceFailed] > 0 ? 1 : 0;
    }

private:
    void WriteTap(Check const& check, Result const& result) const {
        bool const isFailed = result.fOutcome == kBIBConformanceFailed;
        std::cout << (isFailed ? "not ok " : "ok ") << fNumber << " - " << check.fId;
        if (result.fOutcome == kBIBConformanceSkipped) {
            std::cout << " # SKIP " << result.fFound;
        }
        std::cout << "\n";
        if (isFailed) {
            std::cout << "# " << check.fContract << "\n# expected: " << result.fExpected
                      << "\n# found: " << result.fFound << "\n";
        }
    }

    static void WriteText(Check const& check, Result const& result) {
        constexpr char const* kWords[] = {"ok  ", "FAIL", "skip"};
        std::cout << "  " << kWords[result.fOutcome] << "  " << check.fId << "\n";
        if (result.fOutcome == kBIBConformanceFailed) {
            std::cout << "        " << check.fContract << "\n        expected  " << result.fExpected
                      << "\n        found     " << result.fFound << "\n";
        } else if (result.fOutcome == kBIBConformanceSkipped) {
            std::cout << "        " << result.fFound << "\n";
        }
    }

    bool fIsTap;
    std::size_t fNumber = 0;
    std::size_t fCounts[3] = {};
};

void List() {
    constexpr char const* kDemands[] = {
        "", " (--strict)", " (--component)", " (--component --sweep)"};
    for (Group const* const group : conformance::AllGroups()) {
        std::cout << group->fName << kDemands[static_cast<int>(group->fDemand)] << "\n";
        for (Check const& check : group->fChecks) {
            std::cout << "  " << check.fId << "\n      " << check.fContract << "\n";
        }
    }
}

int Run(Arguments const& arguments) {
    BIBConformanceOptions const options = OptionsOf(arguments);
    std::vector<Group const*> groups;
    std::size_t checks = 0;
    bool isKnown = false;
    for (Group const* const group : conformance::AllGroups()) {
        isKnown = isKnown || IsAskedFor(*group, arguments.fOnly);
        if (IsChosen(*group, options)) {
            groups.push_back(group);
            checks += group->fChecks.size();
        }
    }
    if (!isKnown) {
        throw std::runtime_error("no such group or interface: " + arguments.fOnly);
    }
    LoadLookup(arguments);
    Report report(arguments.fIsTap, checks);
    for (Group const* const group : groups) {
        report.Begin(*group);
        auto const results = RunGroup(arguments, *group);
        for (std::size_t i = 0; i < results.size(); ++i) {
            report.Add(group->fChecks[i], results[i]);
        }
    }
    return report.End();
}

int RunTool(int argc, char** argv) {
    Arguments arguments;
    CLI::App parser{
        "Check whether a runtime keeps the contract between the component and its host.",
        "bib-conformance"};
    parser.add_option("RUNTIME", arguments.fRuntime, "The shared library of the runtime");
    parser.add_option("--lookup", arguments.fSymbol, "The name of its lookup function")
        ->type_name("SYMBOL")
        ->capture_default_str();
    parser.add_option("--component", arguments.fComponent, "Also run this component on it")
        ->type_name("PATH");
    parser
        .add_option("--only", arguments.fOnly, "Only this group, or the groups of this interface")
        ->type_name("NAME");
    parser.add_flag("--list", arguments.fIsList, "List all checks and run none");
    parser.add_flag(
        "--sweep", arguments.fIsSweep, "Let each call of each row fail under the component");
    parser.add_flag(
        "--strict", arguments.fIsStrict, "Also check what only the project's own runtime promises");
    parser.add_flag("--tap", arguments.fIsTap, "Print TAP (Test Anything Protocol)");
    parser.add_flag(
        "-v,--verbose", arguments.fIsVerbose, "Show what the runtime and the component report");
    parser.footer("Exit status: 0 all checks passed, 1 some failed, 2 wrong call.");
    try {
        parser.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return parser.exit(error) == 0 ? 0 : 2;
    }
    if (arguments.fIsList) {
        List();
        return 0;
    }
    if (arguments.fRuntime.empty()) {
        throw std::runtime_error("RUNTIME is required");
    }
    return Run(arguments);
}

} // namespace

int main(int argc, char** argv) {
    try {
        return RunTool(argc, argv);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "bib-conformance: %s\n", error.what());
        return 2;
    }
}
