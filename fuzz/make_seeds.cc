// Writes what the fuzzer starts from: make_seeds FOLDER fills FOLDER/TARGET for each target.
#include "bags.h"
#include "foreign.h"
#include "issuer.h"
#include "whole_messages.h"

#include <filesystem>
#include <fstream>

using namespace karil_fuzz;

namespace {

struct Folder {
    std::filesystem::path path;
    int count = 0;

    void add(Bytes seed) {
        std::ofstream file(path / std::to_string(count++), std::ios::binary);
        file.write(reinterpret_cast<const char *>(seed.data()), static_cast<std::streamsize>(seed.size()));
        must(file.good(), "a seed can be written");
    }
    void add(std::initializer_list<uint8_t> front, Bytes rest) {
        Octets seed(front);
        seed.insert(seed.end(), rest.begin(), rest.end());
        add(seed);
    }
};

// Two characters in code page 936.
constexpr char Beijing[] = "\xB1\xB1\xBE\xA9";

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

Octets repeated(std::string_view text, size_t count) {
    Octets all;
    while (count-- > 0)
        all.insert(all.end(), text.begin(), text.end());
    return all;
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

// What no certificate has: headers in unusual forms, times, flags, numbers.
void addOddElements(Folder &elements) {
    const std::string_view odd[] = {{"\x30\x80\x02\x05", 4},
                                    {"\x30\x81\x03\x02\x01\x05", 6},
                                    {"\x1F\x81\x01\x05", 4},
                                    {"\x9F\x01\x81\x01\x05", 5},
                                    {"\x02\x03\x00\x81\x02", 5},
                                    {"\x01\x01\xFF", 3},
                                    {"\x02\x05\x01\x02\x03\x04", 6},
                                    {"\x31\x03\x02\x01\x05", 5},
                                    {"\x30\x84\x00\x00\x00\x00", 6},
                                    {"\x18\x0D"
                                     "300101000000Z",
                                     15}};
    for (const std::string_view element : odd)
        for (const uint8_t tag : Octets{0, 2, 3, 16, 17, 24})
            elements.add({tag, 3, 2}, bytesOf(element));
}

// Texts on both sides of a limit: 1,024 octets in code page 936 and in UTF-8.
void addLongTexts(Folder &texts) {
    for (const size_t count : {341u, 342u, 512u, 513u}) {
        texts.add({0}, repeated("\xB1\xB1", count));
        texts.add({1}, repeated("\x53\x17", count));
        texts.add({2}, repeated("\x53\x17", count));
        texts.add({3}, repeated("\xE5\x8C\x97", count));
        texts.add({4}, repeated("\xB1\xB1", count));
        texts.add({5}, repeated("\xE5\x8C\x97", count));
    }
}

void addTexts(Folder texts) {
    addLongTexts(texts);
    const std::string_view samples[] = {"plain ASCII",
                                        Beijing,
                                        "\x80\xA2\xE3\xAA\xA1\xFE\xA0\xFF\x81",
                                        {"\x53\x17\x4E\xAC\x20\xAC\xE0\x00\x00\x61\x03\x01", 12},
                                        {"\xD8\x3D\xDE\x00\xDC\x00\xD8\x00", 8},
                                        "\xE5\x8C\x97\xE4\xBA\xAC\xF0\x9F\x98\x80\xC2\xED\xA0\x80"};
    for (uint8_t direction = 0; direction < 6; ++direction)
        for (const std::string_view sample : samples) {
            texts.add({direction}, bytesOf(sample));
            texts.add({direction}, repeated(sample, 40));
        }
}

void addOids(Folder oids) {
    for (const std::string_view oid :
         {"1.2.840.113549.1.1.5", "0.39", "1.40.1", "2.999 3", "2.5.29.4294967295", "1..2"})
        oids.add(bytesOf(oid));
    // More octets than there is room for, good and bad.
    Octets arcs = repeated("1.2.", 600);
    arcs.push_back('x');
    oids.add(arcs);
    arcs.back() = '1';
    oids.add(arcs);
}

// A certificate's size of octets as text, plain and in two blocks, and texts that bend the rules.
void addPem(Folder texts) {
    const Octets der = repeated("\x30\x82\xFF", 400);
    Octets pem(2000);
    uint32_t size = 0;
    must(DER2PEM_data_format(der.data(), sizeOf(der), pem.data(), &size, "-----BEGIN X-----", "-----END X-----") == 0,
         "a seed can be encoded");
    pem.resize(size);
    texts.add(pem);
    texts.add(repeated({reinterpret_cast<const char *>(pem.data()), 70}, 2));
    for (const std::string_view text :
         {"QUJD", "QUI=QUJ ", "QQ==", " UJD", "-----A-----\nQUJD\n-", "QUJD-", "-----A--"})
        texts.add(bytesOf(text));
}

void addDnStrings(Folder texts) {
    for (const std::string_view text :
         {"C=CN,O=o,OU=a,OU=b,CN=n,E=e,S=s,L=l,PA=p,PC=1,Phone=2,IDCard=3", "OU=a,CN=n,OU=b", "CN=,,C=O=x,cn=", "="})
        texts.add(bytesOf(text));
    texts.add(repeated("OU=x,", 206));
}

// Elements around octets that the scan passes over, on both sides of a limit; `depth` openings and closings.
void addIndefinite(Folder elements) {
    for (const size_t size : {1u, 122u, 250u, 251u, 252u, 253u, 254u, 510u})
        for (const size_t depth : {1u, 2u, 3u, 5u}) {
            Octets element = repeated("\x30\x80", depth);
            const uint8_t header[] = {0x04, 0x82, static_cast<uint8_t>(size >> 8), static_cast<uint8_t>(size)};
            element.insert(element.end(), header, header + 4);
            element.insert(element.end(), size + 2 * (depth - 1), 0x55);
            std::fill(element.end() - static_cast<long>(2 * (depth - 1)), element.end(), uint8_t{0});
            const uint8_t behind[] = {2, 1, 5, 0, 0};
            element.insert(element.end(), behind, behind + 5);
            elements.add(element);
            elements.add({0x31, 0x82, 0x02, 0x00}, element);
        }
    elements.add({0x30, 0x80, 0x04, 0x03, 0, 0, 0, 0, 0}, {});
    elements.add({0x30, 0x03, 0x02, 0x01, 0x05}, {});
    elements.add({0x31, 0x06, 0x04, 0x04, 0x30, 0x80, 0x00, 0x00}, {});
    elements.add({0x30, 0x80, 0, 0, 0, 0, 0xA0, 0x80, 0x30, 0x80, 0, 0, 0, 0}, {});
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

// With and without attributes, over a content that the signer alone knows.
void addSigners(Folder signers) {
    for (const bool hasAttributes : {false, true}) {
        const SignerPtr ctx = create<SignerInfoCtx>();
        const std::pair<int32_t, std::string_view> fields[] = {
            {PKCS7_ISSUER_COMMONNAME, "Root"},  {PKCS7_ISSUER_ORGANIZATION, Beijing},  {PKCS7_SIGNER_SERIAL, "\x81"},
            {PKCS7_DIGEST_ALGO, Sha1Oid},       {PKCS7_SIGNER_DIGEST_ENC_ALG, "\x2A"}, {PKCS7_SIGNER_CONTENT, "a"},
            {PKCS7_SIGNER_CONTENTTYPE, DataOid}};
        for (const auto &[id, value] : fields)
            must(set(*ctx, id, value) == KACERT_Ok, "a field can be set");
        const Bytes value = bytesOf("\x05\x01\x61");
        for (const auto add : {KA_PKCS7_SetSignerAttribute, KA_PKCS7_SetSignerUnAttribute})
            must(!hasAttributes || add(ctx.get(), value.data(), 2, value.data(), 3) == KACERT_Ok, "an attribute");
        KA_PKCS7_SetSignerInfoDigestFunc(ctx.get(), plainHook, "n", 1);
        KA_PKCS7_SetSignerInfoEncSignFunc(ctx.get(), plainHook, "c", 1);
        const Area der(1024);
        uint32_t length = 0;
        must(KA_PKCS7_EncodeSignerInfo(ctx.get(), der.data(), &length) == KACERT_Ok, "a signer can be encoded");
        signers.add(der.bytes().first(length));
    }
}
// The four objects of OCSP with everything that is read in them; the first octet is the target's own.
void addOcsp(Folder messages) {
    const auto oid = [](uint8_t last) { return tlv(6, cat({{0x2B, 0x06, 0x01, 0x05, 0x05, 0x07, 0x30, 0x01, last}})); };
    const Octets time = tlv(0x18, cat({{'2', '0', '0', '1', '0', '1', '0', '0', '0', '0', '0', '0', 'Z'}}));
    const Octets name = tlv(
        0x30, cat({tlv(0x31, cat({tlv(0x30, cat({tlv(6, cat({{0x55, 0x04, 0x03}})), tlv(0x13, cat({{'N'}}))}))}))}));
    const Octets list = tlv(0x30, cat({oid(1)}));
    const Octets url = tlv(0xA0, cat({tlv(0x16, cat({{'u'}}))}));
    const Octets extensions =
        tlv(0x30, cat({tlv(0x30, cat({oid(4), tlv(4, cat({list}))})), tlv(0x30, cat({oid(6), time})),
                       tlv(0x30, cat({oid(3), tlv(4, cat({url}))})), tlv(0x30, cat({oid(2), tlv(4, cat({{1, 2}}))}))}));
    const Octets certificates = tlv(0xA0, cat({tlv(0x30, cat({{0x30, 0}}))}));
    const Octets id = tlv(0x30, cat({oid(9), tlv(4, cat({{'n'}})), tlv(4, cat({{'k'}})), {2, 1, 5}}));
    const Octets request = tlv(0x30, cat({id}));
    const Octets version = tlv(0xA0, cat({{2, 1, 0}}));
    const Octets tbs = tlv(
        0x30, cat({version, tlv(0xA1, cat({name})), tlv(0x30, cat({request, request})), tlv(0xA2, cat({extensions}))}));
    const Octets signature = tlv(0x30, cat({oid(8), tlv(4, cat({{7}})), certificates}));
    const Octets single = tlv(0x30, cat({id, {0x82, 1, 'i'}, time, tlv(0xA0, cat({time}))}));
    const Octets data = tlv(
        0x30, cat({version, tlv(0x30, cat({name, tlv(4, cat({{7}}))})), time, tlv(0x30, cat({single})), extensions}));
    const Octets basic = tlv(0x30, cat({data, oid(8), tlv(4, cat({{7}})), certificates}));
    messages.add({0}, request);
    messages.add({1}, tlv(0x30, cat({tbs, tlv(0xA0, cat({signature}))})));
    messages.add({2}, single);
    messages.add({3}, tlv(0x30, cat({{10, 1, 0}, tlv(0xA0, cat({tlv(0x30, cat({oid(1), tlv(4, cat({basic}))}))}))})));
}

// Programs of the target that builds: which message, then counted attributes of its list, the state, those of the
// whole.
void addOcspPrograms(Folder programs) {
    programs.add({0, 5, 15, 1, 5, 16, 1, 'n', 17, 1, 'k', 20, 2, 0x2A, 3, 33, 1, 0,
                  0, 0, 0,  0, 4, 33, 1, 0,   1,  2, 8,   9,  0, 1,    1, 9,  1, 5},
                 {});
    programs.add({1, 5, 25, 1, 5,  26, 1, 'n', 28, 1,    'k', 30, 2, 0x2A, 3,  23, 1, 9,
                  1, 1, 1,  4, 48, 1,  0, 63,  1,  0x2A, 59,  2,  7, 7,    46, 1,  0},
                 {});
}

// A message of every kind, with two of each part that it can have.
template <class Ctx> void addMessage(Folder &messages, int32_t version, std::initializer_list<int32_t> contents) {
    const Owner<Ctx> ctx = create<Ctx>();
    must(version == 0 || Family<Ctx>::setInt(ctx.get(), version, 1) == KACERT_Ok, "a version can be set");
    for (const int32_t id : contents)
        set(*ctx, id,
            id == 40 || id == 49 || id == 53 || id == 59 || id == 63 ? DataOid : std::string_view("\x30\x00", 2));
    for (int i = 0; i < 2; ++i) {
        if constexpr (hasSigners<Ctx>) {
            SignerPtr signer = plainSigner();
            const Bytes value = bytesOf("\x05\x01\x61");
            must(i == 0 || KA_PKCS7_SetSignerAttribute(signer.get(), value.data(), 2, value.data(), 3) == KACERT_Ok,
                 "an attribute");
            handOver(Family<Ctx>::setSigner, *ctx, std::move(signer));
        }
        if constexpr (hasRecipients<Ctx>)
            handOver(Family<Ctx>::setRecipient, *ctx, plainRecipient());
    }
    if constexpr (hasEncrypted<Ctx>)
        handOver(Family<Ctx>::setContent, *ctx, plainContent());
    if constexpr (std::is_same_v<Ctx, DigestedDataCtx>)
        KA_PKCS7_SetDigestedDataHashFunc(ctx.get(), plainHook, nullptr, 0);
    int32_t status = 0;
    messages.add(encode(*ctx, &status));
    must(status == KACERT_Ok, "a message can be encoded");
}
void addMessages(Folder messages) {
    addMessage<DataCtx>(messages, 0, {0});
    addMessage<DigestedDataCtx>(messages, 61, {62, 63, 64});
    addMessage<SignedDataCtx>(messages, 38, {39, 40, 41, 42, 42, 43, 43});
    addMessage<EnvelopedDataCtx>(messages, 51, {52, 53, 54});
    addMessage<EncryptedDataCtx>(messages, 58, {59, 60});
    addMessage<SignedAndEnvelopedDataCtx>(messages, 44, {45, 46, 47, 48, 49, 50});
}
// Programs of the target that builds: a message of each kind with one of each part. First the kind and the version;
// attributes; parts by number; each part's hooks and attributes.
void addMessagePrograms(Folder programs) {
    programs.add({0, 0, 1, 0, 0, 4, 'a', 'b', 'c', 'd', 0, 1, 3}, {});
    const Octets signer = {1, 3, 1, 0, 2, 0, 2, 0, 1, 2, 0};
    programs.add(cat({{1, 1, 1, 0, 1, 1, 1, 1, 0, 3, 'a', 'b', 'c', 2}, signer, signer}));
    programs.add({2, 0, 0, 0, 3, 'a', 'b', 'c', 0, 3, 'k', 'e', 'y', 0x14, 1, 3, 0, 1, 3, 0}, {});
    programs.add({3, 0, 0, 0, 3, 'a', 'b', 'c', 0x10, 1, 3, 0}, {});
    programs.add(
        cat({{4, 1, 1, 0, 1, 1, 1, 1, 0, 3, 'a', 'b', 'c', 0, 3, 'k', 'e', 'y', 0x15}, signer, {1, 3, 0, 1, 3, 0}}));
}

// The octets under the password "pw" and the salt "salt", by one round.
Octets enciphered(const Octets &algorithm, const Octets &plain) {
    Octets out(plain.size() + 8);
    uint32_t length = 0;
    must(KA_PKCS12_PbeWithDigestAlgoAndEncrypt(algorithm.data(), sizeOf(algorithm), bytesOf("pw").data(), 2,
                                               bytesOf("salt").data(), 4, 1, plain.data(), sizeOf(plain), out.data(),
                                               &length) == KACERT_Ok,
         "a seed is enciphered");
    out.resize(length);
    return out;
}
// A PFX with a key and a certificate, each with attributes, by the algorithms that end in these octets.
Octets pfxSeed(uint8_t keyAlgorithm, uint8_t certAlgorithm, bool isKeyFirst) {
    const Octets parameter = seq({tlv(0x04, text("salt")), hex("02 01 01")});
    const Octets pkcs12 = hex("2A 86 48 86 F7 0D 01 0C 01");
    const auto bag = [](const char *type, const Octets &value, const Octets &attributes) {
        return seq({seq({oid(type), tlv(0xA0, value), tlv(0x31, attributes)})});
    };
    const auto info = [](const Octets &content) {
        return seq({oid("2A 86 48 86 F7 0D 01 07 01"), tlv(0xA0, tlv(0x04, content))});
    };
    const Octets attribute = seq({oid("2A 05"), tlv(0x31, hex("0C 01 61"))});
    const Octets keyType = cat({pkcs12, {keyAlgorithm}}), certType = cat({pkcs12, {certAlgorithm}});
    const Octets plain = seq({hex("02 01 00"), algorithm(RsaEncryption), tlv(0x04, text("key")), tlv(0xA0, attribute)});
    const Octets key = info(bag("2A 86 48 86 F7 0D 01 0C 0A 01 02",
                                seq({seq({tlv(0x06, keyType), parameter}), tlv(0x04, enciphered(keyType, plain))}),
                                cat({attribute, attribute})));
    const Octets certs =
        bag("2A 86 48 86 F7 0D 01 0C 0A 01 03",
            seq({oid("2A 86 48 86 F7 0D 01 09 16 01"), tlv(0xA0, tlv(0x04, text("certificate")))}), attribute);
    const Octets content = seq({oid("2A 86 48 86 F7 0D 01 07 01"), seq({tlv(0x06, certType), parameter}),
                                tlv(0x80, enciphered(certType, certs))});
    const Octets encrypted = seq({oid("2A 86 48 86 F7 0D 01 07 06"), tlv(0xA0, seq({hex("02 01 00"), content}))});
    const Octets safe = isKeyFirst ? seq({key, info(certs)}) : seq({encrypted, key});
    Octets macKey(20), mac(20);
    uint32_t length = 0;
    KA_PKCS12_GenRandomFromPassword(KA_DIGEST_SHA1, bytesOf("pw").data(), 2, bytesOf("salt").data(), 4, 3, 1,
                                    macKey.data(), 20);
    KA_PKCS12_HMAC(KA_DIGEST_SHA1, macKey.data(), 20, safe.data(), sizeOf(safe), mac.data(), &length);
    return seq({hex("02 01 03"), info(safe),
                seq({seq({algorithm("2B 0E 03 02 1A"), tlv(0x04, mac)}), tlv(0x04, text("salt")), hex("02 01 01")})});
}
void addPfx(Folder files, Folder safes, Folder programs) {
    for (uint8_t algorithm = 1; algorithm <= 6; ++algorithm) {
        files.add(pfxSeed(algorithm, static_cast<uint8_t>(7 - algorithm), algorithm % 3 == 0));
        safes.add(pfxSeed(algorithm, algorithm, false));
    }
    const Octets message = seq({hex("02 01 01"), hex("31 00"),
                                seq({oid("2A 86 48 86 F7 0D 01 07 01"), tlv(0xA0, hex("04 04 30 02 30 00"))}),
                                tlv(0xA0, hex("30 00")), hex("31 00")});
    safes.add(seq({hex("02 01 03"), seq({oid("2A 86 48 86 F7 0D 01 07 02"), tlv(0xA0, message)})}));
    programs.add(
        {2, 'p', 'w', 8, 3, 'k', 'e', 'y', 9, 4, 'c', 'e', 'r', 't', 0, 1, 5, 1, 6, 1, 1, 5, 1, 6, 3, 1, 5, 1, 6}, {});
}

// Each bag with all its fields and attributes, and a program that sets them.
void addBags(Folder bags) {
    withEachBag([&](auto kit) {
        Bag<decltype(kit)> bag;
        for (const auto &field : kit.Fields)
            must(bag.set(field.name, hex("30 06 04 01 73 02 01 05")) == KACERT_Ok, "a field can be set");
        for (int i = 0; i < 2; ++i)
            bag.set("attribute 2A03", hex("05 00"));
        bags.add({0}, hex(bag.encoded()));
    });
    bags.add(hex("01 00 01 00 01 02 2A 03 02 03 30 01 61 00 02 05 00 03 02 05 00"));
}

// Each algorithm with a password of two octets and a salt of one; MacData and parameters as the text.
void addPkcs12Crypt(Folder inputs) {
    for (uint8_t choice = 0; choice < 13; ++choice)
        inputs.add({choice, 2, 2, 1, 'p', 'w', 0x5A}, Octets(choice, 0xAA));
    const Octets info = seq({algorithm("2B 0E 03 02 1A"), tlv(0x04, Octets(20, 1))});
    inputs.add({0, 1, 1, 0, 'k'}, seq({info, hex("04 02 01 02 02 02 07 D0")}));
    inputs.add({0, 1, 16, 16}, cat({Octets(32, 1), seq({hex("04 02 01 02 02 02 07 D0")})}));
}

// A bundle as it is; items that are enciphered; two certificates beside a key.
void addForeign(Folder inputs) {
    const Octets info = keyInfo(Octets(20, 0x5A));
    const Octets safe = oneCertificate(Octets(40, 0xA5));
    for (const uint8_t last : {uint8_t{1}, uint8_t{3}, uint8_t{6}}) {
        const Octets id = cat({hex("2A864886F70D010C01"), {last}});
        inputs.add({0},
                   foreignBundle({id, 1, info, {}, 0, hex("02 01 01")}, {id, 1, safe, {16}, 0, hex("02 01 01")}, "pw"));
        inputs.add({1, last, 1, last, 1, 2, 16, 24, 0, static_cast<uint8_t>(info.size())}, cat({info, safe}));
    }
    const Octets two = cat({{0x30, static_cast<uint8_t>(2 * (safe.size() - 2))},
                            {safe.begin() + 2, safe.end()},
                            {safe.begin() + 2, safe.end()}});
    inputs.add({2, static_cast<uint8_t>(info.size())}, cat({info, two}));
}

} // namespace

int main(int count, char **arguments) {
    must(count == 2, "usage: make_seeds FOLDER");
    const auto folder = [&](const char *target) {
        const std::filesystem::path path = std::filesystem::path(arguments[1]) / target;
        std::filesystem::create_directories(path);
        return Folder{path};
    };
    Folder elements = folder("asn1_readers");
    addCertificates(folder("cert_decode"), elements, folder("names"));
    addOddElements(elements);
    addTexts(folder("text"));
    addOids(folder("oid_text"));
    addPrograms(folder("cert_build"));
    addCrls(folder("crl"));
    addRequests(folder("csr"));
    addOcsp(folder("ocsp"));
    addOcspPrograms(folder("ocsp_build"));
    addSigned(folder("verify"));
    addKeys(folder("keys"));
    addPem(folder("pem"));
    addPfx(folder("pfx"), folder("auth_safe"), folder("pfx_build"));
    addDnStrings(folder("dn_string"));
    addIndefinite(folder("indefinite"));
    addSigners(folder("signers"));
    addMessages(folder("messages"));
    addBags(folder("pkcs12_bags"));
    addPkcs12Crypt(folder("pkcs12_crypt"));
    addForeign(folder("pkcs12_foreign"));
    addMessagePrograms(folder("messages_build"));
    return 0;
}
