// The fields of an ID3v2 tag.
//
// Choices:
// - Only frames of a changed field are touched. The tag stays 2.3 or 2.4 as it is, and frames of the other
//   version that stand in it stay: TDRL, TMOO and the like in a 2.3 tag, TYER in a 2.4 tag. New values of
//   such fields go to the frame of the tag's version, or to a user text frame (TXXX:MOOD in 2.3).
// - A changed text field with several values turns 2.3 into 2.4, or its values are joined, as TagOptions say;
//   comments, lyrics and people have a form for several in 2.3 too, and numbers cannot be joined.
// - Nothing is lost where 2.3 becomes 2.4: TYER, TDAT and TIME become TDRC, TORY becomes TDOR, IPLS becomes
//   TIPL and TMCL, genre numbers become texts.
// - In 2.3 a date that TYER, TDAT and TIME cannot express is stored whole in TYER, an original date whole in
//   TORY.
// - A changed comment or lyrics frame keeps its language and the spelling of its description, a new one is
//   "eng". Lyrics whose description is "LYRICS" are plain LYRICS. With several values, those that stay keep
//   their frames. Unnamed lyrics and comments of all languages are one field with several values.
// - A user text frame keeps the spelling of its description; a new one has the customary one.
// - Web pages: a value that is no Latin-1, or several values, go to a user text frame.
// - A compressed frame is read where it says how large it is and all of a tag come to no more than 16 MiB. It
//   stays as it is until its field changes; it is then written plain. Encrypted frames are no fields.
// - A text frame and a user text frame of the same field name are kept in step; the text frame is read.
#pragma once

#include "vantaro/tags/file_bytes.h"
#include "vantaro/tags/id3v2/id3v2_frames.h"
#include "vantaro/tags/tag_store.h"

#include <functional>

namespace vantaro::core::tags {

class Id3v2Fields final : public TagStore {
public:
    /// An empty tag of version 2.4.
    Id3v2Fields() = default;
    /// An empty tag of version 2.3 or 2.4.
    explicit Id3v2Fields(int version) { tag_.version = version; }
    /// The tag of `size` bytes in a file, which outlives this. Throws exception_io_data.
    Id3v2Fields(FileBytes& file, std::size_t start, std::size_t size)
        : tag_(parse_id3v2(file, start, size)) {}

    std::string kind() const override { return "ID3v2." + std::to_string(tag_.version); }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;
    std::string listed_name(const std::string& name) const override;
    void follow(const TagOptions& options) override { options_ = options; }
    void begin_with(const TagOptions& options) override;
    /// Joined values are good enough where they are asked for.
    bool holds(const std::string& name, const Values& wanted, const Values& found) const override;

    bool empty() const { return tag_.frames.empty() && tag_.rest.empty(); }
    /// The whole tag, as render_id3v2 says.
    std::vector<Part> render(std::size_t room, std::size_t beside = 0,
                             std::size_t most = std::numeric_limits<std::size_t>::max()) const {
        return render_id3v2(tag_, room, beside, most);
    }

private:
    using IsFrame = std::function<bool(const Id3v2Frame&)>;

    std::string place_of(const Id3v2Frame& frame) const;
    Values texts_of(const Id3v2Frame& frame) const;
    std::string date_of_v23() const;
    bool has_frame(std::string_view id) const;

    void set_texts(const std::string& name, const Values& given, const std::string& spelling);
    void set_pair(const std::string& name, const Values& values);
    void set_date(const Values& given);
    void set_genres(const Values& given);
    void set_identifier(const Values& values);
    void set_web_page(const std::string& name, const Values& values, const std::string& spelling);
    void set_described(const std::string& id, const std::string& name, const Values& values,
                       const std::string& spelling);

    Id3v2Frame text_frame(const std::string& place, const Values& values) const;
    std::string customary_place(const std::string& name, const std::string& spelling) const;
    /// Puts `frames` where the first of the frames that match stands, or at the end; the others go.
    void replace_frames(const IsFrame& matches, std::vector<Id3v2Frame> frames);
    bool joins_values() const;
    /// What several values become where the tag cannot hold them and is not to change.
    Values fitting(const Values& values) const;
    void allow_several(const Values& values);
    /// Throws Refused.
    void upgrade_to_v24();
    /// Throws exception_io.
    void upgrade_for_good();

    Id3v2Tag tag_;
    TagOptions options_;
};

} // namespace vantaro::core::tags
