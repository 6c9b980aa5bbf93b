#include "support.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ctime>

namespace karil_test {

namespace {
thread_local Trace *current = nullptr;
}

Octets hex(std::string_view text) {
    Octets octets;
    std::string digits;
    for (const char c : text)
        if (std::isxdigit(static_cast<unsigned char>(c)) != 0) digits += c;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        octets.push_back(static_cast<uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return octets;
}

std::string toHex(const uint8_t *data, size_t size) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (size_t i = 0; i < size; ++i) {
        if (i > 0) out += ' ';
        out += digits[data[i] >> 4];
        out += digits[data[i] & 15];
    }
    return out;
}

Octets text(std::string_view characters) { return {characters.begin(), characters.end()}; }

std::string answerOf(int32_t status, Anybuf *element) {
    const Chain owner(element);
    if (status != KACERT_Ok) return "status " + std::to_string(status) + (element != nullptr ? " and an element" : "");
    return element != nullptr ? toHex(*element) : "nothing";
}

// One octet in front keeps data from being null where there are none.
Exact::Exact(const Octets &octets, uint32_t tag) : block(new uint8_t[octets.size() + 1]) {
    record = {block.get() + 1, static_cast<uint32_t>(octets.size()), 0, 0, tag, nullptr, nullptr};
    std::copy(octets.begin(), octets.end(), record.data);
}

Zone::Zone(const char *name) {
    if (const char *old = std::getenv("TZ"); old != nullptr) before = old;
    setenv("TZ", name, 1);
    tzset();
}

Zone::~Zone() {
    if (before)
        setenv("TZ", before->c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

Trace::Trace() : outer(current) { current = this; }

Trace::~Trace() { current = outer; }

bool Trace::has(std::string_view words) const {
    return std::find(recorded.begin(), recorded.end(), words) != recorded.end();
}

} // namespace karil_test

// In place of the library's own: the library reaches this one through the dynamic symbol.
extern "C" __attribute__((visibility("default"))) void KAPR_DebugMessage(const char *logName, const char *, int32_t,
                                                                         const char *message) {
    if (karil_test::current != nullptr && std::string_view(logName) == "kacert.log")
        karil_test::current->recorded.emplace_back(message);
}
