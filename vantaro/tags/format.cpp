#include "vantaro/tags/format.h"

#include "vantaro/tags/stream_bytes.h"

#include <algorithm>
#include <array>
#include <string>

namespace vantaro::core::tags {

namespace {

struct Extension {
    std::string_view text;
    Format format;
};
constexpr std::array<Extension, 27> extensions{{
    {"mp3", Format::mpeg},          {"mp2", Format::mpeg},          {"mpga", Format::mpeg},
    {"flac", Format::flac},         {"fla", Format::flac},          {"ogg", Format::vorbis},
    {"oga", Format::ogg_flac},      {"opus", Format::opus},         {"spx", Format::speex},
    {"m4a", Format::mp4},           {"m4b", Format::mp4},           {"m4p", Format::mp4},
    {"m4r", Format::mp4},           {"mp4", Format::mp4},           {"wv", Format::wavpack},
    {"ape", Format::monkeys_audio}, {"mac", Format::monkeys_audio}, {"mpc", Format::musepack},
    {"mp+", Format::musepack},      {"mpp", Format::musepack},      {"tta", Format::true_audio},
    {"wav", Format::wav},           {"aif", Format::aiff},          {"aiff", Format::aiff},
    {"aifc", Format::aiff},         {"wma", Format::asf},           {"asf", Format::asf},
}};

// What files begin with. `second` stands eight bytes in, where `at` is 0.
struct Beginning {
    std::string_view text;
    std::size_t at;
    std::string_view second;
    Format format;
};
using namespace std::string_view_literals;
constexpr std::array<Beginning, 18> beginnings{{
    {"fLaC"sv, 0, ""sv, Format::flac},
    {"MAC "sv, 0, ""sv, Format::monkeys_audio},
    {"MPCK"sv, 0, ""sv, Format::musepack},
    {"MP+"sv, 0, ""sv, Format::musepack},
    {"wvpk"sv, 0, ""sv, Format::wavpack},
    {"TTA"sv, 0, ""sv, Format::true_audio},
    {"RIFF"sv, 0, "WAVE"sv, Format::wav},
    {"FORM"sv, 0, "AIFF"sv, Format::aiff},
    {"FORM"sv, 0, "AIFC"sv, Format::aiff},
    {"\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv, 0, ""sv, Format::asf},
    {"ftyp"sv, 4, ""sv, Format::mp4},
    // The first packet of an Ogg page with one segment.
    {"\x01vorbis"sv, 28, ""sv, Format::vorbis},
    {"OpusHead"sv, 28, ""sv, Format::opus},
    {"\x7F"
     "FLAC"sv,
     28, ""sv, Format::ogg_flac},
    {"Speex   "sv, 28, ""sv, Format::speex},
    // MPEG audio, by the sync word and the layer.
    {"\xFF\xFB"sv, 0, ""sv, Format::mpeg},
    {"\xFF\xF3"sv, 0, ""sv, Format::mpeg},
    {"\xFF\xFA"sv, 0, ""sv, Format::mpeg},
}};

} // namespace

std::string_view format_name(Format format) {
    switch (format) {
    case Format::mpeg:
        return "MP3";
    case Format::flac:
        return "FLAC";
    case Format::vorbis:
        return "Ogg Vorbis";
    case Format::opus:
        return "Opus";
    case Format::ogg_flac:
        return "Ogg FLAC";
    case Format::speex:
        return "Speex";
    case Format::mp4:
        return "MP4";
    case Format::wavpack:
        return "WavPack";
    case Format::monkeys_audio:
        return "Monkey's Audio";
    case Format::musepack:
        return "Musepack";
    case Format::true_audio:
        return "True Audio";
    case Format::wav:
        return "WAV";
    case Format::aiff:
        return "AIFF";
    case Format::asf:
        return "ASF";
    }
    return "";
}

std::vector<std::string> audio_extensions() {
    std::vector<std::string> texts;
    texts.reserve(extensions.size());
    for (const Extension& extension : extensions)
        texts.emplace_back(extension.text);
    return texts;
}

std::optional<Format> format_of_name(std::string_view path) {
    path.remove_prefix(path.find_last_of('/') + 1);
    const std::size_t dot = path.rfind('.');
    if (dot == path.npos)
        return std::nullopt;
    std::string text(path.substr(dot + 1));
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    const auto found = std::ranges::find(extensions, text, &Extension::text);
    return found == extensions.end() ? std::nullopt : std::optional(found->format);
}

std::optional<Format> find_format(TagLib::IOStream& stream, std::size_t start) {
    const std::string head = read_some(stream, start, 64);
    const auto stands_at = [&](std::string_view text, std::size_t at) {
        return std::string_view(head).substr(std::min(at, head.size())).starts_with(text);
    };
    for (const Beginning& beginning : beginnings)
        if (stands_at(beginning.text, beginning.at) && stands_at(beginning.second, 8))
            return beginning.format;
    const char* name = stream.name();
    return name == nullptr ? std::nullopt : format_of_name(name);
}

} // namespace vantaro::core::tags
