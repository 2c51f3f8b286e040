// What typical title-formatting patterns cost: compiled once, run over one track.
//
//     build/bench/title_format_bench
#include "vantaro/titleformat/title_format.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <iostream>

namespace {

using namespace vantaro;
using namespace vantaro::core;

struct NamedPattern {
    const char* name;
    const char* pattern;
};

constexpr auto patterns = std::to_array<NamedPattern>({
    {"text", "a text and nothing else"},
    {"title", "%title%"},
    {"artist_title", "%artist% - %title%"},
    {"file_name", "$if2(%album artist%,%artist%)/[%album%/]$num(%tracknumber%,2). %title%"},
    {"sections", "[%album%[ '['%date%']']] [(%comment%)]"},
    {"case", "$upper(%artist%) $titlecase(%title%)"},
    {"values", "$join($sortmulti($unique(%artist%)),'; ')"},
    {"map", "$map(%artist%,$swapprefix(%_loop_value%))"},
    {"regular_expression", R"($rreplace(%title%,'\s*\(Live[^)]*\)',))"},
    {"ascii", "$ascii(%album%)"},
    {"file_stats", "%filesize_natural%, %last_modified%"},
});

TrackInfoRecord sample_tags() {
    TrackInfoRecord tags;
    tags.set_field("TITLE", "Rope and Tar (Live in Aberdeen)");
    tags.add_value("ARTIST", "The Tidewright Ensemble");
    tags.add_value("ARTIST", "Mara Quillon");
    tags.set_field("ALBUM", "Ein ruhiger H\xC3\xA4"
                            "fen");
    tags.set_field("ALBUMARTIST", "The Tidewright Ensemble");
    tags.set_field("TRACKNUMBER", "3");
    tags.set_field("TOTALTRACKS", "10");
    tags.set_field("DATE", "2019-04-01");
    tags.set_field("GENRE", "Ambient");
    tags.set_length(195.3);
    return tags;
}

Ref<TitleFormatProgram> compile(const char* pattern) {
    auto compiled = compile_title_format(pattern);
    if (const auto* error = std::get_if<TitleFormatError>(&compiled)) {
        std::cerr << pattern << ": " << error->position << ": " << error->text << '\n';
        std::exit(EXIT_FAILURE);
    }
    return std::get<Ref<TitleFormatProgram>>(std::move(compiled));
}

/// The argument of a benchmark is the row of the table.
const NamedPattern& pattern_of(const benchmark::State& state) {
    return patterns.at(static_cast<std::size_t>(state.range(0)));
}

void run_pattern(benchmark::State& state) {
    const Ref<TitleFormatProgram> program = compile(pattern_of(state).pattern);
    Track track("/music/A Slow Harbour/03 - Rope and Tar.flac", 0);
    const TrackInfoRecord tags = sample_tags();
    track.hold(make_service<HeldInfo>(tags, FileStats{28'123'456, 132'000'000'000'000'000}, false));
    StringSink out;
    for ([[maybe_unused]] auto _ : state) {
        program->run(track, tags, nullptr, out, nullptr);
        benchmark::DoNotOptimize(out.text().data());
    }
    state.SetLabel(pattern_of(state).name + (": " + out.text()));
}

void compile_pattern(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(compile(pattern_of(state).pattern).get());
    state.SetLabel(pattern_of(state).name);
}

constexpr auto last_row = static_cast<std::int64_t>(patterns.size()) - 1;
BENCHMARK(run_pattern)->DenseRange(0, last_row);
BENCHMARK(compile_pattern)->DenseRange(0, last_row);

} // namespace

BENCHMARK_MAIN();
