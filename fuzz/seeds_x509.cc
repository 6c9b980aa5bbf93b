// Seeds of certificates, CRLs, requests and keys.
#include "seeds.h"

#include "issuer.h"

namespace karil_fuzz {
namespace {

void fillAll(CertEncodeCtx &ctx) {
    const std::pair<int32_t, std::string_view> fields[] = {
        {CERT_ISSUER_COUNTRYNAME, "CN"},
        {CERT_ISSUER_STATEORPROVINCENAME, Beijing},
        {CERT_ISSUER_ORGANIZATIONALUNITNAME, "One"},
        {CERT_ISSUER_ORGANIZATIONALUNITNAME, Beijing},
        {CERT_SUBJECT_LOCALITYNAME, Beijing},
        {CERT_SUBJECT_ORGANIZATIONNAME, "A & B"},
        {CERT_SUBJECT_EMAIL, "leaf@example.com"},
        {CERT_SUBJECT_POSTALADDRESS, "1 Street"},
        {CERT_SUBJECT_POSTALCODE, "100000"},
        {CERT_SUBJECT_TELEPHONE, "+86 10"},
        {CERTEX_AUTHORITYKEYIDENTIFIER, "01234567890123456789"},
        {CERTEX_SUBJECTKEYIDENTIFIER, "98765432109876543210"},
        {CERTEX_SUBJECTKEYIDENTIFIER_CRITICAL, "1"},
        {CERTEX_KEYUSAGE, "\x06\x80"},
        {CERTEX_CERTPOLICYID, "\x2A\x03"},
        {CERTEX_CERTPOLICY_CPS, "http://example.com/cps"},
        {CERT_SUBJECT_ALT_COMMONNAME, Beijing},
        {CERT_ISSUER_ALT_COMMONNAME, "Root"},
        {CERT_ISSUER_ALT_EMAIL, "root@example.com"},
        {CERT_SUBJECT_ALT_RFC822NAME, "leaf@example.com"},
        {CERT_SUBJECT_ALT_DNSNAME, "example.com"},
        {CERT_SUBJECT_ALT_URI, "http://example.com"},
        {CERT_SUBJECT_ALT_IPADDRESS, "\x7F\x01\x01\x01"},
        {CERT_SUBJECT_ALT_OTHERNAME_TYPEID, "1.3.6.1.4.1.311.20.2.3"},
        {CERT_SUBJECT_ALT_OTHERNAME_VALUE, Beijing},
        {CERTEX_AUTHORITY, "\x01"},
        {CERTEX_PATHLENCONSTRAINT, "\x05"},
        {CERTEX_EXTKEY_USAGE, "\xC0\x01\x01\x01"},
        {CERTEX_EXTKEY_USAGE_OID_DEFINE, "1.2.3.4"},
        {CERTEX_CRLDIST_FULLNAME, "http://example.com/1.crl"},
        {CERTEX_CRLDIST_FULLNAME, "http://example.com/2.crl"},
        {CERTEX_AUTHORITYINFO_OCSP, "http://example.com/ocsp"},
        {CERTEX_AUTHORITYINFO_CAISSUERS, "http://example.com/ca"},
    };
    for (const auto &[id, value] : fields)
        must(set(ctx, id, value) == KACERT_Ok, "a field can be set");
    const Bytes oid = bytesOf("\x2A\x03\x04");
    must(KACert_SetCertAttributePrivate_ForValue(&ctx, oid.data(), lengthOf(oid), 1, oid.data(), lengthOf(oid), 19) ==
             KACERT_Ok,
         "a private extension can be set");
}

// Every element inside `element`, and itself.
void addElements(Folder &folder, const Anybuf &element) {
    folder.add({static_cast<uint8_t>(element.tag), 0, 1}, bytesOf(element));
    Anybuf *first = nullptr;
    if (KAsn1_ReadSequence(&element, &first) != KACERT_Ok && KAsn1_ReadSet(&element, &first) != KACERT_Ok)
        return;
    const Chain inner(first);
    for (const Anybuf *node = inner.get(); node != nullptr; node = node->next)
        addElements(folder, *node);
}

void addName(Folder &folder, Bytes der) {
    const Bytes two[] = {bytesOf("\x0C\x06\xE5\x8C\x97\xE4\xBA\xAC"), bytesOf("\x14\x02\xB1\xB1")};
    folder.add({0}, der);
    for (const Bytes value : two) {
        Octets attribute = {0x30, 0, 0x06, 0x03, 0x55, 0x04, 0x0B};
        attribute.insert(attribute.end(), value.begin(), value.end());
        attribute[1] = static_cast<uint8_t>(attribute.size() - 2);
        const auto size = static_cast<uint8_t>(attribute.size());
        folder.add({0, 0x30, static_cast<uint8_t>(size + 2), 0x31, size}, attribute);
    }
}

// Names whose text in one line, "CN=" and a comma included, comes to the limit of 1,024 octets.
void addLongNames(Folder &names) {
    for (const size_t size : {1019u, 1020u, 1021u}) {
        const Octets value = repeated("x", size);
        const CertPtr ctx = create<CertEncodeCtx>();
        must(set(*ctx, CERT_SUBJECT_COMMONNAME, value) == KACERT_Ok, "a long name can be set");
        Chain name;
        must(made(name, KI_EncodeIssuerSuject, &ctx->subject) == KACERT_Ok, "a long name can be encoded");
        names.add({0}, bytesOf(*name));
    }
}

// A request that the issuer's key signed, with that key.
Octets signedRequest() {
    const CsrPtr ctx = filledByIssuer<CsrEncodeCtx>();
    must(set(*ctx, CSR_SUBJECTPUBLICKEYINFO, issuerPublicKey()) == KACERT_Ok, "a key can be set");
    return encode(*ctx);
}

Octets signedCrl() {
    const CrlPtr ctx = filledByIssuer<CrlEncodeCtx>();
    KACert_SetCrlAttributeInt(ctx.get(), CRL_THISUPDATE, Y2020);
    must(set(*ctx, CRL_CERT_SERIALNUMBER, "\5") == KACERT_Ok, "an entry is set");
    KACert_SetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, Y2020);
    return encode(*ctx);
}

} // namespace

