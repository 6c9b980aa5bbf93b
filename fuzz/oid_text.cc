// Dotted text to object identifiers, and the octets back to text.
#include "fuzz.h"

#include <string>

using namespace karil_fuzz;

namespace {

// The arcs of content octets (X.690 8.19), each in the shortest form.
std::vector<uint64_t> arcsOf(Bytes oid) {
    must(!oid.empty() && (oid.back() & 0x80) == 0, "the last arc is complete");
    std::vector<uint64_t> arcs;
    for (size_t at = 0; at < oid.size(); ++at) {
        must(oid[at] != 0x80, "an arc does not start with a group of zeros");
        uint64_t arc = oid[at] & 0x7F;
        while ((oid[at] & 0x80) != 0)
            arc = arc << 7 | (oid[++at] & 0x7F);
        must(arc <= UINT32_MAX, "an arc has 32 bits");
        arcs.push_back(arc);
    }
    return arcs;
}

std::string textOf(const std::vector<uint64_t> &arcs) {
    const uint64_t first = std::min<uint64_t>(arcs[0] / 40, 2);
    std::string text = std::to_string(first) + "." + std::to_string(arcs[0] - 40 * first);
    for (size_t i = 1; i < arcs.size(); ++i)
        text += "." + std::to_string(arcs[i]);
    return text;
}

Octets convert(const std::string &text) {
    Octets result(1024);
    uint32_t size = 0;
    must(KACert_GetOIDValue(text.data(), static_cast<int32_t>(text.size()), result.data(), &size) == KACERT_Ok,
         "the text of an object identifier is taken");
    result.resize(size);
    return result;
}

void checkConverter(const std::string &text, Bytes want) {
    const char *characters = text.data();
    const auto length = static_cast<int32_t>(text.size());
    const auto size = static_cast<int32_t>(want.size());
    must(KACert_OidTextToDer(nullptr, 0, characters, length) == size, "counting gives the size");
    const Area exact(want.size());
    must(KACert_OidTextToDer(exact.data(), sizeOf(want), characters, length) == size, "the octets fit");
    must(equal(exact.bytes(), want), "both functions give the same octets");
    const Area small(want.size() - 1);
    must(KACert_OidTextToDer(small.data(), sizeOf(small.bytes()), characters, length) == 0, "an area is not exceeded");
    if (text.find('\0') == std::string::npos)
        must(KACert_OidTextToDer(nullptr, 0, text.c_str(), -1) == size, "a terminated text is read to its end");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const char *characters = reinterpret_cast<const char *>(data);
    const auto length = static_cast<int32_t>(size);
    constexpr uint32_t Untouched = 0xA5A5A5A5;
    uint32_t count = Untouched;
    const int32_t status = KACert_GetOIDValue(characters, length, nullptr, &count);
    if (status != KACERT_Ok) {
        must(count == Untouched, "a failed call stores no length");
        return 0;
    }
    must(count >= 1 && count <= 1024, "an object identifier has 1 to 1,024 octets");
    const Area octets(count);
    uint32_t again = 0;
    must(KACert_GetOIDValue(characters, length, octets.data(), &again) == KACERT_Ok && again == count,
         "asking and converting agree");
    const std::vector<uint64_t> arcs = arcsOf(octets.bytes());
    const std::string text(characters, size);
    const auto separators = std::count_if(text.begin(), text.end(), [](char c) { return c == '.' || c == ' '; });
    must(arcs.size() == static_cast<size_t>(separators), "the first two arcs are one, every other is its own");
    must(equal(convert(textOf(arcs)), octets.bytes()), "text made of the octets gives the octets");
    checkConverter(text, octets.bytes());
    return 0;
}
