// Validating and changing settings under the standard schema. No peer does the same work: the
// figures are compared with those of reading.
#include "bench/Content.h"
#include "bench/Host.h"
#include "pdfsettings/Schema.h"

#include <benchmark/benchmark.h>

namespace {

using bench::Content;
using bench::Keys;
using pdfsettings::detail::Ref;
using pdfsettings::detail::Share;

bench::SettingsRef SettingsOf(std::int64_t copies) {
    Content const& content = bench::GetContent(static_cast<std::size_t>(copies), Keys::kFew);
    auto const buffer = bench::MakeBuffer(content.joboptions);
    return bench::ReadSettings(buffer.get(), pdfsettings::Schema::Standard().RulesText().c_str());
}

void Validate(benchmark::State& state) {
    auto const settings = SettingsOf(state.range(0));
    auto const& tables = bench::Tables();
    for (auto const _ : state) {
        benchmark::DoNotOptimize(Share(tables, tables.settings.IsPDFSettingsValid(settings.get())));
    }
}

void SetSettings(benchmark::State& state) {
    auto const settings = SettingsOf(state.range(0));
    auto const& tables = bench::Tables();
    auto const changes =
        Share(tables, tables.objects.CreateFromText("< ImageMemory 1048576 >", nullptr));
    auto* const dictionary = reinterpret_cast<POSDict*>(changes.get());
    for (auto const _ : state) {
        auto const findings =
            Share(tables, tables.settings.SetSettings(settings.get(), dictionary));
        if (tables.arrays.Count(findings.get()) != 0) {
            state.SkipWithError("refused");
        }
    }
}

BENCHMARK(Validate)->Arg(1)->Arg(10);
BENCHMARK(SetSettings)->Arg(1)->Arg(10);

} // namespace
