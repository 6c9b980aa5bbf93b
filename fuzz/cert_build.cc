// A byte program builds a certificate: one octet that chooses the start, one the hook, then steps of a selector and
// what it needs. The certificate is encoded, decoded and compared with what was set.
#include "fuzz.h"

using namespace karil_fuzz;

namespace {

// What the hook does. The library hands it the parameter in the second of its two calls alone.
struct Plan {
    int32_t firstStatus;
    int32_t status;
    uint32_t length; // what it says to have written
    uint32_t calls;
};
Plan plan;
constexpr uint32_t Room = 512;
constexpr uint32_t Lengths[] = {256, 1, Room, Room - 1, Room + 1, 0, 0x80000000, UINT32_MAX};
constexpr uint8_t Parameter[] = {1, 2, 3};

// Signs with the first octets of its input, again and again.
int32_t copyingHook(const uint8_t *input, uint32_t inputLength, uint8_t *output, uint32_t *outputLength,
                    void *parameter) {
    ++plan.calls;
    if (output == nullptr) {
        must(plan.calls == 1 && parameter == nullptr, "the first call asks for the length");
        return plan.firstStatus;
    }
    must(plan.calls == 2 && *outputLength == Room, "the second call has the room");
    must(parameter != nullptr && memcmp(parameter, Parameter, sizeof Parameter) == 0, "and a copy of the parameter");
    for (uint32_t at = 0; at < std::min(plan.length, Room); ++at)
        output[at] = input[at % inputLength];
    *outputLength = plan.length;
    return plan.status;
}

void readPlan(uint8_t octet) {
    plan = {(octet & 0x10) != 0 ? 7 : 0, (octet & 0x20) != 0 ? 9 : 0, Lengths[octet % std::size(Lengths)], 0};
}

constexpr int32_t CharIds[] = {
    2,   3,   5,   6,   7,   9,   10,  11,  12,  13,  14,  15,  16,  17,  18,  31,  33,  34,
    35,  36,  37,  38,  39,  40,  41,  42,  53,  54,  64,  65,  84,  85,  86,  87,  91,  92,
    93,  101, 102, 103, 104, 105, 106, 107, 109, 110, 111, 112, 113, 114, 115, 119, 120, 121,
    128, 129, 130, 131, 135, 136, 137, 155, 501, 502, 503, 504, 505, 509, 510, 512,
};
enum Selector : uint8_t { Number = 0xF0, Private = 0xF1, PrivateOfValue = 0xF2, AnyId = 0xF3 };

// Some octets of the program; from 0xF0 on a length stands for a run of one octet, to reach the limits of texts.
Octets takeValue(Input &program) {
    const uint8_t length = program.octet();
    if (length >= 0xF0)
        return Octets(64u * (length - 0xEFu), program.octet());
    const Bytes value = program.take(length);
    return {value.begin(), value.end()};
}

int32_t takeNumber(Input &program) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | program.octet();
    return static_cast<int32_t>(value);
}

// What is known of the certificate in the end.
struct Expected {
    int32_t numbers[31] = {};
    uint32_t privateExtensions = 0;
    bool isOpaque = false; // octets of the caller's stand where decoding reads
};

void setNumber(CertEncodeCtx &ctx, Input &program, Expected &expected) {
    const int32_t id = program.octet();
    const int32_t value = takeNumber(program);
    if (KACert_SetCertAttributeInt(&ctx, id, value) == KACERT_Ok)
        expected.numbers[id] = value;
}

void addPrivate(CertEncodeCtx &ctx, Input &program, Expected &expected, bool isOfValue) {
    const Octets oid = takeValue(program);
    const Octets value = takeValue(program);
    const uint8_t critical = program.octet();
    const int32_t type = isOfValue ? program.octet() : 0;
    const int32_t status =
        isOfValue
            ? KACert_SetCertAttributePrivate_ForValue(&ctx, oid.data(), lengthOf(oid), critical, value.data(),
                                                      lengthOf(value), type)
            : KACert_SetCertAttributePrivate(&ctx, oid.data(), lengthOf(oid), critical, value.data(), lengthOf(value));
    must((status == KACERT_Ok) == (!oid.empty() && !value.empty()), "a private extension is taken");
    expected.privateExtensions += status == KACERT_Ok ? 1 : 0;
    const bool isStandard = oid.size() == 3 && oid[0] == 0x55 && oid[1] == 0x1D;
    expected.isOpaque = expected.isOpaque || isStandard;
}

void setAttribute(CertEncodeCtx &ctx, Input &program, int32_t id, Expected &expected) {
    const Octets value = takeValue(program);
    const int32_t status = set(ctx, id, value);
    must(status != KACERT_Ok || !value.empty(), "a value has an octet");
    expected.isOpaque = expected.isOpaque || id == CERT_ISSUER_DERDN || id == CERT_SUBJECT_DERDN;
}

