// Access control lists of files, as the system stores them: a version, and entries of a tag,
// permissions and an id, 16, 16 and 32 bits each, the low byte first (linux/posix_acl_xattr.h).
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <sys/types.h>
#include <sys/xattr.h>

namespace support {

constexpr char kAccessList[] = "system.posix_acl_access";
constexpr char kDefaultList[] = "system.posix_acl_default";

// Whom lists of tests name.
constexpr uid_t kNamedUser = 7777;
constexpr gid_t kNamedGroup = 4000;

// A list with the permissions, rwx from the high bit on, of the owner, the named user, the group,
// the named group, the mask and the others.
inline std::string AccessList(std::array<char, 6> const& permissions) {
    constexpr std::uint32_t kNone = 0xFFFFFFFF;
    constexpr std::uint32_t kIds[] = {kNone, kNamedUser, kNone, kNamedGroup, kNone, kNone};
    std::string list("\2\0\0\0", 4);
    for (std::size_t entry = 0; entry < permissions.size(); ++entry) {
        list += {static_cast<char>(1 << entry), 0, permissions[entry], 0};
        for (int byte = 0; byte < 4; ++byte) {
            list += static_cast<char>(kIds[entry] >> (8 * byte));
        }
    }
    return list;
}

// What a user who is not the owner, in one group, may do with a file: a list's user counts before
// its groups, these before the others, and the mask cuts all but the others.
inline int
RightsOf(uid_t user, gid_t group, gid_t groupOfFile, mode_t mode, std::string const& list) {
    if (list.empty()) {
        return static_cast<int>((group == groupOfFile ? mode >> 3 : mode) & 7U);
    }
    // The entries in the order of the list.
    auto const rights = [&list](std::size_t entry) {
        return static_cast<unsigned char>(list[4 + entry * 8 + 2]);
    };
    int const mask = rights(4);
    if (user == kNamedUser) {
        return rights(1) & mask;
    }
    bool const isInGroup = group == groupOfFile;
    bool const isInNamed = group == kNamedGroup;
    if (isInGroup || isInNamed) {
        return ((isInGroup ? rights(2) : 0) | (isInNamed ? rights(3) : 0)) & mask;
    }
    return rights(5);
}

inline bool SetAttribute(std::string const& path, char const* name, std::string const& value) {
    return setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

// The value of an attribute; empty where there is none.
inline std::string Attribute(std::string const& path, char const* name) {
    std::string value(1000, '\0');
    ssize_t const size = getxattr(path.c_str(), name, value.data(), value.size());
    value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return value;
}

} // namespace support
