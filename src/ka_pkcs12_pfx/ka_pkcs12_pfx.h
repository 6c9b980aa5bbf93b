// PFX files: the context, and the values that encoder and decoder share.
#pragma once

#include "karil/oids.h"
#include "karil/pfx.h"
#include "karil/pkcs12_crypt.h"

#include "ka_pkcs12_code.h"

namespace karil {

// The octets of a MAC's key, whatever its digest.
constexpr uint32_t MacKeySize = 20;

// The MAC of a file, over octets that are not the record's own.
struct PfxMac {
    MacRecord record = {};
    Secret<MacKeySize> key;
    HmacHookParam parameter = {};

    PfxMac() { initMac(record); }
    PfxMac(const PfxMac &) = delete;
    PfxMac &operator=(const PfxMac &) = delete;
    ~PfxMac() {
        KI_ClearAnybuf(&record.macInput); // not wiped: it is the file's
        clearMac(record);
    }
};
// Derives the key from the record's salt and iterations, and sets the hook. An unknown digest is left to the hook.
[[nodiscard]] Status setMacPassword(PfxMac &mac, int32_t digestId, Bytes password);

// A password of a caller.
[[nodiscard]] Status checkPassword(const uint8_t *password, int32_t length);

inline AttributeList keyAttributesOf(PfxCtx &ctx) {
    return {ctx.keyAttributes.next, ctx.keyAttributeMarks};
}
inline AttributeList bagAttributesOf(PfxCtx &ctx) {
    return {ctx.bagAttributes.next, ctx.bagAttributeMarks};
}
// Stores how many attributes there are now.
void noteAttributes(PfxCtx &ctx);

// A node at the end of the list; `added` may be null.
[[nodiscard]] Status addCertificate(PfxCtx &ctx, Bytes certificate, PfxCertificate **added);

} // namespace karil
