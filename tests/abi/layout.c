/*
 * Where the fields of the public records stand, as programs that were built before rely on it. The offsets are sums
 * of the fields' widths. Records with pointers are fixed where a pointer has 32 bits: scripts/check_headers.sh
 * compiles this file for such a machine.
 */
#include <karil/karil.h>

#include <stddef.h>

#define AT(RECORD, FIELD, OFFSET) _Static_assert(offsetof(RECORD, FIELD) == (OFFSET), #RECORD "." #FIELD)

AT(RsaPublicKeyRecord, bits, 0);
AT(RsaPublicKeyRecord, modulus, 4);
AT(RsaPublicKeyRecord, exponent, 260);

AT(RsaPrivateKeyRecord, bits, 0);
AT(RsaPrivateKeyRecord, modulus, 4);
AT(RsaPrivateKeyRecord, publicExponent, 260);
AT(RsaPrivateKeyRecord, exponent, 516);
AT(RsaPrivateKeyRecord, prime1, 772);
AT(RsaPrivateKeyRecord, prime2, 900);
AT(RsaPrivateKeyRecord, primeExponent1, 1028);
AT(RsaPrivateKeyRecord, primeExponent2, 1156);
AT(RsaPrivateKeyRecord, coefficient, 1284);

AT(CertTime, isUtc, 0);
AT(CertTime, generalizedValue, 4);
AT(CertTime, utcValue, 8);

#if UINTPTR_MAX == 0xFFFFFFFFu
AT(Anybuf, data, 0);
AT(Anybuf, length, 4);
AT(Anybuf, unusedBits, 8);
AT(Anybuf, form, 12);
AT(Anybuf, tag, 16);
AT(Anybuf, next, 20);
AT(Anybuf, prev, 24);

AT(NameRecord, id, 0);
AT(NameRecord, oid, 4);
AT(NameRecord, value, 32);
AT(NameRecord, next, 64);

AT(GeneralNameRecord, present, 0);
AT(GeneralNameRecord, otherNameKind, 12);
AT(GeneralNameRecord, otherNameType, 16);
AT(GeneralNameRecord, otherNameValue, 44);
AT(GeneralNameRecord, rfc822Name, 72);
AT(GeneralNameRecord, dNSName, 100);
AT(GeneralNameRecord, directoryName, 132);
AT(GeneralNameRecord, uniformResourceIdentifier, 204);
AT(GeneralNameRecord, iPAddress, 232);

AT(PolicyNode, oid, 4);
AT(PolicyNode, cps, 32);
AT(PolicyQualifierNode, uri, 4);
AT(PolicyQualifierNode, next, 32);
AT(DefinedUsageNode, next, 28);
AT(DistributionPointNode, hasFullName, 1);
AT(DistributionPointNode, fullName, 4);
AT(DistributionPointNode, next, 264);
AT(AccessNode, locationChoice, 1);
AT(AccessNode, location, 4);
AT(AccessNode, next, 32);
AT(PrivateExtensionNode, next, 0);
AT(PrivateExtensionNode, id, 4);
AT(PrivateExtensionNode, oid, 8);
AT(PrivateExtensionNode, critical, 36);
AT(PrivateExtensionNode, value, 40);

AT(CertExtensions, hasAuthorityKeyId, 0);
AT(CertExtensions, hasSubjectKeyId, 1);
AT(CertExtensions, hasKeyUsage, 2);
AT(CertExtensions, hasCertPolicies, 3);
AT(CertExtensions, hasSubjectAltName, 4);
AT(CertExtensions, hasIssuerAltName, 5);
AT(CertExtensions, hasBasicConstraints, 6);
AT(CertExtensions, hasExtKeyUsage, 7);
AT(CertExtensions, hasCrlDistPoints, 8);
AT(CertExtensions, hasAuthorityInfo, 9);
AT(CertExtensions, hasPrivate, 10);
AT(CertExtensions, authorityKeyId.critical, 13);
AT(CertExtensions, authorityKeyId.keyId, 16);
AT(CertExtensions, subjectKeyId.keyId, 48);
AT(CertExtensions, keyUsage.bits, 80);
AT(CertExtensions, certPolicy.policy, 112);
AT(CertExtensions, subjectAltName.names, 120);
AT(CertExtensions, issuerAltName.names, 384);
AT(CertExtensions, basicConstraints.critical, 645);
AT(CertExtensions, basicConstraints.isCa, 646);
AT(CertExtensions, basicConstraints.pathLen, 648);
AT(CertExtensions, extKeyUsage.mask, 680);
AT(CertExtensions, extKeyUsage.definedOids, 708);
AT(CertExtensions, crlDistPoints.first, 716);
AT(CertExtensions, crlDistPoints.cursor, 720);
AT(CertExtensions, authorityInfo.first, 728);
AT(CertExtensions, privateExtensions, 732);

AT(CertEncodeCtx, hasVersion, 0);
AT(CertEncodeCtx, hasExtensions, 1);
AT(CertEncodeCtx, encoded, 4);
AT(CertEncodeCtx, tbs, 32);
AT(CertEncodeCtx, outerSignatureAlgorithm, 60);
AT(CertEncodeCtx, signature, 92);
AT(CertEncodeCtx, issuerText, 120);
AT(CertEncodeCtx, subjectText, 148);
AT(CertEncodeCtx, signFunc, 176);
AT(CertEncodeCtx, signKey, 180);
AT(CertEncodeCtx, version, 208);
AT(CertEncodeCtx, serialNumber, 212);
AT(CertEncodeCtx, innerSignatureAlgorithm, 240);
AT(CertEncodeCtx, issuer, 272);
AT(CertEncodeCtx, notBefore, 340);
AT(CertEncodeCtx, notAfter, 352);
AT(CertEncodeCtx, subject, 364);
AT(CertEncodeCtx, publicKeyAlgorithm, 432);
AT(CertEncodeCtx, publicKey, 464);
AT(CertEncodeCtx, extensions, 492);
AT(CertEncodeCtx, subjectDer, 1228);
AT(CertEncodeCtx, issuerDer, 1256);
#endif
