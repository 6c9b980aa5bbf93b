// The PFX around ContentInfos: what its two kinds share.
#pragma once

#include "karil/pkcs12_auth_safe.h"

#include "ka_pkcs12_base.h"
#include "ka_pkcs12_code.h"

namespace karil {

constexpr char RefusedArgument[] = "------------>KACERT_InvalidParamErr";

// What differs between the kinds: the message that a context owns.
struct AuthSafeKind {
    int32_t type;
    Status (*create)(void **message);
    void (*destroy)(void *message);
    Status (*write)(Writer &out, AuthSafeCtx &ctx); // the PFX over ctx.content
    // Stores the message and lends its content, up to the next one.
    Status (*read)(AuthSafeCtx &ctx, const Element &message, Bytes &content);
    Status noMemory; // for the message
};
extern const AuthSafeKind UnderMac;
extern const AuthSafeKind UnderSignatures;

// A context of the other kind is refused as none.
[[nodiscard]] Status checkContext(const AuthSafeCtx *ctx, const AuthSafeKind &kind);
// The same for a Set of octets.
[[nodiscard]] Status checkOctets(const AuthSafeCtx *ctx, const AuthSafeKind &kind, const uint8_t *value,
                                 int32_t length);

} // namespace karil
