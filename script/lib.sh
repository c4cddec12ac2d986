# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# What the scripts share. Sourced first; it makes the top of the project the working directory, and
# the scripts do the same in every environment.

self=$(readlink -f "$0")
script=${self##*/}
# Paths that are given to a script are meant from here.
# shellcheck disable=SC2034
caller=$PWD
unset CDPATH DESTDIR
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." || exit
# Under a stricter one, nobody else could use a package.
# shellcheck disable=SC2034
caller_umask=$(umask)
umask 022
# Folders may have any letter in their names, which the toolkit's tools read as the locale says.
if [ "$(locale charmap 2>/dev/null)" != UTF-8 ]; then
    export LANG=${LC_ALL:-${LANG:-C}} LC_CTYPE=C.UTF-8
    unset LC_ALL
fi

say() { printf '%s: %s\n' "$script" "$1"; }
# fail <line>...
fail() {
    say "$1" >&2
    shift
    [ $# -eq 0 ] || printf '%s\n' "$@" >&2
    exit 1
}

# begin <most> <argument>...: answers --help with the head of the script, refuses other options and
# more than <most> arguments, and waits until no other script works in this folder.
begin() {
    local most=$1 argument
    shift
    for argument in "$@"; do
        case $argument in
            -h | --help)
                sed -n '2,/^[^#]/{/^#/!d; /SPDX/d; s/^# \{0,1\}//; p}' "$self"
                exit 0
                ;;
            -*) fail "there is no option $argument; see --help" ;;
        esac
    done
    [ $# -le "$most" ] || fail "too many arguments; see --help"
    lock
}

# The lock is file 9, which the scripts that this one calls inherit.
lock() {
    mkdir -p build 2>/dev/null || fail "cannot make the folder $PWD/build"
    [ -w build ] || fail "$PWD/build belongs to $(stat -c %U build), and you cannot write to it"
    [ ! /proc/self/fd/9 -ef build/lock ] || return 0
    exec 9>build/lock
    flock --nonblock 9 || {
        say "waiting for another script in this folder to end"
        flock 9
    }
}

unlock() { exec 9>&-; }

# Gives what root made in build/, apart from whole systems, to the owner of the project.
give_back() {
    [ "$(id -u)" -ne 0 ] || [ -O . ] ||
        find build -path build/bare -prune -o -exec chown --no-dereference --reference=. {} +
}

# Tests and pictures are the same whatever the caller's desktop asks of the toolkit.
forget_desktop() {
    unset "${!QT_@}"
    export QT_QPA_PLATFORM=offscreen
}

# logged <command>...: shows what the command says only if it fails.
logged() {
    local log=build/$script.log
    "$@" >"$log" 2>&1 </dev/null || {
        tail -n 20 "$log" >&2
        fail "this did not work: $*"
    }
}

# The flags of Debian's own packages with all hardening: the program opens files of strangers.
hardened_flags() {
    local get=(env DEB_BUILD_MAINT_OPTIONS='hardening=+all reproducible=-fixfilepath'
        DEB_CXXFLAGS_MAINT_STRIP='-g -O2' DEB_CXXFLAGS_MAINT_APPEND=-fstack-clash-protection
        dpkg-buildflags --get)
    CXXFLAGS="${CXXFLAGS:-} $("${get[@]}" CXXFLAGS) $("${get[@]}" CPPFLAGS)"
    LDFLAGS="${LDFLAGS:-} $("${get[@]}" LDFLAGS)"
    export CXXFLAGS LDFLAGS
}

# The same commit gives the same bytes: the date of a package is that of the commit, or of the
# version's entry in the list of changes.
set_date() {
    local date
    date=$(sed -n 's/^ -- .*>  //p' packaging/changelog.in | sed -n 1p)
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || date -d "$date" +%s)
    export SOURCE_DATE_EPOCH
}

# configure <preset> [<option>...]: into build/<preset>, from the start when the project has moved or
# another compiler is asked for.
configure() (
    [ "$1" != release ] || hardened_flags
    key="$(pwd -P) ${CXX:-} ${CXXFLAGS:-} ${LDFLAGS:-}"
    from_start=()
    [ "$(cat "build/$1.key" 2>/dev/null)" = "$key" ] || from_start=(--fresh)
    log=build/configure-$1.log
    cmake "${from_start[@]}" --preset "$@" >"$log" 2>&1 </dev/null || {
        cat "$log" >&2
        fail "the preset $1 does not configure"
    }
    printf '%s\n' "$key" >"build/$1.key"
)

