// The fields of the "info" chunk of CAF files: a text each under a key.
//
// Choices: one value a key, so several values are refused rather than joined; keys that other programs have
// written twice are read as several values. Each spelling of a field that the chunk has gets the new value, a
// new field gets the first key of caf_places.h. Number and total stand together ("3/12"); a total found under
// a key of its own stays there and is kept in step. Empty values are not kept. Entries that an edit does not
// name keep their bytes.
//
// https://developer.apple.com/library/archive/documentation/MusicAudio/Reference/CAFSpec
#pragma once

#include "vantaro/tags/tag_store.h"

#include <cstdint>

namespace vantaro::core::tags {

class CafFields final : public TagStore {
public:
    CafFields() = default;
    /// `bytes` is the content of the chunk. Throws exception_io_data when it is too short.
    explicit CafFields(std::string_view bytes);

    std::string kind() const override { return "CAF"; }
    std::vector<TrackField> fields() const override;
    void set(const std::string& name, const Values& values) override;
    std::string listed_name(const std::string& name) const override;

    bool empty() const { return entries_.empty() && rest_.empty(); }
    std::string render() const;

private:
    struct Entry {
        std::string key;
        std::string value;
    };

    bool has(std::string_view key) const;
    void put(std::string_view key, const Values& values);
    void set_pair(const std::string& name, const Values& values);

    std::vector<Entry> entries_;
    std::string rest_;             ///< what is no entry
    std::uint32_t rest_count_ = 0; ///< how many entries the chunk says it is
};

} // namespace vantaro::core::tags
