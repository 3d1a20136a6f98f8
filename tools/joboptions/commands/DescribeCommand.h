// joboptions describe: what the schema says of settings.
#pragma once

#include "pdfsettings/Schema.h"
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"

#include <string>
#include <vector>

namespace joboptions {

// Writes what settings are for and what they may hold: a line for each, or all that the schema says
// of the ones that are named.
class DescribeCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    DescribeCommand(CLI::App& program, Options& options);

    // Status::kDone, or Status::kNo when the schema lacks a key: the others are written all the
    // same.
    Status Run() const override;

private:
    std::vector<pdfsettings::SettingRule>
    Choose(std::vector<pdfsettings::SettingRule> const& rules, Status& status) const;
    std::string AsText(std::vector<pdfsettings::SettingRule> const& rules) const;
    std::string AsJson(std::vector<pdfsettings::SettingRule> const& rules) const;
    void
    ReportMissing(std::string const& key, std::vector<pdfsettings::SettingRule> const& rules) const;

    Options const& fOptions;
    std::vector<std::string> fKeys;
};

} // namespace joboptions
