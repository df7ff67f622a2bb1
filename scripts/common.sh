# Shared by the scripts; to be sourced. Sets `root`, the top folder of the project.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

packages_to_build="cmake ninja-build g++ libelf-dev libsystemd-dev scdoc
    qt6-base-dev qt6-5compat-dev qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools"
packages_to_run="libqt6sql6-sqlite fonts-dejavu-core procps libsystemd0"
packages_to_test="libgtest-dev libgmock-dev python3 binutils pkgconf xvfb systemd jq libxml2-utils strace doxygen graphviz"
packages_to_measure="libexpat1-dev libboost-dev libboost-filesystem-dev valgrind python3" # scripts/bench
packages_to_fuzz="clang llvm libclang-rt-14-dev" # scripts/fuzz
packages_to_lint="clang-tidy-14 cppcheck" # scripts/lint
packages_to_cover="gcovr" # scripts/coverage
packages_to_package="dpkg-dev file gzip lintian" # scripts/package
packages_to_bootstrap="mmdebstrap arch-test" # scripts/test-packages, scripts/test-i386

say()
{
    printf '== %s\n' "$*" >&2
}

# install_packages NAME...: asks apt-get for those that are missing, for nothing when all are there.
install_packages()
{
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}\n' "$package" 2>/dev/null | grep -q ' installed$' || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    say "installing ${missing[*]}"
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo)
        type sudo >/dev/null 2>&1 || { say "these packages are missing and need root to install"; return 1; }
    fi
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
        -o DPkg::Lock::Timeout=300 "${missing[@]}" >/dev/null
}

# mirrors SUITE...: what this machine's apt uses for these suites of Debian, as lines of a sources.list
mirrors()
{
    apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
        grep -E " ($(IFS='|' && echo "$*")) main\$" | sort -u
}

# bootstrap ARCHITECTURE TARGET [PACKAGE...] <MIRRORS: a small Debian 12 with these packages, as a folder or tar file
bootstrap()
{
    local architecture=$1 target=$2 part=$root/build/part.${2##*/} # with the ending, which tells the format
    shift 2
    rm -rf --one-file-system "$part"
    say "fetching a Debian 12 for $architecture"
    mmdebstrap --mode=root --variant=minbase --dpkgopt=force-unsafe-io --architectures="$architecture" \
        ${1:+"--include=$*"} bookworm "$part" - 2>"$root/build/mmdebstrap.log" ||
        { tail -n 20 "$root/build/mmdebstrap.log" >&2; return 1; }
    mv "$part" "$target"
}

# build PRESET [CMAKE ARGUMENT...]
build()
{
    local preset=$1
    shift
    say "building build/$preset"
    (cd "$root" && cmake --preset "$preset" "$@" >"$root/build/$preset.log" 2>&1) ||
        { cat "$root/build/$preset.log" >&2; return 1; }
    cmake --build "$root/build/$preset"
}

mkdir -p "$root/build"
