// Talking to the person at the host: console lines, messages, questions, what is not done.
//
//     PopupQuestion::Request ask;
//     ask.title = "Warning";
//     ask.message = "Clear all actions ?";
//     ask.buttons = button::ok | button::cancel;
//     if (question->ask(ask) & button::ok) ...
//
// The console may be written from any thread; messages and questions are put on the main thread.
#pragma once

#include "host/api/host_api.h"

namespace vantaro {

/// One place where console lines go (standard error, a panel). There may be several.
class HostConsole : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{90DF5270-65BB-4DBA-BAF5-86BE9E59DC20}");

    /// One line, without its line break.
    virtual void print(const char* text, std::size_t length) = 0;

protected:
    ~HostConsole() = default;
};

/// Icons of messages and questions.
namespace popup_icon {
inline constexpr std::uint32_t none = 0;
inline constexpr std::uint32_t information = 1;
inline constexpr std::uint32_t error = 2;
inline constexpr std::uint32_t warning = 3;
} // namespace popup_icon

/// Shows a text and goes on: not modal.
class PopupMessage : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{D5CAC75A-3023-4DCE-8B0D-B502BD056A7C}");

    /// `icon` is a popup_icon.
    virtual void show(const char* text, std::size_t length, const char* title, std::uint32_t icon) = 0;

protected:
    ~PopupMessage() = default;
};

/// Bits of the question service: buttons to offer, and the answer.
namespace button {
inline constexpr std::uint32_t ok = 1;
inline constexpr std::uint32_t cancel = 2;
inline constexpr std::uint32_t yes = 4;
inline constexpr std::uint32_t no = 8;
inline constexpr std::uint32_t retry = 16;
inline constexpr std::uint32_t abort = 32;
inline constexpr std::uint32_t ignore = 64;
} // namespace button

/// Asks, waits for the answer, and returns it.
class PopupQuestion : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{EF3C83FD-1144-4EDB-B843-CFBAC6E5E18B}");

    struct Request {
        const char* title = "";
        const char* message = "";
        std::uint32_t buttons = button::ok;
        std::uint32_t default_button = button::ok;
        std::uint32_t icon = popup_icon::none;
        WindowHandle parent = nullptr;
    };

    /// Returns the bit of the button that was pressed. Where no person can answer, the host takes the
    /// cautious one (cancel, no, abort), or the one it was told to take. Throws:
    /// vantaro_io::exception_aborted when the host is asked to end before the answer.
    virtual std::uint32_t ask(const Request& request) = 0;

protected:
    ~PopupQuestion() = default;
};

/// Hears that something a person asked for is not done, where neither an exception nor the end of an update
/// tells the host. A host may be without it.
class UndoneWork : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{9FF492D9-45D0-4058-B7AA-E81A07555054}");

    /// `why` is a line for the person; empty where it has been said. Any thread.
    virtual void note(const char* why) = 0;

protected:
    ~UndoneWork() = default;
};

} // namespace vantaro
