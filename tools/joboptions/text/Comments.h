// The comments of a settings file.
#pragma once

#include "pdfsettings/Document.h"

namespace joboptions {

// Whether a document that is read has a comment that its settings do not keep: before, between or
// within the values. What follows the settings is kept whole.
bool HasComments(pdfsettings::Document const& document);

} // namespace joboptions
