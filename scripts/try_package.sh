#!/bin/sh
# Installs the packages that scripts/package.sh made in a clean Debian 12, which debootstrap makes, and uses them there as
# somebody new would: README's first program by pkg-config, shared and static, a project by the CMake package, and the
# program karil from a certificate of the system to a PFX that openssl opens. Removes them again, and times all that.
# KARIL_BUILD_DIR: where the packages are, and where to put the system, instead of build.
set -eu
cd "$(dirname "$0")/.."

if [ "$(id -u)" -ne 0 ]; then
    echo "try_package.sh: debootstrap is possible for root alone, so the packages were not tried" >&2
    exit 1
fi
sh scripts/setup.sh package
build=$(cd "${KARIL_BUILD_DIR:-build}" && pwd)
system=$build/try-package/system
ls "$build"/package/*.deb >/dev/null
# The mirror is the one that apt uses here.
# shellcheck disable=SC2016
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Codename: bookworm' 'Component: main' |
    head -n 1)
# timed TITLE COMMAND...
timed() {
    title=$1 start=$(date +%s)
    shift
    "$@" >"$build/try-package/log" 2>&1 || {
        cat "$build/try-package/log" >&2
        echo "failed: $title" >&2
        exit 1
    }
    echo "$(($(date +%s) - start)) s: $title"
}
# Each in the clean system, without what this one's environment says.
inside() {
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
        chroot "$system" "$@"
}

rm -rf "$system"
mkdir -p "$build/try-package/cache"
timed "a clean Debian 12" debootstrap --variant=minbase --cache-dir="$build/try-package/cache" bookworm "$system" \
    "$mirror"
mkdir "$system/root/packages"
cp "$build"/package/*.deb "$system/root/packages"
rm -f "$system"/root/packages/*-dbgsym_*
cp -r tests/consumer "$system/root/consumer"
awk '/^```c$/ { inside = ++count == 1; next } /^```$/ { inside = 0 } inside' README.md >"$system/root/subject.c"

timed "the packages and what they need" inside sh -c 'apt-get install -q -y --no-install-recommends /root/packages/*.deb'
timed "a compiler, CMake, certificates and openssl" inside \
    apt-get install -q -y --no-install-recommends gcc libc6-dev pkgconf cmake make ca-certificates openssl

cat >"$system/root/library.sh" <<'END'
set -eu
cd /root
certificate=/usr/share/ca-certificates/mozilla/ISRG_Root_X1.crt
openssl x509 -in "$certificate" -outform DER -out root.der
cc -Wall -Wextra -Werror subject.c $(pkg-config --cflags --libs karil) -o subject
./subject <root.der | grep -a 'CN=ISRG Root X1'
cc -Wall -Wextra -Werror subject.c -l:libkaril.a -lcrypto -lnettle -o subject_static
./subject_static <root.der | grep -a 'CN=ISRG Root X1'
cmake -S consumer -B consumer_build
cmake --build consumer_build
consumer_build/by_package
consumer_build/by_pkgconfig
zcat /usr/share/man/man3/KACert_DecodeCert.3karil.gz | grep -q 'SH NAME'
test -f /usr/share/doc/karil/html/index.html
END
cat >"$system/root/program.sh" <<'END'
set -eu
cd /root
umask 022
karil show --json /usr/share/ca-certificates/mozilla/ISRG_Root_X1.crt | grep 'ISRG Root X1'
karil show /usr/share/ca-certificates/mozilla/ISRG_Root_X1.crt | grep 'ISRG Root X1'
karil authority authority --subject 'CN=Try Root,O=Try,C=CN'
karil key -o server.key
karil request --key server.key --subject 'CN=www.example.com,O=Try,C=CN' --dns www.example.com -o server.csr
karil issue --authority authority server.csr --chain chain.pem -o server.pem
openssl verify -CAfile authority/authority.pem server.pem
echo secret >password
karil pfx make --key server.key --cert server.pem --password-file password -o server.pfx
test "$(stat -c %a server.key server.pfx | sort -u)" = 600
openssl pkcs12 -legacy -in server.pfx -passin file:password -nodes -out opened.pem
openssl x509 -in opened.pem -noout -subject | grep www.example.com
openssl rsa -in opened.pem -check -noout
END
timed "the library, used by three programs" inside sh -ex /root/library.sh
timed "the program karil, from nothing to a PFX" inside sh -ex /root/program.sh
timed "all removed" inside sh -c 'apt-get purge -q -y libkaril1 libkaril-dev karil karil-doc
    ! find /usr /etc /var/lib/dpkg/info | grep karil'
rm -rf "$system"
echo "the packages work in a clean Debian 12"
