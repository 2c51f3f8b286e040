// What the host does for a component's windows.
//
// Main thread only.
#pragma once

#include "host/api/host_api.h"

namespace vantaro {

/// Knows the open modeless dialogs, so that their keyboard input is handled.
class ModelessDialogRegistry : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{C71B99BD-12C5-48FE-A9C0-469F6FEA88BF}");

    virtual void register_dialog(WindowHandle window) = 0;
    virtual void unregister_dialog(WindowHandle window) = 0;

protected:
    ~ModelessDialogRegistry() = default;
};

/// Decorates one dialog.
class DialogDecoration : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{9D2E6B17-3A5F-4C80-B6E4-71F0C8A5D932}");

    virtual void set_dark(bool dark) = 0;
    virtual void add_dialog(WindowHandle window) = 0;
    virtual void add_controls(WindowHandle window) = 0;

protected:
    ~DialogDecoration() = default;
};

/// Hands out decorations, where the host offers them.
class DialogDecorationHook : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{E34839B0-D899-43C5-9471-14FF481D5EE8}");

    virtual bool is_dark() = 0;
    /// Returns a decoration with one reference for the caller.
    virtual DialogDecoration* create() = 0;

protected:
    ~DialogDecorationHook() = default;
};

/// Whether another modal dialog may open, for all components together.
class ModalDialogGuard : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{41C7A9E6-8B2D-4F13-A05C-D6E9B7F28430}");

    virtual bool can_create_new() = 0;
    /// Draws the person's attention to the modal dialog that is open.
    virtual void poke_existing() = 0;

protected:
    ~ModalDialogGuard() = default;
};

} // namespace vantaro
