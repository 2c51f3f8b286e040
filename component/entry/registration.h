// Everything that the component registers is constructed beside this, before main or while the library is
// being loaded.
#pragma once

namespace quorvex {

/// Does nothing but be called by the entry: a program that links the component as a static library gets its
/// registration with the entry.
void link_registration();

} // namespace quorvex
