// Which tracks of an update lead to the same file, through hard links or symbolic ones. The first one in the
// list is edited; the others become what it became.
//
//     SharedFiles files;
//     const auto file = files.join(FileIdentity::of(path), index);     // readers, in any order
//     if (files.first_of(*file) == index) ...                          // once all before it have joined
//
// Any thread.
#pragma once

#include "vantaro/common/file_identity.h"
#include "vantaro/tags/tag_file.h"
#include "vantaro/update/update_job.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vantaro::core {

/// What became of the first track of a file, without the tags themselves.
struct FileOutcome {
    TrackOutcome::State state = TrackOutcome::State::unchanged;
    std::string error;
    /// From the new tags to the old ones, where they were written.
    std::vector<FieldChange> way_back;
    std::optional<TagVersionChange> tag_version;
};

FileOutcome file_outcome(const TrackOutcome& first);

class SharedFiles {
public:
    class File {
        friend class SharedFiles;
        std::size_t first_ = 0;
        /// What it was, once a new file is made that takes its place: the system gives the inode away then.
        std::optional<FileIdentity> replaced_;
        std::pair<std::uint64_t, std::uint64_t> successor_;
        std::optional<FileOutcome> outcome_;
    };

    /// Takes in the track of this index in the list, which leads to that file.
    std::shared_ptr<File> join(const FileIdentity& file, std::size_t index);
    /// The first track of the file, so far.
    std::size_t first_of(const File& file) const;
    /// A new file is made that is going to take this one's place. Called before it does, so that it is known
    /// to whoever meets it there.
    void expect_successor(const std::shared_ptr<File>& file, const FileIdentity& before,
                          const FileIdentity& successor);
    /// It does not take the place, and is gone.
    void forget_successor(const std::shared_ptr<File>& file);
    /// Called once.
    void set_outcome(File& file, FileOutcome outcome);
    /// nullptr as long as the first track is not done. It stays as it is.
    const FileOutcome* outcome_of(const File& file) const;

private:
    using Place = std::pair<std::uint64_t, std::uint64_t>; // device and inode
    struct PlaceHash {
        std::size_t operator()(const Place& place) const {
            return std::hash<std::uint64_t>()(place.first * 31 + place.second);
        }
    };

    mutable std::mutex mutex_; // guards what follows, and the insides of all files
    std::unordered_map<Place, std::shared_ptr<File>, PlaceHash> files_;
};

/// Gives a track the outcome of the first one of its file, with its tags as they are in the file now.
void follow(const FileOutcome& first, TrackOutcome& outcome, const TagOptions& options);

/// The track is written, and holds its new tags if it held any.
void set_written(TrackOutcome& outcome, const FileIdentity& file);

} // namespace vantaro::core
