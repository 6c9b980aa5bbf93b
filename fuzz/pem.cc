// base64 and PEM text to octets, and the octets back to text.
#include "fuzz.h"

#include <string>

using namespace karil_fuzz;

namespace {

constexpr uint32_t Untouched = 0xA5A5A5A5;
constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// What base64_decode is to give for a text in groups of four: bit by bit.
Octets decoded(std::string text) {
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] == '\0' || strchr("=", text[i]) == strchr(Alphabet, text[i]))
            text[i] = i < 4 ? 'A' : text[i - 4];
    const size_t padding = !text.ends_with('=') ? 0 : !text.ends_with("==") ? 1 : 2;
    Octets octets(text.size() / 4 * 3);
    for (size_t bit = 0; bit < 6 * text.size(); ++bit) {
        const char c = text[bit / 6];
        const size_t value = c == '=' ? 0 : static_cast<size_t>(strchr(Alphabet, c) - Alphabet);
        octets[bit / 8] = static_cast<uint8_t>(octets[bit / 8] | (value >> (5 - bit % 6) & 1) << (7 - bit % 8));
    }
    octets.resize(octets.size() - padding);
    return octets;
}

void checkBase64(const std::string &text) {
    const Area source(Bytes(reinterpret_cast<const uint8_t *>(text.c_str()), text.size() + 1));
    const Octets want = text.size() % 4 == 0 ? decoded(text) : Octets();
    const Area output(want.size());
    uint32_t length = Untouched;
    const int32_t status = base64_decode(reinterpret_cast<const char *>(source.data()), output.data(), &length);
    must(status == (text.size() % 4 == 0 ? 0 : -1), "groups of four are read");
    must(length == (status == 0 ? sizeOf(want) : Untouched), "the length is that of the groups");
    must(status != 0 || equal(output.bytes(), want), "the octets are those of the characters");
}

void checkRoundTrip(Bytes der, const std::string &header) {
    const size_t sides = header.empty() ? 0 : 2 * (header.size() + 2);
    const Area pem(sides + (der.size() + 2) / 3 * 4 + (der.size() + 47) / 48 * 2);
    uint32_t length = Untouched;
    must(DER2PEM_data_format(der.data(), sizeOf(der), pem.data(), &length, header.c_str(), header.c_str()) == 0,
         "octets can be written");
    must(length == (der.empty() ? 0 : sizeOf(pem.bytes())), "the text has the size that the header file tells");
    const Area back(length / 4 * 3);
    uint32_t size = Untouched;
    must(PEM2DER_data_format(pem.data(), length, back.data(), &size) == 0, "what was written is read");
    must(equal(back.bytes().first(size), der), "octets come back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const Area source(Bytes(data, size));
    const Area output(size / 4 * 3);
    uint32_t length = Untouched;
    const int32_t status = PEM2DER_data_format(source.data(), sizeOf(source.bytes()), output.data(), &length);
    must(status == 0 ? length <= size / 4 * 3 : status == -1 && length == Untouched, "a text is read or refused");
    checkBase64(std::string(reinterpret_cast<const char *>(data), size).c_str());
    checkRoundTrip(source.bytes(), "");
    checkRoundTrip(source.bytes(), "-----X-----");
    return 0;
}
