// Objects of every family with all that can be set, and questions to all of them.
#pragma once

#include "rows.h"

namespace karil_test {

template <class Ctx> Owner<Ctx> full(const char *section) {
    Owner<Ctx> ctx = filled<Ctx>();
    for (const Row &row : rowsOf("Samples", section))
        EXPECT_EQ(takeAll(*ctx, row, "settings"), KACERT_Ok);
    return ctx;
}
inline Octets fullCertificate() {
    const CertPtr ctx = full<CertEncodeCtx>("EverySetting");
    const Octets id = hex("2A 03 05"), value = text("value");
    for (const int32_t type : {4, 19})
        TRIED(KACert_SetCertAttributePrivate_ForValue(ctx.get(), id.data(), 3, 1, value.data(), 5, type));
    return encode(*ctx);
}
inline Octets fullCrl() {
    return encode(*full<CrlEncodeCtx>("Crl"));
}
inline Octets fullRequest() {
    const CsrPtr ctx = full<CsrEncodeCtx>("Request");
    for (int count = 0; count < 2; ++count)
        TRIED(KACert_SetCsrAttributePrivate(ctx.get(), bytesOf("\x2A\x03").data(), 2, bytesOf("ab").data(), 2));
    return encode(*ctx);
}

// The ids that a family answers.
template <class Ctx> const std::vector<int32_t> &queries() {
    static const std::vector<int32_t> ids = [] {
        std::vector<int32_t> all;
        for (int32_t id = 0; id <= 1600; ++id)
            if (get(*create<Ctx>(), id) != "status 110")
                all.push_back(id);
        return all;
    }();
    return ids;
}
// Decodes a block of just the octets' size and asks for everything: the answers, the status first.
template <class Ctx> std::vector<std::string> answersOf(Bytes der) {
    const Exact exact(der);
    const Owner<Ctx> ctx = create<Ctx>();
    std::vector<std::string> all = {std::to_string(decode(*ctx, exact.bytes()))};
    for (const int32_t id : queries<Ctx>())
        all.push_back(get(*ctx, id));
    return all;
}

} // namespace karil_test
