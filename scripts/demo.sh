#!/bin/sh
# Issues certificates, decodes them and those of the ca-certificates package, runs a small certification authority,
# shows what it issued, asks an OCSP responder about it, makes and opens messages and PFX files, signs with keys of its
# own and of a token, and lets openssl and certtool judge all that was written and write what is read.
# KARIL_BUILD_DIR: where to build, instead of build.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build test token
root=$PWD
build=${KARIL_BUILD_DIR:-build}
folder=$build/release
demo=$build/demo
cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$folder" --target issue_certificate certificate_authority messages ocsp pfx hook token \
    show_certificate karil_tool
programs=$(cd "$folder/examples" && pwd)
tool=$(cd "$folder/tools/karil" && pwd)/karil

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
"$programs/show_certificate" issued.pem authority.der
if "$programs/show_certificate" authority.der issued.pem >refused.txt; then
    echo "a certificate is taken for good under one that did not issue it" >&2
    exit 1
fi
tail -n 1 refused.txt

echo
"$programs/ocsp" .

echo
document=$root/LICENSE
messages=$programs/messages
head -c 5000000 /dev/urandom >large
head -c 8192 "$document" >start
"$messages" make . "$document" large
for name in authority issued; do
    openssl rsa -inform DER -in "$name.key" -out "$name.key.pem" 2>openssl.txt
done

echo
echo "openssl reads what karil wrote"
# Signers with the profile of this authority are not those of mail.
judge() {
    openssl cms -verify -inform DER -in "$1" -binary -CAfile authority.pem -purpose any -auth_level 0 -out out
}
judge signed.p7
cmp out "$document"
judge signed_large.p7
cmp out large
# An octet in the middle of the content.
{
    head -c 5000 signed.p7
    printf '\377'
    tail -c +5002 signed.p7
} >changed.p7
if judge changed.p7 2>openssl.txt; then
    echo "openssl takes a changed message for good" >&2
    exit 1
fi
echo "openssl refuses the changed message"
for name in authority issued; do
    openssl cms -decrypt -inform DER -in enveloped.p7 -binary -recip "$name.pem" -inkey "$name.key.pem" -out out
    cmp out start
done
openssl cms -EncryptedData_decrypt -inform DER -in encrypted.p7 -binary \
    -secretkey "$(od -An -v -tx1 encrypted.secret | tr -d ' \n')" -out out
cmp out start
echo "openssl opens enveloped.p7 with either key, and encrypted.p7"

echo
echo "karil reads what openssl wrote"
sign() {
    openssl cms -sign -binary -nodetach -signer issued.pem -inkey issued.key.pem -md sha1 -outform DER "$@"
}
sign -in "$document" -signer authority.pem -inkey authority.key.pem -out attributes.p7
"$messages" verify attributes.p7 "$document"
sign -in large -noattr -certfile authority.pem -out chain.p7
"$messages" verify chain.p7 large
openssl crl2pkcs7 -in crl1.pem -certfile authority.pem -certfile issued.pem -outform DER -out certificates.p7
"$messages" verify certificates.p7 /dev/null
for cipher in des3 aes128; do
    openssl cms -encrypt "-$cipher" -in large -binary -outform DER -out "$cipher.p7" issued.pem authority.pem
    for name in authority issued; do
        "$messages" open . "$name" "$cipher.p7" large
    done
done

echo
pfx=$programs/pfx
"$pfx" make . secret
openssl pkcs12 -legacy -info -in issued.p12 -passin pass:secret -passout pass:secret >info.txt 2>&1
grep -E 'MAC:|Encrypted data|Keybag|Certificate bag|friendlyName' info.txt
[ "$(grep -c 'friendlyName: the leaf' info.txt)" -eq 2 ]
[ "$(grep -c 'friendlyName: the authority' info.txt)" -eq 1 ]
openssl pkcs12 -legacy -in issued.p12 -passin pass:secret -nocerts -nodes |
    openssl rsa -outform DER -traditional -out key.der 2>openssl.txt
cmp key.der issued.key
for name in issued authority; do
    [ "$name" = issued ] && which=-clcerts || which=-cacerts
    openssl pkcs12 -legacy -in issued.p12 -passin pass:secret -nokeys $which | openssl x509 -outform DER | cmp - "$name.der"
done
certtool --p12-info --inder --infile issued.p12 --password secret >info.txt 2>&1
[ "$(grep -c 'BEGIN CERTIFICATE' info.txt)" -eq 2 ]
echo "openssl and certtool read issued.p12: the same key and certificates"

echo
echo "karil reads what openssl and certtool wrote"
export_pfx() {
    openssl pkcs12 -export -legacy -inkey issued.key.pem -in issued.pem -certfile authority.pem -passout pass:secret \
        -out other.p12 "$@"
}
for cipher in RC4-128 RC4-40 3DES 2DES RC2-128 RC2-40; do
    echo "openssl, $cipher"
    export_pfx -name "the leaf" -keypbe "PBE-SHA1-$cipher" -certpbe "PBE-SHA1-$cipher"
    "$pfx" open other.p12 secret 200 issued.key issued.der authority.der
