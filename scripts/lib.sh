# Sourced by the other scripts: where things are, and the packages they need on Debian 12.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine-prefix}
# Debian's own Python, which has Debian's modules, whatever stands first on PATH.
python=/usr/bin/python3

packages_to_build=(g++ cmake ninja-build libcli11-dev libfmt-dev libtomlplusplus-dev)
packages_to_plot=(gnuplot-nox)
packages_to_test=(
    g++-mingw-w64-x86-64-posix # the Windows build
    wine64                     # runs it
    llvm                       # llvm-dlltool, llvm-readobj
    lld                        # links the Windows tests; lld-link stands for MSVC's linker
    clang clang-format clang-tidy libclang-rt-14-dev
    binutils                   # nm
    googletest                 # sources in /usr/src/googletest
    libbenchmark-dev
    procps
    python3 python3-can
    python3-scipy python3-mpmath # the reference of the filter designer
    locales                      # a decimal comma
    "${packages_to_plot[@]}"
)

say() { printf "\n== %s\n" "$*"; }

# The seed of random inputs: another one for each run, unless TORVIK_SEED replays one.
new_seed() { echo "${TORVIK_SEED:-$SRANDOM}"; }

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# install_missing PACKAGE...: installs those that are not there yet; needs root or sudo only then.
install_missing() {
    local package missing=() as_root=()
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if ! command -v apt-get >/dev/null; then
        echo "These Debian packages are missing and there is no apt-get: ${missing[*]}" >&2
        return 1
    fi
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "Install as root: apt-get install ${missing[*]}" >&2; return 1; }
        as_root=(sudo)
    fi
    say "installing ${missing[*]}"
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq update </dev/null >&2 &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends \
            "${missing[@]}" </dev/null >&2
}

# build PRESET [TARGET...]: configures and builds.
build() {
    local preset=$1
    shift
    (cd "$root" && cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"})
}
