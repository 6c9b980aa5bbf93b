// Certificates, CRLs and requests that libcrypto signed, whole and tampered with.
#include "cert_support.h"
#include "pkey.h"

#include "karil/crypt.h"
#include "karil/verify.h"

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <gtest/gtest.h>

#include <ctime>

using namespace karil_test;

namespace {

constexpr char Md2WithRsa[] = "2A 86 48 86 F7 0D 01 01 02";
constexpr char Md5WithRsa[] = "2A 86 48 86 F7 0D 01 01 04";
constexpr char Sha256WithRsa[] = "2A 86 48 86 F7 0D 01 01 0B";

const Pkey &rootKey() {
    static const Pkey key(EVP_RSA_gen(2048));
    return key;
}

Octets bits(const Octets &octets) { return tlv(0x03, cat({hex("00"), octets})); }
Octets publicKey(const Pkey &key) { return seq({algorithm(RsaEncryption), bits(derOf(i2d_PublicKey, key.get()))}); }
Octets named(std::string_view name, uint8_t tag = 0x13) {
    return seq({set({seq({oid("55 04 03"), tlv(tag, text(name))})})});
}

// Seconds from one moment, which the first row takes.
Octets utcTime(int offset) {
    static const time_t now = time(nullptr);
    const time_t at = now + offset;
    char digits[16];
    strftime(digits, sizeof digits, "%y%m%d%H%M%SZ", gmtime(&at));
    return tlv(0x17, text(digits));
}
Octets window(int from, int to) { return seq({utcTime(from), utcTime(to)}); }

// An issuer's certificate and what it issued; a row changes what it is about.
struct Link {
    CertParts issuer;
    CertParts subject; // of a CRL and a request: names, key and algorithms alone
    const EVP_MD *digest = EVP_sha1();
    const Pkey *signer = &rootKey();
    void (*tamper)(CertParts &subject) = nullptr; // behind the signer's back

