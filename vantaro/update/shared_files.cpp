#include "vantaro/update/shared_files.h"

#include <algorithm>

namespace vantaro::core {

std::shared_ptr<SharedFiles::File> SharedFiles::join(const FileIdentity& file, std::size_t index) {
    const std::lock_guard lock(mutex_);
    const Place place(file.device, file.inode);
    std::shared_ptr<File>& known = files_[place];
    const bool is_other_file =
        known && known->replaced_ && known->successor_ != place && *known->replaced_ != file;
    if (!known || is_other_file) {
        known = std::make_shared<File>();
        known->first_ = index;
    }
    known->first_ = std::min(known->first_, index);
    return known;
}

std::size_t SharedFiles::first_of(const File& file) const {
    const std::lock_guard lock(mutex_);
    return file.first_;
}

void SharedFiles::expect_successor(const std::shared_ptr<File>& file, const FileIdentity& before,
                                   const FileIdentity& successor) {
    const std::lock_guard lock(mutex_);
    file->replaced_ = before;
    file->successor_ = {successor.device, successor.inode};
    files_[file->successor_] = file;
}

void SharedFiles::forget_successor(const std::shared_ptr<File>& file) {
    const std::lock_guard lock(mutex_);
    if (!file->replaced_)
        return;
    if (const auto found = files_.find(file->successor_); found != files_.end() && found->second == file)
        files_.erase(found);
    file->replaced_.reset();
}

void SharedFiles::set_outcome(File& file, FileOutcome outcome) {
    const std::lock_guard lock(mutex_);
    file.outcome_ = std::move(outcome);
}

const FileOutcome* SharedFiles::outcome_of(const File& file) const {
    const std::lock_guard lock(mutex_);
    return file.outcome_ ? &*file.outcome_ : nullptr;
}

namespace {

std::vector<TrackField> with_changes(std::vector<TrackField> fields,
                                     const std::vector<FieldChange>& changes) {
    for (const FieldChange& change : changes) {
        const auto field = std::ranges::find_if(
            fields, [&](const TrackField& each) { return equal_field_names(each.name, change.name); });
        if (field == fields.end())
            fields.push_back({change.name, change.values});
        else
            field->values = change.values;
    }
    std::erase_if(fields, [](const TrackField& field) { return field.values.empty(); });
    return fields;
}

} // namespace

FileOutcome file_outcome(const TrackOutcome& first) {
    FileOutcome result{first.state, first.error, {}, first.tag_version};
    if (first.state == TrackOutcome::State::written)
        result.way_back = field_changes(first.after.fields(), first.before.fields());
    return result;
}

void follow(const FileOutcome& first, TrackOutcome& outcome, const TagOptions& options) {
    outcome.state = TrackOutcome::State::failed;
    outcome.error = first.error;
    if (first.state == TrackOutcome::State::failed)
        return;
    try {
        const std::string path = outcome.track->path();
        const FileIdentity file = FileIdentity::of(path);
        read_tags(path, outcome.after, nullptr, options);
        outcome.before.copy(outcome.after);
        outcome.before.set_fields(with_changes(outcome.after.fields(), first.way_back));
        outcome.state = first.state;
        outcome.tag_version = first.tag_version;
        if (first.state == TrackOutcome::State::written)
            set_written(outcome, file);
    } catch (const std::exception& error) {
        outcome.error = error.what();
    }
}

void set_written(TrackOutcome& outcome, const FileIdentity& file) {
    outcome.state = TrackOutcome::State::written;
    if (Track& track = *outcome.track; track.held())
        track.hold(make_service<HeldInfo>(outcome.after, file.stats(), false));
}

} // namespace vantaro::core
