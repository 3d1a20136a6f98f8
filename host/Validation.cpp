#include "host/detail/Validation.h"

#include "document/Spelling.h"
#include "format/SettingPath.h"
#include "format/Tokens.h"
#include "host/detail/ComponentSettings.h"
#include "host/detail/Constraints.h"
#include "pdfsettings/Compare.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <set>
#include <string_view>
#include <utility>

namespace pdfsettings::detail {

namespace {

// Limits the time for a file with very many findings: they get suggestions only if they are fewer
// than this.
constexpr std::size_t kMostHints = 100;

// The beginning of the settings, or the place where they would begin.
Span BeginOf(Document const& document) {
    std::size_t const body = document.Body() ? document.Body()->begin : 0;
    return {body < 2 ? 0 : body - 2, body};
}

std::vector<std::string> AllowedNames(Rule const& rule) {
    std::vector<std::string> names;
    for (Value const& value : rule.Allowed()) {
        if (auto name = value.If<Name>()) {
            names.push_back(std::move(name->text));
        }
    }
    return names;
}

// "; did you mean …?" if the rejected value is similar to an allowed name, else empty.
std::string NameHint(Document const& document, Schema const& schema, std::string const& path) {
    Rule const* const rule = schema.Find(path);
    Value const* const value = document.Values().Find(path);
    auto const name = value == nullptr ? std::nullopt : value->If<Name>();
    std::string const meant =
        rule != nullptr && name ? Nearest(name->text, AllowedNames(*rule)) : "";
    return meant.empty() ? "" : "; did you mean /" + meant + "?";
}

bool HasFinding(Document const& document, std::string_view id) {
    return std::ranges::any_of(
        document.Findings(), [id](Finding const& finding) { return finding.Id() == id; });
}

// The result of work, which lets the component read a document. The component supports less nesting
// than a document.
template <class Work>
auto WithComponent(Document const& document, Work work) {
    Turn const turn;
    try {
        return work(turn);
    } catch (std::bad_alloc const&) {
        if (HasFinding(document, "nesting")) {
            throw Error(Fault::kComponent, "nested too deeply for the stack of this thread");
        }
        if (HasFinding(document, "reserved-key")) {
            throw Error(
                Fault::kUnwritable,
                std::string(format::kTailKey) + " cannot be written so that it reads back");
        }
        throw;
    }
}

bool IsError(Finding const& finding) {
    return finding.Level() == Severity::kError;
}

std::vector<Message> MessagesOf(Document const& document, Schema const& schema) {
    return WithComponent(document, [&](Turn const& turn) {
        return ComponentSettings(turn, document.Text(), schema.RulesText()).Validate(document);
    });
}

} // namespace

Finding MakeFinding(
    Document const& document,
    Severity severity,
    char const* id,
    Span span,
    std::string path,
    std::string message) {
    return Finding(
        severity, id, std::move(path), std::move(message), span, document.PlaceOf(span.begin));
}

Span SpanOf(Document const& document, std::string_view path) {
    DocumentEntry const* const entry = document.Find(path);
    if (entry != nullptr) {
        return entry->value;
    }
    std::string_view const parentPath = format::ParentPath(path);
    if (parentPath.empty()) {
        return BeginOf(document);
    }
    Span const parent = SpanOf(document, parentPath);
    return {parent.begin, std::min(parent.begin + 2, parent.end)};
}

std::vector<Finding> Validate(Document const& document, Schema const& schema) {
    std::vector<Finding> findings;
    for (auto const& [path, message] : MessagesOf(document, schema)) {
        findings.push_back(MakeFinding(
            document, Severity::kError, "value", SpanOf(document, path), path, message));
    }
    auto const violated = ViolatedConstraints(document, schema);
    std::ranges::copy_if(violated, std::back_inserter(findings), &IsError);
    return findings;
}

std::vector<Finding> Warnings(Document const& document, Schema const& schema) {
    auto findings = ViolatedConstraints(document, schema);
    std::erase_if(findings, &IsError);
    return findings;
}

std::vector<Finding>
WithHints(std::vector<Finding> findings, Document const& document, Schema const& schema) {
    if (findings.size() >= kMostHints) {
        return findings;
    }
    std::vector<Finding> hinted;
    hinted.reserve(findings.size());
    for (Finding const& finding : findings) {
        hinted.emplace_back(
            finding.Level(),
            finding.Id(),
            finding.Path(),
            finding.Message() + NameHint(document, schema, finding.Path()),
            finding.Bytes(),
            finding.Where(),
            std::vector<Finding>(finding.Related().begin(), finding.Related().end()));
    }
    return hinted;
}

namespace {

// The path of a value after an element was removed; nothing if it was in that element.
std::optional<std::string> Moved(std::string const& path, std::string const& removed) {
    std::string const array = std::string(format::ParentPath(removed)) + "/";
    if (!path.starts_with(array)) {
        return path;
    }
    std::string_view const rest = std::string_view(path).substr(array.size());
    std::string_view const part = format::FirstPart(rest);
    auto const position = format::PositionIn(part);
    auto const gone = format::PositionIn(format::LastPart(removed));
    if (!position || !gone || *position < *gone) {
        return path;
    }
    return *position == *gone
               ? std::nullopt
               : std::optional(
                     array + std::to_string(*position - 1) + std::string(rest.substr(part.size())));
}

} // namespace

std::vector<Finding> NewFindings(
    std::vector<Finding> const& before,
    std::vector<Finding> after,
    std::vector<std::string> const& removed) {
    std::set<std::pair<std::string, std::string>> old;
    for (Finding const& finding : before) {
        std::optional<std::string> path = finding.Path();
        for (std::string const& element : removed) {
            path = path ? Moved(*path, element) : path;
        }
        if (path) {
            old.emplace(*path, finding.Message());
        }
    }
    std::erase_if(after, [&](Finding const& finding) {
        return old.contains({finding.Path(), finding.Message()});
    });
    return after;
}

namespace {

bool IsOfNumbers(Difference const& difference) {
    return difference.before && difference.after && difference.before->What() == Kind::kNumber &&
           difference.after->What() == Kind::kNumber;
}

// What the component writes for a document. Throws Error (kUnwritable).
std::string WrittenText(Document const& document) {
    return WithComponent(document, [&](Turn const& turn) {
        return ComponentSettings(turn, document.Text()).Text();
    });
}

// Whether the settings read back after the component wrote them, apart from numbers. A file without
// a tail gets the default one.
bool ReadsBack(Document const& document) {
    try {
        Document const again(WrittenText(document));
        bool const isTailKept = document.Tail().empty() || again.Tail() == document.Tail();
        bool const isRead = again.WhyRefused() == Refusal::kNone;
        return isRead && isTailKept && again.Values().size() == document.Values().size();
    } catch (Error const&) {
        return false;
    }
}

// The key of a setting that makes the written text unreadable even alone, if there is one.
std::optional<std::string> UnwritableKey(Document const& document) {
    for (auto const& [key, value] : document.Values()) {
        DocumentEntry const* const entry = document.Find(key);
        if (entry == nullptr) {
            continue;
        }
        std::string const bytes =
            document.Text().substr(entry->key.begin, entry->value.end - entry->key.begin);
        if (!ReadsBack(Document("<< " + bytes + "\n>> setalembicorparams tail"))) {
            return key;
        }
    }
    return std::nullopt;
}

[[noreturn]] void ThrowUnwritable(std::string const& key) {
    throw Error(Fault::kUnwritable, key + " cannot be written so that it reads back");
}

// The text that the component writes for a document, read again. Throws Error (kUnwritable).
Document Written(Document const& document) {
    std::string reason;
    try {
        Document written(WrittenText(document));
        if (written.WhyRefused() == Refusal::kNone) {
            return written;
        }
        reason = written.Findings().front().Message();
    } catch (Error const& error) {
        reason = error.Message();
    }
    if (auto const key = UnwritableKey(document)) {
        ThrowUnwritable(*key);
    }
    throw Error(Fault::kUnwritable, "what would be written cannot be read again: " + reason);
}

std::vector<Finding> RoundedNumbers(Document const& document, Document const& written) {
    std::vector<Finding> findings;
    for (Difference const& difference : Compare(document.Values(), written.Values())) {
        if (IsOfNumbers(difference)) {
            findings.push_back(MakeFinding(
                document,
                Severity::kWarning,
                "rounded",
                SpanOf(document, difference.path),
                difference.path,
                difference.before->Text() + " is written as " + difference.after->Text()));
        }
    }
    return findings;
}

// key: the setting that causes the problem, if it is a single one.
Finding Unwritable(Document const& document, std::optional<std::string> const& key) {
    DocumentEntry const* const entry = key ? document.Find(*key) : nullptr;
    return MakeFinding(
        document,
        Severity::kWarning,
        "unwritable",
        entry != nullptr ? entry->value : BeginOf(document),
        key.value_or(""),
        entry != nullptr ? "the component writes this so that the file cannot be read again"
                         : "the component writes this file so that it cannot be read again");
}

} // namespace

std::string CanonicalText(Document const& document) {
    Document const written = Written(document);
    for (Difference const& difference : Compare(document.Values(), written.Values())) {
        if (!IsOfNumbers(difference)) {
            ThrowUnwritable(difference.path);
        }
    }
    if (!document.Tail().empty() && written.Tail() != document.Tail()) {
        throw Error(
            Fault::kUnwritable,
            "what follows the settings cannot be written so that it reads back");
    }
    return WrittenText(written);
}

std::vector<Finding> WritingFindings(Document const& document) {
    try {
        Document const written(WrittenText(document));
        if (written.WhyRefused() == Refusal::kNone) {
            return RoundedNumbers(document, written);
        }
    } catch (Error const& error) {
        if (error.Code() != Fault::kUnwritable) {
            throw;
        }
    }
    return {Unwritable(document, UnwritableKey(document))};
}

} // namespace pdfsettings::detail
