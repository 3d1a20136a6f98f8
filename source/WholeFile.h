// Whole files in and out.
//
// E is thrown, default-constructed, at every failure of the file service, whose own code goes no
// further. CBIBErrors pass.
#pragma once

#include "api/UnicodeEncoding.h"
#include "platform/FileManager.h"

namespace UnicodeEncodingNS {

// What the templates below do, with the service's code. Descriptors are closed on every way out.
OSErr ReadFileBytes(Unicode16 const& path, Buffer8* bytes);
OSErr WriteFileBytes(Unicode16 const& path, Buffer8 const& bytes, bool failIfExists);

template <class E>
Buffer8 ReadFile_Mac(Unicode16 const& path) {
    Buffer8 bytes;
    if (ReadFileBytes(path, &bytes) != noErr) {
        throw E();
    }
    return bytes;
}

template <class E>
void WriteFile_Mac(Unicode16 const& path, Buffer8 const& bytes, bool failIfExists) {
    if (WriteFileBytes(path, bytes, failIfExists) != noErr) {
        throw E();
    }
}

// All bytes of the file at path, in a new buffer of the file's size.
template <class E>
Buffer8 ReadFile(Unicode16 const& path) {
    return ReadFile_Mac<E>(path);
}

// Makes a file at path, whose folder must exist, of bytes. An existing one is deleted first, or
// left alone if failIfExists, which is a failure. No temporary file is used: until the end there is
// no file or a short one. When a new file cannot be completed it is deleted again.
template <class E>
void WriteFile(Unicode16 const& path, Buffer8 const& bytes, bool failIfExists) {
    WriteFile_Mac<E>(path, bytes, failIfExists);
}

} // namespace UnicodeEncodingNS
