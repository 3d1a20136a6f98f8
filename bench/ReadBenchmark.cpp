// Reading settings against parsers of trees, each into an object that is destroyed again.
#include "bench/Content.h"
#include "bench/Host.h"

#include <benchmark/benchmark.h>
#include <json-c/json.h>
#include <plist/plist.h>
#include <rapidjson/document.h>

namespace {

using bench::Content;
using bench::Keys;

void SetCounters(benchmark::State& state, std::string const& text, Content const& content) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(content.keys));
}

void ReadSettings(benchmark::State& state, Keys keys) {
    Content const& content = bench::GetContent(static_cast<std::size_t>(state.range(0)), keys);
    auto const buffer = bench::MakeBuffer(content.joboptions);
    for (auto const _ : state) {
        benchmark::DoNotOptimize(bench::ReadSettings(buffer.get(), ""));
    }
    SetCounters(state, content.joboptions, content);
}

void ReadRapidJson(benchmark::State& state, Keys keys) {
    Content const& content = bench::GetContent(static_cast<std::size_t>(state.range(0)), keys);
    for (auto const _ : state) {
        rapidjson::Document document;
        document.Parse(content.json.data(), content.json.size());
        if (document.HasParseError()) {
            state.SkipWithError("not read");
        }
    }
    SetCounters(state, content.json, content);
}

void ReadJsonC(benchmark::State& state, Keys keys) {
    Content const& content = bench::GetContent(static_cast<std::size_t>(state.range(0)), keys);
    for (auto const _ : state) {
        json_object* const object = json_tokener_parse(content.json.c_str());
        if (object == nullptr) {
            state.SkipWithError("not read");
        }
        json_object_put(object);
    }
    SetCounters(state, content.json, content);
}

void ReadPlist(benchmark::State& state, Keys keys) {
    Content const& content = bench::GetContent(static_cast<std::size_t>(state.range(0)), keys);
    for (auto const _ : state) {
        plist_t root = nullptr;
        plist_from_xml(
            content.plist.data(), static_cast<std::uint32_t>(content.plist.size()), &root);
        if (root == nullptr) {
            state.SkipWithError("not read");
        }
        plist_free(root);
    }
    SetCounters(state, content.plist, content);
}

// 10 KB to 10 MB.
void AllSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(10)->Range(1, 1000);
}

BENCHMARK_CAPTURE(ReadSettings, few, Keys::kFew)->Apply(AllSizes);
BENCHMARK_CAPTURE(ReadSettings, distinct, Keys::kDistinct)->Apply(AllSizes);
BENCHMARK_CAPTURE(ReadRapidJson, few, Keys::kFew)->Apply(AllSizes);
BENCHMARK_CAPTURE(ReadRapidJson, distinct, Keys::kDistinct)->Apply(AllSizes);
BENCHMARK_CAPTURE(ReadJsonC, few, Keys::kFew)->Apply(AllSizes);
BENCHMARK_CAPTURE(ReadJsonC, distinct, Keys::kDistinct)->Apply(AllSizes);
// Its dictionaries are lists: only the small sizes of distinct keys end in time.
BENCHMARK_CAPTURE(ReadPlist, few, Keys::kFew)->Apply(AllSizes);
BENCHMARK_CAPTURE(ReadPlist, distinct, Keys::kDistinct)->Arg(1)->Arg(10);

} // namespace