void addCertificates(Folder certificates, Folder &elements, Folder names) {
    addLongNames(names);
    certificates.add(encode(*filled<CertEncodeCtx>()));
    const CertPtr all = filled<CertEncodeCtx>();
    fillAll(*all);
    Octets der = encode(*all);
    certificates.add(der);
    addElements(elements, Anybuf{der.data(), sizeOf(der), 0, 0, 0, nullptr, nullptr});
    for (const NameRecord *head : {&all->issuer, &all->subject}) {
        Chain name;
        must(made(name, KI_EncodeIssuerSuject, head) == KACERT_Ok, "a name can be encoded");
        addName(names, bytesOf(*name));
    }
    Chain general;
    must(made(general, KI_EncodeGeneralNameS, &all->extensions.subjectAltName.names) == KACERT_Ok,
         "names of all forms");
    names.add({1}, bytesOf(*general));
}

// A program of one step for each selector, and one of all steps.
void addPrograms(Folder programs) {
    Octets all = {0, 0};
    for (uint8_t selector = 0; selector < 70; ++selector) {
        const uint8_t step[] = {selector, 5, '1', '.', '2', '.', '3'};
        all.insert(all.end(), std::begin(step), std::end(step));
        programs.add({0, 0}, step);
        programs.add({0, 1, selector, 0xFF}, bytesOf("\xB1"));
    }
    programs.add(all);
    for (uint8_t hook = 0; hook < 64; hook = static_cast<uint8_t>(hook + 7))
        programs.add({0, hook}, {});
    programs.add({0, 0, 0xF0, CERT_VALIDTO}, bytesOf("\x7F\xFF\xFF\xFF"));
    programs.add({0, 0, 0xF1, 2}, bytesOf("\x2A\x03\x01\x01\x01\xF2\x02\x2A\x04\x02\x05\x05\x01\x13"));
}

void addCrls(Folder crls) {
    const CrlPtr ctx = filled<CrlEncodeCtx>();
    set(*ctx, CRL_ISSUER_ORGANIZATIONNAME, Beijing);
    KACert_SetCrlAttributeInt(ctx.get(), CRL_THISUPDATE, Y2020);
    KACert_SetCrlAttributeInt(ctx.get(), CRL_NEXTUPDATE, Y2020);
    for (const char *reason : {"", "\x01", "\x06"}) {
        set(*ctx, CRL_CERT_SERIALNUMBER, "\xF1\x02");
        KACert_SetCrlAttributeInt(ctx.get(), CRL_CERT_REVOCATIONDATE, Y2020);
        if (*reason != '\0')
            set(*ctx, CRLEX_CRLREASON, reason);
    }
    set(*ctx, CRLEX_CRLNUMBER, "\x80");
    set(*ctx, CRLEX_DELTACRLINDICATOR, "\x01");
    const Octets der = encode(*ctx);
    must(!der.empty(), "a CRL is written");
    crls.add(der);
}

void addRequests(Folder requests) {
    const CsrPtr ctx = filled<CsrEncodeCtx>();
    set(*ctx, CSR_SUBJECT_ORGANIZATIONNAME, Beijing);
    const uint8_t oid[] = {0x2A, 0x05};
    for (int32_t size : {1, 2})
        must(KACert_SetCsrAttributePrivate(ctx.get(), oid, size, oid, size) == KACERT_Ok, "an attribute is set");
    const Octets der = encode(*ctx);
    must(!der.empty(), "a request is written");
    requests.add(der);
}

// Seeds that verify.
void addSigned(Folder objects) {
    const Octets &issuer = issuerCertificate();
    const Octets request = signedRequest();
    const Octets crl = signedCrl();
    must(KA_VerifyCert(issuer.data(), sizeOf(issuer), issuer.data(), sizeOf(issuer)) == KACERT_Ok, "a certificate");
    must(KA_VerifyCrl(issuer.data(), sizeOf(issuer), crl.data(), sizeOf(crl)) == KACERT_Ok, "a CRL");
    Octets pem(request.size() * 2 + 60);
    uint32_t length = 0;
    must(DER2PEM_data_format(request.data(), sizeOf(request), pem.data(), &length, "-----BEGIN-----",
                             "-----END-----") == 0 &&
             KA_VerifyCsr_Sign(pem.data(), static_cast<int32_t>(length)) == KACERT_Ok,
         "a request");
    objects.add({0}, issuer);
    objects.add({1}, crl);
    objects.add({2}, request);
    objects.add({2}, Bytes(pem.data(), length));
    objects.add({3}, issuer);
}

void addKeys(Folder keys) {
    keys.add({0}, issuerPublicKey());
    Octets numbers = {0x30, 27};
    for (uint8_t i = 0; i < 9; ++i)
        numbers.insert(numbers.end(), {0x02, 0x01, i});
    keys.add({1}, numbers);
}

} // namespace karil_fuzz
