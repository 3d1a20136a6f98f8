#include "host/Document.h"

#include "host/Path.h"
#include "host/detail/DocumentScanner.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace pdfsettings {

namespace {

std::vector<std::size_t> FindLineStarts(std::string_view text) {
    std::vector<std::size_t> starts{0};
    for (std::size_t end = text.find_first_of("\r\n"); end != std::string_view::npos;
         end = text.find_first_of("\r\n", end)) {
        end += text.substr(end).starts_with("\r\n") ? 2U : 1U;
        starts.push_back(end);
    }
    return starts;
}

bool IsInCharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The position that a part of a path names, if it is one.
std::optional<std::size_t> PositionIn(std::string_view part) {
    std::size_t position = 0;
    auto const result = std::from_chars(part.data(), part.data() + part.size(), position);
    bool const isWhole = result.ec == std::errc() && result.ptr == part.data() + part.size();
    return isWhole ? std::optional(position) : std::nullopt;
}

} // namespace

Document::Document(std::string text) : fText(std::move(text)), fLineStarts(FindLineStarts(fText)) {
    detail::DocumentScanner scanner(fText);
    scanner.Scan();
    fRefusal = scanner.fRefusal;
    fValues = std::move(scanner.fValues);
    fEntries = std::move(scanner.fEntries);
    fFindings = scanner.fFaults.Take();
    fBody = scanner.fBody;
}

DocumentEntry const* Document::Find(std::string_view path) const {
    std::size_t begin = 0;
    std::size_t end = fEntries.size();
    for (;;) {
        std::string_view const part = FirstPart(path);
        DocumentEntry const* const found = FindAmong(begin, end, part);
        if (found == nullptr || part.size() == path.size()) {
            return found;
        }
        path.remove_prefix(part.size() + 1);
        begin = static_cast<std::size_t>(found - fEntries.data()) + 1;
        end = found->next;
    }
}

DocumentEntry const*
Document::FindAmong(std::size_t begin, std::size_t end, std::string_view part) const {
    DocumentEntry const* found = nullptr;
    std::size_t position = 0;
    for (std::size_t i = begin; i < end; i = fEntries[i].next, ++position) {
        bool const isElement = fEntries[i].key.Size() == 0;
        if (isElement ? PositionIn(part) == position : KeyOf(fEntries[i]) == part) {
            found = &fEntries[i];
        }
    }
    return found;
}

std::string Document::KeyOf(DocumentEntry const& entry) const {
    if (entry.key.Size() == 0) {
        return {};
    }
    std::string const bytes = fText.substr(entry.key.begin + 1, entry.key.Size() - 1);
    return bytes.substr(0, bytes.find('\0'));
}

Place Document::PlaceOf(std::size_t offset) const {
    auto const next = std::ranges::upper_bound(fLineStarts, offset);
    std::size_t const start = *std::prev(next);
    auto const begin = fText.begin() + static_cast<std::ptrdiff_t>(start);
    auto const end = fText.begin() + static_cast<std::ptrdiff_t>(offset);
    auto const inside = std::count_if(begin, end, &IsInCharacter);
    return {
        static_cast<std::size_t>(next - fLineStarts.begin()),
        offset - start - static_cast<std::size_t>(inside) + 1};
}

Span Document::LineAt(std::size_t offset) const {
    std::size_t const start = *std::prev(std::ranges::upper_bound(fLineStarts, offset));
    return {start, std::min(fText.find_first_of("\r\n", start), fText.size())};
}

} // namespace pdfsettings
