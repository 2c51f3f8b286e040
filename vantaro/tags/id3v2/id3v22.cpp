#include "vantaro/tags/id3v2/id3v22.h"

#include "vantaro/tags/numbers.h"
#include "vantaro/tags/text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vantaro::core::tags {

namespace {

constexpr std::size_t id_size = 3;
constexpr std::size_t header_size = 6;

constexpr std::array<std::pair<std::string_view, std::string_view>, 71> new_names{{
    {"BUF", "RBUF"}, {"CNT", "PCNT"}, {"COM", "COMM"}, {"CRA", "AENC"}, {"EQU", "EQUA"}, {"ETC", "ETCO"},
    {"GEO", "GEOB"}, {"GP1", "GRP1"}, {"IPL", "IPLS"}, {"LNK", "LINK"}, {"MCI", "MCDI"}, {"MLL", "MLLT"},
    {"MVI", "MVIN"}, {"MVN", "MVNM"}, {"PCS", "PCST"}, {"PIC", "APIC"}, {"POP", "POPM"}, {"REV", "RVRB"},
    {"RVA", "RVAD"}, {"SLT", "SYLT"}, {"STC", "SYTC"}, {"TAL", "TALB"}, {"TBP", "TBPM"}, {"TCM", "TCOM"},
    {"TCO", "TCON"}, {"TCP", "TCMP"}, {"TCR", "TCOP"}, {"TCT", "TCAT"}, {"TDA", "TDAT"}, {"TDR", "TDRL"},
    {"TDS", "TDES"}, {"TDY", "TDLY"}, {"TEN", "TENC"}, {"TFT", "TFLT"}, {"TID", "TGID"}, {"TIM", "TIME"},
    {"TKE", "TKEY"}, {"TLA", "TLAN"}, {"TLE", "TLEN"}, {"TMT", "TMED"}, {"TOA", "TOPE"}, {"TOF", "TOFN"},
    {"TOL", "TOLY"}, {"TOR", "TORY"}, {"TOT", "TOAL"}, {"TP1", "TPE1"}, {"TP2", "TPE2"}, {"TP3", "TPE3"},
    {"TP4", "TPE4"}, {"TPA", "TPOS"}, {"TPB", "TPUB"}, {"TRC", "TSRC"}, {"TRD", "TRDA"}, {"TRK", "TRCK"},
    {"TS2", "TSO2"}, {"TSA", "TSOA"}, {"TSC", "TSOC"}, {"TSI", "TSIZ"}, {"TSP", "TSOP"}, {"TSS", "TSSE"},
    {"TST", "TSOT"}, {"TT1", "TIT1"}, {"TT2", "TIT2"}, {"TT3", "TIT3"}, {"TXT", "TEXT"}, {"TXX", "TXXX"},
    {"TYE", "TYER"}, {"UFI", "UFID"}, {"ULT", "USLT"}, {"WAF", "WOAF"}, {"WAR", "WOAR"},
}};
constexpr std::array<std::pair<std::string_view, std::string_view>, 6> new_web_names{{
    {"WAS", "WOAS"},
    {"WCM", "WCOM"},
    {"WCP", "WCOP"},
    {"WFD", "WFED"},
    {"WPB", "WPUB"},
    {"WXX", "WXXX"},
}};

// Empty when 2.3 has none.
std::string_view new_name(std::string_view id) {
    for (const auto& [old_name, name] : new_names)
        if (old_name == id)
            return name;
    for (const auto& [old_name, name] : new_web_names)
        if (old_name == id)
            return name;
    return {};
}

bool is_letter_or_digit(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool is_name(std::string_view id) {
    return std::ranges::all_of(id, is_letter_or_digit);
}

bool is_odd_name(std::string_view id) {
    return std::ranges::all_of(
        id, [](char c) { return is_letter_or_digit(c) || (c >= 'a' && c <= 'z') || c == ' '; });
}

// Whether another frame or padding starts there.
bool is_frame_end(std::string_view bytes) {
    return bytes.find_first_not_of('\0') == bytes.npos
           || (bytes.size() >= header_size && is_odd_name(bytes.substr(0, id_size)));
}

} // namespace

std::string name_of_v22(std::string_view id) {
    if (id.size() != id_size + 1 || (id.back() != '\0' && id.back() != ' ') || is_picture_of_v22(id)
        || id.starts_with("LNK"))
        return {};
    return std::string(new_name(id.substr(0, id_size)));
}

bool is_picture_of_v22(std::string_view id) {
    return id == "PIC " || id == std::string_view("PIC\0", id_size + 1);
}

// A picture's format of three letters becomes a MIME type.
std::string converted_picture(std::string_view body) {
    if (body.size() < 4)
        return std::string(body);
    const std::string format = upper_name(body.substr(1, 3));
    std::string type = "image/";
    if (format == "JPG")
        type += "jpeg";
    else if (format == "PNG")
        type += "png";
    else if (format == "-->")
        type = format;
    return std::string(body.substr(0, 1)) + type + '\0' + std::string(body.substr(4));
}

Id3v2Tag parse_v22_frames(const Part& content) {
    Id3v2Tag tag;
    tag.version = 3;
    tag.was_v22 = true;
    std::size_t place = 0;
    const auto left = [&] { return content.size() - place; };
    while (left() >= header_size) {
        const std::string_view header = content.bytes(place, header_size);
        const std::string_view id = header.substr(0, id_size);
        const std::size_t size = big_endian(header.substr(id_size, 3));
        if (size > left() - header_size)
            break;
        const std::size_t end = place + header_size + size;
        if (!is_name(id) && !(is_odd_name(id) && is_frame_end(content.bytes(end, content.size() - end))))
            break;
        const std::string_view name = new_name(id);
        Id3v2Frame frame{name.empty() ? "X" + std::string(id) : std::string(name), 0,
                         content.part(place + header_size, size)};
        if (frame.id == "APIC")
            frame.id = std::string("PIC\0", id_size + 1);
        tag.frames.push_back(std::move(frame));
        place = end;
    }
    const std::string_view rest = content.bytes(place, left());
    tag.rest = rest.substr(0, rest.find_last_not_of('\0') + 1);
    return tag;
}

} // namespace vantaro::core::tags
