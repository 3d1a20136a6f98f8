// The groups of checks, each in a file of its own.
#pragma once

namespace conformance {

struct Group;

extern Group const kPresence;
extern Group const kRegistry;
extern Group const kMemory;
extern Group const kAtoms;
extern Group const kErrors;
extern Group const kContainers;
extern Group const kBuffers;
extern Group const kStreams;
extern Group const kScalars;
extern Group const kArrays;
extern Group const kDicts;
extern Group const kCursors;
extern Group const kNotation;
extern Group const kValidator;
extern Group const kCaches;
extern Group const kOwnStreams;
extern Group const kThreads;
extern Group const kDumps;
extern Group const kRules;
extern Group const kSchemas;
extern Group const kComponent;
extern Group const kMissingRows;
extern Group const kFailingRows;

} // namespace conformance
