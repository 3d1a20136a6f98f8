// One set of PDF conversion settings: its values, its text with all comments, its schema and its
// file.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/SafeSave.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Value.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace pdfsettings {

// Copies share what neither of them has changed since. A moved-from object may only be destroyed or
// assigned to. All functions throw std::bad_alloc when memory runs out.
//
// Threads: const members may be called from many threads at once. What needs the component waits
// for other threads that use it: Validate, Check, Commit and CanonicalText. Nothing else takes a
// lock.
class PDFSETTINGS_API Settings {
public:
    class Edit;

    // The settings in a file, which they are bound to unless it is a stream. Throws Error: kSyntax
    // with the file and the place for what is no settings file, and as ReadFile.
    static Settings Open(FilePath const& file, Schema const& schema = Schema::Standard());

    // The same for the file of a lock, which need not exist: there are no settings in it then.
    static Settings Open(FileLock const& lock, Schema const& schema = Schema::Standard());

    // Settings from a text, which may hold any bytes. Throws Error (kSyntax) with the place.
    static Settings Parse(std::string_view text, Schema const& schema = Schema::Standard());

    // Settings with these values, a line for each, and what follows them in their file. Throws
    // Error (kKey, kUnwritable) with the key of a value that no file can hold.
    static Settings From(
        Dictionary const& values,
        std::string_view tail = {},
        Schema const& schema = Schema::Standard());

    // Settings without a value.
    explicit Settings(Schema const& schema = Schema::Standard());

    Settings(Settings const&);
    Settings(Settings&&) noexcept;
    Settings& operator=(Settings const&);
    Settings& operator=(Settings&&) noexcept;
    ~Settings();

    // The value at a path, as in Dictionary::Find, or else the schema's default, as a T of
    // Value::As. Throws Error: kKind with the path, and kNoValue with a similar path that there is.
    template <class T>
    T Get(std::string_view path) const {
        return GetAs<T>(path, GetValue(path));
    }

    // The value at a path, or else fallback. Throws Error (kKind).
    template <class T>
    T Get(std::string_view path, T fallback) const {
        Value const* const value = Values().Find(path);
        return value == nullptr ? std::move(fallback) : GetAs<T>(path, *value);
    }

    // Whether a value is stored at a path; a default is not.
    bool Has(std::string_view path) const { return Values().Find(path) != nullptr; }

    // The settings, and what follows them in their file. Valid until the settings are changed.
    Dictionary const& Values() const& noexcept;
    Dictionary const& Values() const&& = delete;
    std::string const& Tail() const& noexcept;
    std::string const& Tail() const&& = delete;

    // The text as it stands in the file, or will when it is saved.
    std::string const& Text() const& noexcept;
    std::string const& Text() const&& = delete;
    Document const& Source() const& noexcept;
    Document const& Source() const&& = delete;

    Schema const& Rules() const noexcept;

    // What the schema rejects; none when the settings are valid. A setting that the schema does not
    // know is valid. Throws Error as Component::Shared.
    Findings Validate() const;

    // What the schema would reject, and does not yet, if this value were stored at a path, or why
    // it cannot be stored. Changes nothing.
    Findings Check(std::string_view path, Value const& value) const;

    // Begins a change. What changes the settings otherwise meanwhile, such as Reload, ends it: then
    // Commit throws.
    Edit Change() &;
    Edit Change() && = delete;

    // Whether there are changes that are not saved; true for settings that are made of values,
    // until they are saved.
    bool IsModified() const noexcept;

    // Whether the file that the settings are bound to holds other bytes than were read from it or
    // written to it last, or cannot be read. False for settings that are bound to none.
    bool IsStale() const;

    // The file that they are bound to, absolute; empty for none.
    FilePath const& File() const noexcept;

    // Reads the file again; changes that are not saved are lost. Throws as Open, and then nothing
    // has changed. REQUIRES: they are bound to a file.
    void Reload();

    // Saves Text() in the file that the settings are bound to, valid or not, as SaveSafely does.
    // Throws Error as that, and kConflict where somebody else changed the file. REQUIRES: they are
    // bound to a file.
    SaveWarnings
    Save(OnConflict onConflict = OnConflict::kRefuse, std::chrono::milliseconds wait = kUsualWait);

    // Saves them in another file, which they are bound to from then on unless it is a stream.
    // Throws Error as SaveSafely, and kConflict where there is such a file already.
    SaveWarnings SaveAs(
        FilePath const& file,
        OnConflict onConflict = OnConflict::kRefuse,
        std::chrono::milliseconds wait = kUsualWait);

    // Saves them through the lock on their file. Throws the same, and kConflict where that holds
    // something else than was read, or is on another file.
    SaveWarnings Save(FileLock& lock, OnConflict onConflict = OnConflict::kRefuse);

    // The settings in the layout of the component, without comments and with numbers rounded to its
    // five decimals; the same text again for settings that are parsed from it. Throws Error
    // (kUnwritable) with the key of a value that it writes so that it cannot be read again.
    std::string CanonicalText() const;

private:
    friend class RawAccess;

    struct State;

    PDFSETTINGS_LOCAL explicit Settings(std::shared_ptr<State> state) noexcept;

    Value GetValue(std::string_view path) const;

    template <class T>
    static T GetAs(std::string_view path, Value const& value) {
        auto result = value.template If<T>();
        if (!result) {
            ThrowKind(path, value, detail::KindText<T>());
        }
        return std::move(*result);
    }

    [[noreturn]] static void
    ThrowKind(std::string_view path, Value const& value, char const* expected);

    std::shared_ptr<State> fState; // of these settings and their edits alone
};

// Changes of settings that are made together or not at all. Without Commit they are dropped. Each
// takes time linear in the size of the text. A moved-from object may only be destroyed.
class PDFSETTINGS_API Settings::Edit {
public:
    Edit(Edit&&) noexcept;
    Edit& operator=(Edit&&) = delete;
    ~Edit();

    // Stores a value at a path, as Dictionary::Set: dictionaries that are missing on the way are
    // made, and what stands beside it stays. Throws Error: kNoValue where there is no way, kKey,
    // and kUnwritable for what cannot be written so that it reads back as the same. Then this value
    // is not stored.
    Edit& Set(std::string_view path, Value const& value);

    // The same for a value as it stands in a file, whose form is kept. Throws the same, and Error
    // (kSyntax), which says what the schema expects there, for a text that is no value.
    Edit& SetText(std::string_view path, std::string_view text);

    // Stores the value at a path of another document, byte for byte as it stands there. Throws as
    // Set, and Error (kNoValue) when there is none.
    Edit& Copy(Document const& from, std::string_view path);

    // Removes the value at a path. Throws Error: kNoValue with a similar path that there is when
    // there is none, kUnwritable for what may not be empty.
    Edit& Remove(std::string_view path);

    // The text and the values with the changes so far.
    Document const& Result() const noexcept;

    // What the schema rejects of the result and does not reject of the settings as they are.
    Findings Check() const;

    // Makes the changes, unless Check() has a finding: then nothing changes. The findings; none
    // when the changes were made. Old problems elsewhere refuse no change. Comments and layout
    // stay. Throws Error (kConflict) where the settings were changed since this began.
    [[nodiscard]] Findings Commit();

private:
    friend class Settings;

    struct State;

    PDFSETTINGS_LOCAL explicit Edit(std::unique_ptr<State> state) noexcept;

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
