#!/bin/sh
# Issues certificates, decodes them and those of the ca-certificates package, runs a small certification authority, lets
# openssl judge all that was written, and asks an OCSP responder about what the authority issued.
# KARIL_BUILD_DIR: where to build, instead of build.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build test
build=${KARIL_BUILD_DIR:-build}
folder=$build/release
demo=$build/demo
cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$folder" --target issue_certificate certificate_authority ocsp
programs=$(cd "$folder/examples" && pwd)

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

echo
"$folder/examples/certificate_authority" "$demo"
echo
cd "$demo"
for name in authority issued; do
    openssl x509 -in "$name.pem" -outform DER | cmp - "$name.der"
done
openssl req -in request.pem -noout -verify
for name in crl1 crl2; do
    openssl crl -inform DER -in "$name.der" -noout -CAfile authority.pem
    openssl crl -in "$name.pem" -noout -text >"$name.txt"
done
echo "openssl crl -text reads $(grep -c 'Serial Number' crl1.txt) and $(grep -c 'Serial Number' crl2.txt) entries"
[ "$(grep -c 'Serial Number' crl1.txt)" -eq 3 ]
[ "$(grep -c 'Serial Number' crl2.txt)" -eq 4 ]
openssl verify -auth_level 0 -CAfile authority.pem -crl_check -CRLfile crl1.pem issued.pem
if openssl verify -auth_level 0 -CAfile authority.pem -crl_check -CRLfile crl2.pem issued.pem 2>revoked.txt; then
    echo "openssl takes the certificate for good although the second CRL revokes it" >&2
    exit 1
fi
grep 'certificate revoked' revoked.txt

echo
"$programs/ocsp" .
echo "The demo is done: openssl agrees with all that karil issued."
