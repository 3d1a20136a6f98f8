// Settings as an object of the component.
#pragma once

#include "host/detail/RunningComponent.h"
#include "host/detail/RuntimeValues.h"
#include "pdfsettings/Document.h"

#include <string>
#include <utility>
#include <vector>

namespace pdfsettings::detail {

// A message of the component about a setting: its path and the text.
using Message = std::pair<std::string, std::string>;

// REQUIRES: turn outlives it.
class ComponentSettings {
public:
    // Reads text. schema is read by each validation only. Throws Error (kComponent) and
    // std::bad_alloc, as all functions below.
    ComponentSettings(Turn const& turn, std::string_view text, std::string const& schema = {});

    // What the schema rejects; empty if the settings are valid. document: the text that was read.
    std::vector<Message> Validate(Document const& document);

    // The text that the component writes. Throws Error (kUnwritable) if it cannot write the
    // settings.
    std::string Text();

    SettingsValues Values();

    ::PDFSettings* Get() const noexcept { return fSettings.get(); }

private:
    Turn const& fTurn;
    Ref<::PDFSettings> fSettings;
};

} // namespace pdfsettings::detail
