// joboptions fmt: writes files in the component's own layout.
#pragma once

#include "pdfsettings/Component.h"
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"
#include "tools/joboptions/commands/Replace.h"
#include "tools/joboptions/text/Judgement.h"

#include <string>
#include <vector>

namespace joboptions {

// Rewrites files as the component writes settings.
class FmtCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    FmtCommand(CLI::App& program, Options& options);

    // Status::kDone; with --check Status::kNo when a file is laid out otherwise; Status::kRefused
    // for a file with comments, which would be lost. The worst status of all files.
    Status Run() const override;

private:
    Status
    FormatOrReport(pdfsettings::Component const& component, LayoutJudgement& judgement) const;
    Status Format(pdfsettings::Component const& component, LayoutJudgement& judgement) const;
    Status FormatText(
        pdfsettings::Component const& component,
        LayoutJudgement& judgement,
        std::string const& text,
        SaveText const& save) const;
    Status Announce(std::string const& file) const;
    Options const& fOptions;
    std::vector<std::string> fFiles;
    bool fIsCheck = false;
};

} // namespace joboptions
