# What ./vx, ./check and bench/compare share: from a fresh clone to a finished build. To be sourced; sets nothing but functions and
# "root" and "build", the source and the build folder.

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
build=$root/build

# One line on standard error; results go to standard output.
say() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }

# The packages of the named groups of packages.txt.
packages_of() {
    awk -v groups=" $* " '
        /^# group:/ { wanted = index(groups, " " $3 " ") > 0; next }
        /^[^#]/ && wanted { print $1 }' "$root/packages.txt"
}

# Those of the named packages that are not installed.
missing_of() {
    dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null | awk -v wanted="$*" '
        $1 == "installed" { have[$2] = 1 }
        END { n = split(wanted, names, " "); for (i = 1; i <= n; ++i) if (!(names[i] in have)) print names[i] }'
}

# Installs what is missing of the named groups of packages.txt.
install_packages() {
    local wanted missing as_root=()
    wanted=$(packages_of "$@" | xargs)
    if ! command -v dpkg-query apt-get >/dev/null; then
        say "cannot install packages, there is no apt-get: install what Debian calls: $wanted"
        say 'then configure by hand: cmake --preset release'
        return 1
    fi
    missing=$(missing_of "$wanted" | xargs)
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" != 0 ]; then
        if ! command -v sudo >/dev/null; then
            say "cannot install packages, neither root nor sudo: as root, apt-get install $missing"
            return 1
        fi
        as_root=(sudo)
    fi
    say "installing $missing"
    mkdir -p "$build"
    install_now() {
        # shellcheck disable=SC2086 # one word a package
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y --no-install-recommends $missing </dev/null
    }
    # Without package lists, or with old ones, the first try fails at once.
    if ! { install_now || { "${as_root[@]}" apt-get update </dev/null && install_now; }; } \
        >"$build/packages.log" 2>&1; then
        tail -n 20 "$build/packages.log" >&2
        say "cannot install $missing: see $build/packages.log"
        return 1
    fi
}

# configure PRESET [OPTION...]
configure() {
    local preset=$1
    shift
    # Debian's versioned compiler package has no plain "c++".
    if [ -z "${CXX:-}" ] && [ -z "${CC:-}" ] && command -v g++-12 gcc-12 >/dev/null; then
        local -x CC=gcc-12 CXX=g++-12
    fi
    (cd "$root" && cmake --preset "$preset" "$@") </dev/null
}

# Waits until no other ./vx or ./check builds here; release_build lets the next one in.
claim_build() {
    mkdir -p "$build"
    exec 9>"$build/.lock"
    flock --nonblock 9 || { say 'waiting for another build to end' && flock 9; }
}
release_build() { exec 9>&-; }

# bring_up_to_date TARGET...: installs, configures and builds what is missing; silent when there is nothing to do. Exits
# when it fails.
bring_up_to_date() {
    # Newer than all that decides what must be installed and configured; gone while that is under way.
    local ready=$build/.ready log=$build/build.log
    configured() {
        [ -f "$build/build.ninja" ] && [ -f "$ready" ] && ! [ "$root/packages.txt" -nt "$ready" ] &&
            ! [ "$root/CMakePresets.json" -nt "$ready" ]
    }
    make_ready() {
        say 'building, which takes a few minutes the first time'
        # Where somebody has configured by hand, packages are their own business.
        [ -f "$build/build.ninja" ] && ! command -v apt-get >/dev/null || install_packages build run || exit 1
        configure release >"$log" 2>&1 && touch "$ready"
    }
    claim_build
    if ! { configured || make_ready; } || ! cmake --build "$build" --target "$@" >"$log" 2>&1 </dev/null; then
        rm -f "$ready"
        cat "$log" >&2
        say "the build failed: see $log"
        exit 1
    fi
    release_build
}
