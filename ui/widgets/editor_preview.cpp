#include "ui/widgets/editor_preview.h"

#include "host/access.h"
#include "host/exception_filter.h"
#include "ui/widgets/preview_list.h"

#include <algorithm>

namespace quorvex {

using namespace vantaro;

namespace {

std::unordered_set<const TrackHandle*> set_of(const TrackList& tracks) {
    std::unordered_set<const TrackHandle*> set;
    for (const Ref<TrackHandle>& track : tracks)
        set.insert(track.get());
    return set;
}

} // namespace

EditorPreview::EditorPreview(const TrackList& tracks, QTableView& table, QLabel& count,
                             const std::function<PreviewedScript()>& script)
    : table_(table), rows_(tracks), tracks_(set_of(tracks)), model_(rows_, script),
      counter_(rows_, script, [this](const ChangeCounter& counter) { label_.show_count(counter); }),
      label_(count, [this] { go_to_next_change(); }),
      reader_([this](std::size_t row, std::shared_ptr<const ReadTags> read) { hold(row, std::move(read)); }),
      tag_io_(only_service<HostTagIO>()) {
    set_up_preview_list(table, model_);
    tag_io_->add_change_listener(this);
}

EditorPreview::~EditorPreview() {
    stop();
    tag_io_->remove_change_listener(this);
    table_.setModel(nullptr);
}

void EditorPreview::start() {
    fit_names(table_);
    is_started_ = true;
    counter_.restart();
    reader_.start(rows_.shared_tracks());
}

void EditorPreview::stop() {
    is_started_ = false;
    reader_.cancel();
    counter_.stop();
}

void EditorPreview::hold(std::size_t row, std::shared_ptr<const ReadTags> read) {
    rows_.hold(row, std::move(read));
    model_.redraw(row);
    counter_.recount(row);
}

void EditorPreview::script_changed() {
    if (!is_started_)
        return;
    label_.forget_outcome();
    model_.redraw();
    counter_.restart();
}

void EditorPreview::output_changed() {
    if (!is_started_)
        return;
    model_.redraw();
    counter_.refresh();
}

void EditorPreview::pause() {
    is_paused_ = true;
    label_.forget_outcome();
    model_.set_paused(true);
    counter_.pause();
}

void EditorPreview::resume() {
    is_paused_ = false;
    model_.set_paused(false);
    model_.redraw();
    counter_.resume();
}

void EditorPreview::go_to_next_change() {
    const QModelIndex current = table_.currentIndex();
    const std::size_t last = rows_.tracks().size() - 1;
    counter_.find_next(current.isValid() ? static_cast<std::size_t>(current.row()) : last,
                       [this](std::size_t row) {
                           const QModelIndex found = model_.index(static_cast<int>(row), 0);
                           table_.setCurrentIndex(found);
                           table_.scrollTo(found);
                       });
}

void EditorPreview::tags_changed(TrackHandle* const* tracks, std::size_t count) {
    if (!is_started_ || std::none_of(tracks, tracks + count, [this](const TrackHandle* track) {
            return tracks_.contains(track);
        }))
        return;
    guarded([&] {
        rows_.forget_groups();
        rows_.forget_read();
        // A run ends with this, and then says what it has done.
        if (!is_paused_)
            script_changed();
        reader_.start(rows_.shared_tracks());
    });
}

} // namespace quorvex
