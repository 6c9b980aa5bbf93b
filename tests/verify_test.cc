// Certificates, CRLs and requests that libcrypto signed, whole and tampered with.
#include "crypto.h"

using namespace karil_test;

namespace {

constexpr char Md2WithRsa[] = "2A 86 48 86 F7 0D 01 01 02";
constexpr char Md5WithRsa[] = "2A 86 48 86 F7 0D 01 01 04";
constexpr char Sha256WithRsa[] = "2A 86 48 86 F7 0D 01 01 0B";

const Pkey &rootKey() {
    static const Pkey key = keyOf(keyPair().secret);
    return key;
}

Octets spkiOf(const Pkey &key) {
    return seq({algorithm(RsaEncryption), bits(publicKeyOf(key))});
}

// Seconds from one moment, which the first row takes.
Octets utcTime(int offset) {
    static const time_t now = time(nullptr);
    const time_t at = now + offset;
    char digits[16];
    strftime(digits, sizeof digits, "%y%m%d%H%M%SZ", gmtime(&at));
    return tlv(0x17, text(digits));
}
Octets window(int from, int to) {
    return seq({utcTime(from), utcTime(to)});
}

// An issuer's certificate and what it issued; a row changes what it is about.
struct Link {
    CertParts issuer;
    CertParts subject; // of a CRL and a request: names, key and algorithms alone
    const EVP_MD *digest = EVP_sha1();
    const Pkey *signer = &rootKey();
    void (*tamper)(CertParts &subject) = nullptr; // behind the signer's back

    Link() {
        issuer.subject = subject.issuer = commonName("Root");
        issuer.validity = subject.validity = window(-1000, 1000);
        issuer.key = subject.key = spkiOf(rootKey());
    }
    Octets finish(Octets (*tbs)(const Link &)) {
        const Octets input = tbs(*this);
        if (subject.signature == CertParts().signature)
            subject.signature = bits(signWith(*signer, digest, input));
        if (tamper != nullptr)
            tamper(subject);
        return seq({tbs(*this), subject.outer, subject.signature});
    }
};
Octets certTbs(const Link &link) {
    return link.subject.tbs();
}
Octets crlTbs(const Link &link) {
    const Octets stale = cat({utcTime(-90), utcTime(-60)});
    return seq({hex("02 01 01"), link.subject.inner, link.subject.issuer, stale, seq({}), link.subject.extensions});
}
Octets csrTbs(const Link &link) {
    return seq({hex("02 01 00"), link.subject.subject, link.subject.key, hex("A0 00"), link.subject.extensions});
}

template <auto Check, auto Tbs> int32_t verifyIssued(Link &link) {
    const Octets issuer = link.issuer.whole(), object = link.finish(Tbs);
    return TRIED(Check(issuer.data(), sizeOf(issuer), object.data(), sizeOf(object)));
}
constexpr auto verifyCert = verifyIssued<KA_VerifyCert, certTbs>;
constexpr auto verifyCrl = verifyIssued<KA_VerifyCrl, crlTbs>;
int32_t verifyCsr(const Octets &csr) {
    return TRIED(KA_VerifyCsr_Sign(csr.data(), lengthOf(csr)));
}
int32_t verifyCsrOf(Link &link) {
    return verifyCsr(link.finish(csrTbs));
}

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
    static const Octets longest = commonName(std::string(1020, 'x')); // with "CN=" and a comma, 1,024 octets
    static const Octets tooLong = commonName(std::string(1021, 'x'));
    static const auto setNames = [](Link &l, const Octets &name) { l.issuer.subject = l.subject.issuer = name; };
    static const auto setTimes = [](Link &l, int from, int to) { l.subject.validity = window(from, to); };
    const std::tuple<const char *, void (*)(Link &), int32_t, int32_t> rows[] = {
        {"letter case", [](Link &l) { l.subject.issuer = commonName("rOOT"); }, 116, 116},
        {"another string type", [](Link &l) { l.subject.issuer = commonName("Root", 0x0C); }, 0, 0},
        {"no names", [](Link &l) { setNames(l, seq({})); }, 0, 0},
        {"the longest", [](Link &l) { setNames(l, longest); }, 0, 0},
        {"too long", [](Link &l) { setNames(l, tooLong); }, 101, 101},
        {"one too long", [](Link &l) { l.subject.issuer = tooLong; }, 101, 101},
        {"a second early", [](Link &l) { setTimes(l, -1001, 1000); }, 117, 0},
        {"a second late", [](Link &l) { setTimes(l, -1000, 1001); }, 117, 0},
        {"not yet", [](Link &l) { setTimes(l, 100, 1000); }, 117, 0},
        {"no more", [](Link &l) { setTimes(l, -1000, -100); }, 117, 0},
        {"name, time", [](Link &l) { setTimes(l, 100, 1000), l.subject.issuer = commonName("X"); }, 116, 116},
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
    for (const int32_t length : {0, -1})
        EXPECT_EQ(KA_VerifyCsr_Sign(&octet, length), KACERT_CertNotEndErr);
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
        {pemOf("CERTIFICATE REQUEST", request(1)), KACERT_Ok},
        {pemOf("CERTIFICATE REQUEST", bad), KACERT_VerifySignatureErr},
        {pemOf("CERTIFICATE REQUEST", Octets(127)), KACERT_CertNotEndErr},
        {pemOf("CERTIFICATE REQUEST", cat({hex("31 7E"), Octets(126)})), KACERT_InvalidTagErr},
        {pemOf("CERTIFICATE REQUEST", request(to5000)), KACERT_Ok},
        {pemOf("CERTIFICATE REQUEST", request(to5000 + 1)), KACERT_InvalidLengthErr},
        {request(to5000 + 1), KACERT_Ok},
        {text("xyz"), -1},
    };
    for (const auto &[octets, want] : rows)
        EXPECT_EQ(verifyCsr(octets), want) << octets.size();
}

TEST(Verify, Md2) {
    Link link; // MD2, which libcrypto has not: it signs the digest
    setAlgorithm(link, Md2WithRsa, nullptr);
    const Octets tbs = certTbs(link);
    Octets digest(16);
    uint32_t size = 0;
    KA_PKCS7_DigestMessage(KA_DIGEST_MD2, tbs.data(), static_cast<uint32_t>(tbs.size()), digest.data(), &size);
    link.subject.signature = bits(signWith(rootKey(), nullptr, digest));
    EXPECT_EQ(verifyCert(link), KACERT_Ok);
}

// libcrypto's want of memory is a signature that does not verify.
TEST(Verify, UnderFailingAllocations) {
    const Zone utc("UTC");
    const Octets csr = pemOf("CERTIFICATE REQUEST", Link().finish(csrTbs));
    const auto verifyAll = [&csr] {
        Link cert, crl;
        EXPECT_EQ(verifyCert(cert), KACERT_Ok);
        EXPECT_EQ(verifyCrl(crl), KACERT_Ok);
        EXPECT_EQ(verifyCsr(csr), KACERT_Ok);
    };
    EXPECT_TRUE(sweep(verifyAll, {{KACERT_MemoryErr, KACERT_CrlNotEndErr, -1}}));
    const auto verifyOne = [&csr] { EXPECT_EQ(verifyCsr(csr), KACERT_Ok); };
    EXPECT_TRUE(sweep(verifyOne, {{KACERT_VerifySignatureErr}, true, Pool::Crypto}));
}

} // namespace
