# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# What run, test and the tools share: packages, configuration, build. To be sourced, with BW_ROOT set to the checkout.

: "${BW_ROOT:?set BW_ROOT to the root of the checkout}"
BW_LOGS=$BW_ROOT/build/log

# A closed standard input would hand its number to the next file opened.
[ -e /dev/fd/0 ] || exec </dev/null

bw_say() { printf '%s\n' "$*" >&2; }

bw_fail() {
    bw_say "$@"
    exit 1
}

# bw_logged LOG COMMAND...: runs the command with its output in build/log/LOG; shows the end of it on failure.
bw_logged() {
    local log=$BW_LOGS/$1 status=0
    shift
    mkdir -p "$BW_LOGS"
    "$@" >"$log" 2>&1 || status=$?
    if [ "$status" != 0 ]; then
        tail -n 40 "$log" >&2
        bw_say "Failed ($status): $*" "The whole output is in $log."
    fi
    return "$status"
}

# bw_packages GROUP...: the names listed in those groups of packages.txt.
bw_packages() {
    awk -v wanted=" $* " '
        { sub(/#.*/, "") }
        $1 ~ /^\[.*\]$/ { group = substr($1, 2, length($1) - 2); next }
        NF && index(wanted, " " group " ") { print $1 }' "$BW_ROOT/tools/packages.txt"
}

# bw_missing_packages GROUP...: those of them that are not installed.
bw_missing_packages() {
    local wanted
    mapfile -t wanted < <(bw_packages "$@")
    comm -23 <(printf '%s\n' "${wanted[@]}" | LC_ALL=C sort -u) \
        <(dpkg-query --show --showformat='${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null |
            sed -n 's/ installed$//p' | LC_ALL=C sort -u)
}

# bw_as_root COMMAND...: runs it as root; sudo asks for the password where there is someone to ask.
bw_as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif [ -t 0 ]; then
        sudo -- "$@"
    else
        sudo --non-interactive -- "$@"
    fi
}

bw_apt_get() { bw_as_root env DEBIAN_FRONTEND=noninteractive apt-get "$@" </dev/null; }

# bw_install_packages GROUP...: installs what is missing of those groups; calls nothing when nothing is.
bw_install_packages() {
    local missing
    if ! command -v dpkg-query >/dev/null; then
        bw_say "This is no Debian system: expecting what tools/packages.txt names to be there already."
        return
    fi
    mapfile -t missing < <(bw_missing_packages "$@")
    [ "${#missing[@]}" = 0 ] && return

    bw_say "Installing Debian packages: ${missing[*]}"
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null ||
            bw_fail "That needs root, and there is no sudo. As root: apt-get install ${missing[*]}"
        bw_say "That needs root, so sudo may ask for your password."
        if [ -t 0 ]; then sudo --validate; else sudo --non-interactive true 2>/dev/null; fi ||
            bw_fail "sudo is not allowed here. As root: apt-get install ${missing[*]}"
    fi
    bw_logged apt-update.log bw_apt_get update ||
        bw_say "Going on with the package lists as they are."
    bw_logged apt-install.log bw_apt_get install -y --no-install-recommends "${missing[@]}" ||
        bw_fail "The packages could not be installed."
}

# bw_unpack_packages GROUP...: fetches the packages of those groups and unpacks each into build/unpacked/NAME, once. They
# are not installed: nothing of them takes hold of this system, and nobody needs to be root for it.
bw_unpack_packages() {
    local name
    command -v dpkg-deb >/dev/null || return 0
    for name in $(bw_packages "$@"); do
        [ -d "$BW_ROOT/build/unpacked/$name" ] || bw_unpack "$name" ||
            bw_fail "The Debian package $name could not be fetched and unpacked."
    done
}

bw_unpack() {
    local folder=$BW_ROOT/build/unpacked/$1
    rm -rf "$folder.part"
    mkdir -p "$folder.part"
    bw_say "Fetching the Debian package $1, to be unpacked only"
    # The lists of packages may be missing, or name a version that has been replaced since.
    bw_download "$1" "$folder.part" 2>/dev/null ||
        { bw_logged apt-update.log bw_apt_get update && bw_download "$1" "$folder.part"; } || return
    dpkg-deb -x "$folder.part"/*.deb "$folder.part" || return
    rm "$folder.part"/*.deb
    mv "$folder.part" "$folder"
}

# bw_download PACKAGE FOLDER: for one that only stands for its newest version (linux-image-amd64), that version.
bw_download() {
    local newest
    newest=$(apt-cache depends --important "$1" | sed -n "s/^ *Depends: \(${1%-*}-[0-9].*\)/\1/p")
    (cd "$2" && bw_logged apt-download.log apt-get download "${newest:-$1}")
}

# bw_is_configured PRESET: whether ninja can take it from here; it configures again when the build description changes.
bw_is_configured() {
    local build=$BW_ROOT/build/$1
    [ -f "$build/build.ninja" ] && grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$BW_ROOT" "$build/CMakeCache.txt"
}

# bw_configure PRESET OPTION...: configures; a checkout that was moved or copied starts afresh.
bw_configure() {
    local preset=$1 fresh=()
    shift
    bw_is_configured "$preset" || fresh=(--fresh)
    (cd "$BW_ROOT" && bw_logged "configure-$preset.log" cmake --preset "$preset" "${fresh[@]}" "$@") ||
        bw_fail "The $preset build could not be configured."
}

# bw_build PRESET TARGET...: builds those targets, or everything.
bw_build() {
    local preset=$1 targets=()
    shift
    [ "$#" = 0 ] || targets=(--target "$@")
    (cd "$BW_ROOT" && NINJA_STATUS='[%f/%t] ' cmake --build --preset "$preset" "${targets[@]}") >&2 ||
        bw_fail "The $preset build failed."
}
