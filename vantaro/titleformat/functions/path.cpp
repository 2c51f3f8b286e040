#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/characters.h"
#include "vantaro/titleformat/functions/path_text.h"

#include <algorithm>

namespace vantaro::core::functions {

void validate(Call& call) {
    const std::string_view to = call.text(1, "_");
    const std::string_view forbidden = call.text(2, "/\\:*?\"<>|");
    call.charge(call.text(0).size() * (forbidden.size() / 64));
    for (const Character& character : Characters(call.text(0)))
        if ((character.code_point >= 0 && character.code_point < ' ')
            || find_text(forbidden, character.bytes) != std::string_view::npos)
            call.out().append(to);
        else
            call.out().append(character.bytes);
}

void limitname(Call& call) {
    const std::string_view name = call.text(0);
    const auto limit = call.count() > 1 ? call.integer(1) : std::optional<std::int64_t>(255);
    if (!limit || *limit <= 0)
        return;
    const auto size = static_cast<std::uint64_t>(*limit);
    if (name.size() <= size)
        return call.out().append(name);
    std::string_view extension = name.substr(extension_start(name));
    if (extension.size() >= size)
        extension = {};
    const std::string_view stem = name.substr(0, name.size() - extension.size());
    std::size_t end = 0;
    for (const Character& character : Characters(stem)) {
        if (end + character.bytes.size() + extension.size() > size)
            break;
        end += character.bytes.size();
    }
    call.out().append(without_trailing_blanks(stem.substr(0, end)));
    call.out().append(extension);
}

void filename(Call& call) {
    call.out().append(file_stem(call.text(0)));
}

void filenameext(Call& call) {
    call.out().append(file_base_name(call.text(0)));
}

void extension(Call& call) {
    call.out().append(file_extension(call.text(0)));
}

void directory(Call& call) {
    const auto levels = call.count() > 1 ? call.integer(1) : std::optional<std::int64_t>(1);
    if (!levels || *levels < 1)
        return;
    std::string_view path = call.text(0);
    for (std::int64_t i = 0; i < *levels && !path.empty(); ++i)
        path = parent_path(path);
    call.out().append(file_base_name(path));
}

void directorypath(Call& call) {
    call.out().append(parent_path(call.text(0)));
}

} // namespace vantaro::core::functions
