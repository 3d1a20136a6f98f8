// Everything that can be said about a settings file.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Settings.h"

#include <optional>

namespace pdfsettings {

enum class ReviewScope {
    kUsual,
    kStrict // also settings that the schema does not know, and a file without settings
};

// What of a document is refused, lost or read otherwise than it looks, what the schema rejects, and
// what the component would write otherwise than it is; in the order of the text, each with its
// place and an id of docs/findings.md. A name that is nearly an allowed one is named. Of a refused
// document only what its text says. Throws Error as Component::Shared.
PDFSETTINGS_API Findings Review(
    Document const& document,
    Schema const& schema = Schema::Standard(),
    ReviewScope scope = ReviewScope::kUsual);

// The document in a file, also one that is refused. Throws Error as ReadFile.
PDFSETTINGS_API Document OpenDocument(FilePath const& file);

// A setting that the schema knows, as it is in settings.
struct ExplainedSetting {
    Rule rule;
    std::optional<Value> value; // stored, or else the default
    bool isStored = false;
    bool isChanged = false; // it is stored and differs from the default
};

// The settings that the schema knows, but for those in arrays: group by group, then those in no
// group.
PDFSETTINGS_API Sequence<ExplainedSetting> Explain(Settings const& settings);

} // namespace pdfsettings
