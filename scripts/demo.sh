#!/bin/sh
# Issues certificates, decodes them and those of the ca-certificates package, and lets openssl judge what was issued.
# KARIL_BUILD_DIR: where to build, instead of build.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build test
build=${KARIL_BUILD_DIR:-build}
folder=$build/release
demo=$build/demo
cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$folder" --target issue_certificate

# Dates go out in local time under the letter Z, which others read as UTC.
TZ=UTC
export TZ

rm -rf "$demo"
mkdir -p "$demo/system"
for file in /usr/share/ca-certificates/mozilla/*.crt; do
    openssl x509 -in "$file" -outform DER -out "$demo/system/$(basename "$file" .crt).der"
    openssl x509 -in "$file" -noout -enddate -dateopt iso_8601
done >"$demo/dates.txt"

"$folder/examples/issue_certificate" "$demo" "$demo/system"
late=$(awk '$0 > "notAfter=2038-01-19 03:14:07Z"' "$demo/dates.txt" | wc -l)
echo "  by openssl, $late of these end past what 32 bits hold"

echo
for name in root leaf; do
    openssl x509 -inform DER -in "$demo/$name.der" -out "$demo/$name.pem"
    openssl x509 -inform DER -in "$demo/$name.der" -noout -text >"$demo/$name.txt"
    echo "openssl x509 -text reads $name.der: $(wc -l <"$demo/$name.txt") lines in $demo/$name.txt"
done
grep -q 'X509v3 Subject Alternative Name' "$demo/leaf.txt"
openssl verify -auth_level 0 -CAfile "$demo/root.pem" "$demo/leaf.pem"
echo "The demo is done: openssl accepts what karil issued."
