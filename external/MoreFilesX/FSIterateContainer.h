// A walk over the items of a folder, to any depth.
#pragma once

#include "platform/FileManager.h"

// Called with each item: a folder comes before what is in it. currentLevel is 1 for the items of
// the folder that the walk began with. spec and name are null where they are not wanted. True ends
// the walk. Must not throw.
using IterateContainerFilterProcPtr = Boolean (*)(
    Boolean containerChanged,
    ItemCount currentLevel,
    FSCatalogInfo const* catalogInfo,
    FSRef const* ref,
    FSSpec const* spec,
    HFSUniStr255 const* name,
    void* userData);

// What a walk carries through its levels.
// NOLINTBEGIN(readability-identifier-naming): the names of the service's own world
struct FSIterateContainerGlobals {
    IterateContainerFilterProcPtr filterProc;
    FSCatalogInfoBitmap infoBitmap; // always with kFSCatInfoNodeFlags
    FSCatalogInfo catalogInfo;      // of the current item
    FSRef ref;                      // the folder at the start, then the current item
    FSSpec spec;
    FSSpec* specPtr; // spec, or null where none is wanted
    HFSUniStr255 name;
    HFSUniStr255* namePtr; // name, or null where none is wanted
    void* userData;
    ItemCount maxLevels;      // 0 for no limit
    ItemCount currentLevel;   // 0 outside any level
    Boolean quitFlag;         // the callback's last answer
    Boolean containerChanged; // the folder changed during the walk
    OSErr result;
    ItemCount actualObjects; // how many items the service gave last: 0 or 1
};
// NOLINTEND(readability-identifier-naming)

// Calls filterProc with every item of the folder container and, down to maxLevels (0 for no limit,
// 1 for the folder's own items), of the folders in it, until it answers true. Gives noErr, paramErr
// without a callback, and otherwise the code that ended the walk. A folder in it that may not be
// read cuts the rest of its parent short, and the walk goes on above that. wantSpec must be false:
// the service provides none, and paramErr ends the walk. Throws std::bad_alloc, before the walk
// begins.
OSErr FSIterateContainer(
    FSRef const* container,
    ItemCount maxLevels,
    FSCatalogInfoBitmap infoBitmap,
    Boolean wantSpec,
    Boolean wantName,
    IterateContainerFilterProcPtr filterProc,
    void* userData);

// One level of a walk, and those below it.
void FSIterateContainerLevel(FSIterateContainerGlobals* globals) noexcept;
