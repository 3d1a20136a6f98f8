// Which settings there are.
#pragma once

#include "pdfsettings/Export.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace pdfsettings {

class Component;

// A settings file in the administrator's folder or in the user's.
struct PDFSETTINGS_API ListedSettings {
    std::string name; // the one to show, in UTF-8; the file's own or a display name
    std::string path; // absolute, in UTF-8
    bool isReadOnly = false;
    std::chrono::sys_seconds modified; // when its contents changed last
    // The applications that it is hidden from (false) or shown in although it was hidden (true).
    // Others show it.
    std::map<std::string, bool> isShownIn;

    // Whether that application is to show it.
    bool IsHiddenFrom(std::string const& application) const;
};

// What the component knows of settings files. No instances.
class PDFSETTINGS_API SettingsList {
public:
    // The settings files, read anew: the administrator's first, each name once. application: the
    // one whose display names apply, in UTF-8; none for the files' own names. Files hidden from it
    // are in the list. A folder that cannot be read adds nothing. Throws Error for a NUL in
    // application and when memory runs out.
    static std::vector<ListedSettings>
    Read(Component const& component, std::optional<std::string> const& application = {});

    // The user's settings folder, in UTF-8 without a slash at its end, which is made where it is
    // missing; empty where the system has none. Throws Error when memory runs out.
    static std::string UserFolder(Component const& component);
};

} // namespace pdfsettings
