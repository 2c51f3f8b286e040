// The contents of ID3v2 frames: texts, described texts, genres, involved people.
#pragma once

#include "vantaro/tags/id3v2/id3v2_frames.h"
#include "vantaro/tags/text.h"

#include <optional>
#include <string>
#include <vector>

namespace vantaro::core::tags {

/// The strings of a text frame, empty ones too.
Values decode_text(std::string_view body);
/// A text frame's body. ASCII as Latin-1, other texts in the encoding that the version favours.
std::string encode_text(const Values& strings, int version);

/// COMM and USLT.
struct DescribedText {
    std::string language;
    std::string description;
    Values texts;
};
std::optional<DescribedText> decode_described(std::string_view body);
std::string encode_described(const DescribedText& text, int version);

/// WXXX.
struct WebPage {
    std::string description;
    std::string address;
};
std::optional<WebPage> decode_web_page(std::string_view body);
/// Requires: the address is Latin-1.
std::string encode_web_page(const WebPage& page, int version);

/// TCON: numbers and references become names, "(4)Eurodisco" becomes two genres.
Values decode_genres(const Values& texts, int version);
std::string encode_genres(const Values& genres, int version);

/// TIPL, TMCL and IPLS hold pairs of a role and a name.
struct InvolvedPerson {
    std::string role;
    std::string name;
};
/// PRODUCER and its like for the roles of TIPL, else "PERFORMER:ROLE"; roles in any case.
std::string field_of_role(std::string_view role);
/// Whether a field of this (upper-case) name belongs into these frames.
bool is_people_field(std::string_view name);
/// Gives the field these names in whichever frame has it, else in the frame of the tag's version.
void set_people(Id3v2Tag& tag, const std::string& field, const Values& names);
std::vector<InvolvedPerson> decode_people(std::string_view body);
/// IPLS becomes TIPL and TMCL.
void split_people_list(Id3v2Tag& tag);

} // namespace vantaro::core::tags
