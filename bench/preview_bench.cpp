// What a preview of many tracks costs: the dry run of a script of ten actions and the text of its changes,
// over tags in memory.
//
//     build/bench/preview_bench
//
// per_step is the time for one track and one action; BigO tells how the whole grows with the tracks.
#include "actions/auto_track_number.h"
#include "actions/copy_values.h"
#include "actions/fixed_value.h"
#include "actions/format_value.h"
#include "actions/guess_values.h"
#include "actions/remove_fields.h"
#include "actions/remove_values.h"
#include "actions/replace_value.h"
#include "actions/split_field.h"
#include "engine/change_text.h"
#include "engine/dry_run.h"
#include "vantaro/services/digest.h"
#include "vantaro/titleformat/title_format.h"

#include <benchmark/benchmark.h>

#include <deque>
#include <map>

/// The host API leaves it to the host what this is.
struct vantaro::ServiceClass {
    ServiceBase* service = nullptr;
};

namespace {

using namespace quorvex;
using namespace vantaro;

/// Has what actions ask for while they are applied.
class BenchHost final : public HostApi {
public:
    ServiceClass* find_service_class(const Guid& class_guid) override { return &classes_[class_guid]; }
    void create_service(ServiceClass* service_class, std::size_t, ServiceBase*& out) override {
        store_queried(out, service_class->service);
    }
    std::size_t count_services(ServiceClass* service_class) override {
        return service_class->service ? 1 : 0;
    }
    WindowHandle main_window() override { return nullptr; }
    void ensure_main_thread() override {}
    bool is_main_thread() override { return true; }

private:
    core::TitleFormatting compiler_;
    core::Md5Service digests_;
    std::map<Guid, ServiceClass> classes_{{TitleFormatCompiler::class_guid, {&compiler_}},
                                          {DigestService::class_guid, {&digests_}}};
};

/// An album of ten tracks after the other.
class Tracks {
public:
    explicit Tracks(std::size_t count) {
        list_.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            const std::string album = std::to_string(i / 10);
            const std::string number = std::to_string(i % 10 + 1);
            core::Track& track =
                tracks_.emplace_back("/music/Band/Album " + album + "/" + number + " - Song.flac", 0U);
            TrackInfoRecord tags;
            tags.set_field("TITLE", ("A song of some length, number " + number).c_str());
            tags.set_field("ARTIST", "Tidewright Ensemble, Mara Quillon & Osk Fennimore");
            tags.set_field("ALBUM", ("A Slow Harbour " + album).c_str());
            tags.set_field("TRACKNUMBER", number.c_str());
            tags.set_field("DATE", "2019-05-17");
            tags.set_field("GENRE", "Ambient");
            tags.set_field("COMMENT", "Ripped by HarbourRip 0.3");
            tags.set_technical("codec", "FLAC");
            tags.set_technical("samplerate", "44100");
            tags.set_length(195.3);
            track.hold(make_service<core::HeldInfo>(std::move(tags), FileStats(), false));
            list_.emplace_back(&track);
        }
    }
    const TrackList& list() const { return list_; }
    const TrackInfo& held(std::size_t row) const { return tracks_[row].held()->info(); }

private:
    std::deque<core::Track> tracks_;
    TrackList list_;
};

using MakeScript = Script();

template <class Kind>
Ref<Action> make(const char* parameters) {
    return Kind::create_from_text(*make_service<IgnoreCompletion>(), parameters);
}

Script fixed_script() {
    return {make<SetValue>("ALBUMARTIST\nTidewright Ensemble"),
            make<AddValue>("GENRE\nFolk"),
            make<CopyValues>("ARTIST\nPERFORMER"),
            make<SplitArtists>(""),
            make<SplitField>("PERFORMER\n, "),
            make<ReplaceValue>("GENRE\nambient\nCalm\nn"),
            make<RemoveValues>("ARTIST\nmara quillon;nobody\nn"),
            make<GuessFromFileName>("%band%/%folder%/%n% - %song%"),
            make<RemoveField>("COMMENT"),
            make<RemoveAllFieldsExcept>("title;artist;album;tracknumber;genre;date;performer")};
}

Script formatting_script() {
    Script script = fixed_script();
    script[2] = make<FormatValue>("SORT\n%list_index%/%list_total% $upper(%artist%)[ - %title%]");
    script[7] = make<GuessFromFields>("%first% %rest%\n%title%");
    return script;
}

Script numbering_script() {
    Script script = formatting_script();
    script[0] = make<AutoTrackNumber>("%album%");
    return script;
}

void preview(benchmark::State& state, MakeScript* make_script) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const Tracks tracks(count);
    const Script script = make_script();
    std::size_t length = 0;
    for ([[maybe_unused]] auto _ : state) {
        DryRun dry_run(tracks.list());
        for (std::size_t row = 0; row < count; ++row) {
            const TrackInfoRecord before(tracks.held(row));
            TrackInfoRecord after(before);
            dry_run.edit(script, row, after);
            length += describe_changes(before, after).size();
        }
    }
    benchmark::DoNotOptimize(length);
    state.counters["per_step"] =
        benchmark::Counter(static_cast<double>(count * script.size()),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetComplexityN(state.range(0));
}

} // namespace

int main(int argc, char** argv) {
    BenchHost bench_host;
    set_host(&bench_host);
    for (const auto& [name, script] : {std::pair<const char*, MakeScript*>("preview/fixed", fixed_script),
                                       {"preview/formatting", formatting_script},
                                       {"preview/numbering_by_album", numbering_script}})
        benchmark::RegisterBenchmark(name, preview, script)
            ->RangeMultiplier(10)
            ->Range(1'000, 1'000'000)
            ->Unit(benchmark::kMillisecond)
            ->Complexity();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
