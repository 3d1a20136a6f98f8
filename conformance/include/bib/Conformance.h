// Checks whether a runtime keeps the contract between the component and its host, for an
// application's own tests. The program bib-conformance runs the same checks, each group in a
// process of its own. Plain C; a program in C links the C++ standard library too.
#pragma once

#include "api/BIBBootstrap.h"

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTBEGIN(readability-identifier-naming): plain C
typedef enum BIBConformanceOutcome {
    kBIBConformancePassed = 0,
    kBIBConformanceFailed = 1,
    kBIBConformanceSkipped = 2 // a row that the check needs is missing
} BIBConformanceOutcome;

// One check. The strings are valid during the call that reports it.
typedef struct BIBConformanceResult {
    BIBConformanceOutcome outcome;
    char const* group;
    char const* id;       // such as "container.counts-from-zero"; later versions keep it
    char const* contract; // the sentence of the contract that the check stands for
    char const* expected; // of a failed check
    char const* found;    // of a failed check; the reason why one was skipped
} BIBConformanceResult;

typedef void (*BIBConformanceReportProc)(BIBConformanceResult const* result, void* userData);

// What to check. All zero: what every runtime must keep, without the component.
typedef struct BIBConformanceOptions {
    char const* only;      // the name of a group, or of an interface; null or empty for all
    char const* component; // the path of the component, which is then run too; null for none
    int strict;            // nonzero: also what only the project's own runtime promises
    int sweep;             // nonzero: each call of each row fails once, under the component
    BIBConformanceReportProc report; // may be null
    void* userData;
} BIBConformanceOptions;
// NOLINTEND(readability-identifier-naming)

// Runs the checks on the runtime behind lookup, in the calling process and thread, and returns how
// many failed; -1 if there is no such group. A runtime that crashes or hangs takes the process with
// it. options may be null.
int BIBConformanceRun(BIBLookupProc lookup, BIBConformanceOptions const* options);

#ifdef __cplusplus
}
#endif
