#include "external/MoreFilesX/FSIterateContainer.h"

namespace {

bool IsFolder(FSIterateContainerGlobals const& walk) noexcept {
    return (walk.catalogInfo.nodeFlags & kFSNodeIsDirectoryMask) != 0;
}

// Passes the current item to the callback, then visits the items in it.
void Visit(FSIterateContainerGlobals* walk) noexcept {
    walk->quitFlag = walk->filterProc(
        walk->containerChanged,
        walk->currentLevel,
        &walk->catalogInfo,
        &walk->ref,
        walk->specPtr,
        walk->namePtr,
        walk->userData);
    if (IsFolder(*walk) && walk->quitFlag == 0) {
        FSIterateContainerLevel(walk);
    }
}

void NextItem(FSIterator iterator, FSIterateContainerGlobals* walk) noexcept {
    walk->result = FSGetCatalogInfoBulk(
        iterator,
        1,
        &walk->actualObjects,
        &walk->containerChanged,
        walk->infoBitmap,
        &walk->catalogInfo,
        &walk->ref,
        walk->specPtr,
        walk->namePtr);
    // The last item may come together with errFSNoMoreItems.
    bool const isUsable = walk->result == noErr || walk->result == errFSNoMoreItems;
    if (isUsable && walk->actualObjects != 0) {
        Visit(walk);
    }
}

} // namespace

OSErr FSIterateContainer(
    FSRef const* container,
    ItemCount maxLevels,
    FSCatalogInfoBitmap infoBitmap,
    Boolean wantSpec,
    Boolean wantName,
    IterateContainerFilterProcPtr filterProc,
    void* userData) {
    if (filterProc == nullptr) {
        return paramErr;
    }
    FSIterateContainerGlobals walk{};
    walk.filterProc = filterProc;
    // The walk needs to know which items are folders.
    walk.infoBitmap = infoBitmap | kFSCatInfoNodeFlags;
    walk.ref = *container;
    walk.specPtr = wantSpec != 0 ? &walk.spec : nullptr;
    walk.namePtr = wantName != 0 ? &walk.name : nullptr;
    walk.userData = userData;
    walk.maxLevels = maxLevels;
    FSIterateContainerLevel(&walk);
    return walk.result;
}

void FSIterateContainerLevel(FSIterateContainerGlobals* globals) noexcept {
    if (globals->maxLevels != 0 && globals->currentLevel >= globals->maxLevels) {
        return;
    }
    FSIterator iterator = nullptr;
    globals->result = FSOpenIterator(&globals->ref, kFSIterateFlat, &iterator);
    if (globals->result != noErr) {
        return;
    }
    ++globals->currentLevel;
    do {
        NextItem(iterator, globals);
    } while (globals->result == noErr && globals->quitFlag == 0);
    if (globals->result == errFSNoMoreItems || globals->result == afpAccessDenied) {
        globals->result = noErr;
    }
    --globals->currentLevel;
    FSCloseIterator(iterator);
}
