# Installs what packaging/build-packages.txt lists and is missing. Sourced by ./run and ./check, from the root of
# the repository.

wanted=$(sed 's/#.*//' packaging/build-packages.txt)
missing=""
if command -v dpkg-query >/dev/null; then
    for package in $wanted; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
    done
    if [ -n "$missing" ]; then
        as_root=""
        if [ "$(id -u)" -ne 0 ]; then
            as_root="sudo"
            command -v sudo >/dev/null || {
                echo "Please install these packages as root:$missing" >&2
                exit 2
            }
        fi
        echo "Installing:$missing" >&2
        $as_root apt-get update -qq >&2
        $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >&2
    fi
else
    # Another distribution: its own names for these are for the person to know.
    for tool in g++ cmake ninja pkg-config python3 ffmpeg metaflac Xvfb openbox xdotool; do
        command -v "$tool" >/dev/null || missing="$missing $tool"
    done
    for library in taglib icu-uc Qt6Widgets; do
        pkg-config --exists "$library" 2>/dev/null || missing="$missing $library"
    done
    if [ -n "$missing" ]; then
        echo "Please install what provides:$missing" >&2
        echo "(on Debian: $(echo $wanted))" >&2
        exit 2
    fi
fi
