#include "vantaro/common/path_text.h"

#include "host/api/exceptions.h"
#include "vantaro/common/utf8.h"

#include <unicode/localpointer.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <mutex>

namespace vantaro::core {

namespace {

std::mutex mutex; // guards code_page
std::string code_page = "windows-1252";

std::string converted(std::string_view name) {
    const std::string from = [] {
        const std::lock_guard lock(mutex);
        return code_page;
    }();
    std::string text;
    icu::UnicodeString(name.data(), static_cast<std::int32_t>(name.size()), from.c_str()).toUTF8String(text);
    return text;
}

} // namespace

void set_path_code_page(const std::string& name) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUConverterPointer converter(ucnv_open(name.c_str(), &status));
    if (U_FAILURE(status))
        throw vantaro_io::exception_io("Unknown character set " + name);
    const std::lock_guard lock(mutex);
    code_page = name;
}

std::string path_as_text(std::string_view path) {
    if (is_utf8(path))
        return std::string(path);
    std::string text;
    while (true) {
        const std::string_view name = path.substr(0, path.find('/'));
        text += is_utf8(name) ? std::string(name) : converted(name);
        if (name.size() == path.size())
            return text;
        text += '/';
        path.remove_prefix(name.size() + 1);
    }
}

} // namespace vantaro::core