build() { cmake --build --preset "$@" -- --quiet; }

# missing <package>...: those that are not installed for this machine, one per line. Packages of
# another architecture may stand beside them.
missing() {
    local native
    native=$(dpkg --print-architecture)
    LC_ALL=C dpkg-query -W -f '${db:Status-Status} ${Architecture} ${Package}\n' "$@" 2>/dev/null |
        sed -nE "s/^installed ($native|all) //p" | LC_ALL=C sort -u |
        LC_ALL=C comm -13 - <(printf '%s\n' "$@" | LC_ALL=C sort -u) || :
}

# packaged <package> [<start of its version, as a pattern>]: whether apt could install it.
packaged() { [[ $(LC_ALL=C apt-cache policy "$1" 2>/dev/null) =~ Candidate:\ ${2:-[^(]} ]]; }

can_be_root() { [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null; }

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

# apt_get <argument>...: as root; waits up to ten minutes for other package tools to end.
apt_get() {
    local log=build/apt.log waited=0
    until as_root env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get -q "$@" >"$log" 2>&1 </dev/null; do
        grep -Eq '^E: (Could not get lock|Unable to (lock|acquire))' "$log" || return 1
        [ $waited -gt 0 ] || say "another program is installing packages: waiting for it"
        [ $waited -lt 600 ] || return 1
        sleep 5
        waited=$((waited + 5))
    done
}

# An unreachable package source is no reason to stop if the others have everything.
updated=no
update_lists() {
    [ $updated = no ] || return 0
    updated=yes
    say "refreshing the package lists"
    apt_get update || {
        say "not all package lists could be refreshed:"
        grep '^[EW]:' build/apt.log | sed 's/^/    /'
    }
}

# Fresh containers have none.
fill_empty_lists() {
    # shellcheck disable=SC2016
    [ -n "$(LC_ALL=C apt-get indextargets --format '$(FILENAME)' 'Created-By: Packages')" ] ||
        ! can_be_root || update_lists
}

install_packages() {
    local wanted
    mapfile -t wanted < <(missing "$@")
    [ ${#wanted[@]} -gt 0 ] || return 0
    local line="apt-get update && apt-get install --no-install-recommends ${wanted[*]}"
    say "missing packages: ${wanted[*]}"
    can_be_root ||
        fail "installing them needs root or sudo. Ask an administrator to run" "    $line"
    [ "$(id -u)" -eq 0 ] || say "installing them with sudo, which may ask for your password"
    update_lists
    say "installing the missing packages"
    apt_get install -y --no-install-recommends "${wanted[@]}" || {
        tail -n 20 build/apt.log >&2
        fail "the packages could not be installed. Remove the cause shown above, or ask an" \
            "administrator to run" "    $line"
    }
}

# clang_sanitizers <compiler>: where it is clang, the packages of its sanitizers and of the program by
# which they name functions, also those whose leaks are known.
clang_sanitizers() {
    case $("$1" --version 2>/dev/null) in
        *clang*) printf '%s\n' "libclang-rt-$("$1" -dumpversion | cut -d. -f1)-dev" llvm ;;
    esac
}

# The mirror that apt takes Debian's packages from; nothing where it has none.
debian_mirror() {
    local sites
    # shellcheck disable=SC2016
    mapfile -t sites < <(LC_ALL=C apt-get indextargets --format '$(SITE)' 'Created-By: Packages' \
        'Origin: Debian' 'Label: Debian' | LC_ALL=C sort -u)
    printf '%s\n' "${sites[0]:-}"
}

# fetch_source <path below pool/main> <SHA-256> <folder>: one file of Debian's package archive.
fetch_source() {
    local site log name=${1##*/} folder
    folder=$(cd "$3" && pwd)
    log=$PWD/build/fetch.log
    site=$(debian_mirror)
    [ -n "$site" ] || fail "$name is needed from Debian's archive, and apt has no mirror of Debian"
    say "fetching $name from $site"
    (cd "$folder" && LC_ALL=C /usr/lib/apt/apt-helper -o APT::Sandbox::User="$(id -un)" \
        download-file "$site/pool/main/$1" "$name" "SHA256:$2") >"$log" 2>&1 </dev/null || {
        grep '^E:' "$log" >&2
        fail "$name could not be fetched. It is needed once: can you reach $site?"
    }
}
