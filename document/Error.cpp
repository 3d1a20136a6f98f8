#include "pdfsettings/Error.h"

#include "pdfsettings/Finding.h"

#include <utility>

namespace pdfsettings {

namespace {

std::string Describe(
    std::string const& message,
    std::filesystem::path const& file,
    std::optional<Place> const& where) {
    std::string text = file.empty() ? "" : file.string() + ":";
    if (where) {
        text += std::to_string(where->line) + ":" + std::to_string(where->column) + ":";
    }
    return text + (text.empty() ? "" : " ") + message;
}

} // namespace

struct Error::Details {
    Fault fCode;
    std::string fMessage;
    std::filesystem::path fFile;
    std::optional<Place> fWhere;
    std::error_code fSystem;
    std::string fId;
};

Error::Error(
    Fault code,
    std::string const& message,
    std::filesystem::path const& file,
    std::optional<Place> where,
    std::error_code system,
    std::string const& id)
    : std::runtime_error(Describe(message, file, where)),
      fDetails(std::make_shared<Details>(Details{code, message, file, where, system, id})) {}

Fault Error::Code() const noexcept {
    return fDetails->fCode;
}

std::error_code Error::System() const noexcept {
    return fDetails->fSystem;
}

std::filesystem::path const& Error::File() const noexcept {
    return fDetails->fFile;
}

std::optional<Place> Error::Where() const noexcept {
    return fDetails->fWhere;
}

std::string const& Error::Message() const noexcept {
    return fDetails->fMessage;
}

std::string const& Error::Id() const noexcept {
    return fDetails->fId;
}

Error Error::In(std::filesystem::path const& file) const {
    return Error(Code(), Message(), file, Where(), System(), Id());
}

struct Finding::Data {
    Severity fSeverity;
    std::string fId;
    std::string fPath;
    std::string fMessage;
    std::optional<Span> fSpan;
    std::optional<Place> fWhere;
    std::vector<Finding> fRelated;

    bool operator==(Data const&) const = default;
};

Finding::Finding(
    Severity severity,
    std::string id,
    std::string path,
    std::string message,
    std::optional<Span> span,
    std::optional<Place> where,
    std::vector<Finding> related)
    : fData(std::make_shared<Data>(Data{
          severity,
          std::move(id),
          std::move(path),
          std::move(message),
          span,
          where,
          std::move(related)})) {}

Severity Finding::Level() const noexcept {
    return fData->fSeverity;
}

std::string const& Finding::Id() const noexcept {
    return fData->fId;
}

std::string const& Finding::Path() const noexcept {
    return fData->fPath;
}

std::string const& Finding::Message() const noexcept {
    return fData->fMessage;
}

std::optional<Span> Finding::Bytes() const noexcept {
    return fData->fSpan;
}

std::optional<Place> Finding::Where() const noexcept {
    return fData->fWhere;
}

std::span<Finding const> Finding::Related() const noexcept {
    return fData->fRelated;
}

bool operator==(Finding const& left, Finding const& right) {
    return *left.fData == *right.fData;
}

} // namespace pdfsettings
