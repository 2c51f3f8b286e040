#include "engine/preview_reader.h"

#include "engine/background_threads.h"
#include "host/api/exceptions.h"
#include "host/api/system.h"
#include "host/input_access.h"
#include "host/shared/failure.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <system_error>

namespace quorvex {

using namespace vantaro;

namespace {

/// Set once, on the main thread.
class SetOnce final : public AbortFlag {
public:
    SetOnce() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (event_ < 0)
            throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    ~SetOnce() { ::close(event_); }
    SetOnce(const SetOnce&) = delete;
    SetOnce& operator=(const SetOnce&) = delete;

    void set() {
        is_set_ = true;
        // Nobody reads the event, so that it stays signalled; written once, it cannot fill up.
        [[maybe_unused]] const int written = ::eventfd_write(event_, 1);
    }
    bool is_aborting() const noexcept override { return is_set_; }
    int wait_handle() const noexcept override { return event_; }

private:
    std::atomic<bool> is_set_{false};
    const int event_;
};

/// Whether the host holds all of the track's tags.
bool is_held(TrackHandle& track) {
    TrackInfoHolder* held = nullptr;
    if (!track.get_info(held))
        return false;
    return !Ref<TrackInfoHolder>::adopt(held)->is_partial();
}

} // namespace

struct PreviewReader::Job {
    explicit Job(std::shared_ptr<const TrackList> list) : tracks(std::move(list)) {}

    SetOnce abort;
    const std::shared_ptr<const TrackList> tracks;
};

class PreviewReader::Delivery final : public HeapService<MainThreadCall> {
public:
    Delivery(std::shared_ptr<Job> job, const PreviewReader& reader, std::size_t row,
             std::shared_ptr<const ReadTags> tags)
        : job_(std::move(job)), reader_(reader), row_(row), tags_(std::move(tags)) {}

    void run() override {
        // Whoever ends the reader cancels its job first.
        if (!job_->abort.is_aborting())
            reader_.deliver_(row_, tags_);
    }

private:
    const std::shared_ptr<Job> job_;
    const PreviewReader& reader_;
    const std::size_t row_;
    const std::shared_ptr<const ReadTags> tags_;
};

void PreviewReader::start(std::shared_ptr<const TrackList> tracks) {
    cancel();
    job_ = std::make_shared<Job>(std::move(tracks));
    start_background_thread([job = job_, this] {
        const auto queue = required_service<MainThreadQueue>();
        Ref<InputInfoReader> reader;
        std::string path; // of the file that is open: subsongs of one file share it
        const TrackList& list = *job->tracks;
        for (std::size_t row = 0; row < list.size() && !job->abort.is_aborting(); ++row) {
            TrackHandle& track = *list[row];
            try {
                if (is_held(track))
                    continue;
                const uCallStackTracker marker("reading tags for the preview");
                if (!reader || path != track.path()) {
                    reader = nullptr;
                    path = track.path();
                    reader = input_entry::g_open_for_info_read(nullptr, path.c_str(), job->abort);
                }
                const auto tags = std::make_shared<ReadTags>();
                tags->stats = reader->get_file_stats(job->abort);
                reader->get_info(track.subsong(), tags->info, job->abort);
                queue->post(make_service<Delivery>(job, *this, row, tags).get());
            } catch (const vantaro_io::exception_aborted&) {
                return;
            } catch (const std::exception&) {
                reader = nullptr; // the preview shows what the host holds of this track
            }
        }
    });
}

void PreviewReader::cancel() {
    if (job_)
        job_->abort.set();
    job_.reset();
}

} // namespace quorvex
