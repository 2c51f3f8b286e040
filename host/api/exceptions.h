// The failures that cross between host and component. All derive from std::exception; what() is the text
// that users are shown.
//
//     throw vantaro_io::exception_io_data();                       // "Unsupported format or corrupted file"
//     throw vantaro_io::exception_io("No space left on device");   // a text of one's own
#pragma once

#include <stdexcept>
#include <string>

#define VANTARO_EXCEPTION(NAME, BASE, TEXT)                                                                  \
    class __attribute__((visibility("default"))) NAME : public BASE {                                        \
    public:                                                                                                  \
        static constexpr const char* default_text = TEXT;                                                    \
        NAME() : BASE(default_text) {}                                                                       \
        explicit NAME(const char* text) : BASE(text) {}                                                      \
        explicit NAME(const std::string& text) : BASE(text) {}                                               \
    }

namespace vantaro_io {

/// Reading or writing failed.
VANTARO_EXCEPTION(exception_io, std::runtime_error, "I/O error");
/// The bytes do not make sense.
VANTARO_EXCEPTION(exception_io_data, exception_io, "Unsupported format or corrupted file");
/// The bytes end too early.
VANTARO_EXCEPTION(exception_io_data_truncation, exception_io_data, "Unexpected end of file");
/// There is nothing at this location.
VANTARO_EXCEPTION(exception_io_not_found, exception_io, "File not found");
/// There is something, but it may not be read or written.
VANTARO_EXCEPTION(exception_io_denied, exception_io, "Access denied");
/// No file system serves this location.
VANTARO_EXCEPTION(exception_io_no_handler_for_path, exception_io, "Invalid path");
/// An AbortFlag was set.
VANTARO_EXCEPTION(exception_aborted, std::runtime_error, "User abort");

} // namespace vantaro_io

namespace vantaro {

VANTARO_EXCEPTION(exception_service_not_found, std::runtime_error, "Service not found");
VANTARO_EXCEPTION(exception_service_duplicated, std::runtime_error, "Service duplicated");
VANTARO_EXCEPTION(exception_service_extension_not_found, std::runtime_error, "Service extension not found");

/// A call to the operating system failed.
class __attribute__((visibility("default"))) exception_win32 : public std::runtime_error {
public:
    /// `code` is an errno value, `text` what the system says of it.
    exception_win32(int code, const std::string& text) : std::runtime_error(text), code_(code) {}
    int code() const { return code_; }

private:
    int code_;
};

} // namespace vantaro

#undef VANTARO_EXCEPTION
