#include "vantaro/tags/formats.h"

#include "vantaro/tags/audio/properties.h"
#include "vantaro/tags/audio_file.h"
#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/tag_kinds.h"
#include "vantaro/tags/xiph/ogg_page.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view asf_guid = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv;
constexpr std::string_view ebml_mark = "\x1A\x45\xDF\xA3"sv;
/// The first packet of an Ogg page with one segment.
constexpr std::size_t first_packet = 28;

constexpr auto formats = std::to_array<Format>({
    {.name = "FLAC",
     .extensions = "flac fla",
     .mime_types = "audio/flac audio/x-flac",
     .signatures = {{{0, "fLaC"}}},
     .open = open_flac_file,
     .customary_tag = vorbis_comment,
     .carries_cue_sheet = true},
    {.name = "Monkey's Audio",
     .extensions = "ape mac",
     .mime_types = "audio/x-ape",
     .signatures = {{{0, "MAC "}}},
     .open = open_wrapped_file,
     .customary_tag = ape_tag,
     .describe = describe_monkeys_audio,
     .carries_cue_sheet = true},
    {.name = "Musepack",
     .extensions = "mpc mp+ mpp",
     .mime_types = "audio/x-musepack",
     .signatures = {{{0, "MPCK"}, {0, "MP+"}}},
     .open = open_wrapped_file,
     .customary_tag = ape_tag,
     .describe = describe_musepack,
     .carries_cue_sheet = true},
    {.name = "WavPack",
     .extensions = "wv",
     .mime_types = "audio/x-wavpack",
     .signatures = {{{0, "wvpk"}}},
     .open = open_wrapped_file,
     .customary_tag = ape_tag,
     .describe = describe_wavpack,
     .carries_cue_sheet = true},
    {.name = "True Audio",
     .extensions = "tta",
     .mime_types = "audio/x-tta",
     .signatures = {{{0, "TTA"}}},
     .open = open_wrapped_file,
     .customary_tag = id3v24,
     .describe = describe_true_audio,
     .carries_cue_sheet = true},
    {.name = "WAV",
     .extensions = "wav",
     .mime_types = "audio/x-wav audio/vnd.wave",
     .signatures = {{{0, "RIFF", "WAVE"}}},
     .open = open_riff_file,
     .customary_tag = id3v24},
    {.name = "RF64",
     .extensions = "rf64 bw64",
     .mime_types = "",
     .signatures = {{{0, "RF64", "WAVE"}, {0, "BW64", "WAVE"}}},
     .open = open_riff_file,
     .customary_tag = id3v24},
    {.name = "AIFF",
     .extensions = "aif aiff aifc",
     .mime_types = "audio/x-aiff audio/x-aifc",
     .signatures = {{{0, "FORM", "AIFF"}, {0, "FORM", "AIFC"}}},
     .open = open_riff_file,
     .customary_tag = id3v24},
    {.name = "DSDIFF",
     .extensions = "dff",
     .mime_types = "audio/x-dff",
     .signatures = {{{0, "FRM8"}}},
     .open = open_riff_file,
     .customary_tag = id3v24},
    {.name = "DSF",
     .extensions = "dsf",
     .mime_types = "audio/dsf audio/x-dsf",
     .signatures = {{{0, "DSD "}}},
     .open = open_dsf_file,
     .customary_tag = id3v24},
    {.name = "CAF",
     .extensions = "caf",
     .mime_types = "audio/x-caf",
     .signatures = {{{0, "caff"}}},
     .open = open_caf_file,
     .customary_tag = caf_tag},
    {.name = "ASF",
     .extensions = "wma asf",
     .mime_types = "audio/x-ms-wma",
     .signatures = {{{0, asf_guid}}},
     .open = open_asf_file,
     .customary_tag = asf_tag},
    {.name = "MP4",
     .extensions = "m4a m4b m4p m4r mp4",
     .mime_types = "audio/mp4 audio/x-m4b audio/x-m4r",
     .signatures = {{{4, "ftyp"}}},
     .open = open_mp4_file,
     .customary_tag = mp4_tag},
    {.name = "Matroska",
     .extensions = "mka mkv webm",
     .mime_types = "audio/x-matroska audio/webm",
     .signatures = {{{0, ebml_mark}}},
     .open = open_matroska_file,
     .customary_tag = matroska_tag},
    {.name = "Ogg Vorbis",
     .extensions = "ogg",
     .mime_types = "audio/ogg audio/x-vorbis+ogg",
     .signatures = {{{first_packet, "\x01vorbis"}}},
     .open = open_ogg_file,
     .customary_tag = vorbis_comment},
    {.name = "Opus",
     .extensions = "opus",
     .mime_types = "audio/x-opus+ogg audio/opus",
     .signatures = {{{first_packet, "OpusHead"}}},
     .open = open_ogg_file,
     .customary_tag = vorbis_comment,
     .has_r128_gain = true},
    {.name = "Ogg FLAC",
     .extensions = "oga",
     .mime_types = "audio/x-flac+ogg",
     .signatures = {{{first_packet, "\x7F"
                                    "FLAC"}}},
     .open = open_ogg_file,
     .customary_tag = vorbis_comment,
     .carries_cue_sheet = true},
    {.name = "Speex",
     .extensions = "spx",
     .mime_types = "audio/x-speex+ogg audio/x-speex",
     .signatures = {{{first_packet, "Speex   "}}},
     .open = open_ogg_file,
     .customary_tag = vorbis_comment},
    {.name = "TAK",
     .extensions = "tak",
     .mime_types = "audio/x-tak",
     .signatures = {{{0, "tBaK"}}},
     .open = open_wrapped_file,
     .customary_tag = ape_tag},
    {.name = "OptimFROG",
     .extensions = "ofr ofs",
     .mime_types = "audio/x-ofr",
     .signatures = {{{0, "OFR "}}},
     .open = open_wrapped_file,
     .customary_tag = ape_tag},
    {.name = "Shorten",
     .extensions = "shn",
     .mime_types = "application/x-shorten",
     .signatures = {{{0, "ajkg"}}},
     .open = open_wrapped_file,
     .customary_tag = ape_tag},
    {.name = "AC-3",
     .extensions = "ac3 eac3 ec3",
     .mime_types = "audio/ac3 audio/eac3",
     .signatures = {{{0, "\x0B\x77"}}},
     .open = open_wrapped_file,
     .customary_tag = ape_tag,
     .describe = describe_ac3},
    // MPEG-4 and MPEG-2, with a checksum and without, and those with a single header.
    {.name = "AAC",
     .extensions = "aac",
     .mime_types = "audio/aac",
     .signatures = {{{0, "\xFF\xF1"}, {0, "\xFF\xF9"}, {0, "\xFF\xF0"}, {0, "\xFF\xF8"}, {0, "ADIF"}}},
     .open = open_wrapped_file,
     .customary_tag = id3v24,
     .describe = describe_aac},
    // By the sync word, version and layer: last, since they are the shortest. Layer I looks like other
    // things' beginnings, and a layer of 0 is AAC.
    {.name = "MP3",
     .extensions = "mp3 mp2 mpga",
     .mime_types = "audio/mpeg audio/mp2",
     .signatures = {{{0, "\xFF\xFB"},
                     {0, "\xFF\xFA"},
                     {0, "\xFF\xFD"},
                     {0, "\xFF\xFC"},
                     {0, "\xFF\xF3"},
                     {0, "\xFF\xF2"},
                     {0, "\xFF\xF5"},
                     {0, "\xFF\xF4"},
                     {0, "\xFF\xE3"},
                     {0, "\xFF\xE2"}}},
     .open = open_wrapped_file,
     .customary_tag = id3v24,
     .describe = describe_mpeg},
});

