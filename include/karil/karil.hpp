// karil for C++20: contexts that free themselves, octets as spans and vectors, statuses as results, lambdas as hooks.
// Header-only; it throws nothing but what a vector without memory throws. The functions are those of the C headers,
// which say what they do:
//
//     karil::Result<karil::Certificate> made = karil::Certificate::make();
//     if (!made)
//         return made.status();
//     karil::Certificate &cert = *made;
//     if (karil::StatusCode status = karil::call(KACert_DecodeCert, cert, der); !status)
//         return status;
//     karil::Result<karil::Octets> subject = karil::ask(KACert_GetCertAttributeChar, cert, CERT_SUBJECT_DN);
#ifndef KARIL_KARIL_HPP
#define KARIL_KARIL_HPP

#include "karil/karil.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace karil {
inline namespace cpp {

using Bytes = std::span<const std::uint8_t>;
using Octets = std::vector<std::uint8_t>;

// The octets of characters, and characters of octets.
inline Bytes bytesOf(std::string_view characters) {
    return {reinterpret_cast<const std::uint8_t *>(characters.data()), characters.size()};
}
inline std::string textOf(Bytes octets) {
    return {reinterpret_cast<const char *>(octets.data()), octets.size()};
}

// What a call returned. True if it is KACERT_Ok.
class [[nodiscard]] StatusCode {
public:
    constexpr StatusCode(std::int32_t value = KACERT_Ok) : number(value) {}
    constexpr explicit operator bool() const { return number == KACERT_Ok; }
    constexpr std::int32_t value() const { return number; }
    const char *name() const { return karil_status_name(number); }
    const char *text() const { return karil_status_text(number); }
    friend constexpr bool operator==(StatusCode, StatusCode) = default;

private:
    std::int32_t number;
};

// A value, or the status of the call that did not give one.
template <class T> class [[nodiscard]] Result {
public:
    Result(T given) : held(std::move(given)) {}
    Result(StatusCode failure) : code(failure) {}

    explicit operator bool() const { return held.has_value(); }
    StatusCode status() const { return code; }
    // These want a value.
    T &operator*() { return *held; }
    const T &operator*() const { return *held; }
    T *operator->() { return &*held; }
    const T *operator->() const { return &*held; }

private:
    std::optional<T> held;
    StatusCode code;
};

namespace detail {

template <class Ctx> Ctx contextOf(std::int32_t (*create)(Ctx **));

// A length as the C function takes it, signed or not. One above 31 bits becomes one that every function refuses.
struct Length {
    std::size_t size;

    bool fits() const { return size <= 0x7FFFFFFF; }
    operator std::int32_t() const { return fits() ? static_cast<std::int32_t>(size) : -1; }
    operator std::uint32_t() const { return fits() ? static_cast<std::uint32_t>(size) : 0xFFFFFFFF; }
};

} // namespace detail

// A context: moves, does not copy, and destroys what it holds. `release` hands it over to a C function that takes it.
template <auto Create, auto Destroy> class Handle {
public:
    using Ctx = decltype(detail::contextOf(Create));

    static Result<Handle> make() {
        Ctx *made = nullptr;
        const StatusCode status = Create(&made);
        if (!status)
            return status;
        return Handle(made);
    }
    explicit Handle(Ctx *taken) : owned(taken) {}

    Ctx *get() const { return owned.get(); }
    Ctx *operator->() const { return owned.get(); }
    Ctx *release() { return owned.release(); }

private:
    struct Free {
        void operator()(Ctx *ctx) const { Destroy(ctx); }
    };
    std::unique_ptr<Ctx, Free> owned;
};

namespace detail {

// What an empty span is for C: the header of an element without tag and content, since a decoder that is given the
// length 0 takes the length that the header tells.
inline constexpr std::uint8_t Nothing[2] = {};

// Arguments as C takes them: a handle's context, octets as pointer and length, all else as it is.
template <class T> auto spread(const T &argument) {
    if constexpr (requires { typename T::Ctx; })
        return std::tuple(argument.get());
    else if constexpr (std::is_convertible_v<const T &, Bytes>) {
        const Bytes octets = argument;
        return std::tuple(octets.empty() ? Nothing : octets.data(), Length{octets.size()});
    } else
        return std::tuple(argument);
}

} // namespace detail

// Calls a C function. A handle stands for its context, octets (a span, a vector) for pointer and length.
template <class Function, class... Arguments> StatusCode call(Function function, const Arguments &...arguments) {
    return std::apply(function, std::tuple_cat(detail::spread(arguments)...));
}

// Calls a function that ends in (uint8_t *result, uint32_t *resultLength): first for the length, then for the octets.
// `room`: how many octets a function writes at most, which is then called once. It is for functions that have no
// length-only form, and for encoders of messages if a hook does not answer the same length each time, as one that signs
// with ECDSA: they run the hooks in both calls, and C writes the longer answer past the octets that the first one told.
template <class Function, class... Arguments>
Result<Octets> askWithRoom(std::uint32_t room, Function function, const Arguments &...arguments) {
    Octets result(room);
    std::uint32_t length = 0;
    if (const StatusCode status = call(function, arguments..., result.data(), &length); !status)
        return status;
    if (length > room)
        return StatusCode(KACERT_InvalidLengthErr);
    result.resize(length);
    return result;
}
template <class Function, class... Arguments> Result<Octets> ask(Function function, const Arguments &...arguments) {
    std::uint32_t length = 0;
    std::uint8_t *nothing = nullptr;
    if (const StatusCode status = call(function, arguments..., nothing, &length); !status)
        return status;
    if (length == 0)
        return Octets();
    return askWithRoom(length, function, arguments...);
}

// A hook of the shape of KAHookFunc from anything that is called with (Bytes input, uint8_t *output, uint32_t &length)
// and returns a status; a null output asks for the length alone. The library copies the parameter octet by octet, so it
// is the address of the callable, which must live as long as the context that the hook is given to:
// KACert_SetCrlSignFunc(list.get(), hook.function(), hook.parameter(), hook.size()). Where the library calls a hook
// without its parameter first, as it does for certificates, the callable is not called.
template <class Callable> class Hook {
public:
    explicit Hook(Callable &called) : address(&called) {}

    static constexpr KAHookFunc function() { return run; }
    const void *parameter() const { return &address; }
    static constexpr std::uint32_t size() { return sizeof(Callable *); }

private:
    static std::int32_t run(const std::uint8_t *input, std::uint32_t inputLength, std::uint8_t *output,
                            std::uint32_t *outputLength, void *parameter) {
        if (parameter == nullptr)
            return KACERT_Ok;
        Callable &called = **static_cast<Callable **>(parameter);
        return called(Bytes(input, inputLength), output, *outputLength);
    }

    Callable *address;
};

using Certificate = Handle<KACert_CreateCertDecodeCtx, KACert_DestroyCertDecodeCtx>;
using RevocationList = Handle<KACert_CreateCrlDecodeCtx, KACert_DestroyCrlDecodeCtx>;
using CertificationRequest = Handle<KACert_CreateCsrDecodeCtx, KACert_DestroyCsrDecodeCtx>;
using OcspRequest = Handle<KA_OCSP_CreateDecodeRequest, KA_OCSP_DestoryDecodeRequest>;
using OcspRequestList = Handle<KA_OCSP_CreateDecodeRequestList, KA_OCSP_DestroyDecodeRequestList>;
using OcspResponse = Handle<KA_OCSP_CreateDecodeResponse, KA_OCSP_DestoryDecodeResponse>;
using OcspResponseList = Handle<KA_OCSP_CreateDecodeResponseList, KA_OCSP_DestroyDecodeResponseList>;
using Data = Handle<KA_PKCS7_CreateDataDecodeCtx, KA_PKCS7_DestoryDataDecodeCtx>;
using DigestedData = Handle<KA_PKCS7_CreateDigestedDataDecodeCtx, KA_PKCS7_DestoryDigestedDataDecodeCtx>;
using SignedData = Handle<KA_PKCS7_CreateSignedDataDecodeCtx, KA_PKCS7_DestroySignedDataDecodeCtx>;
using EnvelopedData = Handle<KA_PKCS7_CreateEnvelopedDataDecodeCtx, KA_PKCS7_DestroyEnvelopedDataDecodeCtx>;
using EncryptedData = Handle<KA_PKCS7_CreateEncryptedDataDecodeCtx, KA_PKCS7_DestoryEncryptedDataDecodeCtx>;
using SignedAndEnvelopedData =
    Handle<KA_PKCS7_CreateSignedAndEnvelopedDataDecodeCtx, KA_PKCS7_DestorySignedAndEnvelopedDataDecodeCtx>;
using Signer = Handle<KA_PKCS7_CreateDecodeSignerInfo, KA_PKCS7_DestoryDecodeSignerInfo>;
using Recipient = Handle<KA_PKCS7_CreateDecodeRecipientInfo, KA_PKCS7_DestoryDecodeRecipientInfo>;
using EncryptedContent = Handle<KA_PKCS7_CreateDeocdeEncryptedContent, KA_PKCS7_DestoryDecodeEncryptedContent>;
using KeyBag = Handle<KA_PKCS12_CreateDecodeKeyBag, KA_PKCS12_DestroyDecodeKeyBag>;
using EncKeyBag = Handle<KA_PKCS12_CreateDecodeEncKeyBag, KA_PKCS12_DestoryDecodeEncKeyBag>;
using CertBag = Handle<KA_PKCS12_CreateDecodeCertBag, KA_PKCS12_DestoryDecodeCertBag>;
using CrlBag = Handle<KA_PKCS12_CreateDecodeCrlBag, KA_PKCS12_DestoryDecodeCrlBag>;
using SecretContentsBag = Handle<KA_PKCS12_CreateDecodeSecretContentsBag, KA_PKCS12_DestoryDecodeSecretContentsBag>;
using SafeBag = Handle<KA_PKCS12_CreateDecodeSafeBag, KA_PKCS12_DestoryDecodeSafeBag>;
using SafeContents = Handle<KA_PKCS12_CreateDecodeSafeContents, KA_PKCS12_DestoryDecodeSafeContents>;
using EnvelopedContentInfo =
    Handle<KA_PKCS12_CreateEncodeContentInfoOfEnvelopedType, KA_PKCS12_DestoryEncodeContentInfoOfEnvelopedType>;
using EncryptedContentInfo =
    Handle<KA_PKCS12_CreateEncodeContentInfoOfEncryptedType, KA_PKCS12_DestoryEncodeContentInfoOfEncryptedType>;
using AuthSafe = Handle<KA_PKCS12_CreateDecodeAuthSafeOfDataType, KA_PKCS12_DestoryDecodeAuthSafeOfDataType>;
using SignedAuthSafe = Handle<KA_PKCS12_CreateDecodeAuthSafeOfSignedType, KA_PKCS12_DestoryDecodeAuthSafeOfSignedType>;
using Pfx = Handle<KA_PKCS12_CreateDecodePfx, KA_PKCS12_DestroyDecodePFX>;

} // namespace cpp
} // namespace karil

#endif
