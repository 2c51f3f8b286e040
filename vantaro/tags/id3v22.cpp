#include "vantaro/tags/id3v22.h"

#include "vantaro/tags/text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vantaro::core::tags {

namespace {

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

std::string new_name(std::string_view id) {
    for (const auto& [old_name, name] : new_names)
        if (old_name == id)
            return std::string(name);
    for (const auto& [old_name, name] : new_web_names)
        if (old_name == id)
            return std::string(name);
    return "X" + std::string(id);
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

bool is_name(std::string_view id) {
    return std::ranges::all_of(id, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
}

} // namespace

std::vector<Id3v2Frame> parse_v22_frames(std::string_view bytes) {
    std::vector<Id3v2Frame> frames;
    while (bytes.size() > 6 && is_name(bytes.substr(0, 3))) {
        std::size_t size = 0;
        for (const char c : bytes.substr(3, 3))
            size = size << 8 | static_cast<unsigned char>(c);
        if (size > bytes.size() - 6)
            break;
        Id3v2Frame frame{new_name(bytes.substr(0, 3)), 0, std::string(bytes.substr(6, size))};
        if (frame.id == "APIC")
            frame.body = converted_picture(frame.body);
        frames.push_back(std::move(frame));
        bytes.remove_prefix(6 + size);
    }
    return frames;
}

} // namespace vantaro::core::tags
