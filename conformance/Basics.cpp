// Memory, atoms, errors and shared buffers.
#include "conformance/Group.h"
#include "conformance/Groups.h"
#include "conformance/Models.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>
#include <unistd.h>
#include <vector>

namespace conformance {

namespace {

// The memory of the process in bytes.
unsigned long Resident() {
    unsigned long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * static_cast<unsigned long>(::sysconf(_SC_PAGESIZE));
}

// Runs work, and fails if the process needs more than 16 MiB more afterwards.
template <class Work>
void RequireNoGrowth(Work work) {
    unsigned long const before = Resident();
    work();
    unsigned long const after = Resident();
    Require(
        after < before + (16UL << 20),
        "memory that is used again",
        std::to_string((after - before) >> 20) + " MiB more");
}

// Memory.

using Block = std::unique_ptr<void, BIBMemFreeProc>;

void AlignsBlocks(Runtime const& runtime) {
    auto const memory = runtime.Memory();
    for (unsigned long const size : {0UL, 1UL, 7UL, 100UL, 100000UL}) {
        Block const block(memory.Alloc(size), memory.Free);
        Require(block != nullptr, "a block, also of size 0", "null for " + std::to_string(size));
        auto const address = reinterpret_cast<std::uintptr_t>(block.get());
        Require(
            address % alignof(std::max_align_t) == 0,
            "an address that is aligned for every type",
            "another one for " + std::to_string(size));
        std::memset(block.get(), 0xA5, size);
    }
}

void KeepsContents(Runtime const& runtime) {
    auto const memory = runtime.Memory();
    Block block(memory.Alloc(8), memory.Free);
    Require(block != nullptr, "a block", "null");
    std::memcpy(block.get(), "12345678", 8);
    for (unsigned long const size : {100000UL, 8UL}) {
        void* const moved = memory.Realloc(block.get(), size);
        Require(moved != nullptr, "a block", "null");
        static_cast<void>(block.release());
        block.reset(moved);
        Expect("GetBlockSize", size, memory.GetBlockSize(moved));
        Require(std::memcmp(moved, "12345678", 8) == 0, "the contents that fit", "others");
    }
}

void ReallocatesNull(Runtime const& runtime) {
    auto const memory = runtime.Memory();
    Block const block(memory.Realloc(nullptr, 10), memory.Free);
    Require(block != nullptr, "a new block for null", "null");
}

void GivesTheSize(Runtime const& runtime) {
    auto const memory = runtime.Memory();
    Block const block(memory.Alloc(10), memory.Free);
    Expect("GetBlockSize", 10UL, memory.GetBlockSize(block.get()));
    Expect("GetBlockSize of null", 0UL, memory.GetBlockSize(nullptr));
    memory.Free(nullptr);
}

void FailsTooLargeBlocks(Runtime const& runtime) {
    auto const memory = runtime.Memory();
    Block const small(memory.Alloc(4), memory.Free);
    std::memcpy(small.get(), "kept", 4);
    for (unsigned long const size : {~0UL / 2, ~0UL - 15, ~0UL}) {
        Expect("Alloc of half the address space or more", nullptr, memory.Alloc(size));
        Expect(
            "Realloc to half the address space or more",
            nullptr,
            memory.Realloc(small.get(), size));
    }
    Require(std::memcmp(small.get(), "kept", 4) == 0, "the block unchanged", "other contents");
}

void FreesBlocks(Runtime const& runtime) {
    auto const memory = runtime.Memory();
    RequireNoGrowth([&] {
        for (int i = 0; i < 1000; ++i) {
            Block const block(memory.Alloc(100000), memory.Free);
            Require(block != nullptr, "a block", "null");
            std::memset(block.get(), i, 100000);
        }
    });
}

constexpr Check kMemoryChecks[] = {
    {"memory.alignment",
     "Alloc gives a block of at least size bytes, aligned for every type; a size of 0 also returns "
     "a block.",
     &AlignsBlocks},
    {"memory.realloc", "Realloc keeps the contents that fit.", &KeepsContents},
    {"memory.realloc-null", "Realloc of null makes a new block.", &ReallocatesNull},
    {"memory.size",
     "GetBlockSize gives the requested size in bytes, 0 for null; Free accepts null.",
     &GivesTheSize},
    {"memory.free", "Free frees a block: 1,000 of 100 KB can come and go.", &FreesBlocks},
    {"memory.too-large",
     "Alloc and Realloc give null if memory runs out; the block is unchanged.",
     &FailsTooLargeBlocks},
};

// Atoms.

void InternsStrings(Runtime const& runtime) {
    Atom const one(runtime, "Conformance one");
    Atom const same(runtime, std::string("Conformance ") + "one");
    Atom const other(runtime, "Conformance two");
    Expect("the string of an atom", std::string("Conformance one"), one.Text());
    Require(one.Text() == same.Text(), "one string pointer for equal strings", "two");
    Require(one == same, "one atom for equal strings", "two");
    Require(one.Text() != other.Text(), "other pointers for other strings", "one");
    std::vector<std::unique_ptr<Atom>> many;
    for (int i = 0; i < 5000; ++i) {
        many.push_back(std::make_unique<Atom>(runtime, std::to_string(i * 7919) + " kept"));
        Atom const passing(runtime, std::to_string(i * 7907) + " passing");
    }
    for (std::size_t i = 0; i < many.size(); ++i) {
        Atom const again(runtime, std::to_string(i * 7919) + " kept");
        Require(again == *many[i], "one atom for equal strings, among 5,000", "two");
    }
}

void TakesItsOwnStrings(Runtime const& runtime) {
    Atom const one(runtime, "Conformance one");
    auto const rows = runtime.Atoms();
    BIBStringAtom* const again = rows.NewStringAtom(one.Text());
    Require(again == one, "the same atom for the pointer that GetCString returned", "another one");
    rows.DeleteStringAtom(again);
}

void AcceptsNullAtoms(Runtime const& runtime) {
    auto const rows = runtime.Atoms();
    Expect("NewStringAtom(null)", nullptr, rows.NewStringAtom(nullptr));
    Expect("GetCString(null)", nullptr, rows.GetCString(nullptr));
    rows.AddRef(nullptr);
    rows.DeleteStringAtom(nullptr);
}

void CountsReferencesOfAtoms(Runtime const& runtime) {
    auto const rows = runtime.Atoms();
    std::string const text = "Conformance counted";
    BIBStringAtom* const atom = rows.NewStringAtom(text.c_str());
    rows.AddRef(atom);
    rows.DeleteStringAtom(atom);
    for (int i = 0; i < 20000; ++i) {
        Atom const other(runtime, "Conformance other " + std::to_string(i));
    }
    // Of the same length: they would take the memory of an atom that was freed.
    std::vector<std::unique_ptr<Atom>> others;
    for (int i = 100; i < 200; ++i) {
        others.push_back(
            std::make_unique<Atom>(runtime, "Conformance cou" + std::to_string(i) + "d"));
    }
    Expect("the string with a reference left", text, rows.GetCString(atom));
    rows.DeleteStringAtom(atom);
}

void StaysReadableForAMoment(Runtime const& runtime) {
    auto const rows = runtime.Atoms();
    BIBStringAtom* const atom = rows.NewStringAtom("Conformance released");
    char const* const text = rows.GetCString(atom);
    // They would take the memory of an atom that was freed.
    std::vector<std::string> copies;
    copies.reserve(200);
    rows.DeleteStringAtom(atom);
    for (std::size_t size = 16; size < 200; ++size) {
        copies.emplace_back(size, 'x');
    }
    Expect("the string right after the last release", std::string("Conformance released"), text);
}

// Far more atoms than a runtime may keep readable, each of 100 bytes.
void BoundsReleasedAtoms(Runtime const& runtime) {
    auto const rows = runtime.Atoms();
    std::string const tail(100, 'x');
    RequireNoGrowth([&] {
        for (int i = 0; i < 300000; ++i) {
            BIBStringAtom* const atom = rows.NewStringAtom((std::to_string(i) + tail).c_str());
            Require(atom != nullptr, "an atom", "null");
            rows.DeleteStringAtom(atom);
        }
    });
}

constexpr Check kAtomChecks[] = {
    {"atom.interned", "Atoms of equal strings have the same string pointer.", &InternsStrings},
    {"atom.own-string",
     "For a pointer that GetCString returned, the atom has that same pointer.",
     &TakesItsOwnStrings},
    {"atom.null",
     "NewStringAtom and GetCString give null for null; the others accept it.",
     &AcceptsNullAtoms},
    {"atom.count", "An atom lives until its last reference is released.", &CountsReferencesOfAtoms},
    {"atom.model",
     "Atoms do the same as a map of texts over many random operations.",
     &FollowsAnAtomModel},
    {"atom.readable",
     "After the last release the string stays readable for a moment.",
     &StaysReadableForAMoment},
    {"atom.bounded",
     "Released atoms are kept in a bounded number: 300,000 can come and go.",
     &BoundsReleasedAtoms},
};

// Errors.

void Free(void* info) {
    ++*static_cast<int*>(info);
}

void HoldsWhatItWasMadeOf(Runtime const& runtime) {
    auto const errors = runtime.Errors();
    auto const atoms = runtime.Atoms();
    int info = 0;
    constexpr long kId = std::numeric_limits<long>::max() - 42;
    std::string message = "a message";
    BIBError* const error = errors.NewError(message.c_str(), "a component", kId, &info, &Free);
    Require(error != nullptr, "an error", "null");
    message = "changed";
    std::string const found = atoms.GetCString(errors.GetErrorMessage(error));
    std::string const component = atoms.GetCString(errors.GetComponent(error));
    long const id = errors.GetID(error);
    void* const kept = errors.GetErrorInfo(error);
    errors.Release(error);
    Expect("the message", std::string("a message"), found);
    Expect("the component", std::string("a component"), component);
    Expect("the id", kId, id);
    Require(kept == &info, "the info passed at creation", "another one");
    Expect("calls of infoFreeProc", 1, info);
}

void CountsReferencesOfErrors(Runtime const& runtime) {
    auto const errors = runtime.Errors();
    int info = 0;
    BIBError* const error = errors.NewError("m", "c", 1, &info, &Free);
    Require(errors.AddRef(error) == error, "AddRef gives the error", "another one");
    errors.Release(error);
    int const early = info;
    errors.Release(error);
    Expect("calls of infoFreeProc with a reference left", 0, early);
    Expect("calls of infoFreeProc after the last release", 1, info);
    Expect("AddRef(null)", nullptr, errors.AddRef(nullptr));
    errors.Release(nullptr);
}

void HasCoreErrors(Runtime const& runtime) {
    auto const errors = runtime.Errors();
    for (BRVErrorID const id : {kBRVUnknownError, kBRVMemoryError}) {
        BIBError* const error = errors.GetCoreError(id);
        Require(error != nullptr, "a predefined error", "null for " + std::to_string(id));
        char const* const text = runtime.Atoms().GetCString(errors.GetErrorMessage(error));
        Require(text != nullptr && *text != '\0', "an error with a message", "none");
        Expect("its id", static_cast<long>(id), errors.GetID(error));
        Require(errors.AddRef(error) == error, "AddRef gives the error", "another one");
        errors.Release(error);
        errors.Release(error);
        for (int i = 0; i < 10; ++i) {
            errors.Release(errors.GetCoreError(id));
        }
        // They would take the memory of an error that was freed.
        std::vector<BIBError*> others(100);
        for (BIBError*& other : others) {
            other = errors.NewError("m", "c", 4242, nullptr, nullptr);
        }
        BIBError* const again = errors.GetCoreError(id);
        long const kept = again ? errors.GetID(again) : -1;
        Expect("its id after as many results and releases", static_cast<long>(id), kept);
        errors.Release(again);
        for (BIBError* const other : others) {
            errors.Release(other);
        }
    }
    Expect(
        "GetCoreError of an unknown id", nullptr, errors.GetCoreError(static_cast<BRVErrorID>(99)));
}

constexpr Check kErrorChecks[] = {
    {"error.contents",
     "NewError copies the strings; infoFreeProc is called on info when the last reference is "
     "released.",
     &HoldsWhatItWasMadeOf},
    {"error.count",
     "Errors are counted; AddRef gives the error, and both rows accept null.",
     &CountsReferencesOfErrors},
    {"error.core",
     "GetCoreError gives the predefined error with that id and one reference, null if there is "
     "none.",
     &HasCoreErrors},
};

// Shared buffers.

int gOwnBytesDeleted = 0;

void AllocatesItsBytes(Runtime const& runtime) {
    auto const buffers = runtime.Buffers();
    gOwnBytesDeleted = 0;
    buffers.Release(buffers.NewBuffer(
        5, nullptr, [](void* /*bytes*/) { ++gOwnBytesDeleted; }, nullptr, nullptr));
    Expect("calls of deleteProc without a block of the caller", 0, gOwnBytesDeleted);
    BIBSharedBuffer* const buffer = buffers.NewBuffer(5, nullptr, nullptr, nullptr, nullptr);
    Require(buffer != nullptr, "a buffer", "null");
    void* const bytes = buffers.GetBuffer(buffer);
    Require(bytes != nullptr, "its bytes", "null");
    std::memcpy(bytes, "bytes", 5);
    unsigned long const size = buffers.GetSize(buffer);
    buffers.AddRef(buffer);
    int const destroyed = buffers.DeleteUnowned(buffer);
    buffers.Release(buffer);
    bool const isKept = std::memcmp(buffers.GetBuffer(buffer), "bytes", 5) == 0;
    int const destroyedLast = buffers.DeleteUnowned(buffer);
    Expect("its size", 5UL, size);
    Expect("DeleteUnowned with another reference", 0, destroyed);
    Require(isKept, "the bytes as long as there is a reference", "others");
    Require(destroyedLast != 0, "nonzero for the only reference", "zero");
}

void TakesClientBlocks(Runtime const& runtime) {
    auto const buffers = runtime.Buffers();
    int block = 0;
    BIBSharedBuffer* const buffer =
        buffers.NewBuffer(sizeof block, &block, &Free, nullptr, nullptr);
    Require(buffer != nullptr, "a buffer", "null");
    void* const bytes = buffers.GetBuffer(buffer);
    int const early = block;
    buffers.Release(buffer);
    Require(bytes == &block, "the block of the caller", "another one");
    Expect("calls of deleteProc before the last release", 0, early);
    Expect("calls of deleteProc after it", 1, block);
    int empty = 0;
    buffers.Release(buffers.NewBuffer(0, &empty, &Free, nullptr, nullptr));
    Expect("calls of deleteProc for a block of size 0", 1, empty);
    int kept = 0;
    buffers.Release(buffers.NewBuffer(sizeof kept, &kept, nullptr, nullptr, nullptr));
    Expect("a block without deleteProc", 0, kept);
}

void AcceptsNullBuffers(Runtime const& runtime) {
    auto const buffers = runtime.Buffers();
    buffers.AddRef(nullptr);
    buffers.Release(nullptr);
    Expect("GetBuffer(null)", nullptr, buffers.GetBuffer(nullptr));
    Expect("GetSize(null)", 0UL, buffers.GetSize(nullptr));
}

void MakesBuffersOfEachSize(Runtime const& runtime) {
    auto const buffers = runtime.Buffers();
    BIBSharedBuffer* const buffer = buffers.NewBuffer(0, nullptr, nullptr, nullptr, nullptr);
    Require(buffer != nullptr, "a buffer of size 0", "null");
    unsigned long const size = buffers.GetSize(buffer);
    buffers.Release(buffer);
    Expect("its size", 0UL, size);
    for (unsigned long const tooLarge : {~0UL / 2, ~0UL - 15, ~0UL}) {
        Expect(
            "NewBuffer of half the address space or more",
            nullptr,
            buffers.NewBuffer(tooLarge, nullptr, nullptr, nullptr, nullptr));
    }
}

constexpr Check kBufferChecks[] = {
    {"buffer.own-bytes",
     "A buffer without a block allocates its bytes; DeleteUnowned destroys it for the only "
     "reference and has no effect otherwise.",
     &AllocatesItsBytes},
    {"buffer.client-block",
     "A buffer takes ownership of the block and calls deleteProc when the last reference is "
     "released.",
     &TakesClientBlocks},
    {"buffer.size",
     "A buffer may have no bytes; NewBuffer gives null on failure.",
     &MakesBuffersOfEachSize},
    {"buffer.null",
     "AddRef and Release accept null; GetBuffer gives null and GetSize 0 for it.",
     &AcceptsNullBuffers},
};

} // namespace

constinit Group const kMemory = {"memory", "BIBMemoryInterface", Demand::kRequired, kMemoryChecks};
constinit Group const kAtoms = {"atoms", "BIBStringInterface", Demand::kRequired, kAtomChecks};
constinit Group const kErrors = {"errors", "BIBErrorInterface", Demand::kRequired, kErrorChecks};
constinit Group const kBuffers = {
    "buffers", "BIBSharedBuffInterface", Demand::kRequired, kBufferChecks};

} // namespace conformance
