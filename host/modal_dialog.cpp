#include "host/modal_dialog.h"

#include "host/access.h"
#include "host/api/windows.h"

namespace quorvex {

using vantaro::ModalDialogGuard;

bool ModalDialog_CanCreateNew() {
    bool can = true;
    for_each_service<ModalDialogGuard>([&](ModalDialogGuard& guard) { can &= guard.can_create_new(); });
    return can;
}

void ModalDialog_PokeExisting() {
    for_each_service<ModalDialogGuard>([](ModalDialogGuard& guard) { guard.poke_existing(); });
}

} // namespace quorvex
