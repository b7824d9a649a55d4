#!/usr/bin/env bash
# setup_machine.sh: installs what the build, the tests and the benchmarks need, on Debian and its kin. It says what it
# does, does nothing where all is there, and asks for root's rights by sudo only when it needs them.
set -euo pipefail

commands=(cmake ninja c++ pkg-config python3 doxygen)
libraries=(libmpdec gtest benchmark)
packages=(cmake ninja-build g++ pkg-config python3 libgtest-dev libbenchmark-dev doxygen)
# What the tests of the network talk to; they skip what a machine can't have.
peer_commands=(openssl microsocks danted nginx)
peer_packages=(openssl libssl-dev microsocks dante-server nginx-light)
peer_services=(danted nginx)
PATH=$PATH:/usr/sbin:/sbin

say() { echo "set-up: $*"; }
give_up() { echo "set-up: $*" >&2; exit 1; }

is_installed() { command -v "$1" >/dev/null; }
has_library() { is_installed pkg-config && pkg-config --exists "$1"; }

list_missing() {
    local name
    for name in "${commands[@]}"; do is_installed "$name" || echo "$name"; done
    for name in "${libraries[@]}"; do has_library "$name" || echo "$name"; done
}

list_missing_peers() {
    local name
    for name in "${peer_commands[@]}"; do is_installed "$name" || echo "$name"; done
    has_library openssl || echo libssl
}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo env DEBIAN_FRONTEND=noninteractive "$@"; fi
}

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

# The tests start their own servers: those of the packages are neither started now nor with the machine.
install_peers() {
    local policy=/usr/sbin/policy-rc.d package made=
    if [ ! -e "$policy" ]; then
        printf '#!/bin/sh\nexit 101\n' | as_root tee "$policy" >/dev/null
        as_root chmod 755 "$policy"
        made=1
    fi
    for package in "${peer_packages[@]}"; do
        as_root apt-get -qq install --no-install-recommends -y "$package" ||
            say "no package $package here: some tests of the network will be skipped"
    done
    [ -z "$made" ] || as_root rm "$policy"
    if is_installed systemctl; then
        as_root systemctl -q disable "${peer_services[@]}" || say "could not disable ${peer_services[*]}"
    fi
}

can_install() { is_installed apt-get && { [ "$(id -u)" = 0 ] || is_installed sudo; }; }

missing=$(list_missing)
missing_peers=$(list_missing_peers)
if [ -z "$missing$missing_peers" ]; then
    exit 0
fi
say "missing:" $missing $missing_peers
if [ -z "$missing" ] && ! can_install; then
    say "some tests of the network will be skipped"
    exit 0
fi
is_installed apt-get || give_up "no apt-get here: install these by hand"
can_install || give_up "run this once as root"
export DEBIAN_FRONTEND=noninteractive

as_root apt-get -qq update || say "some of the machine's sources could not be read; going on with the others"
if [ -n "$missing_peers" ]; then
    say "installing ${peer_packages[*]}"
    install_peers
fi
if [ -z "$missing" ]; then
    exit 0
fi
say "installing ${packages[*]}"
as_root apt-get -qq install --no-install-recommends -y "${packages[@]}"
if ! has_library libmpdec; then
    if [ -n "$(apt-cache madison libmpdec-dev 2>/dev/null)" ]; then
        say "installing libmpdec-dev"
        as_root apt-get -qq install --no-install-recommends -y libmpdec-dev
    else
        install_mpdec_of_trixie
    fi
fi

missing=$(list_missing)
[ -z "$missing" ] || give_up "still missing: ${missing//$'\n'/ }"
say "all is there"