    Link() {
        issuer.subject = subject.issuer = named("Root");
        issuer.validity = subject.validity = window(-1000, 1000);
        issuer.key = subject.key = publicKey(rootKey());
    }
    Octets finish(Octets (*tbs)(const Link &)) {
        const Octets input = tbs(*this);
        if (subject.signature == CertParts().signature) subject.signature = bits(signWith(*signer, digest, input));
        if (tamper != nullptr) tamper(subject);
        return seq({tbs(*this), subject.outer, subject.signature});
    }
};
Octets certTbs(const Link &link) { return link.subject.tbs(); }
Octets crlTbs(const Link &link) {
    const Octets stale = cat({utcTime(-90), utcTime(-60)});
    return seq({hex("02 01 01"), link.subject.inner, link.subject.issuer, stale, seq({}), link.subject.extensions});
}
Octets csrTbs(const Link &link) {
    return seq({hex("02 01 00"), link.subject.subject, link.subject.key, hex("A0 00"), link.subject.extensions});
}

template <auto Check, auto Tbs> int32_t verifyIssued(Link &link) {
    const Octets issuer = link.issuer.whole(), object = link.finish(Tbs);
    return Check(issuer.data(), static_cast<uint32_t>(issuer.size()), object.data(),
                 static_cast<uint32_t>(object.size()));
}
constexpr auto verifyCert = verifyIssued<KA_VerifyCert, certTbs>;
constexpr auto verifyCrl = verifyIssued<KA_VerifyCrl, crlTbs>;
int32_t verifyCsr(const Octets &csr) { return KA_VerifyCsr_Sign(csr.data(), static_cast<int32_t>(csr.size())); }
int32_t verifyCsrOf(Link &link) { return verifyCsr(link.finish(csrTbs)); }

void setAlgorithm(Link &link, const char *id, const EVP_MD *digest) {
    link.subject.outer = link.subject.inner = algorithm(id);
    link.digest = digest;
}
void setKey(Link &link, const Octets &key) {
    link.issuer.key = link.subject.key = seq({algorithm(RsaEncryption), bits(key)});
}

// What all three have in common.
TEST(Verify, SignaturesKeysAndAlgorithms) {
    const Zone utc("UTC");
    static const Pkey other(EVP_RSA_gen(1024));
    const std::tuple<const char *, void (*)(Link &), int32_t> rows[] = {
        {"SHA-1", [](Link &) {}, KACERT_Ok},
        {"MD5", [](Link &l) { setAlgorithm(l, Md5WithRsa, EVP_md5()); }, KACERT_Ok},
        {"nine octets", [](Link &l) { setAlgorithm(l, "2A 86 48 86 F7 0D 01 01 05 01", EVP_sha1()); }, KACERT_Ok},
        {"eight octets", [](Link &l) { setAlgorithm(l, "2A 86 48 86 F7 0D 01 01", EVP_sha1()); }, 118},
        {"SHA-256", [](Link &l) { setAlgorithm(l, Sha256WithRsa, EVP_sha256()); }, 118},
        {"OID of 129", [](Link &l) { l.subject.outer = l.subject.inner = seq({tlv(6, Octets(129, 1))}); }, 101},
        {"rsaEncryption", [](Link &l) { setAlgorithm(l, RsaEncryption, EVP_sha1()); }, 128},
        {"MD5 called SHA-1", [](Link &l) { l.digest = EVP_md5(); }, 128},
        {"content", [](Link &l) { l.tamper = [](CertParts &p) { p.extensions = hex("A3 02 30 00"); }; }, 128},
        {"signature", [](Link &l) { l.tamper = [](CertParts &p) { p.signature.back() ^= 1; }; }, 128},
        {"signer", [](Link &l) { l.signer = &other; }, 128},
        {"signature of 513", [](Link &l) { l.subject.signature = bits(Octets(513)); }, 101},
        {"key of 513", [](Link &l) { setKey(l, Octets(513)); }, 101},
        {"no exponent", [](Link &l) { setKey(l, seq({hex("02 01 05")})); }, 108},
        {"even modulus",
         [](Link &l) {
             setKey(l, seq({tlv(2, Octets(256, 2)), hex("02 01 03")}));
         },
         128},
    };
    for (const auto &[name, change, want] : rows)
        for (const auto verify : {verifyCert, verifyCrl, verifyCsrOf}) {
            Link link;
            change(link);
            EXPECT_EQ(verify(link), want) << name;
            EXPECT_EQ(ERR_peek_error(), 0u) << name;
        }
}

// Names by their text, times of a certificate, and which of two faults is told.
TEST(Verify, NamesTimesAndOrder) {
    const Zone utc("UTC");
    static const Octets longest = named(std::string(1020, 'x')); // with "CN=" and a comma, 1,024 octets
    static const Octets tooLong = named(std::string(1021, 'x'));
    static const auto setNames = [](Link &l, const Octets &name) { l.issuer.subject = l.subject.issuer = name; };
    static const auto setTimes = [](Link &l, int from, int to) { l.subject.validity = window(from, to); };
    const std::tuple<const char *, void (*)(Link &), int32_t, int32_t> rows[] = {
        {"letter case", [](Link &l) { l.subject.issuer = named("rOOT"); }, 116, 116},
        {"another string type", [](Link &l) { l.subject.issuer = named("Root", 0x0C); }, 0, 0},
        {"no names", [](Link &l) { setNames(l, seq({})); }, 0, 0},
        {"the longest", [](Link &l) { setNames(l, longest); }, 0, 0},
        {"too long", [](Link &l) { setNames(l, tooLong); }, 101, 101},
        {"one too long", [](Link &l) { l.subject.issuer = tooLong; }, 101, 101},
        {"a second early", [](Link &l) { setTimes(l, -1001, 1000); }, 117, 0},
        {"a second late", [](Link &l) { setTimes(l, -1000, 1001); }, 117, 0},
        {"not yet", [](Link &l) { setTimes(l, 100, 1000); }, 117, 0},
        {"no more", [](Link &l) { setTimes(l, -1000, -100); }, 117, 0},
        {"name, time", [](Link &l) { setTimes(l, 100, 1000), l.subject.issuer = named("X"); }, 116, 116},
        {"time, algorithm", [](Link &l) { setTimes(l, 100, 1000), setAlgorithm(l, "2A", EVP_sha1()); }, 117, 118},
        {"algorithm, signature", [](Link &l) { setAlgorithm(l, "2A", nullptr), l.subject.signature = bits(tooLong); },
         118, 118},
        {"signature, key", [](Link &l) { setKey(l, tooLong), l.subject.signature = bits(Octets(513)); }, 101, 101},
        // A CRL answers the inner algorithm for the outer one.
        {"inner MD5", [](Link &l) { l.subject.inner = algorithm(Md5WithRsa); }, 0, 128},
        {"outer MD5", [](Link &l) { l.subject.outer = algorithm(Md5WithRsa); }, 128, 0},
        {"no issuer", [](Link &l) { l.issuer.outer = hex("05 00"); }, 106, 106},
        {"nothing issued", [](Link &l) { l.subject.outer = hex("05 00"); }, 106, 106},
    };
    for (const auto &[name, change, wantCert, wantCrl] : rows) {
        Link cert, crl;
        change(cert), change(crl);
        EXPECT_EQ(verifyCert(cert), wantCert) << name;
        EXPECT_EQ(verifyCrl(crl), wantCrl) << name;
    }
    const uint8_t octet = 0x30;
    for (const auto verify : {KA_VerifyCert, KA_VerifyCrl}) {
        EXPECT_EQ(verify(nullptr, 1, &octet, 1), KACERT_CertNotEndErr);
        EXPECT_EQ(verify(&octet, 1, nullptr, 1), KACERT_CertNotEndErr);
    }
    EXPECT_EQ(KA_VerifyCsr_Sign(nullptr, 1), KACERT_CertNotEndErr);
    for (const int32_t length : {0, -1}) EXPECT_EQ(KA_VerifyCsr_Sign(&octet, length), KACERT_CertNotEndErr);
}

Octets pem(const Octets &der) {
    const std::unique_ptr<BIO, By<BIO_free>> out(BIO_new(BIO_s_mem()));
    PEM_write_bio(out.get(), "CERTIFICATE REQUEST", "", der.data(), static_cast<long>(der.size()));
    char *data = nullptr;
    const long size = BIO_get_mem_data(out.get(), &data);
    return Octets(data, data + size);
}

TEST(Verify, RequestsInPem) {
    const auto request = [](size_t more) { // octets at its end, which are signed
        Link link;
        link.subject.extensions = tlv(0x04, Octets(more));
        return link.finish(csrTbs);
    };
    const size_t to5000 = 5000 - request(4000).size() + 4000;
    Octets bad = request(1);
    bad.back() ^= 1;
    const std::pair<Octets, int32_t> rows[] = {
        {pem(request(1)), KACERT_Ok},
        {pem(bad), KACERT_VerifySignatureErr},
        {pem(Octets(127)), KACERT_CertNotEndErr},
        {pem(cat({hex("31 7E"), Octets(126)})), KACERT_InvalidTagErr},
        {pem(request(to5000)), KACERT_Ok},
        {pem(request(to5000 + 1)), KACERT_InvalidLengthErr},
        {request(to5000 + 1), KACERT_Ok},
        {text("xyz"), -1},
    };
    for (const auto &[octets, want] : rows) EXPECT_EQ(verifyCsr(octets), want) << octets.size();
}

// libcrypto takes what the rows above are made from.
template <auto Read, auto Verify, auto Free> int oracle(const Octets &der) {
    const uint8_t *at = der.data();
    auto *object = Read(nullptr, &at, static_cast<long>(der.size()));
    const int verdict = Verify(object, rootKey().get());
    Free(object);
    return verdict;
}

TEST(Verify, LibcryptoAgrees) {
    EXPECT_EQ((oracle<d2i_X509, X509_verify, X509_free>(Link().finish(certTbs))), 1);
    EXPECT_EQ((oracle<d2i_X509_CRL, X509_CRL_verify, X509_CRL_free>(Link().finish(crlTbs))), 1);
    EXPECT_EQ((oracle<d2i_X509_REQ, X509_REQ_verify, X509_REQ_free>(Link().finish(csrTbs))), 1);
    Link link; // MD2, which libcrypto has not: it signs the digest
    setAlgorithm(link, Md2WithRsa, nullptr);
    const Octets tbs = certTbs(link);
    Octets digest(16);
    uint32_t size = 0;
    KA_PKCS7_DigestMessage(KA_DIGEST_MD2, tbs.data(), static_cast<uint32_t>(tbs.size()), digest.data(), &size);
    link.subject.signature = bits(signWith(rootKey(), nullptr, digest));
    EXPECT_EQ(verifyCert(link), KACERT_Ok);
}

} // namespace
