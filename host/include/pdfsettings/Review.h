// All findings about a settings file.
#pragma once

#include "pdfsettings/Document.h"
#include "pdfsettings/Export.h"
#include "pdfsettings/Finding.h"
#include "pdfsettings/Schema.h"
#include "pdfsettings/Settings.h"

#include <optional>
#include <string>
#include <vector>

namespace pdfsettings {

// What Review reports.
struct ReviewOptions {
    // Also settings that the schema does not know, and a file without settings.
    bool isStrict = false;

    // Settings to accept although the schema does not know them: paths, or patterns with * for any
    // text and ? for any letter, in the same letter case.
    std::vector<std::string> knownKeys = {};

    // The ids of findings to leave out. Why a text is refused is never left out.
    std::vector<std::string> ignoredIds = {};
};

// What is refused, lost or read otherwise than it looks, what the schema rejects, and what the
// component would write otherwise. In the order of the text, each finding with its position and an
// id of docs/findings.md. A value close to an allowed name comes with a suggestion. For a refused
// document, only the findings about its text. Throws Error as Component::Shared.
PDFSETTINGS_API Findings Review(
    Document const& document,
    Schema const& schema = Schema::Standard(),
    ReviewOptions const& options = {});

// The document in a file, which may be refused. Throws Error as ReadFile.
PDFSETTINGS_API Document OpenDocument(FilePath const& file);

// A setting that the schema knows, and its state in a set of settings.
struct ExplainedSetting {
    Rule rule;
    std::optional<Value> value; // the stored value, or else the default
    bool isStored = false;
    bool isChanged = false; // it is stored and differs from the default
};

// The settings that the schema knows, except those inside arrays: group by group, then those
// without a group.
PDFSETTINGS_API Sequence<ExplainedSetting> Explain(Settings const& settings);

} // namespace pdfsettings
