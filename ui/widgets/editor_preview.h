// EditorPreview: the editor's list of tracks, with what the script would change in each, and the line below
// it that says how many change.
//
//     EditorPreview preview(tracks, table, label, [&] { return PreviewedScript{script, nullptr}; });
//     preview.start();
//     preview.script_changed();
//
// Main thread.
#pragma once

#include "host/api/tag_io.h"
#include "ui/widgets/change_label.h"

#include <QTableView>

#include <unordered_set>

namespace quorvex {

class EditorPreview final : private vantaro::TagChangeListener {
public:
    /// The widgets outlive the object. Nothing is tried before start().
    EditorPreview(const TrackList& tracks, QTableView& table, QLabel& count,
                  const std::function<PreviewedScript()>& script);
    ~EditorPreview();
    EditorPreview(const EditorPreview&) = delete;
    EditorPreview& operator=(const EditorPreview&) = delete;

    /// Called once the window is shown.
    void start();
    /// Called before the script goes.
    void stop();

    PreviewRows& rows() { return rows_; }

    void script_changed();
    /// The actions give something else, by themselves.
    void output_changed();
    /// During a run nobody else may call the script's actions. Afterwards everything is tried anew.
    void pause();
    void resume();
    /// What a run has done stands in place of the count until the script or the tags change.
    void show_outcome(const QString& text) { label_.show_outcome(text); }
    /// Selects the next track below the selected one that changes.
    void go_to_next_change();

private:
    void tags_changed(vantaro::TrackHandle* const* tracks, std::size_t count) override;
    void hold(std::size_t row, std::shared_ptr<const ReadTags> read);

    QTableView& table_;
    PreviewRows rows_;
    const std::unordered_set<const vantaro::TrackHandle*> tracks_;
    PreviewModel model_;
    ChangeCounter counter_;
    ChangeLabel label_;
    PreviewReader reader_;
    Ref<vantaro::HostTagIO> tag_io_;
    bool is_started_ = false;
    bool is_paused_ = false;
};

} // namespace quorvex