std::vector<std::string_view> words(std::string_view text) {
    std::vector<std::string_view> result;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(' ', start), text.size());
        result.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return result;
}

/// Every row has a name, an extension and a tag.
constexpr bool are_sound() {
    return std::ranges::none_of(formats, [](const Format& format) {
        return format.name.empty() || format.extensions.empty() || format.customary_tag.empty();
    });
}
static_assert(are_sound());

bool begins_with(std::string_view head, const Signature& signature) {
    const auto stands_at = [&](std::string_view text, std::size_t at) {
        return head.substr(std::min(at, head.size())).starts_with(text);
    };
    return !signature.text.empty() && stands_at(signature.text, signature.at)
           && stands_at(signature.second, 8);
}

} // namespace

std::span<const Format> all_formats() {
    return formats;
}

std::vector<std::string> audio_extensions() {
    std::vector<std::string> texts;
    for (const Format& format : formats)
        for (const std::string_view word : words(format.extensions))
            texts.emplace_back(word);
    return texts;
}

const Format* format_of_name(std::string_view path) {
    path.remove_prefix(path.find_last_of('/') + 1);
    const std::size_t dot = path.rfind('.');
    if (dot == path.npos)
        return nullptr;
    const std::string_view extension = path.substr(dot + 1);
    for (const Format& format : formats)
        for (const std::string_view word : words(format.extensions))
            if (same_text(word, extension))
                return &format;
    return nullptr;
}

bool has_signature(const Format& format, std::string_view head) {
    return std::ranges::any_of(format.signatures,
                               [&](const Signature& signature) { return begins_with(head, signature); });
}

bool begins_as(FileBytes& file, const Format& format, std::size_t start) {
    const std::string_view head = file.some(start, 64);
    return std::ranges::any_of(format.signatures,
                               [&](const Signature& signature) { return begins_with(head, signature); });
}

const Format* find_format(FileBytes& file, std::size_t start) {
    const auto format_at = [&](std::size_t place) -> const Format* {
        const std::string_view head = file.some(place, signature_area);
        for (const Format& format : formats)
            if (has_signature(format, head))
                return &format;
        return nullptr;
    };
    if (const Format* format = format_at(start))
        return format;
    // The first stream of an Ogg file may be something else than audio.
    if (file.some(start, ogg_mark.size()) == ogg_mark)
        for (const OggPage& page : first_ogg_pages(file, start))
            if (const Format* format = format_at(page.start))
                return format;
    return format_of_name(file.path());
}

} // namespace vantaro::core::tags
