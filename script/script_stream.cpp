#include "script/script_stream.h"

#include "component/byte_order.h"
#include "host/filesystem_access.h"

#include <algorithm>

namespace quorvex {

using namespace vantaro;

namespace {

/// Lengths up to this one are believed; a longer text is read in steps, so that a damaged length costs no
/// more memory than the stream has bytes.
constexpr std::uint32_t trusted_length = 0x10000;

void write_text(StreamWriter& writer, std::string_view text, AbortFlag& abort) {
    text = text.substr(0, text.find('\0'));
    write_number(writer, static_cast<std::uint32_t>(text.size()), abort);
    writer.write(text.data(), text.size(), abort);
}

std::string read_text(StreamReader& reader, AbortFlag& abort) {
    const auto length = read_number<std::uint32_t>(reader, abort);
    std::string text;
    for (std::size_t limit = trusted_length; text.size() < length; limit *= 2) {
        const std::size_t before = text.size();
        text.resize(std::min<std::size_t>(limit, length));
        read_exact(reader, text.data() + before, text.size() - before, abort);
    }
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

void write_guid(StreamWriter& writer, const Guid& id, AbortFlag& abort) {
    writer.write(id.bytes.data(), id.bytes.size(), abort);
}

Guid read_guid(StreamReader& reader, AbortFlag& abort) {
    Guid id;
    read_exact(reader, id.bytes.data(), id.bytes.size(), abort);
    return id;
}

} // namespace

void write_script(StreamWriter& writer, const StoredScript& script, AbortFlag& abort) {
    write_text(writer, script.name, abort);
    write_number(writer, static_cast<std::uint32_t>(script.actions.size()), abort);
    for (const StoredAction& action : script.actions) {
        write_guid(writer, action.kind, abort);
        write_text(writer, action.parameters, abort);
    }
}

void read_script(StreamReader& reader, StoredScript& target, AbortFlag& abort) {
    target.actions.clear();
    target.name = read_text(reader, abort);
    const auto count = read_number<std::uint32_t>(reader, abort);
    for (std::uint32_t i = 0; i < count; ++i) {
        StoredAction action;
        action.kind = read_guid(reader, abort);
        action.parameters = read_text(reader, abort);
        target.actions.push_back(std::move(action));
    }
}

void write_script_list(StreamWriter& writer, const std::vector<StoredScript>& scripts, AbortFlag& abort) {
    write_number(writer, static_cast<std::uint32_t>(scripts.size()), abort);
    for (const StoredScript& script : scripts)
        write_script(writer, script, abort);
}

void read_script_list(StreamReader& reader, std::vector<StoredScript>& target, AbortFlag& abort) {
    target.clear();
    const auto count = read_number<std::uint32_t>(reader, abort);
    for (std::uint32_t i = 0; i < count; ++i) {
        StoredScript script;
        read_script(reader, script, abort);
        target.push_back(std::move(script));
    }
}

void write_script_file(const char* path, const StoredScript& script, AbortFlag& abort) {
    const Ref<File> file = filesystem::g_open(path, OpenMode::write_new, abort);
    write_guid(file->writer(), script_file_magic, abort);
    write_script(file->writer(), script, abort);
    file->flush(abort);
}

StoredScript read_script_file(const char* path, AbortFlag& abort) {
    const Ref<File> file = filesystem::g_open_stored(path, abort);
    return read_script_file(file->reader(), abort);
}

StoredScript read_script_file(StreamReader& reader, AbortFlag& abort) {
    if (read_guid(reader, abort) != script_file_magic)
        throw vantaro_io::exception_io_data();
    StoredScript script;
    read_script(reader, script, abort);
    return script;
}

} // namespace quorvex
