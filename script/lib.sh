# shellcheck shell=bash
# What several scripts share; sourced at the top of the project.

script=$(basename "$0")

say() { printf '%s: %s\n' "$script" "$1"; }
fail() {
    printf '%s: %s\n' "$script" "$1" >&2
    exit 1
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        env DEBIAN_FRONTEND=noninteractive "$@"
    elif command -v sudo >/dev/null; then
        sudo env DEBIAN_FRONTEND=noninteractive "$@"
    else
        fail "installing packages takes root or sudo, and neither is at hand"
    fi
}

installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

packaged() {
    LC_ALL=C apt-cache policy "$1" 2>/dev/null | grep -q 'Candidate: [^(]'
}

logged() {
    local log=build/$script.log
    mkdir -p build
    if ! "$@" >"$log" 2>&1 </dev/null; then
        tail -n 20 "$log" >&2
        fail "this did not work: $*"
    fi
}

# configure <preset> [<option>...]: into build/<preset>; shows what CMake says only if it fails.
configure() {
    mkdir -p build
    cmake --preset "$@" >"build/configure-$1.log" 2>&1 </dev/null || {
        cat "build/configure-$1.log" >&2
        fail "the preset $1 does not configure"
    }
}

build() { cmake --build --preset "$@" -- --quiet; }

updated=no
update_lists() {
    [ $updated = no ] || return 0
    say "refreshing the package lists"
    logged as_root apt-get update -q
    updated=yes
}

install_packages() {
    local missing=()
    for package in "$@"; do
        installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    update_lists
    say "installing ${missing[*]}"
    logged as_root apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# The mirror that apt takes Debian's packages from; nothing when there is none.
debian_mirror() {
    # shellcheck disable=SC2016
    apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 'Origin: Debian' \
        'Label: Debian' | sort -u | head -n 1
}
