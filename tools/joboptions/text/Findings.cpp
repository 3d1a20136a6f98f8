#include "tools/joboptions/text/Findings.h"

#include "tools/joboptions/commands/Input.h"
#include "tools/joboptions/text/Utf8.h"

#include <fmt/format.h>

namespace joboptions {

std::string FindingText(std::string const& file, pdfsettings::Finding const& finding) {
    return fmt::format(
        "{}: {}: {}", InputName(file), VisibleText(finding.key), VisibleText(finding.message));
}

std::string
FindingsText(std::string const& file, std::vector<pdfsettings::Finding> const& findings) {
    std::string text;
    for (pdfsettings::Finding const& finding : findings) {
        text += (text.empty() ? "" : "\n") + FindingText(file, finding);
    }
    return text;
}

} // namespace joboptions
