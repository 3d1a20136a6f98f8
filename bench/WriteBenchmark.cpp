// Writing settings as text in memory against writers of trees, all with one value on a line.
#include "bench/Content.h"
#include "bench/Host.h"

#include <benchmark/benchmark.h>
#include <json-c/json.h>
#include <memory>
#include <plist/plist.h>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

namespace {

using bench::Content;
using bench::Keys;
using pdfsettings::detail::Share;

void SetCounters(benchmark::State& state, std::string const& text) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void WriteSettings(benchmark::State& state) {
    Content const& content =
        bench::GetContent(static_cast<std::size_t>(state.range(0)), Keys::kFew);
    auto const buffer = bench::MakeBuffer(content.joboptions);
    auto const settings = bench::ReadSettings(buffer.get(), "");
    auto const& tables = bench::Tables();
    for (auto const _ : state) {
        benchmark::DoNotOptimize(Share(tables, tables.settings.GetJobOptionsData(settings.get())));
    }
    SetCounters(state, content.joboptions);
}

void WriteRapidJson(benchmark::State& state) {
    Content const& content =
        bench::GetContent(static_cast<std::size_t>(state.range(0)), Keys::kFew);
    rapidjson::Document document;
    document.Parse(content.json.data(), content.json.size());
    for (auto const _ : state) {
        rapidjson::StringBuffer text;
        rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(text);
        document.Accept(writer);
        benchmark::DoNotOptimize(text.GetString());
    }
    SetCounters(state, content.json);
}

void WriteJsonC(benchmark::State& state) {
    Content const& content =
        bench::GetContent(static_cast<std::size_t>(state.range(0)), Keys::kFew);
    std::unique_ptr<json_object, int (*)(json_object*)> const object(
        json_tokener_parse(content.json.c_str()), &json_object_put);
    for (auto const _ : state) {
        benchmark::DoNotOptimize(
            json_object_to_json_string_ext(object.get(), JSON_C_TO_STRING_PRETTY));
    }
    SetCounters(state, content.json);
}

void WritePlist(benchmark::State& state) {
    Content const& content =
        bench::GetContent(static_cast<std::size_t>(state.range(0)), Keys::kFew);
    plist_t root = nullptr;
    plist_from_xml(content.plist.data(), static_cast<std::uint32_t>(content.plist.size()), &root);
    std::unique_ptr<void, void (*)(plist_t)> const owner(root, &plist_free);
    for (auto const _ : state) {
        char* text = nullptr;
        std::uint32_t size = 0;
        plist_to_xml(root, &text, &size);
        benchmark::DoNotOptimize(text);
        plist_to_xml_free(text);
    }
    SetCounters(state, content.plist);
}

BENCHMARK(WriteSettings)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(WriteRapidJson)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(WriteJsonC)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(WritePlist)->RangeMultiplier(10)->Range(1, 1000);

} // namespace
