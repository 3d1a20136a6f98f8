// Groups of checks, and running them.
#pragma once

#include "bib/Conformance.h"
#include "conformance/Runtime.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace conformance {

// One check. It returns, or throws Failure or Skipped.
struct Check {
    char const* fId;
    char const* fContract; // the sentence that it stands for
    void (*fRun)(Runtime const& runtime);
};

// Which runtimes have to pass a group.
enum class Demand {
    kRequired,
    kStrict,    // the project's own
    kComponent, // those that the component is to run on
    kSweep      // the same, with failures injected
};

struct Group {
    char const* fName;
    char const* fInterfaces; // separated by blanks; a caller may ask for one of them
    Demand fDemand;
    std::span<Check const> fChecks;
};

// All groups, in the order in which they run.
std::span<Group const* const> AllGroups();

// Whether only, a name of a group or an interface or nothing, asks for group.
bool IsAskedFor(Group const& group, std::string_view only);

// Whether the options ask for group.
bool IsChosen(Group const& group, BIBConformanceOptions const& options);

struct Result {
    BIBConformanceOutcome fOutcome = kBIBConformancePassed;
    std::string fExpected;
    std::string fFound;
};

// Runs one check. An exception of any other kind fails it.
Result RunCheck(Check const& check, Runtime const& runtime);

} // namespace conformance
