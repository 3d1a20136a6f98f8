#include "tests/unit/FileServiceDouble.h"

#include "platform/FileManager.h"

namespace {

// The result of real on the arguments, or a failure.
template <class Real, class... Arguments>
OSErr Call(char const* operation, Real real, Arguments... arguments) {
    bool reachesService = true;
    OSErr const failure = support::FileServiceDouble::Note(operation, &reachesService);
    OSErr const error = reachesService ? real(arguments...) : noErr;
    return failure != noErr ? failure : error;
}

} // namespace

// Defines the procedure that replaces an operation with the parameters ... and passes on what
// is in brackets.
#define SUPPORT_WRAP(operation, arguments, ...) \
    extern "C" decltype(operation) __real_##operation; \
    extern "C" OSErr __wrap_##operation(__VA_ARGS__) noexcept { \
        return SUPPORT_CALL arguments; \
    }
#define SUPPORT_CALL(operation, ...) Call(#operation, &__real_##operation, __VA_ARGS__)

// clang-format off
SUPPORT_WRAP(FSPathMakeRef, (FSPathMakeRef, a, b, c),
    UInt8 const* a, FSRef* b, Boolean* c)
SUPPORT_WRAP(FSGetCatalogInfo, (FSGetCatalogInfo, a, b, c, d, e, f),
    FSRef const* a, FSCatalogInfoBitmap b, FSCatalogInfo* c, HFSUniStr255* d, void* e, FSRef* f)
SUPPORT_WRAP(FSCreateFileUnicode, (FSCreateFileUnicode, a, b, c, d, e, f, g),
    FSRef const* a, UniCharCount b, UniChar const* c, FSCatalogInfoBitmap d,
    FSCatalogInfo const* e, FSRef* f, void* g)
SUPPORT_WRAP(FSDeleteObject, (FSDeleteObject, a), FSRef const* a)
SUPPORT_WRAP(FSGetDataForkName, (FSGetDataForkName, a), HFSUniStr255* a)
SUPPORT_WRAP(FSOpenFork, (FSOpenFork, a, b, c, d, e),
    FSRef const* a, UniCharCount b, UniChar const* c, SInt16 d, FSIORefNum* e)
SUPPORT_WRAP(FSGetForkSize, (FSGetForkSize, a, b), FSIORefNum a, SInt64* b)
SUPPORT_WRAP(FSSetForkPosition, (FSSetForkPosition, a, b, c), FSIORefNum a, UInt16 b, SInt64 c)
SUPPORT_WRAP(FSReadFork, (FSReadFork, a, b, c, d, e, f),
    FSIORefNum a, UInt16 b, SInt64 c, ByteCount d, void* e, ByteCount* f)
SUPPORT_WRAP(FSWriteFork, (FSWriteFork, a, b, c, d, e, f),
    FSIORefNum a, UInt16 b, SInt64 c, ByteCount d, void const* e, ByteCount* f)
SUPPORT_WRAP(FSOpenIterator, (FSOpenIterator, a, b, c),
    FSRef const* a, FSIteratorFlags b, FSIterator* c)
SUPPORT_WRAP(FSGetCatalogInfoBulk, (FSGetCatalogInfoBulk, a, b, c, d, e, f, g, h, i),
    FSIterator a, ItemCount b, ItemCount* c, Boolean* d, FSCatalogInfoBitmap e, FSCatalogInfo* f,
    FSRef* g, FSSpec* h, HFSUniStr255* i)
SUPPORT_WRAP(FSCloseIterator, (FSCloseIterator, a), FSIterator a)
// clang-format on
