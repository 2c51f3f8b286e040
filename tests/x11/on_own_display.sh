#!/usr/bin/env bash
# on_own_display.sh COMMAND...: runs the command on a display of its own that nobody sees, with a window manager.
set -euo pipefail
folder=$(mktemp -d)
processes=()
end() {
    for process in "${processes[@]}"; do
        kill "$process" 2>/dev/null && wait "$process" || true
    done
    rm -rf "$folder"
}
trap end EXIT

# wait_until WHAT COMMAND...
wait_until() {
    local what=$1
    shift
    for ((i = 0; i < 300; ++i)); do
        if "$@" >/dev/null 2>&1; then
            return
        fi
        sleep 0.1
    done
    echo "$what did not come up:" >&2
    cat "$folder"/*.log >&2
    exit 1
}

# It would start over whenever its last client leaves, were it allowed to.
Xvfb -displayfd 3 -screen 0 1280x1000x24 -nolisten tcp -noreset 3>"$folder/display" 2>"$folder/server.log" &
processes+=($!)
wait_until "The display" test -s "$folder/display"
DISPLAY=:$(cat "$folder/display")
export DISPLAY
unset WAYLAND_DISPLAY
HOME=$folder XDG_CONFIG_HOME=$folder XDG_CACHE_HOME=$folder openbox --sm-disable 2>"$folder/manager.log" &
processes+=($!)
wait_until "The window manager" xdotool get_num_desktops
"$@"
