// PreviewRows: what the editor shows of each track: its name, and what the script would change in its tags.
//
//     PreviewRows rows(tracks);
//     std::string text = rows.preview(script, row).text;        // ARTIST = "a"; COMMENT removed
//
// Computed whenever it is asked for. What actions print on the console meanwhile is dropped: nothing has been
// done yet. Main thread.
#pragma once

#include "engine/dry_run.h"
#include "engine/preview_reader.h"
#include "engine/title_script.h"

#include <unordered_map>

namespace quorvex {

/// What stands in place of a cell that does not exist.
inline constexpr const char* no_cell = "<ERROR>";

/// What a script would do to a track.
enum class Effect : unsigned char { none, change, failure };

struct Preview {
    Effect effect = Effect::none;
    /// One line: what would change, or why it fails.
    std::string text;
};

class PreviewRows {
public:
    explicit PreviewRows(TrackList tracks) : dry_run_(std::move(tracks)) {}

    const TrackList& tracks() const { return dry_run_.tracks(); }
    const std::shared_ptr<const TrackList>& shared_tracks() const { return dry_run_.shared_tracks(); }

    /// Tags read from a file stand above what the host holds.
    void hold(std::size_t row, std::shared_ptr<const ReadTags> tags) { read_[row] = std::move(tags); }
    void forget_read() { read_.clear(); }
    /// The tags that groups are made from have changed.
    void forget_groups() { dry_run_.forget_groups(); }

    /// The track's title, on one line.
    std::string name(std::size_t row);
    /// What the script would do. An action that is `skipped` (or nullptr) is passed over.
    Preview preview(const Script& script, std::size_t row, const Action* skipped = nullptr);
    /// The same without the text. Requires: row < tracks().size().
    Effect effect(const Script& script, std::size_t row, const Action* skipped = nullptr);

    struct Tags {
        vantaro::TrackInfoRecord before;
        vantaro::TrackInfoRecord after;
    };
    /// The tags as they are, and as the script would leave them. Throws: what actions throw.
    Tags tags(const Script& script, std::size_t row, const Action* skipped = nullptr);

private:
    DryRun dry_run_;
    std::unordered_map<std::size_t, std::shared_ptr<const ReadTags>> read_;
    TitleScript title_;
};

} // namespace quorvex
