// A set of PDF conversion settings: its values, its text with all comments, its schema and its
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

// Copies share their contents until one of them is changed. A moved-from object may only be
// destroyed or assigned to. All functions throw std::bad_alloc if memory runs out.
//
// Threads: const members may be called from many threads at once. Functions that use the component
// wait for other threads that use it: Validate, Check, Commit and CanonicalText. No other function
// takes a lock.
class PDFSETTINGS_API Settings {
public:
    class Edit;

    // The settings in a file, bound to it unless it is a stream. Throws Error: kSyntax, with file
    // and position, if it is not a settings file; and as ReadFile.
    static Settings Open(FilePath const& file, Schema const& schema = Schema::Standard());

    // As above, for the file of a lock. If it does not exist, there are no settings in it.
    static Settings Open(FileLock const& lock, Schema const& schema = Schema::Standard());

    // Settings from text, which may have any bytes. Throws Error (kSyntax) with the position.
    static Settings Parse(std::string_view text, Schema const& schema = Schema::Standard());

    // Settings with these values, one per line, and with the tail. Throws Error (kKey,
    // kUnwritable), with the key, for a value that no file can hold.
    static Settings From(
        Dictionary const& values,
        std::string_view tail = {},
        Schema const& schema = Schema::Standard());

    // Settings without values.
    explicit Settings(Schema const& schema = Schema::Standard());

    Settings(Settings const&);
    Settings(Settings&&) noexcept;
    Settings& operator=(Settings const&);
    Settings& operator=(Settings&&) noexcept;
    ~Settings();

    // The value at a path, as in Dictionary::Find, or else the schema's default, as a T of
    // Value::As. Throws Error: kKind, with the path; kNoValue, with a similar path that exists.
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

    // Whether a value is stored at a path; a default does not count.
    bool Has(std::string_view path) const { return Values().Find(path) != nullptr; }

    // The settings, and the text after them. Valid until the settings are changed.
    Dictionary const& Values() const& noexcept;
    Dictionary const& Values() const&& = delete;
    std::string const& Tail() const& noexcept;
    std::string const& Tail() const&& = delete;

    // The text of the file, or the text that Save will write.
    std::string const& Text() const& noexcept;
    std::string const& Text() const&& = delete;
    Document const& Source() const& noexcept;
    Document const& Source() const&& = delete;

    Schema const& Rules() const noexcept;

    // What the schema rejects; empty if the settings are valid. A setting that the schema does not
    // know is valid. Throws Error as Component::Shared.
    Findings Validate() const;

    // What the schema advises against, by its rules between settings; no reason to refuse settings.
    Findings Warnings() const;

    // What the schema would reject, and does not reject now, if this value were stored at a path;
    // or why it cannot be stored. Changes nothing.
    Findings Check(std::string_view path, Value const& value) const;

    // Begins a change. Any other change of the settings meanwhile, such as Reload, ends it: Commit
    // then throws.
    Edit Change() &;
    Edit Change() && = delete;

    // Whether there are unsaved changes; true for settings made from values, until they are saved.
    bool IsModified() const noexcept;

    // Whether the file has other bytes than were last read from it or written to it, or cannot be
    // read. False for settings that are not bound to a file.
    bool IsStale() const;

    // The absolute path of the file; empty for settings that are not bound to one.
    FilePath const& File() const noexcept;

    // Reads the file again; unsaved changes are lost. Throws as Open, with nothing changed.
    // REQUIRES: the settings are bound to a file.
    void Reload();

    // Saves Text() in the file as SaveSafely does, whether it is valid or not. Throws Error as
    // SaveSafely, and kConflict if the file was changed by another program. REQUIRES: the settings
    // are bound to a file.
    SaveWarnings
    Save(OnConflict onConflict = OnConflict::kRefuse, std::chrono::milliseconds wait = kUsualWait);

    // Saves the settings in another file, and binds them to it unless it is a stream. Throws Error
    // as SaveSafely, and kConflict if the file exists.
    SaveWarnings SaveAs(
        FilePath const& file,
        OnConflict onConflict = OnConflict::kRefuse,
        std::chrono::milliseconds wait = kUsualWait);

    // Saves the settings through the lock on their file. Throws as Save, and Error (kConflict) if
    // the file has other bytes than were read, or the lock is on another file.
    SaveWarnings Save(FileLock& lock, OnConflict onConflict = OnConflict::kRefuse);

    // The settings in the layout of the component: without comments, and with numbers rounded to
    // its five decimals. Settings parsed from this text give the same text again. Throws Error
    // (kUnwritable), with the key, for a value that the component would write unreadably.
    std::string CanonicalText() const;

private:
    friend class RawAccess;

    struct PDFSETTINGS_LOCAL State;

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

    std::shared_ptr<State> fState; // of these settings and their edits only
};

// A set of changes that are made together or not at all. Without Commit they are dropped. Each
// change takes time linear in the size of the text. A moved-from object may only be destroyed.
class PDFSETTINGS_API Settings::Edit {
public:
    Edit(Edit&&) noexcept;
    Edit& operator=(Edit&&) = delete;
    ~Edit();

    // Stores a value at a path, as Dictionary::Set: missing dictionaries on the path are created,
    // and all other values stay. Throws Error: kNoValue if the path is not possible, kKey, and
    // kUnwritable for a value that would not read back as the same. Then nothing has changed.
    Edit& Set(std::string_view path, Value const& value);

    // As Set, for a value in the syntax of a file, whose form is kept. Throws as Set, and Error
    // (kSyntax), with what the schema expects, if text is not a value.
    Edit& SetText(std::string_view path, std::string_view text);

    // Adds a value to the end of the array at a path, unless an equal one is there; and removes all
    // that are equal to it. An array that is not stored begins as its default, or else empty. Throw
    // as Set, and Error: kKind if there is another value, kNoValue if there is nothing to remove.
    Edit& AddElement(std::string_view path, Value const& element);
    Edit& RemoveElement(std::string_view path, Value const& element);

    // The same for a value in the syntax of a file. Throw also as SetText.
    Edit& AddElementText(std::string_view path, std::string_view text);
    Edit& RemoveElementText(std::string_view path, std::string_view text);

    // Stores the value at a path of another document, copied byte for byte. Throws as Set, and
    // Error (kNoValue) if from has no value there.
    Edit& Copy(Document const& from, std::string_view path);

    // Copies what another document has at a path, or all its settings whose keys match a pattern
    // (as Schema::Matching) or are of the group of that name. The number of values copied. Throws
    // as Copy.
    std::size_t CopyMatching(Document const& from, std::string_view pattern);

    // Removes the value at a path. Throws Error: kNoValue, with a similar path that exists, if
    // there is no value; kUnwritable if a collection would be left empty that must not be.
    Edit& Remove(std::string_view path);

    // The text and the values with the changes so far.
    Document const& Result() const noexcept;

    // What the schema rejects in the result and does not reject in the settings before the change.
    Findings Check() const;

    // What the schema advises against in the result and did not before the change.
    Findings Warnings() const;

    // Makes the changes, unless Check() has findings: then nothing changes. Returns these findings;
    // empty if the changes were made. Problems that the settings already had do not prevent a
    // change. Comments and layout stay. Throws Error (kConflict) if the settings were changed since
    // this began.
    [[nodiscard]] Findings Commit();

private:
    friend class Settings;

    struct PDFSETTINGS_LOCAL State;

    PDFSETTINGS_LOCAL explicit Edit(std::unique_ptr<State> state) noexcept;

    std::unique_ptr<State> fState;
};

} // namespace pdfsettings
