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

# bw_into_log LOG COMMAND...: runs the command with its output in build/log/LOG, and on the terminal, too, if BW_VERBOSE is set.
bw_into_log() {
    local log=$BW_LOGS/$1
    shift
    mkdir -p "$BW_LOGS"
    if [ -n "${BW_VERBOSE:-}" ]; then
        "$@" 2>&1 | tee "$log" >&2
    else
        "$@" >"$log" 2>&1
    fi
}

# bw_logged LOG COMMAND...: the same, and shows the end of the output on failure.
bw_logged() {
    local status=0
    bw_into_log "$@" || status=$?
    if [ "$status" != 0 ]; then
        [ -n "${BW_VERBOSE:-}" ] || tail -n 40 "$BW_LOGS/$1" >&2
        bw_say "Failed ($status): ${*:2}" "The whole output is in $BW_LOGS/$1."
    fi
    return "$status"
}

# bw_packages GROUP...: the names listed in those groups of packages.txt.
bw_packages() {
    local release
    # Debian's next release has no number.
    release=$(. /etc/os-release 2>/dev/null && printf '%s' "${VERSION_ID:-99}") || release=99
    awk -v wanted=" $* " -v release="$release" '
        { sub(/#.*/, "") }
        $1 ~ /^\[.*\]$/ { split(substr($1, 2, length($1) - 2), group, "@"); next }
        NF && index(wanted, " " group[1] " ") && release + 0 >= group[2] + 0 { print $1 }' "$BW_ROOT/tools/packages.txt"
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
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        bw_expect_libraries
        return
    fi
    mapfile -t missing < <(bw_missing_packages "$@")
    [ "${#missing[@]}" = 0 ] && return

    bw_say "Installing Debian packages: ${missing[*]}"
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null ||
            bw_fail "Installing packages needs root, and there is no sudo; as root, please run: apt-get install ${missing[*]}"
        bw_say "That needs root, so sudo may ask for your password."
        if [ -t 0 ]; then sudo --validate; else sudo --non-interactive true 2>/dev/null; fi ||
            bw_fail "Installing packages needs root, and sudo refuses; as root, please run: apt-get install ${missing[*]}"
    fi
    bw_refresh_lists || bw_say "Not all package lists could be fetched; going on with those that are here."
    bw_into_log apt-install.log bw_apt_get install -y --no-install-recommends "${missing[@]}" ||
        bw_explain_failure "${missing[@]}"
}

# Fails if any list could not be fetched; apt-get alone would call that a success.
bw_refresh_lists() { bw_into_log apt-update.log bw_apt_get update -o APT::Update::Error-Mode=any; }

# bw_explain_failure PACKAGE...: ends with what to do now that apt-get could not install them.
bw_explain_failure() {
    local reason again="start $0 again; still missing"
    if grep -q 'Failed to fetch' "$BW_LOGS/apt-install.log" ||
        { grep -q 'Unable to locate\|no installation candidate' "$BW_LOGS/apt-install.log" &&
            grep -q 'Failed to fetch' "$BW_LOGS/apt-update.log"; }; then
        bw_fail "The Debian packages could not be fetched; please connect this computer to the network and $again: $*"
    fi
    reason=$(sed -n 's/^E: //p' "$BW_LOGS/apt-install.log" | sed q)
    bw_fail "apt-get could not install the Debian packages (${reason:-see $BW_LOGS/apt-install.log}); please mend that" \
        "and $again: $*"
}

# On systems without Debian's package manager: whether what the build needs is there.
bw_expect_libraries() {
    local missing
    mapfile -t missing < <(bw_missing_libraries)
    [ "${#missing[@]}" = 0 ] ||
        bw_fail "This is no Debian system, so please install with its own tools what is missing, and start $0 again:" \
            "${missing[*]}"
    bw_say "This is no Debian system; building with what is installed."
}

# The programs and, by their names in pkg-config, the libraries that the build lacks.
bw_missing_libraries() {
    local name
    for name in cmake ninja c++ pkg-config; do
        command -v "$name" >/dev/null || echo "$name"
    done
    for name in $(sed -n -e 's/^find_package(Qt6 .*COMPONENTS \(.*\))$/ \1/;T;s/ \([A-Z]\)/ Qt6\1/gp' "$BW_ROOT/CMakeLists.txt") \
        $(sed -n 's/^pkg_check_modules(.*IMPORTED_TARGET \(.*\))$/\1/p' "$BW_ROOT/CMakeLists.txt"); do
        pkg-config --exists "$name" 2>/dev/null || echo "$name"
    done
    c++ -E -x c++ - <<<'#include <libyuv.h>' >/dev/null 2>&1 || echo libyuv # has no entry in pkg-config
}

# bw_unpack_packages GROUP...: fetches the packages of those groups and unpacks each into build/unpacked/NAME, once. They
# are not installed: nothing of them takes hold of this system, and nobody needs to be root for it.
bw_unpack_packages() {
    local name
    command -v dpkg-deb >/dev/null && command -v apt-get >/dev/null || return 0
    for name in $(bw_packages "$@"); do
        [ -d "$BW_ROOT/build/unpacked/$name" ] || bw_unpack "$name" ||
            bw_fail "A Debian package could not be fetched; please connect this computer to the network and start $0" \
                "again; still missing: $name"
    done
}

bw_unpack() {
    local folder=$BW_ROOT/build/unpacked/$1
    rm -rf "$folder.part"
    mkdir -p "$folder.part"
    bw_say "Fetching the Debian package $1, to be unpacked only"
    # The lists of packages may be missing, or name a version that has been replaced since.
    bw_download "$1" "$folder.part" || { bw_refresh_lists || true; bw_download "$1" "$folder.part"; } || return
    dpkg-deb -x "$folder.part"/*.deb "$folder.part" || return
    rm "$folder.part"/*.deb
    mv "$folder.part" "$folder"
}

# bw_download PACKAGE FOLDER: for one that only stands for its newest version (linux-image-amd64), that version.
bw_download() {
    local newest
    newest=$(apt-cache depends --important "$1" 2>/dev/null | sed -n "s/^ *Depends: \(${1%-*}-[0-9].*\)/\1/p")
    (cd "$2" && bw_into_log apt-download.log apt-get download "${newest:-$1}")
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
        bw_fail "The $preset build could not be configured; please mend what CMake reports above and start $0 again."
}

# bw_build PRESET TARGET...: builds those targets, or everything.
bw_build() {
    local preset=$1 targets=()
    shift
    [ "$#" = 0 ] || targets=(--target "$@")
    [ -z "${BW_VERBOSE:-}" ] || targets+=(--verbose)
    (cd "$BW_ROOT" && NINJA_STATUS='[%f/%t] ' cmake --build --preset "$preset" "${targets[@]}") >&2 ||
        bw_fail "The $preset build failed."
}
