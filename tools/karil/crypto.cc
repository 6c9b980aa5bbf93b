#include "crypto.h"

#include "failure.h"

namespace tool {

karil::Octets digestOf(const EVP_MD *digest, karil::Bytes octets) {
    karil::Octets result(EVP_MAX_MD_SIZE);
    unsigned length = 0;
    if (EVP_Digest(octets.data(), octets.size(), result.data(), &length, digest, nullptr) != 1)
        throw Failure{Exit::Unreadable, "libcrypto cannot digest"};
    result.resize(length);
    return result;
}

} // namespace tool
