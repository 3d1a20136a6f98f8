#include "python/source/Records.h"

#include "python/source/Conversion.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

namespace pdfsettings::python {

namespace {

// Never destroyed: at the end of the program no interpreter is left to destroy them.
struct Imported {
    py::dict fTypes;
    py::object fName;
    py::object fHexString;
};
Imported* gImported = nullptr;

// The words of ErrorCode, and the exceptions.
struct CodeRow {
    Fault fCode;
    char const* fWord;
    char const* fType;
};
constexpr CodeRow kCodes[] = {
    {Fault::kSystem, "system", "FileError"},
    {Fault::kSyntax, "syntax", "ParseError"},
    {Fault::kSchema, "schema", "SchemaError"},
    {Fault::kKind, "kind", "KindError"},
    {Fault::kNoValue, "no-value", "NoValueError"},
    {Fault::kKey, "key", "UnwritableError"},
    {Fault::kUnwritable, "unwritable", "UnwritableError"},
    {Fault::kReadOnly, "read-only", "ReadOnlyError"},
    {Fault::kConflict, "conflict", "ConflictError"},
    {Fault::kBusy, "busy", "BusyError"},
    {Fault::kUntrusted, "untrusted", "Error"},
    {Fault::kInUse, "in-use", "Error"},
    {Fault::kStopped, "stopped", "Error"},
    {Fault::kComponent, "component", "Error"}};
static_assert(std::size(kCodes) == static_cast<std::size_t>(Fault::kComponent) + 1);

CodeRow const& RowOf(Fault code) {
    auto const row = std::ranges::find(kCodes, code, &CodeRow::fCode);
    return row == std::end(kCodes) ? kCodes[std::size(kCodes) - 1] : *row;
}

py::object OptionalNumber(std::optional<double> const& number) {
    return number ? NumberToPython(*number) : py::none();
}

void Raise(py::handle type, py::object const& error) {
    PyErr_SetObject(type.ptr(), error.ptr());
}

} // namespace

void ImportTypes() {
    auto const module = py::module_::import("pdfsettings._types");
    gImported = new Imported{
        py::dict(module.attr("__dict__")), module.attr("Name"), module.attr("HexString")};
}

py::handle Type(char const* name) {
    py::handle const type = PyDict_GetItemString(gImported->fTypes.ptr(), name);
    if (!type) {
        throw py::key_error(name);
    }
    return type;
}

py::handle NameType() {
    return gImported->fName;
}

py::handle HexStringType() {
    return gImported->fHexString;
}

py::object EnumValue(char const* type, char const* word) {
    return Type(type)(word);
}

py::object PlaceRecord(std::optional<Place> const& place, FilePath const& file) {
    if (!place) {
        return py::none();
    }
    return Type("Place")(place->line, place->column, PathToPython(file));
}

py::tuple SpanRecord(Span const& span) {
    return py::make_tuple(span.begin, span.end);
}

py::object ProblemRecord(Finding const& finding, FilePath const& file) {
    auto const span = finding.Bytes();
    return Type("Problem")(
        EnumValue("Severity", finding.Level() == Severity::kError ? "error" : "warning"),
        KeyToPython(finding.Id()),
        KeyToPython(finding.Path()),
        MessageToPython(finding.Message()),
        PlaceRecord(finding.Where(), file),
        span ? py::object(SpanRecord(*span)) : py::none(),
        TupleOf(
            finding.Related(), [&](Finding const& other) { return ProblemRecord(other, file); }));
}

py::tuple Problems(Findings const& findings, FilePath const& file) {
    return TupleOf(findings, [&](Finding const& finding) { return ProblemRecord(finding, file); });
}

py::object RuleRecord(Rule const& rule) {
    return Type("Rule")(
        KeyToPython(rule.Path()),
        KeyToPython(rule.KindName()),
        KeyToPython(rule.ElementKindName()),
        rule.IsRequired(),
        OptionalNumber(rule.Count()),
        OptionalNumber(rule.Minimum()),
        OptionalNumber(rule.Maximum()),
        TupleOf(rule.Allowed(), [](Value const& value) { return ToPython(value); }),
        rule.Default() == nullptr ? py::none() : ToPython(*rule.Default()),
        KeyToPython(rule.Label()),
        KeyToPython(rule.Group()),
        KeyToPython(rule.Help()),
        KeyToPython(rule.ExpectedText()));
}

py::object ConstraintRecord(Constraint const& constraint) {
    return Type("Constraint")(
        EnumValue("Severity", constraint.Level() == Severity::kError ? "error" : "warning"),
        TupleOf(constraint.Paths(), [](std::string const& path) { return KeyToPython(path); }),
        KeyToPython(constraint.Text()),
        KeyToPython(constraint.Help()));
}

// error.what(), which a zero byte in the message cuts.
std::string WholeText(Error const& error) {
    std::string const& message = error.Message();
    return error.what() + message.substr(std::min(message.find('\0'), message.size()));
}

void SetError(Error const& error) {
    CodeRow const& row = RowOf(error.Code());
    bool const isMissing =
        error.Code() == Fault::kSystem && error.System() == std::errc::no_such_file_or_directory;
    py::handle const type = Type(isMissing ? "MissingFileError" : row.fType);
    py::object const raised = type(
        MessageToPython(WholeText(error)),
        MessageToPython(error.Message()),
        EnumValue("ErrorCode", row.fWord),
        PathToPython(error.File()),
        PlaceRecord(error.Where(), error.File()),
        KeyToPython(error.Id()));
    if (error.Code() == Fault::kSystem) {
        raised.attr("errno") = error.System().value();
        raised.attr("strerror") = MessageToPython(error.System().message());
        raised.attr("filename") =
            error.File().empty() ? py::none() : py::object(py::str(PathToPython(error.File())));
    }
    Raise(type, raised);
}

void ThrowRejected(Findings const& findings, FilePath const& file) {
    py::tuple const problems = Problems(findings, file);
    std::string text;
    std::string message;
    for (std::size_t i = 0; i < findings.size(); ++i) {
        std::string const separator(i == 0 ? "" : "\n");
        text += separator + BytesOf(py::str(problems[i]));
        std::string const& path = findings[i].Path();
        message += separator + path + (path.empty() ? "" : ": ") + findings[i].Message();
    }
    py::object const raised = Type("ValidationError")(
        MessageToPython(text),
        MessageToPython(message),
        EnumValue("ErrorCode", "rejected"),
        PathToPython(file),
        problems[0].attr("place"),
        problems[0].attr("id"));
    raised.attr("problems") = problems;
    Raise(Type("ValidationError"), raised);
    throw py::error_already_set();
}

} // namespace pdfsettings::python
