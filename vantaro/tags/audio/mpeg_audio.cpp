// The audio of MPEG-1, 2 and 2.5, layers I to III: what the first frame says, and the header for players
// (Xing, VBRI) that may stand in it. Format: http://www.mp3-tech.org/programmer/frame_header.html
#include "vantaro/tags/audio/properties.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t header_size = 4;
/// Frames and what follows them are found in blocks that overlap by more than a frame.
constexpr std::size_t block_size = 64 << 10;
constexpr std::size_t overlap = 4 << 10;
/// What has been left in front of the first frame is no more than a picture or another tag.
constexpr std::size_t largest_search = 16 << 20;

struct Frame {
    int layer = 0;
    int bitrate = 0; ///< kbit/s
    int sample_rate = 0;
    int channels = 0;
    int samples = 0;
    std::size_t size = 0;
    std::uint32_t kind = 0; ///< what all frames of a file have in common
};

// By layer, of MPEG-1 and of the others.
constexpr std::array<std::array<int, 15>, 3> bitrates_1{
    {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
     {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
     {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320}}};
constexpr std::array<std::array<int, 15>, 3> bitrates_2{
    {{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}}};
constexpr std::array<int, 3> sample_rates{44100, 48000, 32000};

std::optional<Frame> frame_of(std::string_view bytes) {
    if (bytes.size() < header_size)
        return std::nullopt;
    const auto header = static_cast<std::uint32_t>(big_endian(bytes.substr(0, header_size)));
    const unsigned version = header >> 19 & 3; // 0: MPEG-2.5, 2: MPEG-2, 3: MPEG-1
    const unsigned layer_code = header >> 17 & 3;
    const unsigned bitrate_code = header >> 12 & 15;
    const unsigned rate_code = header >> 10 & 3;
    if (header >> 21 != 0x7FF || version == 1 || layer_code == 0 || bitrate_code == 0 || bitrate_code == 15
        || rate_code == 3)
        return std::nullopt;
    Frame frame;
    frame.layer = static_cast<int>(4 - layer_code);
    const bool first_version = version == 3;
    frame.bitrate =
        (first_version ? bitrates_1 : bitrates_2)[static_cast<std::size_t>(frame.layer - 1)][bitrate_code];
    frame.sample_rate = sample_rates[rate_code] / (first_version ? 1 : version == 2 ? 2 : 4);
    frame.channels = (header >> 6 & 3) == 3 ? 1 : 2;
    frame.samples = frame.layer == 1 ? 384 : frame.layer == 3 && !first_version ? 576 : 1152;
    const int slot = frame.layer == 1 ? 4 : 1;
    const int slots = frame.samples / slot * frame.bitrate * 125 / frame.sample_rate;
    const int padding = static_cast<int>(header >> 9 & 1);
    frame.size = static_cast<std::size_t>((slots + padding) * slot);
    frame.kind = header & 0xFFFE0C00;
    return frame;
}

struct Found {
    std::size_t start = 0;
    Frame frame;
};

/// The first frame in `bytes` before `last` that another one follows, or the end.
std::optional<Found> find_frame(std::string_view bytes, std::size_t last, bool is_to_end) {
    for (std::size_t i = bytes.find('\xFF'); i < last; i = bytes.find('\xFF', i + 1)) {
        const std::optional<Frame> frame = frame_of(bytes.substr(i));
        if (!frame || frame->size > bytes.size() - i)
            continue;
        const std::string_view behind = bytes.substr(i + frame->size);
        const std::optional<Frame> next = frame_of(behind);
        if ((next && next->kind == frame->kind) || (is_to_end && behind.empty()))
            return Found{i, *frame};
    }
    return std::nullopt;
}

/// Nothing when there are only zeros.
std::optional<Found> search(FileBytes& file, const AudioPart& audio) {
    std::string block(block_size, '\0');
    bool is_padding = true;
    for (std::size_t place = audio.start; place < audio.end; place += block_size - overlap) {
        if (place - audio.start >= largest_search)
            throw vantaro_io::exception_io_data("No frame of MPEG audio begins within 16 MiB");
        const std::size_t size = file.copy(place, block.data(), std::min(block_size, audio.end - place));
        const std::string_view bytes = std::string_view(block).substr(0, size);
        const bool is_to_end = place + size >= audio.end;
        const std::size_t last = is_to_end ? size : block_size - overlap;
        if (const auto found = find_frame(bytes, std::min(last, size), is_to_end))
            return Found{place + found->start, found->frame};
        is_padding = is_padding && bytes.find_first_not_of('\0') == bytes.npos;
        if (is_to_end)
            break;
    }
    if (is_padding)
        return std::nullopt;
    throw vantaro_io::exception_io_data("The first frame of MPEG audio is missing");
}

struct Totals {
    std::uint64_t frames = 0;
    std::uint64_t bytes = 0;
};

std::optional<Totals> totals_of(std::string_view frame) {
    Totals totals;
    std::size_t mark = frame.find("Xing");
    if (mark == frame.npos)
        mark = frame.find("Info");
    if (mark != frame.npos) {
        constexpr unsigned has_both = 3;
        if (frame.size() - mark < 16 || (big_endian(frame.substr(mark + 4, 4)) & has_both) != has_both)
            return std::nullopt;
        totals = {big_endian(frame.substr(mark + 8, 4)), big_endian(frame.substr(mark + 12, 4))};
    } else if (mark = frame.find("VBRI"); mark != frame.npos && frame.size() - mark >= 32) {
        totals = {big_endian(frame.substr(mark + 14, 4)), big_endian(frame.substr(mark + 10, 4))};
    }
    return totals.frames > 0 && totals.bytes > 0 ? std::optional(totals) : std::nullopt;
}

std::optional<Found> first_frame(FileBytes& file, const AudioPart& audio) {
    const auto in_audio = [&](std::size_t size) {
        return file.some(audio.start, std::min(size, audio.size()));
    };
    if (const std::optional<Frame> frame = frame_of(in_audio(header_size))) {
        const std::string_view bytes = in_audio(frame->size + header_size);
        if (const auto found = find_frame(bytes, 1, bytes.size() == audio.size()))
            return Found{audio.start, found->frame};
    }
    return search(file, audio);
}

} // namespace

AudioProperties describe_mpeg(FileBytes& file, const AudioPart& audio) {
    const std::optional<Found> found = first_frame(file, audio);
    if (!found) {
        // Programs have left files of tags alone.
        if (audio.size() == file.size())
            throw vantaro_io::exception_io_data("The file holds neither MPEG audio nor tags");
        return {};
    }
    const Frame& frame = found->frame;
    AudioProperties result{.codec = "MP" + std::to_string(frame.layer),
                           .encoding = "lossy",
                           .bitrate = frame.bitrate,
                           .sample_rate = frame.sample_rate,
                           .channels = frame.channels};
    double milliseconds = static_cast<double>(audio.end - found->start) * 8 / frame.bitrate;
    if (const auto totals = totals_of(file.bytes(found->start, frame.size))) {
        milliseconds = static_cast<double>(totals->frames) * frame.samples * 1000 / frame.sample_rate;
        result.bitrate = static_cast<int>(static_cast<double>(totals->bytes) * 8 / milliseconds + 0.5);
    } else if (const std::size_t size = std::min(overlap, audio.size());
               file.some(audio.end - size, size).find_first_not_of('\0') == std::string_view::npos) {
        // A download that has its place reserved: the size says nothing.
        milliseconds = 0;
    }
    result.seconds = std::floor(milliseconds + 0.5) / 1000;
    return result;
}

} // namespace vantaro::core::tags
