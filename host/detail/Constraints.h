// Rules of a schema between settings.
#pragma once

#include "host/detail/Bindings.h"
#include "pdfsettings/Document.h"
#include "pdfsettings/Schema.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace pdfsettings::detail {

struct ConstraintData {
    Severity fLevel;
    std::vector<std::string> fPaths;
    std::string fText;
    std::string fHelp;
};

// The value that a word of a schema stands for, for the setting at a path: a schema writes strings
// as words.
using SettingForm = std::function<Value(std::string const& path, Value const& word)>;

// The constraints of a schema without problems.
std::vector<std::shared_ptr<ConstraintData const>>
ReadConstraints(Dictionary const& schema, SettingForm const& form);

// The constraints that a document violates, errors and warnings. REQUIRES: the document is not
// refused. Throws std::bad_alloc.
std::vector<Finding> ViolatedConstraints(Document const& document, Schema const& schema);

// Reaches the dictionary of a schema.
class ConstraintCheck {
public:
    // Null if the schema has no constraints.
    static POSDict* DictOf(Schema const& schema) noexcept;
};

} // namespace pdfsettings::detail