done
echo "openssl, no name, one round"
export_pfx -iter 1
"$pfx" open other.p12 secret 200 issued.key issued.der authority.der
"$pfx" refuse other.p12 Secret
export_pfx -nomaciter
"$pfx" open other.p12 secret 200 issued.key issued.der authority.der
echo "openssl, a MAC by MD5, for which it takes 16 octets of key, and karil 20"
export_pfx -macalg MD5
"$pfx" open other.p12 secret 300 issued.key issued.der authority.der
for cipher in 3des-pkcs12 arcfour rc2-40; do
    echo "certtool, $cipher"
    certtool --to-p12 --load-privkey issued.key.pem --load-certificate issued.pem --p12-name "the leaf" \
        --password secret --hash SHA1 --pkcs-cipher "$cipher" --outder --outfile other.p12 2>certtool.txt
    "$pfx" open other.p12 secret 200 issued.key issued.der
done

echo
echo "A prepared key and a token sign with SHA-256"
mkdir tokens
printf 'directories.tokendir = %s/tokens\nobjectstore.backend = file\n' "$PWD" >softhsm.conf
SOFTHSM2_CONF=$PWD/softhsm.conf
export SOFTHSM2_CONF
openssl genpkey -quiet -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out token.key.pem
softhsm2-util --init-token --free --label karil --so-pin 123456 --pin 1234
softhsm2-util --import token.key.pem --token karil --label signer --id 01 --pin 1234
"$programs/hook" authority.key .
"$programs/token" /usr/lib/softhsm/libsofthsm2.so 1234 signer .
for name in hook token; do
    openssl x509 -inform DER -in "$name.der" -out "$name.pem"
    openssl verify -CAfile "$name.pem" "$name.pem"
    openssl x509 -in "$name.pem" -noout -text | grep -m 1 sha256WithRSAEncryption
done

echo
echo "The tool shows one of each kind, and verifies what the authority signed"
echo secret >password
"$tool" show --password-file password issued.pem crl2.pem request.pem issued.key ocsp_request.der ocsp_response1.der \
    signed.p7 digested.p7 encrypted.p7 enveloped.p7 signed_enveloped.p7 issued.p12 >shown.txt
"$tool" show issued.pem
awk -F ': ' '/^file/ { file = $2 } /^kind/ { print "  " file ": " $2 }' shown.txt
[ "$(grep -c '^kind: ' shown.txt)" -eq 12 ]
for name in issued.pem crl2.pem signed.p7; do
    echo "  $name: $("$tool" verify "$name" --issuer authority.pem | grep '^verdict')"
done
if "$tool" verify changed.p7 --issuer authority.pem >verdict.txt; then
    echo "the tool takes a changed message for good" >&2
    exit 1
fi
echo "  changed.p7: $(grep '^verdict' verdict.txt)"

echo
echo "The tool runs an authority of its own, makes a PFX and messages, and openssl judges them"
"$tool" authority ca --subject "C=CN,O=演示,CN=Demo Root"
"$tool" key -o own.key
"$tool" request --key own.key --subject "C=CN,O=演示,CN=www.example.com" --dns www.example.com -o own.csr
openssl req -in own.csr -noout -verify
"$tool" issue own.csr --authority ca -o own.pem
openssl verify -x509_strict -purpose sslserver -verify_hostname www.example.com -CAfile ca/authority.pem own.pem
"$tool" request --key own.key --subject "C=CN,CN=王小明" | "$tool" issue - --authority ca --profile person -o person.pem
"$tool" pfx make --key own.key --cert person.pem --chain ca/authority.pem --name "王小明" --password-file password \
    -o own.p12
[ "$(openssl pkcs12 -legacy -in own.p12 -passin file:password -noenc | grep -c 'BEGIN')" -eq 3 ]
"$tool" pfx open own.p12 --password-file password --out-folder opened
cmp opened/key.pem own.key
[ "$(stat -c %a own.key own.p12 opened/key.pem ca/authority.key | sort -u)" = 600 ]
"$tool" sign --key own.key --cert person.pem "$document" -o signed.pem
openssl cms -verify -inform PEM -in signed.pem -binary -CAfile ca/authority.pem -out out
cmp out "$document"
"$tool" verify signed.pem --issuer ca/authority.pem | grep '^verdict'
"$tool" envelop --recipient person.pem start -o enveloped.pem
openssl cms -decrypt -inform PEM -in enveloped.pem -binary -recip person.pem -inkey own.key -out out
cmp out start
"$tool" open --key own.key --cert person.pem enveloped.pem -o out
cmp out start
"$tool" revoke own.pem --authority ca --reason keyCompromise
"$tool" crl --authority ca
openssl verify -CAfile ca/authority.pem -crl_check -CRLfile ca/crl.pem person.pem
if openssl verify -CAfile ca/authority.pem -crl_check -CRLfile ca/crl.pem own.pem 2>revoked.txt; then
    echo "openssl takes the revoked certificate for good" >&2
    exit 1
fi
grep 'certificate revoked' revoked.txt
echo "The demo is done: openssl and certtool agree with all that karil issued and wrote."
