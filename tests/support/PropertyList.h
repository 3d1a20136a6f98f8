// Property lists for tests.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace support {

// A property list with that root dictionary.
inline std::string PropertyList(std::string const& entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries +
           "</dict></plist>\n";
}

// An entry of a dictionary; value is an element.
inline std::string Entry(std::string const& key, std::string const& value) {
    return "<key>" + key + "</key>" + value;
}

inline std::string StringEntry(std::string const& key, std::string const& value) {
    return Entry(key, "<string>" + value + "</string>");
}

inline std::string Dict(std::string const& entries) {
    return "<dict>" + entries + "</dict>";
}

inline std::string DictEntry(std::string const& key, std::string const& entries) {
    return Entry(key, Dict(entries));
}

// What an application's files are called: names by turns with the names that are shown.
inline std::string
NamesEntry(std::string const& application, std::vector<std::string> const& names) {
    std::string elements;
    for (std::string const& name : names) {
        elements += "<string>" + name + "</string>";
    }
    return Entry(application, "<array>" + elements + "</array>");
}

// Makes a file, and the folder for it.
inline void WriteBytes(std::filesystem::path const& path, std::string const& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << bytes;
}

} // namespace support
