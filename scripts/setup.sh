#!/bin/sh
# Installs the Debian packages that are missing. Arguments: groups, of build, test, token, check, docs, package, bench,
# coverage, python, arm64, s390x and i386.
set -eu

packages=
for group in "$@"; do
    case $group in
    build) packages="$packages g++ cmake ninja-build pkgconf libssl-dev nettle-dev libcli11-dev nlohmann-json3-dev" ;;
    test) packages="$packages libgtest-dev ca-certificates openssl gnutls-bin tzdata python3 python3-pytest" ;;
    token) packages="$packages softhsm2 libp11-kit-dev" ;;
    check) packages="$packages clang clang-format clang-tidy libclang-rt-dev python3 abigail-tools binutils" ;;
    docs) packages="$packages doxygen graphviz python3 fonts-dejavu-core" ;;
    package) packages="$packages debhelper dpkg-dev lintian debootstrap" ;;
    bench)
        packages="$packages libbenchmark-dev libmbedtls-dev libgnutls28-dev python3 python3-matplotlib ca-certificates"
        packages="$packages tzdata"
        ;;
    coverage) packages="$packages gcovr" ;;
    python)
        packages="$packages python3-cffi python3-build python3-venv python3-setuptools python3-wheel python3-pytest"
        packages="$packages python3-cryptography mypy flake8 black"
        ;;
    arm64) packages="$packages g++-aarch64-linux-gnu qemu-user" ;;
    s390x) packages="$packages g++-s390x-linux-gnu qemu-user" ;;
    i386) packages="$packages g++-i686-linux-gnu qemu-user" ;;
    *)
        echo "setup.sh: no group of the name $group" >&2
        exit 2
        ;;
    esac
done

missing=
for package in $packages; do
    dpkg-query -W -f='${Status}\n' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

root=
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "These packages are missing, and there is no sudo to install them with:$missing" >&2
        exit 1
    }
    root=sudo
fi
echo "Installing Debian packages:$missing"
$root apt-get update -q
# shellcheck disable=SC2086
$root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing
