// joboptions check: judges files by a schema.
#pragma once

#include "pdfsettings/Component.h"
#include "pdfsettings/Schema.h"
#include "tools/joboptions/commands/Command.h"
#include "tools/joboptions/commands/Options.h"
#include "tools/joboptions/text/Judgement.h"

#include <string>
#include <vector>

namespace joboptions {

// Says of each file what of it is lost or taken otherwise than it looks, and what the schema does
// not allow.
class CheckCommand : public Command {
public:
    // REQUIRES: program and options outlive this.
    CheckCommand(CLI::App& program, Options& options);

    // Status::kDone when all files are valid, Status::kNo when one has faults (warnings count if
    // strict), Status::kBadInput when one cannot be read or parsed; the others are judged all the
    // same.
    Status Run() const override;

private:
    Judgement Judge(
        pdfsettings::Component const& component,
        pdfsettings::Schema const& schema,
        std::string const& file) const;

    void JudgeText(
        pdfsettings::Component const& component,
        pdfsettings::Schema const& schema,
        std::string text,
        Judgement& judgement) const;
    Status StatusOf(Judgement const& judgement) const;

    Options const& fOptions;
    std::vector<std::string> fFiles;
    bool fIsStrict = false;
};

} // namespace joboptions
