// The fields of the LIST INFO chunk of WAV files: texts under names of four letters.
//
// A field that the chunk has is changed there, new fields are not added; it holds one value. Other entries
// keep their bytes. Texts are read as UTF-8, as Latin-1 when they are none, and written as UTF-8.
#pragma once

#include "vantaro/tags/tag_store.h"

namespace vantaro::core::tags {

class InfoFields final : public TagStore {
public:
    /// `bytes` follow the word "INFO".
    explicit InfoFields(std::string_view bytes);

    std::string kind() const override { return "INFO"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;

    bool empty() const { return entries_.empty() && rest_.empty(); }
    std::string render() const;

private:
    struct Entry {
        std::string id;
        std::string body;
    };
    std::vector<Entry> entries_;
    std::string rest_; ///< too short for an entry, or beyond what is looked into
};

} // namespace vantaro::core::tags