void runStep(CertEncodeCtx &ctx, Input &program, Expected &expected) {
    const uint8_t selector = program.octet();
    switch (selector) {
    case Number:
        return setNumber(ctx, program, expected);
    case Private:
    case PrivateOfValue:
        return addPrivate(ctx, program, expected, selector == PrivateOfValue);
    case AnyId:
        return setAttribute(ctx, program, takeNumber(program), expected);
    default:
        return setAttribute(ctx, program, CharIds[selector % std::size(CharIds)], expected);
    }
}

void checkStatus(int32_t status, bool hasHook) {
    if (plan.calls > 0 && plan.firstStatus != 0)
        must(status == plan.firstStatus, "what the first call answers comes back");
    else if (plan.calls > 0 && plan.status != 0)
        must(status == plan.status, "what the second call answers comes back");
    else if (plan.calls > 0 && (plan.length == 0 || plan.length > Room))
        must(status == KACERT_InvalidLengthErr, "a signature has 1 to 512 octets");
    else
        must(status != KACERT_Ok || (hasHook && plan.calls == 2), "a certificate is signed once");
}

// The fields that a decoded certificate has as they were set.
using Field = const Anybuf &(*)(const CertEncodeCtx &ctx);
constexpr Field Fields[] = {
    [](const CertEncodeCtx &ctx) -> const Anybuf & { return ctx.signature; },
    [](const CertEncodeCtx &ctx) -> const Anybuf & { return ctx.publicKey; },
    [](const CertEncodeCtx &ctx) -> const Anybuf & { return ctx.innerSignatureAlgorithm.oid; },
    [](const CertEncodeCtx &ctx) -> const Anybuf & { return ctx.outerSignatureAlgorithm.oid; },
    [](const CertEncodeCtx &ctx) -> const Anybuf & { return ctx.extensions.authorityKeyId.keyId; },
    [](const CertEncodeCtx &ctx) -> const Anybuf & { return ctx.extensions.subjectKeyId.keyId; },
    [](const CertEncodeCtx &ctx) -> const Anybuf & { return ctx.extensions.subjectAltName.names.rfc822Name; },
    [](const CertEncodeCtx &ctx) -> const Anybuf & { return ctx.extensions.subjectAltName.names.dNSName; },
    [](const CertEncodeCtx &ctx) -> const Anybuf & {
        return ctx.extensions.subjectAltName.names.uniformResourceIdentifier;
    },
    [](const CertEncodeCtx &ctx) -> const Anybuf & { return ctx.extensions.subjectAltName.names.iPAddress; },
};

void checkDecoded(const CertEncodeCtx &built, Bytes der, const Expected &expected) {
    const CertPtr ctx = create<CertEncodeCtx>();
    const int32_t status = KACert_DecodeCert(ctx.get(), der.data(), sizeOf(der));
    if (expected.isOpaque)
        return;
    must(status == KACERT_Ok, "a certificate that was built can be decoded");
    for (const auto &[id, base] : Family<CertEncodeCtx>::Numbers) {
        int32_t value = -1;
        must(KACert_GetCertAttributeInt(ctx.get(), id, &value) == KACERT_Ok && value == expected.numbers[id],
             "a number comes back as it was set");
    }
    for (const Field field : Fields)
        must(equal(bytesOf(field(*ctx)), bytesOf(field(built))), "a field comes back as it was set");
    must(ctx->signature.length == plan.length, "the signature is the hook's");
    // Policies and access descriptions are kept as private extensions.
    const CertExtensions &extensions = built.extensions;
    uint32_t count = 0;
    KACert_GetCertAttributePrivate(ctx.get(), &count, nullptr, nullptr, nullptr, nullptr, nullptr);
    must(count == expected.privateExtensions + extensions.hasCertPolicies + extensions.hasAuthorityInfo,
         "all private extensions come back");
}

void checkEncoding(CertEncodeCtx &ctx, bool hasHook, const Expected &expected) {
    uint32_t size = 0;
    const int32_t status = KACert_EncodeCert(&ctx, nullptr, &size);
    checkStatus(status, hasHook);
    if (status != KACERT_Ok)
        return;
    const Area der(size);
    uint32_t again = 0;
    must(KACert_EncodeCert(&ctx, der.data(), &again) == KACERT_Ok && again == size, "the first result is kept");
    must(KACert_EncodeCert(&ctx, nullptr, &again) == KACERT_Ok && again == size, "however it is asked for");
    must(plan.calls == 2, "and not signed again");
    checkDecoded(ctx, der.bytes(), expected);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    return setenv("TZ", "UTC", 1);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input program{{data, size}};
    const uint8_t start = program.octet();
    readPlan(program.octet());
    const CertPtr ctx = create<CertEncodeCtx>();
    Expected expected;
    const bool hasHook = (start & 2) == 0;
    if (hasHook)
        must(KACert_SetCertSignFunc(ctx.get(), copyingHook, Parameter, sizeof Parameter) == KACERT_Ok, "a hook is set");
    if ((start & 1) == 0) {
        fill(*ctx);
        for (const auto &[id, value] : Family<CertEncodeCtx>::Numbers)
            expected.numbers[id] = value;
    }
    while (!program.rest.empty())
        runStep(*ctx, program, expected);
    checkEncoding(*ctx, hasHook, expected);
    return 0;
}
