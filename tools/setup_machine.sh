#!/usr/bin/env bash
# setup_machine.sh [peers]: installs what the build, the tests and the benchmarks need, on Debian and its kin; with the word
# peers also the programs that some tests talk to, and skip without. It says what it does, does nothing where all is there,
# and asks for root's rights by sudo only when it needs them.
set -euo pipefail

commands=(cmake ninja make c++ pkg-config python3)
libraries=(libmpdec gtest benchmark)
packages=(cmake ninja-build make g++ pkg-config python3 libgtest-dev libbenchmark-dev)
peer_commands=(chromedriver chromium doxygen openssl danted nginx mandoc zsh fish vim)
peer_libraries=(openssl)
peer_packages=(chromium chromium-driver doxygen openssl libssl-dev dante-server nginx-light mandoc zsh fish vim)
peer_services=(danted nginx)
PATH=$PATH:/usr/sbin:/sbin

say() { echo "set-up: $*"; }
give_up() { echo "set-up: $*" >&2; exit 1; }

is_installed() { command -v "$1" >/dev/null; }
has_library() { is_installed pkg-config && pkg-config --exists "$1"; }

# list_missing COMMANDS LIBRARIES: those of the names in two arrays that are not there, in one line.
list_missing() {
    local -n wanted_commands=$1 wanted_libraries=$2
    local name absent=()
    for name in "${wanted_commands[@]}"; do is_installed "$name" || absent+=("$name"); done
    for name in "${wanted_libraries[@]}"; do has_library "$name" || absent+=("$name"); done
    echo "${absent[*]}"
}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo env DEBIAN_FRONTEND=noninteractive "$@"; fi
}

install() { as_root apt-get -qq -o Dpkg::Use-Pty=0 install --no-install-recommends -y "$@"; }

# write_entries RELEASE FOLDER: writes each entry of the machine's own sources for its release, with the suite replaced
# by RELEASE, into a file in a folder of its own: both the one-line form (.list) and the stanza form (.sources).
write_entries() {
    local release=$1 folder=$2 codename file line count=0
    local one_line='^deb[[:space:]]+(\[[^]]*\][[:space:]]+)?([^[:space:]]+)[[:space:]]+([^[:space:]]+)[[:space:]]'
    codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
    shopt -s nullglob
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -f "$file" ] || continue
        while read -r line; do
            [[ $line =~ $one_line && ${BASH_REMATCH[3]} = "$codename" ]] || continue
            mkdir "$folder/list$((++count))"
            echo "deb ${BASH_REMATCH[1]}${BASH_REMATCH[2]} $release main" >"$folder/list$count/entry.list"
        done <"$file"
    done
    for file in /etc/apt/sources.list.d/*.sources; do
        awk -v codename="$codename" -v release="$release" -v folder="$folder/stanza$((++count))-" '
            BEGIN { RS = ""; FS = "\n" }
            {
                wanted = 0; text = ""
                for (i = 1; i <= NF; i++) {
                    line = $i; key = tolower(line); sub(/:.*/, "", key)
                    if (line ~ /^#/) continue
                    if (key == "enabled" && tolower(line) ~ /no[ \t]*$/) { wanted = 0; break }
                    if (key == "suites") { wanted = (line " ") ~ ("[ \t]" codename "[ \t]"); line = "Suites: " release }
                    if (key == "components") line = "Components: main"
                    if (key == "types") line = "Types: deb"
                    text = text line "\n"
                }
                if (!wanted) next
                system("mkdir " folder NR)
                print text >(folder NR "/entry.sources")
            }' "$file"
    done
    shopt -u nullglob
}

# apt_apart FOLDER COMMAND...: apt-get with the sources in FOLDER alone, and with lists and cache of its own there.
apt_apart() {
    local folder=$1
    shift
    mkdir -p "$folder/lists/partial" "$folder/cache/archives/partial"
    as_root apt-get -qq -o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$folder" \
        -o Dir::State::Lists="$folder/lists" -o Dir::Cache="$folder/cache" \
        -o Dir::Etc::Preferences=/dev/null -o Dir::Etc::PreferencesParts=/dev/null \
        -o APT::Default-Release= -o APT::Sandbox::User=root "$@"
}

# Debian 12 has no libmpdec-dev. The packages of Debian 13 need nothing but a C library that is old enough.
install_mpdec_of_trixie() {
    local work entry
    is_installed dpkg && [ "$(. /etc/os-release && echo "${ID:-}")" = debian ] ||
        give_up "no package libmpdec-dev here: install libmpdec 4 with its header and libmpdec.pc by hand"
    work=$(mktemp -d)
    trap 'as_root rm -rf "'"$work"'"' EXIT
    chmod 755 "$work"
    say "this release has no libmpdec-dev: taking libmpdec4 and libmpdec-dev of Debian 13 by this machine's own"
    say "sources, with lists and cache in $work; the machine's sources stay as they are"
    write_entries trixie "$work"
    for entry in "$work"/*/; do
        if apt_apart "$entry" update && (cd "$work" && apt_apart "$entry" download libmpdec4 libmpdec-dev); then
            as_root dpkg -i "$work"/libmpdec4_*.deb "$work"/libmpdec-dev_*.deb
            return
        fi
    done
    give_up "could not get libmpdec4 and libmpdec-dev of Debian 13"
}

install_base() {
    say "installing ${packages[*]}"
    install "${packages[@]}"
    if ! has_library libmpdec && [ -n "$(apt-cache madison libmpdec-dev 2>/dev/null)" ]; then
        say "installing libmpdec-dev"
        install libmpdec-dev
    fi
    has_library libmpdec || install_mpdec_of_trixie
}

# The tests start their own servers: those of the packages are started neither now nor with the machine.
install_peers() {
    local policy=/usr/sbin/policy-rc.d package made=
    say "installing ${peer_packages[*]}"
    if [ ! -e "$policy" ]; then
        printf '#!/bin/sh\nexit 101\n' | as_root tee "$policy" >/dev/null
        as_root chmod 755 "$policy"
        made=1
    fi
    for package in "${peer_packages[@]}"; do
        install "$package" || say "no package $package here"
    done
    [ -z "$made" ] || as_root rm "$policy"
    if is_installed systemctl; then
        as_root systemctl -q disable "${peer_services[@]}" || say "could not disable ${peer_services[*]}"
    fi
}

missing=$(list_missing commands libraries)
missing_peers=
[ "${1-}" != peers ] || missing_peers=$(list_missing peer_commands peer_libraries)
[ -n "$missing$missing_peers" ] || exit 0

say "missing: $missing $missing_peers"
if ! is_installed apt-get || { [ "$(id -u)" != 0 ] && ! is_installed sudo; }; then
    [ -z "$missing" ] || give_up "install these by hand, or run this as root where there is apt-get"
    say "some tests will be skipped"
    exit 0
fi
export DEBIAN_FRONTEND=noninteractive
as_root apt-get -qq update || say "some of the machine's sources could not be read; going on with the others"
[ -z "$missing" ] || install_base
[ -z "$missing_peers" ] || install_peers

missing=$(list_missing commands libraries)
[ -z "$missing" ] || give_up "still missing: $missing"
say "done"
