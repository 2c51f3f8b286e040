// What TagLib takes on trust in an MP4 file.
#pragma once

namespace TagLib {
class IOStream;
}

namespace vantaro::core::tags {

/// Throws exception_io_data when atoms are nested deeper than any program nests them (TagLib follows them by
/// recursion), or when a table of offsets names more entries than it has (TagLib would write them all).
void check_mp4(TagLib::IOStream& stream);

} // namespace vantaro::core::tags
