#include "conformance/Group.h"

#include "conformance/Groups.h"

#include <algorithm>
#include <exception>

namespace conformance {

std::span<Group const* const> AllGroups() {
    static constexpr Group const* kGroups[] = {
        &kPresence, &kRegistry,  &kMemory,    &kAtoms,       &kErrors,     &kContainers,
        &kBuffers,  &kStreams,   &kScalars,   &kArrays,      &kDicts,      &kCursors,
        &kNotation, &kValidator, &kCaches,    &kOwnStreams,  &kThreads,    &kDumps,
        &kRules,    &kSchemas,   &kComponent, &kMissingRows, &kFailingRows};
    return kGroups;
}

bool IsAskedFor(Group const& group, std::string_view only) {
    std::string const interfaces = " " + std::string(group.fInterfaces) + " ";
    return only.empty() || only == group.fName ||
           interfaces.find(" " + std::string(only) + " ") != std::string::npos;
}

bool IsChosen(Group const& group, BIBConformanceOptions const& options) {
    bool const hasComponent = options.component && *options.component;
    bool const isDemanded = group.fDemand == Demand::kRequired ||
                            (group.fDemand == Demand::kStrict && options.strict) ||
                            (group.fDemand == Demand::kComponent && hasComponent) ||
                            (group.fDemand == Demand::kSweep && hasComponent && options.sweep);
    return isDemanded && IsAskedFor(group, options.only ? options.only : "");
}

Result RunCheck(Check const& check, Runtime const& runtime) {
    try {
        check.fRun(runtime);
        return {};
    } catch (Failure const& failure) {
        return {kBIBConformanceFailed, failure.fExpected, failure.fFound};
    } catch (Skipped const& skipped) {
        return {kBIBConformanceSkipped, "", skipped.fReason};
    } catch (std::exception const& error) {
        return {kBIBConformanceFailed, "no exception", error.what()};
    } catch (...) {
        return {kBIBConformanceFailed, "no exception", "an exception"};
    }
}

namespace {

// How many of the checks fail.
int RunGroup(Group const& group, Runtime const& runtime, BIBConformanceOptions const& options) {
    int failures = 0;
    for (Check const& check : group.fChecks) {
        Result const result = RunCheck(check, runtime);
        failures += result.fOutcome == kBIBConformanceFailed ? 1 : 0;
        BIBConformanceResult const reported = {
            result.fOutcome,
            group.fName,
            check.fId,
            check.fContract,
            result.fExpected.c_str(),
            result.fFound.c_str()};
        if (options.report) {
            options.report(&reported, options.userData);
        }
    }
    return failures;
}

} // namespace

} // namespace conformance

int BIBConformanceRun(BIBLookupProc lookup, BIBConformanceOptions const* options) {
    using namespace conformance;
    BIBConformanceOptions const chosen = options ? *options : BIBConformanceOptions{};
    std::string_view const only = chosen.only ? chosen.only : "";
    auto const groups = AllGroups();
    auto const isAskedFor = [&](Group const* group) { return IsAskedFor(*group, only); };
    if (std::ranges::none_of(groups, isAskedFor)) {
        return -1;
    }
    Runtime const runtime(lookup, chosen.component ? chosen.component : "");
    int failures = 0;
    for (Group const* const group : groups) {
        failures += IsChosen(*group, chosen) ? RunGroup(*group, runtime, chosen) : 0;
    }
    return failures;
}
