// One set of PDF conversion settings.
#pragma once

#include "pdfsettings/Export.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/SafeSave.h"
#include "pdfsettings/Value.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace pdfsettings {

class Component;

// Settings that the component holds. They keep the component running for as long as they live. A
// moved-from object may only be destroyed or assigned to.
//
// Settings without a schema, or with one that cannot be used, can be read and written, but neither
// judged nor changed: Validate and Set throw. Schema::StandardText() is a schema, and
// Schema::FromText() tells what is wrong with another one.
//
// Threads: see Component.
class PDFSETTINGS_API Settings {
public:
    // Settings from job options text. text may hold any bytes; schema is in the object notation and
    // not looked at before the first validation. Throws Error with the reported reason when the
    // text is refused.
    static Settings
    FromText(Component const& component, std::string_view text, std::string const& schema = {});

    // Settings from the file at path, which they are bound to unless it is a stream; schema as
    // above. Throws Error with the system's reason when the file cannot be read (see ReadFile),
    // else with the reported one.
    static Settings
    FromFile(Component const& component, std::string const& path, std::string const& schema = {});

    // Settings with copies of values; schema as above. Throws Error when memory runs out, and for a
    // NUL in a key, a word, the name of a binary type or a 16-bit text. A Binary that bears the
    // component's type name of a string or a hexadecimal string is one from then on.
    static Settings FromValues(
        Component const& component, Dictionary const& values, std::string const& schema = {});

    Settings(Settings&&) noexcept;
    Settings& operator=(Settings&&) noexcept;
    Settings(Settings const&) = delete;
    Settings& operator=(Settings const&) = delete;
    ~Settings();

    // A copy of all settings in their order. Throws Error when memory runs out.
    Dictionary Values() const;

    // The settings as job options text, in the component's own layout. Throws Error when memory
    // runs out and when a value has no form in such a text: a binary type of another name than the
    // tail's, a 16-bit text.
    std::string Text() const;

    // The faults of the settings by their schema; none when they are valid. A setting that the
    // schema does not know is no fault. Throws Error with the reported reason when the schema
    // cannot be used.
    std::vector<Finding> Validate() const;

    // Changes the settings under all keys of changes, unless the result has faults by the schema:
    // then nothing changes. The faults; none when the change was made. Throws Error as Validate and
    // FromValues do, and then nothing has changed.
    [[nodiscard]] std::vector<Finding> Set(Dictionary const& changes);

    // Whether the file that the settings are bound to holds other bytes than were read from it or
    // written to it last, or cannot be read; true for settings that are bound to no file. Changes
    // of the settings play no part.
    bool IsDirty() const;

    // Saves Text() in the file that the settings are bound to, as SaveSafely does, unless somebody
    // else changed it: then throws ConflictError. They stay bound to it, and IsDirty is false.
    // Comments of the file are not part of the settings: see Splice for a change that keeps them.
    // Throws Error as Text and SaveSafely, and for settings that are bound to no file.
    SaveWarnings Save(SaveOptions const& options = {});

    // Writes the settings, valid or not, to the file at path, whose folder must exist, and binds
    // them to it. An existing file is deleted before the new one is made: see Save and SaveSafely
    // for a replacement that cannot lose it, keeps permissions and refuses planted links. Waits for
    // programs that hold the folder's lock; the warnings say where others are not kept out. Throws
    // BusyError, Error as Text, for a path that is no UTF-8 or has a NUL byte, with the system's
    // reason, as far as it can be found out afterwards, and when the file does not hold the whole
    // text in the end.
    SaveWarnings Write(std::string const& path);

private:
    friend class RawAccess;

    struct State;

    explicit Settings(std::unique_ptr<State> state);

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
