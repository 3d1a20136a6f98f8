// Settings as the component holds them.
#pragma once

#include "host/detail/RunningComponent.h"
#include "host/detail/RuntimeValues.h"
#include "pdfsettings/Document.h"

#include <string>
#include <utility>
#include <vector>

namespace pdfsettings::detail {

// What the component says of a setting: its path and a message.
using Message = std::pair<std::string, std::string>;

// REQUIRES: turn outlives it.
class ComponentSettings {
public:
    // Reads text; schema is not looked at before the first validation. Throws Error (kComponent)
    // and std::bad_alloc, as all that follow.
    ComponentSettings(Turn const& turn, std::string_view text, std::string const& schema = {});

    // What the schema rejects; none when the settings are valid. document: the text that was read.
    std::vector<Message> Validate(Document const& document);

    // The settings as the component writes them. Throws Error (kUnwritable) for those that it
    // cannot write.
    std::string Text();

    SettingsValues Values();

    ::PDFSettings* Get() const noexcept { return fSettings.get(); }

private:
    Turn const& fTurn;
    Ref<::PDFSettings> fSettings;
};

} // namespace pdfsettings::detail
