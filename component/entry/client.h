// The component's one way in, for programs that link it in place of loading it:
//
//     ComponentClient* client = vantaro_get_interface(&host);
#pragma once

#include "host/api/host_api.h"

/// Keeps `host` as the host that every service lookup goes through, replacing an earlier one, and returns the
/// component. Touches no service. Called by the host before anything else.
extern "C" __attribute__((visibility("default"))) vantaro::ComponentClient*
vantaro_get_interface(vantaro::HostApi* host);
