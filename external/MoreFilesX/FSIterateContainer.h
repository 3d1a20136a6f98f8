// A recursive walk over the items of a folder.
#pragma once

#include "platform/FileManager.h"

// Called for each item; a folder comes before the items in it. currentLevel is 1 for the items of
// the folder at which the walk starts. spec and name are null if they are not requested. A nonzero
// result ends the walk. Must not throw.
using IterateContainerFilterProcPtr = Boolean (*)(
    Boolean containerChanged,
    ItemCount currentLevel,
    FSCatalogInfo const* catalogInfo,
    FSRef const* ref,
    FSSpec const* spec,
    HFSUniStr255 const* name,
    void* userData);

// The state of a walk, shared by all levels.
// NOLINTBEGIN(readability-identifier-naming): the names of the service's own world
struct FSIterateContainerGlobals {
    IterateContainerFilterProcPtr filterProc;
    FSCatalogInfoBitmap infoBitmap; // always with kFSCatInfoNodeFlags
    FSCatalogInfo catalogInfo;      // of the current item
    FSRef ref;                      // the start folder, then the current item
    FSSpec spec;
    FSSpec* specPtr; // spec, or null if not requested
    HFSUniStr255 name;
    HFSUniStr255* namePtr; // name, or null if not requested
    void* userData;
    ItemCount maxLevels;      // 0 for no limit
    ItemCount currentLevel;   // 0 outside any level
    Boolean quitFlag;         // the callback's last result
    Boolean containerChanged; // the folder changed during the walk
    OSErr result;
    ItemCount actualObjects; // items returned by the last call: 0 or 1
};
// NOLINTEND(readability-identifier-naming)

// Calls filterProc for every item of the folder container and of the folders in it, down to
// maxLevels levels (0 for no limit, 1 for the folder's own items), until filterProc returns
// nonzero. Returns noErr; paramErr if filterProc is null; otherwise the code that ended the walk.
// If a subfolder may not be read, the rest of its parent is skipped and the walk continues one
// level up. wantSpec must be false: the service provides no spec, and paramErr ends the walk. May
// throw std::bad_alloc before the walk begins.
OSErr FSIterateContainer(
    FSRef const* container,
    ItemCount maxLevels,
    FSCatalogInfoBitmap infoBitmap,
    Boolean wantSpec,
    Boolean wantName,
    IterateContainerFilterProcPtr filterProc,
    void* userData);

// Walks one level and the levels below it.
void FSIterateContainerLevel(FSIterateContainerGlobals* globals) noexcept;
